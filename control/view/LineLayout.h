// The layout of a line, or of its visible part: a row of items with positions. An item is a segment of the text
// (text/line/Segments.h) with its glyph; in a fixed font it is as wide as the segment's cells.
//
// Items follow the order of the bytes, always from left to right: no character changes the direction, so that the user sees the
// order that a compiler reads. Every item is at least one device pixel wide. Bytes that could hide are shown as boxes: bytes that
// are not UTF-8, control characters, bidirectional controls, zero-width and other invisible characters.
//
// Bytes count from the start of the line, x in pixels from its left edge.
#pragma once

#include <QString>
#include <cstdint>
#include <string_view>
#include <vector>

#include "control/view/GlyphMetrics.h"
#include "text/line/Segments.h"

struct LayoutItem {
  enum Kind : unsigned char { glyph, blank, tab, label, oddBlank, shaped };
  std::int64_t byte = 0;
  double x = 0, width = 0;
  quint32 glyphIndex = 0;   // glyph
  int text = -1;            // label, shaped: index into LineLayout::texts
  int bytes = 0;
  Kind kind = glyph;
  bool badByte = false;   // label of a byte that is not UTF-8
};

class LineLayout {
 public:
  LineLayout() = default;
  // Lays out until x passes `right` or the bytes end. `bytes` is the line from `from` on; when it is cut off before the line's end, the
  // last segmentAhead bytes of it are only looked at.
  LineLayout(std::string_view bytes, bool toLineEnd, const text::LinePlace& from, const GlyphMetrics& metrics, int tabSize,
             double right);

  const std::vector<LayoutItem>& items() const { return items_; }
  const QString& text(const LayoutItem& item) const { return texts_[static_cast<std::size_t>(item.text)]; }
  text::LinePlace begin() const { return begin_; }
  text::LinePlace end() const { return end_; }

  // The left edge of the item with the byte; clipped to begin() and end().
  double xOf(std::int64_t byte) const;
  // The boundary nearest to x; `inside`: the start of the item at x.
  std::int64_t byteAt(double x, bool inside = false) const;
  // The width of the item that holds the byte; 0 where there is none.
  double widthAt(std::int64_t byte) const;
  // Makes room before `byte` for the text of an input method, which is not in the line yet.
  void insertGap(std::int64_t byte, double width);

 private:
  std::vector<LayoutItem>::const_iterator holding(std::int64_t byte) const;   // end() in front of all

  std::vector<LayoutItem> items_;
  std::vector<QString> texts_;
  text::LinePlace begin_, end_;
};
