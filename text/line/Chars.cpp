#include "text/line/Chars.h"

#include <algorithm>

#include "text/line/Segments.h"
#include "text/line/Utf8.h"

namespace text {

namespace {

unsigned char at(std::string_view s, std::size_t i) { return static_cast<unsigned char>(s[i]); }
bool continues(unsigned char b) { return (b & 0xC0) == 0x80; }

int sequenceLength(std::string_view s) { return std::max(utf8Sequence(s.data(), s.data() + s.size()), 0); }

// The length of the run of ASCII bytes at the start.
std::size_t asciiRun(std::string_view s) { return static_cast<std::size_t>(endOfAscii(s.data(), s.data() + s.size()) - s.data()); }

}   // namespace

Char decode(std::string_view bytes) {
  if (bytes.empty()) return {};
  const unsigned char lead = at(bytes, 0);
  if (lead < 0x80) return {lead, 1, false};
  int length = 0;
  if (const char32_t code = utf8Quick(bytes.data(), bytes.size(), &length); code != 0) return {code, length, false};
  length = sequenceLength(bytes);
  if (length == 0) return {lead, 1, true};
  return {utf8Code(bytes.substr(0, static_cast<std::size_t>(length))), length, false};
}

Char decodeLast(std::string_view bytes) {
  if (bytes.empty()) return {};
  // In a valid sequence only the first byte is not a continuation byte: no other start can reach the end.
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

int utf16Length(const Char& c) { return c.code > 0xFFFF ? 2 : 1; }

// The run of characters of two and three bytes at the start, at most `most` characters: its bytes and their number.
static std::pair<std::size_t, std::int64_t> shortRun(std::string_view s, std::int64_t most) {
  std::size_t i = 0;
  std::int64_t count = 0;
  for (int length = 0; count < most && i < s.size() && at(s, i) >= 0x80; i += static_cast<std::size_t>(length), ++count)
    if (utf8Quick(s.data() + i, s.size() - i, &length) == 0) break;
  return {i, count};
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
    if (const auto [run, count] = shortRun(line.substr(i, end - i), static_cast<std::int64_t>(line.size())); run > 0) {
      column += count;
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
    const auto part =
        line.substr(i, static_cast<std::size_t>(std::min<std::int64_t>(left, static_cast<std::int64_t>(line.size()))));
    if (const std::size_t run = asciiRun(part); run > 0) {
      left -= static_cast<std::int64_t>(run);
      i += run;
      continue;
    }
    if (const auto [run, count] = shortRun(line.substr(i), left); run > 0) {
      left -= count;
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

DisplayColumn displayColumn(std::string_view line, std::int64_t byte, int tabSize) {
  return DisplayColumn(static_cast<std::int64_t>(walk(line, true, {}, LinePlace::atByte(byte), tabSize).x));
}

std::int64_t byteOfDisplay(std::string_view line, DisplayColumn target, int tabSize) {
  return walk(line, true, {}, LinePlace::atX(static_cast<double>(target.value)), tabSize).byte;
}

bool isAscii(std::string_view bytes) { return asciiRun(bytes) == bytes.size(); }

bool validUtf8(std::string_view bytes) {
  std::size_t i = 0;
  while (i < bytes.size()) {
    const unsigned char lead = at(bytes, i);
    if (lead < 0x80) {
      // Long runs in blocks; single blanks between other letters are skipped at once.
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

}   // namespace text
