// Unicode properties of code points, for Chars, Words and Search. Internal to the engine.
#pragma once

#include <vector>

namespace text {

// For code points from U+0080 on.
bool isWordChar(char32_t code);   // letters, digits, marks
bool isBlankChar(char32_t code);
bool isExtending(char32_t code);   // belongs to the previous character: marks, and the emoji joiner

// Simple (one to one) case mappings, also for ASCII. No mapping between ASCII and other letters.
char32_t toUpper(char32_t code);
char32_t toLower(char32_t code);
// The representative of all letters that differ only in case.
char32_t fold(char32_t code);
std::vector<char32_t> lettersThatFoldTo(char32_t folded);   // beyond ASCII, `folded` too

}   // namespace text
