// The result of merging, with what is left to decide. It begins as the merged text (text/diff/Merge.h), in which each conflict stands
// with its marks; a conflict that is decided is replaced by the lines of a side, or edited by hand.
#pragma once

#include <QWidget>
#include <array>
#include <functional>
#include <vector>

#include "control/edit/TextModel.h"
#include "text/diff/Merge.h"
#include "text/find/Search.h"

class CodeMax;
class QLabel;
class QToolButton;

class MergeView : public QWidget {
  Q_OBJECT
 public:
  // Takes the control, whose text is that of `merged`. left, right: the texts that were merged.
  MergeView(CodeMax* result, const text::Snapshot& left, const text::Snapshot& right, const std::vector<text::MergeRegion>& regions,
            const text::MergedText& merged, QWidget* parent = nullptr);
  ~MergeView() override;

  CodeMax& result() { return *result_; }
  int left() const { return left_; }   // conflicts whose marks still stand
  bool step(int direction);            // to the next or previous one, round at the ends; false: none is left
  enum class Take { left, right, both };
  bool take(Take what);   // for the conflict at the caret; one undo step

  // Tells of the present text, on any thread, whether conflicts remain in it: a line that is a mark, "=======" in a conflict for which
  // no side was taken, or line ends that both sides changed and the user has not agreed to. Linear.
  std::function<bool(text::SearchControl&)> remains() const;

 signals:
  void shown(const text::MergeRegion& region);

 private:
  struct Conflict {
    text::MergeRegion region;
    text::LineNo madeBegin, madeEnd;   // its lines in the merged text
    text::MarkId begin = 0, end = 0;
    bool toEnd = false;   // of the text
    bool stands = true;
  };
  std::pair<std::int64_t, std::int64_t> linesOf(const Conflict& conflict) const;
  bool stands(const Conflict& conflict) const;
  std::pair<const Conflict*, std::int64_t> whole(const Conflict* conflict) const;
  const Conflict* at(std::int64_t line) const;   // that still stands; null: none
  const Conflict* current() const;
  void textChanged(const text::Change& change);
  void showCount();
  void showState();

  CodeMax* result_;
  const std::array<text::Snapshot, 2> sides_;
  const text::Snapshot made_;   // the merged text
  std::vector<Conflict> conflicts_;
  int left_ = 0;
  std::int64_t lineEnds_;   // both sides changed them; the user has not said yet that those of the left text are right
  QLabel* count_;
  QToolButton* lineEndsTaken_;
  std::vector<QToolButton*> steps_, takes_;
};
