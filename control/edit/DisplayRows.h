// The rows that a view shows, for commands that move by what the user sees: where lines are wrapped or hidden a row is not a line.
#pragma once

#include "text/store/Units.h"

class DisplayRows {
 public:
  virtual ~DisplayRows() = default;

  // The place so many rows below (negative: above), at the cell of its row; clipped to the text.
  virtual text::ByteOffset below(text::ByteOffset at, std::int64_t rows, std::int64_t cell) = 0;
  virtual std::int64_t cellInRow(text::ByteOffset at) = 0;   // from the left edge of what is shown of the row
  virtual text::ByteRange rowAt(text::ByteOffset at) = 0;    // the first and the last place of the caret in the row
  virtual std::int64_t belowTop(text::ByteOffset at) = 0;    // rows from the first one in the window to that of the place
  // The place, or if its line is hidden the next one that is shown in the direction.
  virtual text::ByteOffset shownFrom(text::ByteOffset at, bool forward) = 0;
  virtual text::LineNo lastOf(text::LineNo line) = 0;   // the last line hidden behind a line; itself if none is
  virtual void scrollRows(std::int64_t rows) = 0;       // down positive
};
