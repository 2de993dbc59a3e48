#include "text/display/DisplayMap.h"

#include <algorithm>
#include <new>

#include "text/store/Tree.h"

namespace text {

namespace {
constexpr std::size_t kMostSpans = 10000;   // a change of more places costs less when the rows are seen anew
}   // namespace

std::int64_t DisplayMap::rowOf(LineNo line) const { return wrapped_.sumBefore(hidden_.sumBefore(line.value)); }

std::int64_t DisplayMap::rowsOf(LineNo line) const { return isHidden(line) ? 0 : wrapped_.weight(hidden_.sumBefore(line.value)); }

DisplayMap::Place DisplayMap::at(std::int64_t row) const {
  row = std::clamp<std::int64_t>(row, 0, rows() - 1);
  const std::int64_t shown = wrapped_.itemAt(row);
  return {LineNo(hidden_.itemAt(shown)), row - wrapped_.sumBefore(shown)};
}

void DisplayMap::setRows(LineNo line, std::int64_t rows) {
  if (isHidden(line)) return;
  const std::int64_t shown = hidden_.sumBefore(line.value);
  if (wrapped_.weight(shown) != rows) wrapped_.splice(shown, 1, 1, rows);
}

void DisplayMap::forgetRows() noexcept { wrapped_.reset(hidden_.sum()); }

void DisplayMap::setHidden(LineNo first, LineNo end, bool hidden) {
  first = std::max(first, LineNo(1));
  end = std::min(end, LineNo(lines()));
  while (first < end) {
    const LineNo stop = std::min(end, LineNo(hidden_.runEnd(first.value)));
    if (isHidden(first) != hidden) {
      const std::int64_t shown = hidden_.sumBefore(first.value), count = stop - first;
      hidden_.splice(first.value, count, count, hidden ? 0 : 1);
      try {
        wrapped_.splice(shown, hidden ? count : 0, hidden ? 0 : count, 1);
      } catch (const std::bad_alloc&) { forgetRows(); }
    }
    first = stop;
  }
}

void DisplayMap::hide(LineNo first, LineNo end) { setHidden(first, end, true); }
void DisplayMap::show(LineNo first, LineNo end) { setHidden(first, end, false); }

void DisplayMap::showAll() noexcept {
  if (!hidesAny()) return;
  hidden_.reset(lines());
  wrapped_.reset(lines());
}

LineNo DisplayMap::shownFrom(LineNo line) const {
  return line.value < lines() && isHidden(line) ? LineNo(hidden_.runEnd(line.value)) : line;
}

LineNo DisplayMap::shownUpTo(LineNo line) const {
  return isHidden(line) ? LineNo(hidden_.itemAt(hidden_.sumBefore(line.value) - 1)) : line;
}

void DisplayMap::onChange(const Change& change, std::int64_t linesNow) noexcept {
  try {
    if (!change.reset && !(plain() && change.spans.empty())) {
      if (!wrapped_.plain() && change.spans.size() > kMostSpans) forgetRows();
      move(change);
    }
  } catch (const std::bad_alloc&) { hidden_.reset(-1); }
  if (change.reset || lines() != linesNow) {
    hidden_.reset(linesNow);
    wrapped_.reset(linesNow);
  }
}

// The spans ascend, and each counts in the new text what stands above it: those above have been brought in.
void DisplayMap::move(const Change& change) {
  for (const Change::Span& span : change.spans) {
    if (span.linesRemoved == 0 && span.linesInserted == 0) continue;
    const LineNo first = span.firstLine;
    if (!hidesAny()) {   // its first line keeps the rows that it had
      hidden_.splice(first.value, span.linesRemoved, span.linesInserted, 1);
      wrapped_.splice(first.value + 1, span.linesRemoved, span.linesInserted, 1);
      continue;
    }
    const std::int64_t above = hidden_.sumBefore(first.value), removed = span.linesRemoved + 1, came = span.linesInserted + 1;
    const std::int64_t shown = hidden_.sumBefore(first.value + removed) - above;
    hidden_.splice(first.value, removed, came, shown == 0 ? 0 : 1);
    if (shown != 0) wrapped_.splice(above, shown, came, 1);
  }
}

void DisplayMap::checkInvariants() const {
  hidden_.checkInvariants();
  wrapped_.checkInvariants();
  engine::require(wrapped_.items() == hidden_.sum(), "a number of rows for each shown line");
  engine::require(lines() > 0 && !isHidden(LineNo(0)), "the first line is shown");
  engine::require(rows() >= shownLines(), "a row at least for each shown line");
}

}   // namespace text
