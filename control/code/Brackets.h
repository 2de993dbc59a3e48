// Finds the partner of a bracket: ( ), [ ], { }. Brackets in comments and strings only match others in comments and strings, those
// in code only others in code.
#pragma once

#include <optional>

#include "control/edit/TextModel.h"
#include "text/find/Search.h"

struct BracketPair {
  text::ByteOffset here, partner;   // of the two characters; `here` touches the caret
};

// For the bracket to the right of the caret, else the one to its left. nullopt: there is none, or it has no partner within
// `budgetBytes` of text (0: no limit); *cut: the budget was too small to decide. A line costs some bytes more than it has.
std::optional<BracketPair> matchingBracket(TextModel& model, text::ByteOffset caret, std::int64_t budgetBytes = 0,
                                           bool* cut = nullptr);
// The same on any thread, up to the end of the text unless the control cancels it. `colors` may be null.
std::optional<BracketPair> matchingBracket(const text::Snapshot& text, std::shared_ptr<const text::Highlighter> colors,
                                           text::ByteOffset caret, text::SearchControl& control);
