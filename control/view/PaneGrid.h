// Up to four panes of one text in two rows and two columns, with movable bars between. The user drags a bar from the small handles
// above and left of the scroll bars. Dragging a bar to the edge or a double click removes it.
#pragma once

#include <QWidget>
#include <array>
#include <functional>
#include <vector>

class Pane;
class SplitHandle;

class PaneGrid : public QWidget {
  Q_OBJECT
 public:
  // `make` creates a pane; the grid owns it.
  PaneGrid(std::function<Pane*(QWidget* parent)> make, QWidget* parent);

  std::vector<Pane*> panes() const;   // at least one
  Pane* active() const { return active_; }
  void activate(Pane* pane);

  // Which bars are allowed; horizontal bars separate upper and lower panes.
  void allow(bool horizontal, bool vertical);
  bool horizontalAllowed() const { return allowed_[0]; }
  bool verticalAllowed() const { return allowed_[1]; }
  // The position of a bar as a fraction of height or width; 0: no bar.
  void split(Qt::Orientation bar, double place);
  double place(Qt::Orientation bar) const { return place_[indexOf(bar)]; }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  friend class SplitHandle;
  static std::size_t indexOf(Qt::Orientation bar) { return bar == Qt::Horizontal ? 0 : 1; }
  void dragged(Qt::Orientation bar, const QPoint& at, bool finished);
  void toggled(Qt::Orientation bar);
  Pane* addPane(std::size_t row, std::size_t column);
  void removePane(std::size_t row, std::size_t column);
  void arrange();

  std::function<Pane*(QWidget*)> make_;
  std::array<std::array<Pane*, 2>, 2> panes_{};   // [row][column]
  std::array<double, 2> place_{0, 0};             // of the horizontal and of the vertical bar
  std::array<bool, 2> allowed_{true, true};
  std::array<SplitHandle*, 2> bars_{};
  std::array<std::array<std::array<SplitHandle*, 2>, 2>, 2> pullers_{};   // of each pane
  std::array<bool, 2> pulling_{};                                         // hiding a handle would release the mouse
  Pane* active_ = nullptr;
};
