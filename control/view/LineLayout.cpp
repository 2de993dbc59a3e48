#include "control/view/LineLayout.h"

#include <algorithm>
#include <cmath>

#include "bridge/QStringBytes.h"
#include "control/shape/Bidi.h"
#include "control/shape/Scripts.h"
#include "text/line/Chars.h"

namespace {

constexpr double kSamePlace = 0.01;        // pixels
constexpr std::size_t kMostShaped = 256;   // clusters shaped together
constexpr double kSteps = 16;              // of how much wider words are drawn, between 0 and 1
constexpr double kWidestDrawn = 1.2;       // a word is drawn at most so much wider than it is; else it stands in the middle

shape::Sign signOf(const LayoutItem& item, char32_t code) {
  switch (item.kind) {
    case LayoutItem::blank:
    case LayoutItem::oddBlank: return {code, shape::Sign::blank};
    case LayoutItem::tab: return {code, shape::Sign::tab};
    case LayoutItem::label: return {code, shape::Sign::box};
    default: return {code, shape::Sign::plain};
  }
}

}   // namespace

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
    if (s.code >= shape::kFirstSpecial && !special_) special_ = shape::isSpecial(s.code);
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

// --- Order and joined letters ----------------------------------------------------------------------------------------------------

void LineLayout::arrange(std::string_view bytes, std::span<const text::ByteRange> natural, std::span<const std::int64_t> rows,
                         const GlyphMetrics& metrics) {
  std::vector<char32_t> codes;   // the first one of each item
  codes.reserve(items_.size());
  for (const LayoutItem& item : items_)
    codes.push_back(text::decode(bytes.substr(static_cast<std::size_t>(item.byte - begin_.byte))).code);
  const auto indexOf = [&](std::int64_t byte) {
    return static_cast<std::size_t>(std::ranges::lower_bound(items_, byte, {}, &LayoutItem::byte) - items_.begin());
  };
  for (const std::int64_t row : rows)
    if (const std::size_t first = indexOf(row); first > 0 && first < items_.size()) {
      items_[first].opens = true;
      rowEdges_.push_back(items_[first].x);
    }
  for (const text::ByteRange& range : natural) turn(codes, indexOf(range.begin.value), indexOf(range.end.value), metrics);
  join(bytes, codes, metrics);
}

void LineLayout::turn(std::span<const char32_t> codes, std::size_t first, std::size_t end, const GlyphMetrics& metrics) {
  if (std::none_of(codes.begin() + static_cast<std::ptrdiff_t>(first), codes.begin() + static_cast<std::ptrdiff_t>(end),
                   shape::turns))
    return;
  std::vector<shape::Sign> signs;
  for (std::size_t i = first; i < end; ++i) signs.push_back(signOf(items_[i], codes[i]));
  std::vector<unsigned char> levels = shape::levels(signs);
  for (std::size_t row = 0, next = 0; row < signs.size(); row = next) {
    for (next = row + 1; next < signs.size() && !items_[first + next].opens;) ++next;
    const auto order = shape::visualOrder(std::span(signs).subspan(row, next - row), std::span(levels).subspan(row, next - row));
    double x = items_[first + row].x;
    for (const std::size_t at : order) {
      LayoutItem& item = items_[first + row + at];
      item.x = x;
      x += item.width;
    }
  }
  for (std::size_t i = 0; i < signs.size(); ++i) {
    if (levels[i] % 2 == 0) continue;
    LayoutItem& item = items_[first + i];
    item.rightToLeft = turned_ = true;
    const char32_t mirrored = QChar::mirroredChar(codes[first + i]);
    if (mirrored == codes[first + i]) continue;
    if (item.kind == LayoutItem::glyph) item.glyphIndex = metrics.simple(mirrored).glyph;
    else if (item.kind == LayoutItem::shaped)
      texts_[static_cast<std::size_t>(item.text)].replace(0, QChar::requiresSurrogates(mirrored) ? 2 : 1,
                                                          QString::fromUcs4(&mirrored, 1));
  }
}

void LineLayout::join(std::string_view bytes, std::span<const char32_t> codes, const GlyphMetrics& metrics) {
  const auto joins = [&](std::size_t i) {
    const LayoutItem& item = items_[i];
    return (item.kind == LayoutItem::glyph || item.kind == LayoutItem::shaped) && shape::joins(codes[i]) &&
           item.rightToLeft == shape::isRightToLeft(codes[i]);   // in code letters do not turn, and each stands for itself
  };
  for (std::size_t i = 0; i < items_.size();) {
    std::size_t end = i + 1;
    if (joins(i)) {
      const QChar::Script script = shape::scriptOf(codes[i]);
      while (end < items_.size() && end - i < kMostShaped && joins(end) && !items_[end].opens &&
             items_[end].rightToLeft == items_[i].rightToLeft && shape::scriptOf(codes[end]) == script)
        ++end;
      if (end - i > 1) joinWord(bytes, i, end, metrics);
    }
    i = end;
  }
}

// The word of several items gets the place that these have.
void LineLayout::joinWord(std::string_view bytes, std::size_t first, std::size_t end, const GlyphMetrics& metrics) {
  const auto at = [&](std::int64_t byte) { return static_cast<std::size_t>(byte - begin_.byte); };
  std::vector<int> lengths;
  QString text;
  double left = items_[first].x, total = 0;
  for (std::size_t i = first; i < end; ++i) {
    const QString cluster = toQString(bytes.substr(at(items_[i].byte), static_cast<std::size_t>(items_[i].bytes)));
    lengths.push_back(static_cast<int>(cluster.size()));
    text += cluster;
    left = std::min(left, items_[i].x);
    total += items_[i].width;
  }
  LayoutWord word{metrics.word(text, lengths), 0, 1};
  if (word.shaped.advance <= 0) return;
  // In few steps: for each one the font keeps its signs, and draws those of others anew each time.
  word.scale = std::max(std::floor(std::min(total / word.shaped.advance, kWidestDrawn) * kSteps), 1.0) / kSteps;
  const double spare = (total - word.shaped.advance * word.scale) / 2;
  word.x = left + spare;
  std::vector<double> ends;   // from where the word begins
  bool wide = true;
  for (std::size_t i = first; i < end; ++i) {
    ends.push_back(i + 1 == end ? total : metrics.round(spare + word.shaped.ends[i - first] * word.scale));
    wide = wide && ends.back() - (i > first ? ends[i - first - 1] : 0) >= 1;
  }
  double begin = 0;
  for (std::size_t i = first; i < end; ++i) {
    LayoutItem& item = items_[i];
    const double behind = wide ? ends[i - first] : total * static_cast<double>(i - first + 1) / static_cast<double>(end - first);
    item.width = behind - begin;
    item.x = item.rightToLeft ? left + total - behind : left + begin;
    item.kind = LayoutItem::joined;
    item.text = static_cast<int>(words_.size());
    begin = behind;
  }
  words_.push_back(std::move(word));
}

// --- Places ------------------------------------------------------------------------------------------------------------------------

double LineLayout::xOf(std::int64_t byte) const {
  if (!turned_) return leftOf(byte);
  const auto it = byte >= end_.byte ? items_.end() : holding(byte);
  if (it == items_.begin() || (it == items_.end() && byte < end_.byte)) return items_.front().beginX();
  return it != items_.end() && it->opens ? it->beginX() : std::prev(it)->endX();
}

double LineLayout::leftOf(std::int64_t byte) const {
  if (byte >= end_.byte) return end_.x;
  const auto it = holding(byte);
  return it == items_.end() ? begin_.x : it->x;
}

double LineLayout::widthAt(std::int64_t byte) const {
  const auto it = byte < end_.byte ? holding(byte) : items_.end();
  return it == items_.end() ? 0 : it->width;
}

std::vector<LayoutPiece> LineLayout::pieces(std::int64_t begin, std::int64_t end) const {
  if (begin >= end) return {};
  if (!turned_) return {{xOf(begin), xOf(end)}};
  std::vector<LayoutPiece> all;
  auto it = begin <= begin_.byte ? items_.begin() : holding(begin);
  for (; it != items_.end() && it->byte < end; ++it) {
    if (it->byte + it->bytes <= begin) continue;
    const double from = it->x, to = it->x + it->width;
    if (!all.empty() && std::abs(all.back().to - from) < kSamePlace) all.back().to = to;
    else if (!all.empty() && std::abs(all.back().from - to) < kSamePlace) all.back().from = from;
    else all.push_back({from, to});
  }
  return all;
}

// The place in front of an item, or the one at the other side of its edge if only that is shown there.
std::int64_t LineLayout::atEdge(const LayoutItem& item, bool right) const {
  const double edge = item.beginX();
  const auto isNear = [](double a, double b) { return std::abs(a - b) < kSamePlace; };
  if (isNear(xOf(item.byte), edge)) return item.byte;
  if (std::ranges::any_of(rowEdges_, [&](double x) { return isNear(x, edge); })) return item.byte;
  const auto beside = std::ranges::find_if(items_, [&](const LayoutItem& i) { return isNear(right ? i.x : i.x + i.width, edge); });
  if (beside == items_.end()) return item.byte;
  const std::int64_t other = right == beside->rightToLeft ? beside->byte + beside->bytes : beside->byte;
  return isNear(xOf(other), edge) ? other : item.byte;
}

std::int64_t LineLayout::byteAt(double x, bool inside) const {
  if (turned_) {
    if (x < begin_.x) return begin_.byte;
    const auto it = std::ranges::find_if(items_, [&](const LayoutItem& i) { return x >= i.x && x < i.x + i.width; });
    if (it == items_.end()) return end_.byte;
    const bool right = x >= it->x + it->width / 2;
    if (inside) return it->byte;
    return right != it->rightToLeft ? it->byte + it->bytes : atEdge(*it, right);
  }
  auto it = std::upper_bound(items_.begin(), items_.end(), x, [](double v, const LayoutItem& i) { return v < i.x; });
  if (it == items_.begin()) return begin_.byte;
  --it;
  const bool rightHalf = x >= it->x + (inside ? it->width : it->width / 2);
  return it->byte + (rightHalf ? it->bytes : 0);
}

void LineLayout::insertGap(std::int64_t byte, double width) {
  gapX_ = xOf(byte);
  gap_ = width;
  for (LayoutItem& item : items_)
    if (turned_ ? item.x > gapX_ - 0.01 : item.byte >= byte) item.x += width;
  end_.x += width;
}
