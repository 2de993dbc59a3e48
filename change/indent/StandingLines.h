// Reads the lines of a text with the strings, raw strings and here-documents that go on over the ends of lines. The colours end such a
// string with its line, so that one odd quotation mark does not colour the rest of the text; whoever changes lines must know where it ends.
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
  // The next line. Of a string that goes on from the lines above or into those below, its part of this line is one string token.
  void scan(std::string_view line, std::vector<text::Token>* tokens);
  void restart();

  bool stays() const { return stays_; }   // the line read last begins within a string, or is one whose first column counts
  bool isCode() const { return code_; }   // ... and holds code too, or is a string as code has it
  bool inComment() const { return start().inside == text::LinePoint::block; }   // the next line begins in one

 private:
  text::LinePoint start() const { return highlighter_ ? highlighter_->startOf(state_) : text::LinePoint{}; }
  bool standsWhole(std::string_view line);
  bool opensAt(std::string_view line, const text::Token& token, std::size_t from);
  void noteHereDocuments(std::string_view line, std::size_t from, const std::vector<text::Token>& tokens);
  std::size_t closeAt(std::string_view line, std::size_t from) const;

  struct HereDocument {
    std::string word;
    char strips = 0;   // '-': tabs in front of the word, '~': blanks too
  };
  const text::Highlighter* const highlighter_;
  const FormatRules rules_;
  text::LineState state_ = 0;
  std::string close_;                    // what ends the open string; empty: none is open
  bool escapes_ = false;                 // the open string has an escape character
  std::deque<HereDocument> here_;        // to be read, the first one now
  bool rest_ = false, column_ = false;   // no code follows; a comment is open whose lines count from the first column
  bool stays_ = false, code_ = true;
};
