// A literal pattern, compiled for searching in contiguous bytes, case-sensitive or not. Internal to the engine.
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

  // Precondition: `what` is not empty. Without case, letters are compared by simple case folding; a non-ASCII letter is never equal
  // to an ASCII letter.
  Literal(std::string what, bool matchCase);

  // Maximum length of a match.
  std::size_t maxBytes() const { return maxBytes_; }
  // The pattern is valid UTF-8: then matches always lie on character boundaries.
  bool wholeCharacters() const { return wholeCharacters_; }
  // The first match that starts at or behind `from` and lies completely in the bytes.
  std::optional<Hit> find(std::string_view bytes, std::size_t from) const;

 private:
  enum class Kind { exact, asciiFold, fold };
  std::size_t lengthAt(std::string_view bytes, std::size_t at) const;   // length of the match at that position; 0: none
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
