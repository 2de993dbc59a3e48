// Splits a stream of bytes that comes in parts of any length into runs of ASCII, valid multi-byte sequences and invalid bytes.
#pragma once

#include <string>
#include <string_view>

#include "text/line/Utf8.h"

namespace text {

// A visitor has ascii(std::string_view), sequence(std::string_view) (2 to 4 bytes) and bad(unsigned char); each returns
// false to stop.
class Utf8Stream {
 public:
  explicit Utf8Stream(bool surrogates = false) : surrogates_(surrogates) {}

  template <class Visitor>
  bool add(std::string_view bytes, Visitor& visitor) {
    if (!cut_.empty()) {
      // The sequence cut by the last part: at most three more bytes follow.
      const std::size_t before = cut_.size();
      const std::size_t taken = bytes.size() < 3 ? bytes.size() : 3;
      cut_.append(bytes.substr(0, taken));
      std::string joined;
      joined.swap(cut_);
      const char* p = joined.data();
      const char* const end = p + joined.size();
      for (const char* const stop = p + before; p < stop;)
        if (!next(&p, end, visitor)) return false;
      if (!cut_.empty()) return true;
      bytes.remove_prefix(static_cast<std::size_t>(p - joined.data()) - before);
    }
    const char* p = bytes.data();
    const char* const end = p + bytes.size();
    while (p != end) {
      const char* const high = endOfAscii(p, end);
      if (high != p && !visitor.ascii(std::string_view(p, static_cast<std::size_t>(high - p)))) return false;
      p = high;
      while (p != end && static_cast<unsigned char>(*p) >= 0x80)
        if (!next(&p, end, visitor)) return false;
    }
    return true;
  }

  // The bytes of a sequence cut by the end are invalid.
  template <class Visitor>
  bool finish(Visitor& visitor) {
    std::string rest;
    rest.swap(cut_);
    for (const char c : rest)
      if (!visitor.bad(static_cast<unsigned char>(c))) return false;
    return true;
  }

 private:
  // Reports the sequence at *p and moves behind it; one that is cut by the end is kept for the next part.
  template <class Visitor>
  bool next(const char** p, const char* end, Visitor& visitor) {
    const char* const at = *p;
    const int n = utf8Sequence(at, end, surrogates_);
    *p = n < 0 ? end : at + (n > 0 ? n : 1);
    if (n < 0) return cut_.assign(at, end), true;
    if (n == 0) return visitor.bad(static_cast<unsigned char>(*at));
    const std::string_view whole(at, static_cast<std::size_t>(n));
    return n == 1 ? visitor.ascii(whole) : visitor.sequence(whole);
  }

  bool surrogates_;
  std::string cut_;
};

}   // namespace text
