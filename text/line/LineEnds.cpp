#include "text/line/LineEnds.h"

#include <algorithm>

namespace text {

LineEnds lineEndsOf(const Snapshot& text, std::int64_t limit) {
  if (text.lineMode() == LineMode::cr) return LineEnds::none;
  LineEnds seen = LineEnds::none;
  char before = 0;   // last byte of the previous chunk
  const std::int64_t end = std::min(text.size().value, limit);
  for (std::int64_t at = 0; at < end;) {
    const std::string_view chunk = text.chunkAt(ByteOffset(at));
    for (std::size_t lf = chunk.find('\n'); lf != std::string_view::npos; lf = chunk.find('\n', lf + 1)) {
      const LineEnds now = (lf > 0 ? chunk[lf - 1] : before) == '\r' ? LineEnds::crlf : LineEnds::lf;
      if (seen != LineEnds::none && seen != now) return LineEnds::mixed;
      seen = now;
    }
    before = chunk.back();
    at += static_cast<std::int64_t>(chunk.size());
  }
  return seen;
}

}   // namespace text
