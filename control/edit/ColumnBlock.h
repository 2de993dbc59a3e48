// The geometry of column selections: a rectangle of cells laid over lines of any length.
//
// A character belongs to the block when its first cell does. A tab that the edge of the block cuts counts as blanks: the
// cells outside stay. A wide character cut by the left edge is outside as a whole; one cut by the right edge is inside, and a
// blank stands for the cell that sticks out, so that what follows keeps its column. Past a line's end there is space without text.
#pragma once

#include <string>
#include <vector>

#include "control/edit/TextModel.h"

struct ColumnBlock {
  text::LineNo first, last;           // both included
  std::int64_t left = 0, right = 0;   // cells [left, right)
};

struct ColumnRow {
  text::ByteRange range;                            // the bytes that a change of the row touches
  text::ByteRange body;                             // the whole characters inside the block
  std::int64_t missing = 0;                         // cells between the line's end and the block
  std::int64_t keepBefore = 0, keepAfter = 0;       // blanks that stay outside in place of a cut character
  std::int64_t insideBefore = 0, insideAfter = 0;   // blanks inside the block in place of a cut tab
  bool textFollows = false;                         // the line goes on behind the block
};

ColumnBlock columnBlock(TextModel& model, const text::SelectionState& selection, int tabSize);
ColumnRow columnRow(TextModel& model, text::LineNo line, std::int64_t left, std::int64_t right, int tabSize);
// What the block shows of the row: no blanks past the line's end.
std::string columnRowText(const text::Snapshot& text, const ColumnRow& row);
// The edit that puts `content` (without breaks) in place of the row's part of the block. Nothing is padded for empty content.
text::Edit columnRowEdit(const ColumnRow& row, std::string_view content);

// Cells from the start of the line to the place, virtual ones included.
std::int64_t cellOf(TextModel& model, text::ByteOffset offset, std::int64_t virtualCells, int tabSize);
// The place at `cell` of `line`; *virtualCells are those past its end (null: the line's end does).
text::ByteOffset offsetAtCell(TextModel& model, text::LineNo line, std::int64_t cell, int tabSize,
                              std::int64_t* virtualCells = nullptr);
text::SelectionState columnSelection(TextModel& model, text::LineNo anchorLine, std::int64_t anchorCell, text::LineNo caretLine,
                                     std::int64_t caretCell, int tabSize);
