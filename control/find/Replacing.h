// Replacing many matches: plans the edits on a snapshot, on any thread; the caller applies them as one undo step.
#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <string>

#include "text/find/Finder.h"
#include "text/store/Document.h"

// Compact, because a large text may have many matches.
struct ReplacePlan {
  std::deque<text::ByteRange> finds;   // ascending
  std::deque<std::uint32_t> lengths;   // bytes of each replacement
  std::string texts;                   // all replacements, concatenated
  std::string error;                   // for the user; then there are no matches
  bool cancelled = false;
};

// The replacement of a match; see Finder::replacementFor.
struct Replacement {
  std::string text;
  bool preserveCase = false;
  text::NewLines newLines;
};

// All matches inside each of the ranges (ascending, not overlapping), by one search.
ReplacePlan planReplacements(const text::Snapshot& text, const text::Finder& searcher, std::span<const text::ByteRange> within,
                             const Replacement& replacement, text::SearchControl* control = nullptr);
