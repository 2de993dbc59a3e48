// The colours of very long lines. They are not scanned whole for each repaint: the scan resumes at the last known point before the
// visible part.
#pragma once

#include "text/color/Highlight.h"

namespace text {

class LongColors {
 public:
  static constexpr std::int64_t kLong = 64 << 10;   // minimum length of such a line in bytes

  void clear() { lines_.clear(); }   // another highlighter
  void onChange(const Change& change, const Snapshot& now);

  // The tokens that overlap [from, to) of a line that starts in `state`; bytes count from the start of the line, as in scanLine.
  // False, with no tokens: more than budgetBytes before the range have not been scanned yet; call again to continue.
  bool tokens(const Highlighter& highlighter, const Snapshot& text, LineNo line, LineState state, std::int64_t from,
              std::int64_t to, std::int64_t budgetBytes, std::vector<Token>* tokens);

 private:
  struct Line {
    LineNo line;
    std::vector<LinePoint> points;   // ascending; the first is that of byte 0
  };
  std::vector<LinePoint>& pointsOf(LineNo line, const LinePoint& first);

  std::vector<Line> lines_;   // last used last
};

}   // namespace text
