// Letting the event loop run for a while in a test.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

// Bounds a hang and nothing else: what is waited for ends the wait. A busy machine may take its time.
inline constexpr int kPatience = 120'000;   // milliseconds

// Lets everything happen that is on its way, and at least so much time pass. One event may bring about another, and on a busy machine
// a round may take all the time: so there are always some rounds.
inline void settle(int milliseconds) {
  const QDeadlineTimer end(milliseconds);
  for (int round = 0; round < 20 || !end.hasExpired(); ++round) {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    QThread::usleep(500);
  }
}

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
