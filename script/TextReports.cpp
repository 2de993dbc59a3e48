#include "script/TextReports.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QLocale>
#include <algorithm>
#include <climits>
#include <cmath>
#include <optional>
#include <set>

#include "base/Strings.h"
#include "control/code/LanguageTable.h"
#include "document/frmDocument.h"
#include "script/Statements.h"
#include "text/file/FileIo.h"
#include "text/find/Search.h"

using namespace Qt::StringLiterals;

namespace reports {

namespace {

QString label(const char* text) {
  constexpr int kWidth = 14;
  return QString::fromLatin1(text).leftJustified(kWidth) + u": "_s;
}

constexpr std::int64_t kLongestLine = 2000,
                       kAround = 100;            // bytes of a line in a report; of a longer line, bytes beside the match
constexpr qsizetype kLongestReport = 16 << 20;   // characters; near the limit of the log itself

constexpr std::int64_t kStep = 1 << 20;   // bytes scanned between two checks of the control

bool isInsideCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

bool isBlank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

// Makes the text of a report, and finds what is coloured in it, on a thread.
struct Source {
  text::Snapshot text;
  std::shared_ptr<const text::Highlighter> colors;   // null: no language

  explicit Source(TextModel& model)
      : text(model.snapshot()), colors(model.highlighter() ? LanguageTable::find(model.language()) : nullptr) {}
};

// The comments of a text, line by line from the top; the tokens of a line are determined once.
class Comments {
 public:
  Comments(const Source& source, const text::SearchControl& control) : source_(source), control_(control) {
    states_.setHighlighter(source.colors);
  }

  bool holds(text::ByteOffset at) {
    const text::LineNo line = source_.text.lineAt(at);
    scan(line);
    const std::int64_t column = at - source_.text.lineStart(line);
    const auto behind =
        std::partition_point(tokens_.begin(), tokens_.end(), [&](const text::Token& token) { return token.begin <= column; });
    if (behind == tokens_.begin()) return false;
    const text::Token& token = *std::prev(behind);
    return token.kind == text::TokenKind::comment && column < token.begin + token.length;
  }

  bool fills(text::LineNo line) {
    scan(line);
    const std::string content = source_.text.line(line);
    std::int64_t from = 0;
    for (const text::Token& token : tokens_) {
      if (!isBlank(std::string_view(content).substr(std::size_t(from), std::size_t(token.begin - from)))) return false;
      if (token.kind != text::TokenKind::comment) return false;
      from = token.begin + token.length;
    }
    return from > 0 && isBlank(std::string_view(content).substr(std::size_t(from)));
  }

 private:
  void scan(text::LineNo line) {
    if (line_ == line) return;
    tokens_.clear();
    if (source_.colors) {
      const bool next = line_ && line.value == line_->value + 1;
      after_ = source_.colors->scanLine(source_.text.line(line), next ? after_ : stateAt(line), &tokens_);
    }
    line_ = line;
  }
  text::LineState stateAt(text::LineNo line) {
    for (bool exact = false;;) {
      const text::LineState state = states_.stateAt(source_.text, line, kStep, &exact);
      if (exact || control_.cancel) return state;
    }
  }

  const Source& source_;
  const text::SearchControl& control_;
  text::StateCache states_;
  std::optional<text::LineNo> line_;
  text::LineState after_ = 0;
  std::vector<text::Token> tokens_;
};

// The line, or the surroundings of the match in a long line.
QString shownLine(const text::Snapshot& text, text::LineNo line, text::ByteRange hit) {
  const text::ByteRange whole{text.lineStart(line), text.lineEnd(line)};
  if (whole.length() <= kLongestLine) return toQString(text.line(line));
  text::ByteRange shown{std::max(whole.begin, hit.begin - kAround), std::min(whole.end, hit.end + kAround)};
  if (shown.length() > kLongestLine) shown.end = shown.begin + kLongestLine;
  while (shown.begin > whole.begin && isInsideCharacter(text.at(shown.begin))) --shown.begin;
  while (shown.end < whole.end && isInsideCharacter(text.at(shown.end))) ++shown.end;
  return (shown.begin > whole.begin ? u"\u2026"_s : QString()) + toQString(text.bytes(shown)) +
         (shown.end < whole.end ? u"\u2026"_s : QString());
}

using statements::Option;

struct Found {
  std::string error;
  bool cancelled = false;
  QString report;
  std::vector<text::LineNo> lines;   // with a find, ascending
  std::size_t number = 0;
  qsizetype unlisted = 0;
};

Found findAll(const Source& source, const QString& what, const text::SearchOptions& search, const std::set<Option>& options,
              const QString& place, text::SearchControl& control) {
  const auto has = [&](Option option) { return options.count(option) != 0; };
  const text::Snapshot& text = source.text;
  Found found;
  std::vector<text::ByteRange> hits;
  if (!what.isEmpty()) {
    const text::Searcher searcher(fromQString(what), search);
    text::SearchAllResult result = searcher.all(text, {text::ByteOffset(0), text.size()}, &control);
    found.error = searcher.error().empty() ? result.error : searcher.error();
    hits = std::move(result.ranges);
  }
  if (has(Option::skipComments)) {
    Comments comments(source, control);
    std::erase_if(hits, [&](const text::ByteRange& hit) { return !control.cancel && comments.holds(hit.begin); });
  }
  found.number = hits.size();
  std::int64_t lastColumn = 0;
  text::ByteOffset lastHit;
  for (const text::ByteRange& hit : hits) {
    if ((found.cancelled = control.cancel)) return found;
    const text::LineNo line = text.lineAt(hit.begin);
    const bool newLine = found.lines.empty() || found.lines.back() != line;
    if (newLine) found.lines.push_back(line);
    if (has(Option::countOnly) || (!newLine && !has(Option::verbose))) continue;
    if (found.report.size() > kLongestReport) {
      ++found.unlisted;
      continue;
    }
    found.report += place + QString::number(line.value + 1);
    if (has(Option::verbose)) {
      // Counted from the previous match, because a line may be long and full of matches.
      lastColumn = (newLine ? 0 : lastColumn) + toQString(text.bytes({newLine ? text.lineStart(line) : lastHit, hit.begin})).size();
      lastHit = hit.begin;
      found.report += u',' + QString::number(lastColumn);
    }
    found.report += u": "_s + shownLine(text, line, hit) + u"\r\n"_s;
  }
  found.cancelled = control.cancel;
  return found;
}

}   // namespace

LineCounts countLines(frmDocument& document) {
  const Source source(*document.cmx->model());
  LineCounts counts;
  document.cmx->editor().host().work(source.text.size().value, [&](text::SearchControl& control) {
    Comments comments(source, control);
    for (text::LineNo line; line.value < source.text.lineCount() && !control.cancel; ++line) {
      if (isBlank(source.text.line(line))) ++counts.blank;
      else if (comments.fills(line)) ++counts.comments;
      control.bytesDone = source.text.lineStart(line).value;
    }
    counts.whole = !control.cancel;
  });
  return counts;
}

QString fileInformation(frmDocument& document) {
  const bool named = !document.CurrentFileName().isEmpty();
  const text::FileStamp file = named ? text::stampOf(fromQString(document.CurrentFileName()), false) : text::FileStamp();
  QStringList lines;
  const QString path =
      named ? document.CurrentFileName() : document.CurrentFileDir() + QDir::separator() + document.CurrentFileTitle();
  lines << label("Path") + plainForDisplay(path, INT_MAX);   // a name may contain a line break
  const QDateTime time = file.exists ? QDateTime::fromMSecsSinceEpoch(file.status.mtimeNs / 1'000'000) : QDateTime();
  lines << label("Last Modified") +
               (time.isValid() ? QLocale().toString(time.date(), QLocale::ShortFormat) + time.time().toString(u" hh:mm:ss"_s)
                               : QString());
  lines << label("Size") + QString::number(document.cmx->TextLength()) + u" bytes"_s;
  const qint64 total = document.cmx->LineCount();
  lines << label("Lines") + QString::number(total);
  if (document.LanguageIndex() > 0) {
    const LineCounts counts = countLines(document);
    if (counts.whole)
      lines << label("Comments") +
                   u"%1 (%2%)"_s.arg(counts.comments).arg(std::llround(100.0 * double(counts.comments) / double(total)));
    if (counts.whole) lines << label("Blank Lines") + QString::number(counts.blank);
  }
  if (named && text::writeProtected(fromQString(document.CurrentFileName()))) lines << u"Read Only"_s;
  return lines.join(u"\r\n"_s);
}

QString usage(frmDocument& document, const QString& argument, const QString& about) {
  QString what = argument;
  std::set<Option> options;
  // Options stand at the end; the same text between words belongs to the search text.
  for (bool taken = true; std::exchange(taken, false);) {
    QStringView rest(what);
    while (rest.endsWith(u' ')) rest.chop(1);
    for (const statements::UsageOption& option : statements::usageOptions()) {
      const QLatin1String text(option.text);
      if (!rest.endsWith(text)) continue;
      options.insert(option.option);
      what.truncate(rest.size() - text.size());
      taken = true;
      break;
    }
  }
  const auto has = [&](statements::Option option) { return options.count(option) != 0; };
  CodeMax& cmx = *document.cmx;
  text::SearchOptions search;
  search.matchCase = has(Option::caseSensitive);
  search.wholeWord = has(Option::wholeWords);

  const QString place = about.isEmpty() ? about : about + u':', ofFile = about.isEmpty() ? about : place + u' ';
  Found found;
  const Source source(*cmx.model());
  cmx.editor().host().work(source.text.size().value,
                           [&](text::SearchControl& control) { found = findAll(source, what, search, options, place, control); });
  if (found.cancelled) return ofFile + QCoreApplication::translate("mCMXParser", "Cancelled") + u"\r\n"_s;
  if (!found.error.empty()) return ofFile + QString::fromStdString(found.error) + u"\r\n"_s;
  if (has(Option::bookmark)) cmx.model()->setBookmarks(found.lines, true);
  if (found.unlisted > 0)
    found.report += ofFile + QCoreApplication::translate("mCMXParser", "[%1 more not listed]").arg(found.unlisted) + u"\r\n"_s;
  return found.report + ofFile + QCoreApplication::translate("mCMXParser", "%1 occurrence(s) of '%2'").arg(found.number).arg(what) +
         u"\r\n"_s;
}

}   // namespace reports
