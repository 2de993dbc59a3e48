// The wait cursor for as long as it lives, also when the work ends by an exception; or another shape, such as the arrow with
// an hourglass (Qt::BusyCursor) where the work goes on step by step.
#pragma once

#include <QApplication>

class Hourglass {
 public:
  explicit Hourglass(Qt::CursorShape shape = Qt::WaitCursor) { QApplication::setOverrideCursor(shape); }
  ~Hourglass() { QApplication::restoreOverrideCursor(); }
  Hourglass(const Hourglass&) = delete;
  Hourglass& operator=(const Hourglass&) = delete;
};
