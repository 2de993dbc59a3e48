// Replacing many finds at once: works out the edits on a snapshot, on any thread; the caller applies them in one step.
#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <string>

#include "text/find/Finder.h"
#include "text/store/Document.h"

// Held in few bytes a find, as a large text has many.
struct ReplacePlan {
  std::deque<text::ByteRange> finds;   // ascending
  std::deque<std::uint32_t> lengths;   // bytes that come in place of each
  std::string texts;                   // which are these, one behind the other
  std::string error;                   // a text for the user; then there are no finds
  bool cancelled = false;
};

// What comes in place of a find; see Finder::replacementFor.
struct Replacement {
  std::string text;
  bool preserveCase = false;
  text::NewLines newLines;
};

// Finds inside each of the ranges (ascending, not overlapping), by one search.
ReplacePlan planReplacements(const text::Snapshot& text, const text::Finder& searcher, std::span<const text::ByteRange> within,
                             const Replacement& replacement, text::SearchControl* control = nullptr);
