// One index of a line: where its bytes, UTF-16 units and cells stand, by the one rule of segments (Segments.h). Caret, mouse, columns,
// block selection, layout and painting ask it.
//
// A short line is walked each time. Of a long one, LineMaps keeps a stretch every few kilobytes, found as far as somebody looked. A
// stretch depends on nothing before it: an edit drops those that it touches, and the others move, to another line too where the
// line is cut or joined. So a line of any length is counted once, and after that what is looked at costs what is seen.
#pragma once

#include <functional>
#include <vector>

#include "text/line/Segments.h"
#include "text/store/Document.h"

namespace text {

// Segments that follow each other, from a boundary on.
struct LineStretch {
  std::int64_t begin = 0;   // byte of the line
  std::int32_t bytes = 0, units = 0;
  double lead = 0, rest = -1;   // the width up to the first tab, and that behind it; no tab: rest is -1
  std::int64_t unitsAt = 0;     // where it begins; known of those that settle
  double xAt = 0;
};

// Counts a part of a line that was never looked at, on any thread.
struct LineSurvey {
  Snapshot text;
  ByteOffset start, end;   // of the line
  std::int64_t from = 0, to = 0;
  int tabSize = 1;
  const Widths* widths = nullptr;   // has to live as long as the survey runs
  std::vector<LineStretch> found;

  // Calls goesOn(bytes done) often; it ends where that is false.
  void run(const std::function<bool(std::int64_t)>& goesOn);
};

// What is known of the long lines of one text; for the lines that were used last.
class LineMaps {
 public:
  static constexpr std::int64_t kLong = 8 * 1024;   // bytes of a line that is not walked each time

  void measureIn(const Widths* widths);   // forgets all. Null: in cells
  void onChange(const Change& change, const Snapshot& now) noexcept;
  void checkInvariants(const Snapshot& now) const;   // aborts with a message on a breach

 private:
  friend class LineMap;
  struct Entry {
    LineNo line;
    ByteOffset start;
    int tabSize = 1;
    std::vector<LineStretch> stretches;   // ascending
    std::size_t settled = 0;              // so many of them follow each other from the line's start on
  };
  Entry& entryOf(LineNo line, ByteOffset start, int tabSize);
  void move(const Change& change, const Snapshot& now);
  static void moveWithin(Entry& entry, const Change::Span& span, ByteOffset start);

  const Widths* widths_ = nullptr;
  std::vector<Entry> entries_;   // last used last
};

// One line; for a few questions. Precondition: `text` is the text that `maps` was told of last, and lives as long.
class LineMap {
 public:
  LineMap(LineMaps& maps, const Snapshot& text, LineNo line, int tabSize);

  ByteOffset start() const { return start_; }
  std::int64_t length() const { return length_; }   // bytes, without the break

  // The last segment boundary within `most` (at the line's end or before it).
  LinePlace at(const LinePlace& most);
  // The same, or some kilobytes before it, without walking there.
  LinePlace before(const LinePlace& most);
  // The boundary behind the segment that begins at the place.
  LinePlace behind(const LinePlace& place);

  std::string bytes(std::int64_t from, std::int64_t to) const;   // clipped to the line

  // UTF-16 units before a byte; inside a character: before that. The way back; between the two units of a character: its start.
  CharColumn columnOf(std::int64_t byte);
  std::int64_t byteOfColumn(CharColumn column);

  // How far a long line has been counted; the start of any other.
  LinePlace counted();
  // True when all within `most` has been counted; counts about `budget` bytes before it gives up.
  bool reach(const LinePlace& most, std::int64_t budget);
  // What is missing for reach(LinePlace::atByte(byte)), and its result brought in; one that is of another text is dropped.
  LineSurvey survey(std::int64_t byte);
  void adopt(LineSurvey survey);

 private:
  bool isLong() const { return length_ >= LineMaps::kLong; }
  LineMaps::Entry& entry() { return maps_.entryOf(line_, start_, tabSize_); }
  LinePlace endOf(const LineMaps::Entry& entry) const;   // of what settled
  void settle(LineMaps::Entry& entry) const;

  LineMaps& maps_;
  const Snapshot& text_;
  LineNo line_;
  int tabSize_;
  ByteOffset start_;
  std::int64_t length_;
};

}   // namespace text
