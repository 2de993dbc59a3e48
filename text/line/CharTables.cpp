#include "text/line/CharTables.h"

#include <utf8proc.h>

#include <array>
#include <unordered_map>

namespace text {

namespace {

const utf8proc_property_t& property(char32_t code) { return *utf8proc_get_property(static_cast<utf8proc_int32_t>(code)); }

// The letters of most alphabets, in a table.
struct FoldedLetters {
  static constexpr char32_t end = 0x600;
  std::array<char16_t, end> of{};
  FoldedLetters() {
    for (char32_t c = 0; c < end; ++c) of[c] = static_cast<char16_t>(toLower(toUpper(c)));
  }
};

}   // namespace

bool isWordChar(char32_t code) {
  const auto category = property(code).category;
  return category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_NO;
}

bool isBlankChar(char32_t code) {
  const auto category = property(code).category;
  return code == 0x85 || (category >= UTF8PROC_CATEGORY_ZS && category <= UTF8PROC_CATEGORY_ZP);
}

bool isExtending(char32_t code) {
  if (code < 0x300) return false;
  const auto kind = property(code).boundclass;
  return kind == UTF8PROC_BOUNDCLASS_EXTEND || kind == UTF8PROC_BOUNDCLASS_SPACINGMARK || kind == UTF8PROC_BOUNDCLASS_ZWJ;
}

char32_t toUpper(char32_t code) {
  if (code < 0x80) return code >= 'a' && code <= 'z' ? code - 32 : code;
  if (code == 0xDF) return code;   // its capital is a different letter
  const auto upper = static_cast<char32_t>(utf8proc_toupper(static_cast<utf8proc_int32_t>(code)));
  return upper < 0x80 ? code : upper;
}

char32_t toLower(char32_t code) {
  if (code < 0x80) return code >= 'A' && code <= 'Z' ? code + 32 : code;
  const auto lower = static_cast<char32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(code)));
  return lower < 0x80 ? code : lower;
}

char32_t fold(char32_t code) {
  static const FoldedLetters letters;
  return code < FoldedLetters::end ? letters.of[code] : toLower(toUpper(code));
}

std::vector<char32_t> lettersThatFoldTo(char32_t folded) {
  static const auto all = [] {
    std::unordered_multimap<char32_t, char32_t> map;
    constexpr char32_t behindTheLastAlphabetWithCase = 0x20000;
    for (char32_t c = 0x80; c < behindTheLastAlphabetWithCase; ++c)
      if (const char32_t f = fold(c); f != c) map.emplace(f, c);
    return map;
  }();
  std::vector<char32_t> letters{folded};
  const auto [begin, end] = all.equal_range(folded);
  for (auto it = begin; it != end; ++it) letters.push_back(it->second);
  return letters;
}

}   // namespace text
