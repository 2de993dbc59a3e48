// Marks: byte offsets that move with the text; fast with hundreds of thousands of marks under single edits.
//
// Marks are stored in blocks of neighbours. A block stores offsets relative to a base and knows bounds for them. An edit before a
// block only changes the base; only blocks that contain the edit are searched. The order inside a block does not matter, and bounds
// may overlap: this costs time only.
#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "text/store/Document.h"

namespace text::engine {

class Marks {
 public:
  MarkId add(std::int64_t at, Bias bias);
  void remove(MarkId id);             // unknown: nothing
  std::int64_t at(MarkId id) const;   // throws std::out_of_range for an unknown mark
  void clear();

  void move(const Change& change) noexcept;   // moves each mark as Change::map says; not for a reset

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
