// Undo and redo of a document as lists of steps, each the delta to the state on its other side; limits; the save point.
//
// Always: every state of the text that undo and redo can reach has a number, so "is this the saved one" is one comparison. What
// can fail (allocation) happens before a change is put in place, in prepare(); commit(), stepBack() and stepOn() cannot fail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <vector>

#include "text/store/Delta.h"
#include "text/store/Document.h"

namespace text::engine {

class History {
 public:
  struct Step {
    std::uint64_t state = 0;   // number of the state behind the step
    SelectionState before, after;
    LineBreak newLineBefore = LineBreak::none, newLineAfter = LineBreak::none;   // equal: the step leaves it as it is
    std::vector<Delta> deltas;   // in order of time; one, except while a group is open
    std::size_t cost = 0;
    Join join = Join::none;
    std::int8_t direction = 0;   // of a run of deletions: 1 Delete, -1 Backspace, 0 not known yet
  };
  // A change that is ready to be recorded.
  struct Entry {
    std::list<Step> fresh;       // the new step, when it does not go into the last one
    std::vector<Delta> deltas;   // what replaces the newest `replaced` deltas of the last step
    std::size_t replaced = 0;
    std::int8_t direction = 0;
  };

  Entry prepare(Delta delta, const SelectionState& before, Join join, const TreePtr& old);
  void commit(Entry entry) noexcept;

  bool canStepBack() const { return !done_.empty(); }
  bool canStepOn() const { return !undone_.empty(); }
  // The one delta of the newest done / undone step. May fail, changes nothing that shows.
  const Delta& deltaBack() { return single(done_.back()); }
  const Delta& deltaOn() { return single(undone_.back()); }
  // Moves the step to the other list, with the delta that leads back. Returns it.
  const Step& stepBack(Delta back) noexcept;
  const Step& stepOn(Delta back) noexcept;

  // How lines end that are typed. What is set in a group belongs to the group's step, and goes with it when that is undone.
  LineBreak newLine() const { return newLine_; }
  void setNewLine(LineBreak newLine) { newLine_ = newLine; }

  void beginGroup();
  void endGroup() noexcept;
  bool groupOpen() const { return depth_ > 0; }
  bool groupHasStep() const { return groupHasStep_; }   // something was changed in the open group
  void forgetGroupStep() noexcept;
  void resetNewLine() noexcept {
    if (depth_ > 0) newLine_ = newLineAtGroup_;
  }   // as it was when the group was opened

  // See Document::beginRun. `now` is the present tree; without memory the run stays several steps.
  void beginRun();
  void endRun(const TreePtr& now) noexcept;
  bool runHasSteps() const { return run_ && done_.size() > run_->base; }
  void forgetUndone() noexcept;
  // For a run that takes itself back: what can be redone is then what the run undid of older steps, newest last.
  void restoreUndone() noexcept;

  void setSelectionAfter(const SelectionState& after);
  void breakJoin() { joinable_ = false; }
  void setLimit(std::size_t steps, std::size_t bytes);
  bool dropped() const { return dropped_; }
  void clear() noexcept;

  void markSaved() {
    saved_ = state();
    unsaved_ = false;
  }
  void markUnsaved() { unsaved_ = true; }
  bool modified() const { return unsaved_ || state() != saved_; }

  void checkInvariants() const;

 private:
  std::uint64_t state() const { return done_.empty() ? bottom_ : done_.back().state; }
  static const Delta& single(Step& step);
  const Step& shift(std::list<Step>& from, std::list<Step>& to, Delta back) noexcept;
  void trim() noexcept;
  void mergeSteps(std::size_t base, const TreePtr& now);
  void weigh(Step& step) noexcept;

  std::list<Step> done_, undone_;
  std::uint64_t bottom_ = 0;   // number of the oldest state
  std::uint64_t saved_ = 0, lastState_ = 0;
  std::size_t cost_ = 0;   // of all steps
  std::size_t stepLimit_ = SIZE_MAX, byteLimit_ = std::size_t{1} << 30;
  struct Run {
    std::size_t base = 0;      // so many of the done steps are older than the run
    std::size_t undone = 0;    // so many of the newest undone steps are older than the run
    std::list<Step> dropped;   // older ones that a change of the run took from the undone ones, in their order
  };
  std::optional<Run> run_;   // while one is open
  int depth_ = 0;
  LineBreak newLine_ = LineBreak::none, newLineAtGroup_ = LineBreak::none;
  bool groupHasStep_ = false, joinable_ = false, unsaved_ = false, dropped_ = false;
};

}   // namespace text::engine
