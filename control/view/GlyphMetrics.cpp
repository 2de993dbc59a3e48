#include "control/view/GlyphMetrics.h"

#include <QFontMetricsF>
#include <algorithm>
#include <cmath>

#include "bridge/QStringBytes.h"
#include "text/line/CharTables.h"

namespace {
constexpr qsizetype kCacheLimit = 8192;   // a text has few clusters; a hostile text clears the cache
}

GlyphMetrics::GlyphMetrics(const QFont& font, double scale)
    : font_(font), labelFont_(font), raw_(QRawFont::fromFont(font)), scale_(scale > 0 ? scale : 1) {
  const QFontMetricsF metrics(font);
  ascent_ = std::ceil(metrics.ascent());
  lineHeight_ = std::max(1, static_cast<int>(std::ceil(ascent_ + metrics.descent() + std::max(0.0, metrics.leading()))));
  if (font.pixelSize() > 0) labelFont_.setPixelSize(std::max(6, font.pixelSize() * 7 / 10));
  else labelFont_.setPointSizeF(std::max(4.0, font.pointSizeF() * 0.7));

  // Measures the font: many fixed fonts do not declare themselves fixed.
  fixed_ = true;
  const double first = metrics.horizontalAdvance(u' ');
  for (char16_t c = 0x20; c < 0x7F; ++c) {
    const auto glyphs = raw_.glyphIndexesForString(QString(QChar(c)));
    if (!glyphs.isEmpty()) asciiGlyphs_[c] = glyphs[0];
    const double advance = metrics.horizontalAdvance(QChar(c));
    ascii[c] = std::max(1 / scale_, round(advance));
    fixed_ = fixed_ && std::abs(advance - first) < 0.01;
  }
  cell_ = tabUnit = ascii[fixed_ ? 'M' : ' '];
  if (fixed_) ascii.fill(cell_);
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

GlyphMetrics::Simple GlyphMetrics::simple(const text::Segment& s) const {
  if (!s.single || text::isExtending(s.code)) return {};
  const Simple simple = this->simple(s.code);
  return fixed_ && simple.advance > s.cells * cell_ + 0.5 ? Simple() : simple;
}

QString GlyphMetrics::shownText(const text::Segment& s, std::string_view bytes) const {
  if (s.kind == text::Segment::badByte) return QString::number(static_cast<uint>(s.code), 16).toUpper();
  if (s.kind == text::Segment::hidden) return QString::fromStdString(text::hiddenLabel(s.code));
  const QString text = toQString(bytes.substr(0, static_cast<std::size_t>(s.bytes)));
  return text::isExtending(s.code) ? QChar(0x25CC) + text : text;   // a mark with nothing that it could belong to
}

double GlyphMetrics::widthOf(const text::Segment& s, std::string_view bytes) const {
  if (fixed_ || s.kind == text::Segment::oddBlank) return s.cells * cell_;
  if (s.kind == text::Segment::badByte) return hexByteWidth_;
  if (s.kind == text::Segment::hidden) return labelWidth(shownText(s, bytes));
  if (s.single && s.code < 0x7F) return ascii[s.code];
  const Simple own = simple(s);
  return std::max(1.0, round(own.glyph != 0 ? own.advance : shaped(shownText(s, bytes)).advance));
}

const shape::Shaped& GlyphMetrics::shaped(const QString& cluster) const {
  if (const auto it = shaped_.constFind(cluster); it != shaped_.constEnd()) return *it;
  if (shaped_.size() >= kCacheLimit) shaped_.clear();
  return *shaped_.insert(cluster, shape::shaped(cluster, font_));
}

const shape::ShapedWord& GlyphMetrics::word(const QString& text, const std::vector<int>& lengths) const {
  if (const auto it = words_.constFind(text); it != words_.constEnd()) return *it;
  if (words_.size() >= kCacheLimit) words_.clear();
  return *words_.insert(text, shape::shapedWord(text, lengths, font_));
}

double GlyphMetrics::labelWidth(const QString& label) const {
  if (const auto it = labels_.constFind(label); it != labels_.constEnd()) return *it;
  const double width = QFontMetricsF(labelFont_).horizontalAdvance(label) + 4;
  if (labels_.size() >= kCacheLimit) labels_.clear();
  return *labels_.insert(label, fixed_ ? cell_ * std::ceil(width / cell_) : std::ceil(width));
}
