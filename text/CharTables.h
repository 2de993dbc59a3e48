// Tables of the Unicode classes that Chars, Words and Search need, for code points from U+0080 on. Inside the engine only.
#pragma once

#include <span>

namespace text {

struct CharRange {
  char32_t first, last;   // inclusive
};

// Every stride-th code point from first to last maps to itself + delta.
struct CaseRange {
  char32_t first, last;
  int stride, delta;
};

extern const std::span<const CharRange> wideChars, zeroWidthChars, wordChars, blankChars, extendingChars, pictographs;
extern const std::span<const CaseRange> upperCase, lowerCase;

bool contains(std::span<const CharRange> table, char32_t code);

// Simple (one to one) case mappings; ASCII included. A letter beyond ASCII never maps into ASCII or back.
char32_t toUpper(char32_t code);
char32_t toLower(char32_t code);
// The representative of all letters that differ in case only.
char32_t fold(char32_t code);

}  // namespace text
