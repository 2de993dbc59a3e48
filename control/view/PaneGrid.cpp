#include "control/view/PaneGrid.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

#include "control/view/Pane.h"

namespace {
constexpr int kBar = 5;              // pixels of a bar
constexpr double kSmallest = 0.06;   // a pane smaller than this fraction is removed
}   // namespace

// A bar between panes, or the handle from which it is dragged.
class SplitHandle : public QWidget {
 public:
  SplitHandle(PaneGrid& grid, Qt::Orientation bar, QWidget* parent) : QWidget(parent), grid_(grid), bar_(bar) {
    setCursor(bar == Qt::Horizontal ? Qt::SplitVCursor : Qt::SplitHCursor);
    if (bar == Qt::Horizontal) setFixedHeight(kBar + 1);
    else setFixedWidth(kBar + 1);
  }

 protected:
  void mousePressEvent(QMouseEvent* event) override { event->accept(); }
  void mouseMoveEvent(QMouseEvent* event) override {
    if (event->buttons() & Qt::LeftButton) grid_.dragged(bar_, grid_.mapFromGlobal(event->globalPosition().toPoint()), false);
  }
  void mouseReleaseEvent(QMouseEvent* event) override {
    grid_.dragged(bar_, grid_.mapFromGlobal(event->globalPosition().toPoint()), true);
  }
  void mouseDoubleClickEvent(QMouseEvent*) override { grid_.toggled(bar_); }
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Button));
    painter.setPen(palette().color(QPalette::Mid));
    if (bar_ == Qt::Horizontal) painter.drawLine(2, height() / 2, width() - 3, height() / 2);
    else painter.drawLine(width() / 2, 2, width() / 2, height() - 3);
  }

 private:
  PaneGrid& grid_;
  Qt::Orientation bar_;
};

PaneGrid::PaneGrid(std::function<Pane*(QWidget*)> make, QWidget* parent) : QWidget(parent), make_(std::move(make)) {
  active_ = addPane(0, 0);
  for (const auto bar : {Qt::Horizontal, Qt::Vertical}) bars_[indexOf(bar)] = new SplitHandle(*this, bar, this);
  arrange();
}

std::vector<Pane*> PaneGrid::panes() const {
  std::vector<Pane*> result;
  for (const auto& row : panes_)
    for (Pane* pane : row)
      if (pane) result.push_back(pane);
  return result;
}

void PaneGrid::activate(Pane* pane) { active_ = pane; }

Pane* PaneGrid::addPane(std::size_t row, std::size_t column) {
  Pane* pane = panes_[row][column] = make_(this);
  for (const auto bar : {Qt::Horizontal, Qt::Vertical}) {
    SplitHandle*& handle = pullers_[row][column][indexOf(bar)];
    handle = new SplitHandle(*this, bar, pane);
    pane->addScrollBarWidget(handle, bar == Qt::Horizontal ? Qt::AlignTop : Qt::AlignLeft);
  }
  pane->show();
  return pane;
}

void PaneGrid::removePane(std::size_t row, std::size_t column) {
  Pane* pane = panes_[row][column];
  if (!pane) return;
  panes_[row][column] = nullptr;
  if (active_ == pane) {   // the remaining pane shows what the user looked at
    active_ = panes_[0][0];
    active_->takeViewOf(*pane);
    if (pane->hasFocus()) active_->setFocus();
  }
  pane->hide();
  pane->deleteLater();
}

void PaneGrid::allow(bool horizontal, bool vertical) {
  allowed_ = {horizontal, vertical};
  for (const auto bar : {Qt::Horizontal, Qt::Vertical})
    if (!allowed_[indexOf(bar)]) split(bar, 0);
  arrange();
}

void PaneGrid::split(Qt::Orientation bar, double place) {
  const bool was = place_[indexOf(bar)] > 0;
  place = allowed_[indexOf(bar)] && place > 0 ? std::clamp(place, 0.02, 0.98) : 0;
  place_[indexOf(bar)] = place;
  if (was != (place > 0)) {
    const std::size_t rows = place_[0] > 0 ? 2 : 1, columns = place_[1] > 0 ? 2 : 1;
    for (std::size_t row = 2; row-- > 0;) {
      for (std::size_t column = 2; column-- > 0;) {
        if (row >= rows || column >= columns) removePane(row, column);
      }
    }
    for (std::size_t row = 0; row < rows; ++row) {
      for (std::size_t column = 0; column < columns; ++column) {
        if (panes_[row][column]) continue;
        Pane* like = bar == Qt::Horizontal ? panes_[0][column] : panes_[row][0];
        if (!like) like = panes_[0][0];
        addPane(row, column)->takeViewOf(*like);
      }
    }
  }
  arrange();
}

void PaneGrid::dragged(Qt::Orientation bar, const QPoint& at, bool finished) {
  const int length = bar == Qt::Horizontal ? height() : width();
  const double place = static_cast<double>(bar == Qt::Horizontal ? at.y() : at.x()) / std::max(1, length);
  const bool tooSmall = place < kSmallest || place > 1 - kSmallest;
  if (place_[indexOf(bar)] == 0 && tooSmall) return;   // not dragged far enough
  pulling_[indexOf(bar)] = !finished;
  split(bar, finished && tooSmall ? 0 : std::clamp(place, 0.02, 0.98));
}

void PaneGrid::toggled(Qt::Orientation bar) { split(bar, place_[indexOf(bar)] > 0 ? 0 : 0.5); }

void PaneGrid::resizeEvent(QResizeEvent*) { arrange(); }

void PaneGrid::arrange() {
  // Starts and ends of the two rows and columns.
  const auto cut = [](int length, double place) {
    const int middle = static_cast<int>(std::lround(length * place));
    return place > 0 ? std::array<int, 4>{0, std::max(0, middle - kBar / 2), middle - kBar / 2 + kBar + 1, length}
                     : std::array<int, 4>{0, length, length, length};
  };
  const auto y = cut(height(), place_[0]), x = cut(width(), place_[1]);
  for (std::size_t row = 0; row < 2; ++row)
    for (std::size_t column = 0; column < 2; ++column)
      if (Pane* pane = panes_[row][column])
        pane->setGeometry(x[column * 2], y[row * 2], std::max(0, x[column * 2 + 1] - x[column * 2]),
                          std::max(0, y[row * 2 + 1] - y[row * 2]));
  bars_[0]->setVisible(place_[0] > 0);
  bars_[0]->setGeometry(0, y[1], width(), kBar + 1);
  bars_[1]->setVisible(place_[1] > 0);
  bars_[1]->setGeometry(x[1], 0, kBar + 1, height());
  for (SplitHandle* bar : bars_) bar->raise();
  for (std::size_t row = 0; row < 2; ++row)
    for (std::size_t column = 0; column < 2; ++column)
      for (std::size_t i = 0; i < 2; ++i)
        if (panes_[row][column]) pullers_[row][column][i]->setVisible(allowed_[i] && (place_[i] == 0 || pulling_[i]));
}
