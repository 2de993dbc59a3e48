#include "control/folds/StickyLine.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>

#include "control/code/BlockFinder.h"
#include "control/view/Pane.h"

using text::LineNo;

namespace {
constexpr std::int64_t kMostEvents = 20000;   // looked at above the window
}   // namespace

StickyLine::StickyLine(Pane& pane) : QWidget(&pane), pane_(pane) {
  setCursor(Qt::PointingHandCursor);
  setToolTip(tr("The beginning of the block at the upper edge; a click goes there"));
  TextModel& model = pane.editor().model();
  connect(&pane, &Pane::scrolled, this, &StickyLine::follow);
  connect(&BlockFinder::of(model), &BlockFinder::found, this, &StickyLine::follow);
  connect(&model, &TextModel::appearanceChanged, this, [this] { update(); });
  connect(&model, &TextModel::changed, this, [this](const text::Change& change) {
    setLine(line_ < 0 || change.reset ? -1 : change.mapLine(LineNo(line_), pane_.view().snapshot()).value);
  });
  follow();
}

void StickyLine::follow() {
  const auto blocks = BlockFinder::of(pane_.editor().model()).known();
  if (!blocks) return;   // then it stays with its text until they are
  const LineNo top(pane_.view().firstVisible());
  std::int64_t line = -1;
  for (const text::Fold& fold : blocks->foldsAround(top, kMostEvents, 2))
    if (fold.first < top && line < 0) line = fold.first.value;
  setLine(line);
}

void StickyLine::setLine(std::int64_t line) {
  line_ = line;
  update();
}

void StickyLine::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  TextView& view = pane_.view();
  const ColorScheme& colors = view.state().colors;
  painter.fillRect(rect(), colors.color(ColorSlot::Window));
  if (view.margin > 0) painter.fillRect(QRect(0, 0, view.margin - 1, height()), colors.color(ColorSlot::LeftMargin));
  if (line_ >= 0 && line_ < view.rows.map.lines()) {
    const QScopedValueRollback top(view.top, view.topOf({LineNo(line_), 0}));   // the painter paints what stands there
    PaneLook look;
    look.selection = pane_.editor().selection();
    PanePainter(painter, view, look).paint(QRect(0, 0, width(), view.lineHeight()));
    painter.setClipping(false);
  }
  painter.fillRect(QRect(0, height() - 1, width(), 1), colors.color(ColorSlot::Divider));
}

void StickyLine::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || line_ < 0) return QWidget::mousePressEvent(event);
  pane_.runCommand(static_cast<int>(Cmd::GOTOLINE), static_cast<qlonglong>(line_));
  pane_.setFocus();
}
