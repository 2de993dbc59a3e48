// What one change did to a text, and where positions of the old text are in the new one. Only this class knows the rule: code that
// keeps positions over a change calls map() or mapLine(), or uses marks (Document::addMark), which are moved by map().
#pragma once

#include <span>
#include <vector>

#include "text/store/Snapshot.h"

namespace text {

// Where an ambiguous position goes: one where text was inserted, or one inside a replaced range. The begin of a replaced range maps
// to the begin of its replacement, and its end to the end.
enum class Bias : unsigned char {
  left,        // before inserted text; inside a range: to the begin of the replacement
  right,       // behind it; to the end
  alongLeft,   // before inserted text; inside a range: keeps its distance from the begin, at most to the end of the replacement
  alongRight   // behind it; the same
};

struct Change {
  struct Span {                                         // in ascending order, not overlapping
    ByteOffset begin;                                   // where, in the new text
    std::int64_t removed = 0;                           // bytes that went
    std::int64_t inserted = 0;                          // bytes that came
    LineNo firstLine;                                   // line of begin, in the new text
    std::int64_t linesRemoved = 0, linesInserted = 0;   // number of removed and inserted line breaks
    ByteOffset oldBegin;                                // begin and firstLine in the old text
    LineNo oldLine;

    ByteOffset oldEnd() const { return oldBegin + removed; }
    ByteOffset end() const { return begin + inserted; }
    LineNo oldLastLine() const { return oldLine + linesRemoved; }
    // difference of line numbers behind the span, new - old
    std::int64_t linesGrown() const { return firstLine + linesInserted - oldLastLine(); }
  };
  std::uint64_t revision = 0;   // of the document after the change
  bool reset = false;           // the whole text was replaced; spans is empty
  std::vector<Span> spans;

  // Maps an offset of the old text to the new text; 0 after a reset. O(log spans).
  ByteOffset map(ByteOffset old, Bias bias) const noexcept;

  // The first span that touches the old line (the line of its begin, or the line that ended with a removed break), or null.
  const Span* touching(LineNo old) const noexcept;
  // Difference of the number of an untouched line, new - old.
  std::int64_t linesGrownAbove(LineNo old) const noexcept;
  // Maps a line of the old text to the line of `now`, the new text. *gone: all of its text was removed, and the result is its
  // place. If lines were inserted at its start, the line moves down with its text (right) or stays (left). O(log spans).
  LineNo mapLine(LineNo old, const Snapshot& now, Bias bias = Bias::right, bool* gone = nullptr) const;
};

}   // namespace text
