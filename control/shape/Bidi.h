// The order in which a text is read and shown, by the Unicode bidirectional algorithm (UAX #9) for lines from left to right.
//
// Characters that could hide stand as boxes. Of them only the marks (LRM, RLM, ALM) count for the order: embeddings, overrides and
// isolates would let a text look like another one, and turn nothing here.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace shape {

// A cluster, by its first code point.
struct Sign {
  enum Kind : unsigned char { plain, blank, tab, box };
  char32_t code = 0;
  Kind kind = plain;
};

// The level of each sign of a paragraph; those with an odd level are read from right to left.
std::vector<unsigned char> levels(std::span<const Sign> signs);
// The signs of one row from left to right, as indexes; blanks at its end and in front of a tab get level 0.
std::vector<std::size_t> visualOrder(std::span<const Sign> row, std::span<unsigned char> levels);

}   // namespace shape
