// For tests of how long something takes by the clock on the wall: the time in which the machine itself stood still. A thread on
// each processor wants to run every few milliseconds; where it was kept waiting, so was everybody else there.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace testing_files {

class MachinePace {
 public:
  MachinePace();
  ~MachinePace();
  static std::int64_t now();   // milliseconds of the steady clock
  // For how many milliseconds from `begin` to `end` processors kept a thread waiting, added up over them. What is usual where
  // many want to run, some milliseconds at a time, does not count.
  std::int64_t stoodStill(std::int64_t begin, std::int64_t end) const;

 private:
  struct Gap {
    std::int64_t begin, end;
  };
  struct Processor {
    std::thread thread;
    std::int64_t due;   // when it should run next
  };
  void run(Processor& processor, int number);

  std::atomic<bool> ending_{false};
  mutable std::mutex mutex_;   // of all times
  std::vector<Gap> gaps_;
  std::vector<std::unique_ptr<Processor>> processors_;
};

}   // namespace testing_files
