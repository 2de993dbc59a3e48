// What every match of a search holds: a few texts of which one stands in it. A file whose bytes hold none of them needs no
// decoding and no search. Looks at ASCII alone, so one answer is good for UTF-8 and for all 8-bit encodings; not for UTF-16.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "text/find/Literal.h"
#include "text/find/Search.h"

namespace text {

class Needles {
 public:
  Needles(std::string_view what, const SearchOptions& options);
  bool known() const { return !any_.empty(); }   // false: a match may hold anything
  // False: no text that these bytes are decoded to holds a match.
  bool mayMatch(std::string_view bytes) const;

 private:
  std::vector<Literal> any_;
};

// The texts one of which every match holds; none where that is not plain to see.
std::vector<std::string> neededTexts(std::string_view what, const SearchOptions& options);

}   // namespace text
