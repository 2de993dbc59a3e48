// Commands that add carets, turn a selection into carets, and end them.
#include <QCoreApplication>

#include "control/commands/CommandFunctions.h"
#include "control/edit/DisplayRows.h"
#include "control/edit/EditorAccess.h"

using namespace text;

namespace commandFunctions {

namespace {

void note(Editor& e, const char* text) { e.host().note(QCoreApplication::translate("Editor", text)); }

// The part of each row of a column selection. Lines that do not reach the block have none, unless it has no width.
std::vector<Caret> caretsOfBlock(Editor& e) {
  const SelectionState s = e.selection();
  const int tabSize = e.options().tabSize;
  const ColumnBlock block = columnBlock(e.model(), s, tabSize);
  const bool forward = cellOf(e.model(), s.anchor, s.anchorVirtual, tabSize) <= cellOf(e.model(), s.caret, s.caretVirtual, tabSize);
  std::vector<Caret> list;
  for (LineNo line = block.first; line <= block.last; ++line) {
    const ColumnRow row = columnRow(e.model(), line, block.left, block.right, tabSize);
    if (row.missing > 0 && block.left != block.right) continue;
    list.push_back({forward ? row.body.begin : row.body.end, forward ? row.body.end : row.body.begin});
  }
  return list;
}

}   // namespace

bool mayHaveCarets(Editor& e, std::size_t number) {
  if (number <= kMostCarets) return true;
  e.host().note(
      QCoreApplication::translate("Editor", "%1 places are too many for carets; the most is %2").arg(number).arg(kMostCarets));
  return false;
}

void caretAdd(Editor& e, int lines) {
  const std::vector<Caret> list = carets::all(e);
  Caret edge = lines < 0 ? list.front() : list.back();
  const SelectionState s = e.selection();
  const int tabSize = e.options().tabSize;
  if (edge.goal < 0) edge.goal = cellOf(e.model(), edge.caret, s.column ? s.caretVirtual : 0, tabSize);
  LineNo line = e.snapshot().lineAt(edge.caret) + lines;
  if (line.value < 0 || line.value >= e.snapshot().lineCount()) return note(e, "There is no further line");
  if (DisplayRows* const rows = e.host().displayRows())   // over what is folded
    line = e.snapshot().lineAt(rows->shownFrom(e.snapshot().lineStart(line), lines > 0));
  const ByteOffset at = offsetAtCell(e.model(), line, edge.goal, tabSize);
  if (mayHaveCarets(e, list.size() + 1)) carets::add(e, {at, at, edge.goal});
}

void caretsInSelection(Editor& e, const QVariant&) {
  std::vector<Caret> list;
  std::size_t main = 0;
  if (e.selection().column) {
    const ColumnBlock block = columnBlock(e.model(), e.selection(), e.options().tabSize);
    if (!mayHaveCarets(e, static_cast<std::size_t>(block.last - block.first + 1))) return;
    list = caretsOfBlock(e);
    if (e.selection().caret > e.selection().anchor && !list.empty()) main = list.size() - 1;
  } else if (e.spansLines()) {
    const LineRange lines = e.selectedLines();
    if (!mayHaveCarets(e, static_cast<std::size_t>(lines.end - lines.first))) return;
    for (LineNo line(lines.first); line.value < lines.end; ++line)
      list.push_back({e.snapshot().lineEnd(line), e.snapshot().lineEnd(line)});
    if (e.selection().caret > e.selection().anchor) main = list.size() - 1;
  }
  if (list.empty()) return note(e, "There is no selection over several lines");
  if (mayHaveCarets(e, list.size())) carets::set(e, std::move(list), main);
}

void caretsEnd(Editor& e, const QVariant&) { carets::drop(e); }

void caretUndo(Editor& e, const QVariant&) {
  if (!carets::takeBack(e)) note(e, "The carets have not changed since the text changed");
}

}   // namespace commandFunctions
