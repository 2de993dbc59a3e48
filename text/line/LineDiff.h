// Which lines differ between two texts: as few as can be found, for a person to look at. How a line ends makes no difference.
#pragma once

#include <vector>

#include "text/store/Snapshot.h"

namespace text {

// Lines [begin, end) of either text that stand for each other; one side may be empty, never both. Equal lines lie between two hunks.
struct LineHunk {
  LineNo beforeBegin, beforeEnd, afterBegin, afterEnd;
  bool operator==(const LineHunk&) const = default;
};

// In order. Texts that differ by more than `most` lines in a row of changes are not searched further: what lies between their equal
// beginning and end is one hunk then. Time grows with the lines times the lines that differ.
std::vector<LineHunk> diffLines(const Snapshot& before, const Snapshot& after, std::int64_t most = 2000);

}   // namespace text
