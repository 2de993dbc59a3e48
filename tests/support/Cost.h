// What something costs the processor, whatever else the machine is busy with.
#pragma once

#include <time.h>

#include <algorithm>

// Milliseconds of the processor that this thread has taken so far.
inline double spentMs() {
  timespec now{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// Those that `act` takes. Of three rounds, which must do the same, the cheapest counts: so only what it always costs is seen.
template <class Act>
double costMs(Act act) {
  double least = 0;
  for (int round = 0; round < 3; ++round) {
    const double before = spentMs();
    act();
    least = round == 0 ? spentMs() - before : std::min(least, spentMs() - before);
  }
  return least;
}
