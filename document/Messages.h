// Messages of compilers and simulators: which place of which file a line of the log speaks of.
#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <optional>

struct MessagePlace {
  QString file;                      // as it is written
  qint64 line = 0, column = 0;       // from 1; column 0: not said
  qsizetype begin = 0, length = 0;   // where in the log line file and numbers stand
};

constexpr qsizetype kLongestMessage = 1000;   // characters of a line that are looked at; what lies behind is no message

// The line reports an error, in the words or marks that compilers and simulators have for it. A count of none is no error.
bool speaksOfError(QStringView logLine);

// Finds the first place in a line whose file exists, looked up in the folders when its path is relative. A folder is read once in the life of
// a finder, so that lines that only look like messages cost no call of the system. May be used on any one thread.
class MessageFinder {
 public:
  explicit MessageFinder(QStringList folders) : folders_(std::move(folders)) {}
  std::optional<MessagePlace> find(const QString& logLine);   // `file` is then absolute

 private:
  bool holds(const QString& folder, const QString& file);
  bool isThere(MessagePlace& place);   // its file is absolute then
  QStringList folders_;
  QHash<QString, QSet<QString>> entries_;
};
