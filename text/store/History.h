// Undo and redo of a document: lists of steps, each with the delta to the state on its other side; limits; the save point.
//
// Invariants: every state that undo and redo can reach has a number, so that "is this the saved state" is one comparison. All
// allocations are made in prepare(), before a change is put in place; commit(), stepBack() and stepOn() cannot fail.
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
    std::uint64_t state = 0;   // number of the state after the step
    SelectionState before, after;
    LineBreak newLineBefore = LineBreak::none, newLineAfter = LineBreak::none;   // equal: the step does not change the line end
    std::vector<Delta> deltas;   // in order of time; one delta, except while a group is open
    std::size_t cost = 0;
    Join join = Join::none;
    std::int8_t direction = 0;   // of a run of deletions: 1 Delete, -1 Backspace, 0 unknown
  };
  // A change that is ready for recording.
  struct Entry {
    std::list<Step> fresh;       // the new step, unless the change is joined with the last one
    std::vector<Delta> deltas;   // replace the newest `replaced` deltas of the last step
    std::size_t replaced = 0;
    std::int8_t direction = 0;
  };

  Entry prepare(Delta delta, const SelectionState& before, Join join, const TreePtr& old);
  void commit(Entry entry) noexcept;

  bool canStepBack() const { return !done_.empty(); }
  bool canStepOn() const { return !undone_.empty(); }
  // The one delta of the newest done or undone step. May throw; changes nothing visible.
  const Delta& deltaBack() { return single(done_.back()); }
  const Delta& deltaOn() { return single(undone_.back()); }
  // Moves the step to the other list with the delta that leads back. Returns the step.
  const Step& stepBack(Delta back) noexcept;
  const Step& stepOn(Delta back) noexcept;

  // The line end for typed lines. If set in a group, it belongs to the step of the group and is undone with it.
  LineBreak newLine() const { return newLine_; }
  void setNewLine(LineBreak newLine) { newLine_ = newLine; }

  void beginGroup();
  void endGroup() noexcept;
  bool groupOpen() const { return depth_ > 0; }
  bool groupHasStep() const { return groupHasStep_; }   // the open group has a change
  void forgetGroupStep() noexcept;
  void resetNewLine() noexcept {
    if (depth_ > 0) newLine_ = newLineAtGroup_;
  }   // value when the group was opened

  // See Document::beginRun. `now` is the current tree; without enough memory the run stays several steps.
  void beginRun();
  void endRun(const TreePtr& now) noexcept;
  bool runHasSteps() const { return run_ && done_.size() > run_->base; }
  void forgetUndone() noexcept;
  // For a run that is abandoned: redo then restores older steps that the run had undone, newest last.
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
    std::size_t base = 0;      // number of done steps that are older than the run
    std::size_t undone = 0;    // number of the newest undone steps that are older than the run
    std::list<Step> dropped;   // older undone steps that a change of the run dropped, in their order
  };
  std::optional<Run> run_;   // while one is open
  int depth_ = 0;
  LineBreak newLine_ = LineBreak::none, newLineAtGroup_ = LineBreak::none;
  bool groupHasStep_ = false, joinable_ = false, unsaved_ = false, dropped_ = false;
};

}   // namespace text::engine
