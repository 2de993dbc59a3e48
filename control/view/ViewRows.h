// The rows of a view: where its lines are wrapped, and which row of the display they stand at. A row is measured when somebody looks at
// it; the map keeps what was seen.
//
// x is in pixels from the left edge of the line as if it were not wrapped; shift() leads to the place in the row. Rows of a line count
// from 0.
#pragma once

#include <map>

#include "control/view/ViewState.h"
#include "text/display/DisplayMap.h"
#include "text/display/LineRows.h"

class ViewRows {
 public:
  explicit ViewRows(ViewState& state);

  text::DisplayMap map;

  bool wraps() const { return width_ > 0; }
  double width() const { return width_; }
  // Rows are so many pixels wide; 0: lines are not wrapped. False: they are already.
  bool setWidth(double pixels);
  void forget() { known_.clear(); }   // the text or the font has changed

  // A wrapped line as it is now, whatever the map says.
  std::int64_t count(text::LineNo line);
  text::LinePlace begin(text::LineNo line, std::int64_t row);   // of the row behind the last one: the line's end
  std::int64_t rowAt(text::LineNo line, std::int64_t byte);
  std::int64_t lastByte(text::LineNo line,
                        std::int64_t row);   // where the caret may stand at most: the row's end is the next one's begin
  bool reach(text::LineNo line, std::int64_t row, std::int64_t budget);   // see LineRows
  double shift(text::LineNo line, std::int64_t row);

 private:
  const text::LineRows& of(text::LineNo line);

  ViewState& state_;
  double width_ = 0;
  std::map<std::int64_t, text::LineRows> known_;
};
