// Where the lines of a text stand among the rows of a display: two layers that know nothing of each other. The first takes hidden lines
// away, the second has a number of rows for each line that is left. The numbers are what was seen last: a line that nobody has looked
// at counts as one row, and one that changed or whose window changed keeps its old number until it is looked at.
//
// Look-ups and changes cost O(log runs of equal lines). Without hidden and wrapped lines nothing is stored: a line is a row.
// Lines and rows count from 0. The first line is never hidden.
#pragma once

#include "text/display/WeightRuns.h"
#include "text/store/Change.h"

namespace text {

class DisplayMap {
 public:
  struct Place {
    LineNo line;
    std::int64_t row = 0;   // of the line
    bool operator==(const Place&) const = default;
  };

  explicit DisplayMap(std::int64_t lines = 1) : hidden_(lines), wrapped_(lines) {}

  bool plain() const { return hidden_.plain() && wrapped_.plain(); }   // each line is one row
  std::int64_t lines() const { return hidden_.items(); }
  std::int64_t rows() const { return wrapped_.sum(); }

  // The first row of a line, or of the next one that is shown; lines() is allowed and gives rows().
  std::int64_t rowOf(LineNo line) const;
  std::int64_t rowsOf(LineNo line) const;         // 0: hidden
  Place at(std::int64_t row) const;               // clipped to the rows
  void setRows(LineNo line, std::int64_t rows);   // rows > 0; nothing for a hidden line
  void forgetRows() noexcept;                     // one row each

  // Hidden lines: [first, end), clipped. What is hidden or shown already stays so.
  void hide(LineNo first, LineNo end);
  void show(LineNo first, LineNo end);
  void showAll() noexcept;   // the rows are forgotten
  bool hidesAny() const { return !hidden_.plain(); }
  bool isHidden(LineNo line) const { return hidden_.weight(line.value) == 0; }
  // The line, or if it is hidden the next one that is shown (lines(): none), or the one before it.
  LineNo shownFrom(LineNo line) const;
  LineNo shownUpTo(LineNo line) const;
  // The number of shown lines, and of those above a line.
  std::int64_t shownLines() const { return hidden_.sum(); }
  std::int64_t shownAbove(LineNo line) const { return hidden_.sumBefore(line.value); }
  LineNo shownLine(std::int64_t nth) const { return LineNo(hidden_.itemAt(nth)); }   // 0 <= nth < shownLines()

  // The map after a change of the text. Lines that it touches are shown if one of them was. Without memory everything is forgotten.
  void onChange(const Change& change, std::int64_t linesNow) noexcept;

  void checkInvariants() const;   // aborts with a message on a breach

 private:
  void setHidden(LineNo first, LineNo end, bool hidden);
  void move(const Change& change);

  WeightRuns hidden_;    // lines; 0: hidden
  WeightRuns wrapped_;   // shown lines; their rows
};

}   // namespace text
