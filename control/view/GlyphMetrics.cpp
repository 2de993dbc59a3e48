#include "control/view/GlyphMetrics.h"

#include <QFontMetricsF>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

#include "text/line/Segments.h"

namespace {
constexpr qsizetype kCacheLimit = 8192;   // clusters of one text are few; a hostile text starts the cache anew
}

GlyphMetrics::GlyphMetrics(const QFont& font, double scale)
    : font_(font), labelFont_(font), raw_(QRawFont::fromFont(font)), scale_(scale > 0 ? scale : 1) {
  const QFontMetricsF metrics(font);
  ascent_ = std::ceil(metrics.ascent());
  lineHeight_ = std::max(1, static_cast<int>(std::ceil(ascent_ + metrics.descent() + std::max(0.0, metrics.leading()))));
  if (font.pixelSize() > 0) labelFont_.setPixelSize(std::max(6, font.pixelSize() * 7 / 10));
  else labelFont_.setPointSizeF(std::max(4.0, font.pointSizeF() * 0.7));

  // Measured, as many a fixed font does not say that it is one.
  fixed_ = true;
  const double first = metrics.horizontalAdvance(u' ');
  for (char32_t c = 0x20; c < 0x7F; ++c) {
    Simple& s = ascii_[c - 0x20];
    const auto glyphs = raw_.glyphIndexesForString(QString(QChar(static_cast<ushort>(c))));
    if (!glyphs.isEmpty()) s.glyph = glyphs[0];
    const double advance = metrics.horizontalAdvance(QChar(static_cast<ushort>(c)));
    s.advance = std::max(1 / scale_, round(advance));
    fixed_ = fixed_ && std::abs(advance - first) < 0.01;
  }
  cell_ = fixed_ ? ascii_['M' - 0x20].advance : ascii_[0].advance;
  if (fixed_)
    for (Simple& s : ascii_) s.advance = cell_;
  hexByteWidth_ = text::badByteCells * cell_;
  if (!fixed_)
    for (const char* digits : {"00", "AA", "CC", "DD", "88"})
      hexByteWidth_ = std::max(hexByteWidth_, labelWidth(QString::fromLatin1(digits)));
}

double GlyphMetrics::round(double pixels) const { return std::round(pixels * scale_) / scale_; }

GlyphMetrics::Simple GlyphMetrics::simple(char32_t code) const {
  if (const auto it = simple_.constFind(code); it != simple_.constEnd()) return *it;
  Simple result;
  const QString text = QString::fromUcs4(&code, 1);
  if (raw_.supportsCharacter(code)) {
    const auto glyphs = raw_.glyphIndexesForString(text);
    if (!glyphs.isEmpty() && glyphs[0] != 0) {
      const auto advances = raw_.advancesForGlyphIndexes(glyphs.mid(0, 1));
      result = {glyphs[0], advances.value(0).x()};
    }
  }
  if (simple_.size() >= kCacheLimit) simple_.clear();
  simple_.insert(code, result);
  return result;
}

const ShapedCluster& GlyphMetrics::shaped(const QString& cluster) const {
  if (const auto it = shaped_.constFind(cluster); it != shaped_.constEnd()) return *it;
  QTextLayout layout(cluster, font_);
  QTextOption option;
  option.setTextDirection(Qt::LeftToRight);
  option.setWrapMode(QTextOption::NoWrap);
  layout.setTextOption(option);
  layout.beginLayout();
  QTextLine line = layout.createLine();
  line.setLineWidth(1e6);
  layout.endLayout();
  ShapedCluster result;
  result.advance = line.naturalTextWidth();
  for (QGlyphRun run : layout.glyphRuns()) {
    auto positions = run.positions();
    for (QPointF& p : positions) p.ry() -= line.ascent();
    run.setPositions(positions);
    result.runs << run;
  }
  if (shaped_.size() >= kCacheLimit) shaped_.clear();
  return *shaped_.insert(cluster, result);
}

double GlyphMetrics::labelWidth(const QString& label) const {
  if (const auto it = labels_.constFind(label); it != labels_.constEnd()) return *it;
  const double width = QFontMetricsF(labelFont_).horizontalAdvance(label) + 4;
  if (labels_.size() >= kCacheLimit) labels_.clear();
  return *labels_.insert(label, fixed_ ? cell_ * std::ceil(width / cell_) : std::ceil(width));
}
