// Encodings of files. Inside the editor a text is bytes (UTF-8, bad bytes kept); a file of another encoding is converted on
// load and back on save. An encoding is taken only if the way back gives exactly the bytes that were read.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace text {

// The numbers are stored in recovery journals: never renumber, add new ones at the end. Their order has no meaning.
enum class Encoding : unsigned char {
  utf8 = 0,
  utf16le = 1,
  utf16be = 2,
  windows1252 = 3,
  latin1 = 4,
  iso8859_15 = 5,
  windows1250 = 6,
  iso8859_2 = 7,
  windows1251 = 8,
  koi8r = 9,
  cp437 = 10
};

struct FileFormat {
  Encoding encoding = Encoding::utf8;
  bool bom = false;
  bool operator==(const FileFormat&) const = default;
};

const char* name(Encoding encoding);                              // "UTF-8", "Windows-1252" ...
std::optional<Encoding> encodingByNumber(std::uint64_t number);   // as stored
bool isUnicode(Encoding encoding);                                // has a byte order mark; else one byte for each character
std::vector<Encoding> encodings();                                // all, in the order for menus

// What the bytes of a file are: BOM, valid UTF-8 (a few bad bytes among valid multi-byte sequences stay UTF-8), UTF-16
// pattern (also without BOM), else `fallback` (an 8-bit encoding). The encoding it gives always decodes these bytes exactly.
FileFormat detectFormat(std::string_view bytes, Encoding fallback = Encoding::windows1252);

// Bytes of a file (BOM taken off when format.bom) to the editor's bytes; nullopt when the way back would not be exact.
std::optional<std::string> decodeText(std::string_view fileBytes, FileFormat format);

struct EncodeError {
  long long offset = 0;   // of the first character that does not fit, in the editor's bytes
  char32_t code = 0;      // its code point; of a byte that is not valid UTF-8 the byte
};
// The editor's bytes to those of a file, BOM included. On failure nullopt and *error.
std::optional<std::string> encodeText(std::string_view bytes, FileFormat format, EncodeError* error);

}   // namespace text
