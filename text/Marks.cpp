#include "text/Marks.h"

#include <algorithm>
#include <stdexcept>

#include "text/Tree.h"

namespace text::engine {

namespace {

using Shift = Marks::Shift;

// The number of shifts that begin at or before `at`.
std::size_t countBefore(std::span<const Shift> shifts, std::int64_t at) {
  return static_cast<std::size_t>(std::upper_bound(shifts.begin(), shifts.end(), at,
                                                   [](std::int64_t a, const Shift& s) { return a < s.begin; }) - shifts.begin());
}

// As if the edits were done one by one from the last to the first.
std::int64_t moved(std::span<const Shift> shifts, std::int64_t at, Gravity gravity) {
  const auto before = countBefore(shifts, at);
  if (before == 0) return at;
  const Shift* shift = &shifts[before - 1];
  const auto behind = [&] { return at > shift->begin && at >= shift->end; };
  if (gravity == Gravity::right) return behind() ? at + (shift->newEnd - shift->end) : shift->newEnd;
  // Where deletions and insertions touch, a left mark may come to stand at the begin of the edit before this one.
  for (;; --shift) {
    if (behind() && (at > shift->end || shift->newEnd > shift->newBegin)) return at + (shift->newEnd - shift->end);
    at = shift->begin;
    if (shift == shifts.data() || shift[-1].end < at) return shift->newBegin;
  }
}

}  // namespace

void Marks::Block::measure() {
  if (marks.empty()) return;
  const auto [least, most] = std::minmax_element(marks.begin(), marks.end(), [](const Mark& a, const Mark& b) { return a.at < b.at; });
  low = least->at;
  high = most->at;
}

Marks::Block& Marks::blockFor(std::int64_t at) {
  const auto behindLast = [&] { return at >= blocks_.back()->base + blocks_.back()->high; };
  if (blocks_.empty() || (blocks_.back()->marks.size() >= blockSize && behindLast())) {
    blocks_.push_back(std::make_unique<Block>());
    return *blocks_.back();
  }
  std::size_t index = 0;
  // Most marks come in ascending order, so the last block is looked at first, and fills up before the next one starts.
  if (const auto& last = *blocks_.back(); at >= last.base + last.low) index = blocks_.size() - 1;
  while (index + 1 < blocks_.size() && blocks_[index]->base + blocks_[index]->high < at) ++index;
  if (blocks_[index]->marks.size() >= blockSize) {
    split(index);
    if (blocks_[index]->base + blocks_[index]->high < at) ++index;
  }
  return *blocks_[index];
}

void Marks::split(std::size_t index) {
  Block& block = *blocks_[index];
  auto upper = std::make_unique<Block>();
  const auto half = block.marks.begin() + static_cast<std::ptrdiff_t>(block.marks.size() / 2);
  std::nth_element(block.marks.begin(), half, block.marks.end(), [](const Mark& a, const Mark& b) { return a.at < b.at; });
  upper->marks.assign(half, block.marks.end());
  upper->base = block.base;
  upper->measure();
  Block* fresh = upper.get();
  blocks_.insert(blocks_.begin() + static_cast<std::ptrdiff_t>(index) + 1, std::move(upper));
  for (const auto& mark : fresh->marks) home_.at(mark.id) = fresh;
  block.marks.erase(half, block.marks.end());
  block.measure();
}

MarkId Marks::add(std::int64_t at, Gravity gravity) {
  Block& block = blockFor(at);
  if (block.marks.size() == block.marks.capacity()) block.marks.reserve(std::max<std::size_t>(8, 2 * block.marks.size()));
  home_.emplace(next_, &block);
  if (block.marks.empty()) block.low = block.high = at - block.base;
  block.marks.push_back({at - block.base, next_, gravity});
  block.low = std::min(block.low, at - block.base);
  block.high = std::max(block.high, at - block.base);
  return next_++;
}

Marks::Mark& Marks::find(Block& block, MarkId id) {
  return *std::find_if(block.marks.begin(), block.marks.end(), [&](const Mark& mark) { return mark.id == id; });
}

void Marks::remove(MarkId id) {
  const auto home = home_.find(id);
  if (home == home_.end()) return;
  Block* block = home->second;
  home_.erase(home);
  std::swap(find(*block, id), block->marks.back());
  block->marks.pop_back();
  if (block->marks.empty()) std::erase_if(blocks_, [&](const auto& b) { return b.get() == block; });
}

std::int64_t Marks::at(MarkId id) const {
  Block& block = *home_.at(id);
  return block.base + find(block, id).at;
}

void Marks::set(MarkId id, std::int64_t at) {
  Block& block = *home_.at(id);
  find(block, id).at = at - block.base;
  block.low = std::min(block.low, at - block.base);
  block.high = std::max(block.high, at - block.base);
}

void Marks::clear() {
  blocks_.clear();
  home_.clear();
}

std::vector<Marks::Shift> Marks::shiftsOf(const Delta& delta) const {
  std::vector<Shift> shifts;
  if (blocks_.empty()) return shifts;
  shifts.reserve(delta.items.size());
  std::int64_t grown = 0;
  for (const auto& item : delta.items) {
    const auto begin = item.begin - grown;
    shifts.push_back({begin, begin + item.otherLength, item.begin, item.begin + item.length});
    grown += item.length - item.otherLength;
  }
  return shifts;
}

void Marks::move(std::span<const Shift> shifts) noexcept {
  if (shifts.empty()) return;
  for (const auto& block : blocks_) {
    const auto low = block->base + block->low, high = block->base + block->high;
    const auto before = countBefore(shifts, low);
    if (before == countBefore(shifts, high) && (before == 0 || low > shifts[before - 1].end)) {
      if (before > 0) block->base += shifts[before - 1].newEnd - shifts[before - 1].end;
      continue;
    }
    for (auto& mark : block->marks) mark.at = moved(shifts, block->base + mark.at, mark.gravity) - block->base;
    block->measure();
  }
}

void Marks::checkInvariants(std::int64_t size) const {
  std::size_t count = 0;
  for (const auto& block : blocks_) {
    require(block->marks.size() <= blockSize, "marks of a block within its limits");
    count += block->marks.size();
    for (const auto& mark : block->marks) {
      require(block->low <= mark.at && mark.at <= block->high, "a mark within the bounds of its block");
      require(block->base + mark.at >= 0 && block->base + mark.at <= size, "a mark within the text");
      const auto home = home_.find(mark.id);
      require(home != home_.end() && home->second == block.get(), "a mark is known by its block");
    }
  }
  require(count == home_.size(), "each known mark lies in a block");
}

}  // namespace text::engine
