#include "app/Look.h"

#include <QApplication>
#include <QPalette>

#include "document/CMXRegistry.h"
#include "document/modRegistry.h"

namespace {

QPalette paletteOf(bool dark) {
  const auto slot = [dark](ColorSlot which) { return ColorScheme::schemeColor(static_cast<int>(which), dark); };
  const QColor text = slot(ColorSlot::Text), base = slot(ColorSlot::Window);
  const QColor window(dark ? 0x2B2F36 : 0xEFF0F1), button(dark ? 0x363B44 : 0xFCFCFC), off(dark ? 0x7C828C : 0x9A9DA0);
  QPalette palette(button, window);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role, off);
  }
  palette.setColor(QPalette::Base, base);
  palette.setColor(QPalette::AlternateBase, slot(ColorSlot::LeftMargin));
  palette.setColor(QPalette::ToolTipBase, button);
  palette.setColor(QPalette::PlaceholderText, off);
  palette.setColor(QPalette::Highlight, QColor(dark ? 0x3A6EA5 : 0x3DAEE9));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, slot(ColorSlot::Bookmark));
  return palette;
}

}  // namespace

void showLook(ControlOptions::Look look) {
  using Look = ControlOptions::Look;
  if (qApp->property("look").toInt() == static_cast<int>(look)) return;   // a new palette has every window painted anew
  qApp->setProperty("look", static_cast<int>(look));
  QApplication::setPalette(look == Look::desktop ? QPalette() : paletteOf(look == Look::dark));
}

void showStoredLook() {
  if (!modRegistry::KeyValid(modRegistry::kEditorKey)) return;
  CodeMax stored;
  CMXRegistry::applyTo(stored);
  showLook(ControlOptions::of(stored).look());
}
