#ifndef _WIN32

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <QTimer>
#include <cerrno>

#include "process/CommandLine.h"
#include "process/Process.h"

extern char** environ;

namespace process {

namespace {

constexpr int kPieces = 4;         // read in one turn of the event loop, so that a flood of output does not delay the keys
constexpr int kDrainPieces = 64;   // read at the end: more than a pipe can hold
constexpr std::size_t kPiece = 64 << 10;
constexpr int kGrace = 2000;      // milliseconds between SIGTERM and SIGKILL
constexpr int kPollPeriod = 50;   // when the kernel does not report the end

struct Pipe {
  int ends[2] = {-1, -1};
  int open() { return ::pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno; }
  int take(int end) { return std::exchange(ends[end], -1); }
  ~Pipe() {
    for (const int fd : ends)
      if (fd >= 0) ::close(fd);
  }
};

int spawn(const std::string& file, const std::vector<std::string>& arguments, const Pipe& out, pid_t* id) {
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out.ends[1], 1);
  posix_spawn_file_actions_adddup2(&actions, out.ends[1], 2);
#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 34)
  posix_spawn_file_actions_addclosefrom_np(&actions, 3);   // also descriptors that a library opened without close-on-exec
#endif
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &all);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  const int error = ::posix_spawn(id, file.c_str(), &actions, &attributes, argv.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

}   // namespace

struct Program::Impl {
  Program* owner;
  int fd = -1;   // output of the program; -1 when it has been read to the end
  std::unique_ptr<QSocketNotifier> notifier;
  int endFd = -1;
  std::unique_ptr<QSocketNotifier> endNotifier;
  QTimer poll, grace;
  bool stopping = false;

  explicit Impl(Program* program) : owner(program) {}
  ~Impl() {
    closeChannel();
    endNotifier.reset();
    if (endFd >= 0) ::close(endFd);
  }

  void closeChannel() {
    notifier.reset();
    if (fd >= 0) ::close(fd);
    fd = -1;
  }

  void watch(int channel) {
    ::fcntl(channel, F_SETFL, O_NONBLOCK);
    fd = channel;
    notifier = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, owner, [this] {
      if (!readSome(kPieces)) dropChannel();
    });
  }

  bool readSome(int pieces) {   // false: end of the output
    for (int n = 0; fd >= 0 && n < pieces; ++n) {
      QByteArray bytes(qsizetype(kPiece), Qt::Uninitialized);
      const ssize_t count = ::read(fd, bytes.data(), kPiece);
      if (count < 0) return errno == EAGAIN || errno == EINTR;
      if (count == 0) return false;
      bytes.truncate(count);
      emit owner->output(bytes);
    }
    return fd >= 0;
  }

  void dropChannel() {
    // The notifier may be the caller, so it is deleted later by the event loop.
    if (notifier) {
      notifier->setEnabled(false);
      notifier.release()->deleteLater();
    }
    closeChannel();
    if (owner->ended_) owner->deleteLater();
  }

  void look() {
    siginfo_t info{};
    if (::waitid(P_PID, id_t(owner->id_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == 0) return;   // still runs
    // Before the process is reaped, its number cannot be given to another process. So the group certainly belongs to it.
    if (stopping) ::kill(-pid_t(owner->id_), SIGKILL);
    int status = 0;
    ::waitpid(pid_t(owner->id_), &status, 0);
    endNotifier.reset();
    poll.stop();
    grace.stop();
    owner->end(WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status));
  }
};

Program::Program() : impl_(std::make_unique<Impl>(this)) {}

Program::~Program() { all().removeOne(this); }

Program* Program::start(const std::vector<std::string>& arguments, std::optional<int> style, int* error) {
  (void)windowStyle(style);   // the window system places windows itself
  std::string file;
  const char* searchPath = ::getenv("PATH");
  *error = arguments.empty() ? ENOENT : findProgram(arguments[0], searchPath ? searchPath : "/usr/bin:/bin", &file);
  for (const std::string& argument : arguments)
    if (*error == 0 && argument.find('\0') != std::string::npos) *error = EINVAL;   // an argument cannot hold NUL and is never cut
  Pipe out;
  pid_t id = 0;
  if (*error == 0) *error = out.open();
  if (*error == 0) *error = spawn(file, arguments, out, &id);
  if (*error != 0) return nullptr;

  auto* const program = new Program;
  all() << program;
  program->id_ = id;
  program->name_ = arguments[0];
  Impl& impl = *program->impl_;
  impl.watch(out.take(0));
#ifdef SYS_pidfd_open
  impl.endFd = int(::syscall(SYS_pidfd_open, id, 0));
#endif
  if (impl.endFd >= 0) {
    impl.endNotifier = std::make_unique<QSocketNotifier>(impl.endFd, QSocketNotifier::Read);
    connect(impl.endNotifier.get(), &QSocketNotifier::activated, program, [&impl] {
      impl.endNotifier->setEnabled(false);
      QMetaObject::invokeMethod(
          impl.owner, [&impl] { impl.look(); }, Qt::QueuedConnection);
    });
  } else {
    connect(&impl.poll, &QTimer::timeout, program, [&impl] { impl.look(); });
    impl.poll.start(kPollPeriod);
  }
  impl.grace.setSingleShot(true);
  connect(&impl.grace, &QTimer::timeout, program, [id] { ::kill(-id, SIGKILL); });
  return program;
}

void Program::end(int exitCode) {
  if (impl_->fd >= 0 && !impl_->readSome(kDrainPieces)) impl_->closeChannel();
  ended_ = true;
  exitCode_ = exitCode;
  emit finished(exitCode);
  if (impl_->fd < 0) deleteLater();
}

void Program::stop() {
  if (ended_ || impl_->stopping) return;
  impl_->stopping = true;
  ::kill(-pid_t(id_), SIGTERM);
  ::kill(-pid_t(id_), SIGCONT);   // a stopped process would not receive the signal
  impl_->grace.start(kGrace);
}

}   // namespace process

#endif
