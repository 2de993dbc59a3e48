// Re-indentation by block words. Both ways answer, line by line, how many blanks a line gets before its first character that is neither
// blank nor tab; the text itself is theirs to read only.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "control/code/BlockWords.h"
#include "language/FormatRules.h"
#include "text/color/Highlight.h"

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

using LineSource = std::function<QString(qint64 line)>;   // a line without its break

// Looks at each line's first word only (the word at a caret in front of it). A closing word takes back exactly what its opening
// word added; a line never goes below 0. Lines of white space only get the blanks too.
std::vector<int> indentsByFirstWord(const LineSource& line, qint64 count, const BlockWords& words, int unit);

// Reads the whole line, skips comments and strings: blocks that open behind other words, one-line blocks, "end if", "else begin", open
// brackets and statements without a block word that go on in the next line. Lines within brackets and comments keep their offset to the
// line where these began, comments alone go with the code around them. What the text itself does behind a block word throughout - a body
// of a module at the margin, "when" below "case" - stays (IndentHabits.h). Empty lines get nothing; lines that begin within a string kStays. `highlighter` may be null: then nothing
// is taken for a comment.
std::vector<int> indentsByWholeLine(const LineSource& line, qint64 count, const BlockWords& words, int unit,
                                    const text::Highlighter* highlighter, const FormatRules& rules, int tabSize);
constexpr int kStays = -1;   // instead of a number of blanks: the line begins within a string and stays as it is

// How a text is indented: by tabs where more lines begin with one than with blanks, and the commonest step from line to line.
struct IndentStyle {
  int unit = 0;   // in columns; 0: nothing is indented
  bool tabs = false;
};
IndentStyle detectIndent(const LineSource& line, qint64 count, int tabSize);

// The first word of a line whose leading white space is gone.
QString firstWord(const QString& trimmedLine);
// The number of leading blanks and tabs.
int leadingLength(const QString& line);
