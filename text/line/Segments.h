// What a line is made of, by the one rule that caret, mouse, columns, layout and words share: segments, each shown as a whole.
//
// A segment is a character as the user sees it (a base with its marks, an emoji sequence, a pair of regional letters, a syllable
// block), a blank, a tab, a byte that is not UTF-8, or a character that could hide (controls, directions, joiners and selectors
// where nothing is joined), which stands as a box with its name. A segment depends on nothing before it but the column of a tab,
// and every segment takes at least one cell.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
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

constexpr int maxClusterBytes = 64;                 // a longer pile of marks makes several segments
constexpr int badByteCells = 2;                     // its two hex digits
constexpr int segmentAhead = maxClusterBytes + 4;   // bytes that tell how long a segment is

// The first segment of `rest`, which stands at display column `column` of its line and goes on for segmentAhead bytes or to the
// line's end. A break is not part of a line: CR and LF are characters that could hide.
Segment segmentAt(std::string_view rest, std::int64_t column, int tabSize);

// A place of a line, from its start: in bytes, UTF-16 units and cells, or in place of cells what Widths give. As a limit: the
// coordinates that are not named do not count.
struct LinePlace {
  std::int64_t byte = 0, units = 0;
  double x = 0;

  static constexpr double anyX = std::numeric_limits<double>::max();
  static constexpr std::int64_t any = std::numeric_limits<std::int64_t>::max() / 2;
  static constexpr LinePlace atByte(std::int64_t byte) { return {byte, any, anyX}; }
  static constexpr LinePlace atUnits(std::int64_t units) { return {any, units, anyX}; }
  static constexpr LinePlace atX(double x) { return {any, any, x}; }
  bool within(const LinePlace& most) const { return byte <= most.byte && units <= most.units && x <= most.x; }
};

// How wide the segments of a line are where they are not measured in cells.
class Widths {
 public:
  virtual ~Widths() = default;
  virtual double widthOf(const Segment& segment, std::string_view bytes) const = 0;   // of any but a tab
  std::array<double, 0x80> ascii{};                                                   // the same for printable ASCII
  double tabUnit = 1;   // tab stops stand each tab size times this far
};

// The first tab stop behind x, at least 1 away. `distance` is that between two stops.
double tabStop(double x, double distance);

// Goes along a line over whole segments, as far as they end within `most`. `rest` is the line from `from` on; unless it reaches to the
// line's end, its last segmentAhead bytes are only looked at. Stops before a tab unless it may go over tabs.
LinePlace walk(std::string_view rest, bool toLineEnd, const LinePlace& from, const LinePlace& most, int tabSize,
               const Widths* widths = nullptr, bool overTabs = true);

// The name in the box of a character that could hide, in ASCII; empty for any other.
std::string hiddenLabel(char32_t code);
// Pictures may be joined and varied; behind anything else such a character could only hide.
bool isPictograph(char32_t code);   // skin tones too
bool variesPictures(char32_t code);

}   // namespace text
