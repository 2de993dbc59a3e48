#include "base/Program.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <utility>

#include "base/Strings.h"
#include "base/Workspace.h"

namespace {

struct Shared {
  QString folder;
  std::function<void(const QString&)> status, report;
  bool busy = false;
};
Shared& shared() { return Workspace::current().part<Shared>(); }

bool holdsOurFiles(const QString& folder) {
  return QFileInfo(joinPath(folder, QStringLiteral("config"))).isDir() &&
         QFileInfo(joinPath(folder, QStringLiteral("Samples"))).isDir();
}

}   // namespace

QString applicationFolder() {
  if (!shared().folder.isEmpty()) return shared().folder;
  const QString own = QCoreApplication::applicationDirPath();
  return holdsOurFiles(own) ? own : QDir::cleanPath(own + QStringLiteral("/../share/zelkor"));
}
void setApplicationFolder(const QString& folder) { shared().folder = folder; }

void SetStatusText(const QString& text) {
  if (shared().status) shared().status(text);
}
void setStatusSink(std::function<void(const QString&)> function) { shared().status = std::move(function); }

void AppendReport(const QString& line) {
  if (shared().report) shared().report(line);
}
void setReportSink(std::function<void(const QString&)> function) { shared().report = std::move(function); }

bool gBusy() { return shared().busy; }
BusyGuard::BusyGuard() : previous_(std::exchange(shared().busy, true)) {}
BusyGuard::~BusyGuard() { shared().busy = previous_; }
