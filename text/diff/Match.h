// What two sequences of numbers have in common: the heart of comparing lines and words.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

namespace text {

// Numbers of things that are equal: small, without large gaps.
using DiffIds = std::span<const std::uint32_t>;

struct Matched {
  std::vector<char> gone, fresh;   // one for each element: not in what both have, in order
  std::int64_t steps = 0;          // elements looked at: what the work costs, whatever the machine
};

// The longest common sequence if both together have at most 512 elements, or differ by few. Else elements that both sides have once
// divide them first (the longest row of such anchors in both orders), and where there are none, the effort is bounded: the result
// is then right, but it may be longer than need be. Steps: a few hundred for each element at the worst.
// Memory: up to 40 bytes for each element. Cancelled: what was not yet compared counts as different.
Matched matchIds(DiffIds before, DiffIds after, const std::atomic<bool>* cancel = nullptr);

}   // namespace text
