// Names of files. For the system a name is bytes. In a QString each byte that is not valid UTF-8 is a lone surrogate (toQString),
// so that every name can be converted back exactly. Qt's own file classes lose such bytes. Code that opens a file by a name from
// the user uses this header or text/file/FileSystem.h.
#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <utility>

class QUrl;
struct FileLook;

QString currentFolder();                        // of the process; empty when it is gone
bool setCurrentFolder(const QString& folder);   // false: it stays where it is
// The name resolved against a folder (by default the current one). Resolves "." and ".." but not links.
QString fullPath(const QString& name, const QString& folder = currentFolder());
QString foldersRealPath(const QString& folder);   // links resolved; empty when the folder does not exist
bool fileIsThere(const QString& path);            // of any kind; false also when this cannot be found out
bool fileIsMissing(const QString& path);          // true only when it is certain that there is no file
bool isRegularFile(const QString& path);
bool isFolder(const QString& path);
// Identity of a file whatever its name: device and inode. Empty: the file does not exist, or its identity cannot be read.
using FileId = std::pair<std::uint64_t, std::uint64_t>;
std::optional<FileId> fileId(const QString& path);
bool isSameFile(const QString& a, const QString& b);   // both exist and are the same file
bool isRunnable(const QString& path);                  // a file that this user may execute
// all names in it except "." and "..", unsorted; empty when it cannot be read
QStringList folderNames(const QString& folder);
QString localFile(const QUrl& url);              // the file name of a file URL
QUrl fileUrl(const QString& path);               // the file URL of a name
QString environmentPath(const char* variable);   // empty when the variable is not set

// The user's own folders, made on first use with mode 0700: settings, and state (journal, sockets).
QString userConfigFolder();
QString userStateFolder();

const FileLook& exactFiles();   // for the file dialogs (base/dialog/Dialogs.h)
