#include "control/keys/KeyCommands.h"

#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <functional>

#include "control/commands/CommandFunctions.h"
#include "control/edit/EditorAccess.h"
#include "control/find/Finding.h"
#include "control/folds/PaneFolds.h"
#include "control/keys/KeyMacro.h"

using namespace text;

namespace {

template <int cells, int lines>
void extendColumn(Editor& e, const QVariant&) {
  commandFunctions::extendBlock(e, cells, lines);
}

// The Tab key: a selection that holds a line break is indented, else a tab is typed (or blanks, or one into each row).
void tabKey(Editor& e, const QVariant&) {
  if (!e.selection().column && e.spansLines()) commandFunctions::indentSelection(e, {});
  else e.typeText(QStringLiteral("\t"));
}

// One thing at a time: the find window, the carets, the selection.
void dropSelection(Editor& e, const QVariant&) {
  if (isFindWindowShown(e.host().widget())) e.host().hideFindDialog();
  else if (carets::several(e)) carets::drop(e);
  else e.moveCaret(e.selection().caret, false);
}

void setFindOptions(Editor& e, const QVariant& argument) { setFindSwitches(e, argument.toString()); }

void toggleColumnMode(Editor& e, const QVariant&) {
  bool& on = EditorAccess::impl(e).columnMode;
  const bool allowed = e.options().columnSel;
  on = allowed && !on;
  e.host().note(!allowed ? QCoreApplication::translate("Editor", "Column selections are switched off in the options")
                : on ? QCoreApplication::translate("Editor", "Column mode: Shift and the arrow keys, and the mouse, select columns")
                     : QCoreApplication::translate("Editor", "Column mode is off"));
}

void macroRecord(Editor&, const QVariant&) { keyMacros().toggleRecording(); }
// The macro repeats itself: it may undo, which no repeatable command can.
void macroPlay(Editor& e, const QVariant&) { keyMacros().play(e, keyMacros().current(), EditorAccess::impl(e).askedCount); }

void completeWord(Editor& e, const QVariant&) { e.host().offerCompletion(); }

void toggleStickyLine(Editor& e, const QVariant&) { e.host().toggleStickyLine(); }

// Without a view nothing is folded.
template <auto work, auto... arguments>
void inFolds(Editor& e, const QVariant&) {
  if (PaneFolds* const folds = e.host().folds()) (folds->*work)(arguments...);
}

constexpr auto kKeyRows = std::to_array<Command>({
    {1001, "TABKEY", CommandArgument::none, true, "Tab", "Indents a selection over several lines, else types a tab.", tabKey,
     AtCarets::each},
    {1002, "DROPSELECTION", CommandArgument::none, false, "Esc",
     "Closes the find window; if there is none, ends the further carets, then the selection.", dropSelection},
    {1003, "COLUMNLEFTEXTEND", CommandArgument::none, true, "Alt+Shift+Left",
     "Extends the column selection one column to the left.", extendColumn<-1, 0>},
    {1004, "COLUMNRIGHTEXTEND", CommandArgument::none, true, "Alt+Shift+Right",
     "Extends the column selection one column to the right, also past the end of the line.", extendColumn<1, 0>},
    {1005, "COLUMNUPEXTEND", CommandArgument::none, true, "Alt+Shift+Up", "Extends the column selection one line up.",
     extendColumn<0, -1>},
    {1006, "COLUMNDOWNEXTEND", CommandArgument::none, true, "Alt+Shift+Down", "Extends the column selection one line down.",
     extendColumn<0, 1>},
    {1007, "COLUMNPAGEUPEXTEND", CommandArgument::none, true, "Alt+Shift+PgUp", "Extends the column selection 20 lines up.",
     extendColumn<0, -20>, CaretMove::page},
    {1008, "COLUMNPAGEDOWNEXTEND", CommandArgument::none, true, "Alt+Shift+PgDown", "Extends the column selection 20 lines down.",
     extendColumn<0, 20>, CaretMove::page},
    {1009, "MACRORECORD", CommandArgument::none, false, "Ctrl+Shift+R",
     "Starts recording a keystroke macro, or stops and keeps the macro.", macroRecord},
    {1010, "MACROPLAY", CommandArgument::none, false, "Ctrl+Shift+P", "Plays the keystroke macro that was recorded last.",
     macroPlay},
    {1011, "SETFINDOPTIONS", CommandArgument::text, false, "",
     "Sets the switches of the search: any of the words case, word, regex and preserve; the others are off.", setFindOptions},
    {1012, "COLUMNMODE", CommandArgument::none, false, "Ctrl+K, Ctrl+R",
     "Switches column mode on or off: keys and mouse then select columns.", toggleColumnMode},
    {1013, "BOOKMARKLINESCUT", CommandArgument::none, false, "", "Cuts the lines that have a bookmark.",
     commandFunctions::bookmarkLinesCut},
    {1014, "BOOKMARKLINESCOPY", CommandArgument::none, false, "", "Copies the lines that have a bookmark to the clipboard.",
     commandFunctions::bookmarkLinesCopy},
    {1015, "BOOKMARKLINESDELETE", CommandArgument::none, false, "", "Deletes the lines that have a bookmark.",
     commandFunctions::bookmarkLinesDelete},
    {1016, "BOOKMARKINVERT", CommandArgument::none, false, "",
     "Sets a bookmark on each line that has none, and removes the others.", commandFunctions::bookmarkInvert},
    {1020, "TOGGLEWORDWRAP", CommandArgument::none, false, "Alt+Z", "Wraps long lines of this view, or shows each line in one row.",
     commandFunctions::toggleWordWrap},
    {1030, "SELECTBLOCK", CommandArgument::none, true, "Ctrl+K, Ctrl+S",
     "Selects the block around the caret or the selection; again, the block around that.", commandFunctions::selectBlock,
     AtCarets::each},
    {1031,
     "GOTOBLOCKEND",
     CommandArgument::none,
     false,
     "Ctrl+K, Ctrl+J",
     "Goes to the other end of the block whose word or bracket is at the caret, else to the start of the block around it.",
     commandFunctions::gotoBlockEnd,
     {CaretMove::jump, AtCarets::each}},
    {1032, "FOLDTOGGLE", CommandArgument::none, false, "Ctrl+K, Ctrl+T",
     "Folds the block around the caret, or unfolds what its row hides.", inFolds<&PaneFolds::toggle>},
    {1033, "FOLD", CommandArgument::none, false, "Ctrl+K, Ctrl+-",
     "Folds the innermost open block around the caret, or all blocks that begin in the selected lines.", inFolds<&PaneFolds::fold>},
    {1034, "UNFOLD", CommandArgument::none, false, "Ctrl+K, Ctrl++; Ctrl+K, Ctrl+=",
     "Unfolds what the row of the caret hides, or all that is folded in the selected lines.", inFolds<&PaneFolds::unfold>},
    {1035, "FOLDALL", CommandArgument::none, false, "Ctrl+K, Ctrl+0", "Folds all blocks.", inFolds<&PaneFolds::foldLevel, 0>},
    {1036, "UNFOLDALL", CommandArgument::none, false, "Ctrl+K, Ctrl+O", "Unfolds everything.", inFolds<&PaneFolds::unfoldAll>},
    {1037, "FOLDSELECTION", CommandArgument::none, false, "Ctrl+K, Ctrl+G", "Folds the selected lines into the first of them.",
     inFolds<&PaneFolds::foldSelection>},
    {1039, "TOGGLESTICKYLINE", CommandArgument::none, false, "Ctrl+K, Ctrl+Y",
     "Shows or hides a line at the top with the beginning of the block that goes on there.", toggleStickyLine},
    {1040, "CARETADDABOVE", CommandArgument::none, true, "Ctrl+Alt+Up; Ctrl+Shift+Up",
     "Adds a caret in the line above the first caret.", commandFunctions::caretAddBeside<-1>},
    {1041, "CARETADDBELOW", CommandArgument::none, true, "Ctrl+Alt+Down; Ctrl+Shift+Down",
     "Adds a caret in the line below the last caret.", commandFunctions::caretAddBeside<1>},
    {1042, "CARETADDNEXT", CommandArgument::none, true, "Ctrl+D",
     "Adds the next occurrence of the selection to what is selected; without a selection, selects the word.",
     commandFunctions::caretAddNext, CaretMove::jump},
    {1043, "CARETADDALL", CommandArgument::none, false, "Ctrl+Shift+A",
     "Selects all occurrences of the selection, or of the word at the caret, each with a caret.", commandFunctions::caretAddAll},
    {1044, "FINDSELECTALL", CommandArgument::none, false, "", "Selects all matches of the find text, each with a caret.",
     commandFunctions::findSelectAll},
    {1045, "CARETSINSELECTION", CommandArgument::none, false, "Ctrl+K, Ctrl+E",
     "Puts a caret into each row of a column selection, or at the end of each selected line.", commandFunctions::caretsInSelection},
    {1046, "CARETSEND", CommandArgument::none, false, "", "Ends all carets but the one used last.", commandFunctions::caretsEnd},
    {1060, "COMPLETEWORD", CommandArgument::none, false, "Ctrl+Space; Alt+/",
     "Shows the words that the word before the caret may become.", completeWord},
    {1061, "LINESMOVEUP", CommandArgument::none, true, "Ctrl+Shift+PgUp",
     "Moves the line of the caret or the selected lines one line up.", commandFunctions::linesMoveUp},
    {1062, "LINESMOVEDOWN", CommandArgument::none, true, "Ctrl+Shift+PgDown",
     "Moves the line of the caret or the selected lines one line down.", commandFunctions::linesMoveDown},
    {1063, "LINESDUPLICATE", CommandArgument::none, true, "Ctrl+Shift+D",
     "Copies the line of the caret or the selected lines below themselves.", commandFunctions::linesDuplicate, AtCarets::each},
    {1064, "INSERTUNICODE", CommandArgument::text, false, "Alt+X",
     "Inserts the character of a hexadecimal number: of the argument, else of the selection or what stands before the caret.",
     commandFunctions::insertUnicode, AtCarets::each},
    {1065, "PASTEHISTORY", CommandArgument::number, false, "Ctrl+Shift+V",
     "Pastes the n-th last text that was copied (from 1), or shows these texts to choose one.", commandFunctions::pasteFromHistory},
    {1110, "CARETUNDO", CommandArgument::none, true, "Ctrl+K, Ctrl+Z",
     "Takes back the last change of the carets since the text changed; after Esc, several carets come back.",
     commandFunctions::caretUndo},
    {1120, "GOTONEXTCHANGE", CommandArgument::none, false, "Ctrl+K, Ctrl+N",
     "Goes to the next lines that differ from the file, from the last ones to the first.", commandFunctions::gotoNextChange,
     CaretMove::jump},
    {1121, "GOTOPREVIOUSCHANGE", CommandArgument::none, false, "Ctrl+K, Ctrl+Shift+N",
     "Goes to the previous lines that differ from the file, from the first ones to the last.", commandFunctions::gotoPreviousChange,
     CaretMove::jump},
    {1122, "REVERTCHANGE", CommandArgument::none, false, "Ctrl+K, Ctrl+Shift+Z",
     "Gives the changed lines at the caret, or those that are selected, the text of the file.", commandFunctions::revertChange},
    {1123, "TRIMCHANGEDLINES", CommandArgument::none, false, "Ctrl+K, Ctrl+Shift+T",
     "Deletes the blanks at the ends of the lines that differ from the file.", commandFunctions::trimChangedLines},
    {1140, "FOLDLEVEL1", CommandArgument::none, false, "Ctrl+K, Ctrl+1", "Folds the outermost blocks.",
     inFolds<&PaneFolds::foldLevel, 1>},
    {1141, "FOLDLEVEL2", CommandArgument::none, false, "Ctrl+K, Ctrl+2",
     "Folds the blocks that lie in one other, and unfolds those around them.", inFolds<&PaneFolds::foldLevel, 2>},
    {1142, "FOLDLEVEL3", CommandArgument::none, false, "Ctrl+K, Ctrl+3",
     "Folds the blocks that lie in two others, and unfolds those around them.", inFolds<&PaneFolds::foldLevel, 3>},
    {1143, "FOLDLEVEL4", CommandArgument::none, false, "Ctrl+K, Ctrl+4",
     "Folds the blocks that lie in three others, and unfolds those around them.", inFolds<&PaneFolds::foldLevel, 4>},
});
static_assert(std::ranges::adjacent_find(kKeyRows, std::ranges::greater_equal{}, &Command::id) == kKeyRows.end(),
              "the rows ascend by number; numbers may be missing");

}   // namespace

bool columnMode(Editor& editor) { return commandFunctions::inColumnMode(editor); }

std::span<const Command> keyCommands() { return kKeyRows; }

const Command* anyCommandById(int id) {
  if (const Command* numbered = commandById(id)) return numbered;
  const auto row = std::ranges::lower_bound(kKeyRows, id, {}, &Command::id);
  return row != kKeyRows.end() && row->id == id ? &*row : nullptr;
}

const Command* anyCommandByName(QStringView name) {
  if (const Command* numbered = commandByName(name)) return numbered;
  for (const Command& command : kKeyRows)
    if (name.compare(QLatin1String(command.name), Qt::CaseInsensitive) == 0) return &command;
  return nullptr;
}

const Command* scriptCommandByName(QStringView name) {
  const Command* command = anyCommandByName(name);
  return command && command->run != macroRecord && command->run != macroPlay ? command : nullptr;
}

bool executeAny(Editor& editor, int id, const QVariant& argument) {
  const Command* command = anyCommandById(id);
  if (command) EditorAccess::run(editor, *command, argument);
  return command != nullptr;
}
