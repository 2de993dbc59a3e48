// Formatting, columnising and line tools on long texts, and what their undo step keeps.
#include "bench/print/Language.h"
#include "change/AddIns.h"
#include "change/FormatText.h"
#include "change/LineTools.h"
#include "control/CodeMax.h"

namespace {

// One run: time, and memory that the text and its undo hold more than before, against the text.
template <class Run>
void measure(const std::string& what, const std::string& text, double most, const Run& run) {
  bench::needApplication();
  const auto language = bench_print::language();
  CodeMax cmx;
  cmx.setLanguage(language->Name);
  cmx.model()->replaceAll(text::Snapshot(std::string(text)), {});
  bench::trimMemory();
  const auto before = bench::allocatedMemory();
  const auto start = bench::Clock::now();
  const qint64 changed = run(cmx, *language);
  bench::row(what, bench::secondsSince(start), "s", most, std::to_string(changed) + " lines changed");
  bench::row("  memory with undo / text", double(bench::allocatedMemory() - before) / double(text.size()), "x", 4);
}

void Format(benchmark::State& state) {
  for (auto _ : state) {
    const std::string text = bench_print::verilogLines(1'000'000);
    const auto format = [&](const char* what, auto set) {
      FormatChoices choices;
      set(choices);
      measure(what, text, 3, [&](CodeMax& cmx, const clsLang& language) { return FormatIt(cmx, &language, choices).linesChanged; });
    };
    format("re-indent 1,000,000 lines by first words", [](FormatChoices& c) { c.indent = 4; });
    format("re-indent 1,000,000 lines by whole lines", [](FormatChoices& c) { c.indent = 4, c.wholeLine = true; });
    format("keywords of 1,000,000 lines to capitals", [](FormatChoices& c) { c.keywordCase = 1; });
    format("main text of 1,000,000 lines to capitals", [](FormatChoices& c) { c.mainCase = 1; });
    std::string tabbed;
    for (const char c : text) tabbed += c == ' ' && !tabbed.empty() && (tabbed.back() == '\n' || tabbed.back() == '\t') ? '\t' : c;
    measure("tabs of 1,000,000 lines to blanks", tabbed, 3, [&](CodeMax& cmx, const clsLang& language) {
      FormatChoices choices;
      choices.tabs = 5;
      return FormatIt(cmx, &language, choices).linesChanged;
    });
  }
}
BENCHMARK(Format)->Iterations(1)->Unit(benchmark::kMillisecond);

void Columns(benchmark::State& state) {
  for (auto _ : state) {
    std::string text;
    for (int i = 0; i < 100000; ++i)
      for (int k = 0; k < 6; ++k) text += std::string(std::size_t(3 + (i * 7 + k * 5) % 11), 'a') + (k < 5 ? ',' : '\n');
    measure("columnise 100,000 lines with 5 delimiters", text, 2, [](CodeMax& cmx, const clsLang&) {
      return Columnize(cmx, {0, cmx.LineCount()}, QStringLiteral(","));
    });
    measure("sort 100,000 lines", text, 2, [](CodeMax& cmx, const clsLang&) { return SortLines(cmx, {}); });
  }
}
BENCHMARK(Columns)->Iterations(1)->Unit(benchmark::kMillisecond);

}   // namespace
