// The word at a caret for what is shown beside it (templates, word lists, hot words): looked for within a bound, as a text may be
// one word of many megabytes.
#pragma once

#include "text/line/Words.h"

namespace text {

inline constexpr std::int64_t longestWord = 4096;   // bytes from the caret

// wordAt, or empty (at offset) where the word goes on further than that.
ByteRange wordNear(const Snapshot& text, ByteOffset offset);

}   // namespace text
