#include "base/FixedFont.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QStringList>

namespace {

// Measures the font: some fixed fonts do not declare themselves fixed, and Qt replaces a family that is not installed.
bool isFixed(const QFont& font) {
  const QFontMetricsF metrics(font);
  return metrics.horizontalAdvance(u'i') == metrics.horizontalAdvance(u'M');
}

}   // namespace

QFont fixedFont() {
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setStyleHint(QFont::Monospace);
  if (isFixed(font)) return font;
  QStringList families{QStringLiteral("monospace")};
  for (const QString& family : QFontDatabase::families(QFontDatabase::Latin))
    if (QFontDatabase::isFixedPitch(family)) families << family;
  for (const QString& family : families) {
    QFont other = font;
    other.setFamilies({family});
    if (isFixed(other)) return other;
  }
  return font;
}
