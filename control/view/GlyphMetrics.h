// Measures of one font at one screen scale: line height, cells, advances and glyphs, each determined once. Positions are rounded to
// device pixels, so that text is crisp and all cells of a fixed font are equally wide.
#pragma once

#include <QFont>
#include <QHash>
#include <QRawFont>
#include <QString>
#include <array>

#include "control/shape/ShapedWord.h"
#include "text/line/Segments.h"

class GlyphMetrics : public text::Widths {
 public:
  GlyphMetrics(const QFont& font, double scale);

  const QFont& font() const { return font_; }
  const QFont& labelFont() const { return labelFont_; }
  const QRawFont& rawFont() const { return raw_; }
  bool fixedPitch() const { return fixed_; }
  double cell() const { return cell_; }   // unit of tabs and virtual columns
  double ascent() const { return ascent_; }
  int lineHeight() const { return lineHeight_; }
  double round(double pixels) const;   // to device pixels

  // 0x20 to 0x7E
  double asciiAdvance(unsigned char c) const { return ascii[c]; }
  quint32 asciiGlyph(unsigned char c) const { return asciiGlyphs_[c]; }

  struct Simple {
    quint32 glyph = 0;    // 0: the font has none
    double advance = 0;   // as the font has it
  };
  Simple simple(char32_t code) const;
  Simple simple(const text::Segment& segment) const;   // no glyph, too, for what has to be shaped or is wider than its cells
  // A cluster that the main font cannot draw glyph by glyph, or a word whose clusters join: shaped once with fonts that have its
  // glyphs. The next call may end the reference.
  const shape::Shaped& shaped(const QString& cluster) const;
  const shape::ShapedWord& word(const QString& text, const std::vector<int>& lengths) const;
  double labelWidth(const QString& label) const;   // of a box with the label; whole cells in a fixed font
  double widthOf(const text::Segment& segment, std::string_view bytes) const override;
  QString shownText(const text::Segment& segment, std::string_view bytes) const;   // of a label, or what is shaped

 private:
  QFont font_, labelFont_;
  QRawFont raw_;
  double scale_, cell_ = 8, ascent_ = 12, hexByteWidth_ = 0;
  int lineHeight_ = 16;
  bool fixed_ = false;
  std::array<quint32, 0x80> asciiGlyphs_{};
  mutable QHash<char32_t, Simple> simple_;
  mutable QHash<QString, shape::Shaped> shaped_;
  mutable QHash<QString, shape::ShapedWord> words_;
  mutable QHash<QString, double> labels_;
};
