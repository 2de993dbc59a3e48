// What two texts share at both ends.
#pragma once

#include <utility>

#include "text/store/Snapshot.h"

namespace text {

// Number of bytes that both share at the begin, and then at the end; the two do not overlap. Zero if their lines end differently,
// because then no line is the same.
std::pair<std::int64_t, std::int64_t> commonEnds(const Snapshot& a, const Snapshot& b);

}   // namespace text
