// Indentation by block words. Two methods; both compute for each line the number of blanks before its first character that is not a
// blank or tab. They only read the text.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "control/code/BlockWords.h"
#include "language/FormatRules.h"
#include "text/color/Highlight.h"

// The widths of the open blocks: 61 places. A push on a full stack replaces the last one; a pop of an empty stack returns the
// first.
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

using LineSource = std::function<QString(qint64 line)>;   // a line without its break

// The simple method looks only at the first word of each line. A closing word removes exactly the indent that its opening word
// added; a line never goes below 0. Lines of white space get the blanks too.
std::vector<int> indentsByFirstWord(const LineSource& line, qint64 count, const BlockWords& words, int unit);

// The careful method reads whole lines and skips comments and strings. It knows blocks that open behind other words, blocks in one
// line, "end if", "else begin", open brackets, and statements without a block word that continue in the next line. Lines within
// brackets and comments keep their offset to the line in which these began. Lines with only a comment follow the code around them.
// What the text does throughout behind a block word, such as a module body at the left margin or "when" below "case", is kept
// (IndentHabits.h). Empty lines get nothing. A line that begins within a string gets kStays. `highlighter` may be null: then no
// comments are recognised.
std::vector<int> indentsByWholeLine(const LineSource& line, qint64 count, const BlockWords& words, int unit,
                                    const text::Highlighter* highlighter, const FormatRules& rules, int tabSize);
constexpr int kStays = -1;   // in place of a number: the line begins within a string and is not changed

// How a text is indented: by tabs if more lines begin with a tab than with blanks; the unit is the most frequent step between
// lines.
struct IndentStyle {
  int unit = 0;   // in columns; 0: the text is not indented
  bool tabs = false;
};
IndentStyle detectIndent(const LineSource& line, qint64 count, int tabSize);

// The first word of a line without its leading white space.
QString firstWord(const QString& trimmedLine);
// The number of leading blanks and tabs.
int leadingLength(const QString& line);
