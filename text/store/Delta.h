// The difference between two states of a text, relative to one of them ("now"): the way to the other state. Undo uses it from the
// state after a step to the one before, redo the other way; the spans of a Change are made from it.
//
// Invariants: items ascend in the text as it is now and do not overlap; no item is empty on both sides. The text of the other side
// is always available: as pieces in each item (small changes) or as the whole other tree (changes with many items).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "text/store/Document.h"
#include "text/store/Tree.h"

namespace text::engine {

struct DeltaItem {
  std::int64_t begin = 0, length = 0;   // the range in the text as it is now
  std::int64_t otherLength = 0;         // bytes of the other side
  // text of the other side as one leaf of any size; null when otherLength is 0 or when `other` is used
  Ref<Node> content;
};

struct Delta {
  std::vector<DeltaItem> items;
  bool hasContent = true;   // the items hold the text of the other side
  TreePtr other;            // the whole other side; set when the items do not hold it, and inside an open group
  std::size_t pinned = 0;   // bytes of memory that only `other` keeps alive (not shared with the current tree)

  std::size_t cost() const;   // estimated bytes of memory that it keeps alive
};

// Replaces the bytes [begin, end) of the old text by `length` other bytes.
struct Exchange {
  std::int64_t begin = 0, end = 0, length = 0;
};

// The delta of these replacements in `old`, relative to the text after them. They ascend and do not overlap.
Delta deltaOf(const TreePtr& old, std::span<const Exchange> exchanges);

// The state to which the delta leads, and the delta back.
struct Reverted {
  TreePtr tree;
  Delta back;
};
Reverted revert(const TreePtr& now, const Delta& delta);

// Combines two successive deltas: first leads from the intermediate to the old state, second from the new to the intermediate one.
// Both must have the old text in the same form (both content, or first.other).
Delta compose(const Delta& first, const Delta& second, const TreeShape& shape, char breakByte);

// The spans of the change from `old` to `now`; the delta is relative to `now`.
std::vector<Change::Span> spansOf(const Delta& delta, const Tree& old, const Tree& now);

}   // namespace text::engine
