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

struct BlockWordFlags {
  bool doubleIndent = false;   // matched as word*
  bool tilde = false;          // matched as word~
};

// True when word stands in the list, plain or with "*"; both flags are cleared first. Letter case is ignored. The list needs a line
// break (CR LF) before its first entry to match it (classify hands it one).
bool searchWordList(const QString& word, const QString& list, BlockWordFlags& flags);

enum class BlockClass { start = 0, end = 1, middle = 2, none = 3 };

// Asked on one thread only.
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
  // The first that fits of end, start, middle. The empty word is none. Answers are kept, so a word costs one search.
  Entry classify(const QString& word) const;
  bool beginsACloser(const QString& prefix) const;   // ... or a middle word, and is not all of it

 private:
  QString folded(const QString& word) const { return caseSensitive_ ? word : word.toCaseFolded(); }
  QSet<QString> entriesOf(const QString& list) const;

  bool caseSensitive_ = false;
  QSet<QString> start_, end_, middle_;   // folded
  mutable QHash<QString, Entry> known_;
};
