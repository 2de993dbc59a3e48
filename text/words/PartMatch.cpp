#include "text/words/PartMatch.h"

#include <array>
#include <bitset>

namespace text {
namespace {

bool small(char c) { return c >= 'a' && c <= 'z'; }
bool capital(char c) { return c >= 'A' && c <= 'Z'; }
bool digit(char c) { return c >= '0' && c <= '9'; }
bool sign(char c) { return static_cast<unsigned char>(c) < 0x80 && !small(c) && !capital(c) && !digit(c); }
char folded(char c) { return capital(c) ? static_cast<char>(c + 32) : c; }

bool beginsPart(std::string_view word, std::size_t at) {
  if (at == 0) return true;
  const char before = word[at - 1], here = word[at];
  if (sign(here)) return false;
  if (sign(before)) return true;
  if (digit(here)) return !digit(before);
  if (capital(here)) return !capital(before) || (at + 1 < word.size() && small(word[at + 1]));   // HTTPServer: H, S
  return false;
}

// Divides what is typed into pieces that begin parts. Each pair of places is tried once.
class Pieces {
 public:
  Pieces(std::string_view word, std::string_view typed) : word_(word), typed_(typed) {}

  bool fit(std::size_t from, std::size_t at, std::vector<std::pair<int, int>>& places) {
    if (tried_[from][at]) return false;
    tried_[from].set(at);
    std::size_t length = 0;
    while (from + length < typed_.size() && at + length < word_.size() &&
           folded(typed_[from + length]) == folded(word_[at + length]))
      ++length;
    for (; length > 0; --length) {
      places.emplace_back(static_cast<int>(at), static_cast<int>(length));
      if (from + length == typed_.size()) return true;
      for (std::size_t next = at + length; next < word_.size(); ++next)
        if (beginsPart(word_, next) && fit(from + length, next, places)) return true;
      places.pop_back();
    }
    return false;
  }

 private:
  std::string_view word_, typed_;
  std::array<std::bitset<kLongestWord>, kLongestTyped> tried_;
};

}   // namespace

std::optional<PartMatch> matchParts(std::string_view word, std::string_view typed) {
  if (word.size() > kLongestWord || typed.size() > kLongestTyped || typed.size() > word.size()) return std::nullopt;
  const int all = static_cast<int>(typed.size());
  if (typed.empty()) return PartMatch{};
  if (word.starts_with(typed)) return PartMatch{PartFit::begins, {{0, all}}};
  // Most words lack a letter.
  std::size_t at = 0;
  for (const char c : typed) {
    while (at < word.size() && folded(word[at]) != folded(c)) ++at;
    if (at++ == word.size()) return std::nullopt;
  }
  PartMatch match;
  Pieces pieces(word, typed);
  if (pieces.fit(0, 0, match.places)) {
    match.fit = match.places.size() == 1 ? PartFit::beginsFolded : PartFit::parts;
    return match;
  }
  for (std::size_t start = 1; start + typed.size() <= word.size(); ++start) {
    if (!beginsPart(word, start) || !pieces.fit(0, start, match.places)) continue;
    match.fit = PartFit::laterParts;
    return match;
  }
  for (std::size_t start = 1; typed.size() >= 3 && start + typed.size() <= word.size(); ++start) {
    std::size_t length = 0;
    while (length < typed.size() && folded(word[start + length]) == folded(typed[length])) ++length;
    if (length == typed.size()) return PartMatch{PartFit::inside, {{static_cast<int>(start), all}}};
  }
  return std::nullopt;
}

}   // namespace text
