// The functions of the command table's rows. The files Commands*.cpp hold them by topic: Move (caret and selection), Edit
// (deleting, clipboard, undo), Lines, Blanks (indent and tabs), Case, Find, Bookmarks, Blocks, Window (scrolling, switches).
//
// A function that would change a read-only text does nothing. Each one is one undo step.
#pragma once

#include <type_traits>

#include "control/edit/Editor.h"

namespace commandFunctions {

inline text::LineNo caretLine(Editor& e) { return e.snapshot().lineAt(e.selection().caret); }

// The target of a move from `at`; `at` itself if there is none.
using Motion = text::ByteOffset (*)(Editor& e, text::ByteOffset at);
text::ByteOffset charRight(Editor& e, text::ByteOffset at);
text::ByteOffset charLeft(Editor& e, text::ByteOffset at);
text::ByteOffset wordRight(Editor& e, text::ByteOffset at);   // next word's start, no further than the line's end
text::ByteOffset runRight(Editor& e, text::ByteOffset at);    // end of the run, or of the blanks
text::ByteOffset wordEndRight(Editor& e, text::ByteOffset at);
text::ByteOffset wordLeft(Editor& e, text::ByteOffset at);
text::ByteOffset wordEndLeft(Editor& e, text::ByteOffset at);
text::ByteOffset sentenceRight(Editor& e, text::ByteOffset at);
text::ByteOffset sentenceLeft(Editor& e, text::ByteOffset at);
text::ByteOffset paraUp(Editor& e, text::ByteOffset at);
text::ByteOffset paraDown(Editor& e, text::ByteOffset at);
text::ByteOffset lineStart(Editor& e, text::ByteOffset at);
text::ByteOffset lineEnd(Editor& e, text::ByteOffset at);
text::ByteOffset indentation(Editor& e, text::ByteOffset at);   // first character that is not blank, or the line's end
text::ByteOffset home(Editor& e, text::ByteOffset at);
text::ByteOffset rowEnd(Editor& e, text::ByteOffset at);   // of the row that is shown; from there of the line
text::ByteOffset smartEnd(Editor& e, text::ByteOffset at);
text::ByteOffset documentStart(Editor& e, text::ByteOffset at);
text::ByteOffset documentEnd(Editor& e, text::ByteOffset at);

// The target, or the next place in its direction that the window shows.
text::ByteOffset pastHidden(Editor& e, text::ByteOffset from, text::ByteOffset to);

template <Motion motion>
void go(Editor& e, const QVariant&) {
  e.moveCaret(pastHidden(e, e.selection().caret, motion(e, e.selection().caret)), false);
}
// Moves the caret's corner of the column selection, also behind the ends of lines. If column selections are not allowed, extends
// the selection as usual.
void extendBlock(Editor& e, std::int64_t cells, std::int64_t lines);
bool inColumnMode(Editor& e);
void extendTo(Editor& e, text::ByteOffset to);
// Template parameters by type, because some compilers do not accept addresses of functions as constants.
template <Motion a, Motion b>
inline constexpr bool isSameMotion = std::is_same_v<std::integral_constant<Motion, a>, std::integral_constant<Motion, b>>;
template <Motion motion>
void extend(Editor& e, const QVariant&) {
  constexpr bool left = isSameMotion<motion, charLeft>;
  if constexpr (left || isSameMotion<motion, charRight>)
    if (inColumnMode(e)) return extendBlock(e, left ? -1 : 1, 0);
  extendTo(e, pastHidden(e, e.selection().caret, motion(e, e.selection().caret)));
}

// Copies to the clipboard; appends if the last cut was told to, or in a repetition.
void toClipboard(Editor& e, QString text, bool block);
// The lines with their breaks. At the end of the text, where there is no break, with the break before them.
text::ByteRange wholeLines(const text::Snapshot& text, text::LineNo first, text::LineNo last);

// Up (-) or down by lines, or the rows that the window shows of them, or windows. The caret keeps the cell in which the first of successive moves began.
void moveLines(Editor& e, std::int64_t lines, bool extend);
void movePage(Editor& e, int direction, bool extend);
template <int lines, bool extend>
void vertical(Editor& e, const QVariant&) {
  moveLines(e, lines, extend);
}
template <int direction, bool extend>
void page(Editor& e, const QVariant&) {
  movePage(e, direction, extend);
}

// More places become no carets: false, after a note to the user.
inline constexpr std::size_t kMostCarets = 1000000;
bool mayHaveCarets(Editor& e, std::size_t number);
void caretAdd(Editor& e, int lines);   // in the line above (-1) the first caret, or below (1) the last one
template <int lines>
void caretAddBeside(Editor& e, const QVariant&) {
  caretAdd(e, lines);
}
void caretAddNext(Editor& e, const QVariant& argument);
void caretAddAll(Editor& e, const QVariant& argument);
void findSelectAll(Editor& e, const QVariant& argument);
void caretsInSelection(Editor& e, const QVariant& argument);
void caretsEnd(Editor& e, const QVariant& argument);
void caretUndo(Editor& e, const QVariant& argument);

enum class WordCase { upper, lower, capital };
void changeWordCase(Editor& e, WordCase to);
void changeSelectionCase(Editor& e, WordCase to);
bool findAgain(Editor& e, bool forward);
bool findWordAtCaret(Editor& e, bool forward);
// The row of a function of one fixed argument.
template <auto function, auto argument>
void with(Editor& e, const QVariant&) {
  function(e, argument);
}

void wordTranspose(Editor& e, const QVariant& argument);
void wordDeleteToStart(Editor& e, const QVariant& argument);
void wordDeleteToEnd(Editor& e, const QVariant& argument);
void windowStart(Editor& e, const QVariant& argument);
void windowScrollUp(Editor& e, const QVariant& argument);
void windowScrollToTop(Editor& e, const QVariant& argument);
void windowScrollToCenter(Editor& e, const QVariant& argument);
void windowScrollToBottom(Editor& e, const QVariant& argument);
void windowScrollRight(Editor& e, const QVariant& argument);
void windowScrollLeft(Editor& e, const QVariant& argument);
void windowScrollDown(Editor& e, const QVariant& argument);
void windowRightEdge(Editor& e, const QVariant& argument);
void windowLeftEdge(Editor& e, const QVariant& argument);
void windowEnd(Editor& e, const QVariant& argument);
void untabifySelection(Editor& e, const QVariant& argument);
void unindentSelection(Editor& e, const QVariant& argument);
void undoChanges(Editor& e, const QVariant& argument);
void undo(Editor& e, const QVariant& argument);
void tabifySelection(Editor& e, const QVariant& argument);
void sentenceCut(Editor& e, const QVariant& argument);
void selectSwapAnchor(Editor& e, const QVariant& argument);
void selectPara(Editor& e, const QVariant& argument);
void selectLine(Editor& e, const QVariant& argument);
void selectAll(Editor& e, const QVariant& argument);
void redoChanges(Editor& e, const QVariant& argument);
void redo(Editor& e, const QVariant& argument);
void paste(Editor& e, const QVariant& argument);
void lineTranspose(Editor& e, const QVariant& argument);
void pasteFromHistory(Editor& e, const QVariant& argument);
void insertUnicode(Editor& e, const QVariant& argument);
void linesMoveUp(Editor& e, const QVariant& argument);
void linesMoveDown(Editor& e, const QVariant& argument);
void linesDuplicate(Editor& e, const QVariant& argument);
void lineOpenBelow(Editor& e, const QVariant& argument);
void lineOpenAbove(Editor& e, const QVariant& argument);
void lineDeleteToStart(Editor& e, const QVariant& argument);
void lineDeleteToEnd(Editor& e, const QVariant& argument);
void lineDelete(Editor& e, const QVariant& argument);
void lineCut(Editor& e, const QVariant& argument);
void indentToPrev(Editor& e, const QVariant& argument);
void indentSelection(Editor& e, const QVariant& argument);
void gotoMatchBrace(Editor& e, const QVariant& argument);
void gotoBlockEnd(Editor& e, const QVariant& argument);
void selectBlock(Editor& e, const QVariant& argument);
void gotoLine(Editor& e, const QVariant& argument);
void findReplace(Editor& e, const QVariant& argument);
void replace(Editor& e, const QVariant& argument);
void replaceAllInBuffer(Editor& e, const QVariant& argument);
void replaceAllInSelection(Editor& e, const QVariant& argument);
void findMarkAll(Editor& e, const QVariant& argument);
void find(Editor& e, const QVariant& argument);
void setFindText(Editor& e, const QVariant& argument);
void setReplaceText(Editor& e, const QVariant& argument);
void togglePreserveCase(Editor& e, const QVariant& argument);
void toggleWholeWord(Editor& e, const QVariant& argument);
void toggleCaseSensitive(Editor& e, const QVariant& argument);
void toggleWordWrap(Editor& e, const QVariant& argument);
void gotoNextChange(Editor& e, const QVariant& argument);
void gotoPreviousChange(Editor& e, const QVariant& argument);
void revertChange(Editor& e, const QVariant& argument);
void trimChangedLines(Editor& e, const QVariant& argument);
void toggleWhiteSpaceDisplay(Editor& e, const QVariant& argument);
void toggleOvertype(Editor& e, const QVariant& argument);
void setRepeatCount(Editor& e, const QVariant& argument);
void deleteHorizontalSpace(Editor& e, const QVariant& argument);
void deleteBlankLines(Editor& e, const QVariant& argument);
void deleteBack(Editor& e, const QVariant& argument);
void deleteForward(Editor& e, const QVariant& argument);
void cutSelection(Editor& e, const QVariant& argument);
void cut(Editor& e, const QVariant& argument);
void copy(Editor& e, const QVariant& argument);
void charTranspose(Editor& e, const QVariant& argument);
void charRightOrEnd(Editor& e, const QVariant& argument);
void charLeftOrStart(Editor& e, const QVariant& argument);
void bookmarkToggle(Editor& e, const QVariant& argument);
void bookmarkPrev(Editor& e, const QVariant& argument);
void bookmarkNext(Editor& e, const QVariant& argument);
void bookmarkClearAll(Editor& e, const QVariant& argument);
void bookmarkJumpToFirst(Editor& e, const QVariant& argument);
void bookmarkJumpToLast(Editor& e, const QVariant& argument);
void bookmarkLinesCut(Editor& e, const QVariant& argument);
void bookmarkLinesCopy(Editor& e, const QVariant& argument);
void bookmarkLinesDelete(Editor& e, const QVariant& argument);
void bookmarkInvert(Editor& e, const QVariant& argument);
void appendNextCut(Editor& e, const QVariant& argument);
void insertChar(Editor& e, const QVariant& argument);
void newLine(Editor& e, const QVariant& argument);

}   // namespace commandFunctions
