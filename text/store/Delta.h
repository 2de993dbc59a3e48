// The difference between two states of a text, written down at one of them ("now") as the way to the other. It serves undo
// (from the state after a step back to the one before), redo (the other way) and the spans of a Change.
//
// Always: items are ascending in the text as it is now and do not overlap; none is empty on both sides. What the other side
// holds is kept as pieces in each item (small changes), or as the whole other tree (changes of many items); never lost.
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
  Ref<Node> content;                    // the other side's pieces: one leaf of any size; none when otherLength is 0 or by tree
};

struct Delta {
  std::vector<DeltaItem> items;
  bool hasContent = true;   // the items carry the other side
  TreePtr other;            // the other side as a whole; set where the items do not carry it, and inside an open group
  std::size_t pinned = 0;   // bytes of memory that only `other` keeps alive: what the present tree does not share with it

  std::size_t cost() const;   // bytes of memory kept alive by it, roughly
};

// Replace the bytes [begin, end) of the old text by `length` others.
struct Exchange {
  std::int64_t begin = 0, end = 0, length = 0;
};

// What the exchanges, which are ascending and do not overlap, do to `old`, seen from the text after them.
Delta deltaOf(const TreePtr& old, std::span<const Exchange> exchanges);

// The state that the delta leads to, and the delta back from there.
struct Reverted {
  TreePtr tree;
  Delta back;
};
Reverted revert(const TreePtr& now, const Delta& delta);

// Two changes in a row as one: first leads from the middle to the old state, second from the new one to the middle.
// One of the two ways to the old content must be there for both (content for both, or first.other).
Delta compose(const Delta& first, const Delta& second, const TreeShape& shape, char breakByte);

// The spans of the change that led from `old` to `now`; the delta is written down at `now`.
std::vector<Change::Span> spansOf(const Delta& delta, const Tree& old, const Tree& now);

}   // namespace text::engine
