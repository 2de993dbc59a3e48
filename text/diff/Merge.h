// Merges the changes that two texts made to a common base.
#pragma once

#include <string>
#include <vector>

#include "text/diff/LineDiff.h"

namespace text {

// Lines [begin, end) of the three texts that correspond; any may be empty, never all.
struct MergeRegion {
  enum Kind : unsigned char {
    same,      // in all three
    left,      // only the left text changed it
    right,     // only the right one
    both,      // both, in the same way
    conflict   // both, not in the same way
  };
  Kind kind = same;
  LineNo baseBegin, baseEnd, leftBegin, leftEnd, rightBegin, rightEnd;
  bool operator==(const MergeRegion&) const = default;
};

// All lines of the three texts, in order. Changes that touch each other, without an unchanged line between, are one region. Line ends
// do not count. Cancelled: no regions.
std::vector<MergeRegion> merge3(const Snapshot& base, const Snapshot& left, const Snapshot& right,
                                const std::atomic<bool>* cancel = nullptr);

struct MergeNames {
  std::string left, base, right;   // of the versions, for the marks of conflicts
};

struct MergedText {
  Snapshot text;
  std::vector<LineNo> starts;   // of each region in it
  std::int64_t conflicts = 0;
  std::int64_t lineEndConflicts = 0;   // lines whose ends both changed, not in the same way: they end as in the left text
};

// The merged text. A conflict holds all three versions between lines "<<<<<<< left", "||||||| base", "=======" and ">>>>>>> right".
// A line ends as in the text that changed its end, and a line that has none as the one above.
MergedText mergedText(const Snapshot& base, const Snapshot& left, const Snapshot& right, const std::vector<MergeRegion>& regions,
                      const MergeNames& names);

}   // namespace text
