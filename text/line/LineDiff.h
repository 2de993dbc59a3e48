// Which lines differ between two texts: a small set of differences to show to the user. Line ends are ignored.
#pragma once

#include <vector>

#include "text/store/Snapshot.h"

namespace text {

// Lines [begin, end) of both texts that correspond; one side may be empty, never both. Lines between two hunks are equal.
struct LineHunk {
  LineNo beforeBegin, beforeEnd, afterBegin, afterEnd;
  bool operator==(const LineHunk&) const = default;
};

// In order. If texts differ by more than `most` lines in succession, everything between their equal beginning and end becomes one
// hunk. Time: lines times differing lines.
std::vector<LineHunk> diffLines(const Snapshot& before, const Snapshot& after, std::int64_t most = 2000);

}   // namespace text
