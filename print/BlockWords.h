// The words that open and close indent levels, as a language lists them, and the search for a word in such a list.
//
// A list is text: entries separated by CR LF. An entry may carry a mark behind the word:
//   word*   the block is indented by two units instead of one
//   word~   whole-line indentation only: a statement that begins with this word opens no block; "one two~" looks at
//           its first two words
//   word-   whole-line indentation only: the word opens a block only when "is" follows before the statement's end
#pragma once

#include <QHash>
#include <QSet>
#include <QString>

struct BlockWordFlags {
  bool doubleIndent = false;   // matched as word*
  bool tilde = false;          // matched as word~
};

// True when word stands in the list, plain or with "*"; both flags are cleared first. Letter case is ignored. The list needs a line
// break before its first entry to match it (classify hands it one).
bool searchWordList(const QString& word, const QString& list, BlockWordFlags& flags);

enum class BlockClass { start = 0, end = 1, middle = 2, none = 3 };

class BlockWords {
 public:
  BlockWords() = default;
  BlockWords(const QString& startList, const QString& endList, const QString& middleList);
  bool isEmpty() const;   // no list has a word

  struct Entry {
    BlockClass kind = BlockClass::none;
    bool doubleIndent = false;
    bool opensNothing = false;   // listed as word~
    bool needsIs = false;        // listed as word-
  };
  // The first that fits of end, start, middle. The empty word is none. Answers are kept, so a word costs one search.
  Entry classify(const QString& word) const;

 private:
  QSet<QString> start_, end_, middle_;   // folded
  mutable QHash<QString, Entry> known_;
};

// The widths of open blocks: 61 places; a push beyond stores into the last one, a pop of nothing returns the first.
class IndentStack {
 public:
  explicit IndentStack(int unit) { widths_[0] = unit; }
  void push(int width) {
    widths_[top_] = width;
    if (top_ < 60) ++top_;
  }
  int pop() {
    if (top_ > 0) --top_;
    return widths_[top_];
  }

 private:
  int widths_[61] = {};
  int top_ = 0;
};
