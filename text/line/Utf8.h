// UTF-8, inline: validity of a sequence, its code point, and encoding. Used by the whole engine.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace text {

// The length (1 to 4) of the valid UTF-8 sequence at p; 0 when the first byte is bad; -1 when the bytes up to `end` could
// be the beginning of one. Overlong forms and code points beyond U+10FFFF are bad; so are surrogates unless allowed.
inline int utf8Sequence(const char* p, const char* end, bool surrogates = false) {
  const auto byte = [&](int i) { return static_cast<unsigned char>(p[i]); };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (first < 0xc2 || first > 0xf4) return 0;
  const int length = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
  for (int i = 1; i < length; ++i) {
    if (p + i == end) return -1;
    unsigned low = 0x80, high = 0xbf;
    if (i == 1) {
      if (first == 0xe0) low = 0xa0;
      if (first == 0xed && !surrogates) high = 0x9f;
      if (first == 0xf0) low = 0x90;
      if (first == 0xf4) high = 0x8f;
    }
    if (byte(i) < low || byte(i) > high) return 0;
  }
  return length;
}

// The code point of a sequence that utf8Sequence found valid.
inline char32_t utf8Code(std::string_view sequence) {
  const auto byte = [&](std::size_t i) { return static_cast<char32_t>(static_cast<unsigned char>(sequence[i])); };
  switch (sequence.size()) {
    case 1: return byte(0);
    case 2: return (byte(0) & 0x1f) << 6 | (byte(1) & 0x3f);
    case 3: return (byte(0) & 0x0f) << 12 | (byte(1) & 0x3f) << 6 | (byte(2) & 0x3f);
    default: return (byte(0) & 0x07) << 18 | (byte(1) & 0x3f) << 12 | (byte(2) & 0x3f) << 6 | (byte(3) & 0x3f);
  }
}

// The code point of a valid sequence of one to three bytes at p, for loops over very many; 0 for all else (NUL too).
inline char32_t utf8Quick(const char* p, std::size_t left, int* length) {
  const auto byte = [&](int i) { return static_cast<char32_t>(static_cast<unsigned char>(p[i])); };
  const auto goesOn = [&](int i) { return (byte(i) & 0xc0) == 0x80; };
  const char32_t first = byte(0);
  if (first < 0x80) return *length = 1, first;
  if (first >= 0xc2 && first < 0xe0 && left >= 2 && goesOn(1)) return *length = 2, (first & 0x1f) << 6 | (byte(1) & 0x3f);
  if (first < 0xe0 || first > 0xef || left < 3 || !goesOn(1) || !goesOn(2)) return 0;
  const char32_t code = (first & 0x0f) << 12 | (byte(1) & 0x3f) << 6 | (byte(2) & 0x3f);
  return code < 0x800 || (code >= 0xd800 && code < 0xe000) ? 0 : (*length = 3, code);
}

inline void appendUtf8(char32_t code, std::string* out) {
  const auto put = [&](char32_t b) { out->push_back(static_cast<char>(b)); };
  if (code < 0x80) return put(code);
  if (code < 0x800) return put(0xc0 | code >> 6), put(0x80 | (code & 0x3f));
  if (code < 0x10000) return put(0xe0 | code >> 12), put(0x80 | (code >> 6 & 0x3f)), put(0x80 | (code & 0x3f));
  put(0xf0 | code >> 18), put(0x80 | (code >> 12 & 0x3f)), put(0x80 | (code >> 6 & 0x3f)), put(0x80 | (code & 0x3f));
}

// The first byte >= 0x80 in [p, end); end if there is none.
inline const char* endOfAscii(const char* p, const char* end) {
  constexpr std::uint64_t highBits = 0x8080808080808080;
  const auto word = [](const char* at) {
    std::uint64_t w;
    std::memcpy(&w, at, sizeof w);
    return w;
  };
  while (end - p >= 32 && ((word(p) | word(p + 8) | word(p + 16) | word(p + 24)) & highBits) == 0) p += 32;
  while (p != end && static_cast<unsigned char>(*p) < 0x80) ++p;
  return p;
}

}   // namespace text
