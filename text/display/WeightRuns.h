// A long sequence of items that each have a weight, as runs of equal weight in a balanced tree: sums before an item, the item at a sum,
// and replacing items cost O(log runs). As long as all items weigh 1 there is no tree.
//
// Invariant: no run is empty, and neighbours differ in weight. Items count from 0, weights are 0 or more.
#pragma once

#include <cstdint>
#include <vector>

namespace text {

class WeightRuns {
 public:
  explicit WeightRuns(std::int64_t items = 0) : items_(items) {}

  bool plain() const { return root_ == kNone; }   // each item weighs 1
  std::int64_t items() const { return items_; }
  std::int64_t sum() const { return plain() ? items_ : nodes_[root_].allSum; }

  std::int64_t sumBefore(std::int64_t item) const;   // 0 <= item <= items()
  std::int64_t weight(std::int64_t item) const;      // 0 <= item < items()
  // The item that holds the unit `at` of the sum: sumBefore(item) <= at < sumBefore(item + 1). 0 <= at < sum().
  std::int64_t itemAt(std::int64_t at) const;
  // The end of the run of equal weight that holds the item.
  std::int64_t runEnd(std::int64_t item) const;

  // Replaces `removed` items from `at` on by `inserted` ones of this weight. Throws std::bad_alloc, and nothing has changed.
  void splice(std::int64_t at, std::int64_t removed, std::int64_t inserted, std::int64_t weight);
  void reset(std::int64_t items) noexcept;   // all weigh 1

  void checkInvariants() const;   // aborts with a message on a breach

 private:
  using Index = std::uint32_t;
  static constexpr Index kNone = 0xFFFFFFFF;
  struct Node {
    std::int64_t count = 0, weight = 0;            // the run
    std::int64_t allCount = 0, allSum = 0;         // of the run and what hangs below
    Index left = kNone, right = kNone, rank = 0;   // no rank below is higher
  };
  struct Place {
    Index node;
    std::int64_t first, sum;   // where its run begins
  };

  Place find(std::int64_t item) const;
  std::int64_t countOf(Index n) const { return n == kNone ? 0 : nodes_[n].allCount; }
  std::int64_t sumOf(Index n) const { return n == kNone ? 0 : nodes_[n].allSum; }
  void measure(Index n);
  Index make(std::int64_t count, std::int64_t weight);
  void discard(Index n);   // with all below
  void split(Index n, std::int64_t at, Index* left, Index* right);
  Index join(Index left, Index right);
  Index takeEnd(Index* n, bool last);   // the first or last run, cut off
  Index joinEqual(Index left, Index right);

  std::vector<Node> nodes_;
  std::vector<Index> free_;
  Index root_ = kNone;
  std::int64_t items_ = 0;
  std::uint32_t random_ = 2463534242U;
};

}   // namespace text
