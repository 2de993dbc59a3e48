// The words that open and close blocks, as a language lists them: the one home of their marks, for typing and for formatting.
//
// A list is text: entries separated by line breaks. An entry may carry a mark behind the word:
//   word*   the block is indented by two units instead of one
//   word~   a statement that begins with this word opens no block; "one two~" looks at its first two words
//   word-   the word opens a block only when "is" follows before the statement's end
// The last two are read where whole lines are.
#pragma once

#include <QHash>
#include <QSet>
#include <QString>

enum class BlockClass { start = 0, end = 1, middle = 2, none = 3 };

// To be used on one thread only.
class BlockWords {
 public:
  BlockWords() = default;
  BlockWords(const QString& startList, const QString& endList, const QString& middleList, bool caseSensitive = false);
  bool isEmpty() const;   // no list has a word

  struct Entry {
    BlockClass kind = BlockClass::none;
    bool doubleIndent = false;
    bool opensNothing = false;   // listed as word~
    bool needsIs = false;        // listed as word-
    bool opens() const { return kind == BlockClass::start; }
    bool closes() const { return kind == BlockClass::end; }
    bool isMiddle() const { return kind == BlockClass::middle; }
  };
  // The first that applies of end, start, middle; none for an empty word. Results are cached, so that a word is searched once.
  Entry classify(const QString& word) const;
  bool beginsACloser(const QString& prefix) const;   // true for a proper beginning of a closing or middle word

 private:
  QString folded(const QString& word) const { return caseSensitive_ ? word : word.toCaseFolded(); }
  QSet<QString> entriesOf(const QString& list) const;

  bool caseSensitive_ = false;
  QSet<QString> start_, end_, middle_;   // folded
  mutable QHash<QString, Entry> known_;
};
