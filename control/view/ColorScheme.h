// The colours of a control: a light and a dark scheme, selected by the desktop's palette, and the colours that the user has set.
#pragma once

#include <QColor>
#include <QPalette>
#include <array>

// The colour slots. Their numbers are stored in the settings ("COLORS0" ...): never renumber, add new ones at the end.
enum class ColorSlot {
  Window = 0,
  Text,
  SelectionBack,
  SelectionText,
  InactiveSelectionBack,
  InactiveSelectionText,
  LeftMargin,
  Keyword,
  Operator,
  Comment,
  String,
  Number,
  Bookmark,
  HighlightedLine,
  LineNumbers,
  Divider,
  TagText,
  MatchingBrace,
  AddedLine,
  ChangedLine,
  RemovedLine,
  HitMark
};
inline constexpr int kColorSlots = static_cast<int>(ColorSlot::HitMark) + 1;   // behind the last one

class ColorScheme {
 public:
  static bool isDark(const QPalette& palette);
  static QColor schemeColor(int slot, bool dark);   // invalid for an unknown slot

  bool follow(const QPalette& palette);   // true: the scheme has changed
  bool dark() const { return dark_; }

  QColor color(ColorSlot slot) const;
  // An invalid colour resets the slot to the scheme. So does the slot's colour in either scheme: otherwise stored default colours
  // would stay light on a dark desktop.
  void setColor(int slot, const QColor& color);

  // True: selected text keeps its syntax colours, because the slot's colour is that of plain text.
  bool selectionKeepsColors(bool focused) const;

 private:
  bool dark_ = false;
  std::array<QColor, kColorSlots> own_;
};
