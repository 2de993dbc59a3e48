// Replacing many finds at once: works out the edits on a snapshot, on any thread; the caller applies them in one step.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "text/Document.h"
#include "text/Search.h"

struct ReplacePlan {
  std::vector<text::Edit> edits;   // one for each find, ascending
  std::string error;               // a text for the user; then edits is empty
  bool cancelled = false;
};

// Finds inside each of the ranges (ascending, not overlapping). A "\n" in a regular expression's replacement becomes newLine.
ReplacePlan planReplacements(const text::Snapshot& text, const text::Searcher& searcher, bool regex,
                             std::span<const text::ByteRange> within, std::string_view replacement, bool preserveCase,
                             std::string_view newLine, text::SearchControl* control = nullptr);
