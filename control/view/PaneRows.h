// The rows of a pane, as the commands ask for them.
#pragma once

#include "control/edit/DisplayRows.h"
#include "control/view/TextView.h"

class Pane;

class PaneRows : public DisplayRows {
 public:
  explicit PaneRows(Pane& pane) : pane_(pane) {}

  text::ByteOffset below(text::ByteOffset at, std::int64_t rows, std::int64_t cell) override;
  std::int64_t cellInRow(text::ByteOffset at) override;
  text::ByteRange rowAt(text::ByteOffset at) override;
  std::int64_t belowTop(text::ByteOffset at) override;
  text::ByteOffset shownFrom(text::ByteOffset at, bool forward) override;
  text::LineNo lastOf(text::LineNo line) override;
  void scrollRows(std::int64_t rows) override;

 private:
  TextView::Place moved(TextView::Place from, std::int64_t rows);

  Pane& pane_;
};
