#ifndef _WIN32

#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <QTimer>
#include <cerrno>

#include "process/CommandLine.h"
#include "process/Process.h"
#include "process/Spawn.h"

namespace process {

namespace {

constexpr int kPieces = 4;         // read in one turn of the event loop, so that a flood of output does not delay the keys
constexpr int kDrainPieces = 64;   // read at the end: more than a pipe can hold
constexpr std::size_t kPiece = 64 << 10;
constexpr int kGrace = 2000;      // milliseconds between SIGTERM and SIGKILL
constexpr int kPollPeriod = 50;   // when the kernel does not report the end

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
  if (*error == 0) *error = spawn(file, arguments, {}, out.ends[1], out.ends[1], &id);
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
