// The edits that turn one text into another, so that marks and carets in the lines that are in both stay with their lines.
#pragma once

#include <atomic>
#include <vector>

#include "text/store/Document.h"

namespace text {

// Ascending, apart, in offsets of `before`; none: the texts have the same bytes. They do not change the line mode. What differs is found by lines, if that part has at
// most 16 MB in either text and both have the same line mode; else it is one edit. Memory: that of diffLines for the part that
// differs. Cancelled: none or all; the caller must not use them.
std::vector<Edit> editsBetween(const Snapshot& before, const Snapshot& after, const std::atomic<bool>* cancel = nullptr);

}   // namespace text
