// Detects, decodes and encodes texts that arrive in parts, so that a large file is not copied as a whole. Encoding.h's functions
// for whole texts use these.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "text/file/Encoding.h"
#include "text/line/Utf8Stream.h"

namespace text {

// The byte order mark of an encoding; empty if it has none.
std::string_view byteOrderMark(Encoding encoding);

// Sees all bytes of a file in order; result() then tells their format.
class FormatDetector {
 public:
  void add(std::string_view bytes);
  FileFormat result(Encoding fallback);   // after the last byte; call once

 private:
  std::string head_;   // the first bytes, at most kSample
  std::int64_t length_ = 0;
  Utf8Stream stream_;
  struct Count {
    std::int64_t sequences = 0, badRuns = 0;
    bool inBad = false;
    bool ascii(std::string_view) { return inBad = false, true; }
    bool sequence(std::string_view) { return inBad = false, ++sequences, true; }
    bool bad(unsigned char) {
      badRuns += !inBad;
      return inBad = true;
    }
  } count_;
};

// Converts the bytes of a file, without byte order mark, to the editor's bytes.
class Decoder {
 public:
  explicit Decoder(Encoding encoding) : encoding_(encoding) {}
  void add(std::string_view bytes, std::string* out);
  bool finish(std::string* out);   // false: the conversion back would not be exact (half a UTF-16 unit at the end)

 private:
  void unit(char32_t unit, std::string* out);
  Encoding encoding_;
  int half_ = -1;       // first byte of an incomplete UTF-16 unit
  char32_t high_ = 0;   // a high surrogate whose low one has not come yet
};

// Converts the editor's bytes to those of a file; the byte order mark comes with the first part.
class Encoder {
 public:
  explicit Encoder(FileFormat format);
  bool add(std::string_view bytes, std::string* out, EncodeError* error);   // false: a character does not fit
  bool finish(std::string* out, EncodeError* error);

 private:
  struct Visitor;
  FileFormat format_;
  Utf8Stream stream_;
  long long offset_ = 0;
  bool started_ = false;
  bool begin(std::string* out);
};

}   // namespace text
