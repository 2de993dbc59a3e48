// Indentation of lines that hold only a comment.
#pragma once

#include <algorithm>
#include <vector>

// Position and kind of a line.
struct Placed {
  enum class Kind { blank, fixed, code, comment, insideComment } kind = Kind::blank;
  int indent = 0, old = 0;
};

// Lines with only a comment follow the code around them: the line below if they stand in its column, else the line above.
class CommentLines {
 public:
  explicit CommentLines(std::vector<int>* indents) : indents_(indents) {}
  void add(const Placed& line) { waiting_.push_back({indents_->size(), line}); }
  void codeFollows(const Placed* next, int trailing) {
    int shift = above_.indent - above_.old;
    bool goesOn = trailing_ >= 0;   // continues a comment behind code
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
    if (next && old == next->indent && above_.indent == above_.old) return old;   // the new column of the code below
    if (old == above_.old) return above_.indent;
    if (old == 0) return 0;   // disabled code at the left margin
    return next ? old + next->indent - next->old : old + above_.indent - above_.old;
  }
  std::vector<int>* indents_;
  std::vector<std::pair<std::size_t, Placed>> waiting_;
  Placed above_;
  int trailing_ = -1;
};
