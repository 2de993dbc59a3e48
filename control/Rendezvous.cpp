#include "control/Rendezvous.h"

#include <QFileInfo>

#include "base/Program.h"
#include "control/TextModel.h"
#include "text/FileSystem.h"

#ifndef Q_OS_WIN
#include <unistd.h>
#endif

namespace {

constexpr unsigned kOthersRights = 077, kPrivate = 0700, kPrivateFile = 0600;

// A real folder (no link), ours, closed to everybody else.
bool isPrivate(const QString& folder) {
#ifdef Q_OS_WIN
  return QFileInfo(folder).isDir();
#else
  text::FileStatus status;
  return text::fileSystem().statAt(text::FileSystem::kCwd, fromQString(folder), false, &status) == 0 &&
         status.isDirectory() && status.owner == ::getuid() && (status.mode & kOthersRights) == 0;
#endif
}

QString privateFolder() {
  const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
  for (const QString& parent : {runtime.startsWith(u'/') && isPrivate(runtime) ? runtime : QString(), userStateFolder()}) {
    if (parent.isEmpty()) continue;
    const QString folder = parent + QLatin1String("/zelkor-meet");
    text::fileSystem().makeDirAt(text::FileSystem::kCwd, fromQString(folder), kPrivate);
    if (isPrivate(folder)) return folder;
  }
  return {};
}

}  // namespace

Rendezvous::Rendezvous(const QString& display) : folder_(privateFolder()) {
  for (const QChar c : display.left(40)) name_ += c.isLetterOrNumber() && c.unicode() < 128 ? c : QChar(u'_');
}

Rendezvous::~Rendezvous() { resign(); }

bool Rendezvous::becomeFirst() {
  if (isFirst()) return true;
  if (!usable()) return false;
  text::FileSystem& files = text::fileSystem();
  const std::string path = fromQString(folder_ + u'/' + name_ + QLatin1String(".lock"));
  const int fd = files.openAt(text::FileSystem::kCwd, path, text::kRead | text::kWrite | text::kCreate | text::kNoFollow,
                              kPrivateFile);
  if (fd < 0) return false;
  if (files.lock(fd, true, false) != 0) {
    files.close(fd);
    return false;
  }
  lock_ = fd;
  return true;
}

void Rendezvous::resign() {
  if (lock_ >= 0) text::fileSystem().close(lock_);
  lock_ = -1;
}

QString Rendezvous::socketPath() const { return folder_ + u'/' + name_ + QLatin1String(".sock"); }
