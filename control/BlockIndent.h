// Auto-indent by the block words of a language: what a new line gets, and where a word that ends a block steps back to. Comments and
// strings say nothing.
#pragma once

#include <QSet>
#include <QString>
#include <optional>
#include <string>

#include "control/TextModel.h"

struct EditOptions;

// The words that open, close, and close and reopen a block. A list is entries parted by line breaks; an entry may carry a mark:
//   word*  indents by two units        word~  begins a statement that opens no block; "one two~" looks at two words
//   word-  opens a block only when "is" follows
class BlockIndent {
 public:
  BlockIndent(const QString& start, const QString& end, const QString& middle);
  bool isEmpty() const { return start_.isEmpty() && end_.isEmpty() && middle_.isEmpty(); }

  struct Kind {
    bool opens = false, closes = false, middle = false, twice = false, opensNothing = false, needsIs = false;
  };
  Kind kindOf(const QString& word) const;
  bool beginsACloser(const QString& prefix) const;   // ... or a middle word, and is not all of it

 private:
  QSet<QString> start_, end_, middle_;   // in lower case, with their marks
};

// The white space that a line broken at `at` goes on with, where the blocks and brackets around say something. Looks back a bounded
// stretch of text.
std::optional<std::string> indentForNewLine(TextModel& model, const BlockIndent& blocks, text::ByteOffset at, const EditOptions& options);

// True where typing `typed` at `at` ends or changes a word that alone makes the line and may have to step back.
bool mayStepBack(const TextModel& model, const BlockIndent& blocks, text::ByteOffset at, const QString& typed);
// The white space that the caret's line, which holds a closing or middle word or a closing bracket alone, gets for it; nullopt: it stays.
std::optional<std::string> indentForCloser(TextModel& model, const BlockIndent& blocks, text::ByteOffset caret, const EditOptions& options);
