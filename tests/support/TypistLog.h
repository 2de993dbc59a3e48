// What tests/programs/app/typist.cpp tells of its typing, in a file that both it and the test have in memory: it outlives a kill.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>

struct TypistLog {
  static constexpr std::uint32_t kMost = 1 << 17;
  struct Key {
    std::int64_t ms;         // when it had been applied
    std::uint8_t document;   // in the order in which they were opened
    char what;               // a letter, '\n', '\b' (deletes backwards), or 'S': the document was saved
  };
  std::atomic<std::uint32_t> applied;   // keys that are done; the one behind them may be
  Key keys[kMost];

  static std::int64_t now() {   // the same in all processes
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
  }
  // Null: it cannot be had.
  static TypistLog* at(const char* file) {
    const int fd = ::open(file, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) return nullptr;
    void* memory = MAP_FAILED;
    if (::ftruncate(fd, sizeof(TypistLog)) == 0)
      memory = ::mmap(nullptr, sizeof(TypistLog), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    ::close(fd);
    return memory == MAP_FAILED ? nullptr : static_cast<TypistLog*>(memory);
  }
};
