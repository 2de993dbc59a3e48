#include <algorithm>

#include "text/color/Highlight.h"
#include "text/line/Cursor.h"

namespace text {

namespace {

constexpr std::int64_t intervalBytes = 64 << 10;

// Scans the whole lines in [from, to) directly in the blocks of the text; only a line across blocks is copied.
LineState scanLines(const Highlighter& highlighter, const Snapshot& text, ByteOffset from, ByteOffset to, LineState state) {
  const char breaker = text.lineMode() == LineMode::lf ? '\n' : '\r';
  std::string across;
  while (from < to) {
    auto chunk = text.chunkAt(from).substr(0, static_cast<std::size_t>(to - from));
    if (from + static_cast<std::int64_t>(chunk.size()) < to) {
      const auto last = chunk.rfind(breaker);
      if (last != std::string_view::npos) {
        chunk = chunk.substr(0, last + 1);
      } else {
        Cursor end(text, from);
        end.toByte(breaker);
        across = text.bytes({from, std::min(to, end.at() + 1)});
        chunk = across;
      }
    }
    state = highlighter.scanBlock(chunk, state, breaker);
    from += static_cast<std::int64_t>(chunk.size());
  }
  return state;
}

// The next line whose state is cached: one interval further down, at least one line.
std::int64_t nextPoint(const Snapshot& text, std::int64_t line) {
  const ByteOffset start = text.lineStart(LineNo(line));
  if (start + intervalBytes >= text.size()) return text.lineCount();
  return std::max(line + 1, text.lineAt(start + intervalBytes).value);
}

}   // namespace

void StateCache::setHighlighter(std::shared_ptr<const Highlighter> highlighter) {
  highlighter_ = std::move(highlighter);
  points_.clear();
  sound_ = 0;
}

void StateCache::onChange(const Change& change) {
  if (change.reset) {
    points_.clear();
    sound_ = 0;
    return;
  }
  std::size_t span = 0;
  bool doubtful = false;
  const auto below = [](LineNo line, const Checkpoint& p) { return line.value < p.line; };
  const auto first =
      change.spans.empty() ? points_.end() : std::upper_bound(points_.begin(), points_.end(), change.spans[0].oldLine, below);
  auto kept = first;
  for (auto it = first; it != points_.end(); ++it) {
    Checkpoint point = *it;
    const LineNo line(point.line);
    bool gone = false;
    while (!gone && span < change.spans.size() && change.spans[span].oldLine < line) {
      doubtful = true;
      gone = line <= change.spans[span].oldLastLine();   // the start of its line is changed; the next point may be in the same span
      if (!gone) ++span;
    }
    if (doubtful) sound_ = std::min(sound_, static_cast<std::size_t>(kept - points_.begin()));
    if (gone) continue;
    const std::int64_t moved = span == 0 ? 0 : change.spans[span - 1].linesGrown();
    if (!doubtful && moved == 0 && kept == it && span == change.spans.size()) return;   // unchanged from here on
    point.line += moved;
    point.doubtful = point.doubtful || doubtful;
    doubtful = false;
    *kept++ = point;
  }
  points_.erase(kept, points_.end());
  sound_ = std::min(sound_, points_.size());
}

LineState StateCache::stateAt(const Snapshot& text, LineNo line, std::int64_t budgetBytes, bool* exact) {
  if (exact) *exact = true;
  if (!highlighter_ || !highlighter_->valid()) return 0;
  const Highlighter& highlighter = *highlighter_;
  const auto reached = [&](std::size_t i) {
    return i == 0 ? Checkpoint{0, 0, false} : points_[i - 1];
  };   // the i-th point from the top
  const auto scan = [&](std::int64_t from, std::int64_t to, LineState state) {
    return scanLines(highlighter, text, text.lineStart(LineNo(from)),
                     to < text.lineCount() ? text.lineStart(LineNo(to)) : text.size(), state);
  };

  std::int64_t left = budgetBytes > 0 ? budgetBytes : text.size().value + 1;
  std::vector<Checkpoint> added;   // new points behind the first sound_ ones, inserted at the end
  Checkpoint here = reached(sound_);
  std::size_t next = sound_;   // the first cached point that is not yet known to be valid
  while (left > 0) {
    if (next < points_.size() && !points_[next].doubtful) {   // valid because the one before it is
      if (points_[next].line > line.value) break;
      here = points_[next++];
      added.push_back(here);
      continue;
    }
    std::int64_t to = nextPoint(text, here.line);
    const bool meets = next < points_.size() && points_[next].line <= to + (to - here.line) / 2;
    if (meets) to = points_[next].line;
    if (to > line.value || to >= text.lineCount()) break;
    const Checkpoint point{to, scan(here.line, to, here.state), false};
    left -= text.lineStart(LineNo(to)) - text.lineStart(LineNo(here.line));
    if (meets) {
      // The cached state is still valid, and so are all points down to the next edit.
      if (points_[next].state != point.state && next + 1 < points_.size()) points_[next + 1].doubtful = true;
      ++next;
    }
    added.push_back(point);
    here = point;
  }
  if (!added.empty()) {
    // [0, sound_) stays; `added` replaces [sound_, next).
    const auto begin = points_.begin() + static_cast<std::ptrdiff_t>(sound_);
    points_.erase(begin, points_.begin() + static_cast<std::ptrdiff_t>(next));
    points_.insert(points_.begin() + static_cast<std::ptrdiff_t>(sound_), added.begin(), added.end());
    sound_ += added.size();
  }

  // Starts at the last point at or above the line.
  const auto above =
      std::upper_bound(points_.begin(), points_.end(), line.value, [](std::int64_t l, const Checkpoint& p) { return l < p.line; });
  const auto index = static_cast<std::size_t>(above - points_.begin());
  const Checkpoint from = reached(index);
  const bool near = nextPoint(text, from.line) > line.value || line.value - from.line <= 1;
  if (exact) *exact = index <= sound_ && (left > 0 || near);
  if (left <= 0 && !near) return from.state;   // the budget is used up far above
  return scan(from.line, line.value, from.state);
}

}   // namespace text
