// A literal pattern, compiled for searching in contiguous bytes; with or without case. Inside the engine.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/find/Scan.h"

namespace text {

class Literal {
 public:
  struct Hit {
    std::size_t begin, length;
  };

  // Precondition: `what` is not empty. Without case, letters are compared by simple case folding; a letter beyond
  // ASCII is never equal to one within.
  Literal(std::string what, bool matchCase);

  // No match is longer.
  std::size_t maxBytes() const { return maxBytes_; }
  // Valid UTF-8: then a match always lies on character boundaries.
  bool wholeCharacters() const { return wholeCharacters_; }
  // The first match that starts at or behind `from` and lies wholly in the bytes.
  std::optional<Hit> find(std::string_view bytes, std::size_t from) const;

 private:
  enum class Kind { exact, asciiFold, fold };
  std::size_t lengthAt(std::string_view bytes, std::size_t at) const;   // of the match there, 0: none
  std::optional<Hit> findRepetitive(std::string_view bytes, std::size_t from) const;
  void chooseFilter();

  std::string what_;               // asciiFold: in lower case
  std::vector<char32_t> folded_;   // Kind::fold
  Kind kind_ = Kind::exact;
  bool wholeCharacters_ = true;
  std::size_t minBytes_ = 0, maxBytes_ = 0;
  PairFilter filter_;
};

}   // namespace text
