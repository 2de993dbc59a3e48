#include "control/edit/AutoClose.h"

#include <algorithm>
#include <string_view>

#include "base/Program.h"
#include "control/edit/Carets.h"
#include "control/edit/EditorAccess.h"
#include "text/color/EntryMarks.h"
#include "text/line/Words.h"

using namespace text;

namespace {

constexpr std::int64_t kLongestClosed = 4000;   // bytes; in longer lines nothing is closed
constexpr std::string_view kClosedOpeners = "([{", kTypedClosers = ")]}";

char closerOf(char opener) {
  const std::size_t at = kClosedOpeners.find(opener);
  return at == std::string_view::npos ? opener : kTypedClosers[at];
}

// A string delimiter of one character; without a language, the usual one.
bool isQuote(Editor& e, char c) {
  const Highlighter* language = e.model().highlighter();
  if (!language) return c == '"';
  if (c != '"' && c != '\'' && c != '`') return false;
  return std::ranges::any_of(language->tables().stringDelims, [c](std::string delimiter) {
    const EntryMark mark = takeMark(delimiter);
    return (mark == EntryMark::none || mark == EntryMark::plain || mark == EntryMark::escape) &&
           delimiter == std::string_view(&c, 1);
  });
}

// Around a selection quotation marks go in every language: a tick that replaces the text is not what anybody wants.
bool mayQuote(Editor& e, char c) { return c == '"' || c == '\'' || isQuote(e, c); }

// Whether what is typed behind these bytes of a line stands in a comment or string.
bool isDead(Editor& e, LineNo line, std::string before) {
  const Highlighter* language = e.model().highlighter();
  if (!language) return false;
  const auto at = static_cast<std::int64_t>(before.size());
  before += 'x';
  std::vector<Token> tokens;
  language->scanLine(before, e.model().stateAt(line, 1 << 20), &tokens);
  return std::ranges::any_of(tokens, [at](const Token& token) {
    return (token.kind == TokenKind::comment || token.kind == TokenKind::string) && token.begin < at &&
           at < token.begin + token.length;
  });
}

bool isWord(char c) { return (c & 0x80) != 0 || classOf(static_cast<unsigned char>(c)) == CharClass::word; }

bool mayClose(Editor& e, char opener) {
  const Snapshot& text = e.snapshot();
  const ByteOffset caret = e.selection().caret;
  const LineNo line = text.lineAt(caret);
  const ByteRange whole{text.lineStart(line), text.lineEnd(line)};
  if (whole.length() > kLongestClosed) return false;
  const std::string before = text.bytes({whole.begin, caret}), behind = text.bytes({caret, whole.end});
  if (!behind.empty() && std::string_view(" \t)]};,:").find(behind[0]) == std::string_view::npos) return false;
  const bool quote = closerOf(opener) == opener;
  if (quote && !before.empty() && (isWord(before.back()) || before.back() == opener)) return false;
  // A tick that is no quotation mark is a part of what follows: '{ and '( and 4'b0.
  if (!before.empty() && before.back() == '\'' && !isQuote(e, '\'')) return false;
  // A closer without an opener waits for this one.
  if (!quote && std::ranges::count(before + behind, closerOf(opener)) > std::ranges::count(before + behind, opener)) return false;
  return !isDead(e, line, before);
}

// A closer that waits below a line without text is typed over too: that line goes.
void goToWaiting(Editor& e, char c) {
  const Snapshot text = e.snapshot();
  const LineNo line = text.lineAt(e.selection().caret), next = line + 1;
  const auto isBlank = [&](LineNo which) {
    return text.lineStart(which) + static_cast<std::int64_t>(EditorAccess::indentOf(text, which).size()) == text.lineEnd(which);
  };
  if (next.value >= text.lineCount() || text.lineEnd(line) - text.lineStart(line) > kLongestClosed || !isBlank(line)) return;
  const ByteOffset closer = text.lineStart(next) + static_cast<std::int64_t>(EditorAccess::indentOf(text, next).size());
  const auto& pairs = EditorAccess::impl(e).pairs;
  if (closer >= text.size() || text.at(closer) != c || std::ranges::find(pairs, closer, &AutoPair::closer) == pairs.end()) return;
  const Edit edit{{text.lineStart(line), text.lineStart(next)}, {}};
  SelectionState after;
  after.anchor = after.caret = closer - edit.range.length();
  EditorAccess::change(e, std::span(&edit, 1), after);
}

bool typeOver(Editor& e, char c, const QString& text) {
  auto& pairs = EditorAccess::impl(e).pairs;
  if (pairs.empty()) return false;
  const UndoGroup group(e.document());
  if (closerOf(c) == c && kTypedClosers.find(c) != std::string_view::npos) goToWaiting(e, c);
  const ByteOffset caret = e.selection().caret;
  const auto pair = std::ranges::find(pairs, caret, &AutoPair::closer);
  if (pair == pairs.end() || caret >= e.snapshot().size() || e.snapshot().at(caret) != c) return false;
  pairs.erase(pair);
  // As typed in its place, so that the line of a closing bracket is indented as usual.
  EditorAccess::setSelection(e, {caret, caret + 1, 0, 0, false});
  e.typeText(text);
  return true;
}

// At several carets: around each selection; before a caret without one, the sign alone.
bool surroundAll(Editor& e, const std::string& opener, const std::string& closer) {
  std::size_t main = 0;
  std::vector<Caret> all = carets::all(e, &main);
  if (std::ranges::all_of(all, &Caret::empty)) return false;
  std::vector<Edit> edits;
  std::int64_t moved = 0;
  for (Caret& one : all) {
    edits.push_back({{one.begin(), one.begin()}, opener});
    if (!one.empty()) edits.push_back({{one.end(), one.end()}, closer});
    const std::int64_t by = moved + std::ssize(opener);
    moved = by + (one.empty() ? 0 : std::ssize(closer));
    one = {one.anchor + by, one.caret + by};
  }
  if (!carets::edit(e, edits)) return false;
  carets::set(e, std::move(all), main);
  return true;
}

// Around the part of each row. Rows that do not reach the block have none.
bool surroundRows(Editor& e, const std::string& opener, const std::string& closer) {
  const SelectionState s = e.selection();
  const int tabSize = e.options().tabSize;
  const ColumnBlock block = columnBlock(e.model(), s, tabSize);
  const LineNo anchorLine = e.snapshot().lineAt(s.anchor), caretLine = e.snapshot().lineAt(s.caret);
  std::vector<Edit> edits;
  for (LineNo line = block.first; line <= block.last; ++line) {
    const ByteRange body = columnRow(e.model(), line, block.left, block.right, tabSize).body;
    if (body.empty()) continue;
    edits.push_back({{body.begin, body.begin}, opener});
    edits.push_back({{body.end, body.end}, closer});
  }
  if (edits.empty()) return false;
  const std::int64_t anchorCell = cellOf(e.model(), s.anchor, s.anchorVirtual, tabSize) + 1,
                     caretCell = cellOf(e.model(), s.caret, s.caretVirtual, tabSize) + 1;
  if (!EditorAccess::change(e, edits)) return false;
  EditorAccess::place(e, columnSelection(e.model(), anchorLine, anchorCell, caretLine, caretCell, tabSize));
  e.document().setSelectionAfter(e.selection());
  return true;
}

}   // namespace

bool autoClose::type(Editor& e, const QString& text) {
  const TypingAids& aids = e.options().aids;
  auto& impl = EditorAccess::impl(e);
  if (text.size() != 1 || text[0].unicode() >= 0x80 || impl.inside > 0 || gBusy() || keyMacros().recording() ||
      e.document().readOnly())
    return false;
  const char c = static_cast<char>(text[0].unicode());
  const bool opens = kClosedOpeners.find(c) != std::string_view::npos, quote = isQuote(e, c),
             surrounds = aids.surround && (opens || mayQuote(e, c));
  if (!opens && !surrounds && !quote && kTypedClosers.find(c) == std::string_view::npos) return false;
  const ByteRange range = e.selectedRange();
  const std::string opener(1, c), closer(1, closerOf(c));
  if (e.selection().column) return surrounds && e.hasSelection() && surroundRows(e, opener, closer);
  if (carets::several(e)) return surrounds && surroundAll(e, opener, closer);
  if (!range.empty()) {
    if (!surrounds) return false;
    const bool forward = e.selection().anchor < e.selection().caret;
    const Edit edits[] = {{{range.begin, range.begin}, opener}, {{range.end, range.end}, closer}};
    const ByteOffset begin = range.begin + 1, end = range.end + 1;
    return EditorAccess::change(e, edits, SelectionState{forward ? begin : end, forward ? end : begin, 0, 0, false});
  }
  if (!aids.closeBrackets || e.overtype) return false;
  if (typeOver(e, c, text)) return true;
  if (!(opens || quote) || !mayClose(e, c)) return false;
  const UndoGroup group(e.document());
  if (!e.typeText(text)) return true;
  const ByteOffset behind = e.selection().caret;   // an opener may have been indented
  const Edit edit{{behind, behind}, closer};
  EditorAccess::change(e, std::span(&edit, 1), e.selection());
  impl.pairs.push_back({behind - 1, behind});
  return true;
}

bool autoClose::breakPair(Editor& e) {
  const auto& pairs = EditorAccess::impl(e).pairs;
  const ByteOffset caret = e.selection().caret;
  if (pairs.empty() || EditorAccess::impl(e).run || e.hasSelection() || keyMacros().recording()) return false;
  const auto pair = std::ranges::find(pairs, caret, &AutoPair::closer);
  const Snapshot text = e.snapshot();
  if (pair == pairs.end() || pair->opener + 1 != caret || caret >= text.size() ||
      kTypedClosers.find(text.at(caret)) == std::string_view::npos)
    return false;
  const LineNo line = text.lineAt(caret);
  const std::string indent = e.options().autoIndent == AutoIndent::off ? std::string() : EditorAccess::indentOf(text, line);
  UndoGroup group(e.document());
  const Edit edit{{caret, caret}, e.model().newLineFor(line) + indent};
  if (!EditorAccess::change(e, std::span(&edit, 1), e.selection())) return false;
  e.newLine();
  return true;
}

bool autoClose::deletePair(Editor& e) {
  auto& pairs = EditorAccess::impl(e).pairs;
  const ByteOffset caret = e.selection().caret;
  if (pairs.empty() || EditorAccess::impl(e).run || e.hasSelection() || keyMacros().recording()) return false;
  const auto pair = std::ranges::find(pairs, caret, &AutoPair::closer);
  if (pair == pairs.end() || pair->opener + 1 != caret || caret >= e.snapshot().size()) return false;
  if (e.snapshot().at(caret) != closerOf(e.snapshot().at(pair->opener))) return false;
  pairs.erase(pair);
  return EditorAccess::put(e, {caret - 1, caret + 1}, {});
}

void autoClose::textChanged(Editor& e, const Change& change) {
  auto& pairs = EditorAccess::impl(e).pairs;
  if (change.reset) pairs.clear();
  // A pair goes with one of its two; what moves into its place is the user's.
  const auto removed = [&change](ByteOffset at) {
    const auto behind = std::ranges::upper_bound(change.spans, at, {}, [](const Change::Span& span) { return span.oldBegin; });
    return behind != change.spans.begin() && at < std::prev(behind)->oldBegin + std::prev(behind)->removed;
  };
  std::erase_if(pairs, [&](const AutoPair& pair) { return removed(pair.opener) || removed(pair.closer); });
  for (AutoPair& pair : pairs) pair = {change.map(pair.opener, Bias::right), change.map(pair.closer, Bias::right)};
}

void autoClose::caretMoved(Editor& e) {
  const ByteOffset caret = e.selection().caret;
  std::erase_if(EditorAccess::impl(e).pairs, [caret](const AutoPair& pair) { return caret <= pair.opener || caret > pair.closer; });
}
