// The word at a caret for lists shown beside it (templates, word lists, hot words). The search is bounded, because a word may have
// many megabytes.
#pragma once

#include "text/line/Words.h"

namespace text {

inline constexpr std::int64_t longestWord = 4096;   // bytes from the caret

// wordAt; empty (at offset) if the word is longer than the bound.
ByteRange wordNear(const Snapshot& text, ByteOffset offset);

}   // namespace text
