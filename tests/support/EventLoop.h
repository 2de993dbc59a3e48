// Letting the event loop run for a while in a test.
#pragma once

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

// Bounds a hang and nothing else: what is waited for ends the wait. A busy machine may take its time.
inline constexpr int kPatience = 120'000;   // milliseconds

inline void spin(int milliseconds) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
}

// True as soon as the condition holds; false when it did not within the time.
template <class Condition>
bool spinUntil(Condition condition, int milliseconds = kPatience) {
  QElapsedTimer clock;
  clock.start();
  while (!condition()) {
    if (clock.elapsed() > milliseconds) return false;
    spin(5);
  }
  return true;
}
