// The ranges that the find dialog searches when it is limited to the selection. They move with the text.
#pragma once

#include <memory>

#include "control/find/FindDialog.h"

struct FindDialog::Scope {
  std::shared_ptr<TextModel> model;
  text::MarkId begin = 0, end = 0;
  std::vector<text::ByteRange> rows;    // of a column selection
  std::shared_ptr<void> subscription;   // while there are rows
  void moveRows(const text::Change& change);
};
