// A text that can be edited: the present snapshot, undo and redo, marks that move with the text, a save point and
// listeners. All calls are made on one thread (the user-interface thread); snapshots go anywhere.
//
// Every change goes through apply(), undo(), redo() or reset(): each checks read-only, moves the marks, raises the
// revision and notifies each listener exactly once.
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

// Replace the bytes of range by text.
struct Edit {
  ByteRange range;
  std::string text;
};

// Where the caret was; kept with each undo step and given back by undo and redo. anchor may be behind caret.
// The virtual columns are cells past the line's end (column selections only).
struct SelectionState {
  ByteOffset anchor, caret;
  std::int64_t anchorVirtual = 0, caretVirtual = 0;
  bool column = false;
  bool operator==(const SelectionState&) const = default;
};

enum class Join {   // how an edit joins the undo step before it
  none,             // a step of its own
  typing,           // joins the last step when that was typing too and ends where this begins
  deleting          // the same for runs of Delete and of Backspace
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

  // Exchanges the whole text (loading). Clears undo, marks and save point: the text counts as unmodified.
  void reset(Snapshot snapshot);

  // Applies edits: ascending, not overlapping, in offsets of the text as it is. One undo step (or part of the open
  // group). `before` is the selection to come back to on undo. Returns false (nothing done) when read-only, when the
  // edits do not meet these conditions, or when called by a listener; edits that change nothing are dropped, and if none is
  // left nothing is recorded or notified (returns true). Costs O(log n) for one edit; for many, O(bytes changed + pieces
  // touched). std::bad_alloc leaves everything as it was (so with undo, redo and all others).
  bool apply(std::span<const Edit> edits, const SelectionState& before, Join join = Join::none);
  bool apply(Edit edit, const SelectionState& before, Join join = Join::none);
  // Replaces the whole text by another one as one undo step: a file read again. Only what differs counts as changed.
  bool exchange(const Snapshot& text, const SelectionState& before);
  // The selection after the last apply (until it is set: the end of the last edit); redo comes back to it.
  void setSelectionAfter(const SelectionState& after);
  // How lines that are typed end; none (after reset): nobody chose. Set inside a group it is part of the group's undo step: undo
  // and redo set it back and on. It is in place when listeners are called.
  LineBreak newLine() const;
  void setNewLine(LineBreak newLine);
  void breakJoin();   // the next typing starts a step of its own (caret moved, saved ...)

  bool canUndo() const;   // undo() would do something
  bool canRedo() const;
  std::optional<SelectionState> undo();   // nullopt: nothing to undo, or read-only
  std::optional<SelectionState> redo();
  // Groups nest; all steps inside the outermost become one. Prefer UndoGroup. undo() inside a group is refused.
  void beginGroup();
  void endGroup();
  // Rolls the open group back to its start (newLine() too) and forgets it; the group stays open.
  void rollbackGroup();
  // The same where nothing may be thrown: what a listener throws is dropped; without memory for it the group's work stays, as
  // one step that can be undone.
  void abandonGroup() noexcept;
  // Until endRun() all changes stay steps of their own, which undo() and redo() take like any other: first the run's, then those
  // before it. endRun() makes one step of what is left of the run's. Runs do not nest. abandonRun() takes back the run's steps for
  // good as far as memory allows; the run stays open.
  void beginRun();
  void endRun() noexcept;
  void abandonRun() noexcept;

  // Limits of the undo memory; beyond it whole oldest steps are dropped. The newest step stays whatever its size, unless
  // steps is 0. Default: no limit on steps (SIZE_MAX), 1 GiB.
  void setUndoLimit(std::size_t steps, std::size_t bytes);
  bool undoWasDropped() const;   // oldest steps have been dropped since the last reset

  void markSaved();        // the present text is what is on disk
  void markUnsaved();      // it is not, whatever undo says (lost file)
  bool modified() const;   // false again after undoing back to the save point

  // Marks move with the text as Change::map says. A place outside the text becomes its nearest end. An unknown mark: removeMark does nothing, the others throw
  // std::out_of_range.
  MarkId addMark(ByteOffset at, Bias bias = Bias::right);
  void removeMark(MarkId id);
  ByteOffset markAt(MarkId id) const;
  void moveMark(MarkId id, ByteOffset at);

  // Listeners are called in the order of subscription after the new state is in place. A listener may read, but
  // not change, the document. The returned handle ends the subscription when it goes; it may outlive the document.
  // What a listener throws comes out of the call that changed the text, after every listener was called.
  using Listener = std::function<void(const Change&)>;
  [[nodiscard]] std::shared_ptr<void> subscribe(Listener listener);

  void checkInvariants() const;   // aborts with a message on a breach

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// One undo step for all that is done while it lives. Left by an exception it takes back all that the outermost open group did.
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
