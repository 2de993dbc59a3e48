// All options of a control as one value: what the properties dialog edits and OK hands back.
#pragma once

#include <QColor>
#include <QFont>
#include <array>

#include "control/CodeMax.h"

struct ControlOptions {
  bool hSplitter, vSplitter, hScrollBar, vScrollBar, smoothScrolling, lineToolTips, leftMargin, colorSyntax, whiteSpace;
  bool tabExpand, columnSel, dragDrop, preserveCase;
  int autoIndentMode, tabSize;
  std::array<QColor, kColorSlots> colors;
  QFont font;
  QString language;

  static ControlOptions of(const CodeMax& control);
  void applyTo(CodeMax& control) const;   // what is the same already is not touched
};
