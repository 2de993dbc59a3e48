#include "control/view/LongLines.h"

#include <algorithm>
#include <limits>

namespace {
constexpr std::int64_t kStep = 4 * 1024;     // bytes between two places
constexpr std::int64_t kRead = 256 * 1024;   // bytes copied at a time
}   // namespace

void LongLines::extend(Places& places, const text::Snapshot& text, text::LineNo line, std::int64_t byte, double x,
                       const GlyphMetrics& metrics, int tabSize) {
  const text::ByteOffset start = text.lineStart(line), end = text.lineEnd(line);
  while (places.back().byte + kStep <= byte && places.back().x <= x) {
    const LinePlace from = places.back();
    if (start + from.byte >= end) return;
    const text::ByteOffset to = std::min(end, start + from.byte + kRead);
    const std::string part = text.bytes({start + from.byte, to});
    LineWalker walker(part, to == end, from, metrics, tabSize);
    QString label;
    while (!walker.done()) {
      const std::int64_t target = places.back().byte + kStep;
      walker.skipPlain(target, 1e300);
      if (walker.place().byte < target && !walker.done()) walker.next(&label);
      if (walker.place().byte >= target) places.push_back(walker.place());
    }
    if (places.back().byte == from.byte) return;   // the end is nearer than a step
  }
}

LinePlace LongLines::before(const text::Snapshot& text, text::LineNo line, std::int64_t byte, const GlyphMetrics& metrics,
                            int tabSize) {
  if (byte < kStep || text.lineEnd(line) - text.lineStart(line) < kLong) return {};
  Places& places = places_.of(line, {});
  extend(places, text, line, byte, std::numeric_limits<double>::max(), metrics, tabSize);
  auto it = std::upper_bound(places.begin(), places.end(), byte, [](std::int64_t b, const LinePlace& p) { return b < p.byte; });
  return *std::prev(it);
}

LinePlace LongLines::beforeX(const text::Snapshot& text, text::LineNo line, double x, const GlyphMetrics& metrics, int tabSize) {
  if (text.lineEnd(line) - text.lineStart(line) < kLong) return {};
  Places& places = places_.of(line, {});
  extend(places, text, line, std::numeric_limits<std::int64_t>::max() / 2, x, metrics, tabSize);
  auto it = std::upper_bound(places.begin(), places.end(), x, [](double v, const LinePlace& p) { return v < p.x; });
  return it == places.begin() ? LinePlace{} : *std::prev(it);
}
