// Which line break a new line of a text gets: that of the line it comes into, else of the one above, else the usual one; the usual
// one everywhere once somebody has chosen it.
#pragma once

#include "text/store/Snapshot.h"

namespace text {

struct NewLines {
  LineBreak usual = LineBreak::lf;   // where no neighbour has one
  bool chosen = false;               // neighbours do not count

  std::string_view at(const Snapshot& text, LineNo line) const {
    if (text.lineMode() == LineMode::cr) return breakBytes(LineBreak::cr);
    LineBreak found = chosen ? usual : text.lineBreak(line);
    if (found == LineBreak::none && line.value > 0) found = text.lineBreak(line - 1);
    return breakBytes(found == LineBreak::none ? usual : found);
  }
};

}   // namespace text
