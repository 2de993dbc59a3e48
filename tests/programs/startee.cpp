// A program that tests start. Its first argument says what it does:
//   args ...            prints each further argument as hexadecimal digits, one a line
//   exit N              ends with that code
//   out TEXT err TEXT   any number of pairs: prints to that channel
//   sleep MS            sleeps (before what follows)
//   await FILE          waits until FILE is there (before what follows), five minutes at most
//   hold FIFO           opens FIFO for writing, and so holds it until it ends
//   ignore              ignores polite requests to end (before what follows)
//   flood N             prints N lines of 100 characters
//   child ...           starts a copy of itself that does what follows, and does nothing more itself but sleep for five minutes
//   orphan ...          the same, and ends at once
//   touch FILE          creates FILE
//   fds                 prints the numbers of the open channels
//   stdin               prints how many bytes it can read
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

int main(int argc, char** argv) {
  int code = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string what = argv[i];
    const auto next = [&] { return i + 1 < argc ? argv[++i] : argv[argc - 1]; };
    if (what == "args") {
      while (++i < argc) {
        for (const char* c = argv[i]; *c; ++c) std::printf("%02x", static_cast<unsigned char>(*c));
        std::printf("\n");
      }
    } else if (what == "exit") {
      code = std::atoi(next());
    } else if (what == "out") {
      std::printf("%s\n", next());
      std::fflush(stdout);
    } else if (what == "err") {
      std::fprintf(stderr, "%s\n", next());
    } else if (what == "sleep") {
      std::fflush(stdout);
      ::usleep(useconds_t(std::atoi(next())) * 1000);
    } else if (what == "await") {
      const char* const file = next();
      for (int n = 0; n < 300'000 && ::access(file, F_OK) != 0; n += 5) ::usleep(5000);
    } else if (what == "hold") {
      if (::open(next(), O_WRONLY) < 0) return 1;
    } else if (what == "ignore") {
      ::signal(SIGTERM, SIG_IGN);
      ::signal(SIGHUP, SIG_IGN);
    } else if (what == "flood") {
      const std::string line(99, 'x');
      for (long n = std::atol(next()); n > 0; --n) std::puts(line.c_str());
    } else if (what == "child" || what == "orphan") {
      if (::fork() == 0) ::execv("/proc/self/exe", argv + i);
      if (what == "child") ::sleep(300);
      return 0;
    } else if (what == "touch") {
      ::close(::open(next(), O_WRONLY | O_CREAT, 0600));
    } else if (what == "fds") {
      for (int fd = 0; fd < 1024; ++fd)
        if (::fcntl(fd, F_GETFD) >= 0) std::printf("%d ", fd);
      std::printf("\n");
    } else if (what == "stdin") {
      char buffer[100];
      std::printf("%d\n", int(::read(0, buffer, sizeof buffer)));
    }
  }
  return code;
}
