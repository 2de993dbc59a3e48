// By which rules two texts are compared, and a text as these rules see it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "text/color/Highlight.h"
#include "text/line/LineReader.h"

namespace text {

// Line ends never count.
struct DiffRules {
  bool ignoreBlanks = false;   // blanks and tabs anywhere in a line, and lines without anything else
  bool ignoreCase = false;     // of all letters
  // Comments by the tables of each side's language, and lines without anything else; null: comments count.
  std::shared_ptr<const Highlighter> commentsBefore{}, commentsAfter{};

  bool plain() const { return !ignoreBlanks && !ignoreCase && !commentsBefore && !commentsAfter; }
};

// Reads a text line by line without what the rules ignore. Linear in the bytes of the text.
class BareLines {
 public:
  // comments: of this side; may be null.
  BareLines(const Snapshot& text, const DiffRules& rules, std::shared_ptr<const Highlighter> comments);

  // The next line, valid until the next call; false behind the last one.
  bool next(std::string_view* bare);
  // Passes over lines, so that the next one is this one, which is not above. Costs little, but for comments: these are read through.
  void to(LineNo line);
  std::string_view whole() const { return whole_; }   // as it stands in the text
  bool nothing() const { return nothing_; }           // that line holds only what the rules ignore

 private:
  void withoutComments(std::string_view line);
  void withoutBlanksAndCase();

  const Snapshot text_;
  LineReader reader_;
  bool blanks_, case_, nothing_ = false;
  std::shared_ptr<const Highlighter> comments_;
  LineState state_ = 0;
  std::string_view whole_;
  std::vector<Token> tokens_;
  std::string bare_;
};

}   // namespace text
