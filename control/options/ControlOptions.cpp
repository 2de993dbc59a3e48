#include "control/options/ControlOptions.h"

ControlOptions ControlOptions::of(const CodeMax& c) {
  ControlOptions o{c.HSplitter(),
                   c.VSplitter(),
                   c.HScrollBar(),
                   c.VScrollBar(),
                   c.SmoothScrolling(),
                   c.LineToolTips(),
                   c.LeftMargin(),
                   c.ColorSyntax(),
                   c.WhiteSpaceDisplay(),
                   c.StickyLine(),
                   c.TabExpand(),
                   c.ColumnSel(),
                   c.DragDrop(),
                   c.PreserveCase(),
                   c.AutoIndentMode(),
                   c.TabSize(),
                   c.WordWrap(),
                   c.WrapColumn(),
                   c.Aids(),
                   {},
                   c.Font(),
                   c.Language()};
  for (int slot = 0; slot < kColorSlots; ++slot) o.colors[static_cast<std::size_t>(slot)] = c.GetColor(slot);
  return o;
}

QColor ControlOptions::alwaysColor(int slot, bool dark) {
  const QColor color = ColorScheme::schemeColor(slot, dark);
  return QColor(color.red(), color.green(), color.blue() ^ 1);
}

ControlOptions::Look ControlOptions::look() const {
  for (const bool dark : {false, true}) {
    int same = 0;
    while (same < kColorSlots && colors[static_cast<std::size_t>(same)] == alwaysColor(same, dark)) ++same;
    if (same == kColorSlots) return dark ? Look::dark : Look::light;
  }
  return Look::desktop;
}

void ControlOptions::applyTo(CodeMax& c) const {
  const ControlOptions old = of(c);
  const auto set = [&](auto member, auto setter) {
    if (this->*member != old.*member) (c.*setter)(this->*member);
  };
  set(&ControlOptions::hSplitter, &CodeMax::setHSplitter);
  set(&ControlOptions::vSplitter, &CodeMax::setVSplitter);
  set(&ControlOptions::hScrollBar, &CodeMax::setHScrollBar);
  set(&ControlOptions::vScrollBar, &CodeMax::setVScrollBar);
  set(&ControlOptions::smoothScrolling, &CodeMax::setSmoothScrolling);
  set(&ControlOptions::lineToolTips, &CodeMax::setLineToolTips);
  set(&ControlOptions::leftMargin, &CodeMax::setLeftMargin);
  set(&ControlOptions::colorSyntax, &CodeMax::setColorSyntax);
  set(&ControlOptions::whiteSpace, &CodeMax::setWhiteSpaceDisplay);
  set(&ControlOptions::stickyLine, &CodeMax::setStickyLine);
  set(&ControlOptions::tabExpand, &CodeMax::setTabExpand);
  set(&ControlOptions::columnSel, &CodeMax::setColumnSel);
  set(&ControlOptions::dragDrop, &CodeMax::setDragDrop);
  set(&ControlOptions::preserveCase, &CodeMax::setPreserveCase);
  set(&ControlOptions::autoIndentMode, &CodeMax::setAutoIndentMode);
  set(&ControlOptions::tabSize, &CodeMax::setTabSize);
  set(&ControlOptions::wrapColumn, &CodeMax::setWrapColumn);
  set(&ControlOptions::wordWrap, &CodeMax::setWordWrap);
  if (aids != old.aids) c.setAids(aids);
  for (int slot = 0; slot < kColorSlots; ++slot) {
    const QColor& color = colors[static_cast<std::size_t>(slot)];
    if (color != c.GetColor(slot)) c.SetColor(slot, color);
  }
  if (font != old.font) c.setFontOf(font);
  if (language != old.language) c.setLanguage(language);
}
