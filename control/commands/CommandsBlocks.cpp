#include <QCoreApplication>

#include "control/code/BlockFinder.h"
#include "control/code/Brackets.h"
#include "control/commands/CommandFunctions.h"

using namespace text;

namespace {

constexpr std::int64_t kLongestPairLine = 64 << 10;   // beyond that, pairs within a line are not looked for

// The smallest pair of brackets that stands in one line and holds the range and more.
std::optional<ByteRange> bracketsAround(TextModel& model, ByteRange range) {
  const Snapshot& text = model.snapshot();
  const LineNo line = text.lineAt(range.begin);
  const ByteOffset start = text.lineStart(line), end = text.lineEnd(line);
  if (range.end > end || end - start > kLongestPairLine) return std::nullopt;
  const std::string bytes = text.line(line);
  std::vector<Token> tokens;
  if (const Highlighter* colors = model.highlighter()) colors->scanLine(bytes, model.stateAt(line), &tokens);
  std::vector<std::pair<char, ByteOffset>> open;
  std::optional<ByteRange> found;
  auto token = tokens.begin();
  for (std::size_t i = 0; i < bytes.size() && !found; ++i) {
    const auto at = static_cast<std::int64_t>(i);
    while (token != tokens.end() && token->begin + token->length <= at) ++token;
    const bool inToken = token != tokens.end() && token->begin <= at;
    if (inToken && (token->kind == TokenKind::comment || token->kind == TokenKind::string)) continue;
    constexpr std::string_view kOpeners = "([{", kClosers = ")]}";
    if (kOpeners.find(bytes[i]) != std::string_view::npos) open.push_back({bytes[i], start + at});
    const std::size_t closes = kClosers.find(bytes[i]);
    if (closes == std::string_view::npos || open.empty() || open.back().first != kOpeners[closes]) continue;
    const ByteRange pair{open.back().second, start + at + 1};
    open.pop_back();
    if (pair.begin <= range.begin && range.end <= pair.end && pair.length() > range.length()) found = pair;
  }
  return found;
}

}   // namespace

namespace commandFunctions {

void selectBlock(Editor& e, const QVariant&) {
  const auto blocks = BlockFinder::of(e.model()).now(e.host());
  if (!blocks) return;
  const ByteRange range = e.selectedRange();
  auto block = bracketsAround(e.model(), range);
  if (!block) block = blocks->around(range);
  if (!block) return e.host().note(QCoreApplication::translate("Editor", "There is no block around this"));
  e.setSelection({block->begin, block->end, 0, 0, false});
}

// From a word to its partner; from anywhere else to the beginning of the block around.
void gotoBlockEnd(Editor& e, const QVariant& argument) {
  const ByteOffset caret = e.selection().caret;
  const auto blocks = BlockFinder::of(e.model()).now(e.host());
  if (!blocks) return;
  if (const auto pair = blocks->pairAt(caret)) return e.moveCaret(pair->partner.begin, false);
  gotoMatchBrace(e, argument);
  if (e.selection().caret != caret) return;
  const auto block = blocks->around({caret, caret});
  if (block && block->begin != caret) return e.moveCaret(block->begin, false);
  e.host().note(QCoreApplication::translate("Editor", "There is no block around this"));
}

}   // namespace commandFunctions
