#include "control/marks/MarkedBar.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>
#include <algorithm>
#include <cmath>

#include "control/commands/CommandTable.h"
#include "control/marks/ChangeMarks.h"
#include "control/marks/HitLines.h"
#include "control/view/Pane.h"

using text::LineNo;

namespace {
constexpr int kPaintAgainMs = 60;   // after something changed
constexpr int kClickNear = 2;       // pixels beside a mark at which a click still goes to it
}   // namespace

MarkedBar::MarkedBar(Pane& pane) : QScrollBar(Qt::Vertical, &pane), pane_(pane) {
  later_.setSingleShot(true);
  later_.setInterval(kPaintAgainMs);
  connect(&later_, &QTimer::timeout, this, [this] {
    known_ = false;
    update();
  });
}

MarkedBar& MarkedBar::of(Pane& pane) { return *static_cast<MarkedBar*>(pane.verticalScrollBar()); }

void MarkedBar::marksChanged() {
  if (!later_.isActive()) later_.start();
}

QRect MarkedBar::groove() const {
  QStyleOptionSlider option;
  initStyleOption(&option);
  return style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarGroove, this);
}

QRect MarkedBar::slider() const {
  QStyleOptionSlider option;
  initStyleOption(&option);
  return style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
}

void MarkedBar::find() {
  known_ = true;
  pixels_.assign(static_cast<std::size_t>(std::max(0, groove().height())), {});
  const ViewState& state = pane_.view().state();
  if (!state.options->aids.barMarks || pixels_.empty()) return;
  const text::DisplayMap& map = pane_.view().rows.map;
  const std::vector<LineNo> marked = state.model->bookmarks();
  const std::vector<LineNo> none;
  const std::vector<LineNo>& found = state.hitLines ? state.hitLines->lines() : none;
  const ChangeMarks* differing = state.options->aids.changeMarks ? &ChangeMarks::of(*state.model) : nullptr;
  if (marked.empty() && found.empty() && (!differing || differing->parts().empty())) return;
  // A text that fills less than the window fills as much of the bar.
  const auto shown = static_cast<double>(std::max<std::int64_t>(map.shownLines(), pane_.visibleLines()));
  const auto lineAt = [&](std::size_t pixel) {   // the first one that may stand there
    const double row = std::ceil(static_cast<double>(pixel) * shown / static_cast<double>(pixels_.size()));
    return row >= static_cast<double>(map.shownLines()) ? LineNo(map.lines()) : map.shownLine(static_cast<std::int64_t>(row));
  };
  const auto first = [](const std::vector<LineNo>& lines, LineNo begin, LineNo end) {
    const auto at = std::ranges::lower_bound(lines, begin);
    return at != lines.end() && *at < end ? at->value : -1;
  };
  LineNo end = lineAt(0);
  for (std::size_t i = 0; i < pixels_.size(); ++i) {
    const LineNo begin = end;
    end = lineAt(i + 1);
    if (begin >= end) continue;
    Pixel& pixel = pixels_[i];
    pixel.line[hits] = first(found, begin, end);
    pixel.line[bookmarks] = first(marked, begin, end);
    if (!differing) continue;
    const ChangeMarks::Line change = differing->at(begin, end);
    if (!change.hunk) continue;
    pixel.line[changes] = std::clamp(change.hunk->afterBegin, begin, end - 1).value;
    pixel.kind = static_cast<int>(change.kind == ChangeMarks::Line::Kind::added     ? ColorSlot::AddedLine
                                  : change.kind == ChangeMarks::Line::Kind::changed ? ColorSlot::ChangedLine
                                                                                    : ColorSlot::RemovedLine);
  }
}

void MarkedBar::paintEvent(QPaintEvent* event) {
  QScrollBar::paintEvent(event);
  if (!known_) find();
  const QRect part = groove();
  const ColorScheme& colors = pane_.view().state().colors;
  const int lane = std::max(2, part.width() / kLanes);
  QPainter painter(this);
  for (std::size_t i = 0; i < pixels_.size(); ++i) {
    const Pixel& pixel = pixels_[i];
    for (int of = 0; of < kLanes; ++of) {
      if (pixel.line[static_cast<std::size_t>(of)] < 0) continue;
      const ColorSlot slot = of == changes ? static_cast<ColorSlot>(pixel.kind)
                             : of == hits  ? ColorSlot::HitMark
                                           : ColorSlot::Bookmark;
      const int x = of == bookmarks ? part.right() + 1 - lane : part.left() + of * lane;
      painter.fillRect(QRect(x, part.top() + static_cast<int>(i) - 1, lane, 3), colors.color(slot));
    }
  }
}

std::optional<LineNo> MarkedBar::markAt(int y) {
  if (!known_) find();
  const int at = y - groove().top();
  for (int away = 0; away <= kClickNear; ++away)
    for (const int pixel : {at - away, at + away})
      if (pixel >= 0 && pixel < static_cast<int>(pixels_.size()))
        for (const std::int64_t line : pixels_[static_cast<std::size_t>(pixel)].line)
          if (line >= 0) return LineNo(line);
  return std::nullopt;
}

void MarkedBar::mousePressEvent(QMouseEvent* event) {
  const QPoint at = event->position().toPoint();
  if (event->button() == Qt::LeftButton && groove().contains(at) && !slider().contains(at)) {
    if (const auto line = markAt(at.y()); line && line->value < pane_.view().snapshot().lineCount()) {
      const Pane::Action action(pane_);
      pane_.editor().moveCaret(pane_.view().snapshot().lineStart(*line), false);
      noteMove(pane_.editor(), CaretMove::jump);
      pane_.showCaret();
      return event->accept();
    }
  }
  QScrollBar::mousePressEvent(event);
}

void MarkedBar::resizeEvent(QResizeEvent* event) {
  QScrollBar::resizeEvent(event);
  known_ = false;
}
