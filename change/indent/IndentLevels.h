// What is open at a place of the text during indentation: blocks, brackets and an unfinished statement.
#pragma once

#include <QString>
#include <memory>
#include <utility>

#include "change/indent/IndentHabits.h"

// An open block or bracket; the first level is the file itself.
struct Level {
  int base = 0;      // indent of the line that opened it
  int content = 0;   // indent of the lines inside
  int least = 0;     // lines in a bracket that are indented further keep their alignment
  bool bracket = false;
  bool byWord = false;           // opened by a word, not by a sign
  int lastIf = -1;               // indent of the last "if" inside, for an "else" that begins a line
  int shift = 0;                 // new minus old indent of the line that opened it
  int old = 0;                   // old indent of the line that `base` is taken from
  int width = 0;                 // width of a block, in the order in which the language lists it
  bool statements = false;       // a ";" occurred in the bracket
  int blocks = 0;                // unfinished blocks of statements inside the bracket (an argument of a macro)
  int inBranch = 0;              // additional indent of the lines of a branch
  bool settled = false;          // the first line of the block has shown where its lines stand
  QString word{};                // the word that opened it, in lower case; with ">" and the last middle word
  QString also{};                // further opening words of its first statement: "loop" behind "for"
  IndentHabits::Tally tally{};   // where its lines stand

  QString opener() const { return word.section(u'>', 0, 0); }
  bool isOfKind(const QString& kind) const { return opener().contains(kind) || also.contains(kind); }
};

// The open levels. Copies are cheap at any depth: they share their levels until one of them is changed.
class LevelStack {
 public:
  LevelStack() = default;
  LevelStack(const LevelStack&) = default;
  LevelStack(LevelStack&&) = default;
  LevelStack& operator=(LevelStack other) {
    std::swap(top_, other.top_);
    return *this;
  }
  ~LevelStack() {   // iterative, so that deep nesting cannot overflow the stack
    while (top_ && top_.use_count() == 1) top_ = std::exchange(top_->below, nullptr);
  }

  bool empty() const { return !top_; }
  std::size_t size() const { return top_ ? top_->depth : 0; }
  void push_back(Level level) { top_ = std::make_shared<Node>(Node{std::move(level), top_, size() + 1}); }
  void pop_back() { top_ = top_->below; }
  const Level& back() const { return top_->level; }
  Level& back() { return own(top_).level; }
  Level& belowBack() { return own(own(top_).below).level; }   // of two levels or more

  const Level& at(std::size_t depth) const { return nodeAt(depth)->level; }   // counted from 1
  // Depth of the last level for which `is` holds, among the last hundred blocks and all brackets after them; 0: none.
  template <class Predicate>
  std::size_t depthOf(Predicate is) const {
    int blocks = 0;
    for (const Node* node = top_.get(); node && blocks < 100; node = node->below.get()) {
      if (is(node->level)) return node->depth;
      blocks += !node->level.bracket;
    }
    return 0;
  }

 private:
  struct Node {
    Level level;
    std::shared_ptr<Node> below;
    std::size_t depth;
  };
  static Node& own(std::shared_ptr<Node>& node) {
    if (node.use_count() > 1) node = std::make_shared<Node>(*node);
    return *node;
  }
  const Node* nodeAt(std::size_t depth) const {
    const Node* node = top_.get();
    while (node->depth > depth) node = node->below.get();
    return node;
  }
  std::shared_ptr<Node> top_;
};

// State of the statement that is being read.
struct Statement {
  QString first;   // its first word, behind a label
  int words = 0;
  bool opensNothing = false;   // it begins with a word~
  bool opened = false;         // one of its words has opened a block; later words do not
  bool awaitsIs = false;       // it began with a word that needs "is", which has not come yet
  bool choice = false;         // a "?" occurred: a colon does not end a label
  bool macro = false;          // it begins with a grave accent, or "if (...)" governs such a statement: it may end without ";"
  bool labelled = false;       // a label stood before it
};

// State of the reader between two lines.
struct IndentState {
  LevelStack levels_;
  Statement statement_;
  int statementIndent_ = 0, statementShift_ = 0;
  int anchor_ = 0, anchorOld_ = 0;   // new and old indent of the last line that did not begin within brackets
  bool unfinished_ = false;          // the statement continues in the next line
  bool listGoesOn_ = false;          // ... with the next item of a list
  bool afterLabel_ = false;          // ... with what the label stands for
  bool hangs_ = false;               // ... with the statement that "if (...)" or "else" governs
  bool afterName_ = false;           // ... behind a name or a closing bracket
  bool headerOpen_ = false;          // a block's first statement goes on: "module m" with its brackets below
  bool headerGoesOn_ = false;        // ... since its last line ends with an operator
  int shift_ = 0;                    // new minus old indent of the last line, for lines that follow it
};
