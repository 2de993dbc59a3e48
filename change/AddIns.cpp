#include "change/AddIns.h"

#include <QCoreApplication>
#include <algorithm>
#include <functional>
#include <iterator>

#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "change/LineWork.h"
#include "control/code/LanguageTable.h"

namespace {

// One line while it grows: what is aligned already is in `done`; `rest` is searched from its start.
struct Growing {
  QString done;
  QStringView rest;
  qsizetype skip = 0;         // characters of rest that the search skips
  std::vector<bool> counts;   // for each character of the original line: whether a delimiter there is aligned
  qsizetype original = 0;     // characters of the original line before rest
  bool ended = false;         // there is none any more

  // Position, from 1, of the next delimiter to align in the grown line; 0: none.
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

void align(std::vector<Growing>& lines, const QString& delimiter, const std::function<bool()>& isCancelled) {
  std::vector<qsizetype> found(lines.size());
  for (qsizetype column = 1; !isCancelled();) {
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

std::vector<bool> codeOnlyMask(const text::Highlighter& highlighter, const QString& line, text::LineState* state) {
  std::vector<bool> mask(static_cast<std::size_t>(line.size()), true);
  const std::string bytes = fromQString(line);
  std::vector<text::Token> tokens;
  *state = highlighter.scanLine(bytes, *state, &tokens);
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

// The lines of the work, aligned; empty when it was cancelled.
std::vector<Growing> alignedLines(LineWork& work, const QStringList& lines, const CmRange& range, const QString& delimiter,
                                  const ColumnizeOptions& options, const text::Highlighter* highlighter) {
  std::vector<Growing> growing(static_cast<std::size_t>(lines.size()));
  text::LineState state = 0;
  if (highlighter) {
    text::LineReader above(work.text());
    std::string_view line;
    for (qint64 i = 0; i < work.lines().first && !work.isCancelled() && above.next(&line); ++i)
      state = highlighter->scanLine(line, state, nullptr);
  }
  const qint64 left = std::min(range.StartColNo, range.EndColNo), right = std::max(range.StartColNo, range.EndColNo);
  for (std::size_t i = 0; i < growing.size() && !work.isCancelled(); ++i) {
    const QString& line = lines[static_cast<qsizetype>(i)];
    auto& mask = growing[i].counts;
    growing[i].rest = line;
    if (highlighter) mask = codeOnlyMask(*highlighter, line, &state);
    if (options.withinBlock && range.ColumnSel) {
      if (mask.empty()) mask.assign(static_cast<std::size_t>(line.size()), true);
      for (std::size_t c = 0; c < mask.size(); ++c)
        if (static_cast<qint64>(c) < left || static_cast<qint64>(c) >= right) mask[c] = false;
    }
  }
  std::vector<Growing> done, group;
  const auto finishGroup = [&] {
    align(group, delimiter, [&work] { return work.isCancelled(); });
    std::move(group.begin(), group.end(), std::back_inserter(done));
    group.clear();
  };
  for (auto& line : growing) {
    const bool blank = options.groupsApart && line.rest.trimmed().isEmpty();
    group.push_back(std::move(line));
    if (blank) finishGroup();
  }
  finishGroup();
  return work.isCancelled() ? std::vector<Growing>() : done;
}

}   // namespace

LineRange linesToColumnize(CodeMax& cmx) { return cmx.editor().selectedLines(LineAtEnd::included); }

qint64 Columnize(CodeMax& cmx, LineRange touched, const QString& delimiter, const ColumnizeOptions& options) {
  if (delimiter.isEmpty()) return 0;
  const CmRange range = cmx.GetSel(true);
  const bool isColoured = options.codeOnly && cmx.model()->highlighter();
  const auto highlighter = isColoured ? LanguageTable::find(cmx.Language()) : nullptr;
  return LineWork::run(cmx, touched, QCoreApplication::translate("AddIns", "Columnizing..."), [&](LineWork& work) {
    QStringList lines;
    for (std::string_view line; work.next(&line);) lines.push_back(toQString(line));
    LineWork puts(work.text(), work.lines(), work.control());   // the same lines once more
    std::string_view old;
    for (const Growing& line : alignedLines(work, lines, range, delimiter, options, highlighter.get()))
      if (puts.next(&old)) puts.replace(old, fromQString(line.text()));
    work.edits = std::move(puts.edits);
    work.changed = puts.changed;
  });
}

QString Columnize(CodeMax& cmx) {
  const auto answer = InputBox(QCoreApplication::translate("AddIns", "Please input the column delimiter"));
  if (!answer || answer->isEmpty()) return {};
  Columnize(cmx, linesToColumnize(cmx), *answer);
  return *answer;
}
