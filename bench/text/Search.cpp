// Finding and colouring: all hits in 100 MB against memmem and PCRE2's own loop, and the states of a large source.
#define PCRE2_CODE_UNIT_WIDTH 8
#include "text/find/Search.h"

#include <pcre2.h>

#include "bench/Bench.h"
#include "text/color/LongColors.h"

namespace {

using namespace bench;
using namespace text;

Snapshot inBlocks(const std::string& bytes) {
  SnapshotBuilder builder;
  for (std::size_t at = 0; at < bytes.size(); at += 1 << 20) builder.append(bytes.substr(at, 1 << 20));
  return builder.finish();
}

double findAll(const Snapshot& text, const std::string& what, SearchOptions options, std::size_t* hits) {
  return best(3, [&] { *hits = Searcher(what, options).all(text, {ByteOffset(0), text.size()}).ranges.size(); });
}

void literals(benchmark::State& state) {
  const auto log = simulationLog(100 * MB);
  const Snapshot text = inBlocks(log);
  for (auto _ : state) {
    const auto limit = limitMemmem(log, logWord);
    std::size_t hits = 0;
    const std::string word(logWord);
    const auto exact = findAll(text, word, {.matchCase = true}, &hits);
    ratioRow("find all of a word (" + std::to_string(hits) + " hits), 100 MB / memmem", exact, limit, 2);
    ratioRow("the same without case / memmem", findAll(text, word, {}, &hits), limit, 3);
    ratioRow("the same as whole words / memmem", findAll(text, word, {.matchCase = true, .wholeWord = true}, &hits), limit, 3);
    ratioRow("a word that is not there / memmem", findAll(text, "nowhere to be found", {.matchCase = true}, &hits), limit, 2);
    const Searcher first("Begin", {});   // nowhere: back over everything
    ratioRow("the same backwards, without case / memmem",
             best(3, [&] { benchmark::DoNotOptimize(first.backward(text, text.size())); }), limit, 3);
  }
}
BENCHMARK(literals)->Iterations(1)->Unit(benchmark::kMillisecond);

// PCRE2's own loop with its compiler over the bytes in one piece.
double limitLoop(const std::string& bytes, const std::string& pattern, std::uint32_t options) {
  int error;
  std::size_t at;
  auto* context = pcre2_compile_context_create(nullptr);
  pcre2_set_newline(context, PCRE2_NEWLINE_ANYCRLF);
  auto* code =
      pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size(), PCRE2_MULTILINE | options, &error, &at, context);
  pcre2_jit_compile(code, PCRE2_JIT_COMPLETE);
  auto* data = pcre2_match_data_create_from_pattern(code, nullptr);
  const auto seconds = best(3, [&] {
    std::size_t from = 0;
    std::uint32_t flags = 0;
    while (pcre2_jit_match(code, reinterpret_cast<PCRE2_SPTR>(bytes.data()), bytes.size(), from, flags, data, nullptr) > 0) {
      const auto* o = pcre2_get_ovector_pointer(data);
      from = o[1];
      flags = o[0] == o[1] ? PCRE2_NOTEMPTY_ATSTART : 0;
    }
  });
  pcre2_match_data_free(data);
  pcre2_code_free(code);
  pcre2_compile_context_free(context);
  return seconds;
}

void expressions(benchmark::State& state) {
  const auto log = simulationLog(100 * MB);
  const Snapshot text = inBlocks(log);
  for (auto _ : state)
    for (const std::string pattern : {"transaction +id=\\d+", "^ *\\d+ ns +WARNING", "addr=0x[0-9a-f]{8}", "\\w+", "u_\\w+.*retry",
                                      "0$", "(?s)retry.{1,300}?retry"}) {
      std::size_t hits = 0;
      const auto seconds = findAll(text, pattern, {.matchCase = true, .regex = true}, &hits);
      ratioRow("find all of " + pattern + " (" + std::to_string(hits) + " hits), 100 MB / PCRE2", seconds,
               limitLoop(log, pattern, PCRE2_UTF | PCRE2_UCP | PCRE2_NO_UTF_CHECK), 3);
    }
}
BENCHMARK(expressions)->Iterations(1)->Unit(benchmark::kMillisecond);

void colouring(benchmark::State& state) {
  const Snapshot text = inBlocks(verilogFile(100 * MB));
  const auto highlighter = std::make_shared<const Highlighter>(
      LanguageTables{.caseSensitive = true,
                     .keywords = {"always", "begin", "else", "end", "endmodule", "if", "input", "module", "negedge", "or", "output",
                                  "parameter", "posedge", "reg", "wire", "$display", "$time"},
                     .operators = {"=", "<=", "+", "-", "^", "&", "!", "(", ")", "[", "]", "{", "}", ";", ",", ":", "#", "@"},
                     .singleComments = {"//"},
                     .multiCommentStart = {"/*"},
                     .multiCommentEnd = {"*/"},
                     .stringDelims = {"\""},
                     .escapeChar = "\\"});
  constexpr std::int64_t rows = 60;
  const LineNo top(text.lineCount() - rows);
  const auto screen = [&](StateCache& cache) {
    std::vector<Token> tokens;
    LineState at = cache.stateAt(text, top);
    for (std::int64_t i = 0; i < rows; ++i) at = highlighter->scanLine(text.line(top + i), at, &tokens);
    benchmark::DoNotOptimize(tokens);
  };
  for (auto _ : state) {
    StateCache cache;
    cache.setHighlighter(highlighter);
    row("screen at the end of a 100 MB source, the first time", best(1, [&] { screen(cache); }) * 1e3, "ms", 200);
    row("the same later", best(3, [&] { screen(cache); }) * 1e3, "ms", 100);
    Change edit;
    edit.spans = {
        {.begin = ByteOffset(100), .inserted = 1, .firstLine = LineNo(5), .oldBegin = ByteOffset(100), .oldLine = LineNo(5)}};
    cache.onChange(edit);
    row("the same after a character typed at the top", best(1, [&] { screen(cache); }) * 1e3, "ms", 100);
    const auto line = singleLine(20 * MB);
    std::vector<Token> tokens;
    const double whole = best(3, [&] { benchmark::DoNotOptimize(highlighter->scanLine(line, 0, &tokens)); });
    row("colouring one line of 20 MB", whole * 1e3, "ms", 0);
    const Snapshot longLine(line);
    const std::int64_t end = longLine.size().value;
    LongColors colors;
    ratioRow("  200 characters at its end, the first time / the whole",
             best(1, [&] { colors.tokens(*highlighter, longLine, LineNo(0), 0, end - 200, end, end, &tokens); }), whole, 1.5);
    row("  the same later", best(3, [&] { colors.tokens(*highlighter, longLine, LineNo(0), 0, end - 200, end, 0, &tokens); }) * 1e3,
        "ms", 5);
  }
}
BENCHMARK(colouring)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
