// The line at the upper edge of a pane that shows where the block begins in which the text above the edge goes on. A click goes there.
#pragma once

#include <QWidget>

#include "text/store/Change.h"

class Pane;

class StickyLine : public QWidget {
  Q_OBJECT
 public:
  explicit StickyLine(Pane& pane);              // above its viewport
  std::int64_t line() const { return line_; }   // from 0; -1: none

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  void follow();   // what is seen, or the blocks of the text
  void setLine(std::int64_t line);

  Pane& pane_;
  std::int64_t line_ = -1;
};
