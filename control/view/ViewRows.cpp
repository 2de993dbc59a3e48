#include "control/view/ViewRows.h"

#include <algorithm>

using text::LineNo;
using text::LinePlace;

namespace {
constexpr std::size_t kKept = 5000;   // lines
}   // namespace

ViewRows::ViewRows(ViewState& state) : map(state.model->snapshot().lineCount()), state_(state) {}

bool ViewRows::setWidth(double pixels) {
  if (pixels == width_) return false;
  width_ = pixels;
  known_.clear();
  if (!wraps()) map.forgetRows();
  return true;
}

const text::LineRows& ViewRows::of(LineNo line) {
  if (const auto it = known_.find(line.value); it != known_.end()) return it->second;
  if (known_.size() >= kKept) known_.clear();
  const GlyphMetrics& metrics = *state_.metrics;
  const bool fixed = metrics.fixedPitch();
  text::LineMap places = state_.line(line);
  text::LineRows rows;
  if (wraps())
    rows = text::LineRows(places, state_.model->snapshot(), width_ / state_.unit(), fixed ? 1 : metrics.cell(),
                          state_.options->tabSize, fixed ? nullptr : &metrics);
  return known_.emplace(line.value, std::move(rows)).first->second;
}

std::int64_t ViewRows::count(LineNo line) {
  if (!wraps()) return 1;
  text::LineMap places = state_.line(line);
  return of(line).count(places);
}

LinePlace ViewRows::begin(LineNo line, std::int64_t row) {
  text::LineMap places = state_.line(line);
  LinePlace place = of(line).begin(places, row);
  place.x *= state_.unit();
  return place;
}

std::int64_t ViewRows::rowAt(LineNo line, std::int64_t byte) {
  if (!wraps()) return 0;
  text::LineMap places = state_.line(line);
  return of(line).rowAt(places, byte);
}

std::int64_t ViewRows::lastByte(LineNo line, std::int64_t row) {
  text::LineMap places = state_.line(line);
  const LinePlace end = of(line).begin(places, row + 1);
  if (row + 1 >= of(line).count(places)) return places.length();
  return places.at(LinePlace::atByte(std::max<std::int64_t>(end.byte - 1, 0))).byte;
}

bool ViewRows::reach(LineNo line, std::int64_t row, std::int64_t budget) {
  text::LineMap places = state_.line(line);
  return of(line).reach(places, row, budget);
}

double ViewRows::shift(LineNo line, std::int64_t row) {
  if (row == 0 || !wraps()) return 0;
  return of(line).indent() * state_.unit() - begin(line, row).x;
}
