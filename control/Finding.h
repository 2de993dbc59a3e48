// What the find commands and the find dialog share.
#pragma once

#include <span>
#include <vector>

#include "control/Editor.h"
#include "control/Replacing.h"

// The search state's texts as bytes of this text: their line breaks are those that the text uses.
std::string findBytes(Editor& e, const SearchState& state);
std::string replacementBytes(Editor& e, const SearchState& state);
bool keepsCase(Editor& e, const SearchState& state);   // the state or the control's option says so

std::vector<text::ByteRange> selectedRanges(Editor& e);   // one, or one for each row that holds text; none without a selection
QString wordToFind(Editor& e);                            // the selection within one line, else the word at the caret; may be empty

// Applies the plan in one undo step and notes how many were replaced, or why none was.
void applyReplacements(Editor& e, const ReplacePlan& plan);
// Sets a bookmark on each line where a find begins, and notes their number.
void markFinds(Editor& e, const text::Snapshot& text, std::span<const text::ByteRange> finds);
