// Commands on whole lines: opening, deleting, swapping.
#include <algorithm>

#include "control/commands/CommandFunctions.h"
#include "control/edit/SelectedPieces.h"

using namespace text;

namespace commandFunctions {

namespace {

bool blankLine(const Snapshot& text, LineNo line) {
  return text.lineStart(line) + static_cast<std::int64_t>(EditorAccess::indentOf(text, line).size()) == text.lineEnd(line);
}

void openLine(Editor& e, bool below) {
  const Snapshot text = e.snapshot();
  const LineNo line = text.lineAt(e.selection().caret);
  const std::string newLine = e.model().newLineFor(line);
  const std::string indent = e.options().autoIndent == AutoIndent::off ? std::string() : EditorAccess::indentOf(text, line);
  const ByteOffset at = below ? text.lineEnd(line) : text.lineStart(line);
  const Edit edit{{at, at}, below ? newLine + indent : indent + newLine};
  SelectionState after;
  after.anchor = after.caret = at + static_cast<std::int64_t>(below ? edit.text.size() : indent.size());
  const SelectionState before = e.selection();
  if (EditorAccess::change(e, std::span(&edit, 1), after))
    EditorAccess::noteAutoBlanks(e, indent.size(), {edit.range, newLine}, before);
}

SelectionState shifted(SelectionState s, std::int64_t by) {
  s.anchor += by;
  s.caret += by;
  return s;
}

// The edits that swap lines with the line above or below, and how far that moves them; 0: there is none. The other line moves, so that
// what the lines carry stays with them.
std::int64_t swapLines(const Snapshot& text, LineRange lines, bool up, std::vector<Edit>& edits) {
  const LineNo first(lines.first), last(lines.end - 1), other(up ? lines.first - 1 : lines.end);
  if (other.value < 0 || other.value >= text.lineCount()) return 0;
  // The end of the text behind the last line break is no line to swap with.
  const LineNo lowest = up ? last : other;
  if (text.lineStart(lowest) == text.size()) return 0;
  const ByteRange body{text.lineStart(other), text.lineEnd(other)};
  const std::string moved = text.bytes(body);
  if (up) {
    edits.push_back({{body.begin, text.lineStart(first)}, {}});
    edits.push_back({{text.lineEnd(last), text.lineEnd(last)}, std::string(breakBytes(text.lineBreak(other))) + moved});
    return body.begin - text.lineStart(first);
  }
  const std::string lineBreak(breakBytes(text.lineBreak(last)));
  edits.push_back({{text.lineStart(first), text.lineStart(first)}, moved + lineBreak});
  edits.push_back({{text.lineEnd(last), body.end}, {}});
  return static_cast<std::int64_t>(moved.size() + lineBreak.size());
}

// Moves the lines of each caret; blocks side by side move as one.
void moveLines(Editor& e, bool up) {
  if (e.document().readOnly()) return;
  const Snapshot text = e.snapshot();
  std::size_t main = 0;
  std::vector<Caret> carets = carets::all(e, &main);
  const bool several = carets.size() > 1;
  std::vector<Edit> edits;
  std::vector<std::pair<LineNo, LineNo>> marks;   // of bookmarks, from and to
  std::int64_t by = 0;
  auto caret = carets.begin();
  for (const LineRange& lines : carets::lines(e, LineAtEnd::excluded)) {
    by = swapLines(text, lines, up, edits);
    for (; caret != carets.end() && text.lineAt(caret->begin()).value < lines.end; ++caret)
      *caret = {caret->anchor + by, caret->caret + by, caret->goal};
    const LineNo other(up ? lines.first - 1 : lines.end);
    if (by != 0 && e.model().hasBookmark(other)) marks.emplace_back(other, up ? lines.end - 1 : lines.first);
  }
  if (edits.empty()) return;
  for (const auto& [from, to] : marks) e.model().setBookmark(from, false);
  const bool done = several ? carets::edit(e, edits) : EditorAccess::change(e, edits, shifted(e.selection(), by));
  for (const auto& [from, to] : marks) e.model().setBookmark(done ? to : from, true);
  if (!done || !several) return;
  carets::set(e, std::move(carets), main);
  e.document().setSelectionAfter(CaretSets::of(e.model()).keep(e.selection(), carets::others(e)));
}

}   // namespace

ByteRange wholeLines(const Snapshot& text, LineNo first, LineNo last) {
  const ByteRange range{text.lineStart(first), text.lineEndWithBreak(last)};
  if (text.lineBreak(last) == LineBreak::none && first.value > 0) return {text.lineEnd(first - 1), range.end};
  return range;
}

void lineOpenBelow(Editor& e, const QVariant&) { openLine(e, true); }
void lineOpenAbove(Editor& e, const QVariant&) { openLine(e, false); }

void lineDelete(Editor& e, const QVariant&) {
  const Snapshot& text = e.snapshot();
  const LineRange lines = e.selectedLines();
  const ByteRange range = wholeLines(text, LineNo(lines.first), LineNo(lines.end - 1));
  if (!range.empty()) EditorAccess::put(e, range, {});
}

void lineDeleteToStart(Editor& e, const QVariant&) {
  const ByteOffset caret = e.selection().caret;
  const ByteRange range{lineStart(e, caret), caret};
  if (!range.empty()) EditorAccess::put(e, range, {});
}

void lineDeleteToEnd(Editor& e, const QVariant&) {
  const ByteOffset caret = e.selection().caret;
  const ByteRange range{caret, lineEnd(e, caret)};
  if (!range.empty()) EditorAccess::put(e, range, {});
}

void lineTranspose(Editor& e, const QVariant&) {
  const Snapshot& text = e.snapshot();
  const LineNo line = text.lineAt(e.selection().caret);
  if (line.value + 1 >= text.lineCount()) return;
  const ByteRange upper{text.lineStart(line), text.lineEnd(line)};
  const ByteRange lower{text.lineStart(line + 1), text.lineEnd(line + 1)};
  const Edit edit{{upper.begin, lower.end}, text.bytes(lower) + text.bytes({upper.end, lower.begin}) + text.bytes(upper)};
  SelectionState after;
  after.anchor = after.caret = e.selection().caret + (lower.end - upper.end);
  EditorAccess::change(e, std::span(&edit, 1), after);
}

void linesMoveUp(Editor& e, const QVariant&) { moveLines(e, true); }
void linesMoveDown(Editor& e, const QVariant&) { moveLines(e, false); }

void linesDuplicate(Editor& e, const QVariant&) {
  const Snapshot& text = e.snapshot();
  const LineRange lines = e.selectedLines();
  const LineNo last(lines.end - 1);
  const ByteOffset end = text.lineEnd(last);
  Edit edit{{end, end}, e.model().newLineFor(last) + text.bytes({text.lineStart(LineNo(lines.first)), end})};
  const SelectionState after = shifted(e.selection(), static_cast<std::int64_t>(edit.text.size()));
  EditorAccess::change(e, std::span(&edit, 1), after);
}

void deleteBlankLines(Editor& e, const QVariant&) {
  if (e.document().readOnly()) return;
  const Snapshot& text = e.snapshot();
  const LineRange lines = e.selectedLines();
  LineNo first(lines.first), last(lines.end - 1);
  if (first == last) {
    // The blank lines around the caret, or those directly below its line.
    if (!blankLine(text, first)) {
      if (first.value + 1 >= text.lineCount()) return;
      last = ++first;
    }
    if (!blankLine(text, first)) return;
    while (first.value > 0 && blankLine(text, first - 1)) --first;
    while (last.value + 1 < text.lineCount() && blankLine(text, last + 1)) ++last;
    // The empty line behind the last break is not removed, so that the text keeps its final line end.
    if (last.value + 1 == text.lineCount() && last > first && text.lineStart(last) == text.size() && first.value > 0) --last;
  }
  std::vector<Edit> edits;
  forEachLine(text, {text.lineStart(first), text.lineEnd(last)}, [&](LineNo line, ByteOffset start, std::string_view bytes) {
    if (bytes.find_first_not_of(" \t") != std::string_view::npos) return;
    edits.push_back({{start, text.lineEndWithBreak(line)}, {}});
  });
  EditorAccess::change(e, edits);
}

}   // namespace commandFunctions
