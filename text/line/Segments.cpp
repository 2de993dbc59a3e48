#include "text/line/Segments.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

#include "text/line/Chars.h"
#include "text/line/Utf8.h"

namespace text {

namespace {

unsigned char byteAt(std::string_view s, std::size_t i) { return static_cast<unsigned char>(s[i]); }
bool isPlain(unsigned char b) { return b >= 0x20 && b < 0x7F; }

const utf8proc_property_t& property(char32_t code) { return *utf8proc_get_property(static_cast<utf8proc_int32_t>(code)); }

enum class Joining : unsigned char {
  other,
  cr,
  lf,
  alone,
  extend,
  joiner,
  selector,
  regional,
  pictograph,
  hangulL,
  hangulV,
  hangulT,
  hangulLV,
  hangulLVT
};

bool couldHide(const utf8proc_property_t& p) {
  switch (p.category) {
    case UTF8PROC_CATEGORY_CC:
    case UTF8PROC_CATEGORY_CF:
    case UTF8PROC_CATEGORY_CS:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP: return true;
    default: return p.ignorable;
  }
}

Joining lookedUp(char32_t u) {
  using enum Joining;
  if (u < 0x300) {
    if (u == '\r') return cr;
    if (u == '\n') return lf;
    if (u < 0x20 || (u >= 0x7F && u < 0xA0) || u == 0xAD) return alone;
    return u == 0xA9 || u == 0xAE ? pictograph : other;
  }
  if (u == 0x200D) return joiner;
  if (u == 0xFE0E || u == 0xFE0F) return selector;
  const auto& p = property(u);
  if (couldHide(p)) return alone;
  switch (p.boundclass) {
    case UTF8PROC_BOUNDCLASS_EXTEND:
    case UTF8PROC_BOUNDCLASS_SPACINGMARK: return extend;
    case UTF8PROC_BOUNDCLASS_REGIONAL_INDICATOR: return regional;
    case UTF8PROC_BOUNDCLASS_EXTENDED_PICTOGRAPHIC: return pictograph;
    case UTF8PROC_BOUNDCLASS_L: return hangulL;
    case UTF8PROC_BOUNDCLASS_V: return hangulV;
    case UTF8PROC_BOUNDCLASS_T: return hangulT;
    case UTF8PROC_BOUNDCLASS_LV: return hangulLV;
    case UTF8PROC_BOUNDCLASS_LVT: return hangulLVT;
    case UTF8PROC_BOUNDCLASS_CONTROL: return alone;
    default: return other;
  }
}

// Table of properties of the code points below U+10000.
struct Quick {
  Joining joining = Joining::alone;
  bool joins = true;         // may join the character before it
  unsigned char cells = 0;   // of a letter that is a segment unless something joins it; 0: needs a closer look
};
using QuickTable = std::array<Quick, 0x10000>;

const QuickTable& quickTable() {
  static const auto table = [] {
    auto all = std::make_unique<QuickTable>();
    for (char32_t c = 1; c < all->size(); ++c) {
      const Joining how = lookedUp(c);
      const bool letter = how == Joining::other && (c < 0x80 || property(c).category != UTF8PROC_CATEGORY_ZS);
      const bool alone = how == Joining::alone || how == Joining::cr || how == Joining::lf;
      (*all)[c] = {how, how != Joining::other && !alone, static_cast<unsigned char>(letter ? std::max(1, cells(c)) : 0)};
    }
    return all;
  }();
  return *table;
}

Joining joining(const Char& c) {
  if (c.bad) return Joining::alone;
  return c.code < 0x10000 ? quickTable()[c.code].joining : lookedUp(c.code);
}

// Whether two neighbours belong together. `regionals` is the number of regional letters up to and with `a`, `picture` tells that
// `a` ends a picture, which joiners and selectors may follow.
bool joined(Joining a, Joining b, int regionals, bool picture) {
  using enum Joining;
  if (a == cr) return b == lf;
  if (a == lf || a == alone || b == cr || b == lf || b == alone) return false;
  if (b == joiner || b == selector) return picture;
  if ((a == joiner || a == selector) && !picture) return false;   // a box of its own
  if (b == extend) return true;
  if (a == joiner) return b == pictograph;
  if (a == regional) return b == regional && regionals % 2 == 1;
  if (a == hangulL) return b == hangulL || b == hangulV || b == hangulLV || b == hangulLVT;
  if (a == hangulV || a == hangulLV) return b == hangulV || b == hangulT;
  return (a == hangulT || a == hangulLVT) && b == hangulT;
}

// The cells that a code point adds to its character.
int added(char32_t u, Joining how, bool picture) {
  if (how == Joining::selector) return 0;
  if (picture) return 0;   // an emoji sequence is one picture
  const auto& p = property(u);
  if (p.category != UTF8PROC_CATEGORY_MC) return cells(u);
  return p.decomp_seqindex != UINT16_MAX ? 2 : 1;   // a vowel sign of two parts, on both sides
}

struct Cluster {
  int bytes = 0, units = 0, cells = 0;
  bool single = true;
};

Cluster clusterOf(std::string_view bytes, const Char& first, Joining before) {
  Cluster all{first.bytes, utf16Length(first), std::max(1, cells(first.code)), true};
  int regionals = before == Joining::regional;
  bool picture = before == Joining::pictograph;
  while (static_cast<std::size_t>(all.bytes) < bytes.size()) {
    const Char c = decode(bytes.substr(static_cast<std::size_t>(all.bytes)));
    const Joining next = joining(c);
    if (!joined(before, next, regionals, picture) || all.bytes + c.bytes > maxClusterBytes) break;
    all.cells += added(c.code, next, picture);
    if (c.code == 0xFE0F) all.cells = std::max(all.cells, 2);   // shown as a picture
    regionals += next == Joining::regional;
    before = next;
    all.bytes += c.bytes;
    all.units += utf16Length(c);
    all.single = false;
  }
  return all;
}

// The length of the run of printable ASCII at the start; eight at a time.
std::size_t plainRun(const char* data, std::size_t size) {
  constexpr std::uint64_t ones = 0x0101010101010101, high = ones * 0x80;
  std::size_t i = 0;
  for (; i + 8 <= size; i += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, data + i, 8);
    const std::uint64_t low = word - ones * 0x20;                  // borrows where a byte is below 0x20
    const std::uint64_t deleted = (word ^ (ones * 0x7F)) - ones;   // and where one is 0x7F
    if (((word | low | deleted) & high) != 0) break;
  }
  while (i < size && isPlain(static_cast<unsigned char>(data[i]))) ++i;
  return i;
}

}   // namespace

Segment segmentAt(std::string_view rest, std::int64_t column, int tabSize) {
  if (rest.empty()) return {};
  const unsigned char first = byteAt(rest, 0);
  if (first == '\t') return {'\t', 1, 1, tabSize - static_cast<int>(column % tabSize), Segment::tab, true};
  if (isPlain(first) && (rest.size() < 2 || byteAt(rest, 1) < 0x80))
    return {first, 1, 1, 1, first == ' ' ? Segment::blank : Segment::plain, true};
  const Char c = decode(rest);
  if (c.bad) return {c.code, 1, 1, badByteCells, Segment::badByte, true};
  const Joining how = joining(c);
  const bool hidden =
      how == Joining::cr || how == Joining::lf || how == Joining::alone || how == Joining::joiner || how == Joining::selector;
  if (hidden) {
    const auto letters = static_cast<int>(hiddenLabel(c.code).size());
    return {c.code, c.bytes, utf16Length(c), (7 * letters + 14) / 10, Segment::hidden, true};   // a box with small letters
  }
  const Cluster all = clusterOf(rest, c, how);
  Segment::Kind kind = Segment::plain;
  if (all.single && c.code == ' ') kind = Segment::blank;
  else if (all.single && c.code >= 0x80 && property(c.code).category == UTF8PROC_CATEGORY_ZS) kind = Segment::oddBlank;
  return {c.code, all.bytes, all.units, all.cells, kind, all.single};
}

namespace {

// How far a stretch of a line reaches.
struct Extent {
  std::int64_t bytes = 0, units = 0, cells = 0;
};

// Segments from the start of `rest` on that are quickly told: printable ASCII and letters that nothing can join, at most so many of
// each. The one before something that could join it is left out; so is the last one, unless `rest` reaches to the line's end.
Extent skipSimple(std::string_view rest, bool toLineEnd, const Extent& most) {
  Extent done, last;   // `last` is a letter that the next character may join
  const QuickTable& table = quickTable();
  const auto size = static_cast<std::int64_t>(rest.size());
  const auto settle = [&] {
    done = {done.bytes + last.bytes, done.units + last.units, done.cells + last.cells};
    last = {};
  };
  for (;;) {
    const std::int64_t here = done.bytes + last.bytes;
    if (here == size) {
      if (toLineEnd) settle();
      return done;
    }
    const char* const p = rest.data() + here;
    int length = 0;
    const char32_t code = utf8Quick(p, static_cast<std::size_t>(size - here), &length);
    const Quick quick = table[code];
    if (quick.joins) return done;
    settle();   // nothing joins it
    if (quick.cells == 0 || done.units >= most.units || done.bytes + length > most.bytes || done.cells + quick.cells > most.cells)
      return done;
    last = {length, 1, quick.cells};
    if (length > 1) continue;
    const std::int64_t room = std::min({most.bytes - done.bytes, most.units - done.units, most.cells - done.cells, size - here});
    const auto run = static_cast<std::int64_t>(plainRun(p, static_cast<std::size_t>(room)));
    done = {done.bytes + run - 1, done.units + run - 1, done.cells + run - 1};
  }
}

// The same for printable ASCII, where letters have widths.
LinePlace skipAscii(std::string_view rest, bool toLineEnd, LinePlace at, const LinePlace& most, const Widths& widths) {
  for (std::size_t i = 0; i < rest.size() && isPlain(byteAt(rest, i)); ++i) {
    if (i + 1 < rest.size() ? byteAt(rest, i + 1) >= 0x80 : !toLineEnd) break;
    const LinePlace next{at.byte + 1, at.units + 1, at.x + widths.ascii[byteAt(rest, i)]};
    if (!next.within(most)) break;
    at = next;
  }
  return at;
}

}   // namespace

double tabStop(double x, double distance) {
  const double stop = (std::floor((x + 0.01) / distance) + 1) * distance;   // x may be a little short of a stop
  return stop - x < 1 ? stop + distance : stop;
}

LinePlace walk(std::string_view rest, bool toLineEnd, const LinePlace& from, const LinePlace& most, int tabSize,
               const Widths* widths, bool overTabs) {
  const auto size = static_cast<std::int64_t>(rest.size());
  const std::int64_t end = from.byte + (toLineEnd ? size : std::max<std::int64_t>(0, size - segmentAhead));
  const double tabs = std::max(tabSize, 1) * (widths ? widths->tabUnit : 1);
  LinePlace limit = most;
  limit.byte = std::min(limit.byte, end);
  const auto ahead = [&](const LinePlace& at) { return rest.substr(static_cast<std::size_t>(at.byte - from.byte)); };
  for (LinePlace at = from;;) {
    if (widths) {
      at = skipAscii(ahead(at), toLineEnd, at, limit, *widths);
    } else {
      const auto cells = static_cast<std::int64_t>(std::min(limit.x - at.x, 1e15));
      const Extent run = skipSimple(ahead(at), toLineEnd, {limit.byte - at.byte, limit.units - at.units, cells});
      at = {at.byte + run.bytes, at.units + run.units, at.x + static_cast<double>(run.cells)};
    }
    if (at.byte >= end) return at;
    const std::string_view here = ahead(at);
    const Segment s = segmentAt(here, 0, 1);
    if (s.kind == Segment::tab && !overTabs) return at;
    const LinePlace next{at.byte + s.bytes, at.units + s.units,
                         s.kind == Segment::tab ? tabStop(at.x, tabs)
                         : widths               ? at.x + widths->widthOf(s, here.substr(0, static_cast<std::size_t>(s.bytes)))
                                                : at.x + s.cells};
    if (!next.within(most)) return at;
    at = next;
  }
}

int clusterLength(std::string_view bytes) {
  // Fast path for ASCII: only CR LF is a pair, unless a combining character follows.
  if (bytes.size() > 1 && byteAt(bytes, 0) < 0x80 && byteAt(bytes, 1) < 0x80) return bytes[0] == '\r' && bytes[1] == '\n' ? 2 : 1;
  const Char first = decode(bytes);
  return first.bytes == 0 ? 0 : clusterOf(bytes, first, joining(first)).bytes;
}

int clusterLengthBefore(std::string_view bytes) {
  const Char last = decodeLast(bytes);
  if (last.bytes == 0) return 0;
  if (last.bytes == 1 && last.code < 0x80) return last.code == '\n' && bytes.size() > 1 && bytes[bytes.size() - 2] == '\r' ? 2 : 1;
  // Goes back to a position where a cluster certainly ends, then forward again.
  std::size_t start = bytes.size() - static_cast<std::size_t>(last.bytes);
  Joining next = joining(last);
  while (start > 0 && bytes.size() - start <= 4 * maxClusterBytes) {
    const Char c = decodeLast(bytes.substr(0, start));
    const Joining how = joining(c);
    if (!joined(how, next, 1, true)) break;
    start -= static_cast<std::size_t>(c.bytes);
    next = how;
  }
  for (;;) {
    const auto length = static_cast<std::size_t>(clusterLength(bytes.substr(start)));
    if (start + length >= bytes.size()) return static_cast<int>(bytes.size() - start);
    start += length;
  }
}

int cells(char32_t code) {
  if (code < 0x300) return 1;
  const auto& p = property(code);
  switch (p.boundclass) {
    case UTF8PROC_BOUNDCLASS_V:
    case UTF8PROC_BOUNDCLASS_T: return 0;
    case UTF8PROC_BOUNDCLASS_EXTENDED_PICTOGRAPHIC: break;
    default:
      if (p.category == UTF8PROC_CATEGORY_MN || p.category == UTF8PROC_CATEGORY_ME || p.category == UTF8PROC_CATEGORY_CF) return 0;
  }
  return p.charwidth == 2 ? 2 : 1;
}

bool isPictograph(char32_t code) {
  return property(code).boundclass == UTF8PROC_BOUNDCLASS_EXTENDED_PICTOGRAPHIC || (code >= 0x1F3FB && code <= 0x1F3FF);
}
bool variesPictures(char32_t code) { return code == 0x200D || code == 0xFE0E || code == 0xFE0F; }

std::string hiddenLabel(char32_t c) {
  static const char* const controls[] = {"NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL", "BS",  "TAB", "LF",
                                         "VT",  "FF",  "CR",  "SO",  "SI",  "DLE", "DC1", "DC2", "DC3", "DC4", "NAK",
                                         "SYN", "ETB", "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US"};
  static const struct {
    char32_t code;
    const char* label;
  } named[] = {{0x7F, "DEL"},    {0x85, "NEL"},   {0xAD, "SHY"},   {0x34F, "CGJ"},  {0x61C, "ALM"},  {0x200B, "ZWSP"},
               {0x200C, "ZWNJ"}, {0x200D, "ZWJ"}, {0x200E, "LRM"}, {0x200F, "RLM"}, {0x2028, "LS"},  {0x2029, "PS"},
               {0x202A, "LRE"},  {0x202B, "RLE"}, {0x202C, "PDF"}, {0x202D, "LRO"}, {0x202E, "RLO"}, {0x2060, "WJ"},
               {0x2066, "LRI"},  {0x2067, "RLI"}, {0x2068, "FSI"}, {0x2069, "PDI"}, {0xFEFF, "BOM"}};
  if (c < 0x20) return controls[c];
  if (c < 0x7F) return {};
  for (const auto& n : named)
    if (n.code == c) return n.label;
  if (!couldHide(property(c)) && property(c).boundclass != UTF8PROC_BOUNDCLASS_CONTROL) return {};
  char label[16];
  std::snprintf(label, sizeof label, "U+%04X", static_cast<unsigned>(c));
  return label;
}

}   // namespace text
