// Patterns of file names, as rules of ignored files and masks use them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace folder {

// "*" any bytes but "/", "?" one byte but "/", "[a-z]", "[!a]", "[[:alpha:]]" one of a set, "\x" the byte x itself. "**" between
// slashes (or at an end) any number of parts, none too. The whole name must match. Costs at most length times length.
bool globMatches(std::string_view pattern, std::string_view name, bool foldCase = false);

// Length of the part in front of the first character that has a meaning of its own.
std::size_t literalLength(std::string_view pattern);

// What the user wrote as masks: "*.sv,*.svh; !*_tb.sv". Separators are comma, semicolon and blank; a mask in quotes ("...") may hold
// them. A mask with "/" is held against the last parts of the path, or against the whole path below the root if it begins with "/";
// one without is held against the name. One that ends in "/" stands for all below such folders. "!" takes out what the others let in.
// Case does not count. Without any, everything fits.
class Masks {
 public:
  Masks() = default;
  explicit Masks(std::string_view text);
  bool empty() const { return masks_.empty(); }
  bool fit(std::string_view relativePath) const;

 private:
  struct Mask {
    std::string pattern;
    bool not_ = false, path = false;
  };
  std::vector<Mask> masks_;
  bool onlyNot_ = true;
};

}   // namespace folder
