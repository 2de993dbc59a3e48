#include "tests/support/files/MachinePace.h"

#include <sched.h>

#include <algorithm>
#include <chrono>

namespace testing_files {

namespace {
constexpr std::int64_t kStepMs = 5, kUsualMs = 20;
}

MachinePace::MachinePace() {
  cpu_set_t usable;
  CPU_ZERO(&usable);
  ::sched_getaffinity(0, sizeof usable, &usable);
  for (int number = 0; number < CPU_SETSIZE; ++number) {
    if (!CPU_ISSET(number, &usable)) continue;
    Processor& processor = *processors_.emplace_back(std::make_unique<Processor>());
    processor.due = now() + kStepMs;
    processor.thread = std::thread([this, &processor, number] { run(processor, number); });
  }
}

MachinePace::~MachinePace() {
  ending_ = true;
  for (const auto& processor : processors_) processor->thread.join();
}

std::int64_t MachinePace::now() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void MachinePace::run(Processor& processor, int number) {
  cpu_set_t only;
  CPU_ZERO(&only);
  CPU_SET(number, &only);
  ::sched_setaffinity(0, sizeof only, &only);
  while (!ending_) {
    std::this_thread::sleep_for(std::chrono::milliseconds(kStepMs));
    const std::lock_guard guard(mutex_);
    if (const std::int64_t awake = now(); awake - processor.due > kUsualMs) gaps_.push_back({processor.due, awake});
    processor.due = now() + kStepMs;
  }
}

std::int64_t MachinePace::stoodStill(std::int64_t begin, std::int64_t end) const {
  std::int64_t sum = 0;
  const auto add = [&](const Gap& gap) { sum += std::max<std::int64_t>(0, std::min(gap.end, end) - std::max(gap.begin, begin)); };
  const std::lock_guard guard(mutex_);
  const std::int64_t present = now();
  for (const auto& processor : processors_)   // one may still be waiting
    if (present - processor->due > kUsualMs) add({processor->due, present});
  for (const Gap& gap : gaps_) add(gap);
  return sum;
}

}   // namespace testing_files
