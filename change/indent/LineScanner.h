// Splits lines into tokens for indentation: words, signs and strings. Comments are left out; an open comment continues in the next
// line.
#pragma once

#include <QString>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "change/indent/StandingLines.h"
#include "control/code/BlockWords.h"
#include "text/color/Highlight.h"

// A word, or one other character of the code of a line. A string is one token without meaning.
struct Piece {
  QString word;
  bool isWord = false;
  char16_t sign = 0;   // the character that is no word, where it is one unit
  BlockWords::Entry entry;
  Piece(QString text, bool isWordRun, const BlockWords& words)
      : word(std::move(text)),
        isWord(isWordRun),
        sign(!isWord && word.size() == 1 ? word[0].unicode() : u'\0'),
        entry(words.classify(word)) {}
  bool is(char16_t c) const { return sign == c; }
  bool is(QLatin1String lower) const {
    return isWord && word.size() == lower.size() && word.compare(lower, Qt::CaseInsensitive) == 0;
  }
};
using Pieces = std::vector<Piece>;
struct HashOfView {
  using is_transparent = void;
  std::size_t operator()(std::string_view bytes) const { return std::hash<std::string_view>()(bytes); }
};

class LineScanner {
 public:
  // `highlighter` may be null: then no comments are recognised.
  LineScanner(const BlockWords& words, const text::Highlighter* highlighter, const FormatRules& rules, int tabSize)
      : words_(words), lines_(highlighter, rules), tabSize_(tabSize) {}
  Pieces scan(const QString& line);   // the next one
  void restart() { lines_.restart(); }
  bool inComment() const { return lines_.inComment(); }   // the next line begins within a comment
  bool stays() const { return lines_.stays(); }           // the last line must not be changed
  bool isCode() const { return lines_.isCode(); }
  int trailingComment() const { return trailing_; }   // column of the comment behind the code of the last line; -1: none
  int columnsOf(const QString& blanks) const;

 private:
  const Piece& known(std::string_view bytes, bool isWord);

  const BlockWords& words_;
  StandingLines lines_;
  const int tabSize_;
  int trailing_ = -1;
  std::unordered_map<std::string, Piece, HashOfView, std::equal_to<>> known_;
};
