#include "control/view/TextView.h"

#include <algorithm>
#include <cmath>

#include "control/edit/ColumnBlock.h"
#include "control/view/ColorScheme.h"
#include "text/color/LongColors.h"

using text::ByteOffset;
using text::LineNo;

namespace {
constexpr std::int64_t kPaintBudget = 256 * 1024;   // bytes scanned for colours before a paint
constexpr std::int64_t kIdleBudget = 1024 * 1024;   // and at a time while nobody waits
constexpr std::size_t kKeptRows = 1000;
constexpr std::chrono::milliseconds kMarking{10};   // for the hits of one line, and of all before a paint
}   // namespace

const Row& TextView::row(std::int64_t line) {
  if (const auto it = rows_.find(line); it != rows_.end()) {
    if (it->second.whole || !rows.wraps()) return it->second;
    std::int64_t first = 0, last = 0;
    visibleRows(line, &first, &last);
    if (first >= it->second.firstRow && last <= it->second.lastRow) return it->second;
    rows_.erase(it);
  }
  if (rows_.size() >= kKeptRows) rows_.clear();
  Row& row = rows_[line];
  layOut(row, line);
  if (row.counted && state_.colorSyntax && state_.model->highlighter()) color(row, line, kPaintBudget);
  if (row.layout.mayArrange()) arrange(row, LineNo(line));
  if (state_.hits) {
    const auto& slot = state_.model->plainSlot;
    if (slot && slot(LineNo(line)) == static_cast<int>(ColorSlot::Comment)) {   // remarks on the text hold no hits
      row.marked = true;
      return row;
    }
    row.marked = marking_ < kMarking;
    marked_ = marked_ && row.marked;
    if (row.marked) mark(row);
  }
  return row;
}

// A line on which the search takes too long gets no marks.
void TextView::mark(Row& row) {
  const auto begin = std::chrono::steady_clock::now();
  const text::ByteRange seen{row.start + row.layout.begin().byte, row.start + row.layout.end().byte};
  text::FindBudget budget(kMarking);
  row.hits = state_.hits->all(snapshot(), seen, nullptr, &budget).ranges;
  row.marked = true;
  marking_ += std::chrono::steady_clock::now() - begin;
}

std::optional<std::int64_t> TextView::goOnMarking() {
  for (auto& [line, row] : rows_) {
    if (row.marked || !state_.hits) continue;
    mark(row);
    return line;
  }
  marked_ = true;
  return std::nullopt;
}

void TextView::layOut(Row& row, std::int64_t line) {
  const LineNo number(line);
  const int tab = state_.options->tabSize;
  row.start = snapshot().lineStart(number);
  const ByteOffset end = snapshot().lineEnd(number);
  row.length = end - row.start;
  if (row.length < text::LineMaps::kLong) {
    row.layout = LineLayout(snapshot().bytes({row.start, end}), true, {}, metrics(), tab, 1e300);
    if (!rows.wraps()) widen(row.layout.end().x);
    return;
  }
  row.whole = false;
  if (rows.wraps()) return layOutWrapped(row, number);
  row.counted = state_.line(number).reach(text::LinePlace::atX(static_cast<double>(left) / state_.unit()), kPaintBudget);
  if (!row.counted) {
    exact_ = false;
    return;
  }
  const text::LinePlace from = placeBefore(number, static_cast<double>(left));
  const double right = static_cast<double>(left) + width;
  for (std::int64_t length = 8 * 1024;; length *= 2) {
    const ByteOffset to = std::min(end, row.start + from.byte + length);
    row.layout = LineLayout(snapshot().bytes({row.start + from.byte, to}), to == end, from, metrics(), tab, right);
    if (to == end || row.layout.end().x > right) break;
  }
  widen(row.layout.end().x + static_cast<double>(row.length - row.layout.end().byte) * metrics().cell());
}

void TextView::color(Row& row, std::int64_t line, std::int64_t budget) {
  if (row.length <= text::LongColors::kLong) {
    const std::string bytes = snapshot().bytes({row.start, row.start + row.length});
    state_.model->highlighter()->scanLine(bytes, stateOf(line), &row.tokens);
    return;
  }
  const std::int64_t from = row.layout.begin().byte, to = row.layout.end().byte;
  row.colored = state_.model->tokensInLongLine(LineNo(line), stateOf(line), from, to, budget, &row.tokens);
  exact_ = exact_ && row.colored;
}

double TextView::xOf(std::int64_t line, ByteOffset offset) {
  const Row& r = row(line);
  const std::int64_t byte = std::clamp<std::int64_t>(offset - r.start, 0, r.length);
  if (r.whole || (byte >= r.layout.begin().byte && byte < r.layout.end().byte)) return r.layout.xOf(byte);
  return state_.line(LineNo(line)).at(text::LinePlace::atByte(byte)).x * state_.unit();
}

text::LinePlace TextView::placeBefore(LineNo line, double x) {
  text::LinePlace place = state_.line(line).before(text::LinePlace::atX(std::max(0.0, x) / state_.unit()));
  place.x *= state_.unit();
  return place;
}

double TextView::xOfCell(std::int64_t line, std::int64_t cell) {
  if (metrics().fixedPitch() && !row(line).layout.arranged()) return static_cast<double>(cell) * metrics().cell();
  std::int64_t beyond = 0;
  const ByteOffset at = offsetAtCell(*state_.model, LineNo(line), cell, state_.options->tabSize, &beyond);
  const Row& r = row(line);
  return (beyond > 0 && r.whole ? r.layout.end().x : xOf(line, at)) + static_cast<double>(beyond) * metrics().cell();
}

std::int64_t TextView::cellAt(const QPoint& point) {
  const Place place = placeAtY(point.y());
  const double x = lineX(place, std::max(0.0, point.x() - textLeft()));
  const std::int64_t line = place.line.value;
  const bool arranged = row(line).layout.arranged();
  if (metrics().fixedPitch() && !arranged) return static_cast<std::int64_t>(std::floor(x / metrics().cell() + 0.5));
  const ByteOffset at = offsetAt(point), end = snapshot().lineEnd(LineNo(line));
  const double endX = arranged && row(line).whole ? row(line).layout.end().x : xOf(line, end);
  std::int64_t beyond = 0;
  if (at == end) beyond = std::max<std::int64_t>(0, std::llround((x - endX) / metrics().cell()));
  return cellOf(*state_.model, at, beyond, state_.options->tabSize);
}

QRect TextView::rectOf(ByteOffset offset) {
  const Place place = placeOf(offset);
  const Row& r = row(place.line.value);
  const double width = r.layout.widthAt(offset - r.start);
  const double x =
      textLeft() + (width > 0 ? r.layout.leftOf(offset - r.start) + rows.shift(place.line, place.row) : shownX(offset));
  return {static_cast<int>(std::clamp(x, -1e8, 1e8)), yOf(place), static_cast<int>(width), lineHeight()};
}

QPoint TextView::pointOf(ByteOffset offset) {
  const double x = textLeft() + shownX(offset);
  return {static_cast<int>(std::clamp(x, -1e8, 1e8)), yOf(placeOf(offset))};
}

ByteOffset TextView::offsetAt(const QPoint& point, bool inside) {
  const Place place = placeAtY(point.y());
  const std::int64_t line = place.line.value;
  const Row& r = row(line);
  const double x = lineX(place, point.x() - textLeft());
  if (r.whole || (x >= r.layout.begin().x && x < r.layout.end().x)) {
    const std::int64_t byte = r.layout.byteAt(x, inside);
    if (!rows.wraps()) return r.start + byte;
    const std::int64_t from = rows.begin(place.line, place.row).byte;
    return r.start + std::clamp(byte, from, std::max(from, rows.lastByte(place.line, place.row)));
  }
  const int tab = state_.options->tabSize;
  const text::LinePlace from = placeBefore(LineNo(line), x);
  for (std::int64_t length = 8 * 1024;; length *= 2) {
    const std::int64_t to = std::min(r.length, from.byte + length);
    const LineLayout part(snapshot().bytes({r.start + from.byte, r.start + to}), to == r.length, from, metrics(), tab, x);
    if (to == r.length || part.end().x > x) return r.start + part.byteAt(x, inside);
  }
}

bool TextView::overText(const QPoint& point) {
  const double x = point.x() - textLeft();
  if (x < 0 || top + point.y() < 0 || belowText(point.y())) return false;
  const Place place = placeAtY(point.y());
  if (!rows.wraps()) return x < row(place.line.value).layout.end().x;
  const double shift = rows.shift(place.line, place.row);
  return x - shift >= rows.begin(place.line, place.row).x && x - shift < rows.begin(place.line, place.row + 1).x;
}

text::LineState TextView::stateOf(std::int64_t line) const {
  const auto it =
      std::lower_bound(states_.begin(), states_.end(), line, [](const auto& known, std::int64_t l) { return known.first < l; });
  const bool known = it != states_.end() && it->first == line && statesRevision_ == state_.model->document().revision();
  return known ? it->second : state_.model->stateAt(LineNo(line), kPaintBudget);
}

std::vector<std::int64_t> TextView::findStates() {
  const text::Highlighter* highlighter = state_.colorSyntax ? state_.model->highlighter() : nullptr;
  const std::int64_t first = firstVisible(), last = lastVisible();
  std::vector<std::pair<std::int64_t, text::LineState>> now;
  exact_ = true;
  marking_ = {};
  if (highlighter) {
    text::LineState state = state_.model->stateAt(LineNo(first), kPaintBudget, &exact_);
    for (std::int64_t line = first, next = first; line <= last; line = next) {
      now.emplace_back(line, state);
      next = rows.map.shownFrom(LineNo(line + 1)).value;
      const ByteOffset start = snapshot().lineStart(LineNo(line)), end = snapshot().lineEnd(LineNo(line));
      if (next == line + 1 && end - start <= text::LongColors::kLong) {
        state = highlighter->scanLine(snapshot().bytes({start, end}), state, nullptr);
      } else if (next <= last) {
        bool exact = true;
        state = state_.model->stateAt(LineNo(next), kPaintBudget, &exact);
        exact_ = exact_ && exact;
      }
    }
  }
  std::vector<std::int64_t> differing;
  auto before = states_.begin(), after = now.begin();
  if (states_.empty() != now.empty()) {   // colours came or went
    const std::int64_t end = std::min(last, statesBottom_);
    for (LineNo line = rows.map.shownFrom(LineNo(std::max(first, statesTop_))); line.value <= end;
         line = rows.map.shownFrom(line + 1))
      differing.push_back(line.value);
  }
  while (before != states_.end() && after != now.end()) {
    if (before->first < after->first) ++before;
    else if (after->first < before->first) ++after;
    else {
      if (!(before->second == after->second)) differing.push_back(after->first);
      ++before, ++after;
    }
  }
  for (const std::int64_t line : differing) rows_.erase(line);
  for (const auto& [line, row] : rows_) exact_ = exact_ && row.colored && row.counted;
  states_ = std::move(now);
  statesTop_ = first;
  statesBottom_ = last;
  statesRevision_ = state_.model->document().revision();
  return differing;
}

bool TextView::goOnColoring() {
  bool exact = true;
  state_.model->stateAt(LineNo(lastVisible()), kIdleBudget, &exact);
  for (auto& [line, row] : rows_) {
    if (!row.counted && rows.wraps()) return rows.reach(LineNo(line), row.lastRow + 1, kIdleBudget);
    const text::LinePlace seen = text::LinePlace::atX(static_cast<double>(left) / state_.unit());
    if (!row.counted) return state_.line(LineNo(line)).reach(seen, kIdleBudget);
    if (row.colored) continue;
    color(row, line, kIdleBudget);
    return exact && row.colored;   // one at a time; the others after the next painting
  }
  return exact;
}
