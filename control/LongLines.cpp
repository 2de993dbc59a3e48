#include "control/LongLines.h"

#include <algorithm>
#include <limits>

namespace {
constexpr std::int64_t kStep = 4 * 1024;        // bytes between two places
constexpr std::int64_t kRead = 256 * 1024;      // bytes copied at a time
constexpr std::size_t kEntries = 64;            // lines remembered
}  // namespace

LongLines::Entry& LongLines::entry(std::int64_t line) {
  const auto it = std::find_if(lines_.begin(), lines_.end(), [line](const Entry& e) { return e.line == line; });
  if (it != lines_.end()) {
    std::rotate(it, it + 1, lines_.end());
  } else {
    if (lines_.size() >= kEntries) lines_.erase(lines_.begin());
    lines_.push_back({line, {LinePlace{}}});
  }
  return lines_.back();
}

void LongLines::onChange(const text::Change& change, const text::Snapshot& now) {
  if (change.reset) clear();
  if (lines_.empty()) return;
  std::vector<Entry> kept;
  for (Entry& e : lines_) {
    std::int64_t shift = 0;      // new line - old line behind the spans before
    bool gone = false;
    for (const auto& span : change.spans) {
      const std::int64_t oldFirst = span.firstLine.value - shift;
      if (e.line < oldFirst) break;
      if (e.line == oldFirst) {
        const std::int64_t safe = span.begin - now.lineStart(span.firstLine) - LineWalker::kLookAhead;
        while (e.places.size() > 1 && e.places.back().byte > safe) e.places.pop_back();
      } else if (e.line <= oldFirst + span.linesRemoved) {
        gone = true;
        break;
      }
      shift += span.linesInserted - span.linesRemoved;
      if (e.line == oldFirst) {   // the rest of the line may stand on another one now
        shift = 0;
        break;
      }
    }
    if (gone) continue;
    e.line += shift;
    kept.push_back(std::move(e));
  }
  lines_ = std::move(kept);
}

void LongLines::extend(Entry& entry, const text::Snapshot& text, std::int64_t byte, double x, const GlyphMetrics& metrics, int tabSize) {
  const text::ByteOffset start = text.lineStart(text::LineNo(entry.line)), end = text.lineEnd(text::LineNo(entry.line));
  while (entry.places.back().byte + kStep <= byte && entry.places.back().x <= x) {
    const LinePlace from = entry.places.back();
    if (start + from.byte >= end) return;
    const text::ByteOffset to = std::min(end, start + from.byte + kRead);
    const std::string part = text.bytes({start + from.byte, to});
    LineWalker walker(part, to == end, from, metrics, tabSize);
    QString label;
    while (!walker.done()) {
      const std::int64_t target = entry.places.back().byte + kStep;
      walker.skipPlain(target, 1e300);
      if (walker.place().byte < target && !walker.done()) walker.next(&label);
      if (walker.place().byte >= target) entry.places.push_back(walker.place());
    }
    if (entry.places.back().byte == from.byte) return;   // the end is nearer than a step
  }
}

LinePlace LongLines::before(const text::Snapshot& text, text::LineNo line, std::int64_t byte, const GlyphMetrics& metrics, int tabSize) {
  if (byte < kStep || text.lineEnd(line) - text.lineStart(line) < kLong) return {};
  Entry& e = entry(line.value);
  extend(e, text, byte, std::numeric_limits<double>::max(), metrics, tabSize);
  auto it = std::upper_bound(e.places.begin(), e.places.end(), byte, [](std::int64_t b, const LinePlace& p) { return b < p.byte; });
  return *std::prev(it);
}

LinePlace LongLines::beforeX(const text::Snapshot& text, text::LineNo line, double x, const GlyphMetrics& metrics, int tabSize) {
  if (text.lineEnd(line) - text.lineStart(line) < kLong) return {};
  Entry& e = entry(line.value);
  extend(e, text, std::numeric_limits<std::int64_t>::max() / 2, x, metrics, tabSize);
  auto it = std::upper_bound(e.places.begin(), e.places.end(), x, [](double v, const LinePlace& p) { return v < p.x; });
  return it == e.places.begin() ? LinePlace{} : *std::prev(it);
}
