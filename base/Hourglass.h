// The wait cursor for as long as it lives, also when the work ends by an exception.
#pragma once

#include <QApplication>

class Hourglass {
 public:
  Hourglass() { QApplication::setOverrideCursor(Qt::WaitCursor); }
  ~Hourglass() { QApplication::restoreOverrideCursor(); }
  Hourglass(const Hourglass&) = delete;
  Hourglass& operator=(const Hourglass&) = delete;
};
