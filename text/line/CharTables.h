// What the Unicode database says of a code point, as Chars, Words and Search need it. Inside the engine only.
#pragma once

#include <vector>

namespace text {

// For code points from U+0080 on.
bool isWordChar(char32_t code);   // letters, digits, marks
bool isBlankChar(char32_t code);
bool isExtending(char32_t code);   // belongs to the character before it: marks, and the joiner of pictures

// Simple (one to one) case mappings; ASCII included. A letter beyond ASCII never maps into ASCII or back.
char32_t toUpper(char32_t code);
char32_t toLower(char32_t code);
// The representative of all letters that differ in case only.
char32_t fold(char32_t code);
std::vector<char32_t> lettersThatFoldTo(char32_t folded);   // beyond ASCII, `folded` too

}   // namespace text
