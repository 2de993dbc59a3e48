// What stands behind the text of one line: asked of the owner of a control while the line is painted.
#pragma once

#include <QColor>
#include <vector>

#include "text/store/Units.h"

struct LineBack {
  QColor line;                                 // of the whole line, its margin included; invalid: as usual
  QColor part;                                 // of the parts
  std::vector<text::ByteRange> parts;          // offsets in the text
  QColor rule;                                 // of the rules
  bool ruleAbove = false, ruleBelow = false;   // at that edge: something is missing there
};
