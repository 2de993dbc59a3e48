#include "text/display/WeightRuns.h"

#include <algorithm>
#include <utility>

#include "text/store/Tree.h"

namespace text {

WeightRuns::Place WeightRuns::find(std::int64_t item) const {
  Place place{root_, 0, 0};
  for (;;) {
    const Node& n = nodes_[place.node];
    const std::int64_t left = countOf(n.left);
    if (item < place.first + left) {
      place.node = n.left;
      continue;
    }
    place.first += left;
    place.sum += sumOf(n.left);
    if (item < place.first + n.count || n.right == kNone) return place;
    place.first += n.count;
    place.sum += n.count * n.weight;
    place.node = n.right;
  }
}

std::int64_t WeightRuns::sumBefore(std::int64_t item) const {
  if (plain()) return item;
  if (item >= items_) return sum();
  const Place place = find(item);
  return place.sum + (item - place.first) * nodes_[place.node].weight;
}

std::int64_t WeightRuns::weight(std::int64_t item) const { return plain() ? 1 : nodes_[find(item).node].weight; }

std::int64_t WeightRuns::runEnd(std::int64_t item) const {
  if (plain()) return items_;
  const Place place = find(item);
  return place.first + nodes_[place.node].count;
}

std::int64_t WeightRuns::itemAt(std::int64_t at) const {
  if (plain()) return at;
  std::int64_t first = 0;
  for (Index i = root_;;) {
    const Node& n = nodes_[i];
    if (at < sumOf(n.left)) {
      i = n.left;
      continue;
    }
    at -= sumOf(n.left);
    first += countOf(n.left);
    if (at < n.count * n.weight) return first + at / n.weight;
    at -= n.count * n.weight;
    first += n.count;
    i = n.right;
  }
}

void WeightRuns::measure(Index i) {
  Node& n = nodes_[i];
  n.allCount = n.count + countOf(n.left) + countOf(n.right);
  n.allSum = n.count * n.weight + sumOf(n.left) + sumOf(n.right);
}

WeightRuns::Index WeightRuns::make(std::int64_t count, std::int64_t weight) {
  random_ ^= random_ << 13;
  random_ ^= random_ >> 17;
  random_ ^= random_ << 5;
  Index i = static_cast<Index>(nodes_.size());
  if (free_.empty()) {
    nodes_.emplace_back();
  } else {
    i = free_.back();
    free_.pop_back();
  }
  nodes_[i] = {count, weight, 0, 0, kNone, kNone, random_};
  measure(i);
  return i;
}

void WeightRuns::discard(Index i) {
  if (i == kNone) return;
  discard(nodes_[i].left);
  discard(nodes_[i].right);
  free_.push_back(i);
}

// Cuts in front of item `at`, also within a run.
void WeightRuns::split(Index i, std::int64_t at, Index* left, Index* right) {
  *left = *right = kNone;
  if (i == kNone) return;
  const std::int64_t before = countOf(nodes_[i].left), count = nodes_[i].count;
  Index part = kNone;
  if (at <= before) {
    split(nodes_[i].left, at, left, &part);
    nodes_[i].left = part;
    *right = i;
  } else if (at >= before + count) {
    split(nodes_[i].right, at - before - count, &part, right);
    nodes_[i].right = part;
    *left = i;
  } else {
    const Index rest = make(before + count - at, nodes_[i].weight);
    nodes_[i].count = at - before;
    *right = join(rest, std::exchange(nodes_[i].right, kNone));
    *left = i;
  }
  measure(i);
}

WeightRuns::Index WeightRuns::join(Index left, Index right) {
  if (left == kNone) return right;
  if (right == kNone) return left;
  if (nodes_[left].rank > nodes_[right].rank) {
    const Index below = join(nodes_[left].right, right);
    nodes_[left].right = below;
    measure(left);
    return left;
  }
  const Index below = join(left, nodes_[right].left);
  nodes_[right].left = below;
  measure(right);
  return right;
}

WeightRuns::Index WeightRuns::takeEnd(Index* i, bool last) {
  Index end = *i;
  while ((last ? nodes_[end].right : nodes_[end].left) != kNone) end = last ? nodes_[end].right : nodes_[end].left;
  Index left = kNone, right = kNone;
  split(*i, last ? countOf(*i) - nodes_[end].count : nodes_[end].count, &left, &right);
  *i = last ? left : right;
  return last ? right : left;
}

WeightRuns::Index WeightRuns::joinEqual(Index left, Index right) {
  if (left == kNone || right == kNone) return join(left, right);
  const Index before = takeEnd(&left, true), behind = takeEnd(&right, false);
  Index middle = before;
  if (nodes_[before].weight == nodes_[behind].weight) {
    nodes_[before].count += nodes_[behind].count;
    measure(before);
    discard(behind);
  } else {
    middle = join(before, behind);
  }
  return join(join(left, middle), right);
}

void WeightRuns::splice(std::int64_t at, std::int64_t removed, std::int64_t inserted, std::int64_t weight) {
  if (removed == 0 && inserted == 0) return;
  if (plain() && (weight == 1 || inserted == 0)) {
    items_ += inserted - removed;
    return;
  }
  // Two cuts and a run need a node each, and one more where there was no tree. A place in the list of free ones for each node
  // lets everything behind this go without memory.
  constexpr std::size_t kMost = 4;
  const auto roomFor = [](auto& list, std::size_t most) {
    if (list.capacity() < most) list.reserve(std::max(most, 2 * list.capacity()));
  };
  roomFor(nodes_, nodes_.size() + kMost);
  roomFor(free_, nodes_.capacity());
  if (plain() && items_ > 0) root_ = make(items_, 1);
  Index left = kNone, gone = kNone, right = kNone;
  split(root_, at, &left, &right);
  split(right, removed, &gone, &right);
  discard(gone);
  if (inserted > 0) left = joinEqual(left, make(inserted, weight));
  root_ = joinEqual(left, right);
  items_ += inserted - removed;
  if (root_ != kNone && nodes_[root_].count == items_ && nodes_[root_].weight == 1) reset(items_);
}

void WeightRuns::reset(std::int64_t items) noexcept {
  std::vector<Node>().swap(nodes_);
  std::vector<Index>().swap(free_);
  root_ = kNone;
  items_ = items;
}

void WeightRuns::checkInvariants() const {
  if (plain()) return;
  engine::require(countOf(root_) == items_, "the runs hold all items");
  std::vector<Index> stack{root_};
  while (!stack.empty()) {
    const Node& n = nodes_[stack.back()];
    stack.pop_back();
    engine::require(n.count > 0 && n.weight >= 0, "a run of items");
    engine::require(n.allCount == n.count + countOf(n.left) + countOf(n.right), "items are counted");
    engine::require(n.allSum == n.count * n.weight + sumOf(n.left) + sumOf(n.right), "weights are summed");
    for (const Index below : {n.left, n.right}) {
      if (below == kNone) continue;
      engine::require(nodes_[below].rank <= n.rank, "ranks fall");
      stack.push_back(below);
    }
  }
  for (std::int64_t item = 0, end = 0; item < items_; item = end) {
    end = runEnd(item);
    engine::require(end == items_ || weight(item) != weight(end), "neighbours differ");
  }
}

}   // namespace text
