// The application object of measurements that need widgets, on Qt's offscreen platform.
#pragma once

#include <QApplication>

namespace bench {

inline void needApplication() {
  if (qApp) return;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  static int count = 1;
  static char name[] = "bench";
  static char* names[] = {name, nullptr};
  new QApplication(count, names);
}

}   // namespace bench
