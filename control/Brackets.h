// The partner of a bracket: ( ), [ ], { }. Brackets in comments and strings match only others in comments and strings, those
// in code only others in code.
#pragma once

#include <optional>

#include "control/TextModel.h"

struct BracketPair {
  text::ByteOffset here, partner;   // of the two characters; `here` touches the caret
};

// For the bracket to the right of the caret, else the one to its left. nullopt: there is none, or it has no partner within
// `budgetBytes` of text (0: no bound).
std::optional<BracketPair> matchingBracket(TextModel& model, text::ByteOffset caret, std::int64_t budgetBytes = 0);
