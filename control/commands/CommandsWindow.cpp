// Scrolling, positions in the window and switches.
#include <algorithm>

#include "control/commands/CommandFunctions.h"
#include "control/edit/DisplayRows.h"
#include "control/edit/EditorAccess.h"

using namespace text;

namespace commandFunctions {

namespace {

void scrollBy(Editor& e, qint64 rows) {
  if (DisplayRows* const shown = e.host().displayRows()) return shown->scrollRows(rows);
  e.host().setTopLine(std::clamp<qint64>(e.host().topLine() + rows, 0, e.snapshot().lineCount() - 1));
}

// Rows from the first one in the window to the caret's.
qint64 belowTop(Editor& e) {
  DisplayRows* const shown = e.host().displayRows();
  return shown ? shown->belowTop(e.selection().caret) : caretLine(e).value - e.host().topLine();
}

void goToCell(Editor& e, qint64 cell) {
  const LineNo line = caretLine(e);
  e.moveCaret(offsetAtCell(e.model(), line, cell, e.options().tabSize), false);
}

}   // namespace

void windowStart(Editor& e, const QVariant&) { moveLines(e, -belowTop(e), false); }
void windowEnd(Editor& e, const QVariant&) { moveLines(e, std::max<qint64>(1, e.host().visibleLines()) - 1 - belowTop(e), false); }
void windowLeftEdge(Editor& e, const QVariant&) { goToCell(e, e.host().leftColumn()); }
void windowRightEdge(Editor& e, const QVariant&) {
  goToCell(e, e.host().leftColumn() + std::max<qint64>(1, e.host().visibleColumns()) - 1);
}
void windowScrollUp(Editor& e, const QVariant&) { scrollBy(e, -1); }
void windowScrollDown(Editor& e, const QVariant&) { scrollBy(e, 1); }
void windowScrollLeft(Editor& e, const QVariant&) { e.host().scrollColumns(-1); }
void windowScrollRight(Editor& e, const QVariant&) { e.host().scrollColumns(1); }
void windowScrollToTop(Editor& e, const QVariant&) { scrollBy(e, belowTop(e)); }
void windowScrollToCenter(Editor& e, const QVariant&) { scrollBy(e, belowTop(e) - e.host().visibleLines() / 2); }
void windowScrollToBottom(Editor& e, const QVariant&) { scrollBy(e, belowTop(e) - e.host().visibleLines() + 1); }

void toggleWordWrap(Editor& e, const QVariant&) { e.host().toggleWordWrap(); }
void toggleWhiteSpaceDisplay(Editor& e, const QVariant&) { e.host().toggleWhiteSpaceDisplay(); }

void toggleOvertype(Editor& e, const QVariant&) {
  e.overtype = !e.overtype;
  if (e.onSelectionChanged) e.onSelectionChanged();   // the caret has another shape
}

void setRepeatCount(Editor& e, const QVariant& argument) {
  e.repeatCount = static_cast<int>(std::clamp<qint64>(argument.toLongLong(), 1, kMostRepeats));
}

void appendNextCut(Editor& e, const QVariant&) { e.appendNextCut = true; }

}   // namespace commandFunctions
