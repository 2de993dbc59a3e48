// What of a language's text forms blocks: block words and the words that close them, brackets, conditional compilation, marks of
// regions, comments, indentation. Compiled and immutable; shared by all texts of the language.
//
// The block words are those of the indentation, with their marks (control/code/BlockWords.h). Which closer belongs to which opener
// follows from the words: "endcase" closes "case", "casex" and "randcase", "fi" closes "if"; a closer that names no opener closes
// those that no other names. Lines of rules say what does not follow:
//   pair OPENER CLOSER ...    the closers of this opener
//   unit WORD ...             such an opener ends all that is open in the unit above it: a missing closer does no more damage
//   layer A B / C D / E       openers, middles and closers of conditional compilation, which is a layer of its own
//   region MARK MARK          what a comment begins with that opens or closes a region
//   named WORD ...            such a block ends only by its name: "end if", "end loop"
//   arms WORD ...             within such a block a closer without a name ends an arm of it, and nothing else
//   becomes WORD ...          such an opener behind another in one statement says how that block ends: "for ... generate"
//   stop WORD ...             a statement ends behind these words; without this rule, an opener's statement ends with its line
//   commands                  block words count only as the first word of a command
//   indent                    blocks by indentation; also without this rule in languages without block words
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "text/color/Highlight.h"
#include "text/color/Symbols.h"

namespace text {

// A byte of a block word. Names of other alphabets are words as a whole.
constexpr bool wordByte(char c) {
  return c == '_' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
         static_cast<unsigned char>(c) >= 0x80;
}

struct FoldLists {
  bool caseSensitive = false;
  std::vector<std::string> start{}, end{}, rules{};
};

class FoldRules {
 public:
  // `colors` says what is comment and string; it may be null.
  FoldRules(const FoldLists& lists, std::shared_ptr<const Highlighter> colors);

  struct Word {
    int opener = -1, closer = -1;   // numbers; -1: it is none
    bool opensNothing = false, needsIs = false, stops = false, becomes = false, is = false, isNew = false;
    enum Layer : unsigned char { none, opens, middle, closes } layer = none;
    std::vector<int> nothingBefore{};   // words with which it begins a statement that opens nothing ("virtual interface")
  };
  struct Opener {
    bool unit = false, named = false, arms = false;
    bool always = false;           // opens in any statement
    std::vector<bool> closers{};   // by number: which close it
  };
  struct Region {
    std::string begin, end;
  };

  // The number of a word in words(), -1 for others. Signs before the word belong to it: "`ifdef", "#if".
  int find(std::string_view word) const { return set_.find(word); }
  const std::vector<Word>& words() const { return words_; }
  const std::vector<Opener>& openers() const { return openers_; }
  const std::vector<Region>& regions() const { return regions_; }
  const Highlighter* colors() const { return colors_.get(); }
  bool signs(unsigned char c) const { return signs_[c]; }   // begins words with a sign
  bool indent() const { return indent_; }
  bool commands() const { return commands_; }
  bool hasStops() const { return hasStops_; }
  bool endsByName() const { return endsByName_; }   // "end if": an opener behind a closer names what is closed
  bool closes(int closer, int opener) const {
    return openers_[static_cast<std::size_t>(opener)].closers[static_cast<std::size_t>(closer)];
  }

 private:
  int word(std::string_view text);
  void readRule(const std::string& rule, std::vector<std::vector<std::string>>& pairs);
  void pairUp(const std::vector<std::vector<std::string>>& pairs);

  std::shared_ptr<const Highlighter> colors_;
  WordSet set_;
  std::vector<Word> words_;
  std::vector<std::string> spellings_, openerWords_, closerWords_;
  std::vector<Opener> openers_;
  std::vector<Region> regions_;
  std::array<bool, 256> signs_{};
  bool folds_ = false, indent_ = false, commands_ = false, hasStops_ = false, endsByName_ = false;
};

}   // namespace text
