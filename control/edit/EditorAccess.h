// What the commands reach of an editor beyond its public face. Only control/edit/Editor.cpp and the command files include it.
#pragma once

#include <QObject>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "base/Program.h"
#include "control/edit/ColumnBlock.h"
#include "control/edit/CommandTable.h"
#include "control/edit/Editor.h"
#include "control/keys/KeyMacro.h"
#include "text/find/Finder.h"

struct Editor::Impl {
  QObject context;                    // ends the connection to the model
  std::optional<std::int64_t> goal;   // the cell that vertical moves keep to
  int ownChange = 0;                  // > 0: the selection is set by the one who changes the text
  bool quiet = false;                 // the selection moves with the text, and nobody is told
  int inside = 0;                     // > 0: what is done is part of a command, nothing that the user typed
  int pass = 0;                       // which repetition of the command this is, from 0
  int askedCount = 1;                 // the repeat count that this command was given, repeatable or not
  bool cutAppends = false;            // this command's cut goes behind what is on the clipboard
  struct Cuts {
    QString text;
    bool block = false;
  };
  bool gathersCuts = false;   // the repetitions of a command go to the clipboard together, at their end
  std::optional<Cuts> cuts;
  bool searchFailed = false;   // the last search found nothing
  // White space that auto-indent put into a line that is empty otherwise, in the text of that revision.
  struct AutoBlanks {
    text::ByteRange range;
    std::uint64_t revision = 0;
    std::optional<text::Edit> without;   // the last undo step once more, but for the blanks; none where more belongs to that step
    text::SelectionState before;
  };
  std::optional<AutoBlanks> autoBlanks;
  bool columnMode = false;                  // what extends the selection makes a column selection
  std::unique_ptr<text::Finder> searcher;   // of the last search, with what it was made from
  std::pair<std::string, text::SearchOptions> searcherKey;
};

struct EditorAccess {
  static Editor::Impl& impl(Editor& e) { return *e.impl_; }
  static bool& searchFailed(Editor& e) { return e.impl_->searchFailed; }
  // Runs a command of any table with repeat count, append mark and macro recording.
  static void run(Editor& e, const Command& command, const QVariant& argument);
  // Calls note for what the user does (not the program, and not as part of a command) while a macro is recorded.
  template <class Note>
  static void noteForMacro(Editor& e, Note note) {
    if (e.impl_->inside == 0 && !gBusy() && keyMacros().recording()) note();
  }
  struct Inside {
    explicit Inside(Editor& e) : editor(e) { ++editor.impl_->inside; }
    ~Inside() { --editor.impl_->inside; }
    Editor& editor;
  };
  // True, after a note, when the text is read-only.
  static bool isGuarded(Editor& e);
  // Clips to the text and to a character boundary; never inside CR LF.
  static text::ByteOffset snap(const text::Snapshot& text, text::ByteOffset at);
  static void setSelection(Editor& e, const text::SelectionState& selection) { e.selection_ = selection; }   // nobody is told
  // Sets the selection after a change of the text or a move that keeps the goal column.
  static void place(Editor& e, text::SelectionState selection, std::optional<std::int64_t> goal = std::nullopt);
  // Applies edits (see text::Document::apply). The selection becomes `after`, or moves with the text. False when read-only.
  static bool change(Editor& e, std::span<const text::Edit> edits, std::optional<text::SelectionState> after = std::nullopt,
                     text::Join join = text::Join::none);
  // Replaces the range by bytes as they are and puts the caret behind them.
  static bool put(Editor& e, text::ByteRange range, std::string bytes, text::Join join = text::Join::none);
  // Text from outside as this text's bytes: line breaks become those of `line`.
  static std::string incoming(Editor& e, QStringView text, text::LineNo line);
  static bool travel(Editor& e, std::optional<text::SelectionState> (text::Document::*step)());   // undo or redo
  // Puts content into every row of the block, which is that of the selection or beside it; the selection then has no width and
  // stands behind what came in.
  static bool fillBlock(Editor& e, const ColumnBlock& block, const std::string& content, text::Join join = text::Join::none);
  // Deletes what a column selection covers (leaving a selection without width), or the selected text.
  static bool deleteSelection(Editor& e);
  // Breaks the line in the place of the range; the new one begins with `indent`. White space that auto-indent had put into the line,
  // and nothing was typed behind, does not stay.
  static bool breakLine(Editor& e, text::ByteRange range, const std::string& lineBreak, const std::string& indent);
  // The edit that was made last put `length` blanks in front of the caret: they go when the caret leaves its line. `without`: the edit
  // without them.
  static void noteAutoBlanks(Editor& e, std::size_t length, text::Edit without, const text::SelectionState& before);
  static std::optional<text::ByteRange> autoBlanks(Editor& e);
  static std::string indentOf(const text::Snapshot& text, text::LineNo line);   // its leading blanks and tabs
};

// A larger repeat count runs this often.
inline constexpr int kMostRepeats = 1000000;
