// Q1: Colouring by any tables of any text: tokens ascend within the line, the state does not depend on how it is asked for, and what
// is kept from one edit to the next is what a scan from the beginning gives.
#include <algorithm>
#include <memory>

#include "tests/fuzz/Fuzz.h"
#include "text/color/Highlight.h"

using namespace text;
using fuzz::check;

// Signs are lines of lists, so none holds a line break.
static std::string sign(fuzz::Input& in) {
  std::string text(in.until('|'));
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

namespace {

LineState fromTheBeginning(const Highlighter& highlighter, const Snapshot& text, LineNo line) {
  return highlighter.scanBlock(text.bytes({ByteOffset(0), text.lineStart(line)}), 0, '\n');
}

// The text is typed, cut and pasted in pieces; each state asked for, with a budget or without, is right when it says so.
void edits(std::shared_ptr<const Highlighter> highlighter, fuzz::Input in) {
  Document document;
  StateCache cache;
  cache.setHighlighter(highlighter);
  const auto subscription = document.subscribe([&](const Change& change) { cache.onChange(change); });
  const auto place = [&](std::uint8_t at) { return document.snapshot().size().value * at / 255; };
  while (!in.empty()) {
    const int what = in.byte() % 8;
    if (what == 0) {
      document.undo();
    } else if (what == 1) {
      document.redo();
    } else if (what == 2) {
      document.reset(Snapshot(std::string(in.take(in.byte()))));
    } else {
      const std::int64_t a = place(in.byte()), b = place(in.byte());
      std::string piece(in.take(in.byte() % 40));
      if (what == 3)   // far more lines than lie between two kept states
        for (int doubled = 0; doubled < 9 && !piece.empty() && document.snapshot().size().value < 200000; ++doubled) piece += piece;
      document.apply(Edit{{ByteOffset(std::min(a, b)), ByteOffset(what == 4 ? std::max(a, b) : std::min(a, b))}, piece}, {});
    }
    const Snapshot& now = document.snapshot();
    const LineNo line(std::min(now.lineCount() - 1, now.lineCount() * in.byte() / 255));
    bool exact = false;
    const LineState state = cache.stateAt(now, line, what == 5 ? 1000 : 0, &exact);
    check(exact || what == 5, "without a budget it is exact");
    check(!exact || state == fromTheBeginning(*highlighter, now, line), "kept states are those of a scan from the beginning");
  }
}

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  LanguageTables tables;
  tables.caseSensitive = in.byte() % 2 == 1;
  for (auto* list : {&tables.keywords, &tables.operators, &tables.singleComments, &tables.multiCommentStart,
                     &tables.multiCommentEnd, &tables.stringDelims})
    for (int n = in.byte() % 6; n > 0; --n) list->push_back(sign(in));
  tables.escapeChar = sign(in);
  const auto shared = std::make_shared<const Highlighter>(tables);
  const Highlighter& highlighter = *shared;
  const std::string text(in.rest());
  LineState state = 0;
  std::vector<Token> tokens;
  for (std::size_t from = 0; from <= text.size();) {
    const std::size_t end = std::min(text.find('\n', from), text.size());
    const std::string_view line = std::string_view(text).substr(from, end - from);
    tokens.clear();
    const LineState next = highlighter.scanLine(line, state, &tokens);
    check(next == highlighter.scanLine(line, state, nullptr), "the state does not depend on the tokens");
    std::int64_t last = 0;
    for (const Token& token : tokens) {
      check(token.begin >= last && token.length > 0, "tokens ascend");
      last = token.begin + token.length;
      check(last <= std::int64_t(line.size()), "tokens are in the line");
    }
    std::vector<Token> parts;
    LinePoint at = highlighter.startOf(state);
    for (const auto length = std::int64_t(line.size()); at.byte < length;)
      at = highlighter.scanPart(line, 0, true, at, std::min(length, at.byte + 7), &parts);
    std::int64_t covered = 0, coveredInParts = 0;
    for (const Token& token : tokens) covered += token.length;
    for (const Token& token : parts) coveredInParts += token.length;
    const bool goesOn = at.inside == LinePoint::block || at.inside == LinePoint::string;
    check(covered == coveredInParts && highlighter.startOf(next) == (goesOn ? LinePoint{0, at.inside, at.index} : LinePoint{}),
          "a line is its parts");
    state = next;
    from = end + 1;
  }
  check(state == highlighter.scanBlock(text, 0, '\n'), "a block is its lines");
  edits(shared, in);
  return 0;
}
