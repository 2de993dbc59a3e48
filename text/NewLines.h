// Which line break a new line of a text gets: that of the line it comes into, else of the one above, else the usual one.
#pragma once

#include "text/Snapshot.h"

namespace text {

struct NewLines {
  LineBreak usual = LineBreak::lf;   // where no neighbour has one

  std::string_view at(const Snapshot& text, LineNo line) const {
    LineBreak found = text.lineBreak(line);
    if (found == LineBreak::none && line.value > 0) found = text.lineBreak(line - 1);
    if (found == LineBreak::none) found = text.lineMode() == LineMode::cr ? LineBreak::cr : usual;
    return breakBytes(found);
  }
};

}  // namespace text
