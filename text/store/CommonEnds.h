// What two texts share at both ends.
#pragma once

#include <atomic>
#include <utility>

#include "text/store/Snapshot.h"

namespace text {

// Number of bytes that both share at the begin, and then at the end; the two do not overlap. Zero if their lines end differently,
// because then no line is the same.
std::pair<std::int64_t, std::int64_t> commonEnds(const Snapshot& a, const Snapshot& b);

// Whether both hold the same bytes, whatever their line modes. Cancelled: the result means nothing.
bool sameText(const Snapshot& a, const Snapshot& b, const std::atomic<bool>* cancel = nullptr);
bool sameBytes(const Snapshot& a, ByteRange inA, const Snapshot& b, ByteRange inB, const std::atomic<bool>* cancel = nullptr);

}   // namespace text
