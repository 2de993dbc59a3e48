#include "control/FileNames.h"

#include <QDir>
#include <QUrl>
#include <cerrno>

#include "control/TextModel.h"
#include "text/FileSystem.h"

#ifndef Q_OS_WIN
#include <unistd.h>

#include <climits>
#include <cstdlib>
#endif

namespace {

int statusOf(const QString& path, text::FileStatus* status) {
  return text::fileSystem().statAt(text::FileSystem::kCwd, fromQString(path), true, status);
}

}  // namespace

#ifdef Q_OS_WIN
QString currentFolder() { return QDir::currentPath(); }
bool setCurrentFolder(const QString& folder) { return !folder.isEmpty() && QDir::setCurrent(folder); }
QString foldersRealPath(const QString& folder) { return QDir(folder).canonicalPath(); }
#else
QString currentFolder() {
  char name[PATH_MAX];
  return ::getcwd(name, sizeof name) ? toQString(name) : QString();
}

bool setCurrentFolder(const QString& folder) { return !folder.isEmpty() && ::chdir(fromQString(folder).c_str()) == 0; }

QString foldersRealPath(const QString& folder) {
  char name[PATH_MAX];
  return ::realpath(fromQString(folder).c_str(), name) ? toQString(name) : QString();
}
#endif

QString fullPath(const QString& name, const QString& folder) {
  const QString path = QDir::isAbsolutePath(name) ? name : folder + u'/' + name;
  const QStringList parts = path.split(u'/');
  if (!parts.contains(QLatin1String(".")) && !parts.contains(QLatin1String(".."))) return path;
  const qsizetype at = path.lastIndexOf(u'/');
  const QString real = foldersRealPath(at > 0 ? path.left(at) : QStringLiteral("/"));
  return real.isEmpty() ? QDir::cleanPath(path) : QDir(real).filePath(path.mid(at + 1));
}

bool fileIsThere(const QString& path) {
  text::FileStatus status;
  return statusOf(path, &status) == 0;
}

bool fileIsMissing(const QString& path) {
  text::FileStatus status;
  return statusOf(path, &status) == -ENOENT;
}

bool isRegularFile(const QString& path) {
  text::FileStatus status;
  return statusOf(path, &status) == 0 && status.isRegular();
}

bool isFolder(const QString& path) {
  text::FileStatus status;
  return statusOf(path, &status) == 0 && status.isDirectory();
}

std::optional<FileId> fileId(const QString& path) {
  text::FileStatus status;
  if (statusOf(path, &status) != 0) return std::nullopt;
  return FileId{status.device, status.inode};
}

bool isSameFile(const QString& a, const QString& b) {
  const auto one = fileId(a);
  return one && one == fileId(b);
}

QString localFile(const QUrl& url) {
#ifdef Q_OS_WIN
  return url.toLocalFile();
#else
  const QByteArray bytes = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
  return toQString(std::string_view(bytes.constData(), std::size_t(bytes.size())));
#endif
}
