// Internals of an editor for the commands. Only control/edit/Editor.cpp and the command files include it.
#pragma once

#include <QObject>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "base/Program.h"
#include "control/commands/CommandTable.h"
#include "control/edit/AutoClose.h"
#include "control/edit/CaretRun.h"
#include "control/edit/Carets.h"
#include "control/edit/ColumnBlock.h"
#include "control/edit/Editor.h"
#include "control/keys/KeyMacro.h"
#include "text/find/Finder.h"

struct Editor::Impl {
  QObject context;                    // disconnects from the model when it is destroyed
  std::optional<std::int64_t> goal;   // the cell that vertical moves keep
  int ownChange = 0;                  // > 0: the code that changes the text sets the selection
  bool quiet = false;                 // the selection moves with the text without notifications
  int inside = 0;                     // > 0: inside a command; not an action of the user
  int pass = 0;                       // which repetition of the command this is, from 0
  int askedCount = 1;                 // the repeat count given to this command, repeatable or not
  bool cutAppends = false;            // this command's cut is appended to the clipboard
  struct Cuts {
    QString text;
    bool block = false;
  };
  bool gathersCuts = false;   // the cuts of all repetitions go to the clipboard together
  std::optional<Cuts> cuts;
  bool searchFailed = false;   // the last search found nothing
  // White space that auto-indent put into an otherwise empty line, in the text of that revision.
  struct AutoBlanks {
    text::ByteRange range;
    std::uint64_t revision = 0;
    std::optional<text::Edit> without;   // the last undo step without the blanks; none if the step holds other edits
    text::SelectionState before;
  };
  std::optional<AutoBlanks> autoBlanks;
  struct Moved {
    text::ByteOffset to{-1};
    CaretMove how = CaretMove::usual;
  } moved;                                  // by the last command, or whoever noted it
  std::vector<AutoPair> pairs;              // whose closer the editor put in
  bool columnMode = false;                  // extending the selection makes a column selection
  std::unique_ptr<text::Finder> searcher;   // of the last search, with its key
  std::pair<std::string, text::SearchOptions> searcherKey;
  std::vector<Caret> others;   // besides the main one, see Carets.h
  struct CaretsBefore {
    text::SelectionState main;
    std::optional<std::int64_t> goal;
    std::vector<Caret> others;
  };
  std::vector<CaretsBefore> caretsBefore;   // before their last changes, in the text of that revision
  std::uint64_t caretsBeforeIn = 0;
  CaretRun* run = nullptr;                          // while a command runs at each of several carets
  bool placed = false;                              // the others already stand where the change puts them
  std::optional<text::SelectionState> stepBefore;   // what undo restores, if not the present selection
};

struct EditorAccess {
  static Editor::Impl& impl(Editor& e) { return *e.impl_; }
  static const Editor::Impl& impl(const Editor& e) { return *e.impl_; }
  static bool& searchFailed(Editor& e) { return e.impl_->searchFailed; }
  // Runs a command of either table with repeat count, append flag and macro recording.
  static void run(Editor& e, const Command& command, const QVariant& argument);
  // Calls note for actions of the user (not of the program, and not as part of a command) while a macro is recorded.
  template <class Note>
  static void noteForMacro(Editor& e, Note note) {
    if (e.impl_->inside == 0 && !gBusy() && keyMacros().recording()) note();
  }
  struct Inside {
    explicit Inside(Editor& e) : editor(e) { ++editor.impl_->inside; }
    ~Inside() { --editor.impl_->inside; }
    Editor& editor;
  };
  // True, after a note to the user, when the text is read-only.
  static bool isGuarded(Editor& e);
  // Clips to the text and to a character boundary; never inside CR LF.
  static text::ByteOffset snap(const text::Snapshot& text, text::ByteOffset at);
  static void setSelection(Editor& e, const text::SelectionState& selection) { e.selection_ = selection; }   // nobody is told
  // Sets the selection after a change of the text or a move that keeps the goal column.
  static void place(Editor& e, text::SelectionState selection, std::optional<std::int64_t> goal = std::nullopt);
  // Of several carets: joins what touches the main one; moves the others with the text.
  static void settle(Editor& e, text::SelectionState& main, std::optional<std::int64_t> goal);
  static void follow(Editor& e, const text::Change& change);
  // Applies edits (see text::Document::apply). The selection becomes `after`, or moves with the text. False when read-only.
  static bool change(Editor& e, std::span<const text::Edit> edits, std::optional<text::SelectionState> after = std::nullopt,
                     text::Join join = text::Join::none);
  // Replaces the range by bytes as they are and puts the caret behind them.
  static bool put(Editor& e, text::ByteRange range, std::string bytes, text::Join join = text::Join::none);
  // Converts text from outside to bytes of this text; line breaks become those of `line`.
  static std::string incoming(Editor& e, QStringView text, text::LineNo line);
  static bool travel(Editor& e, std::optional<text::SelectionState> (text::Document::*step)());   // undo or redo
  // Puts content into every row of the block, which is that of the selection or beside it. Afterwards the selection has no width
  // and is behind the inserted text.
  static bool fillBlock(Editor& e, const ColumnBlock& block, const std::string& content, text::Join join = text::Join::none);
  // Deletes the block of a column selection (leaving a selection without width), or the selected text.
  static bool deleteSelection(Editor& e);
  // Replaces the range by a line break; the new line begins with `indent`. Removes white space that auto-indent had put into the
  // line if no text follows it.
  static bool breakLine(Editor& e, text::ByteRange range, const std::string& lineBreak, const std::string& indent);
  // Notes that the last edit put `length` blanks before the caret, to be removed when the caret leaves the line. `without`: the
  // same edit without them.
  static void noteAutoBlanks(Editor& e, std::size_t length, text::Edit without, const text::SelectionState& before);
  static std::optional<text::ByteRange> autoBlanks(Editor& e);
  // Gives the caret's line the indent of the word or bracket that has just been typed there, if that ends a block.
  static bool stepBack(Editor& e);
  static std::string indentOf(const text::Snapshot& text, text::LineNo line);   // its leading blanks and tabs
  static std::string blanksFrom(const text::Snapshot& text, text::ByteOffset at);
};

// Larger repeat counts are limited to this.
inline constexpr int kMostRepeats = 1000000;
