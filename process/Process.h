// Starts other programs and follows them to their end.
//
// No shell is used. Only the standard channels are passed on: input is empty; output and errors share one channel, which keeps
// their order, and arrive as a signal. The program leads its own process group, which stop() ends. The user interface stays
// responsive while a program is awaited. Results are 32-bit codes, as the command language shows them:
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

// True: the result says that the program could not be started; *errorNumber is the reason.
bool startFailed(quint32 result, int* errorNumber = nullptr);

// One started program. It deletes itself when it has ended and its output has been read to the end.
class Program : public QObject {
  Q_OBJECT
 public:
  // arguments[0] is the name of the program, as findProgram takes it. Null: it did not start; *error is an errno value.
  static Program* start(const std::vector<std::string>& arguments, std::optional<int> style, int* error);
  static QList<Program*> running();   // programs that have not ended, oldest first

  qint64 processId() const { return id_; }
  const std::string& name() const { return name_; }   // arguments[0]
  bool ended() const { return ended_; }
  int exitCode() const { return exitCode_; }
  void stop();   // asks the whole process group to end and kills it two seconds later
  ~Program() override;

 signals:
  void output(
      // standard output and errors as they arrive, in pieces of any size; waits for receivers with a direct connection
      const QByteArray& bytes);
  void finished(int exitCode);   // emitted after all output that the program itself has written

 private:
  Program();
  static QList<Program*>& all();   // that have not gone, oldest first
  void end(int exitCode);
  struct Impl;
  std::unique_ptr<Impl> impl_;
  qint64 id_ = 0;
  std::string name_;
  bool ended_ = false;
  int exitCode_ = 0;
};

// What a caller does with the program as soon as it runs, such as connecting its output.
using Started = std::function<void(Program&)>;

// Starts and waits, at most `timeout` milliseconds when given. After a time-out the program continues.
quint32 LaunchAndWait(const std::vector<std::string>& arguments, std::optional<int> style = {}, std::optional<quint32> timeout = {},
                      const Started& started = {});
// Starts and waits for the end. Every 100 ms, if the title of the program's window begins with "FINISHED" in any case, the window
// is asked to close. Where windows cannot be seen, only the end is awaited.
quint32 LaunchAndWatch(const std::vector<std::string>& arguments, std::optional<int> style = {}, const Started& started = {});

}   // namespace process
