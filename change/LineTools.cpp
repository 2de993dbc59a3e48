#include "change/LineTools.h"

#include <QCoreApplication>
#include <algorithm>
#include <numeric>
#include <unordered_set>

#include "change/LineWork.h"
#include "control/edit/Carets.h"
#include "control/edit/ColumnBlock.h"
#include "text/line/Chars.h"

namespace {

struct ToolText {
  Q_DECLARE_TR_FUNCTIONS(LineTools)
};

// Excludes the empty line behind the last line end of the text: it is not sorted or compared.
LineRange withoutFinalEmpty(const CodeMax& cmx, LineRange lines) {
  if (lines.end == cmx.LineCount() && lines.end - lines.first > 1 && cmx.GetLineLength(lines.end - 1) == 0) --lines.end;
  return lines;
}

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

constexpr double kNoNumber = -std::numeric_limits<double>::infinity();

// The first number of the line, with a fraction. A minus counts at the start of the line or behind a blank.
double numberIn(std::string_view line) {
  const auto first = std::find_if(line.begin(), line.end(), isDigit);
  if (first == line.end()) return kNoNumber;
  const auto at = static_cast<std::size_t>(first - line.begin());
  std::size_t end = at;
  while (end < line.size() && isDigit(line[end])) ++end;
  if (end + 1 < line.size() && line[end] == '.' && isDigit(line[end + 1]))
    for (++end; end < line.size() && isDigit(line[end]);) ++end;
  const double value = QByteArrayView(line.data() + at, static_cast<qsizetype>(end - at)).toDouble();
  const bool isNegative = at > 0 && line[at - 1] == '-' && (at == 1 || isBlank(line[at - 2]));
  return isNegative ? -value : value;
}

}   // namespace

LineRange selectedLinesOrAll(CodeMax& cmx) {
  return cmx.GetSel(true).IsEmpty() ? LineRange{0, cmx.LineCount()} : cmx.editor().selectedLines();
}

namespace {

// Runs the service on the selected lines, else on all; of several carets, on those of each, from the last to the first: its changes
// move no lines that are still to come.
template <class Service>
qint64 onSelections(CodeMax& cmx, Service service) {
  Editor& editor = cmx.editor();
  if (!carets::several(editor) || !carets::anySelection(editor)) return service(selectedLinesOrAll(cmx));
  const std::vector<LineRange> ranges = carets::lines(editor, LineAtEnd::excluded);
  const EditBlock block(cmx);
  qint64 done = 0;
  for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) done += service(*range);
  return done;
}

struct Row {
  QString key;   // by which it is compared
  double number = 0;
  std::string text;
};

struct LinesCancelled {};

void sortRows(LineWork& work, const SortOptions& options) {
  std::vector<Row> rows;
  rows.reserve(static_cast<std::size_t>(work.lines().end - work.lines().first));
  for (std::string_view line; work.next(&line);) {
    QString key = toQString(line);
    if (!options.matchCase) key = std::move(key).toCaseFolded();
    rows.push_back({std::move(key), options.numeric ? numberIn(line) : 0, std::string(line)});
  }
  if (work.isCancelled()) return;
  std::vector<const Row*> sorted;
  sorted.reserve(rows.size());
  for (const Row& row : rows) sorted.push_back(&row);
  std::stable_sort(sorted.begin(), sorted.end(), [&](const Row* a, const Row* b) {
    if (work.isCancelled()) throw LinesCancelled();
    if (options.descending) std::swap(a, b);
    return a->number != b->number ? a->number < b->number : a->key < b->key;
  });
  if (options.dropEqual) {
    std::unordered_set<std::string_view> seen;
    std::erase_if(sorted, [&](const Row* row) { return !seen.insert(row->text).second; });
  }
  LineWork puts(work.text(), work.lines(), work.control());   // a second pass over the same lines
  std::string_view line;
  for (const Row* row : sorted)
    if (puts.next(&line)) puts.replace(line, row->text);
  const LineRange gone{work.lines().first + static_cast<qint64>(sorted.size()), work.lines().end};
  if (gone.first < gone.end) puts.remove(gone);
  work.edits = std::move(puts.edits);
  work.changed = puts.changed;
}

}   // namespace

qint64 SortLines(CodeMax& cmx, const SortOptions& options) {
  return onSelections(cmx, [&](LineRange lines) {
    return LineWork::run(cmx, withoutFinalEmpty(cmx, lines), ToolText::tr("Sorting..."), [&](LineWork& work) {
      try {
        sortRows(work, options);
      } catch (const LinesCancelled&) {}
    });
  });
}

qint64 SubstituteInLines(CodeMax& cmx, const text::Finder& finder, const QString& replacement, QString* error) {
  const LineRange lines = cmx.editor().selectedLines();
  // \1 to \9 are groups; all other text is literal.
  std::string by;
  const std::string written = fromQString(replacement);
  for (std::size_t i = 0; i < written.size(); ++i) {
    const char c = written[i];
    if (c == '\\' && i + 1 < written.size() && written[i + 1] >= '1' && written[i + 1] <= '9')
      by += std::string("${") + written[++i] + '}';
    else if (c == '\\' || c == '$') by.append(2, c);
    else by += c;
  }
  return LineWork::run(
      cmx, lines, ToolText::tr("Replacing..."),
      [&](LineWork& work) {
        std::string why;
        for (std::string_view line; why.empty() && work.next(&line);) {
          const std::size_t before = work.edits.size();
          const text::ByteRange within{work.start(), work.start() + static_cast<std::int64_t>(line.size())};
          const text::SearchEnd end = finder.each(
              work.text(), within,
              [&](const text::Match& match) {
                auto fresh = finder.replacementFor(work.text(), match, by, false, &why);
                if (fresh && *fresh != work.text().bytes(match.range)) work.edits.push_back({match.range, std::move(*fresh)});
                return why.empty();
              },
              &work.control());
          if (why.empty()) why = end.error;
          work.changed += work.edits.size() > before;
        }
        work.error = QString::fromStdString(why);
      },
      error);
}

namespace {

// Removes the lines for which `keep` is false.
qint64 keepLines(CodeMax& cmx, LineRange lines, const std::function<bool(std::string_view)>& keep) {
  lines = withoutFinalEmpty(cmx, lines);
  if (cmx.LineCount() == 1 && cmx.GetLineLength(0) == 0) return 0;   // an empty text has nothing to take
  return LineWork::run(cmx, lines, ToolText::tr("Looking at lines..."), [&](LineWork& work) {
    LineRange gone{lines.first, lines.first};
    for (std::string_view line; work.next(&line);) {
      if (!keep(line)) {
        gone.end = work.line().value + 1;
        continue;
      }
      if (gone.first < gone.end) work.remove(gone);
      gone = {work.line().value + 1, work.line().value + 1};
    }
    if (gone.first < gone.end) work.remove(gone);
  });
}

}   // namespace

qint64 RemoveDuplicateLines(CodeMax& cmx) {
  return onSelections(cmx, [&](LineRange lines) {
    std::unordered_set<std::string> seen;
    return keepLines(cmx, lines, [&](std::string_view line) { return seen.emplace(line).second; });
  });
}

qint64 RemoveBlankLines(CodeMax& cmx) {
  return onSelections(cmx, [&](LineRange lines) {
    return keepLines(cmx, lines, [](std::string_view line) { return !toQString(line).trimmed().isEmpty(); });
  });
}

qint64 TrimLineEnds(CodeMax& cmx) {
  return onSelections(cmx, [&](LineRange lines) {
    return LineWork::run(cmx, lines, ToolText::tr("Trimming..."), [](LineWork& work) {
      for (std::string_view line; work.next(&line);) {
        std::size_t end = line.size();
        while (end > 0 && isBlank(line[end - 1])) --end;
        work.replace(line, line.substr(0, end));
      }
    });
  });
}

static qint64 joinLines(CodeMax& cmx, LineRange lines) {
  if (lines.end - lines.first < 2) return 0;
  const qint64 joined = LineWork::run(cmx, lines, ToolText::tr("Joining..."), [](LineWork& work) {
    // The end of the joined text, and whether it is empty.
    text::ByteOffset end = work.text().lineStart(text::LineNo(work.lines().first));
    bool isEmpty = true;
    for (std::string_view line; work.next(&line);) {
      std::size_t first = 0, last = line.size();
      while (last > 0 && isBlank(line[last - 1])) --last;
      while (first < last && isBlank(line[first])) ++first;
      if (first == last) continue;
      const text::ByteOffset begin = work.start() + static_cast<std::int64_t>(first);
      if (work.line().value > work.lines().first) work.edits.push_back({{end, begin}, isEmpty ? "" : " "});
      end = work.start() + static_cast<std::int64_t>(last);
      isEmpty = false;
    }
    const text::ByteOffset behind = work.text().lineEnd(text::LineNo(work.lines().end - 1));
    if (end < behind) work.edits.push_back({{end, behind}, {}});
    work.changed = work.lines().end - work.lines().first - 1;
  });
  return joined;
}

qint64 JoinLines(CodeMax& cmx) {
  Editor& editor = cmx.editor();
  if (carets::anySelection(editor) || !cmx.GetSel(true).IsEmpty())
    return onSelections(cmx, [&](LineRange lines) { return joinLines(cmx, lines); });
  const std::vector<LineRange> ranges = carets::lines(editor, LineAtEnd::excluded);
  const EditBlock block(cmx);
  qint64 joined = 0;
  for (auto range = ranges.rbegin(); range != ranges.rend(); ++range)   // each with the line below
    joined += joinLines(cmx, {range->first, std::min(range->end + 1, cmx.LineCount())});
  return joined;
}

namespace {
bool valueAt(const NumberSeries& series, qint64 index, qint64* value) {
  return !__builtin_mul_overflow(series.step, index / std::max(1, series.repeat), value) &&
         !__builtin_add_overflow(series.start, *value, value);
}
}   // namespace

QString seriesItem(const NumberSeries& series, qint64 index) {
  qint64 value = 0;
  if (!valueAt(series, index, &value)) return QStringLiteral("?");
  QString digits = value < 0 ? QString::number(0 - static_cast<quint64>(value), series.base) : QString::number(value, series.base);
  if (series.upperCase) digits = digits.toUpper();
  const QString sign = value < 0 ? QStringLiteral("-") : QString();
  if (series.zeroFill) return series.prefix + sign + digits.rightJustified(series.width - sign.size(), u'0') + series.suffix;
  return (series.prefix + sign + digits + series.suffix)
      .rightJustified(series.width + series.prefix.size() + series.suffix.size(), u' ');
}

qint64 InsertSeries(CodeMax& cmx, const NumberSeries& series) {
  if (cmx.ReadOnly()) return 0;
  const CmRange range = cmx.GetSel(true);
  const LineRange lines = cmx.editor().selectedLines();
  qint64 last = 0;
  if (!valueAt(series, lines.end - lines.first - 1, &last)) return -1;
  const auto& selection = cmx.editor().selection();
  const int tabSize = cmx.TabSize();
  const auto cell = [&](text::ByteOffset at, qint64 extra) { return cellOf(*cmx.model(), at, extra, tabSize); };
  const qint64 a = cell(selection.anchor, selection.anchorVirtual), c = cell(selection.caret, selection.caretVirtual);
  const qint64 startCell = range.ColumnSel ? std::min(a, c)
                                           : cell(cmx.editor().offsetOf({range.StartLineNo, range.StartColNo}),
                                                  range.IsEmpty() ? selection.caretVirtual : 0);
  const qint64 endCell = range.ColumnSel ? std::max(a, c) : startCell;
  qint64 behind = startCell;
  const qint64 done = LineWork::run(cmx, lines, ToolText::tr("Putting numbers in..."), [&](LineWork& work) {
    for (std::string_view line; work.next(&line);) {
      const auto total = text::displayColumn(line, static_cast<std::int64_t>(line.size()), tabSize).value;
      const auto from = text::byteOfDisplay(line, text::DisplayColumn(startCell), tabSize),
                 to = text::byteOfDisplay(line, text::DisplayColumn(endCell), tabSize);
      const auto fill = static_cast<std::size_t>(std::max<qint64>(0, startCell - total));
      std::string item = std::string(fill, ' ') + fromQString(seriesItem(series, work.line().value - lines.first));
      const std::string head = std::string(line.substr(0, static_cast<std::size_t>(from))) + item;
      behind = std::max<qint64>(behind, text::displayColumn(head, static_cast<std::int64_t>(head.size()), tabSize).value);
      work.edits.push_back({{work.start() + from, work.start() + std::max(from, to)}, std::move(item)});
      ++work.changed;
    }
  });
  // Puts the caret behind the numbers, in every row that got one.
  if (done > 0)
    cmx.editor().setSelection(
        columnSelection(*cmx.model(), text::LineNo(lines.first), behind, text::LineNo(lines.end - 1), behind, tabSize));
  return done;
}
