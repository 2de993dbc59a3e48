// What one change did to a text, and where places of the old text are in the new one. The one home of that rule: whoever keeps
// places of a text over a change asks map() or mapLine(), or keeps marks (Document::addMark), which move by map().
#pragma once

#include <span>
#include <vector>

#include "text/store/Snapshot.h"

namespace text {

// Where a place goes that the change leaves open: one where text was put in, or inside a range that was replaced. The begin of a
// range that was replaced stays its begin, and its end the end of what came.
enum class Bias : unsigned char {
  left,        // before what was put in; to the begin of what came
  right,       // behind it; to the end
  alongLeft,   // before what was put in; as far behind the begin of what came as it was before, at most at its end
  alongRight   // behind it; the same
};

struct Change {
  struct Span {                                         // in ascending order, not overlapping
    ByteOffset begin;                                   // where, in the new text
    std::int64_t removed = 0;                           // bytes that went
    std::int64_t inserted = 0;                          // bytes that came
    LineNo firstLine;                                   // line of begin, in the new text
    std::int64_t linesRemoved = 0, linesInserted = 0;   // line breaks that went and came
    ByteOffset oldBegin;                                // begin and firstLine in the old text
    LineNo oldLine;

    ByteOffset oldEnd() const { return oldBegin + removed; }
    ByteOffset end() const { return begin + inserted; }
    LineNo oldLastLine() const { return oldLine + linesRemoved; }
    std::int64_t linesGrown() const { return firstLine + linesInserted - oldLastLine(); }   // new - old line of what is behind it
  };
  std::uint64_t revision = 0;   // of the document after the change
  bool reset = false;           // the whole text was exchanged; spans is empty
  std::vector<Span> spans;

  // The place in the new text of an offset of the old one; the text's begin after a reset. O(log spans).
  ByteOffset map(ByteOffset old, Bias bias) const noexcept;

  // The first span that touches the old line (the line of its begin, or one that a removed break ended above), or null.
  const Span* touching(LineNo old) const noexcept;
  // By how much the number of an untouched line grew.
  std::int64_t linesGrownAbove(LineNo old) const noexcept;
  // The line of `now`, the new text, where the text of the old line is; *gone: all of it went, and this is where it was. A line
  // at whose start lines were put in goes down with its text (right), or stays (left). O(log spans).
  LineNo mapLine(LineNo old, const Snapshot& now, Bias bias = Bias::right, bool* gone = nullptr) const;
};

}   // namespace text
