// The rows of a line that is wrapped at a width. Rows begin where a word does; a word that is wider than a row is cut, and nothing is
// left out. Rows behind the first one are indented as the line is, unless little room would be left.
//
// A row of a long line (LineMaps::kLong) begins with the last word that begins in a short stretch before a fixed distance, so that it is
// found without those before it; a word that is longer than the stretch is cut. What is not counted of the line yet is estimated.
//
// x and widths are those of the LineMap: cells or pixels. Bytes count from the start of the line, rows from 0.
#pragma once

#include <vector>

#include "text/line/LineMap.h"

namespace text {

class LineRows {
 public:
  LineRows() = default;   // one row
  // `line` is the line of `text`; `cell` is the x of a blank, `widths` as in its LineMaps. Precondition: width >= 4 cells.
  LineRows(LineMap& line, const Snapshot& text, double width, double cell, int tabSize, const Widths* widths);

  double indent() const { return indent_; }   // of the rows behind the first one
  std::int64_t count(LineMap& line) const;
  LinePlace begin(LineMap& line, std::int64_t row) const;   // of the row behind the last one: the line's end
  // True when all before the row has been counted; counts about `budget` bytes before it gives up.
  bool reach(LineMap& line, std::int64_t row, std::int64_t budget) const;
  std::int64_t rowAt(LineMap& line, std::int64_t byte) const;

 private:
  bool isLong() const { return step_ > 0; }
  std::int64_t rowAtX(double x) const;
  double xOfRow(std::int64_t row) const { return row <= 0 ? 0 : first_ + static_cast<double>(row - 1) * step_; }

  std::vector<LinePlace> starts_;   // of the rows behind the first one; of a line that is not long
  double indent_ = 0;
  LinePlace wordBefore(LineMap& line, const LinePlace& most) const;

  int tabSize_ = 1;   // of a long line, as what follows
  const Widths* widths_ = nullptr;
  double first_ = 0, step_ = 0, cell_ = 1;   // x at which the second row begins at the latest, and from each row to the next
  double spare_ = 0;                         // how far before that it may begin
};

}   // namespace text
