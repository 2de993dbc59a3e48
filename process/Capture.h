// Runs a program to its end and gives what it has written, as bytes. For short work without questions to the user.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace process {

struct CaptureRules {
  std::chrono::milliseconds timeLimit{30000};
  std::size_t most = std::size_t(1) << 30;   // bytes of output
  std::vector<std::string> set{};            // "NAME=value": variables of its environment
  std::vector<std::string> without{};        // names of variables that it does not inherit
  const std::atomic<bool>* cancel = nullptr;
};

struct Captured {
  enum End { ended, notStarted, cancelled, timedOut, tooMuch };
  End end = ended;
  int error = 0;                // notStarted: an errno value
  int exitCode = 0;             // 128 + signal number where a signal ended it
  std::string output, errors;   // of errors the first 64 KB
};

// Waits on the calling thread, which is not that of the interface. No shell is used; arguments[0] is looked up as findProgram does.
// A program that is cancelled, too slow or too loud is killed with its group.
Captured capture(const std::vector<std::string>& arguments, const CaptureRules& rules);

}   // namespace process
