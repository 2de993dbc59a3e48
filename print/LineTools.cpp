#include "print/LineTools.h"

#include <QSet>
#include <algorithm>
#include <numeric>

#include "control/ColumnBlock.h"
#include "text/Chars.h"

namespace {

using Lines = LineRange;

QStringList read(const CodeMax& cmx, Lines lines) {
  QStringList list;
  list.reserve(lines.end - lines.first);
  for (qint64 i = lines.first; i < lines.end; ++i) list.push_back(cmx.GetLine(i));
  return list;
}

// Exchanges the lines for `fresh`, which may be shorter: the surplus goes with its line ends.
void put(CodeMax& cmx, Lines lines, const QStringList& fresh) {
  const EditBlock block(cmx);
  cmx.ReplaceLines(lines.first, fresh);
  const qint64 from = lines.first + fresh.size();
  if (from >= lines.end) return;
  // From the end of the last line that stays, so that the text's own last line end is kept; where none stays before, from its start.
  CmRange gone{from - 1, 0, lines.end - 1, cmx.GetLineLength(lines.end - 1), false};
  if (from > 0) {
    gone.StartColNo = cmx.GetLineLength(from - 1);
  } else {
    gone.StartLineNo = 0;
    if (lines.end < cmx.LineCount()) gone.EndLineNo = lines.end, gone.EndColNo = 0;
  }
  cmx.ReplaceText(QString(), gone);
}

// The last, empty line behind a final line end is no line to sort or to weigh.
Lines withoutFinalEmpty(const CodeMax& cmx, Lines lines) {
  if (lines.end == cmx.LineCount() && lines.end - lines.first > 1 && cmx.GetLineLength(lines.end - 1) == 0) --lines.end;
  return lines;
}

}  // namespace

LineRange selectedLines(const CodeMax& cmx) {
  const CmRange range = cmx.GetSel(true);
  if (range.IsEmpty()) return {0, cmx.LineCount()};
  const bool touchesOnly = range.EndColNo == 0 && range.EndLineNo > range.StartLineNo && !range.ColumnSel;
  return {range.StartLineNo, range.EndLineNo + (touchesOnly ? 0 : 1)};
}

qint64 SortLines(CodeMax& cmx, const SortOptions& options) {
  if (cmx.ReadOnly()) return 0;
  const Lines lines = withoutFinalEmpty(cmx, selectedLines(cmx));
  const QStringList old = read(cmx, lines);
  const auto sensitivity = options.matchCase ? Qt::CaseSensitive : Qt::CaseInsensitive;
  const auto number = [](const QString& line) {   // the first number of the line; lines without one come first
    qsizetype at = 0;
    while (at < line.size() && !line[at].isDigit()) ++at;
    const bool negative = at > 0 && line[at - 1] == u'-';
    double value = -1e300;
    if (at < line.size()) {
      qsizetype end = at;
      while (end < line.size() && (line[end].isDigit() || line[end] == u'.')) ++end;
      value = QStringView(line).mid(at, end - at).toDouble();
    }
    return negative ? -value : value;
  };
  const auto compare = [&](const QString& a, const QString& b) {
    if (options.numeric) {
      const double x = number(a), y = number(b);
      if (x != y) return x < y ? -1 : 1;
    }
    return a.compare(b, sensitivity);
  };
  QStringList fresh = old;
  std::stable_sort(fresh.begin(), fresh.end(), [&](const QString& a, const QString& b) {
    const int order = compare(a, b);
    return options.descending ? order > 0 : order < 0;
  });
  if (options.dropEqual)
    fresh.erase(std::unique(fresh.begin(), fresh.end(), [&](const QString& a, const QString& b) { return a.compare(b, sensitivity) == 0; }),
                fresh.end());
  if (fresh == old) return 0;
  put(cmx, lines, fresh);
  qint64 changed = old.size() - fresh.size();
  for (qsizetype i = 0; i < fresh.size(); ++i) changed += fresh[i] != old[i];
  return changed;
}

qint64 SubstituteInLines(CodeMax& cmx, const QRegularExpression& expression, const QString& replacement) {
  if (cmx.ReadOnly() || !expression.isValid()) return 0;
  const qint64 caret = cmx.CurrentPosition().LineNo;
  const Lines lines = cmx.GetSel(true).IsEmpty() ? Lines{caret, caret + 1} : selectedLines(cmx);
  const text::Snapshot text = cmx.model()->snapshot();
  std::vector<std::pair<qint64, QString>> changed;
  bool cancelled = false;
  const auto bytes = [&](qint64 line) { return line < text.lineCount() ? text.lineStart(text::LineNo(line)) : text.size(); };
  cmx.editor().host().work(bytes(lines.end) - bytes(lines.first), [&](text::SearchControl& control) {
    for (qint64 i = lines.first; i < lines.end && !control.cancel; ++i) {
      const QString old = toQString(text.line(text::LineNo(i)));
      QString fresh = QString(old).replace(expression, replacement);
      if (fresh != old) changed.emplace_back(i, std::move(fresh));
      control.bytesDone = bytes(i) - bytes(lines.first);
    }
    cancelled = control.cancel;
  });
  if (cancelled) return 0;
  const EditBlock block(cmx);
  for (const auto& [line, fresh] : changed) cmx.ReplaceLines(line, {fresh});
  return qint64(changed.size());
}

namespace {
template <class Keep>
qint64 keepLines(CodeMax& cmx, Lines lines, Keep keep) {
  if (cmx.ReadOnly()) return 0;
  const QStringList old = read(cmx, lines);
  if (old == QStringList{QString()}) return 0;   // an empty text has nothing to take
  QStringList fresh;
  for (const QString& line : old)
    if (keep(line)) fresh.push_back(line);
  const qint64 gone = old.size() - fresh.size();
  if (gone > 0) put(cmx, lines, fresh);
  return gone;
}
}  // namespace

qint64 RemoveDuplicateLines(CodeMax& cmx, bool matchCase) {
  QSet<QString> seen;
  return keepLines(cmx, withoutFinalEmpty(cmx, selectedLines(cmx)), [&](const QString& line) {
    const QString key = matchCase ? line : line.toCaseFolded();
    if (seen.contains(key)) return false;
    seen.insert(key);
    return true;
  });
}

qint64 RemoveBlankLines(CodeMax& cmx) {
  return keepLines(cmx, withoutFinalEmpty(cmx, selectedLines(cmx)), [](const QString& line) { return !line.trimmed().isEmpty(); });
}

qint64 TrimLineEnds(CodeMax& cmx) {
  if (cmx.ReadOnly()) return 0;
  const Lines lines = selectedLines(cmx);
  QStringList fresh = read(cmx, lines);
  qint64 changed = 0;
  for (QString& line : fresh) {
    qsizetype end = line.size();
    while (end > 0 && (line[end - 1] == u' ' || line[end - 1] == u'\t')) --end;
    if (end == line.size()) continue;
    line.truncate(end);
    ++changed;
  }
  if (changed > 0) put(cmx, lines, fresh);
  return changed;
}

qint64 JoinLines(CodeMax& cmx) {
  if (cmx.ReadOnly()) return 0;
  Lines lines = selectedLines(cmx);
  const CmRange range = cmx.GetSel(true);
  if (range.IsEmpty()) lines = {range.StartLineNo, std::min(range.StartLineNo + 2, cmx.LineCount())};   // with the line below
  if (lines.end - lines.first < 2) return 0;
  const QStringList old = read(cmx, lines);
  QString joined = old.first();
  for (qsizetype i = 1; i < old.size(); ++i) {
    while (joined.endsWith(u' ') || joined.endsWith(u'\t')) joined.chop(1);
    const QString next = old[i].trimmed();
    if (!joined.isEmpty() && !next.isEmpty()) joined += u' ';
    joined += next;
  }
  put(cmx, lines, {joined});
  return old.size() - 1;
}

namespace {
bool valueAt(const NumberSeries& series, qint64 index, qint64* value) {
  return !__builtin_mul_overflow(series.step, index / std::max(1, series.repeat), value) && !__builtin_add_overflow(series.start, *value, value);
}
}  // namespace

QString seriesItem(const NumberSeries& series, qint64 index) {
  qint64 value = 0;
  if (!valueAt(series, index, &value)) return QStringLiteral("?");
  QString digits = value < 0 ? QString::number(0 - static_cast<quint64>(value), series.base) : QString::number(value, series.base);
  if (series.upperCase) digits = digits.toUpper();
  const QString sign = value < 0 ? QStringLiteral("-") : QString();
  if (series.zeroFill) return series.prefix + sign + digits.rightJustified(series.width - sign.size(), u'0') + series.suffix;
  return (series.prefix + sign + digits + series.suffix).rightJustified(series.width + series.prefix.size() + series.suffix.size(), u' ');
}

qint64 InsertSeries(CodeMax& cmx, const NumberSeries& series) {
  if (cmx.ReadOnly()) return 0;
  const CmRange range = cmx.GetSel(true);
  Lines lines{range.StartLineNo, range.EndLineNo + 1};
  if (!range.IsEmpty() && !range.ColumnSel) lines = selectedLines(cmx);
  qint64 last = 0;
  if (!valueAt(series, lines.end - lines.first - 1, &last)) return -1;
  const auto& selection = cmx.editor().selection();
  const auto cellOf = [&](text::ByteOffset at, qint64 extra) {
    const auto& snapshot = cmx.model()->snapshot();
    const auto line = snapshot.lineAt(at);
    return text::displayColumn(snapshot.line(line), at - snapshot.lineStart(line), cmx.TabSize()).value + extra;
  };
  const qint64 a = cellOf(selection.anchor, selection.anchorVirtual), c = cellOf(selection.caret, selection.caretVirtual);
  const qint64 startCell = range.ColumnSel ? std::min(a, c) : cellOf(cmx.editor().offsetOf({range.StartLineNo, range.StartColNo}), range.IsEmpty() ? selection.caretVirtual : 0);
  const qint64 endCell = range.ColumnSel ? std::max(a, c) : startCell;
  QStringList fresh;
  qint64 behind = startCell;
  for (qint64 i = lines.first; i < lines.end; ++i) {
    const std::string bytes = fromQString(cmx.GetLine(i));
    const auto total = text::displayColumn(bytes, static_cast<std::int64_t>(bytes.size()), cmx.TabSize()).value;
    const auto from = static_cast<std::size_t>(text::byteOfDisplay(bytes, text::DisplayColumn(startCell), cmx.TabSize()));
    const auto to = static_cast<std::size_t>(text::byteOfDisplay(bytes, text::DisplayColumn(endCell), cmx.TabSize()));
    const auto fill = static_cast<int>(std::max<qint64>(0, startCell - total));
    const QString before = toQString(std::string_view(bytes).substr(0, from)) + QString(fill, u' ') + seriesItem(series, i - lines.first);
    fresh.push_back(before + toQString(std::string_view(bytes).substr(std::max(from, to))));
    const std::string head = fromQString(before);
    behind = std::max<qint64>(behind, text::displayColumn(head, static_cast<std::int64_t>(head.size()), cmx.TabSize()).value);
  }
  const EditBlock block(cmx);
  put(cmx, lines, fresh);
  // What is typed next stands behind the numbers, in every row that got one.
  cmx.editor().setSelection(columnSelection(cmx.model()->snapshot(), text::LineNo(lines.first), behind, text::LineNo(lines.end - 1), behind, cmx.TabSize()));
  return fresh.size();
}
