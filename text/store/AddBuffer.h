// Storage of inserted bytes: they are appended to a block until it is full. Published bytes never change. Each new block is up to
// twice as large as the last one, so that small documents stay small.
#pragma once

#include <algorithm>
#include <cstddef>

#include "text/store/Piece.h"

namespace text::engine {

class AddBuffer {
 public:
  // Returns space for length bytes; reserves nothing until commit().
  struct Room {
    Ref<Block> block;
    char* base = nullptr;
    std::size_t used = 0, capacity = 0;   // the free space begins at base + used
  };
  Room room(std::size_t length, std::size_t largest) const {
    if (room_.capacity - room_.used >= length && room_.block) return room_;
    Room fresh;
    fresh.capacity = std::max(length, std::min(largest, std::max(room_.capacity * 2, smallest)));
    std::shared_ptr<char[]> bytes(new char[fresh.capacity]);
    fresh.base = bytes.get();
    fresh.block = Block::make(std::move(bytes));
    return fresh;
  }
  // Publishes the first `length` bytes of the space. A block made for one large text is not kept for later insertions.
  void commit(Room room, std::size_t length) noexcept {
    room.used += length;
    if (room.block.get() == room_.block.get() || room.used < room.capacity || !room_.block) room_ = std::move(room);
  }

 private:
  static constexpr std::size_t smallest = 256;
  Room room_;
};

}   // namespace text::engine
