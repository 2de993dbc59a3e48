// Where lines of comment alone go when the code around them is indented anew.
#pragma once

#include <algorithm>
#include <vector>

// How a line stands and what it is.
struct Placed {
  enum class Kind { blank, fixed, code, comment, insideComment } kind = Kind::blank;
  int indent = 0, old = 0;
};

// Lines of comment alone go with the code around them: with the line below where they stand in its column, else with the line above.
class CommentLines {
 public:
  explicit CommentLines(std::vector<int>* indents) : indents_(indents) {}
  void add(const Placed& line) { waiting_.push_back({indents_->size(), line}); }
  void codeFollows(const Placed* next, int trailing) {
    int shift = above_.indent - above_.old;
    bool goesOn = trailing_ >= 0;   // still below a comment behind code
    for (auto& [at, line] : waiting_) {
      const bool own = line.kind == Placed::Kind::comment;
      goesOn = goesOn && own && line.old == trailing_;
      if (goesOn) shift = above_.indent - above_.old;
      else if (own) shift = placeOf(line.old, next) - line.old;
      (*indents_)[at] = std::max(0, line.old + shift);
    }
    waiting_.clear();
    if (next) above_ = *next;
    trailing_ = trailing;
  }

 private:
  int placeOf(int old, const Placed* next) const {
    if (next && old == next->old) return next->indent;
    if (next && old == next->indent && above_.indent == above_.old) return old;   // where the code below moves to
    if (old == above_.old) return above_.indent;
    if (old == 0) return 0;   // code that was put out of use at the margin
    return next ? old + next->indent - next->old : old + above_.indent - above_.old;
  }
  std::vector<int>* indents_;
  std::vector<std::pair<std::size_t, Placed>> waiting_;
  Placed above_;
  int trailing_ = -1;
};
