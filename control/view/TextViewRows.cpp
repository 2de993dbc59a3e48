// Where lines and rows of a view stand, and what is measured of them.
#include <algorithm>
#include <new>

#include "control/view/TextView.h"

using text::ByteOffset;
using text::LineNo;

namespace {
constexpr std::int64_t kRowsBudget = 256 * 1024;   // bytes of a long line counted before a paint
constexpr std::int64_t kNearPages = 4;             // so far away lines are measured all along the way
}   // namespace

TextView::Place TextView::placeAt(std::int64_t y) const { return rows.map.at(y < 0 ? 0 : y / lineHeight()); }

std::int64_t TextView::lastVisible() const { return placeAt(top + std::max(0, height - 1)).line.value; }

TextView::Place TextView::placeOf(ByteOffset offset) {
  LineNo line = snapshot().lineAt(std::min(offset, snapshot().size()));
  if (rows.map.hidesAny() && line.value < rows.map.lines() && rows.map.isHidden(line)) {   // the end of the row that hides it
    line = rows.map.shownUpTo(line);
    offset = snapshot().lineEnd(line);
  }
  return {line, rows.wraps() ? rows.rowAt(line, offset - snapshot().lineStart(line)) : 0};
}

std::int64_t TextView::topOf(const Place& place) const { return (rows.map.rowOf(place.line) + place.row) * lineHeight(); }

int TextView::yOf(const Place& place) const {
  return static_cast<int>(std::clamp<std::int64_t>(topOf(place) - top, -100000, 100000));
}

int TextView::bottomOf(std::int64_t line) const {
  const std::int64_t end = rows.map.rowOf(LineNo(std::min(line + 1, rows.map.lines())));
  return static_cast<int>(std::clamp<std::int64_t>(end * lineHeight() - top, -100000, 100000));
}

void TextView::forget() {
  rows_.clear();
  rows.forget();
  endMeasured_ = false;
}

void TextView::measure(LineNo line) {
  if (!rows.wraps()) return;
  const std::int64_t before = rows.map.rowsOf(line), now = rows.count(line);
  if (before == 0 || before == now) return;
  const std::int64_t first = rows.map.rowOf(line);
  try {
    rows.map.setRows(line, now);
  } catch (const std::bad_alloc&) { return; }   // the estimate stays
  moved_ = true;
  for (std::int64_t* const at : {&top, &target}) {
    const std::int64_t row = *at / lineHeight();
    if (row >= first + before) *at += (now - before) * lineHeight();
    else if (row >= first + now) *at -= (row - (first + now - 1)) * lineHeight();
  }
}

void TextView::measureDown(std::int64_t from, std::int64_t pixels) {
  if (!rows.wraps()) return;
  const Place place = placeAt(from);
  std::int64_t covered = -place.row * lineHeight() - from % lineHeight();
  for (LineNo line = place.line; line.value < rows.map.lines() && covered < pixels; line = rows.map.shownFrom(line + 1)) {
    measure(line);
    covered += rows.map.rowsOf(line) * lineHeight();
  }
}

void TextView::measureUp(const Place& from, std::int64_t pixels) {
  if (!rows.wraps()) return;
  std::int64_t covered = from.row * lineHeight();
  for (LineNo line = from.line; line.value > 0 && covered < pixels;) {
    line = rows.map.shownUpTo(line - 1);
    measure(line);
    covered += rows.map.rowsOf(line) * lineHeight();
  }
}

void TextView::measureEnd() {
  if (std::exchange(endMeasured_, true)) return;
  measureUp({LineNo(rows.map.lines()), 0}, height);
}

void TextView::settle(std::int64_t to) {
  const std::int64_t page = std::max(height, lineHeight()), way = to - top;
  if (rows.wraps() && std::abs(way) <= kNearPages * page) {
    if (way < 0) measureUp(placeAt(top), -way);
    else measureDown(top, way + page);
    to = top + way;
  }
  target = std::max<std::int64_t>(0, to);
  measureDown(target, page + lineHeight());
}

ByteOffset TextView::topByte() {
  const Place place = placeAt(top + lineHeight() - 1);
  return snapshot().lineStart(place.line) + (rows.wraps() ? rows.begin(place.line, place.row).byte : 0);
}

void TextView::setTopByte(ByteOffset byte) {
  const LineNo line = snapshot().lineAt(std::min(byte, snapshot().size()));
  measure(line);
  top = target = topOf(placeOf(byte));
  measureDown(target, height + lineHeight());
}

void TextView::visibleRows(std::int64_t line, std::int64_t* first, std::int64_t* last) const {
  const std::int64_t begin = rows.map.rowOf(LineNo(line)), count = std::max<std::int64_t>(1, rows.map.rowsOf(LineNo(line)));
  const std::int64_t upper = top / lineHeight() - begin, lower = (top + height) / lineHeight() - begin;
  const bool seen = lower >= 0 && upper < count;
  *first = seen ? std::clamp<std::int64_t>(upper, 0, count - 1) : 0;
  *last = seen ? std::clamp<std::int64_t>(lower, 0, count - 1) : 0;
}

void TextView::layOutWrapped(Row& row, LineNo line) {
  visibleRows(line.value, &row.firstRow, &row.lastRow);
  row.counted = rows.reach(line, row.lastRow + 1, kRowsBudget);
  if (!row.counted) {
    exact_ = false;
    return;
  }
  const text::LinePlace from = rows.begin(line, row.firstRow), to = rows.begin(line, row.lastRow + 1);
  const std::int64_t seen = std::clamp(to.byte + text::segmentAhead, from.byte, row.length);
  row.layout = LineLayout(snapshot().bytes({row.start + from.byte, row.start + seen}), seen == row.length, from, metrics(),
                          state_.options->tabSize, 1e300);
}

double TextView::lineX(const Place& place, double x) {
  if (!rows.wraps()) return x;
  x = std::max(x - rows.shift(place.line, place.row), rows.begin(place.line, place.row).x);
  const bool last = place.row + 1 >= rows.map.rowsOf(place.line);   // behind the line's end there is room for columns
  return last ? x : std::min(x, rows.begin(place.line, place.row + 1).x);
}

// A text without a language is no code. Of a long line that is not wrapped only a part is known, which turns nothing.
void TextView::arrange(Row& row, LineNo line) {
  std::vector<text::ByteRange> natural;
  std::vector<std::int64_t> begins;   // of rows
  const std::int64_t from = row.layout.begin().byte, to = row.layout.end().byte;
  if (rows.wraps()) {
    const std::int64_t last = row.whole ? rows.count(line) - 1 : row.lastRow;
    for (std::int64_t r = row.firstRow + 1; r <= last; ++r) begins.push_back(rows.begin(line, r).byte);
  }
  if (row.whole || rows.wraps()) {
    const auto add = [&](std::int64_t begin, std::int64_t end) {
      begin = std::max(begin, from), end = std::min(end, to);
      if (begin >= end) return;
      if (row.whole && !natural.empty() && natural.back().end.value == begin) natural.back().end = ByteOffset(end);
      else natural.push_back({ByteOffset(begin), ByteOffset(end)});
    };
    // Of a long line each row is read for itself.
    const auto addRows = [&](std::int64_t begin, std::int64_t end) {
      for (const std::int64_t next : row.whole ? std::vector<std::int64_t>() : begins) {
        add(begin, std::min(next, end));
        begin = std::max(begin, next);
      }
      add(begin, end);
    };
    if (!state_.model->highlighter() && !state_.model->plainSlot) addRows(from, to);
    for (const text::Token& token : row.tokens)
      if (token.kind == text::TokenKind::comment || token.kind == text::TokenKind::string)
        addRows(token.begin, token.begin + token.length);
  }
  row.layout.arrange(snapshot().bytes({row.start + from, row.start + to}), natural, begins, metrics());
}

double TextView::shownX(ByteOffset offset, std::int64_t beyond) {
  const Place place = placeOf(offset);
  const Row& r = row(place.line.value);
  const double x = beyond > 0 && r.whole ? r.layout.end().x : xOf(place.line.value, offset);
  return x + static_cast<double>(beyond) * metrics().cell() + rows.shift(place.line, place.row);
}
