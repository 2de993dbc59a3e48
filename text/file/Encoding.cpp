#include "text/file/Encoding.h"

#include <algorithm>
#include <array>
#include <vector>

#include "text/file/EncodingStreams.h"
#include "text/file/EncodingTables.h"

namespace text {
namespace {

struct Row {
  Encoding encoding;
  const char* name;
  std::string_view mark;       // byte order mark
  const char16_t* upperHalf;   // of an 8-bit encoding; null: the bytes are the code points
};
constexpr Row kRows[] = {
    // in the order for menus
    {Encoding::utf8, "UTF-8", "\xef\xbb\xbf", nullptr},
    {Encoding::utf16le, "UTF-16LE", "\xff\xfe", nullptr},
    {Encoding::utf16be, "UTF-16BE", "\xfe\xff", nullptr},
    {Encoding::windows1252, "Windows-1252", {}, kWindows1252},
    {Encoding::latin1, "ISO-8859-1", {}, nullptr},
    {Encoding::iso8859_15, "ISO-8859-15", {}, kIso8859_15},
    {Encoding::windows1250, "Windows-1250", {}, kWindows1250},
    {Encoding::iso8859_2, "ISO-8859-2", {}, kIso8859_2},
    {Encoding::windows1251, "Windows-1251", {}, kWindows1251},
    {Encoding::koi8r, "KOI8-R", {}, kKoi8r},
    {Encoding::cp437, "CP437", {}, kCp437},
};

const Row& rowOf(Encoding encoding) {
  return *std::find_if(std::begin(kRows), std::end(kRows) - 1, [&](const Row& r) { return r.encoding == encoding; });
}

bool isUtf16(Encoding encoding) { return encoding == Encoding::utf16le || encoding == Encoding::utf16be; }

constexpr std::size_t kSample = 64 * 1024;

// Whether these bytes look like UTF-16 of one byte order: zero bytes on one side only, blanks or line ends among them, paired
// surrogates, and hardly any control characters.
bool looksLikeUtf16(std::string_view bytes, bool big) {
  std::int64_t units = 0, zeros = 0, otherZeros = 0, blanks = 0, controls = 0;
  bool high = false;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2, ++units) {
    const unsigned upper = static_cast<unsigned char>(bytes[i + (big ? 0 : 1)]);
    const unsigned lower = static_cast<unsigned char>(bytes[i + (big ? 1 : 0)]);
    const unsigned unit = upper << 8 | lower;
    const bool low = unit >= 0xdc00 && unit < 0xe000;
    if (high != low) return false;
    high = unit >= 0xd800 && unit < 0xdc00;
    zeros += upper == 0;
    otherZeros += lower == 0;
    const bool blank = unit == ' ' || (unit >= '\t' && unit <= '\r');
    blanks += blank;
    controls += unit < 0x20 && !blank;
  }
  if (units < 4 || controls * 20 > units || otherZeros * 8 > zeros) return false;
  return zeros * 10 >= units * 7 || (zeros * 8 >= units && blanks > 0);
}

// Code points to bytes of one 8-bit encoding, ascending by code point.
using Reverse = std::array<std::pair<char16_t, unsigned char>, 128>;
const Reverse& reverseOf(const Row& row) {
  static const auto all = [] {
    std::array<Reverse, std::size(kRows)> made{};
    for (std::size_t r = 0; r < std::size(kRows); ++r) {
      for (unsigned i = 0; i < 128; ++i)
        made[r][i] = {kRows[r].upperHalf ? kRows[r].upperHalf[i] : static_cast<char16_t>(0x80 + i),
                      static_cast<unsigned char>(0x80 + i)};
      std::sort(made[r].begin(), made[r].end());
    }
    return made;
  }();
  return all[static_cast<std::size_t>(&row - kRows)];
}

}   // namespace

const char* name(Encoding encoding) { return rowOf(encoding).name; }

std::optional<Encoding> encodingByNumber(std::uint64_t number) {
  for (const auto& row : kRows)
    if (static_cast<std::uint64_t>(row.encoding) == number) return row.encoding;
  return std::nullopt;
}

bool isUnicode(Encoding encoding) { return !rowOf(encoding).mark.empty(); }

std::vector<Encoding> encodings() {
  std::vector<Encoding> all;
  for (const auto& row : kRows) all.push_back(row.encoding);
  return all;
}

std::string_view byteOrderMark(Encoding encoding) { return rowOf(encoding).mark; }

void FormatDetector::add(std::string_view bytes) {
  if (head_.size() < kSample) head_.append(bytes.substr(0, kSample - head_.size()));
  length_ += static_cast<std::int64_t>(bytes.size());
  stream_.add(bytes, count_);
}

FileFormat FormatDetector::result(Encoding fallback) {
  // Among complete characters, a last one cut by the end of the file counts as complete.
  if (count_.sequences == 0) stream_.finish(count_);
  for (const auto encoding : {Encoding::utf8, Encoding::utf16le, Encoding::utf16be})
    if (head_.starts_with(byteOrderMark(encoding)) && (!isUtf16(encoding) || length_ % 2 == 0)) return {encoding, true};
  if (length_ % 2 == 0 && head_.find('\0') != std::string::npos) {   // no text without zero bytes looks so
    if (looksLikeUtf16(head_, false)) return {Encoding::utf16le, false};
    if (looksLikeUtf16(head_, true)) return {Encoding::utf16be, false};
  }
  if (count_.sequences >= count_.badRuns) return {Encoding::utf8, false};
  return {fallback, false};
}

void Decoder::unit(char32_t u, std::string* out) {
  const bool low = u >= 0xdc00 && u < 0xe000;
  if (high_ != 0) {
    if (low) {
      appendUtf8(0x10000 + ((high_ - 0xd800) << 10) + (u - 0xdc00), out);
      high_ = 0;
      return;
    }
    appendUtf8(high_, out);
    high_ = 0;
  }
  if (u >= 0xd800 && u < 0xdc00) high_ = u;
  else appendUtf8(u, out);   // an unpaired surrogate is kept as three bytes, which are not valid UTF-8
}

void Decoder::add(std::string_view bytes, std::string* out) {
  if (encoding_ == Encoding::utf8) {
    out->append(bytes);
    return;
  }
  if (isUtf16(encoding_)) {
    const bool big = encoding_ == Encoding::utf16be;
    for (const char c : bytes) {
      const int byte = static_cast<unsigned char>(c);
      if (half_ < 0) {
        half_ = byte;
        continue;
      }
      const int u = big ? half_ << 8 | byte : byte << 8 | half_;
      half_ = -1;
      unit(static_cast<char32_t>(u), out);
    }
    return;
  }
  const char16_t* const table = rowOf(encoding_).upperHalf;
  const char* p = bytes.data();
  const char* const end = p + bytes.size();
  while (p != end) {
    const char* const high = endOfAscii(p, end);
    out->append(p, high);
    for (p = high; p != end && static_cast<unsigned char>(*p) >= 0x80; ++p) {
      const unsigned byte = static_cast<unsigned char>(*p);
      appendUtf8(table ? table[byte - 0x80] : static_cast<char32_t>(byte), out);
    }
  }
}

bool Decoder::finish(std::string* out) {
  if (high_ != 0) appendUtf8(high_, out);
  high_ = 0;
  return half_ < 0;
}

struct Encoder::Visitor {
  Encoder& encoder;
  std::string* out;
  EncodeError* error;

  bool misfit(char32_t code) {
    if (error) *error = {encoder.offset_, code};
    return false;
  }
  void putUnit(char32_t u) {
    const char upper = static_cast<char>(u >> 8), lower = static_cast<char>(u & 0xff);
    const bool big = encoder.format_.encoding == Encoding::utf16be;
    out->push_back(big ? upper : lower);
    out->push_back(big ? lower : upper);
  }
  bool ascii(std::string_view run) {
    if (isUtf16(encoder.format_.encoding))
      for (const char c : run) putUnit(static_cast<unsigned char>(c));
    else out->append(run);
    encoder.offset_ += static_cast<long long>(run.size());
    return true;
  }
  bool sequence(std::string_view bytes) {
    const char32_t code = utf8Code(bytes);
    if (isUtf16(encoder.format_.encoding)) {
      if (code >= 0x10000) {
        putUnit(0xd800 + ((code - 0x10000) >> 10));
        putUnit(0xdc00 + ((code - 0x10000) & 0x3ff));
      } else {
        putUnit(code);
      }
    } else {
      const auto& reverse = reverseOf(rowOf(encoder.format_.encoding));
      const auto it =
          std::lower_bound(reverse.begin(), reverse.end(), code, [](const auto& entry, char32_t c) { return entry.first < c; });
      if (it == reverse.end() || it->first != code) return misfit(code);
      out->push_back(static_cast<char>(it->second));
    }
    encoder.offset_ += static_cast<long long>(bytes.size());
    return true;
  }
  bool bad(unsigned char byte) { return misfit(byte); }
};

Encoder::Encoder(FileFormat format) : format_(format), stream_(isUtf16(format.encoding)) {}

bool Encoder::begin(std::string* out) {
  if (!started_ && format_.bom) out->append(byteOrderMark(format_.encoding));
  return started_ = true;
}

bool Encoder::add(std::string_view bytes, std::string* out, EncodeError* error) {
  begin(out);
  if (format_.encoding == Encoding::utf8) {
    out->append(bytes);
    return true;
  }
  Visitor visitor{*this, out, error};
  return stream_.add(bytes, visitor);
}

bool Encoder::finish(std::string* out, EncodeError* error) {
  begin(out);
  Visitor visitor{*this, out, error};
  return stream_.finish(visitor);
}

FileFormat detectFormat(std::string_view bytes, Encoding fallback) {
  FormatDetector detector;
  detector.add(bytes);
  return detector.result(fallback);
}

std::optional<std::string> decodeText(std::string_view fileBytes, FileFormat format) {
  if (format.bom) {
    const auto mark = byteOrderMark(format.encoding);
    if (mark.empty() || !fileBytes.starts_with(mark)) return std::nullopt;
    fileBytes.remove_prefix(mark.size());
  }
  std::string out;
  Decoder decoder(format.encoding);
  decoder.add(fileBytes, &out);
  if (!decoder.finish(&out)) return std::nullopt;
  return out;
}

std::optional<std::string> encodeText(std::string_view bytes, FileFormat format, EncodeError* error) {
  std::string out;
  Encoder encoder(format);
  if (!encoder.add(bytes, &out, error) || !encoder.finish(&out, error)) return std::nullopt;
  return out;
}

}   // namespace text
