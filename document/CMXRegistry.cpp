#include "document/CMXRegistry.h"

#include <cmath>

#include "control/CodeMax.h"
#include "control/keys/KeyMacro.h"
#include "control/keys/KeyMap.h"
#include "settings/modRegistry.h"

using namespace Qt::StringLiterals;

namespace {

struct FlagOption {
  const char* name;
  bool (CodeMax::*get)() const;
  void (CodeMax::*set)(bool);
};

struct NumberOption {
  const char* name;
  int (CodeMax::*get)() const;
  void (CodeMax::*set)(int);
};

constexpr FlagOption kFlags[] = {
    {"HSPLITTER", &CodeMax::HSplitter, &CodeMax::setHSplitter},
    {"VSPLITTER", &CodeMax::VSplitter, &CodeMax::setVSplitter},
    {"HSCROLLBAR", &CodeMax::HScrollBar, &CodeMax::setHScrollBar},
    {"VSCROLLBAR", &CodeMax::VScrollBar, &CodeMax::setVScrollBar},
    {"SMOOTHSCROLLING", &CodeMax::SmoothScrolling, &CodeMax::setSmoothScrolling},
    {"LINETOOLTIPS", &CodeMax::LineToolTips, &CodeMax::setLineToolTips},
    {"LEFTMARGIN", &CodeMax::LeftMargin, &CodeMax::setLeftMargin},
    {"COLUMNSEL", &CodeMax::ColumnSel, &CodeMax::setColumnSel},
    {"DRAGDROP", &CodeMax::DragDrop, &CodeMax::setDragDrop},
    {"PRESERVECASE", &CodeMax::PreserveCase, &CodeMax::setPreserveCase},
    {"TABEXPAND", &CodeMax::TabExpand, &CodeMax::setTabExpand},
    {"COLORSYNTAX", &CodeMax::ColorSyntax, &CodeMax::setColorSyntax},
    {"WHITESPACE", &CodeMax::WhiteSpaceDisplay, &CodeMax::setWhiteSpaceDisplay},
    {"STICKYLINE", &CodeMax::StickyLine, &CodeMax::setStickyLine},
};

constexpr NumberOption kNumbers[] = {
    // the control ignores values out of range
    {"AUTOINDENTMODE", &CodeMax::AutoIndentMode, &CodeMax::setAutoIndentMode},
    {"TABSIZE", &CodeMax::TabSize, &CodeMax::setTabSize},
    {"COMPLETIONKEYS", &CodeMax::CompletionKeyMode, &CodeMax::setCompletionKeyMode},
    {"WRAPCOLUMN", &CodeMax::WrapColumn, &CodeMax::setWrapColumn},
    {"WORDWRAP", &CodeMax::WordWrap, &CodeMax::setWordWrap},
};

constexpr double kSmallestFont = 3, kLargestFont = 200;   // points
constexpr int kLargestColor = 0xFFFFFF;

QString colorName(int slot) { return u"COLORS"_s + QString::number(slot); }

}   // namespace

namespace CMXRegistry {

void applyTo(CodeMax& control) {
  using namespace modRegistry;
  if (!KeyValid(kEditorKey)) {
    save(control);
    return;
  }
  for (const FlagOption& option : kFlags)
    (control.*option.set)(Flag(kEditorKey, QString::fromLatin1(option.name), (control.*option.get)()));
  for (const NumberOption& option : kNumbers)
    (control.*option.set)(Number(kEditorKey, QString::fromLatin1(option.name), (control.*option.get)()));
  TypingAids aids = control.Aids();
  for (const TypingAids::Switch& row : TypingAids::switches())
    aids.*row.value = Flag(kEditorKey, QString::fromLatin1(row.setting), aids.*row.value);
  aids.setRulers(Text(kEditorKey, u"RULERS"_s));
  control.setAids(aids);
  applyLook(control);
}

void applyLook(CodeMax& control) {
  for (int slot = 0; slot < kColorSlots; ++slot) {
    const int color = modRegistry::Number(modRegistry::kEditorKey, colorName(slot), -1);
    if (color >= 0 && color <= kLargestColor) control.SetColor(slot, QColor(color & 0xFF, color >> 8 & 0xFF, color >> 16));
  }
  applyFont(control);
}

void save(const CodeMax& control) {
  using namespace modRegistry;
  NewKey(kEditorKey);
  for (const FlagOption& option : kFlags) SetFlag(kEditorKey, QString::fromLatin1(option.name), (control.*option.get)());
  for (const TypingAids::Switch& row : TypingAids::switches())
    SetFlag(kEditorKey, QString::fromLatin1(row.setting), control.Aids().*row.value);
  SetText(kEditorKey, u"RULERS"_s, control.Aids().rulersText());
  for (const NumberOption& option : kNumbers) SetNumber(kEditorKey, QString::fromLatin1(option.name), (control.*option.get)());
  for (int slot = 0; slot < kColorSlots; ++slot) {
    const QColor color = control.GetColor(slot);
    SetNumber(kEditorKey, colorName(slot), color.red() | color.green() << 8 | color.blue() << 16);
  }
  saveFont(control);
}

void applyFont(CodeMax& control) {
  using namespace modRegistry;
  QFont font = control.Font();
  const QString name = Text(kGlobalKey, u"FONTNAME"_s);
  if (!name.trimmed().isEmpty()) font.setFamily(name);
  const double size = Real(kGlobalKey, u"FONTSIZE"_s, 0);
  if (size >= kSmallestFont && size <= kLargestFont) font.setPointSizeF(size);
  font.setBold(Flag(kGlobalKey, u"FONTBOLD"_s, font.bold()));
  font.setItalic(Flag(kGlobalKey, u"FONTITALIC"_s, font.italic()));
  if (font != control.Font()) control.setFontOf(font);
}

void saveFont(const CodeMax& control) {
  using namespace modRegistry;
  const QFont font = control.Font();
  NewKey(kGlobalKey);
  SetText(kGlobalKey, u"FONTNAME"_s, font.family());
  const double size = font.pointSizeF();   // -1 for a font with a size in pixels: keep the stored size
  if (size == std::floor(size) && size > 0) SetNumber(kGlobalKey, u"FONTSIZE"_s, int(size));
  if (size != std::floor(size)) SetText(kGlobalKey, u"FONTSIZE"_s, QString::number(size));
  SetFlag(kGlobalKey, u"FONTBOLD"_s, font.bold());
  SetFlag(kGlobalKey, u"FONTITALIC"_s, font.italic());
}

void loadMacros() {
  const QVariant text = modRegistry::GetValue(modRegistry::kGlobalKey, u"MACRO"_s);
  if (text.isValid()) keyMacros().fromText(text.toString());
}

void saveMacros() {
  modRegistry::NewKey(modRegistry::kGlobalKey);
  modRegistry::SetText(modRegistry::kGlobalKey, u"MACRO"_s, keyMacros().toText());
}

void loadHotKeys() {
  const QVariant text = modRegistry::GetValue(modRegistry::kGlobalKey, u"HOTKEYS"_s);
  if (text.isValid()) keyMap().fromText(text.toString());
}

void saveHotKeys() {
  modRegistry::NewKey(modRegistry::kGlobalKey);
  modRegistry::SetText(modRegistry::kGlobalKey, u"HOTKEYS"_s, keyMap().toText());
}

void storeOptions(const CodeMax& control) {
  save(control);
  saveHotKeys();
  saveMacros();
}

}   // namespace CMXRegistry
