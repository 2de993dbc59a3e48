// The layout of a line, or of its visible part: a row of items with positions. An item is a segment of the text
// (text/line/Segments.h) with its glyph; in a fixed font it is as wide as the segment's cells.
//
// Items follow the order of the bytes. Code stands in this order from left to right, so that the user sees what a compiler reads;
// comments, strings and texts without a language stand in their natural order (control/shape/Bidi.h), each in the place that it takes
// anyway, and in each row for itself. Letters that join are shaped as one word, which is as wide as its items are alone. So nothing
// that is arranged moves what stands beside it.
//
// Every item is at least one device pixel wide. Bytes that could hide are shown as boxes: bytes that are not UTF-8, control
// characters, bidirectional controls, zero-width and other invisible characters.
//
// Bytes count from the start of the line, x in pixels from its left edge.
#pragma once

#include <QString>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "control/view/GlyphMetrics.h"
#include "text/line/Segments.h"
#include "text/store/Units.h"

struct LayoutItem {
  enum Kind : unsigned char { glyph, blank, tab, label, oddBlank, shaped, joined };
  std::int64_t byte = 0;
  double x = 0, width = 0;
  quint32 glyphIndex = 0;   // glyph
  int text = -1;            // label, shaped: index into LineLayout::texts; joined: of its word
  int bytes = 0;
  Kind kind = glyph;
  bool badByte = false;       // label of a byte that is not UTF-8
  bool rightToLeft = false;   // it begins at its right edge
  bool opens = false;         // it is the first one of a wrapped row
  double beginX() const { return rightToLeft ? x + width : x; }
  double endX() const { return rightToLeft ? x : x + width; }
};

struct LayoutWord {
  shape::ShapedWord shaped;
  double x = 0, scale = 1;   // its left edge, and how much wider it is drawn
};

struct LayoutPiece {
  double from, to;   // x
};

class LineLayout {
 public:
  LineLayout() = default;
  // Lays out until x passes `right` or the bytes end. `bytes` is the line from `from` on; when it is cut off before the line's end, the
  // last segmentAhead bytes of it are only looked at.
  LineLayout(std::string_view bytes, bool toLineEnd, const text::LinePlace& from, const GlyphMetrics& metrics, int tabSize,
             double right);

  // Puts the bytes of `natural` (ascending) into their natural order, in each row for itself, and joins letters. `bytes` and `from` as
  // in the constructor; `rows`: the bytes where rows behind the first one begin. Once, and only if mayArrange().
  void arrange(std::string_view bytes, std::span<const text::ByteRange> natural, std::span<const std::int64_t> rows,
               const GlyphMetrics& metrics);
  bool mayArrange() const { return special_; }                   // it holds letters of such scripts
  bool arranged() const { return turned_ || !words_.empty(); }   // items are not all where the segments of the line are

  const std::vector<LayoutItem>& items() const { return items_; }
  bool turned() const { return turned_; }   // x does not ascend
  const QString& text(const LayoutItem& item) const { return texts_[static_cast<std::size_t>(item.text)]; }
  const LayoutWord& word(const LayoutItem& item) const { return words_[static_cast<std::size_t>(item.text)]; }
  // How far what the item is drawn with was moved by insertGap.
  double movedBy(const LayoutItem& item) const { return gap_ > 0 && item.x > gapX_ ? gap_ : 0; }
  text::LinePlace begin() const { return begin_; }
  text::LinePlace end() const { return end_; }

  // Where a caret in front of the byte stands: where the item before it ends, and in front of the first one of a row where that
  // begins. Clipped to begin() and end().
  double xOf(std::int64_t byte) const;
  double leftOf(std::int64_t byte) const;   // the left edge of the item with the byte
  // What the bytes of a range, which need not be laid out, cover; from left to right where nothing turns.
  std::vector<LayoutPiece> pieces(std::int64_t begin, std::int64_t end) const;
  // The boundary nearest to x, where something turns one that is shown there; `inside`: the start of the item at x.
  std::int64_t byteAt(double x, bool inside = false) const;
  // The width of the item that holds the byte; 0 where there is none.
  double widthAt(std::int64_t byte) const;
  // Makes room before `byte` for the text of an input method, which is not in the line yet.
  void insertGap(std::int64_t byte, double width);

 private:
  std::vector<LayoutItem>::const_iterator holding(std::int64_t byte) const;   // end() in front of all
  std::int64_t atEdge(const LayoutItem& item, bool right) const;
  void turn(std::span<const char32_t> codes, std::size_t first, std::size_t end, const GlyphMetrics& metrics);
  void join(std::string_view bytes, std::span<const char32_t> codes, const GlyphMetrics& metrics);
  void joinWord(std::string_view bytes, std::size_t first, std::size_t end, const GlyphMetrics& metrics);

  std::vector<LayoutItem> items_;
  std::vector<QString> texts_;
  std::vector<LayoutWord> words_;
  std::vector<double> rowEdges_;   // x where rows behind the first one begin
  text::LinePlace begin_, end_;
  double gapX_ = 0, gap_ = 0;
  bool special_ = false, turned_ = false;
};
