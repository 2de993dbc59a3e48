#include "text/store/CountBytes.h"

#include <algorithm>
#include <cstring>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define ZELKOR_SSE2 1
#endif

namespace text::engine {

std::int64_t countByte(const char* bytes, std::size_t length, char value) {
  std::int64_t total = 0;
#ifdef ZELKOR_SSE2
  // Each lane counts up to 255 matches before the lanes are summed.
  const __m128i wanted = _mm_set1_epi8(value), zero = _mm_setzero_si128();
  while (length >= 16) {
    std::size_t rounds = std::min<std::size_t>(length / 16, 255);
    length -= rounds * 16;
    __m128i lanes = zero;
    for (; rounds > 0; --rounds, bytes += 16)
      lanes = _mm_sub_epi8(lanes, _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)), wanted));
    const __m128i sums = _mm_sad_epu8(lanes, zero);
    total += _mm_cvtsi128_si32(sums) + _mm_cvtsi128_si32(_mm_srli_si128(sums, 8));
  }
#endif
  return total + std::count(bytes, bytes + length, value);
}

std::size_t behindNthByte(const char* bytes, std::size_t length, char value, std::int64_t nth) {
  constexpr std::size_t stride = 512;
  std::size_t at = 0;
  while (length - at > stride) {
    const auto here = countByte(bytes + at, stride, value);
    if (here >= nth) break;
    nth -= here;
    at += stride;
  }
  for (;; --nth) {
    const void* hit = std::memchr(bytes + at, static_cast<unsigned char>(value), length - at);
    if (!hit) return length;   // the precondition is broken; stay inside the run
    at = static_cast<std::size_t>(static_cast<const char*>(hit) - bytes) + 1;
    if (nth == 1) return at;
  }
}

}   // namespace text::engine
