// Caret and selection written inside a text, for the tests of everything that edits.
//
//   "one |two"        the caret
//   "one @two|"       a selection from the anchor @ to the caret
//   "a#b\nc|d"        a column selection from the anchor # to the caret
//   "ab··|"           each · directly before a marker at a line's end is one cell past it
//
// Only the first '|' and the first '@' or '#' are markers. Printing gives back what parsing was given.
#pragma once

#include <string>
#include <string_view>

#include "text/store/Document.h"

struct CaretText {
  std::string bytes;
  text::SelectionState selection;
};

CaretText parseCaret(std::string_view marked);
std::string printCaret(std::string bytes, const text::SelectionState& selection);
