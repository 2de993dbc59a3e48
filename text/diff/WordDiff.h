// Which parts of a pair of lines differ, and which lines of a hunk make such pairs.
#pragma once

#include <string_view>
#include <vector>

#include "text/diff/LineDiff.h"

namespace text {

// Bytes [begin, end) of both lines, on character boundaries; one side may be empty, never both.
struct WordHunk {
  std::int64_t beforeBegin, beforeEnd, afterBegin, afterEnd;
  bool operator==(const WordHunk&) const = default;
};

// In order. Whole words (see Words.h) and single other characters are compared, words first. Of the rules blanks and case count; what
// is in comments is compared too. Behind their equal beginning and before their equal end lines are compared up to 64 KB; a longer
// part is one hunk.
std::vector<WordHunk> diffWords(std::string_view before, std::string_view after, const DiffRules& rules = {});

struct LinePair {
  LineNo before, after;
  bool operator==(const LinePair&) const = default;
};

// Lines of the hunk that are likely two forms of one line, ascending on both sides; by the words at their begin: of a line 4 KB, of
// the hunk 256 KB, but 64 bytes of each line. A line without a pair came or went. The effort grows with the lines, not with their square.
std::vector<LinePair> pairLines(const Snapshot& before, const Snapshot& after, const LineHunk& hunk);

}   // namespace text
