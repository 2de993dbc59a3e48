#include "base/Program.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

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

}   // namespace

QString applicationFolder() {
  if (!chosenFolder().isEmpty()) return chosenFolder();
  const QString own = QCoreApplication::applicationDirPath();
  return holdsOurFiles(own) ? own : QDir::cleanPath(own + QStringLiteral("/../share/zelkor"));
}
void setApplicationFolder(const QString& folder) { chosenFolder() = folder; }

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
