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

  // Light or dark: every colour is the one that "always light" or "always dark" gives its slot.
  enum class Look { desktop, light, dark };
  Look look() const;
  // A colour that is that of a scheme gives the slot back to the scheme, which goes with the desktop. One that is to stay
  // whatever the desktop does is told from it by a step in blue that nobody sees.
  static QColor alwaysColor(int slot, bool dark);

  static ControlOptions of(const CodeMax& control);
  void applyTo(CodeMax& control) const;   // what is the same already is not touched
};
