// An editable text: the current snapshot, undo and redo, marks that move with the text, a save point and listeners. All calls are
// made on one thread (the user-interface thread); snapshots may be used on any thread.
//
// Every change goes through apply(), undo(), redo() or reset(). Each checks read-only, moves the marks, increments the revision and
// notifies each listener exactly once.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "text/store/Change.h"

namespace text {

// Replaces the bytes of range by text.
struct Edit {
  ByteRange range;
  std::string text;
};

// The caret and selection, stored with each undo step and restored by undo and redo. anchor may be behind caret. The virtual
// columns are cells behind the end of the line (column selections only).
struct SelectionState {
  ByteOffset anchor, caret;
  std::int64_t anchorVirtual = 0, caretVirtual = 0;
  bool column = false;
  bool operator==(const SelectionState&) const = default;
};

enum class Join {   // how an edit is joined with the previous undo step
  none,             // a step of its own
  typing,           // joins the last step if that was typing too and ends where this edit begins
  deleting          // the same for successive Delete or Backspace
};

using MarkId = std::uint64_t;   // never 0

class Document {
 public:
  Document();
  ~Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  const Snapshot& snapshot() const;
  std::uint64_t revision() const;
  bool readOnly() const;
  void setReadOnly(bool on);   // apply, undo and redo then do nothing and return false

  // Replaces the whole text (loading). Clears undo, marks and save point; the text counts as unmodified.
  void reset(Snapshot snapshot);

  // Applies edits, which ascend and do not overlap, in offsets of the current text. They become one undo step, or a part of the
  // open group. `before` is the selection that undo restores. Returns false and does nothing when read-only, when the edits break
  // these rules, or when called by a listener. Edits that change nothing are dropped; if none is left, nothing is recorded or
  // notified (returns true). Costs O(log n) for one edit; for many O(changed bytes + touched pieces). std::bad_alloc leaves
  // everything as it was; this holds for all operations.
  bool apply(std::span<const Edit> edits, const SelectionState& before, Join join = Join::none);
  bool apply(Edit edit, const SelectionState& before, Join join = Join::none);
  // Replaces the whole text as one undo step, for a file that is read again. Only the differing parts count as changed.
  bool exchange(const Snapshot& text, const SelectionState& before);
  // The selection after the last apply, which redo restores. Default: the end of the last edit.
  void setSelectionAfter(const SelectionState& after);
  // The line end for typed lines; none (after reset): not chosen. Inside a group it is part of the undo step: undo and redo switch
  // it too. It is up to date when listeners are called.
  LineBreak newLine() const;
  void setNewLine(LineBreak newLine);
  void breakJoin();   // the next typing starts a new step (caret moved, saved ...)

  bool canUndo() const;   // undo() would do something
  bool canRedo() const;
  std::optional<SelectionState> undo();   // nullopt: nothing to undo, or read-only
  std::optional<SelectionState> redo();
  // Groups nest; all steps inside the outermost group become one. Prefer UndoGroup. undo() inside a group is refused.
  void beginGroup();
  void endGroup();
  // Rolls the open group back to its start, newLine() included, and drops its steps; the group stays open.
  void rollbackGroup();
  // The same without exceptions: exceptions of listeners are dropped. Without enough memory the work of the group stays as one step
  // that can be undone.
  void abandonGroup() noexcept;
  // Until endRun() all changes are separate steps; undo() and redo() handle them like any other: first those of the run, then older
  // ones. endRun() joins the remaining steps of the run. Runs do not nest. abandonRun() undoes the steps of the run for good, as
  // far as memory allows; the run stays open.
  void beginRun();
  void endRun() noexcept;
  void abandonRun() noexcept;

  // Limits of the undo memory; above them the oldest steps are dropped whole. The newest step is kept whatever its size, unless
  // steps is 0. Default: any number of steps (SIZE_MAX), 1 GiB.
  void setUndoLimit(std::size_t steps, std::size_t bytes);
  bool undoWasDropped() const;   // oldest steps have been dropped since the last reset

  void markSaved();        // the current text is what is on disk
  void markUnsaved();      // the current text is not on disk, also after undo (lost file)
  bool modified() const;   // false again after undoing back to the save point
  // The one listener for what no Change tells: a group or run ended whose changes cancelled each other, and modified() is false
  // again. Its exceptions are dropped.
  void whenCancelledOut(std::function<void()> listener);

  // Marks move with the text as Change::map says. A position outside the text becomes its nearest end. For an unknown mark
  // removeMark does nothing; the others throw std::out_of_range.
  MarkId addMark(ByteOffset at, Bias bias = Bias::right);
  void removeMark(MarkId id);
  ByteOffset markAt(MarkId id) const;

  // Listeners are called in the order of subscription, after the new state is in place. A listener may read the document but not
  // change it. Destroying the returned handle ends the subscription; the handle may outlive the document. An exception of a
  // listener is rethrown by the call that changed the text, after all listeners were called.
  using Listener = std::function<void(const Change&)>;
  [[nodiscard]] std::shared_ptr<void> subscribe(Listener listener);

  void checkInvariants() const;   // aborts with a message on a breach

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Joins all changes during its lifetime into one undo step. An exception rolls back the whole outermost group.
class UndoGroup {
 public:
  explicit UndoGroup(Document& document) : document_(document) { document_.beginGroup(); }
  ~UndoGroup() {
    if (std::uncaught_exceptions() > exceptions_) document_.abandonGroup();
    document_.endGroup();
  }
  UndoGroup(const UndoGroup&) = delete;
  UndoGroup& operator=(const UndoGroup&) = delete;

 private:
  Document& document_;
  const int exceptions_ = std::uncaught_exceptions();
};

}   // namespace text
