// Names of files. A name is bytes to the system; as a QString each byte that is no UTF-8 is a lone surrogate (toQString), so
// that every name comes back as it was. The tool kit's own file classes lose such bytes: what looks at a file by a name that
// somebody gave goes through here or through text/FileSystem.h.
#pragma once

#include <QString>
#include <cstdint>
#include <optional>
#include <utility>

class QUrl;

QString currentFolder();                      // of the process; empty when it is gone
bool setCurrentFolder(const QString& folder); // false: it stays where it is
// The name against a folder (the current one at first). Links stay as they are, only "." and ".." parts are worked off.
QString fullPath(const QString& name, const QString& folder = currentFolder());
QString foldersRealPath(const QString& folder);   // without links; empty when it is not there
bool fileIsThere(const QString& path);        // of any kind; false also where that cannot be known
bool fileIsMissing(const QString& path);      // it is known that there is none
bool isRegularFile(const QString& path);
bool isFolder(const QString& path);
// What tells files apart whatever their names are: device and number. None: there is no such file, or it cannot be known.
using FileId = std::pair<std::uint64_t, std::uint64_t>;
std::optional<FileId> fileId(const QString& path);
bool isSameFile(const QString& a, const QString& b);   // both are there, and are one file under two names
QString localFile(const QUrl& url);           // the name that a file's address stands for
