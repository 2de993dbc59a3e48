#include "text/color/LongColors.h"

#include <algorithm>
#include <string>

namespace text {

namespace {

constexpr std::int64_t step = 16 << 10;       // bytes between two known places
constexpr std::int64_t reading = 512 << 10;   // bytes copied at a time
constexpr std::size_t mostLines = 256;

// The bytes that a scan of [from, to) wants to see.
struct Part {
  Part(const Snapshot& text, ByteOffset start, std::int64_t length, std::int64_t from, std::int64_t to)
      : begin(std::max<std::int64_t>(0, from - Highlighter::kBehind)),
        end(std::min(length, to + Highlighter::kAhead)),
        bytes(text.bytes({start + begin, start + end})),
        toEnd(end == length) {}
  std::int64_t begin, end;
  std::string bytes;
  bool toEnd;
};

}   // namespace

// A point was found by looking at up to kAhead bytes behind it.
void LongColors::onChange(const Change& change, const Snapshot& now) {
  if (change.reset) clear();
  std::erase_if(lines_, [&](Line& l) {
    const Change::Span* span = change.touching(l.line);
    if (!span) {
      l.line += change.linesGrownAbove(l.line);
      return false;
    }
    if (span->oldLine < l.line) return true;   // its beginning went
    // Its beginning stays; what follows may stand on another line now.
    l.line = span->firstLine;
    const std::int64_t safe = span->begin - now.lineStart(span->firstLine) - Highlighter::kAhead;
    while (l.points.size() > 1 && l.points.back().byte > safe) l.points.pop_back();
    return false;
  });
}

std::vector<LinePoint>& LongColors::pointsOf(LineNo line, const LinePoint& first) {
  const auto it = std::find_if(lines_.begin(), lines_.end(), [line](const Line& l) { return l.line == line; });
  if (it != lines_.end()) {
    std::rotate(it, it + 1, lines_.end());
  } else {
    if (lines_.size() >= mostLines) lines_.erase(lines_.begin());
    lines_.push_back({line, {}});
  }
  auto& points = lines_.back().points;
  if (points.empty() || points.front() != first) points = {first};
  return points;
}

bool LongColors::tokens(const Highlighter& highlighter, const Snapshot& text, LineNo line, LineState state, std::int64_t from,
                        std::int64_t to, std::int64_t budgetBytes, std::vector<Token>* tokens) {
  tokens->clear();
  const ByteOffset start = text.lineStart(line);
  const std::int64_t length = text.lineEnd(line) - start;
  const LinePoint first = highlighter.startOf(state);
  auto& points = pointsOf(line, first);

  while (points.back().byte + step <= from && points.back().inside != LinePoint::lost) {
    if (budgetBytes <= 0) return false;
    const std::int64_t at = points.back().byte, until = std::min({from, at + reading, at + std::max(step, budgetBytes)});
    const Part part(text, start, length, at, until);
    while (points.back().byte + step <= until)
      points.push_back(highlighter.scanPart(part.bytes, part.begin, part.toEnd, points.back(), points.back().byte + step, nullptr));
    budgetBytes -= points.back().byte - at;
  }
  const auto behind =
      std::upper_bound(points.begin(), points.end(), from, [](std::int64_t b, const LinePoint& p) { return b < p.byte; });
  const LinePoint last = *std::prev(behind);
  const Part part(text, start, length, last.byte, std::min(length, to));
  highlighter.scanPart(part.bytes, part.begin, part.toEnd, last, std::min(length, to), tokens);
  std::erase_if(*tokens, [&](const Token& t) { return t.begin + t.length <= from; });
  return true;
}

}   // namespace text
