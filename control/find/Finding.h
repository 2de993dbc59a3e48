// What the find commands and the find dialog share.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "control/edit/Editor.h"
#include "control/find/Replacing.h"

// The search state's texts as bytes of this text: their line breaks are those that the text uses.
std::string findBytes(Editor& e, const SearchState& state);
Replacement replacementOf(Editor& e, const SearchState& state);
bool keepsCase(Editor& e, const SearchState& state);   // the state or the control's option says so

// The switches of the search as words, "case word regex preserve": those that are on. Unknown words are passed over.
QString findSwitches(Editor& e, const SearchState& state);
void setFindSwitches(Editor& e, const QString& words);

std::vector<text::ByteRange> selectedRanges(Editor& e);   // one, or one for each row that holds text; none without a selection
inline constexpr std::int64_t kLongestFind = 4096;        // bytes of a selection that is taken as the text to find
QString wordToFind(Editor& e);                            // the selection within one line, else the word at the caret; may be empty

struct FindOutcome {
  std::optional<text::ByteRange> found;
  bool wrapped = false;   // found only round the end (or start) of the text
  std::string error;      // a text for the user
  bool cancelled = false;
};
// The find before or behind `from` inside one of the ranges (ascending), going on round their end. On any thread.
FindOutcome findNear(const text::Snapshot& text, const text::Finder& searcher, text::ByteRange from,
                     std::span<const text::ByteRange> within, bool forward, text::SearchControl* control = nullptr);
// What to tell of it; empty when it was simply found.
QString noteOf(const FindOutcome& outcome, const QString& findText, bool forward);

// Replaces the selection when it is a find of the searcher inside one of the ranges. False: it is none, or *error says why it
// could not be.
bool replaceSelectedFind(Editor& e, const text::Finder& searcher, std::span<const text::ByteRange> within, QString* error);

// Applies the plan in one undo step and notes how many were replaced, or why none was.
void applyReplacements(Editor& e, const ReplacePlan& plan);
QString noteOf(const ReplacePlan& plan);
// Sets a bookmark on each line where a find begins, and notes their number.
void markFinds(Editor& e, const text::Snapshot& text, std::span<const text::ByteRange> finds);
QString noteOfFinds(std::size_t number);
