// Finds the file position in a line of the log that is a message of a compiler or simulator.
#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <optional>

struct MessagePlace {
  QString file;                      // as it is written
  qint64 line = 0, column = 0;       // from 1; column 0: not said
  qsizetype begin = 0, length = 0;   // position of file name and numbers in the log line
};

constexpr qsizetype kLongestMessage = 1000;   // characters; the rest of a longer line is not examined

// True: the line reports an error, in the wording or format of compilers and simulators. "0 errors" is not an error.
bool speaksOfError(QStringView logLine);

// Finds the first place in a line whose file exists; a relative path is looked up in the folders. Each folder is read only once by
// a finder, so that lines that merely look like messages cost no system call. May be used on one thread at a time.
class MessageFinder {
 public:
  explicit MessageFinder(QStringList folders) : folders_(std::move(folders)) {}
  std::optional<MessagePlace> find(const QString& logLine);   // `file` is then absolute

 private:
  bool holds(const QString& folder, const QString& file);
  bool isThere(MessagePlace& place);   // makes the file absolute if it exists
  QStringList folders_;
  QHash<QString, QSet<QString>> entries_;
};
