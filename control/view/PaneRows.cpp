#include "control/view/PaneRows.h"

#include <algorithm>
#include <cmath>

#include "base/Program.h"
#include "control/edit/ColumnBlock.h"
#include "control/folds/PaneFolds.h"
#include "control/view/Pane.h"

using text::ByteOffset;
using text::LineNo;

namespace {
constexpr std::int64_t kMeasured = 10000;   // further away the rows of the lines between are taken as they are known
}   // namespace

// The program moves by lines, whatever the window is like.
DisplayRows* Pane::displayRows() { return (view_.rows.wraps() || view_.rows.map.hidesAny()) && !gBusy() ? rows_.get() : nullptr; }

TextView::Place PaneRows::moved(TextView::Place from, std::int64_t rows) {
  TextView& view = pane_.view_;
  const text::DisplayMap& map = view.rows.map;
  view.measure(from.line);
  if (std::abs(rows) > kMeasured) return map.at(map.rowOf(from.line) + from.row + rows);
  for (; rows > 0; --rows) {
    const std::int64_t left = map.rowsOf(from.line) - 1 - from.row;
    if (rows <= left) return {from.line, from.row + rows};
    const LineNo next = map.shownFrom(from.line + 1);
    if (next.value >= map.lines()) return {from.line, from.row + std::max<std::int64_t>(0, left)};
    rows -= std::max<std::int64_t>(0, left);
    from = {next, 0};
    view.measure(next);
  }
  for (; rows < 0; ++rows) {
    if (-rows <= from.row) return {from.line, from.row + rows};
    if (from.line.value == 0) return {from.line, 0};
    rows += from.row;
    const LineNo next = map.shownUpTo(from.line - 1);
    if (view.rows.wraps()) pane_.countTo(view.snapshot().lineEnd(next), false);
    view.measure(next);
    from = {next, map.rowsOf(next) - 1};
  }
  return from;
}

ByteOffset PaneRows::below(ByteOffset at, std::int64_t rows, std::int64_t cell) {
  TextView& view = pane_.view_;
  const TextView::Place from = view.placeOf(at), to = moved(from, rows);
  if (to == from) return at;
  if (!view.rows.wraps()) return offsetAtCell(*pane_.state_.model, to.line, cell, pane_.state_.options->tabSize);
  const double x = static_cast<double>(cell) * view.metrics().cell() - view.rows.shift(to.line, to.row);
  text::LineMap line = pane_.state_.line(to.line);
  const std::int64_t begin = view.rows.begin(to.line, to.row).byte, last = view.rows.lastByte(to.line, to.row);
  const std::int64_t byte = line.at(text::LinePlace::atX(std::max(0.0, x) / pane_.state_.unit())).byte;
  return line.start() + std::clamp(byte, begin, std::max(begin, last));
}

std::int64_t PaneRows::cellInRow(ByteOffset at) {
  TextView& view = pane_.view_;
  if (!view.rows.wraps()) return cellOf(*pane_.state_.model, at, 0, pane_.state_.options->tabSize);
  // Where it is counted, as `below` does: where it is shown may be another place.
  const TextView::Place place = view.placeOf(at);
  text::LineMap line = pane_.state_.line(place.line);
  const double x = line.at(text::LinePlace::atByte(at - line.start())).x * pane_.state_.unit();
  return std::llround((x + view.rows.shift(place.line, place.row)) / view.metrics().cell());
}

text::ByteRange PaneRows::rowAt(ByteOffset at) {
  TextView& view = pane_.view_;
  const TextView::Place place = view.placeOf(at);
  const ByteOffset start = view.snapshot().lineStart(place.line);
  if (!view.rows.wraps()) return {start, view.snapshot().lineEnd(place.line)};
  return {start + view.rows.begin(place.line, place.row).byte, start + view.rows.lastByte(place.line, place.row)};
}

std::int64_t PaneRows::belowTop(ByteOffset at) {
  const TextView& view = pane_.view_;
  const int height = view.lineHeight();
  return pane_.view_.topOf(pane_.view_.placeOf(at)) / height - (view.target + height - 1) / height;
}

ByteOffset PaneRows::shownFrom(ByteOffset at, bool forward) {
  const TextView& view = pane_.view_;
  const LineNo line = view.snapshot().lineAt(at);
  if (!view.rows.map.isHidden(line)) return at;
  const LineNo next = view.rows.map.shownFrom(line);
  if (forward && next.value < view.rows.map.lines()) return view.snapshot().lineStart(next);
  return view.snapshot().lineEnd(view.rows.map.shownUpTo(line));
}

LineNo PaneRows::lastOf(LineNo line) { return line + pane_.folds_->hiddenBehind(line); }

void PaneRows::scrollRows(std::int64_t rows) {
  const TextView& view = pane_.view_;
  const int height = view.lineHeight();
  pane_.scrollTo(((view.target + height - 1) / height + rows) * height, true);
}
