#include "text/display/LineRows.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace text {

namespace {

// Of rows of a long line: how many cells, and which part of a row, may stay free so that the next one begins with a word.
constexpr double kSpareCells = 24, kSparePart = 0.25;

// Wide signs that close or end something stay with what is before them.
bool startsNoRow(char32_t c) {
  return c == 0x3001 || c == 0x3002 || c == 0x300D || c == 0x300F || c == 0x3011 || c == 0xFF01 || c == 0xFF09 || c == 0xFF0C ||
         c == 0xFF0E || c == 0xFF1A || c == 0xFF1B || c == 0xFF1F;
}

bool isBlank(const Segment& s) { return s.kind == Segment::blank || s.kind == Segment::oddBlank || s.kind == Segment::tab; }

// Whether a row may begin with `next`.
bool mayCut(const Segment& before, const Segment& next) {
  if (isBlank(next)) return false;
  if (isBlank(before) || before.code == ',' || before.code == ';') return true;
  const bool wide = (before.cells == 2 && before.kind == Segment::plain) || (next.cells == 2 && next.kind == Segment::plain);
  return wide && !startsNoRow(next.code);
}

// Goes along a line by segments.
struct Walk {
  std::string_view bytes;   // of the line, from its byte `first`
  int tabSize;
  const Widths* widths;
  LinePlace at;
  Segment here;   // that begins at `at`
  double width = 0;
  std::int64_t first = 0;

  void look() {
    const std::string_view rest = bytes.substr(static_cast<std::size_t>(at.byte - first));
    here = segmentAt(rest, 0, 1);
    if (here.kind == Segment::tab) width = tabStop(at.x, tabSize * (widths ? widths->tabUnit : 1)) - at.x;
    else width = widths ? widths->widthOf(here, rest) : here.cells;
  }
  bool ends() const { return at.byte - first >= static_cast<std::int64_t>(bytes.size()); }
  void go(const LinePlace& to) {
    at = to;
    if (!ends()) look();
  }
  LinePlace behind() const { return {at.byte + here.bytes, at.units + here.units, at.x + width}; }
};

}   // namespace

LineRows::LineRows(LineMap& line, const Snapshot& text, double width, double cell, int tabSize, const Widths* widths)
    : cell_(cell) {
  const bool isLong = line.length() >= LineMaps::kLong;
  const std::int64_t seen = std::min(line.length(), LineMaps::kLong);
  const std::string bytes = text.bytes({line.start(), line.start() + seen});
  Walk walk{bytes, tabSize, widths, {}, {}, 0};
  walk.go({});
  while (!walk.ends() && isBlank(walk.here) && walk.at.x <= width / 2) walk.go(walk.behind());
  const std::int64_t textBegin = walk.at.byte;
  if (walk.at.x <= width / 2) indent_ = walk.at.x;
  if (isLong) {
    tabSize_ = tabSize;
    widths_ = widths;
    spare_ = std::min(kSpareCells * cell, kSparePart * (width - indent_));
    first_ = width - spare_;
    step_ = std::max(2 * cell, first_ - indent_);
    return;
  }
  LinePlace rowBegin, cut;   // cut: where the next row may begin; not behind rowBegin: nowhere
  double room = width;
  for (walk.go({}); !walk.ends();) {
    const double used = walk.at.x - rowBegin.x;
    // A blank may stand in the margin, so that the next row begins with a word.
    if (used + walk.width > room && walk.at.byte > rowBegin.byte &&
        !(isBlank(walk.here) && used <= room && cut.byte != walk.at.byte)) {
      rowBegin = cut.byte > rowBegin.byte ? cut : walk.at;
      starts_.push_back(rowBegin);
      room = width - indent_;
      walk.go(rowBegin);
      continue;
    }
    const Segment before = walk.here;
    const bool hangs = isBlank(before) && used + walk.width > room;
    walk.go(walk.behind());
    if (!walk.ends() && walk.at.byte > textBegin && (hangs || mayCut(before, walk.here))) cut = walk.at;
  }
}

std::int64_t LineRows::rowAtX(double x) const { return x < first_ ? 0 : 1 + static_cast<std::int64_t>((x - first_) / step_); }

std::int64_t LineRows::count(LineMap& line) const {
  if (!isLong()) return static_cast<std::int64_t>(starts_.size()) + 1;
  const LinePlace seen = line.counted();
  const double each = seen.byte > 0 ? seen.x / static_cast<double>(seen.byte) : cell_;
  const double end = seen.x + each * static_cast<double>(line.length() - seen.byte);
  return std::max<std::int64_t>(1, rowAtX(std::nextafter(end, 0.0)) + 1);
}

LinePlace LineRows::begin(LineMap& line, std::int64_t row) const {
  if (row <= 0) return {};
  if (!isLong()) {
    if (row > static_cast<std::int64_t>(starts_.size())) return line.at(LinePlace::atByte(line.length()));
    return starts_[static_cast<std::size_t>(row - 1)];
  }
  const LinePlace most = line.at(LinePlace::atX(xOfRow(row)));
  return most.byte >= line.length() ? most : wordBefore(line, most);
}

// Where the last word begins that a row may begin with; the place itself if there is none near before it.
LinePlace LineRows::wordBefore(LineMap& line, const LinePlace& most) const {
  const double least = most.x - spare_;
  const LinePlace from = line.at(LinePlace::atX(std::max(0.0, least)));
  const std::string bytes = line.bytes(from.byte, most.byte + segmentAhead);
  Walk walk{bytes, tabSize_, widths_, {}, {}, 0, from.byte};
  LinePlace word = most;
  for (walk.go(from); walk.at.byte < most.byte;) {
    const Segment before = walk.here;
    walk.go(walk.behind());
    if (walk.at.byte <= most.byte && !walk.ends() && walk.at.x > least && mayCut(before, walk.here)) word = walk.at;
  }
  return word;
}

bool LineRows::reach(LineMap& line, std::int64_t row, std::int64_t budget) const {
  return line.reach(LinePlace::atX(xOfRow(row)), budget);
}

std::int64_t LineRows::rowAt(LineMap& line, std::int64_t byte) const {
  if (isLong()) {
    const std::int64_t row = rowAtX(line.at(LinePlace::atByte(byte)).x);
    if (byte >= line.length()) return std::min(row, count(line) - 1);
    return byte >= begin(line, row + 1).byte ? row + 1 : row;
  }
  return std::upper_bound(starts_.begin(), starts_.end(), byte, [](std::int64_t b, const LinePlace& s) { return b < s.byte; }) -
         starts_.begin();
}

}   // namespace text
