#include "process/Process.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include "base/Workspace.h"
#include "process/ProgramWindow.h"

namespace process {

namespace {

constexpr int kWatchPeriod = 100;   // milliseconds
constexpr int kAskAgain = 2000;     // before a window that did not close is asked again
constexpr int kStillActive = 259;

// Runs the event loop until the program ends, the time is over (0: no limit) or the application quits. Returns the exit code, or
// nothing when the program still runs.
std::optional<int> waitFor(Program* program, quint32 timeout) {
  QEventLoop loop;
  std::optional<int> exitCode;
  QObject::connect(program, &Program::finished, &loop, [&](int code) {
    exitCode = code;
    loop.quit();
  });
  if (QCoreApplication::instance())
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &loop, &QEventLoop::quit);
  QTimer limit;
  limit.setSingleShot(true);
  QObject::connect(&limit, &QTimer::timeout, &loop, &QEventLoop::quit);
  if (timeout) limit.start(int(std::min<quint32>(timeout, 0x7FFFFFFF)));
  loop.exec();
  return exitCode;
}

}   // namespace

QList<Program*>& Program::all() {
  struct Programs {
    QList<Program*> list;
  };
  return Workspace::current().part<Programs>().list;
}

QList<Program*> Program::running() {
  QList<Program*> list = all();
  list.removeIf([](const Program* program) { return program->ended_; });
  return list;
}

int windowStyle(std::optional<int> asked) {
  return asked && *asked >= 0 && *asked <= kMinimisedNoFocus ? *asked : kMinimisedNoFocus;
}

bool startFailed(quint32 result, int* errorNumber) {
  // No wait result and no exit code of a supported system lies in this range.
  const bool failed = result >= kStartFailed && result < kStartFailed + 0x10000;
  if (failed && errorNumber) *errorNumber = int(result - kStartFailed);
  return failed;
}

quint32 LaunchAndWait(const std::vector<std::string>& arguments, std::optional<int> style, std::optional<quint32> timeout,
                      const Started& started) {
  int error = 0;
  Program* const program = Program::start(arguments, style, &error);
  if (!program) return kStartFailed + quint32(error);
  if (started) started(*program);
  const bool limited = timeout && *timeout != 0xFFFFFFFF;
  if (waitFor(program, limited ? std::max<quint32>(*timeout, 1) : 0)) return kEnded;
  return limited ? kTimedOut : kAbandoned;
}

quint32 LaunchAndWatch(const std::vector<std::string>& arguments, std::optional<int> style, const Started& started) {
  int error = 0;
  Program* const program = Program::start(arguments, style, &error);
  if (!program) return kStartFailed + quint32(error);
  if (started) started(*program);
  ProgramWindow window;
  QElapsedTimer asked;
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, &watch, [&] {
    if (asked.isValid() && asked.elapsed() < kAskAgain) return;
    if (!window.title(program->processId()).startsWith(QLatin1String("FINISHED"), Qt::CaseInsensitive)) return;
    window.close();
    asked.start();
  });
  QObject::connect(program, &Program::finished, &watch, &QTimer::stop);
  watch.start(kWatchPeriod);
  return quint32(waitFor(program, 0).value_or(kStillActive));
}

}   // namespace process

#include "moc_Process.cpp"
