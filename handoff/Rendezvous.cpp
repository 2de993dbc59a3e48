#include "handoff/Rendezvous.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <cerrno>

#include "base/Program.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/QStringBytes.h"
#include "text/file/FileSystem.h"

#ifndef Q_OS_WIN
#include <sys/un.h>
#include <unistd.h>
#endif

namespace {

const QString kFolder = QStringLiteral("/zelkor-meet");
#ifdef Q_OS_WIN
constexpr std::size_t kLongestSocketPath = 255;
#else
constexpr std::size_t kLongestSocketPath = sizeof(sockaddr_un::sun_path) - 1;
#endif
constexpr unsigned kOthersRights = 077, kPrivate = 0700, kPrivateFile = 0600;

QString tr(const char* text) { return QCoreApplication::translate("Rendezvous", text); }

// A real folder (not a link) that belongs to this user and is closed to others.
bool isPrivate(const QString& folder) {
#ifdef Q_OS_WIN
  return QFileInfo(folder).isDir();
#else
  text::FileStatus status;
  return text::fileSystem().statAt(text::FileSystem::kCwd, fromQString(folder), false, &status) == 0 && status.isDirectory() &&
         status.owner == ::getuid() && (status.mode & kOthersRights) == 0;
#endif
}

}   // namespace

Rendezvous::Rendezvous(const QString& display) {
  for (const QChar c : display.left(40)) name_ += c.isLetterOrNumber() && c.unicode() < 128 ? c : QChar(u'_');
  const QString runtime = environmentPath("XDG_RUNTIME_DIR");
  if (runtime.startsWith(u'/') && isPrivate(runtime) && take(runtime + kFolder)) return;
  take(userStateFolder() + kFolder);
}

bool Rendezvous::take(const QString& folder) {
  folder_ = folder;
  failure_.clear();
  const int made = text::fileSystem().makeDirAt(text::FileSystem::kCwd, fromQString(folder), kPrivate);
  if (fromQString(socketPath()).size() > kLongestSocketPath) {
    failure_ = tr("the path %1 is too long for a socket").arg(plainForDisplay(socketPath()));
  } else if (!isPrivate(folder)) {
    const QString why =
        made < 0 && made != -EEXIST ? toQString(text::errorText(made)) : tr("it is not a folder of this user alone");
    failure_ = tr("%1: %2").arg(plainForDisplay(folder), why);
  }
  return usable();
}

Rendezvous::~Rendezvous() { resign(); }

bool Rendezvous::becomeFirst() {
  if (isFirst()) return true;
  if (!usable()) return false;
  text::FileSystem& files = text::fileSystem();
  const std::string path = fromQString(folder_ + u'/' + name_ + QLatin1String(".lock"));
  const int fd =
      files.openAt(text::FileSystem::kCwd, path, text::kRead | text::kWrite | text::kCreate | text::kNoFollow, kPrivateFile);
  const int error = fd < 0 ? fd : files.lock(fd, true, false);
  if (error == 0) {
    lock_ = fd;
    return true;
  }
  if (fd >= 0) files.close(fd);
  if (error != -EWOULDBLOCK && error != -EINTR)
    failure_ = tr("%1: %2").arg(plainForDisplay(toQString(path)), toQString(text::errorText(error)));
  return false;
}

void Rendezvous::resign() {
  if (lock_ >= 0) text::fileSystem().close(lock_);
  lock_ = -1;
}

QString Rendezvous::socketPath() const { return folder_ + u'/' + name_ + QLatin1String(".sock"); }
