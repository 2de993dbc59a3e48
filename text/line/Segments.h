// What a line is made of, by the one rule that caret, mouse, columns, layout and words share: segments, each shown as a whole.
//
// A segment is a character as a person sees it (a base with its marks, an emoji sequence, a pair of regional letters, a syllable
// block), a blank, a tab, a byte that is not UTF-8, or a character that could hide (controls, directions, joiners and selectors
// where nothing is joined), which stands as a box with its name. A segment depends on nothing before it but the column of a tab,
// and every segment takes at least one cell.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace text {

struct Segment {
  enum Kind : unsigned char { plain, blank, oddBlank, tab, badByte, hidden };
  char32_t code = 0;   // the first code point; of a bad byte its value
  int bytes = 0;       // at most maxClusterBytes; 0 only at the end
  int units = 0;       // of UTF-16; a bad byte is one
  int cells = 0;
  Kind kind = plain;
  bool single = true;   // one code point
};

constexpr int maxClusterBytes = 64;   // a longer pile of marks makes several segments
constexpr int badByteCells = 2;       // its two hex digits

// The first segment of `rest`, which stands at display column `column` of its line and goes on for maxClusterBytes + 4 bytes or to
// the line's end. A break is not part of a line: CR and LF are characters that could hide.
Segment segmentAt(std::string_view rest, std::int64_t column, int tabSize);

// How far a stretch of a line reaches.
struct Extent {
  std::int64_t bytes = 0, units = 0, cells = 0;
};
// Segments from the start of `rest` on that are quickly told: printable ASCII and letters that nothing can join, at most so many of
// each. The one before something that could join it is left out; so is the last one, unless `rest` reaches to the line's end.
Extent skipSimple(std::string_view rest, bool toLineEnd, const Extent& most);

// The name in the box of a character that could hide, in ASCII; empty for any other.
std::string hiddenLabel(char32_t code);
bool isPictograph(char32_t code);

}   // namespace text
