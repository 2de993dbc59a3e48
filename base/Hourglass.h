// Shows the wait cursor during its lifetime, also when an exception ends the work. Another cursor can be given, such as
// Qt::BusyCursor.
#pragma once

#include <QApplication>

class Hourglass {
 public:
  explicit Hourglass(Qt::CursorShape shape = Qt::WaitCursor) { QApplication::setOverrideCursor(shape); }
  ~Hourglass() { QApplication::restoreOverrideCursor(); }
  Hourglass(const Hourglass&) = delete;
  Hourglass& operator=(const Hourglass&) = delete;
};
