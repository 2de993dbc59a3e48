// The line break of a new line: that of the line into which it is inserted, else of the one above, else the default; only the
// default once it was chosen.
#pragma once

#include "text/store/Snapshot.h"

namespace text {

struct NewLines {
  LineBreak usual = LineBreak::lf;   // if no neighbour has a break
  bool chosen = false;               // ignore the neighbours

  std::string_view at(const Snapshot& text, LineNo line) const {
    if (text.lineMode() == LineMode::cr) return breakBytes(LineBreak::cr);
    LineBreak found = chosen ? usual : text.lineBreak(line);
    if (found == LineBreak::none && line.value > 0) found = text.lineBreak(line - 1);
    return breakBytes(found == LineBreak::none ? usual : found);
  }
};

}   // namespace text
