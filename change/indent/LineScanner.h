// Splits lines into pieces for indentation: words, signs and strings; comments are left out, and carried from line to line.
#pragma once

#include <QString>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "change/indent/StandingLines.h"
#include "control/code/BlockWords.h"
#include "text/color/Highlight.h"

// A run of word characters or one other character of a line's code; a string is one piece that says nothing.
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
  // `highlighter` may be null: then nothing is taken for a comment.
  LineScanner(const BlockWords& words, const text::Highlighter* highlighter, const FormatRules& rules, int tabSize)
      : words_(words), lines_(highlighter, rules), tabSize_(tabSize) {}
  Pieces scan(const QString& line);   // the next one
  void restart() { lines_.restart(); }
  bool inComment() const { return lines_.inComment(); }   // the next line begins in one
  bool stays() const { return lines_.stays(); }           // the line read last may not be touched
  bool isCode() const { return lines_.isCode(); }
  int trailingComment() const { return trailing_; }   // the column of the comment behind the last line's code; -1: none
  int columnsOf(const QString& blanks) const;

 private:
  const Piece& known(std::string_view bytes, bool isWord);

  const BlockWords& words_;
  StandingLines lines_;
  const int tabSize_;
  int trailing_ = -1;
  std::unordered_map<std::string, Piece, HashOfView, std::equal_to<>> known_;
};
