// A 64-bit hash of a file's bytes, nearly as fast as memory. It tells whether a file still holds what was read or written. It
// protects against accidents, not against attacks. The bytes may come in parts of any length.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace text {

class ContentHash {
 public:
  static std::uint64_t of(std::string_view bytes) {
    ContentHash hash;
    hash.add(bytes);
    return hash.value();
  }
  void add(std::string_view bytes) {
    length_ += bytes.size();
    if (filled_ > 0) {
      const auto n = bytes.size() < kStride - filled_ ? bytes.size() : kStride - filled_;
      std::memcpy(rest_ + filled_, bytes.data(), n);
      filled_ += n;
      bytes.remove_prefix(n);
      if (filled_ < kStride) return;
      mix(rest_);
      filled_ = 0;
    }
    // Four lanes use the multiplier fully; local variables keep them in registers.
    std::uint64_t a = lanes_[0], b = lanes_[1], c = lanes_[2], d = lanes_[3];
    const char* p = bytes.data();
    const char* const end = p + bytes.size() / kStride * kStride;
    for (; p != end; p += kStride) {
      a = step(a, word(p));
      b = step(b, word(p + 8));
      c = step(c, word(p + 16));
      d = step(d, word(p + 24));
    }
    lanes_[0] = a, lanes_[1] = b, lanes_[2] = c, lanes_[3] = d;
    filled_ = bytes.size() % kStride;
    if (filled_ > 0) std::memcpy(rest_, p, filled_);
  }

  std::uint64_t value() const {
    ContentHash last = *this;
    std::memset(last.rest_ + last.filled_, 0, kStride - last.filled_);
    last.mix(last.rest_);
    std::uint64_t h = length_;
    for (const auto lane : last.lanes_) h = step(h, lane);
    h ^= h >> 32;
    h *= kMultiplier;
    return h ^ h >> 29;
  }

 private:
  static constexpr std::size_t kStride = 32;
  static constexpr std::uint64_t kMultiplier = 0x9e3779b97f4a7c15, kSpread = 0xd6e8feb86659fd93;
  static std::uint64_t word(const char* p) {
    std::uint64_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
  }
  // Rotates the high bits down; without this, two changes in the top bits of one lane could cancel out.
  static std::uint64_t step(std::uint64_t lane, std::uint64_t w) { return std::rotl(lane + w * kSpread, 31) * kMultiplier; }
  void mix(const char* p) {
    for (std::size_t i = 0; i < 4; ++i) lanes_[i] = step(lanes_[i], word(p + 8 * i));
  }

  std::uint64_t lanes_[4] = {1, 2, 3, 4};
  std::uint64_t length_ = 0;
  char rest_[kStride] = {};
  std::size_t filled_ = 0;
};

}   // namespace text
