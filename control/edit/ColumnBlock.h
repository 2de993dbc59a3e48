// The geometry of column selections: a rectangle of cells over lines of any length.
//
// A character belongs to the block if its first cell does. A tab cut by an edge of the block counts as blanks: the cells outside
// stay. A wide character cut by the left edge is outside; one cut by the right edge is inside, and a blank replaces the cell that
// sticks out, so that the following text keeps its column. Behind the end of a line there is space without text.
#pragma once

#include <string>
#include <vector>

#include "control/edit/TextModel.h"

struct ColumnBlock {
  text::LineNo first, last;           // both included
  std::int64_t left = 0, right = 0;   // cells [left, right)
};

struct ColumnRow {
  text::ByteRange range;                            // bytes replaced by a change of the row
  text::ByteRange body;                             // complete characters inside the block
  std::int64_t missing = 0;                         // cells between the end of the line and the block
  std::int64_t keepBefore = 0, keepAfter = 0;       // blanks outside the block in place of a cut character
  std::int64_t insideBefore = 0, insideAfter = 0;   // blanks inside the block in place of a cut tab
  bool textFollows = false;                         // the line continues behind the block
};

ColumnBlock columnBlock(TextModel& model, const text::SelectionState& selection, int tabSize);
ColumnRow columnRow(TextModel& model, text::LineNo line, std::int64_t left, std::int64_t right, int tabSize);
// The text of the row inside the block, without blanks behind the end of the line.
std::string columnRowText(const text::Snapshot& text, const ColumnRow& row);
// The edit that replaces the row's part of the block by `content` (without breaks). Empty content is not padded.
text::Edit columnRowEdit(const ColumnRow& row, std::string_view content);

// Cells from the start of the line to the position, virtual ones included.
std::int64_t cellOf(TextModel& model, text::ByteOffset offset, std::int64_t virtualCells, int tabSize);
// The position at `cell` of `line`; *virtualCells: cells behind its end (null: returns the end of the line).
text::ByteOffset offsetAtCell(TextModel& model, text::LineNo line, std::int64_t cell, int tabSize,
                              std::int64_t* virtualCells = nullptr);
text::SelectionState columnSelection(TextModel& model, text::LineNo anchorLine, std::int64_t anchorCell, text::LineNo caretLine,
                                     std::int64_t caretCell, int tabSize);
