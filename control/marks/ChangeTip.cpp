#include "control/marks/ChangeTip.h"

#include <QCoreApplication>
#include <QHelpEvent>
#include <QToolTip>

#include "base/Strings.h"
#include "bridge/QStringBytes.h"
#include "control/marks/ChangeMarks.h"
#include "control/view/Pane.h"
#include "text/line/LineReader.h"

using text::LineNo;

namespace {

constexpr int kWidth = 10;                          // pixels beside the text
constexpr std::int64_t kLines = 20, kBytes = 400;   // of the file that are shown
constexpr int kShown = 120;                         // characters of a line

QString before(const text::Snapshot& file, const text::LineHunk& hunk) {
  QString shown;
  for (LineNo line = hunk.beforeBegin; line < hunk.beforeEnd; ++line) {
    if (line - hunk.beforeBegin >= kLines) {
      shown +=
          QCoreApplication::translate("ChangeTip", "... and %n more line(s)", nullptr, static_cast<int>(hunk.beforeEnd - line));
      break;
    }
    shown += plainForDisplay(toQString(text::beginOfLine(file, line, kBytes)), kShown) + u'\n';
  }
  return shown;
}

}   // namespace

ChangeTip::ChangeTip(Pane& pane) : QObject(&pane), pane_(pane) { pane.viewport()->installEventFilter(this); }

bool ChangeTip::eventFilter(QObject*, QEvent* event) {
  if (event->type() != QEvent::ToolTip) return false;
  const auto* help = static_cast<QHelpEvent*>(event);
  TextView& view = pane_.view();
  const int x = help->pos().x();
  if (!view.state().options->aids.changeMarks || x >= view.margin - view.foldMargin || x < view.margin - view.foldMargin - kWidth ||
      view.belowText(help->pos().y()))
    return false;
  const LineNo line(view.lineAtY(help->pos().y()));
  const ChangeMarks& marks = ChangeMarks::of(*view.state().model);
  const ChangeMarks::Line change = marks.at(line, view.rows.map.shownFrom(line + 1));
  if (!change.hunk) return false;
  QString title = QCoreApplication::translate("ChangeTip", "In the file:");
  if (change.hunk->beforeBegin == change.hunk->beforeEnd) title = QCoreApplication::translate("ChangeTip", "Not in the file");
  else if (change.hunk->afterBegin == change.hunk->afterEnd) title = QCoreApplication::translate("ChangeTip", "Removed here:");
  const QString tip =
      QStringLiteral("<p>%1</p><pre>%2</pre>").arg(title.toHtmlEscaped(), before(marks.file(), *change.hunk).toHtmlEscaped());
  QToolTip::showText(help->globalPos(), tip, pane_.viewport());
  return true;
}
