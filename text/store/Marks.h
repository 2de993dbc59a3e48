// Marks: byte offsets that move with the text. Quick with hundreds of thousands of them under single edits.
//
// Marks lie in blocks of neighbours. A block keeps its marks relative to a base and knows bounds of them, so an edit before
// a block only moves the base, and only blocks that the edit lies in are looked through. Order inside a block does not matter,
// and bounds may overlap: that costs time, never correctness.
#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "text/store/Document.h"

namespace text::engine {

class Marks {
 public:
  MarkId add(std::int64_t at, Bias bias);
  void remove(MarkId id);                 // unknown: nothing
  std::int64_t at(MarkId id) const;       // throws std::out_of_range for an unknown mark
  void set(MarkId id, std::int64_t at);   // the same
  void clear();

  void move(const Change& change) noexcept;   // each as Change::map says; not after a reset

  void checkInvariants(std::int64_t size) const;

 private:
  struct Mark {
    std::int64_t at;   // from the block's base
    MarkId id;
    Bias bias;
  };
  struct Block {
    std::int64_t base = 0, low = 0, high = 0;   // low <= at <= high for each mark
    std::vector<Mark> marks;
    void measure();
  };
  static constexpr std::size_t blockSize = 512;

  Block& blockFor(std::int64_t at);
  void split(std::size_t index);
  static Mark& find(Block& block, MarkId id);

  std::vector<std::unique_ptr<Block>> blocks_;   // roughly ascending
  std::unordered_map<MarkId, Block*> home_;
  MarkId next_ = 1;
};

}   // namespace text::engine
