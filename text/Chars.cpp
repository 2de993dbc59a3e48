#include "text/Chars.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "text/CharTables.h"
#include "text/Utf8.h"

namespace text {

namespace {

unsigned char at(std::string_view s, std::size_t i) { return static_cast<unsigned char>(s[i]); }
bool continues(unsigned char b) { return (b & 0xC0) == 0x80; }

int sequenceLength(std::string_view s) { return std::max(utf8Sequence(s.data(), s.data() + s.size()), 0); }

constexpr std::uint64_t highBits = 0x8080808080808080u;

std::uint64_t word(const char* p) {
  std::uint64_t w;
  std::memcpy(&w, p, 8);
  return w;
}

// The length of the run of ASCII bytes at the start.
std::size_t asciiRun(std::string_view s) {
  return static_cast<std::size_t>(endOfAscii(s.data(), s.data() + s.size()) - s.data());
}

// The same without tabs: each of these bytes takes one cell.
std::size_t plainRun(std::string_view s) {
  constexpr std::uint64_t ones = 0x0101010101010101u;
  std::size_t i = 0;
  for (; i + 8 <= s.size(); i += 8) {
    const std::uint64_t w = word(s.data() + i), tabs = w ^ (ones * '\t');
    if ((w | ((tabs - ones) & ~tabs)) & highBits) break;
  }
  while (i < s.size() && at(s, i) < 0x80 && s[i] != '\t') ++i;
  return i;
}

enum class Cluster : unsigned char { other, cr, lf, control, extend, joiner, regional, pictograph, hangulL, hangulV, hangulT, hangulLV, hangulLVT };

Cluster clusterClass(const Char& c) {
  if (c.bad) return Cluster::other;
  const char32_t u = c.code;
  if (u < 0x300) {
    if (u == '\r') return Cluster::cr;
    if (u == '\n') return Cluster::lf;
    if (u < 0x20 || (u >= 0x7F && u < 0xA0)) return Cluster::control;
    return u == 0xA9 || u == 0xAE ? Cluster::pictograph : Cluster::other;
  }
  if (u == 0x200D) return Cluster::joiner;
  if (u >= 0x1F1E6 && u <= 0x1F1FF) return Cluster::regional;
  if (u >= 0x1100 && u <= 0xD7FB) {
    if (u <= 0x115F || (u >= 0xA960 && u <= 0xA97C)) return Cluster::hangulL;
    if (u <= 0x11A7 || (u >= 0xD7B0 && u <= 0xD7C6)) return Cluster::hangulV;
    if (u <= 0x11FF || u >= 0xD7CB) return Cluster::hangulT;
    if (u >= 0xAC00 && u <= 0xD7A3) return (u - 0xAC00) % 28 == 0 ? Cluster::hangulLV : Cluster::hangulLVT;
  }
  if (contains(extendingChars, u)) return Cluster::extend;
  if (u >= 0x2028 && u <= 0x202E) return Cluster::control;
  return contains(pictographs, u) ? Cluster::pictograph : Cluster::other;
}

// Whether two neighbours belong together. Two classes need to know more than the neighbour: `regionals` is the number
// of regional letters up to and with `a`, `emoji` tells that `a` is a joiner behind a pictograph.
bool joined(Cluster a, Cluster b, int regionals, bool emoji) {
  using enum Cluster;
  if (a == cr) return b == lf;
  if (a == lf || a == control || b == cr || b == lf || b == control) return false;
  if (b == extend || b == joiner) return true;
  if (a == joiner) return emoji && b == pictograph;
  if (a == regional) return b == regional && regionals % 2 == 1;
  if (a == hangulL) return b == hangulL || b == hangulV || b == hangulLV || b == hangulLVT;
  if (a == hangulV || a == hangulLV) return b == hangulV || b == hangulT;
  return (a == hangulT || a == hangulLVT) && b == hangulT;
}

}  // namespace

bool contains(std::span<const CharRange> table, char32_t code) {
  const auto it = std::upper_bound(table.begin(), table.end(), code, [](char32_t c, const CharRange& r) { return c < r.first; });
  return it != table.begin() && code <= (it - 1)->last;
}

static char32_t mapped(std::span<const CaseRange> table, char32_t code) {
  const auto it = std::upper_bound(table.begin(), table.end(), code, [](char32_t c, const CaseRange& r) { return c < r.first; });
  if (it == table.begin()) return code;
  const CaseRange& r = *(it - 1);
  if (code > r.last || (code - r.first) % static_cast<char32_t>(r.stride)) return code;
  return static_cast<char32_t>(static_cast<std::int64_t>(code) + r.delta);
}

// The letters of most alphabets, looked up at once.
struct FoldedLetters {
  static constexpr char32_t end = 0x600;
  std::array<char16_t, end> of{};
  FoldedLetters() {
    for (char32_t c = 0; c < end; ++c) {
      const char32_t f = toLower(toUpper(c));
      of[c] = static_cast<char16_t>(f);
    }
  }
};

char32_t fold(char32_t code) {
  static const FoldedLetters letters;
  return code < FoldedLetters::end ? letters.of[code] : toLower(toUpper(code));
}

char32_t toUpper(char32_t code) {
  if (code < 0x80) return code >= 'a' && code <= 'z' ? code - 32 : code;
  return mapped(upperCase, code);
}

char32_t toLower(char32_t code) {
  if (code < 0x80) return code >= 'A' && code <= 'Z' ? code + 32 : code;
  return mapped(lowerCase, code);
}

Char decode(std::string_view bytes) {
  if (bytes.empty()) return {};
  const unsigned char lead = at(bytes, 0);
  if (lead < 0x80) return {lead, 1, false};
  const int length = sequenceLength(bytes);
  if (length == 0) return {lead, 1, true};
  return {utf8Code(bytes.substr(0, static_cast<std::size_t>(length))), length, false};
}

Char decodeLast(std::string_view bytes) {
  if (bytes.empty()) return {};
  // A valid sequence begins at its only byte that is not a continuation: no other start can reach to the end.
  std::size_t length = 1;
  while (length < 4 && length < bytes.size() && continues(at(bytes, bytes.size() - length))) ++length;
  const Char c = decode(bytes.substr(bytes.size() - length));
  if (static_cast<std::size_t>(c.bytes) == length) return c;
  return {at(bytes, bytes.size() - 1), 1, true};
}

std::string encode(char32_t c) {
  std::string out;
  appendUtf8(c, &out);
  return out;
}

int cells(char32_t code) {
  if (code < 0x300) return 1;
  if (contains(zeroWidthChars, code)) return 0;
  return contains(wideChars, code) ? 2 : 1;
}

int utf16Length(const Char& c) { return c.code > 0xFFFF ? 2 : 1; }

int clusterLength(std::string_view bytes) {
  // Most texts are ASCII: there only CR LF is a pair, unless something that extends follows.
  if (bytes.size() > 1 && at(bytes, 0) < 0x80 && at(bytes, 1) < 0x80) return bytes[0] == '\r' && bytes[1] == '\n' ? 2 : 1;
  const Char first = decode(bytes);
  Cluster before = clusterClass(first);
  int length = first.bytes, regionals = before == Cluster::regional;
  bool pictograph = before == Cluster::pictograph, emoji = false;
  while (length > 0 && static_cast<std::size_t>(length) < bytes.size()) {
    const Char c = decode(bytes.substr(static_cast<std::size_t>(length)));
    const Cluster next = clusterClass(c);
    if (!joined(before, next, regionals, emoji) || length + c.bytes > maxClusterBytes) break;
    emoji = next == Cluster::joiner && pictograph;
    if (next == Cluster::pictograph) pictograph = true;
    else if (next != Cluster::extend && next != Cluster::joiner) pictograph = false;
    regionals += next == Cluster::regional;
    before = next;
    length += c.bytes;
  }
  return length;
}

int clusterLengthBefore(std::string_view bytes) {
  const Char last = decodeLast(bytes);
  if (last.bytes == 0) return 0;
  if (last.bytes == 1 && last.code < 0x80)
    return last.code == '\n' && bytes.size() > 1 && bytes[bytes.size() - 2] == '\r' ? 2 : 1;
  // Back to a place where a cluster certainly ends, whatever stands before it, then forward again.
  std::size_t start = bytes.size() - static_cast<std::size_t>(last.bytes);
  Cluster next = clusterClass(last);
  while (start > 0 && bytes.size() - start <= maxClusterBytes) {
    const Char c = decodeLast(bytes.substr(0, start));
    const Cluster cls = clusterClass(c);
    if (!joined(cls, next, 1, true)) break;
    start -= static_cast<std::size_t>(c.bytes);
    next = cls;
  }
  for (;;) {
    const auto length = static_cast<std::size_t>(clusterLength(bytes.substr(start)));
    if (start + length >= bytes.size()) return static_cast<int>(bytes.size() - start);
    start += length;
  }
}

CharColumn columnOf(std::string_view line, std::int64_t byte) {
  const auto end = static_cast<std::size_t>(std::clamp<std::int64_t>(byte, 0, static_cast<std::int64_t>(line.size())));
  std::int64_t column = 0;
  for (std::size_t i = 0; i < end;) {
    if (const std::size_t run = asciiRun(line.substr(i, end - i)); run > 0) {
      column += static_cast<std::int64_t>(run);
      i += run;
      continue;
    }
    const Char c = decode(line.substr(i));
    if (i + static_cast<std::size_t>(c.bytes) > end) break;   // inside this character: its start
    column += utf16Length(c);
    i += static_cast<std::size_t>(c.bytes);
  }
  return CharColumn(column);
}

std::int64_t byteOfColumn(std::string_view line, CharColumn column) {
  std::int64_t left = std::max<std::int64_t>(column.value, 0);
  std::size_t i = 0;
  while (i < line.size() && left > 0) {
    const auto part = line.substr(i, static_cast<std::size_t>(std::min<std::int64_t>(left, static_cast<std::int64_t>(line.size()))));
    if (const std::size_t run = asciiRun(part); run > 0) {
      left -= static_cast<std::int64_t>(run);
      i += run;
      continue;
    }
    const Char c = decode(line.substr(i));
    if (utf16Length(c) > left) break;   // between the two units of one character: its start
    left -= utf16Length(c);
    i += static_cast<std::size_t>(c.bytes);
  }
  return static_cast<std::int64_t>(i);
}

static std::int64_t cellsOf(const Char& c, std::int64_t column, int tabSize) {
  if (c.bad) return badByteCells;
  if (c.code == '\t') return tabSize - column % tabSize;
  return cells(c.code);
}

DisplayColumn displayColumn(std::string_view line, std::int64_t byte, int tabSize) {
  tabSize = std::max(tabSize, 1);
  const auto end = static_cast<std::size_t>(std::clamp<std::int64_t>(byte, 0, static_cast<std::int64_t>(line.size())));
  std::int64_t column = 0;
  for (std::size_t i = 0; i < end;) {
    if (const std::size_t run = plainRun(line.substr(i, end - i)); run > 0) {
      column += static_cast<std::int64_t>(run);
      i += run;
      continue;
    }
    const Char c = decode(line.substr(i));
    if (i + static_cast<std::size_t>(c.bytes) > end) break;
    column += cellsOf(c, column, tabSize);
    i += static_cast<std::size_t>(c.bytes);
  }
  return DisplayColumn(column);
}

std::int64_t byteOfDisplay(std::string_view line, DisplayColumn target, int tabSize) {
  tabSize = std::max(tabSize, 1);
  std::int64_t column = 0;
  std::size_t i = 0;
  while (i < line.size() && column <= target.value) {
    const auto most = static_cast<std::size_t>(std::min<std::int64_t>(target.value - column, static_cast<std::int64_t>(line.size())));
    if (const std::size_t run = plainRun(line.substr(i, most)); run > 0) {
      column += static_cast<std::int64_t>(run);
      i += run;
      continue;
    }
    const Char c = decode(line.substr(i));
    const std::int64_t width = cellsOf(c, column, tabSize);
    if (column + width > target.value) break;
    column += width;
    i += static_cast<std::size_t>(c.bytes);
  }
  return static_cast<std::int64_t>(i);
}

bool isAscii(std::string_view bytes) { return asciiRun(bytes) == bytes.size(); }

bool validUtf8(std::string_view bytes) {
  std::size_t i = 0;
  while (i < bytes.size()) {
    const unsigned char lead = at(bytes, i);
    if (lead < 0x80) {
      // Long runs by blocks; a single blank between other letters is passed at once.
      i += i + 1 < bytes.size() && at(bytes, i + 1) >= 0x80 ? 1 : asciiRun(bytes.substr(i));
    } else if (lead >= 0xC2 && lead < 0xE0 && i + 1 < bytes.size() && continues(at(bytes, i + 1))) {
      i += 2;
    } else {
      const int length = sequenceLength(bytes.substr(i));
      if (length == 0) return false;
      i += static_cast<std::size_t>(length);
    }
  }
  return true;
}

}  // namespace text
