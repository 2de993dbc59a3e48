#ifndef _WIN32

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "process/Capture.h"
#include "process/CommandLine.h"
#include "process/Spawn.h"

extern char** environ;

namespace process {
namespace {

constexpr std::size_t kErrorsKept = 64 << 10;
constexpr int kDrainedPieces = 64;   // more than a pipe can hold
constexpr int kTurn = 20;            // milliseconds between two looks at the clock

std::vector<std::string> environmentOf(const CaptureRules& rules) {
  std::vector<std::string> all = rules.set;
  const auto nameOf = [](std::string_view variable) { return variable.substr(0, variable.find('=')); };
  for (char** at = environ; *at; ++at) {
    const std::string_view name = nameOf(*at);
    const auto is = [&](const std::string& other) { return nameOf(other) == name; };
    if (std::none_of(rules.set.begin(), rules.set.end(), is) && std::none_of(rules.without.begin(), rules.without.end(), is))
      all.emplace_back(*at);
  }
  return all;
}

// Takes what is there, and not for ever from a flood. False: that was all.
bool take(int fd, std::string* to, std::size_t most) {
  char piece[64 << 10];
  for (int n = 0; n < kDrainedPieces; ++n) {
    const ssize_t count = ::read(fd, piece, sizeof piece);
    if (count < 0) return errno == EAGAIN || errno == EINTR;
    if (count == 0) return false;
    to->append(piece, std::min(static_cast<std::size_t>(count), most - std::min(most, to->size())));
    if (to->size() >= most) break;
  }
  return true;
}

}   // namespace

Captured capture(const std::vector<std::string>& arguments, const CaptureRules& rules) {
  Captured result;
  std::string file;
  const char* const searchPath = std::getenv("PATH");
  result.error = arguments.empty() ? ENOENT : findProgram(arguments[0], searchPath ? searchPath : "/usr/bin:/bin", &file);
  for (const std::string& argument : arguments)
    if (result.error == 0 && argument.find('\0') != std::string::npos) result.error = EINVAL;
  Pipe out, errors;
  pid_t id = 0;
  if (result.error == 0) result.error = out.open();
  if (result.error == 0) result.error = errors.open();
  if (result.error == 0) result.error = spawn(file, arguments, environmentOf(rules), out.ends[1], errors.ends[1], &id);
  if (result.error != 0) {
    result.end = Captured::notStarted;
    return result;
  }
  out.close(1);
  errors.close(1);
  for (const int fd : {out.ends[0], errors.ends[0]}) ::fcntl(fd, F_SETFL, O_NONBLOCK);

  const auto limit = std::chrono::steady_clock::now() + rules.timeLimit;
  std::string rest;   // of the errors; dropped
  int status = 0;
  for (bool gone = false; !gone;) {
    pollfd fds[2] = {{out.ends[0], POLLIN, 0}, {errors.ends[0], POLLIN, 0}};   // closed ones are -1, which is passed over
    ::poll(fds, 2, kTurn);
    // What was written before the end is in the pipes by then; a child of its own may hold them open, and is not waited for.
    gone = ::waitpid(id, &status, WNOHANG) == id;
    if (out.ends[0] >= 0 && !take(out.ends[0], &result.output, rules.most + 1)) out.close(0);
    std::string& errorsTo = result.errors.size() < kErrorsKept ? result.errors : rest;
    rest.clear();
    if (errors.ends[0] >= 0 && !take(errors.ends[0], &errorsTo, kErrorsKept)) errors.close(0);
    if (result.output.size() > rules.most) result.end = Captured::tooMuch;
    else if (!gone && rules.cancel && *rules.cancel) result.end = Captured::cancelled;
    else if (!gone && std::chrono::steady_clock::now() > limit) result.end = Captured::timedOut;
    if (result.end == Captured::ended) continue;
    if (gone) return result;
    ::kill(-id, SIGKILL);
    while (::waitpid(id, &status, 0) < 0 && errno == EINTR) {}
    return result;
  }
  result.exitCode = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  return result;
}

}   // namespace process

#endif
