#include "document/Messages.h"

#include <QDir>
#include <QRegularExpression>

#include "bridge/FileNames.h"
#include "bridge/QStringBytes.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int kLongestNumber = 9;         // digits
constexpr std::size_t kBeginnings = 16;   // number of possible starts of a file name tried for one line number

// Possible starts of a file name that ends at `end`, best first: the start of the line or the place behind a separator (names may
// hold blanks), then the places behind the last blanks.
std::vector<qsizetype> beginnings(const QString& line, qsizetype end) {
  std::vector<qsizetype> starts;
  const auto isBlank = [](QChar c) { return c == u' ' || c == u'\t'; };
  const auto add = [&](qsizetype at) {
    while (at < end && isBlank(line[at])) ++at;
    if (at < end && std::find(starts.begin(), starts.end(), at) == starts.end()) starts.push_back(at);
  };
  add(0);
  for (qsizetype i = end - 1; i >= 0; --i) {
    const QChar c = line[i];
    if (c == u'"' || c == u'\'' || c == u'[' || c == u'(' || c == u'<' || c == u'`') {
      add(i + 1);
      break;
    }
    if (starts.size() < kBeginnings && isBlank(c) && i + 1 < end && !isBlank(line[i + 1])) add(i + 1);   // also "Error: file"
  }
  return starts;
}

// The log shows a byte that is not valid UTF-8 as "\xff". This restores the byte.
QString withBytes(const QString& shown) {
  static const QRegularExpression code(u"\\\\x([89a-f][0-9a-f])"_s);
  QString name;
  qsizetype done = 0;
  for (auto matches = code.globalMatch(shown); matches.hasNext();) {
    const auto match = matches.next();
    name += shown.mid(done, match.capturedStart() - done) + QChar(ushort(kBadByte + match.captured(1).toInt(nullptr, 16)));
    done = match.capturedEnd();
  }
  return name + shown.mid(done);
}

// The first place in the line that `found` accepts. Likelier forms of the same numbers come first: "file:12:3", "file:12",
// "file(12)", "file(12,3)", file", line 12. Candidates are made one at a time: most lines have none, some have very many.
template <class Found>
std::optional<MessagePlace> firstPlace(const QString& line, Found found) {
  // Matches the numbers behind a name; the name is searched from its end.
  static const QRegularExpression numbers(
      u"(?::(\\d{1,%1})(?::(\\d{1,%1}))?(?!\\d))|(?:\\((\\d{1,%1})(?:\\s*,\\s*(\\d{1,%1}))?\\))|(?:[\"']?,\\s+line\\s+(\\d{1,%1})(?!\\d))"_s
          .arg(kLongestNumber));
  for (auto matches = numbers.globalMatch(line); matches.hasNext();) {
    const auto match = matches.next();
    const int group = match.capturedStart(1) >= 0 ? 1 : match.capturedStart(3) >= 0 ? 3 : 5;
    MessagePlace place;
    place.line = match.captured(group).toLongLong();
    if (group != 5) place.column = match.captured(group + 1).toLongLong();
    qsizetype end = match.capturedStart();
    if (end > 0 && (line[end - 1] == u'"' || line[end - 1] == u'\'')) --end;
    if (place.line == 0) continue;
    for (const qsizetype begin : beginnings(line, end)) {
      place.file = line.mid(begin, end - begin).trimmed();
      place.begin = begin;
      place.length = match.capturedEnd() - begin;
      if (!place.file.isEmpty() && found(place)) return place;
    }
  }
  return std::nullopt;
}

}   // namespace

bool speaksOfError(QStringView logLine) {
  static const QRegularExpression report(
      u"(?<!\\b0 )\\b(?i:error|fatal)\\b"
      u"|\\bUVM_(?:ERROR|FATAL)\\b(?!\\s*:\\s*0\\b)"
      u"|: \\*[EF],|^@E:"
      u"|:\\((?:report|assertion) failure\\):"
      u"|^[^:]+\\.(?i:vhdl?):\\d+:\\d+:(?!@| ?(?:warning|note|info)\\b)"_s);   // warnings and notes have a word, errors often none
  return report.match(logLine.left(kLongestMessage).toString()).hasMatch();
}

bool MessageFinder::holds(const QString& folder, const QString& file) {
  auto known = entries_.find(folder);
  if (known == entries_.end()) {
    const QStringList names = folderNames(folder) << u"."_s << u".."_s;
    known = entries_.insert(folder, QSet<QString>(names.begin(), names.end()));
  }
  return known->contains(file.section(u'/', 0, 0)) && isRegularFile(QDir(folder).filePath(file));
}

bool MessageFinder::isThere(MessagePlace& place) {
  QString file = place.file;
  QStringList spellings{file};
  if (const QString bytes = withBytes(file); bytes != file) spellings << bytes;
  if (QDir::isAbsolutePath(file)) {
    for (const QString& spelling : std::as_const(spellings)) {
      if (!isRegularFile(spelling)) continue;
      place.file = QDir::cleanPath(spelling);
      return true;
    }
    return false;
  }
#ifndef Q_OS_WIN
  if (file.contains(u'\\')) spellings << file.replace(u'\\', u'/');   // tools from another system
#endif
  for (const QString& folder : std::as_const(folders_)) {
    for (const QString& spelling : spellings) {
      if (!holds(folder, spelling)) continue;
      place.file = QDir::cleanPath(QDir(folder).absoluteFilePath(spelling));
      return true;
    }
  }
  return false;
}

std::optional<MessagePlace> MessageFinder::find(const QString& logLine) {
  return firstPlace(logLine.left(kLongestMessage), [this](MessagePlace& place) { return isThere(place); });
}
