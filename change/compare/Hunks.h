// What the differences of two texts say about their lines: which stand beside each other, and what taking over changes.
//
// Differences are text::LineHunk values in order; `before` is the left text, `after` the right one. Lines count from 0, ranges are
// half-open.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "text/diff/LineDiff.h"
#include "text/line/NewLines.h"
#include "text/store/Document.h"

namespace compare {

enum Side : int { kLeft, kRight };
inline Side other(Side side) { return side == kLeft ? kRight : kLeft; }

using Hunks = std::vector<text::LineHunk>;

struct Lines {
  std::int64_t begin = 0, end = 0;
  std::int64_t count() const { return end - begin; }
  bool empty() const { return begin >= end; }
};
Lines linesOf(const text::LineHunk& hunk, Side side);
void setLines(text::LineHunk& hunk, Side side, Lines lines);

// The first hunk that ends behind the line, or is empty and stands at or behind it; hunks.size(): none.
std::size_t hunkFrom(const Hunks& hunks, Side side, std::int64_t line);

// The place of the other text beside a place of this one. Both are lines with a fraction, so that scrolling is smooth; inside a
// hunk its lines are stretched to those of the other side.
double placeBeside(const Hunks& hunks, Side of, double line);

// What a text shows: pixels of the text above the window, of the window and of a line, and the number of lines.
struct ScrollState {
  std::int64_t top = 0;
  int height = 0, lineHeight = 1;
  std::int64_t lines = 1;
};
// The `top` at which the other text stands beside this one. The line that decides wanders from the upper edge at the start of the
// text over the middle to the lower edge at its end, so that both texts reach both ends.
std::int64_t topBeside(const Hunks& hunks, Side of, const ScrollState& here, const ScrollState& there);

// The edits that give the lines of `to` the text of those of `from`, for all differences (`only`: for that one; `chosen`: for
// these lines of side `chosenOn`). Line breaks become those of their new place; that a text ends with or without a break is a
// difference like any other.
struct TakeOver {
  Side from = kLeft;
  std::optional<std::size_t> only{};
  std::optional<Lines> chosen{};
  Side chosenOn = kLeft;
};
std::vector<text::Edit> takeOver(const Hunks& hunks, const std::array<text::Snapshot, 2>& texts, const text::NewLines& newLines,
                                 const TakeOver& what);

// The edit that puts the lines `fresh` of `from` in the place of the lines `old` of `to`.
text::Edit exchangeLines(const text::Snapshot& to, const Lines& old, const text::Snapshot& from, const Lines& fresh,
                         const text::NewLines& newLines);

// Moves hunks with a change of one of the texts. `before`: the number of its lines before the change.
void moveHunks(Hunks& hunks, Side side, const text::Change& change, const text::Snapshot& now, std::int64_t before);

}   // namespace compare
