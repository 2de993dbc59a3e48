#include "control/LineLayout.h"

#include <QChar>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "control/TextModel.h"
#include "text/Chars.h"

namespace {

bool isPlain(unsigned char c) { return c >= 0x20 && c < 0x7F; }

// The length of the run of plain characters at the start; eight at a time.
std::int64_t plainRun(const char* data, std::int64_t size) {
  constexpr std::uint64_t kOnes = 0x0101010101010101, kHigh = kOnes * 0x80;
  std::int64_t i = 0;
  for (; i + 8 <= size; i += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, data + i, 8);
    const std::uint64_t low = word - kOnes * 0x20;              // borrows where a byte is below 0x20
    const std::uint64_t deleted = (word ^ (kOnes * 0x7F)) - kOnes;   // and where one is 0x7F
    if (((word | low | deleted) & kHigh) != 0) break;
  }
  while (i < size && isPlain(static_cast<unsigned char>(data[i]))) ++i;
  return i;
}

bool isDefaultIgnorable(char32_t c) {
  return c == 0xAD || c == 0x34F || c == 0x61C || (c >= 0x115F && c <= 0x1160) || (c >= 0x17B4 && c <= 0x17B5) ||
         (c >= 0x180B && c <= 0x180F) || (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
         (c >= 0x2060 && c <= 0x206F) || c == 0x3164 || (c >= 0xFE00 && c <= 0xFE0F) || c == 0xFEFF || c == 0xFFA0 ||
         (c >= 0xFFF0 && c <= 0xFFFB) || (c >= 0x1BCA0 && c <= 0x1BCA3) || (c >= 0x1D173 && c <= 0x1D17A) ||
         (c >= 0xE0000 && c <= 0xE0FFF);
}

bool isMark(char32_t c) {
  const auto category = QChar::category(c);
  return category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing || category == QChar::Mark_SpacingCombining;
}

}  // namespace

bool isPictograph(char32_t c) { return c >= 0x1F000 || (c >= 0x2190 && c <= 0x2BFF) || c == 0xA9 || c == 0xAE || c == 0x3030; }
bool variesPictures(char32_t c) { return c == 0x200D || c == 0xFE0E || c == 0xFE0F; }

QString hiddenCharLabel(char32_t c) {
  static const char* const kControls[] = {"NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL", "BS",  "TAB", "LF",
                                          "VT",  "FF",  "CR",  "SO",  "SI",  "DLE", "DC1", "DC2", "DC3", "DC4", "NAK",
                                          "SYN", "ETB", "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US"};
  static const struct { char32_t code; const char* label; } kNamed[] = {
      {0x7F, "DEL"},    {0x85, "NEL"},    {0xAD, "SHY"},    {0x34F, "CGJ"},   {0x61C, "ALM"},   {0x200B, "ZWSP"}, {0x200C, "ZWNJ"},
      {0x200D, "ZWJ"},  {0x200E, "LRM"},  {0x200F, "RLM"},  {0x2028, "LS"},   {0x2029, "PS"},   {0x202A, "LRE"},  {0x202B, "RLE"},
      {0x202C, "PDF"},  {0x202D, "LRO"},  {0x202E, "RLO"},  {0x2060, "WJ"},   {0x2066, "LRI"},  {0x2067, "RLI"},  {0x2068, "FSI"},
      {0x2069, "PDI"},  {0xFEFF, "BOM"}};
  if (c < 0x20) return QString::fromLatin1(kControls[c]);
  for (const auto& named : kNamed)
    if (named.code == c) return QString::fromLatin1(named.label);
  const auto category = QChar::category(c);
  if (category == QChar::Other_Control || category == QChar::Other_Format || category == QChar::Other_Surrogate || isDefaultIgnorable(c))
    return QStringLiteral("U+%1").arg(static_cast<uint>(c), 4, 16, QLatin1Char('0')).toUpper();
  return {};
}

LineWalker::LineWalker(std::string_view bytes, bool toLineEnd, LinePlace from, const GlyphMetrics& metrics, int tabSize)
    : bytes_(bytes), metrics_(metrics), tabWidth_(tabSize * metrics.cell()), base_(from.byte), x_(from.x) {
  const auto size = static_cast<std::int64_t>(bytes.size());
  limit_ = toLineEnd ? size : std::max<std::int64_t>(0, size - kLookAhead);
}

void LineWalker::skipPlain(std::int64_t byte, double x) {
  std::int64_t stop = std::min(limit_, byte - base_);
  const bool fixed = metrics_.fixedPitch();
  if (fixed) stop = std::min(stop, at_ + static_cast<std::int64_t>(std::clamp((x - x_) / metrics_.cell() + 1e-6, 0.0, 1e15)));
  const std::int64_t from = at_;
  const char* data = bytes_.data();
  std::int64_t i = at_;
  if (fixed) {
    i += plainRun(data + i, std::max<std::int64_t>(0, stop - i));
  } else {
    for (; i < stop && isPlain(static_cast<unsigned char>(data[i])); ++i) {
      const double next = x_ + metrics_.asciiAdvance(static_cast<unsigned char>(data[i]));
      if (next > x) break;
      x_ = next;
    }
  }
  // A mark behind the last one would belong to it.
  if (i > from && i < static_cast<std::int64_t>(bytes_.size()) && static_cast<unsigned char>(data[i]) >= 0x80) {
    --i;
    if (!fixed) x_ -= metrics_.asciiAdvance(static_cast<unsigned char>(data[i]));
  }
  if (fixed) x_ += static_cast<double>(i - from) * metrics_.cell();
  at_ = i;
}

LayoutItem LineWalker::next(QString* text) {
  const std::string_view rest = bytes_.substr(static_cast<std::size_t>(at_));
  LayoutItem item;
  item.byte = base_ + at_;
  item.x = x_;
  item.bytes = 1;
  const auto first = static_cast<unsigned char>(rest[0]);
  const bool alone = rest.size() < 2 || static_cast<unsigned char>(rest[1]) < 0x80;
  if (isPlain(first) && alone) {
    item.kind = first == ' ' ? LayoutItem::blank : LayoutItem::glyph;
    item.glyphIndex = metrics_.asciiGlyph(first);
    item.width = metrics_.asciiAdvance(first);
  } else if (first == '\t') {
    item.kind = LayoutItem::tab;
    const double into = std::fmod(x_ + 0.01, tabWidth_);
    item.width = tabWidth_ - into + 0.01;
    if (item.width < 1) item.width += tabWidth_;
    item.width = metrics_.round(item.width);
  } else {
    const text::Char c = text::decode(rest);
    item.bytes = c.bytes;
    const QString label = c.bad ? QStringLiteral("%1").arg(static_cast<uint>(first), 2, 16, QLatin1Char('0')).toUpper()
                                : hiddenCharLabel(c.code);
    if (c.bad || !label.isEmpty()) {
      item.kind = LayoutItem::label;
      item.badByte = c.bad;
      item.width = c.bad ? metrics_.hexByteWidth() : metrics_.labelWidth(label);
      *text = label;
    } else {
      // Marks belong to the character before them.
      const bool pictograph = isPictograph(c.code);
      for (;;) {
        const text::Char mark = text::decode(rest.substr(static_cast<std::size_t>(item.bytes)));
        if (mark.bytes == 0 || mark.bad || item.bytes + mark.bytes > kLookAhead / 2) break;
        const bool joins = pictograph && (variesPictures(mark.code) || (mark.code >= 0x1F3FB && mark.code <= 0x1F3FF));
        if (!joins && (!isMark(mark.code) || isDefaultIgnorable(mark.code))) break;
        item.bytes += mark.bytes;
        if (mark.code != 0x200D) continue;
        const text::Char joined = text::decode(rest.substr(static_cast<std::size_t>(item.bytes)));
        if (joined.bytes > 0 && !joined.bad && isPictograph(joined.code) && item.bytes + joined.bytes <= kLookAhead / 2)
          item.bytes += joined.bytes;
      }
      const bool single = item.bytes == c.bytes;
      const double cells = std::max(1, text::cells(c.code)) * metrics_.cell();
      const bool odd = QChar::category(c.code) == QChar::Separator_Space && c.code != ' ';
      const auto simple = single && !odd ? metrics_.simple(c.code) : GlyphMetrics::Simple();
      if (odd) {
        item.kind = LayoutItem::oddBlank;
        item.width = cells;
      } else if (c.code == ' ' && single) {
        item.kind = LayoutItem::blank;
        item.width = metrics_.asciiAdvance(' ');
      } else if (simple.glyph != 0 && !(single && isMark(c.code))) {
        item.kind = LayoutItem::glyph;
        item.glyphIndex = simple.glyph;
        item.width = metrics_.fixedPitch() ? cells : std::max(1.0, metrics_.round(simple.advance));
      } else {
        item.kind = LayoutItem::shaped;
        *text = toQString(rest.substr(0, static_cast<std::size_t>(item.bytes)));
        if (isMark(c.code)) text->prepend(QChar(0x25CC));
        item.width = metrics_.fixedPitch() ? cells : std::max(1.0, metrics_.round(metrics_.shaped(*text).advance));
      }
    }
  }
  at_ += item.bytes;
  x_ += item.width;
  return item;
}

LineLayout::LineLayout(std::string_view bytes, bool toLineEnd, LinePlace from, const GlyphMetrics& metrics, int tabSize, double right)
    : begin_(from) {
  LineWalker walker(bytes, toLineEnd, from, metrics, tabSize);
  items_.reserve(std::min<std::size_t>(bytes.size(), 1024));
  QString text;
  while (!walker.done() && walker.place().x <= right) {
    items_.push_back(walker.next(&text));
    if (items_.back().kind == LayoutItem::label && !items_.back().badByte) countsCells_ = false;
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
