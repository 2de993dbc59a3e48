#include "control/edit/CommandTable.h"

#include <array>

#include "control/edit/CommandFunctions.h"
#include "control/edit/EditorAccess.h"

namespace {

using namespace commandFunctions;

#define ROW(name) static_cast<int>(Cmd::name), #name

// In the order of the numbers; keys are sequences parted by "; ", the strokes of a sequence by ", ". The frame has the usual
// function keys and those of files and finding.
constexpr std::array kRows = std::to_array<Command>({
    {ROW(WORDUPPERCASE), CommandArgument::none, true, "Ctrl+K, Ctrl+U",
     "Converts the word at the caret to upper case and goes behind it.", with<changeWordCase, WordCase::upper>},
    {ROW(WORDTRANSPOSE), CommandArgument::none, true, "Ctrl+Shift+T", "Swaps the word at the caret with the next one.",
     wordTranspose},
    {ROW(WORDRIGHTEXTEND), CommandArgument::none, true, "Ctrl+Shift+Right",
     "Extends the selection to the end of the run of characters, or over the blanks.", extend<runRight>},
    {ROW(WORDRIGHT), CommandArgument::none, true, "Ctrl+Right",
     "Goes to the start of the next word, or first to the end of the line.", go<wordRight>},
    {ROW(WORDENDRIGHT), CommandArgument::none, true, "Ctrl+Alt+Right", "Goes to the end of the word.", go<wordEndRight>},
    {ROW(WORDENDRIGHTEXTEND), CommandArgument::none, true, "Ctrl+Alt+Shift+Right", "Extends the selection to the end of the word.",
     extend<wordEndRight>},
    {ROW(WORDLOWERCASE), CommandArgument::none, true, "Ctrl+K, Ctrl+L",
     "Converts the word at the caret to lower case and goes behind it.", with<changeWordCase, WordCase::lower>},
    {ROW(WORDLEFTEXTEND), CommandArgument::none, true, "Ctrl+Shift+Left",
     "Extends the selection to the start of the previous word.", extend<wordLeft>},
    {ROW(WORDLEFT), CommandArgument::none, true, "Ctrl+Left", "Goes to the start of the previous word.", go<wordLeft>},
    {ROW(WORDENDLEFT), CommandArgument::none, true, "Ctrl+Alt+Left", "Goes to the end of the previous word.", go<wordEndLeft>},
    {ROW(WORDENDLEFTEXTEND), CommandArgument::none, true, "Ctrl+Alt+Shift+Left",
     "Extends the selection to the end of the previous word.", extend<wordEndLeft>},
    {ROW(WORDDELETETOSTART), CommandArgument::none, true, "Ctrl+Backspace",
     "Deletes back to the start of the word, within the line.", wordDeleteToStart},
    {ROW(WORDDELETETOEND), CommandArgument::none, true, "Ctrl+Del", "Deletes up to the end of the word, within the line.",
     wordDeleteToEnd},
    {ROW(WORDCAPITALIZE), CommandArgument::none, true, "Ctrl+K, Ctrl+C", "Capitalises the word at the caret and goes behind it.",
     with<changeWordCase, WordCase::capital>},
    {ROW(WINDOWSTART), CommandArgument::none, false, "Alt+PgUp", "Goes to the first line that the window shows.", windowStart},
    {ROW(WINDOWSCROLLUP), CommandArgument::none, true, "Ctrl+Up", "Scrolls the window one line up; the caret stays.",
     windowScrollUp},
    {ROW(WINDOWSCROLLTOTOP), CommandArgument::none, false, "Ctrl+K, Ctrl+Up",
     "Scrolls so that the caret's line is the first one shown.", windowScrollToTop},
    {ROW(WINDOWSCROLLTOCENTER), CommandArgument::none, false, "Ctrl+K, Ctrl+M",
     "Scrolls so that the caret's line is in the middle.", windowScrollToCenter},
    {ROW(WINDOWSCROLLTOBOTTOM), CommandArgument::none, false, "Ctrl+K, Ctrl+Down",
     "Scrolls so that the caret's line is the last one shown.", windowScrollToBottom},
    {ROW(WINDOWSCROLLRIGHT), CommandArgument::none, true, "Ctrl+K, Ctrl+Right", "Scrolls the window one column to the right.",
     windowScrollRight},
    {ROW(WINDOWSCROLLLEFT), CommandArgument::none, true, "Ctrl+K, Ctrl+Left", "Scrolls the window one column to the left.",
     windowScrollLeft},
    {ROW(WINDOWSCROLLDOWN), CommandArgument::none, true, "Ctrl+Down", "Scrolls the window one line down; the caret stays.",
     windowScrollDown},
    {ROW(WINDOWRIGHTEDGE), CommandArgument::none, false, "Alt+End", "Goes to the last column that the window shows.",
     windowRightEdge},
    {ROW(WINDOWLEFTEDGE), CommandArgument::none, false, "Alt+Home", "Goes to the first column that the window shows.",
     windowLeftEdge},
    {ROW(WINDOWEND), CommandArgument::none, false, "Alt+PgDown", "Goes to the last line that the window shows.", windowEnd},
    {ROW(UPPERCASESELECTION), CommandArgument::none, false, "Ctrl+Shift+U", "Converts the selected text to upper case.",
     with<changeSelectionCase, WordCase::upper>},
    {ROW(UNTABIFYSELECTION), CommandArgument::none, false, "Ctrl+K, Ctrl+Space", "Replaces the tabs of the selection by blanks.",
     untabifySelection},
    {ROW(UNINDENTSELECTION), CommandArgument::none, true, "Shift+Tab", "Moves the selected lines one indent to the left.",
     unindentSelection},
    {ROW(UNDOCHANGES), CommandArgument::none, false, "", "Undoes all changes since the last save.", undoChanges},
    {ROW(UNDO), CommandArgument::none, true, "Ctrl+Z; Alt+Backspace", "Undoes the last change.", undo},
    {ROW(TABIFYSELECTION), CommandArgument::none, false, "Ctrl+K, Ctrl+Tab",
     "Replaces runs of blanks of the selection by tabs where they reach a tab stop.", tabifySelection},
    {ROW(SENTENCERIGHT), CommandArgument::none, true, "", "Goes to the start of the next sentence.", go<sentenceRight>},
    {ROW(SENTENCELEFT), CommandArgument::none, true, "", "Goes to the start of the sentence, or of the previous one.",
     go<sentenceLeft>},
    {ROW(SENTENCECUT), CommandArgument::none, true, "", "Cuts from the caret to the end of the sentence.", sentenceCut},
    {ROW(SELECTSWAPANCHOR), CommandArgument::none, false, "Ctrl+K, Ctrl+A", "Swaps the two ends of the selection.",
     selectSwapAnchor},
    {ROW(SELECTPARA), CommandArgument::none, false, "Ctrl+K, Ctrl+P", "Selects the paragraph at the caret.", selectPara},
    {ROW(SELECTLINE), CommandArgument::none, true, "Ctrl+L", "Selects the line; again, one line more.", selectLine},
    {ROW(SELECTALL), CommandArgument::none, false, "Ctrl+A", "Selects the whole text.", selectAll},
    {ROW(REDOCHANGES), CommandArgument::none, false, "", "Redoes all undone changes.", redoChanges},
    {ROW(REDO), CommandArgument::none, true, "Ctrl+Y; Ctrl+Shift+Z", "Redoes the last undone change.", redo},
    {ROW(PASTE), CommandArgument::none, true, "Ctrl+V; Shift+Ins", "Inserts the text of the clipboard; a block keeps its shape.",
     paste},
    {ROW(PARAUP), CommandArgument::none, true, "Alt+Up", "Goes to the start of the paragraph, or of the previous one.", go<paraUp>},
    {ROW(PARADOWN), CommandArgument::none, true, "Alt+Down", "Goes to the start of the next paragraph.", go<paraDown>},
    {ROW(PAGEUPEXTEND), CommandArgument::none, true, "Shift+PgUp", "Extends the selection one window up.", page<-1, true>,
     CaretMove::page},
    {ROW(PAGEUP), CommandArgument::none, true, "PgUp", "Goes one window up.", page<-1, false>, CaretMove::page},
    {ROW(PAGEDOWNEXTEND), CommandArgument::none, true, "Shift+PgDown", "Extends the selection one window down.", page<1, true>,
     CaretMove::page},
    {ROW(PAGEDOWN), CommandArgument::none, true, "PgDown", "Goes one window down.", page<1, false>, CaretMove::page},
    {ROW(LOWERCASESELECTION), CommandArgument::none, false, "Ctrl+U", "Converts the selected text to lower case.",
     with<changeSelectionCase, WordCase::lower>},
    {ROW(LINEUPEXTEND), CommandArgument::none, true, "Shift+Up", "Extends the selection one line up.", vertical<-1, true>},
    {ROW(LINEUP), CommandArgument::none, true, "Up", "Goes one line up.", vertical<-1, false>},
    {ROW(LINETRANSPOSE), CommandArgument::none, true, "Alt+Shift+T", "Swaps the line with the next one; the caret goes with it.",
     lineTranspose},
    {ROW(LINESTART), CommandArgument::none, false, "", "Goes to the first column of the line.", go<lineStart>},
    {ROW(LINEOPENBELOW), CommandArgument::none, true, "Ctrl+Return", "Opens a new line below the caret's and goes there.",
     lineOpenBelow},
    {ROW(LINEOPENABOVE), CommandArgument::none, true, "Ctrl+Shift+Return", "Opens a new line above the caret's and goes there.",
     lineOpenAbove},
    {ROW(LINEENDEXTEND), CommandArgument::none, false, "Shift+End", "Extends the selection to the end of the line.",
     extend<lineEnd>},
    {ROW(LINEEND), CommandArgument::none, false, "", "Goes to the end of the line.", go<lineEnd>},
    {ROW(LINEDOWNEXTEND), CommandArgument::none, true, "Shift+Down", "Extends the selection one line down.", vertical<1, true>},
    {ROW(LINEDOWN), CommandArgument::none, true, "Down", "Goes one line down.", vertical<1, false>},
    {ROW(LINEDELETETOSTART), CommandArgument::none, false, "Ctrl+K, Ctrl+Backspace",
     "Deletes from the start of the line to the caret.", lineDeleteToStart},
    {ROW(LINEDELETETOEND), CommandArgument::none, false, "Ctrl+K, Ctrl+K", "Deletes from the caret to the end of the line.",
     lineDeleteToEnd},
    {ROW(LINEDELETE), CommandArgument::none, true, "Ctrl+Shift+K", "Deletes the line of the caret or the selected lines.",
     lineDelete},
    {ROW(LINECUT), CommandArgument::none, true, "Ctrl+Shift+X", "Cuts the line of the caret or the selected lines.", lineCut},
    {ROW(INDENTTOPREV), CommandArgument::none, false, "Ctrl+K, Ctrl+I",
     "Gives the line the indent of the nearest line above that is not blank.", indentToPrev},
    {ROW(INDENTSELECTION), CommandArgument::none, true, "", "Moves the selected lines one indent to the right.", indentSelection},
    {ROW(HOMEEXTEND), CommandArgument::none, false, "Shift+Home",
     "Extends the selection to the first character that is not blank, or to the first column.", extend<home>},
    {ROW(HOME), CommandArgument::none, false, "Home",
     "Goes to the first character that is not blank; from there to the first column.", go<home>},
    {ROW(GOTOMATCHBRACE), CommandArgument::none, false, "Ctrl+]", "Goes to the bracket that matches the one at the caret.",
     gotoMatchBrace, CaretMove::jump},
    {ROW(GOTOINDENTATION), CommandArgument::none, false, "Alt+M", "Goes to the first character of the line that is not blank.",
     go<indentation>},
    {ROW(GOTOLINE), CommandArgument::number, false, "", "Goes to the line with the given number, counted from 0.", gotoLine,
     CaretMove::jump},
    {ROW(FINDREPLACE), CommandArgument::none, false, "", "Shows the find dialog with the fields for replacing.", findReplace},
    {ROW(REPLACE), CommandArgument::none, true, "", "Replaces the selected match and finds the next one.", replace},
    {ROW(REPLACEALLINBUFFER), CommandArgument::none, false, "", "Replaces all matches in the text.", replaceAllInBuffer},
    {ROW(REPLACEALLINSELECTION), CommandArgument::none, false, "", "Replaces all matches in the selection.", replaceAllInSelection},
    {ROW(FINDPREVWORD), CommandArgument::none, true, "Ctrl+Shift+F3", "Finds the word at the caret, backwards.",
     with<findWordAtCaret, false>, CaretMove::jump},
    {ROW(FINDPREV), CommandArgument::none, true, "", "Finds the find text, backwards.", with<findAgain, false>, CaretMove::jump},
    {ROW(FINDNEXTWORD), CommandArgument::none, true, "Ctrl+F3", "Finds the word at the caret, forwards.",
     with<findWordAtCaret, true>, CaretMove::jump},
    {ROW(FINDNEXT), CommandArgument::none, true, "", "Finds the find text, forwards.", with<findAgain, true>, CaretMove::jump},
    {ROW(FINDMARKALL), CommandArgument::none, false, "Ctrl+K, Ctrl+F", "Sets a bookmark on every line with a match.", findMarkAll},
    {ROW(FIND), CommandArgument::none, false, "", "Shows the find dialog.", find},
    {ROW(SETFINDTEXT), CommandArgument::text, false, "", "Sets the text to find.", setFindText},
    {ROW(SETREPLACETEXT), CommandArgument::text, false, "", "Sets the replacement.", setReplaceText},
    {ROW(TOGGLEPRESERVECASE), CommandArgument::none, false, "", "Switches preserving letter case in replacements on or off.",
     togglePreserveCase},
    {ROW(TOGGLEWHOLEWORD), CommandArgument::none, false, "", "Switches finding whole words only on or off.", toggleWholeWord},
    {ROW(TOGGLECASESENSITIVE), CommandArgument::none, false, "", "Switches case-sensitive search on or off.", toggleCaseSensitive},
    {ROW(END), CommandArgument::none, false, "End",
     "Goes to the end of the line; from there behind its last character that is not blank.", go<smartEnd>},
    {ROW(TOGGLEWHITESPACEDISPLAY), CommandArgument::none, false, "Ctrl+K, Ctrl+W", "Shows or hides blanks, tabs and line ends.",
     toggleWhiteSpaceDisplay},
    {ROW(TOGGLEOVERTYPE), CommandArgument::none, false, "Ins", "Switches overtyping on or off.", toggleOvertype},
    {ROW(SETREPEATCOUNT), CommandArgument::number, false, "", "Repeats the next command the given number of times.",
     setRepeatCount},
    {ROW(DOCUMENTSTARTEXTEND), CommandArgument::none, false, "Ctrl+Shift+Home", "Extends the selection to the start of the text.",
     extend<documentStart>, CaretMove::jump},
    {ROW(DOCUMENTSTART), CommandArgument::none, false, "Ctrl+Home", "Goes to the start of the text.", go<documentStart>,
     CaretMove::jump},
    {ROW(DOCUMENTENDEXTEND), CommandArgument::none, false, "Ctrl+Shift+End", "Extends the selection to the end of the text.",
     extend<documentEnd>, CaretMove::jump},
    {ROW(DOCUMENTEND), CommandArgument::none, false, "Ctrl+End", "Goes to the end of the text.", go<documentEnd>, CaretMove::jump},
    {ROW(DELETEHORIZONTALSPACE), CommandArgument::none, false, "Ctrl+K, Ctrl+H", "Deletes the blanks and tabs around the caret.",
     deleteHorizontalSpace},
    {ROW(DELETEBLANKLINES), CommandArgument::none, false, "Ctrl+K, Ctrl+D",
     "Deletes the blank lines of the selection, or those at or right below the caret.", deleteBlankLines},
    {ROW(DELETEBACK), CommandArgument::none, true, "Backspace; Shift+Backspace",
     "Deletes the selection, or the character before the caret.", deleteBack},
    {ROW(DELETE), CommandArgument::none, true, "Del", "Deletes the selection, or the character behind the caret.", deleteForward},
    {ROW(CUTSELECTION), CommandArgument::none, false, "", "Cuts the selection; without one it does nothing.", cutSelection},
    {ROW(CUT), CommandArgument::none, true, "Ctrl+X; Shift+Del", "Cuts the selection; without one, the line.", cut},
    {ROW(COPY), CommandArgument::none, false, "Ctrl+C; Ctrl+Ins", "Copies the selection to the clipboard.", copy},
    {ROW(CHARTRANSPOSE), CommandArgument::none, true, "Ctrl+T", "Swaps the characters on both sides of the caret and goes on.",
     charTranspose},
    {ROW(CHARRIGHTEXTEND), CommandArgument::none, true, "Shift+Right", "Extends the selection one character to the right.",
     extend<charRight>},
    {ROW(CHARRIGHT), CommandArgument::none, true, "Right", "Goes one character to the right, or to the end of the selection.",
     charRightOrEnd},
    {ROW(CHARLEFTEXTEND), CommandArgument::none, true, "Shift+Left", "Extends the selection one character to the left.",
     extend<charLeft>},
    {ROW(CHARLEFT), CommandArgument::none, true, "Left", "Goes one character to the left, or to the start of the selection.",
     charLeftOrStart},
    {ROW(BOOKMARKTOGGLE), CommandArgument::none, false, "Ctrl+K, Ctrl+B", "Sets or removes the bookmark of the line.",
     bookmarkToggle},
    {ROW(BOOKMARKPREV), CommandArgument::none, true, "", "Goes to the previous bookmark; from the first one to the last.",
     bookmarkPrev, CaretMove::jump},
    {ROW(BOOKMARKNEXT), CommandArgument::none, true, "", "Goes to the next bookmark; from the last one to the first.", bookmarkNext,
     CaretMove::jump},
    {ROW(BOOKMARKCLEARALL), CommandArgument::none, false, "", "Removes all bookmarks.", bookmarkClearAll},
    {ROW(BOOKMARKJUMPTOFIRST), CommandArgument::none, false, "Ctrl+K, Ctrl+Home", "Goes to the first bookmark.",
     bookmarkJumpToFirst, CaretMove::jump},
    {ROW(BOOKMARKJUMPTOLAST), CommandArgument::none, false, "Ctrl+K, Ctrl+End", "Goes to the last bookmark.", bookmarkJumpToLast,
     CaretMove::jump},
    {ROW(APPENDNEXTCUT), CommandArgument::none, false, "", "Lets the next cut add its text to the clipboard.", appendNextCut},
    {ROW(INSERTCHAR), CommandArgument::text, true, "", "Inserts the given text at the caret, or in place of the selection.",
     insertChar},
    {ROW(NEWLINE), CommandArgument::none, true, "Return; Enter; Shift+Return; Shift+Enter",
     "Starts a new line with the indent of this one.", newLine},
});

#undef ROW

constexpr bool isInOrder() {
  for (std::size_t i = 1; i < kRows.size(); ++i)
    if (kRows[i].id != kRows[i - 1].id + 1) return false;
  return kRows.front().id == static_cast<int>(Cmd::WORDUPPERCASE) && kRows.back().id == static_cast<int>(Cmd::NEWLINE);
}
static_assert(isInOrder(), "each command has its row");

}   // namespace

std::span<const Command> commands() { return kRows; }

const Command* commandById(int id) {
  return id < kRows.front().id || id > kRows.back().id ? nullptr : &kRows[static_cast<std::size_t>(id - kRows.front().id)];
}

const Command* commandByName(QStringView name) {
  for (const Command& command : kRows)
    if (name.compare(QLatin1String(command.name), Qt::CaseInsensitive) == 0) return &command;
  return nullptr;
}

CaretMove lastMove(Editor& editor) {
  const auto& moved = EditorAccess::impl(editor).moved;
  return moved.to == editor.selection().caret ? moved.how : CaretMove::usual;
}

void noteMove(Editor& editor, CaretMove move) { EditorAccess::impl(editor).moved = {editor.selection().caret, move}; }
