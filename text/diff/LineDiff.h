// Which lines differ between two texts: a small set of differences to show to the user.
#pragma once

#include <atomic>
#include <vector>

#include "text/diff/DiffRules.h"

namespace text {

// Lines [begin, end) of both texts that correspond; one side may be empty, never both. Lines between two hunks are equal one by one
// under the rules.
struct LineHunk {
  LineNo beforeBegin, beforeEnd, afterBegin, afterEnd;
  bool nothing = false;   // no difference under the rules: both sides hold only lines that are ignored; they still correspond
  bool operator==(const LineHunk&) const = default;
};

// In order. Lines that both texts have once are put together first, so that moved parts and many equal lines do not lead astray; the
// fewest possible lines differ where the texts are small or nearly equal. A hunk that can stand at several places stands at the
// border of a block. Hashes say which lines may be equal, their bytes whether they are.
// Time: linear in the bytes, and some hundred steps a line at the worst. Memory: below 100 bytes for each line of both.
// Cancelled: whatever was found, to be thrown away.
std::vector<LineHunk> diffLines(const Snapshot& before, const Snapshot& after, const DiffRules& rules = {},
                                const std::atomic<bool>* cancel = nullptr);

}   // namespace text
