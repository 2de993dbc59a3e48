// Characters in bytes: decoding (invalid bytes are kept), columns, cells, classes of words.
//
// A character is a valid UTF-8 sequence or one invalid byte (shown as hex). Nothing here fails: every byte string is a text.
#pragma once

#include <string>
#include <string_view>

#include "text/store/Units.h"

namespace text {

struct Char {
  char32_t code = 0;   // the code point; for a bad byte the byte itself with bad == true
  int bytes = 0;       // 1 to 4; 0 only at the end of the text
  bool bad = false;    // not valid UTF-8
};

Char decode(std::string_view bytes);       // the first character
Char decodeLast(std::string_view bytes);   // the last one
std::string encode(char32_t code);         // in UTF-8; precondition: a code point
int cells(char32_t code);                  // of the character alone: 0 combining and invisible, 1, or 2 wide (see Segments.h)
int utf16Length(const Char& c);            // 2 beyond U+FFFF, else 1
// Length in bytes of the segment (see Segments.h) or CR LF that starts or ends there.
int clusterLength(std::string_view bytes);
int clusterLengthBefore(std::string_view bytes);

// Columns within one line (without its break). A column past the end gives the end; a place inside a segment its start.
CharColumn columnOf(std::string_view line, std::int64_t byte);
std::int64_t byteOfColumn(std::string_view line, CharColumn column);
DisplayColumn displayColumn(std::string_view line, std::int64_t byte, int tabSize);
// The last segment boundary whose display column is <= column.
std::int64_t byteOfDisplay(std::string_view line, DisplayColumn column, int tabSize);

bool validUtf8(std::string_view bytes);
bool isAscii(std::string_view bytes);

}   // namespace text
