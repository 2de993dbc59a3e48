// Starting other programs and following them to their end.
//
// Always: no shell; only the standard channels are passed on (input is empty; output and errors are one channel, which keeps
// their order, and comes back as a signal); the program leads a process group of its own, which is what stop() ends. The user interface stays alive while a program is waited
// for. Results are 32-bit codes as callers of the command language know them:
//   a start that failed       error number + kStartFailed
//   LaunchAndWait             kEnded, kTimedOut, kAbandoned (the editor itself ended) or kWaitFailed
//   LaunchAndWatch            the exit code (128 + signal number for a program that a signal ended); 259 when the editor
//                             itself ended before the program
#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace process {

inline constexpr quint32 kStartFailed = 0x80040000, kEnded = 0, kAbandoned = 0x80, kTimedOut = 0x102, kWaitFailed = 0xFFFFFFFF;
inline constexpr int kNormalWindow = 1, kMinimisedNoFocus = 6;

int windowStyle(std::optional<int> asked);   // none, below 0 or above 6: kMinimisedNoFocus

// True for a result that says that the program could not be started; *errorNumber is then why.
bool startFailed(quint32 result, int* errorNumber = nullptr);

// One started program. It lives until it has ended and its output is read to the end, then deletes itself.
class Program : public QObject {
  Q_OBJECT
 public:
  // arguments[0] is the program's name as findProgram takes it. Null when it does not start; *error is then an errno value.
  static Program* start(const std::vector<std::string>& arguments, std::optional<int> style, int* error);
  static QList<Program*> running();   // those that have not ended, oldest first

  qint64 processId() const { return id_; }
  const std::string& name() const { return name_; }   // arguments[0]
  bool ended() const { return ended_; }
  int exitCode() const { return exitCode_; }
  void stop();   // asks the whole group to end, and makes it end two seconds later
  ~Program() override;

 signals:
  void output(
      const QByteArray& bytes);   // standard output and errors as they come, in pieces of any size; blocks direct receivers only
  void finished(int exitCode);    // behind all output that the program itself had written

 private:
  Program();
  void end(int exitCode);
  struct Impl;
  std::unique_ptr<Impl> impl_;
  qint64 id_ = 0;
  std::string name_;
  bool ended_ = false;
  int exitCode_ = 0;
};

// What both do with a program as soon as it runs (connect its output, say).
using Started = std::function<void(Program&)>;

// Starts and waits, at most `timeout` milliseconds when given; on time-out the program goes on.
quint32 LaunchAndWait(const std::vector<std::string>& arguments, std::optional<int> style = {}, std::optional<quint32> timeout = {},
                      const Started& started = {});
// Starts and waits for the end; meanwhile, every 100 ms, the program's window is asked to close when its title begins with
// "FINISHED" in any case. Where windows cannot be seen only the end is waited for.
quint32 LaunchAndWatch(const std::vector<std::string>& arguments, std::optional<int> style = {}, const Started& started = {});

}   // namespace process
