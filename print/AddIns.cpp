#include "print/AddIns.h"

#include <QCoreApplication>
#include <algorithm>
#include <functional>

#include "base/Dialogs.h"
#include "base/Program.h"

namespace {

QString lastDelimiter;

// One line while it grows: what is aligned already is in `done`; `rest` is searched from its start.
struct Growing {
  QString done;
  QStringView rest;
  qsizetype skip = 0;                       // characters of rest that the search passes over
  std::vector<bool> counts;                 // of each character of the original line: may a delimiter stand there
  qsizetype original = 0;                   // characters of the original line in front of rest
  bool ended = false;                       // there is none any more

  // Position in the grown line, from 1, of the next delimiter that counts; 0: none.
  qsizetype find(const QString& delimiter) {
    for (qsizetype at = ended ? -1 : rest.indexOf(delimiter, skip); at >= 0; at = rest.indexOf(delimiter, at + 1)) {
      const auto place = static_cast<std::size_t>(original + at);
      if (counts.empty() || (place < counts.size() && counts[place])) return done.size() + at + 1;
    }
    ended = true;
    return 0;
  }
  QString text() const { return QString(done).append(rest); }
  void alignTo(qsizetype position, qsizetype target) {
    const qsizetype before = position - 1 - done.size();
    done += rest.left(before);
    done += QString(target - position, u' ');
    rest = rest.mid(before);
    original += before;
  }
};

void align(std::vector<Growing>& lines, const QString& delimiter) {
  std::vector<qsizetype> found(lines.size());
  for (qsizetype column = 1;;) {
    qsizetype greatest = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      auto& line = lines[i];
      line.skip = std::max<qsizetype>(0, column - 1 - line.done.size());
      found[i] = line.find(delimiter);
      greatest = std::max(greatest, found[i]);
    }
    if (greatest == 0) return;
    for (std::size_t i = 0; i < lines.size(); ++i)
      if (found[i] > 0) lines[i].alignTo(found[i], greatest);
    column = greatest + 1;
  }
}

std::vector<bool> codeOnlyMask(const CodeMax& cmx, const QString& line, text::LineState* state) {
  std::vector<bool> mask(static_cast<std::size_t>(line.size()), true);
  const auto* highlighter = cmx.model()->highlighter();
  if (!highlighter) return mask;
  const std::string bytes = fromQString(line);
  std::vector<text::Token> tokens;
  *state = highlighter->scanLine(bytes, *state, &tokens);
  std::size_t bytesDone = 0, charsDone = 0;
  const auto charsBefore = [&](std::int64_t byte) {   // bytes ascend from call to call
    const auto to = static_cast<std::size_t>(byte);
    charsDone += static_cast<std::size_t>(toQString(std::string_view(bytes).substr(bytesDone, to - bytesDone)).size());
    bytesDone = to;
    return charsDone;
  };
  for (const auto& token : tokens) {
    if (token.kind != text::TokenKind::comment && token.kind != text::TokenKind::string) continue;
    const auto begin = charsBefore(token.begin), end = charsBefore(token.begin + token.length);
    for (auto i = begin; i < end; ++i) mask[i] = false;
  }
  return mask;
}

}  // namespace

int alignColumns(QStringList& lines, const QString& delimiter) {
  if (delimiter.isEmpty()) return 0;
  std::vector<Growing> growing(static_cast<std::size_t>(lines.size()));
  for (std::size_t i = 0; i < growing.size(); ++i) growing[i].rest = lines[static_cast<qsizetype>(i)];
  align(growing, delimiter);
  QStringList fresh;
  fresh.reserve(lines.size());
  for (auto& line : growing) fresh.push_back(line.text());
  lines = std::move(fresh);
  return 0;
}

qint64 Columnize(CodeMax& cmx, const CmRange& range, const QString& delimiter, const ColumnizeOptions& options) {
  const qint64 end = std::min(range.EndLineNo + 1, cmx.LineCount());
  if (delimiter.isEmpty() || cmx.ReadOnly() || range.StartLineNo >= end) return 0;
  QStringList lines;
  for (qint64 i = range.StartLineNo; i < end; ++i) lines.push_back(cmx.GetLine(i));

  std::vector<Growing> growing(static_cast<std::size_t>(lines.size()));
  text::LineState state = options.codeOnly ? cmx.model()->stateAt(text::LineNo(range.StartLineNo)) : text::LineState(0);
  const qint64 left = std::min(range.StartColNo, range.EndColNo), right = std::max(range.StartColNo, range.EndColNo);
  for (std::size_t i = 0; i < growing.size(); ++i) {
    const QString& line = lines[static_cast<qsizetype>(i)];
    auto& mask = growing[i].counts;
    growing[i].rest = line;
    if (options.codeOnly) mask = codeOnlyMask(cmx, line, &state);
    if (options.withinBlock && range.ColumnSel) {
      if (mask.empty()) mask.assign(static_cast<std::size_t>(line.size()), true);
      for (std::size_t c = 0; c < mask.size(); ++c)
        if (static_cast<qint64>(c) < left || static_cast<qint64>(c) >= right) mask[c] = false;
    }
  }
  std::vector<Growing> group;
  QStringList fresh;
  const auto finishGroup = [&] {
    align(group, delimiter);
    for (const auto& line : group) fresh.push_back(line.text());
    group.clear();
  };
  for (auto& line : growing) {
    const bool blank = options.groupsApart && line.rest.trimmed().isEmpty();
    group.push_back(std::move(line));
    if (blank) finishGroup();
  }
  finishGroup();

  qint64 changed = 0;
  for (qsizetype i = 0; i < lines.size(); ++i) changed += lines[i] != fresh[i];
  if (changed > 0) {
    const EditBlock block(cmx);
    cmx.ReplaceLines(range.StartLineNo, fresh);
  }
  return changed;
}

void Columnize(CodeMax& cmx) {
  const BusyGuard busy;
  const CmRange range = cmx.GetSel(true);
  const auto answer = InputBox(QCoreApplication::translate("AddIns", "Please input the column delimiter"));
  if (!answer || answer->isEmpty()) return;
  rememberColumnDelimiter(*answer);
  Columnize(cmx, range, *answer);
}

QString lastColumnDelimiter() { return lastDelimiter; }
void rememberColumnDelimiter(const QString& delimiter) { lastDelimiter = delimiter; }
