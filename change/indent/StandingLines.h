// Reads the lines of a text together with strings, raw strings and here-documents that span lines. The highlighter ends such a
// string with its line, so that one odd quotation mark does not colour the rest of the text. Code that changes lines must know
// where the string really ends.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "language/FormatRules.h"
#include "text/color/Highlight.h"

class StandingLines {
 public:
  // `highlighter` may be null: then there are no tokens.
  StandingLines(const text::Highlighter* highlighter, const FormatRules& rules);
  // Reads the next line. The part of a multi-line string in this line is one string token. Without `tokens` it is much faster.
  void scan(std::string_view line, std::vector<text::Token>* tokens);
  void restart();
  // False: no line of the first `lines` stays.
  bool mayHold(const text::Snapshot& text, std::int64_t lines) const;

  bool stays() const { return stays_; }   // the last line begins within a string, or its first column matters
  bool isCode() const { return code_; }   // ... and it also holds code, or is a string in code
  bool inComment() const { return start().inside == text::LinePoint::block; }   // the next line begins in one

 private:
  text::LinePoint start() const { return highlighter_ ? highlighter_->startOf(state_) : text::LinePoint{}; }
  bool standsWhole(std::string_view line);
  bool mayHold(std::string_view line) const;   // false: no later line stays because of this one
  bool opensAt(std::string_view line, const text::Token& token, std::size_t from);
  void noteHereDocuments(std::string_view line, std::size_t from, const std::vector<text::Token>& tokens);
  std::size_t closeAt(std::string_view line, std::size_t from) const;

  struct HereDocument {
    std::string word;
    char strips = 0;   // '-': tabs in front of the word, '~': blanks too
  };
  const text::Highlighter* const highlighter_;
  const FormatRules rules_;
  std::vector<std::string> openers_;   // signs that begin what may span lines
  std::string escape_;                 // a line that ends with it or with '\\' may go on; empty: none
  text::LineState state_ = 0;
  std::string close_;                    // text that ends the open string; empty: none is open
  bool escapes_ = false;                 // the open string has an escape character
  std::deque<HereDocument> here_;        // to be read, the current one first
  bool rest_ = false, column_ = false;   // no code follows; a comment is open whose lines count from the first column
  bool stays_ = false, code_ = true;
};
