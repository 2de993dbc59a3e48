// The colours of lines too long to be scanned whole each time they are looked at: the scan goes on from the last known place
// before what is visible.
#pragma once

#include "text/color/Highlight.h"
#include "text/line/LinePlaces.h"

namespace text {

class LongColors {
 public:
  static constexpr std::int64_t kLong = 64 << 10;   // bytes of a line that is worth it

  void clear() { places_.clear(); }   // another highlighter
  void onChange(const Change& change, const Snapshot& now) { places_.onChange(change, now, Highlighter::kAhead); }

  // The tokens that reach into [from, to) of a line which starts in `state`; bytes count from the line's start, as in
  // scanLine. False, and no tokens: the bytes in front that were never scanned are more than budgetBytes; call again to go on.
  bool tokens(const Highlighter& highlighter, const Snapshot& text, LineNo line, LineState state, std::int64_t from,
              std::int64_t to, std::int64_t budgetBytes, std::vector<Token>* tokens);

 private:
  LinePlaces<LinePoint> places_;
};

}   // namespace text
