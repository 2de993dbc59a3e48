// What something costs the processor and memory, whatever else the machine is busy with.
#pragma once

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;   // time and memory are then the sanitizer's
#else
constexpr bool kSanitized = false;
#endif

// Bytes of this process.
struct MemoryUse {
  std::int64_t reserved = 0, resident = 0;
};
inline MemoryUse memoryUse() {
  long long reserved = 0, resident = 0;
  std::FILE* file = std::fopen("/proc/self/statm", "r");
  if (!file || std::fscanf(file, "%lld %lld", &reserved, &resident) != 2) reserved = resident = 0;
  if (file) std::fclose(file);
  const std::int64_t page = ::sysconf(_SC_PAGESIZE);
  return {reserved * page, resident * page};
}

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
