#include "control/view/LineLayout.h"

#include <algorithm>

LineLayout::LineLayout(std::string_view bytes, bool toLineEnd, const text::LinePlace& from, const GlyphMetrics& metrics,
                       int tabSize, double right)
    : begin_(from), end_(from) {
  using text::Segment;
  items_.reserve(std::min<std::size_t>(bytes.size(), 1024));
  const std::size_t ahead = toLineEnd ? 0 : text::segmentAhead;
  while (bytes.size() > ahead && end_.x <= right) {
    const Segment s = text::segmentAt(bytes, 0, 1);
    LayoutItem item;
    item.byte = end_.byte;
    item.x = end_.x;
    item.bytes = s.bytes;
    item.badByte = s.kind == Segment::badByte;
    switch (s.kind) {
      case Segment::tab: item.kind = LayoutItem::tab; break;
      case Segment::badByte:
      case Segment::hidden: item.kind = LayoutItem::label; break;
      case Segment::oddBlank: item.kind = LayoutItem::oddBlank; break;
      case Segment::blank: item.kind = LayoutItem::blank; break;
      case Segment::plain:
        item.glyphIndex =
            s.single && s.code < 0x7F ? metrics.asciiGlyph(static_cast<unsigned char>(s.code)) : metrics.simple(s).glyph;
        if (item.glyphIndex == 0 && (s.code >= 0x7F || !s.single)) item.kind = LayoutItem::shaped;
    }
    if (item.kind == LayoutItem::label || item.kind == LayoutItem::shaped) {
      item.text = static_cast<int>(texts_.size());
      texts_.push_back(metrics.shownText(s, bytes));
    }
    item.width = s.kind == Segment::tab ? metrics.round(text::tabStop(end_.x, tabSize * metrics.cell()) - end_.x)
                                        : metrics.widthOf(s, bytes);
    items_.push_back(item);
    end_ = {end_.byte + s.bytes, end_.units + s.units, end_.x + item.width};
    bytes.remove_prefix(static_cast<std::size_t>(s.bytes));
  }
}

std::vector<LayoutItem>::const_iterator LineLayout::holding(std::int64_t byte) const {
  const auto it =
      std::upper_bound(items_.begin(), items_.end(), byte, [](std::int64_t b, const LayoutItem& i) { return b < i.byte; });
  return it == items_.begin() ? items_.end() : std::prev(it);
}

double LineLayout::xOf(std::int64_t byte) const {
  if (byte >= end_.byte) return end_.x;
  const auto it = holding(byte);
  return it == items_.end() ? begin_.x : it->x;
}

double LineLayout::widthAt(std::int64_t byte) const {
  const auto it = byte < end_.byte ? holding(byte) : items_.end();
  return it == items_.end() ? 0 : it->width;
}

std::int64_t LineLayout::byteAt(double x, bool inside) const {
  auto it = std::upper_bound(items_.begin(), items_.end(), x, [](double v, const LayoutItem& i) { return v < i.x; });
  if (it == items_.begin()) return begin_.byte;
  --it;
  const bool rightHalf = x >= it->x + (inside ? it->width : it->width / 2);
  return it->byte + (rightHalf ? it->bytes : 0);
}

void LineLayout::insertGap(std::int64_t byte, double width) {
  for (LayoutItem& item : items_)
    if (item.byte >= byte) item.x += width;
  end_.x += width;
}
