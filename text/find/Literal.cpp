#include "text/find/Literal.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "text/line/CharTables.h"
#include "text/line/Chars.h"

namespace text {

namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

// Invalid bytes are compared as they are: above all code points.
char32_t folded(const Char& c) { return c.bad ? 0x110000 + c.code : fold(c.code); }

std::string encoded(char32_t c) { return c >= 0x110000 ? std::string(1, static_cast<char>(c - 0x110000)) : encode(c); }

// All spellings of a folded character.
std::vector<std::string> spellings(char32_t c) {
  std::vector<char32_t> codes{c};
  if (c < 0x80 && c >= 'a' && c <= 'z') codes.push_back(c - 32);
  if (c >= 0x80 && c < 0x110000) codes = lettersThatFoldTo(c);
  std::vector<std::string> out;
  out.reserve(codes.size());
  for (const char32_t x : codes) out.push_back(encoded(x));
  return out;
}

}   // namespace

Literal::Literal(std::string what, bool matchCase) : what_(std::move(what)) {
  const bool ascii = isAscii(what_);
  wholeCharacters_ = ascii || validUtf8(what_);
  if (!matchCase) kind_ = ascii ? Kind::asciiFold : Kind::fold;
  if (kind_ == Kind::asciiFold) std::transform(what_.begin(), what_.end(), what_.begin(), lower);
  minBytes_ = maxBytes_ = what_.size();
  if (kind_ == Kind::fold) {
    for (std::string_view rest = what_; !rest.empty();) {
      const Char c = decode(rest);
      folded_.push_back(folded(c));
      rest.remove_prefix(static_cast<std::size_t>(c.bytes));
    }
  }
  chooseFilter();
}

// Chooses the two rarest bytes of the beginning that have the same position in every spelling.
void Literal::chooseFilter() {
  std::vector<PairFilter::Spot> spots;
  constexpr std::size_t enough = 256;
  if (kind_ != Kind::fold) {
    for (std::size_t i = 0; i < std::min(what_.size(), enough); ++i) {
      const char c = what_[i];
      PairFilter::Spot s{i, {c}, 1};
      if (kind_ == Kind::asciiFold && c >= 'a' && c <= 'z') s.any[static_cast<std::size_t>(s.count++)] = static_cast<char>(c - 32);
      spots.push_back(s);
    }
  } else {
    minBytes_ = maxBytes_ = 0;
    bool fixed = true;
    std::vector<std::pair<char32_t, std::vector<std::string>>> known;
    for (const char32_t c : folded_) {
      auto it = std::find_if(known.begin(), known.end(), [c](const auto& k) { return k.first == c; });
      if (it == known.end()) it = known.insert(known.end(), {c, spellings(c)});
      const auto& ways = it->second;
      const auto [low, high] =
          std::minmax_element(ways.begin(), ways.end(), [](const auto& a, const auto& b) { return a.size() < b.size(); });
      for (std::size_t i = 0; fixed && i < low->size() && spots.size() < enough; ++i) {
        PairFilter::Spot s{minBytes_ + i, {}, 0};
        std::string bytes;
        for (const auto& w : ways)
          if (bytes.find(w[i]) == std::string::npos) bytes += w[i];
        if (bytes.size() > 4) break;
        for (const char b : bytes) s.any[static_cast<std::size_t>(s.count++)] = b;
        spots.push_back(s);
        if (low->size() != high->size()) break;
      }
      fixed = fixed && low->size() == high->size();
      minBytes_ += low->size();
      maxBytes_ += high->size();
    }
  }
  const auto cost = [](const PairFilter::Spot& s) {
    int sum = 0;
    for (int i = 0; i < s.count; ++i) sum += commonness(static_cast<unsigned char>(s.any[static_cast<std::size_t>(i)]));
    return sum;
  };
  auto a = std::min_element(spots.begin(), spots.end(), [&](const auto& x, const auto& y) { return cost(x) < cost(y); });
  const PairFilter::Spot first = *a;
  if (spots.size() > 1) spots.erase(a);
  const auto b = std::min_element(spots.begin(), spots.end(), [&](const auto& x, const auto& y) { return cost(x) < cost(y); });
  filter_ = PairFilter(first, *b);
}

std::size_t Literal::lengthAt(std::string_view bytes, std::size_t at) const {
  if (kind_ == Kind::exact) return std::memcmp(bytes.data() + at, what_.data(), what_.size()) == 0 ? what_.size() : 0;
  if (kind_ == Kind::asciiFold) {
    for (std::size_t i = 0; i < what_.size(); ++i)
      if (lower(bytes[at + i]) != what_[i]) return 0;
    return what_.size();
  }
  std::size_t end = at;
  for (const char32_t c : folded_) {
    const Char next = decode(bytes.substr(end));
    if (next.bytes == 0 || folded(next) != c) return 0;
    end += static_cast<std::size_t>(next.bytes);
  }
  return end - at;
}

// Linear for any text: no byte is compared twice with the same prefix.
template <class Pattern, class Next>
static std::optional<std::size_t> findLinear(const Pattern& pattern, std::size_t end, Next next) {
  std::vector<std::size_t> back(pattern.size(), 0);   // length of the longest border of each prefix
  for (std::size_t i = 1, k = 0; i < pattern.size(); ++i) {
    while (k > 0 && pattern[i] != pattern[k]) k = back[k - 1];
    back[i] = k += pattern[i] == pattern[k];
  }
  std::size_t at = 0;
  for (std::size_t k = 0; at < end;) {
    const auto unit = next(at);   // moves at on
    while (k > 0 && unit != pattern[k]) k = back[k - 1];
    k += unit == pattern[k];
    if (k == pattern.size()) return at;
  }
  return std::nullopt;
}

std::optional<Literal::Hit> Literal::findRepetitive(std::string_view bytes, std::size_t from) const {
  const auto rest = bytes.substr(from);
  if (kind_ != Kind::fold) {
    const bool folds = kind_ == Kind::asciiFold;
    const auto end = findLinear(what_, rest.size(), [&](std::size_t& at) { return folds ? lower(rest[at++]) : rest[at++]; });
    if (!end) return std::nullopt;
    return Hit{from + *end - what_.size(), what_.size()};
  }
  const auto end = findLinear(folded_, rest.size(), [&](std::size_t& at) {
    const Char c = decode(rest.substr(at));
    at += static_cast<std::size_t>(c.bytes);
    return folded(c);
  });
  if (!end) return std::nullopt;
  std::size_t begin = *end;
  for (std::size_t i = 0; i < folded_.size(); ++i) begin -= static_cast<std::size_t>(decodeLast(rest.substr(0, begin)).bytes);
  return Hit{from + begin, *end - begin};
}

std::optional<Literal::Hit> Literal::find(std::string_view bytes, std::size_t from) const {
  if (bytes.size() < minBytes_) return std::nullopt;
  const std::size_t end = bytes.size() - minBytes_ + 1;
  std::size_t wasted = 0;
  for (std::size_t at = from;; ++at) {
    at = filter_.find(bytes, at, end);
    if (at >= end) return std::nullopt;
    if (const std::size_t length = lengthAt(bytes, at)) return Hit{at, length};
    // A long pattern in a text that repeats its beginning again and again would cost the product of both lengths.
    wasted += minBytes_;
    if (wasted > 65536 + 64 * (at - from) && minBytes_ > 64) return findRepetitive(bytes, at);
  }
}

}   // namespace text
