#include "bridge/FileNames.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>
#include <cerrno>

#include "base/dialog/Dialogs.h"
#include "bridge/QStringBytes.h"
#include "text/file/FileIo.h"
#include "text/file/FileSystem.h"

#ifndef Q_OS_WIN
#include <unistd.h>

#include <climits>
#include <cstdlib>
#endif

namespace {

int statusOf(const QString& path, text::FileStatus* status) {
  return text::fileSystem().statAt(text::FileSystem::kCwd, fromQString(path), true, status);
}

// Makes the folder with mode 0700 if it is missing. An existing folder keeps its mode.
QString privateFolder(const QString& parent) {
  const QString path = parent + QLatin1String("/zelkor");
  if (fileIsThere(path)) return path;
  text::makeFolders(fromQString(parent));
  text::fileSystem().makeDirAt(text::FileSystem::kCwd, fromQString(path), 0700);
  return path;
}

}   // namespace

#ifdef Q_OS_WIN
QString environmentPath(const char* variable) { return qEnvironmentVariable(variable); }
bool isRunnable(const QString& path) { return QFileInfo(path).isFile() && QFileInfo(path).isExecutable(); }
QString userConfigFolder() { return privateFolder(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)); }
QString userStateFolder() { return privateFolder(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)); }
QString currentFolder() { return QDir::currentPath(); }
bool setCurrentFolder(const QString& folder) { return !folder.isEmpty() && QDir::setCurrent(folder); }
QString foldersRealPath(const QString& folder) { return QDir(folder).canonicalPath(); }
#else
QString environmentPath(const char* variable) {
  const char* value = std::getenv(variable);
  return value ? toQString(value) : QString();
}

bool isRunnable(const QString& path) { return isRegularFile(path) && ::access(fromQString(path).c_str(), X_OK) == 0; }

// The standard for these variables says that a relative path is ignored.
static QString userFolder(const char* variable, const QString& inHome) {
  const QString set = environmentPath(variable), home = environmentPath("HOME");
  return privateFolder(set.startsWith(u'/') ? set : (home.isEmpty() ? QDir::homePath() : home) + inHome);
}
QString userConfigFolder() { return userFolder("XDG_CONFIG_HOME", QStringLiteral("/.config")); }
QString userStateFolder() { return userFolder("XDG_STATE_HOME", QStringLiteral("/.local/state")); }

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

QUrl fileUrl(const QString& path) {
#ifdef Q_OS_WIN
  return QUrl::fromLocalFile(path);
#else
  const std::string bytes = fromQString(path);
  const QByteArray coded = QByteArray::fromRawData(bytes.data(), qsizetype(bytes.size())).toPercentEncoding("/");
  return QUrl(QLatin1String("file://") + QLatin1String(coded), QUrl::StrictMode);
#endif
}

QStringList folderNames(const QString& folder) {
  std::vector<std::string> names;
  QStringList found;
  if (text::fileSystem().listDir(fromQString(folder), &names) < 0) return found;
  for (const std::string& name : names) found << toQString(name);
  return found;
}

const FileLook& exactFiles() {
  static const FileLook look{fileIsThere, isFolder, folderNames};
  return look;
}
