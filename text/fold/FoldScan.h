// Reads stretches of whole lines for what opens and closes blocks. A stretch depends on what is above it only through a small state,
// so that an edit costs its surroundings.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "text/fold/FoldRules.h"

namespace text {

// One place of a stretch. Balanced brackets of one line and single line comments are left out.
struct FoldEvent {
  enum Role : unsigned char {
    nothing,
    open,          // number: of the opener
    close,         // of the closer, or kNamed + that of the opener that is named: "end if"; + kFollowed
    bracketOpen,   // number: 0 ( 1 [ 2 {
    bracketClose,
    layerOpen,
    layerMiddle,
    layerClose,
    regionOpen,   // of the region
    regionClose,
    commentOpen,   // a comment over several lines
    commentClose,
    runOpen,    // lines with nothing but a line comment: the first of them,
    runClose,   // and the line behind them
    lastCode,   // number: how many lines further up the last line with code is
    indent      // a line that is indented otherwise than that one; number: its width in columns. Behind lastCode
  };
  static constexpr int kNamed = 0x800, kFollowed = 0x400;   // kFollowed: more of a statement stands behind it, as in "end else"
  std::uint32_t at = 0;                                     // bytes from the start of the stretch
  std::uint16_t line = 0;                                   // lines from its start
  std::uint16_t code = 0;

  Role role() const { return static_cast<Role>(code >> 12); }
  int number() const { return code & 0xFFF; }
  int closer() const { return code & 0x3FF; }   // of a closer, without the flags
  bool named() const { return (code & kNamed) != 0; }
  static std::uint16_t coded(Role role, int number) { return static_cast<std::uint16_t>(role << 12 | (number & 0xFFF)); }
};

// Between two stretches.
struct FoldState {
  LineState colors = 0;
  unsigned char words = 0;     // of the statement that goes on: 0, 1, 2 for more
  bool opened = false;         // it has opened a block,
  bool opensNothing = false;   // or cannot open one
  bool awaitsIs = false, seenIs = false;
  bool inRun = false;
  std::int16_t first = -1;     // its first word, if that is in the rules
  std::uint16_t indent = 0;    // of the last line with code; where that matters, as the next
  std::uint16_t noCode = 0;    // lines without code behind it
  std::int32_t depth = 0;      // of brackets, as far as the statement goes
  std::int32_t armDepth = 0;   // where the last conditional compilation began
  bool operator==(const FoldState&) const = default;
};

struct FoldStretch {
  std::int64_t bytes = 0, lines = 0;
  FoldState in, out;
  std::vector<FoldEvent> events;
};

inline constexpr std::int64_t kMostStretchLines = 60000;

// `bytes`: whole lines, at most kMostStretchLines, each ended by `breaker`; the last one may lack it. *whole is false when the stretch
// ends within a statement whose meaning is not decided.
FoldStretch scanStretch(const FoldRules& rules, std::string_view bytes, char breaker, const FoldState& in, bool* whole);

}   // namespace text
