#include "control/view/LineLayout.h"

#include <algorithm>
#include <cmath>

#include "control/edit/TextModel.h"
#include "text/line/CharTables.h"

QString hiddenCharLabel(char32_t c) { return QString::fromStdString(text::hiddenLabel(c)); }

LineWalker::LineWalker(std::string_view bytes, bool toLineEnd, LinePlace from, const GlyphMetrics& metrics, int tabSize)
    : bytes_(bytes), metrics_(metrics), tabSize_(tabSize), toLineEnd_(toLineEnd), base_(from.byte), x_(from.x) {
  const auto size = static_cast<std::int64_t>(bytes.size());
  limit_ = toLineEnd ? size : std::max<std::int64_t>(0, size - kLookAhead);
}

void LineWalker::skipPlain(std::int64_t byte, double x) {
  const std::int64_t stop = std::min(limit_, byte - base_);
  const auto rest = bytes_.substr(static_cast<std::size_t>(at_));
  if (stop <= at_) return;
  if (metrics_.fixedPitch()) {
    const auto cells = static_cast<std::int64_t>(std::clamp((x - x_) / metrics_.cell() + 1e-6, 0.0, 1e15));
    const text::Extent run = text::skipSimple(rest, toLineEnd_, {stop - at_, stop - at_, cells});
    at_ += run.bytes;
    x_ += static_cast<double>(run.cells) * metrics_.cell();
    return;
  }
  // One letter at a time, each of its width; the one before a mark is not plain.
  while (at_ < stop && bytes_[static_cast<std::size_t>(at_)] >= 0x20 && bytes_[static_cast<std::size_t>(at_)] < 0x7F) {
    const auto behind = static_cast<std::size_t>(at_) + 1;
    if (behind < bytes_.size() ? static_cast<unsigned char>(bytes_[behind]) >= 0x80 : !toLineEnd_) return;
    const double next = x_ + metrics_.asciiAdvance(static_cast<unsigned char>(bytes_[behind - 1]));
    if (next > x) return;
    x_ = next;
    ++at_;
  }
}

LayoutItem LineWalker::next(QString* text) {
  const std::string_view rest = bytes_.substr(static_cast<std::size_t>(at_));
  const bool fixed = metrics_.fixedPitch();
  const text::Segment s = text::segmentAt(rest, 0, tabSize_);
  LayoutItem item;
  item.byte = base_ + at_;
  item.x = x_;
  item.bytes = s.bytes;
  const double cells = s.cells * metrics_.cell();
  switch (s.kind) {
    case text::Segment::tab: {
      item.kind = LayoutItem::tab;
      const double tabWidth = tabSize_ * metrics_.cell(), into = std::fmod(x_ + 0.01, tabWidth);
      item.width = tabWidth - into + 0.01;
      if (item.width < 1) item.width += tabWidth;
      item.width = metrics_.round(item.width);
      break;
    }
    case text::Segment::badByte:
      item.kind = LayoutItem::label;
      item.badByte = true;
      *text = QStringLiteral("%1").arg(static_cast<uint>(s.code), 2, 16, QLatin1Char('0')).toUpper();
      item.width = metrics_.hexByteWidth();
      break;
    case text::Segment::hidden:
      item.kind = LayoutItem::label;
      *text = hiddenCharLabel(s.code);
      item.width = fixed ? cells : metrics_.labelWidth(*text);
      break;
    case text::Segment::oddBlank:
      item.kind = LayoutItem::oddBlank;
      item.width = cells;
      break;
    case text::Segment::blank:
      item.kind = LayoutItem::blank;
      item.width = metrics_.asciiAdvance(' ');
      break;
    case text::Segment::plain: {
      if (s.code < 0x7F && s.single) {
        item.glyphIndex = metrics_.asciiGlyph(static_cast<unsigned char>(s.code));
        item.width = metrics_.asciiAdvance(static_cast<unsigned char>(s.code));
        break;
      }
      const bool lone = text::isExtending(s.code);   // a mark with nothing that it could belong to
      const auto simple = s.single && !lone ? metrics_.simple(s.code) : GlyphMetrics::Simple();
      if (simple.glyph != 0 && (!fixed || simple.advance <= cells + 0.5)) {
        item.glyphIndex = simple.glyph;
        item.width = fixed ? cells : std::max(1.0, metrics_.round(simple.advance));
      } else {
        item.kind = LayoutItem::shaped;
        *text = toQString(rest.substr(0, static_cast<std::size_t>(s.bytes)));
        if (lone) text->prepend(QChar(0x25CC));
        item.width = fixed ? cells : std::max(1.0, metrics_.round(metrics_.shaped(*text).advance));
      }
    }
  }
  at_ += item.bytes;
  x_ += item.width;
  return item;
}

LineLayout::LineLayout(std::string_view bytes, bool toLineEnd, LinePlace from, const GlyphMetrics& metrics, int tabSize,
                       double right)
    : begin_(from) {
  LineWalker walker(bytes, toLineEnd, from, metrics, tabSize);
  items_.reserve(std::min<std::size_t>(bytes.size(), 1024));
  QString text;
  while (!walker.done() && walker.place().x <= right) {
    items_.push_back(walker.next(&text));
    if (items_.back().kind == LayoutItem::label || items_.back().kind == LayoutItem::shaped) {
      items_.back().text = static_cast<int>(texts_.size());
      texts_.push_back(text);
    }
  }
  end_ = walker.place();
}

double LineLayout::xOf(std::int64_t byte) const {
  if (byte >= end_.byte) return end_.x;
  auto it = std::upper_bound(items_.begin(), items_.end(), byte, [](std::int64_t b, const LayoutItem& i) { return b < i.byte; });
  return it == items_.begin() ? begin_.x : std::prev(it)->x;
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
