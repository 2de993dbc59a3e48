// The vertical scroll bar of a pane, with marks: changed lines at its left edge, what a search finds in the middle, bookmarks at its
// right edge. A click on a mark goes to its line.
//
// The marks are found for each pixel of the bar, a while after something has changed, however many there are.
#pragma once

#include <QScrollBar>
#include <QTimer>
#include <array>
#include <optional>
#include <vector>

#include "text/store/Units.h"

class Pane;
class TextView;

class MarkedBar : public QScrollBar {
 public:
  explicit MarkedBar(Pane& pane);
  static MarkedBar& of(Pane& pane);   // each pane has one

  void marksChanged();   // anything that the marks are made of
  // The line of the mark at a pixel of the bar, or near it; the first one of the lines that share the pixel.
  std::optional<text::LineNo> markAt(int y);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  enum Lane { changes, hits, bookmarks, kLanes };
  struct Pixel {
    std::array<std::int64_t, kLanes> line{-1, -1, -1};   // -1: no mark
    int kind = 0;                                        // ColorSlot of the change
  };
  QRect groove() const;
  QRect slider() const;
  void find();

  Pane& pane_;
  std::vector<Pixel> pixels_;   // of the groove
  bool known_ = false;
  QTimer later_;
};
