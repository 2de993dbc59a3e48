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

std::int64_t TextView::lastVisible() const {
  return std::min(snapshot().lineCount() - 1, (top + std::max(0, height - 1)) / lineHeight());
}

std::int64_t TextView::lineAtY(int y) const {
  return std::clamp<std::int64_t>((top + y) / lineHeight(), 0, snapshot().lineCount() - 1);
}

int TextView::yOf(std::int64_t line) const {
  return static_cast<int>(std::clamp<std::int64_t>(line * lineHeight() - top, -100000, 100000));
}

const Row& TextView::row(std::int64_t line) {
  if (const auto it = rows_.find(line); it != rows_.end()) return it->second;
  if (rows_.size() >= kKeptRows) rows_.clear();
  Row& row = rows_[line];
  layOut(row, line);
  if (row.counted && state_.colorSyntax && state_.model->highlighter()) color(row, line, kPaintBudget);
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
    widen(row.layout.end().x);
    return;
  }
  row.whole = false;
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
  if (metrics().fixedPitch()) return static_cast<double>(cell) * metrics().cell();
  std::int64_t beyond = 0;
  const ByteOffset at = offsetAtCell(*state_.model, LineNo(line), cell, state_.options->tabSize, &beyond);
  return xOf(line, at) + static_cast<double>(beyond) * metrics().cell();
}

std::int64_t TextView::cellAt(const QPoint& point) {
  const double x = std::max(0.0, point.x() - textLeft());
  const std::int64_t line = lineAtY(point.y());
  if (metrics().fixedPitch()) return static_cast<std::int64_t>(std::floor(x / metrics().cell() + 0.5));
  const ByteOffset at = offsetAt(point), end = snapshot().lineEnd(LineNo(line));
  std::int64_t beyond = 0;
  if (at == end) beyond = std::max<std::int64_t>(0, std::llround((x - xOf(line, end)) / metrics().cell()));
  return cellOf(*state_.model, at, beyond, state_.options->tabSize);
}

QPoint TextView::pointOf(ByteOffset offset) {
  const std::int64_t line = snapshot().lineAt(offset).value;
  const double x = textLeft() + xOf(line, offset);
  return {static_cast<int>(std::clamp(x, -1e8, 1e8)), yOf(line)};
}

ByteOffset TextView::offsetAt(const QPoint& point, bool inside) {
  const std::int64_t line = lineAtY(point.y());
  const Row& r = row(line);
  const double x = point.x() - textLeft();
  if (r.whole || (x >= r.layout.begin().x && x < r.layout.end().x)) return r.start + r.layout.byteAt(x, inside);
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
  const std::int64_t y = top + point.y();
  if (x < 0 || y < 0 || y / lineHeight() >= snapshot().lineCount()) return false;
  const std::int64_t line = y / lineHeight();
  return x < row(line).layout.end().x;
}

text::LineState TextView::stateOf(std::int64_t line) const {
  const std::int64_t i = line - statesTop_;
  const bool known =
      i >= 0 && i < static_cast<std::int64_t>(states_.size()) && statesRevision_ == state_.model->document().revision();
  return known ? states_[static_cast<std::size_t>(i)] : state_.model->stateAt(LineNo(line), kPaintBudget);
}

std::vector<std::int64_t> TextView::findStates() {
  const text::Highlighter* highlighter = state_.colorSyntax ? state_.model->highlighter() : nullptr;
  const std::int64_t first = firstVisible(), last = lastVisible();
  std::vector<text::LineState> now;
  exact_ = true;
  marking_ = {};
  if (highlighter) {
    text::LineState state = state_.model->stateAt(LineNo(first), kPaintBudget, &exact_);
    for (std::int64_t line = first; line <= last; ++line) {
      now.push_back(state);
      const ByteOffset start = snapshot().lineStart(LineNo(line)), end = snapshot().lineEnd(LineNo(line));
      if (end - start <= text::LongColors::kLong) {
        state = highlighter->scanLine(snapshot().bytes({start, end}), state, nullptr);
      } else if (line < last) {
        bool exact = true;
        state = state_.model->stateAt(LineNo(line + 1), kPaintBudget, &exact);
        exact_ = exact_ && exact;
      }
    }
  }
  std::vector<std::int64_t> differing;
  for (std::int64_t line = std::max(first, statesTop_); line <= std::min(last, statesBottom_); ++line) {
    const auto before = static_cast<std::size_t>(line - statesTop_), after = static_cast<std::size_t>(line - first);
    const bool same =
        before < states_.size() && after < now.size() ? states_[before] == now[after] : states_.empty() && now.empty();
    if (!same) differing.push_back(line);
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
    const text::LinePlace seen = text::LinePlace::atX(static_cast<double>(left) / state_.unit());
    if (!row.counted) return state_.line(LineNo(line)).reach(seen, kIdleBudget);
    if (row.colored) continue;
    color(row, line, kIdleBudget);
    return exact && row.colored;   // one at a time; the others after the next painting
  }
  return exact;
}
