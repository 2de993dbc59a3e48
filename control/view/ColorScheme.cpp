#include "control/view/ColorScheme.h"

namespace {

struct SlotColors {
  QRgb light, dark;
};

// In the order of ColorSlot.
// clang-format off
constexpr SlotColors kSchemes[kColorSlots] = {
    {0xFFFFFFFF, 0xFF1E2127},  // Window
    {0xFF1F2328, 0xFFD4D7DD},  // Text
    {0xFFB6D6FB, 0xFF2F4B73},  // SelectionBack
    {0xFF1F2328, 0xFFD4D7DD},  // SelectionText
    {0xFFDDE2E8, 0xFF3A404B},  // InactiveSelectionBack
    {0xFF1F2328, 0xFFD4D7DD},  // InactiveSelectionText
    {0xFFF5F6F8, 0xFF22262D},  // LeftMargin
    {0xFF0B3FB5, 0xFF7AA2F7},  // Keyword
    {0xFF7B2D8B, 0xFFC792EA},  // Operator
    {0xFF3F7A45, 0xFF7FA97F},  // Comment
    {0xFFA8281E, 0xFFE0A67A},  // String
    {0xFF0F6E68, 0xFF5FC9B8},  // Number
    {0xFF2F81F7, 0xFF4C9CFF},  // Bookmark
    {0xFFF2F6FC, 0xFF272C35},  // HighlightedLine
    {0xFF8A929B, 0xFF6B7280},  // LineNumbers
    {0xFFD9DDE2, 0xFF353A43},  // Divider
    {0xFF9AA2AB, 0xFF727A87},  // TagText
    {0xFFFFE08A, 0xFF6B5A1E},  // MatchingBrace
    {0xFF1A7F37, 0xFF3FB950},  // AddedLine
    {0xFFB35900, 0xFFE3A64A},  // ChangedLine
    {0xFFC01C28, 0xFFFF7B72},  // RemovedLine
    {0xFF8250DF, 0xFFD2A8FF},  // HitMark
};
// clang-format on

}   // namespace

bool ColorScheme::isDark(const QPalette& palette) {
  return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

QColor ColorScheme::schemeColor(int slot, bool dark) {
  if (slot < 0 || slot >= kColorSlots) return {};
  return QColor::fromRgb(dark ? kSchemes[slot].dark : kSchemes[slot].light);
}

bool ColorScheme::follow(const QPalette& palette) {
  const bool was = dark_;
  dark_ = isDark(palette);
  return was != dark_;
}

QColor ColorScheme::color(ColorSlot slot) const {
  const int i = static_cast<int>(slot);
  if (i < 0 || i >= kColorSlots) return {};
  const QColor& own = own_[static_cast<std::size_t>(i)];
  return own.isValid() ? own : schemeColor(i, dark_);
}

void ColorScheme::setColor(int slot, const QColor& color) {
  if (slot < 0 || slot >= kColorSlots) return;
  const bool ofScheme = color.rgb() == kSchemes[slot].light || color.rgb() == kSchemes[slot].dark;
  own_[static_cast<std::size_t>(slot)] = color.isValid() && !ofScheme ? color : QColor();
}

bool ColorScheme::selectionKeepsColors(bool focused) const {
  return color(focused ? ColorSlot::SelectionText : ColorSlot::InactiveSelectionText) == color(ColorSlot::Text);
}
