// Functions shared by the find commands and the find dialog.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "control/edit/Editor.h"
#include "control/find/Replacing.h"

// The texts of the search state as bytes of this text, with its line breaks.
std::string findBytes(Editor& e, const SearchState& state);
Replacement replacementOf(Editor& e, const SearchState& state);
bool keepsCase(Editor& e, const SearchState& state);   // set in the state or in the control's options

// The active switches of the search as words, "case word regex preserve". Unknown words are ignored.
QString findSwitches(Editor& e, const SearchState& state);
void setFindSwitches(Editor& e, const QString& words);

// one range, or one for each row that holds text; none without a selection
std::vector<text::ByteRange> selectedRanges(Editor& e);
inline constexpr std::int64_t kLongestFind = 4096;   // maximum size in bytes of a selection that becomes the text to find
// the selection if it lies within one line, else the word at the caret; may be empty
QString wordToFind(Editor& e);

struct FindOutcome {
  std::optional<text::ByteRange> found;
  bool wrapped = false;   // found only after wrapping at the end or start of the text
  std::string error;      // a text for the user
  bool cancelled = false;
};
// The next match from `from` in one direction, inside one of the ranges (ascending); wraps at their end. May be called on any
// thread.
FindOutcome findNear(const text::Snapshot& text, const text::Finder& searcher, text::ByteRange from,
                     std::span<const text::ByteRange> within, bool forward, text::SearchControl* control = nullptr);
// The message for the user; empty when the match was simply found.
QString noteOf(const FindOutcome& outcome, const QString& findText, bool forward);

// Replaces the selection if it is a match inside one of the ranges. False: it is not a match, or *error says why it could not be
// replaced.
bool replaceSelectedFind(Editor& e, const text::Finder& searcher, std::span<const text::ByteRange> within, QString* error);

// Applies the plan as one undo step and notes the number of replacements, or why there were none.
void applyReplacements(Editor& e, const ReplacePlan& plan);
QString noteOf(const ReplacePlan& plan);
// Sets a bookmark on each line in which a match begins, and notes their number.
void markFinds(Editor& e, const text::Snapshot& text, std::span<const text::ByteRange> finds);
QString noteOfFinds(std::size_t number);
// Selects the finds (ascending), each with a caret; none: nothing happens. If they are too many, a note says so.
void selectFinds(Editor& e, std::span<const text::ByteRange> finds);
void selectAllFinds(Editor& e, const text::Finder& finder);   // of the whole text; notes their number
bool isFindWindowShown(const QWidget* within);                // of a control, which may be given by a part of it; null: false
