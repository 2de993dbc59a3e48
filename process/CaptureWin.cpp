#ifdef _WIN32

#include <QElapsedTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <cerrno>

#include "process/Capture.h"
#include "process/CommandLine.h"

namespace process {

Captured capture(const std::vector<std::string>& arguments, const CaptureRules& rules) {
  Captured result;
  std::string file;
  const std::string searchPath = qgetenv("PATH").toStdString();
  result.error = arguments.empty() ? ENOENT : findProgram(arguments[0], searchPath, &file);
  if (result.error == ENOENT && !arguments.empty()) result.error = findProgram(arguments[0] + ".exe", searchPath, &file);
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const std::string& name : rules.without) environment.remove(QString::fromStdString(name));
  for (const std::string& variable : rules.set) {
    const QString text = QString::fromStdString(variable);
    environment.insert(text.section(QLatin1Char('='), 0, 0), text.section(QLatin1Char('='), 1));
  }
  QStringList rest;
  for (std::size_t i = 1; i < arguments.size(); ++i) rest << QString::fromStdString(arguments[i]);
  QProcess child;
  child.setProcessEnvironment(environment);
  child.setStandardInputFile(QProcess::nullDevice());
  if (result.error == 0) {
    child.start(QString::fromStdString(file), rest);
    if (!child.waitForStarted()) result.error = EACCES;
  }
  if (result.error != 0) {
    result.end = Captured::notStarted;
    return result;
  }
  QElapsedTimer clock;
  clock.start();
  for (bool runs = true; runs;) {
    runs = !child.waitForFinished(20);
    const QByteArray out = child.readAllStandardOutput(), errors = child.readAllStandardError();
    result.output.append(out.constData(), std::size_t(out.size()));
    if (result.errors.size() < (64 << 10)) result.errors.append(errors.constData(), std::size_t(errors.size()));
    if (result.output.size() > rules.most) result.end = Captured::tooMuch;
    else if (runs && rules.cancel && *rules.cancel) result.end = Captured::cancelled;
    else if (runs && clock.elapsed() > rules.timeLimit.count()) result.end = Captured::timedOut;
    if (result.end == Captured::ended) continue;
    child.kill();
    child.waitForFinished();
    return result;
  }
  result.exitCode = child.exitCode();
  return result;
}

}   // namespace process

#endif
