// Whether a word may be what the user is typing: `stw` is `state_next_word`. ASCII letters are compared without case.
//
// The parts of a word begin at its start, behind a sign, where small letters turn to capitals, and where digits begin.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace text {

enum class PartFit : unsigned char {
  begins,         // the word begins with what is typed, letter by letter
  beginsFolded,   // the same without case
  parts,          // pieces of the typed text begin parts of the word, the first piece the first part
  laterParts,     // the same, from a later part on
  inside          // three letters or more stand in one piece anywhere
};

struct PartMatch {
  PartFit fit = PartFit::begins;
  std::vector<std::pair<int, int>> places;   // what of the word was typed: first byte and length, ascending
};

inline constexpr std::size_t kLongestTyped = 64, kLongestWord = 128;   // bytes; what is longer fits nothing

std::optional<PartMatch> matchParts(std::string_view word, std::string_view typed);

}   // namespace text
