#include "base/Program.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include "base/Strings.h"

namespace {

QString& chosenFolder() {
  static QString folder;
  return folder;
}
std::function<void(const QString&)>& sink() {
  static std::function<void(const QString&)> function;
  return function;
}
std::function<void(const QString&)>& reports() {
  static std::function<void(const QString&)> function;
  return function;
}
bool busy = false;

bool holdsOurFiles(const QString& folder) {
  return QFileInfo(joinPath(folder, QStringLiteral("config"))).isDir() &&
         QFileInfo(joinPath(folder, QStringLiteral("Samples"))).isDir();
}

// The folder, made with mode 0700 when it is missing; one that exists keeps its rights.
QString privateFolder(const QString& parent) {
  const QDir dir(parent);
  const QString name = QStringLiteral("zelkor");
  if (!dir.exists(name)) {
    dir.mkpath(QStringLiteral("."));
    dir.mkdir(name, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
  }
  return dir.filePath(name);
}

}  // namespace

QString applicationFolder() {
  if (!chosenFolder().isEmpty()) return chosenFolder();
  const QString own = QCoreApplication::applicationDirPath();
  return holdsOurFiles(own) ? own : QDir::cleanPath(own + QStringLiteral("/../share/zelkor"));
}
void setApplicationFolder(const QString& folder) { chosenFolder() = folder; }

QString userConfigFolder() {
  return privateFolder(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
}

QString userStateFolder() {
#ifdef Q_OS_WIN
  return privateFolder(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
#else
  const QString set = qEnvironmentVariable("XDG_STATE_HOME");   // a relative value is to be ignored
  return privateFolder(QDir::isAbsolutePath(set) ? set : QDir::home().filePath(QStringLiteral(".local/state")));
#endif
}

void SetStatusText(const QString& text) {
  if (sink()) sink()(text);
}
void setStatusSink(std::function<void(const QString&)> function) { sink() = std::move(function); }

void AppendReport(const QString& line) {
  if (reports()) reports()(line);
}
void setReportSink(std::function<void(const QString&)> function) { reports() = std::move(function); }

bool gBusy() { return busy; }
BusyGuard::BusyGuard() : previous_(busy) { busy = true; }
BusyGuard::~BusyGuard() { busy = previous_; }
