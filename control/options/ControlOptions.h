// All options of a control as one value, which the properties dialog edits and OK returns.
#pragma once

#include <QColor>
#include <QFont>
#include <array>

#include "control/CodeMax.h"

struct ControlOptions {
  bool hSplitter, vSplitter, hScrollBar, vScrollBar, smoothScrolling, lineToolTips, leftMargin, colorSyntax, whiteSpace, stickyLine;
  bool tabExpand, columnSel, dragDrop, preserveCase;
  int autoIndentMode, tabSize, wordWrap, wrapColumn;
  TypingAids aids;
  std::array<QColor, kColorSlots> colors;
  QFont font;
  QString language;

  // Light or dark: every colour is that of the scheme chosen by "always light" or "always dark".
  enum class Look { desktop, light, dark };
  Look look() const;
  // A colour equal to that of a scheme resets the slot to the scheme, which follows the desktop. A colour that must stay fixed is
  // marked by a step in its blue value that nobody can see.
  static QColor alwaysColor(int slot, bool dark);

  static ControlOptions of(const CodeMax& control);
  void applyTo(CodeMax& control) const;   // options that are equal already are not set again
};
