// Runs part of a test in a child process, where it may change user, mounts, current folder or file mode mask.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

namespace testing_files {

constexpr int kSkipped = 77;

// 0: no expectation failed in the child. kSkipped: it called skipChild. Else: failed or killed.
inline int inChild(const std::function<void()>& body) {
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    body();
    std::fflush(nullptr);
    ::_exit(::testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  if (child < 0 || ::waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

[[noreturn]] inline void skipChild(const char* why) {
  std::printf("skipped: %s\n", why);
  std::fflush(nullptr);
  ::_exit(kSkipped);
}

}   // namespace testing_files
