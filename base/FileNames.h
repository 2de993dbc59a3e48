// Names of files. A name is bytes to the system; as a QString each byte that is no UTF-8 is a lone surrogate (toQString), so
// that every name comes back as it was. The tool kit's own file classes lose such bytes: what looks at a file by a name that
// somebody gave goes through here or through text/file/FileSystem.h.
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
// The name against a folder (the current one at first). Links stay as they are, only "." and ".." parts are worked off.
QString fullPath(const QString& name, const QString& folder = currentFolder());
QString foldersRealPath(const QString& folder);   // without links; empty when it is not there
bool fileIsThere(const QString& path);            // of any kind; false also where that cannot be known
bool fileIsMissing(const QString& path);          // it is known that there is none
bool isRegularFile(const QString& path);
bool isFolder(const QString& path);
// What tells files apart whatever their names are: device and number. None: there is no such file, or it cannot be known.
using FileId = std::pair<std::uint64_t, std::uint64_t>;
std::optional<FileId> fileId(const QString& path);
bool isSameFile(const QString& a, const QString& b);   // both are there, and are one file under two names
bool isRunnable(const QString& path);                  // a file that this user may start
QStringList folderNames(const QString& folder);        // all that is in it but "." and "..", unsorted; none where it cannot be read
QString localFile(const QUrl& url);                    // the name that a file's address stands for
QUrl fileUrl(const QString& path);                     // and the address of a file
QString environmentPath(const char* variable);         // empty where it is not set

// The user's own folders, made on first use with mode 0700: settings, and state (journal, sockets).
QString userConfigFolder();
QString userStateFolder();

const FileLook& exactFiles();   // for the file dialogs (base/dialog/Dialogs.h)
