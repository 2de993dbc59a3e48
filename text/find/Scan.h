// Scans bytes at memory speed: for the next byte of a small set, and for the next place where two bytes of a pattern match.
// Internal to the engine. Uses SSE2 if available, else plain loops.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define ZELKOR_SSE2 1
#endif

namespace text {

// A set of bytes; sets of up to four members are searched 16 bytes at a time.
class ByteSet {
 public:
  void add(unsigned char b);
  bool has(unsigned char b) const { return member_[b]; }
  bool empty() const { return count_ == 0; }
  // The first member at or behind `from`; bytes.size() if there is none.
  std::size_t find(std::string_view bytes, std::size_t from) const;

 private:
  std::array<bool, 256> member_{};
  std::array<char, 4> first_{};
  int count_ = 0;
};

// Possible starts of a pattern, decided by two of its bytes: at offset[k] from the start is one of the bytes any[k].
class PairFilter {
 public:
  struct Spot {
    std::size_t offset = 0;
    std::array<char, 4> any{};   // repeated to fill
    int count = 1;
  };
  PairFilter() = default;
  PairFilter(const Spot& a, const Spot& b);
  // The first s in [from, end) at which the bytes match, else end. Reads up to bytes[end - 1 + larger offset], which must exist.
  std::size_t find(std::string_view bytes, std::size_t from, std::size_t end) const;

 private:
  template <int N>
  std::size_t findN(const char* data, std::size_t from, std::size_t end) const;
  bool fits(const char* at) const;
  Spot a_, b_;
};

// How often a byte stands in source and log files, 0 (rare) to 255.
unsigned char commonness(unsigned char b);

}   // namespace text
