// Where the find dialog searches when it is told to stay in the selection. Moves with the text.
#pragma once

#include <memory>

#include "control/FindDialog.h"

struct FindDialog::Scope {
  std::shared_ptr<TextModel> model;
  text::MarkId begin = 0, end = 0;
  std::vector<text::ByteRange> rows;   // of a column selection, as they were at `revision`
  std::uint64_t revision = 0;
};
