// Indents and tabs.
#include <algorithm>

#include "control/commands/CommandFunctions.h"
#include "control/edit/SelectedPieces.h"
#include "text/line/Chars.h"

using namespace text;

namespace commandFunctions {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }

std::int64_t cellBehind(std::string_view bytes, std::int64_t cell, int tabSize) {
  for (std::size_t i = 0; i < bytes.size();) {
    if (bytes[i] == '\t') {
      cell += tabSize - cell % tabSize;
      ++i;
      continue;
    }
    const std::size_t end = std::min(bytes.find('\t', i), bytes.size());
    const std::string_view part = bytes.substr(i, end - i);
    cell += displayColumn(part, static_cast<std::int64_t>(part.size()), tabSize).value;
    i = end;
  }
  return cell;
}

// The bytes of the selected lines, without the last break.
ByteRange selectedLineBytes(Editor& e) {
  const LineRange lines = e.selectedLines();
  return {e.snapshot().lineStart(LineNo(lines.first)), e.snapshot().lineEnd(LineNo(lines.end - 1))};
}

// Without a selection the caret moves with its text, also at the start of the line.
void changeIndents(Editor& e, const std::vector<Edit>& edits) {
  const SelectionState s = e.selection();
  if (!s.column && s.anchor == s.caret && edits.size() == 1 && edits[0].range.empty() && s.caret == edits[0].range.begin) {
    SelectionState after;
    after.anchor = after.caret = s.caret + static_cast<std::int64_t>(edits[0].text.size());
    EditorAccess::change(e, edits, after);
  } else {
    EditorAccess::change(e, edits);
  }
}

}   // namespace

void indentSelection(Editor& e, const QVariant&) {
  if (e.document().readOnly()) return;
  const std::string unit = e.options().expandTabs ? std::string(static_cast<std::size_t>(e.options().tabSize), ' ') : "\t";
  const ByteRange range = selectedLineBytes(e);
  const bool oneLine = e.snapshot().lineAt(range.begin) == e.snapshot().lineAt(range.end);
  std::vector<Edit> edits;
  forEachLine(e.snapshot(), range, [&](LineNo, ByteOffset start, std::string_view bytes) {
    if (!bytes.empty() || oneLine) edits.push_back({{start, start}, unit});
  });
  changeIndents(e, edits);
}

void unindentSelection(Editor& e, const QVariant&) {
  if (e.document().readOnly()) return;
  const int tabSize = e.options().tabSize;
  std::vector<Edit> edits;
  forEachLine(e.snapshot(), selectedLineBytes(e), [&](LineNo, ByteOffset start, std::string_view bytes) {
    std::size_t gone = 0;
    for (std::int64_t cell = 0; gone < bytes.size() && isBlank(bytes[gone]) && cell < tabSize; ++gone)
      cell = cellBehind(bytes.substr(gone, 1), cell, tabSize);
    if (gone > 0) edits.push_back({{start, start + static_cast<std::int64_t>(gone)}, {}});
  });
  changeIndents(e, edits);
}

void indentToPrev(Editor& e, const QVariant&) {
  if (e.document().readOnly()) return;
  const Snapshot& text = e.snapshot();
  LineNo above(e.selectedLines().first);
  std::string indent;
  for (;;) {
    if (above.value == 0) return;
    --above;
    indent = EditorAccess::indentOf(text, above);
    if (text.lineStart(above) + static_cast<std::int64_t>(indent.size()) < text.lineEnd(above)) break;
  }
  std::vector<Edit> edits;
  forEachLine(text, selectedLineBytes(e), [&](LineNo, ByteOffset start, std::string_view bytes) {
    std::size_t old = 0;
    while (old < bytes.size() && isBlank(bytes[old])) ++old;
    addDifference(edits, start, bytes.substr(0, old), indent);
  });
  changeIndents(e, edits);
}

void untabifySelection(Editor& e, const QVariant&) {
  if (e.document().readOnly()) return;
  const int tabSize = e.options().tabSize;
  std::vector<Edit> edits;
  std::string fresh;
  forEachSelectedPiece(e, [&](ByteOffset start, std::string_view bytes, std::int64_t cell) {
    std::size_t tab = bytes.find('\t');
    if (tab == std::string_view::npos) return;
    fresh.clear();
    for (std::size_t from = 0; from < bytes.size(); tab = bytes.find('\t', from)) {
      const std::string_view plain = bytes.substr(from, tab == std::string_view::npos ? tab : tab - from);
      fresh += plain;
      cell = cellBehind(plain, cell, tabSize);
      if (tab == std::string_view::npos) break;
      const std::int64_t next = cell + tabSize - cell % tabSize;
      fresh.append(static_cast<std::size_t>(next - cell), ' ');
      cell = next;
      from = tab + 1;
    }
    addDifference(edits, start, bytes, fresh);
  });
  EditorAccess::change(e, edits);
}

void tabifySelection(Editor& e, const QVariant&) {
  if (e.document().readOnly()) return;
  const int tabSize = e.options().tabSize;
  std::vector<Edit> edits;
  std::string fresh;
  forEachSelectedPiece(e, [&](ByteOffset start, std::string_view bytes, std::int64_t cell) {
    fresh.clear();
    for (std::size_t from = 0; from < bytes.size();) {
      const std::size_t run = std::min(bytes.find_first_of(" \t", from), bytes.size());
      const std::size_t end = std::min(bytes.find_first_not_of(" \t", run), bytes.size());
      const std::string_view plain = bytes.substr(from, run - from), blanks = bytes.substr(run, end - run);
      fresh += plain;
      cell = cellBehind(plain, cell, tabSize);
      const std::int64_t behind = cellBehind(blanks, cell, tabSize);
      if (blanks.size() < 2) {
        fresh += blanks;   // a single blank between words is kept
      } else {
        for (std::int64_t next; (next = cell + tabSize - cell % tabSize) <= behind; cell = next) fresh += '\t';
        fresh.append(static_cast<std::size_t>(behind - cell), ' ');
      }
      cell = behind;
      from = end;
    }
    addDifference(edits, start, bytes, fresh);
  });
  EditorAccess::change(e, edits);
}

}   // namespace commandFunctions
