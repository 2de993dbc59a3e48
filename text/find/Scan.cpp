#include "text/find/Scan.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace text {

void ByteSet::add(unsigned char b) {
  if (member_[b]) return;
  member_[b] = true;
  if (count_ < 4)   // unused places repeat the newest member
    for (std::size_t i = static_cast<std::size_t>(count_); i < 4; ++i) first_[i] = static_cast<char>(b);
  ++count_;
}

std::size_t ByteSet::find(std::string_view bytes, std::size_t from) const {
  if (count_ == 0) return bytes.size();
  std::size_t i = from;
#ifdef ZELKOR_SSE2
  if (count_ <= 4) {
    const __m128i v0 = _mm_set1_epi8(first_[0]), v1 = _mm_set1_epi8(first_[1]), v2 = _mm_set1_epi8(first_[2]),
                  v3 = _mm_set1_epi8(first_[3]);
    const bool two = count_ <= 2;
    for (; i + 32 <= bytes.size(); i += 32) {
      const auto* p = reinterpret_cast<const __m128i*>(bytes.data() + i);
      const __m128i x = _mm_loadu_si128(p), y = _mm_loadu_si128(p + 1);
      __m128i hx = _mm_or_si128(_mm_cmpeq_epi8(x, v0), _mm_cmpeq_epi8(x, v1));
      __m128i hy = _mm_or_si128(_mm_cmpeq_epi8(y, v0), _mm_cmpeq_epi8(y, v1));
      if (!two) {
        hx = _mm_or_si128(hx, _mm_or_si128(_mm_cmpeq_epi8(x, v2), _mm_cmpeq_epi8(x, v3)));
        hy = _mm_or_si128(hy, _mm_or_si128(_mm_cmpeq_epi8(y, v2), _mm_cmpeq_epi8(y, v3)));
      }
      const unsigned hits = static_cast<unsigned>(_mm_movemask_epi8(hx)) | static_cast<unsigned>(_mm_movemask_epi8(hy)) << 16;
      if (hits) return i + static_cast<std::size_t>(std::countr_zero(hits));
    }
  }
#endif
  while (i < bytes.size() && !has(static_cast<unsigned char>(bytes[i]))) ++i;
  return i;
}

PairFilter::PairFilter(const Spot& a, const Spot& b) : a_(a), b_(b) {
  for (Spot* s : {&a_, &b_})
    for (std::size_t i = static_cast<std::size_t>(s->count); i < 4; ++i) s->any[i] = s->any[0];
}

bool PairFilter::fits(const char* at) const {
  const auto one = [at](const Spot& s) { return std::find(s.any.begin(), s.any.end(), at[s.offset]) != s.any.end(); };
  return one(a_) && one(b_);
}

template <int N>
std::size_t PairFilter::findN(const char* data, std::size_t from, std::size_t end) const {
  std::size_t i = from;
#ifdef ZELKOR_SSE2
  __m128i va[N], vb[N];
  for (std::size_t k = 0; k < N; ++k) {
    va[k] = _mm_set1_epi8(a_.any[k]);
    vb[k] = _mm_set1_epi8(b_.any[k]);
  }
  const auto fit = [&](std::size_t at) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + at + a_.offset));
    const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + at + b_.offset));
    __m128i hx = _mm_cmpeq_epi8(x, va[0]), hy = _mm_cmpeq_epi8(y, vb[0]);
    for (int k = 1; k < N; ++k) {
      hx = _mm_or_si128(hx, _mm_cmpeq_epi8(x, va[k]));
      hy = _mm_or_si128(hy, _mm_cmpeq_epi8(y, vb[k]));
    }
    return _mm_and_si128(hx, hy);
  };
  for (; i + 64 <= end; i += 64) {
    const __m128i h0 = fit(i), h1 = fit(i + 16), h2 = fit(i + 32), h3 = fit(i + 48);
    if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(h0, h1), _mm_or_si128(h2, h3))) == 0) continue;
    std::size_t at = i;
    for (const __m128i& h : {h0, h1, h2, h3}) {
      if (const auto hits = static_cast<unsigned>(_mm_movemask_epi8(h)))
        return at + static_cast<std::size_t>(std::countr_zero(hits));
      at += 16;
    }
  }
  for (; i + 16 <= end; i += 16)
    if (const auto hits = static_cast<unsigned>(_mm_movemask_epi8(fit(i))))
      return i + static_cast<std::size_t>(std::countr_zero(hits));
#endif
  while (i < end && !fits(data + i)) ++i;
  return i;
}

std::size_t PairFilter::find(std::string_view bytes, std::size_t from, std::size_t end) const {
  if (from >= end) return end;
  const int most = std::max(a_.count, b_.count);
  if (most == 1) return findN<1>(bytes.data(), from, end);
  if (most == 2) return findN<2>(bytes.data(), from, end);
  return findN<4>(bytes.data(), from, end);
}

unsigned char commonness(unsigned char b) {
  if (b >= 0x80) return b >= 0xC0 ? 120 : 50;   // a script has few lead bytes
  if (b >= 'a' && b <= 'z') {
    // the most frequent letters: e t a o i n s r l d u c
    constexpr std::string_view order = "zqjxkvwybghpfmcudlrsnioate";
    return static_cast<unsigned char>(120 + 5 * order.find(static_cast<char>(b)));
  }
  if (b >= '0' && b <= '9') return b == '0' ? 200 : 170;
  if (b >= 'A' && b <= 'Z') return static_cast<unsigned char>(commonness(static_cast<unsigned char>(b + 32)) - 60);
  if (b == ' ') return 255;
  if (b == '\n' || b == '_' || b == '.' || b == ',') return 180;
  return b < 0x20 ? 30 : 110;
}

}   // namespace text
