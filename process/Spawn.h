// Starts a program of this system; not for Windows.
#pragma once

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>
#include <vector>

namespace process {

struct Pipe {
  int ends[2] = {-1, -1};
  int open() { return ::pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno; }
  int take(int end) { return std::exchange(ends[end], -1); }
  void close(int end) {
    if (const int fd = take(end); fd >= 0) ::close(fd);
  }
  ~Pipe() {
    close(0);
    close(1);
  }
};

// Starts the file, with these arguments, empty input, the leader of its own group. environment: "NAME=value" each, empty: ours.
// out, errors: descriptors that become its output. 0, or an errno value.
int spawn(const std::string& file, const std::vector<std::string>& arguments, const std::vector<std::string>& environment, int out,
          int errors, pid_t* id);

}   // namespace process
