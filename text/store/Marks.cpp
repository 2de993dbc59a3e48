#include "text/store/Marks.h"

#include <algorithm>
#include <stdexcept>

#include "text/store/Tree.h"

namespace text::engine {

void Marks::Block::measure() {
  if (marks.empty()) return;
  const auto [least, most] =
      std::minmax_element(marks.begin(), marks.end(), [](const Mark& a, const Mark& b) { return a.at < b.at; });
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
  // Most marks are added in ascending order. So the last block is tried first and filled before the next one starts.
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

MarkId Marks::add(std::int64_t at, Bias bias) {
  Block& block = blockFor(at);
  if (block.marks.size() == block.marks.capacity()) block.marks.reserve(std::max<std::size_t>(8, 2 * block.marks.size()));
  home_.emplace(next_, &block);
  if (block.marks.empty()) block.low = block.high = at - block.base;
  block.marks.push_back({at - block.base, next_, bias});
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

void Marks::clear() {
  blocks_.clear();
  home_.clear();
}

void Marks::move(const Change& change) noexcept {
  if (change.spans.empty()) return;
  // A block completely between two spans only gets a new base.
  const auto before = [&](std::int64_t at) {
    return std::partition_point(change.spans.begin(), change.spans.end(),
                                [at](const Change::Span& s) { return s.oldBegin.value <= at; });
  };
  for (const auto& block : blocks_) {
    const auto low = block->base + block->low, high = block->base + block->high;
    const auto span = before(low);
    if (span == before(high) && (span == change.spans.begin() || low > std::prev(span)->oldEnd().value)) {
      if (span != change.spans.begin()) block->base += std::prev(span)->end() - std::prev(span)->oldEnd();
      continue;
    }
    for (auto& mark : block->marks) mark.at = change.map(ByteOffset(block->base + mark.at), mark.bias).value - block->base;
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

}   // namespace text::engine
