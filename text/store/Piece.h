// The parts of a text's tree: blocks of bytes, pieces of blocks, and nodes that hold pieces or nodes.
//
// Invariants: published bytes of a block and published nodes never change; both are shared by reference counts on any thread. A
// node is allocated for exactly its entries. Nodes of height 0 hold pieces, others hold nodes of the height below.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace text::engine {

// A reference-counted pointer; T has `mutable std::atomic<std::uint32_t> refs` that starts at 1, and a static destroy(T*).
template <class T>
class Ref {
 public:
  Ref() = default;
  static Ref adopt(T* fresh) { return Ref(fresh); }
  Ref(const Ref& o) : p_(o.p_) {
    if (p_) p_->refs.fetch_add(1, std::memory_order_relaxed);
  }
  Ref(Ref&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
  Ref& operator=(Ref o) noexcept {
    std::swap(p_, o.p_);
    return *this;
  }
  ~Ref() {
    if (p_ && p_->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) T::destroy(p_);
  }
  T* get() const { return p_; }
  T* operator->() const { return p_; }
  T& operator*() const { return *p_; }
  explicit operator bool() const { return p_ != nullptr; }

 private:
  explicit Ref(T* p) : p_(p) {}
  T* p_ = nullptr;
};

// Keeps the memory of some bytes alive.
struct Block {
  std::atomic<std::uint32_t> refs{1};
  std::shared_ptr<const char[]> bytes;

  static Ref<Block> make(std::shared_ptr<const char[]> bytes);
  static void destroy(Block* block) { delete block; }
};

// A run of bytes inside one block.
struct Piece {
  const char* data = nullptr;
  std::uint32_t length = 0;   // > 0 in a tree
  std::uint32_t breaks = 0;   // number of the tree's break bytes in it
  Ref<Block> block;

  // True when `next` starts where this piece ends, in the same block.
  bool runsInto(const Piece& next) const { return block.get() == next.block.get() && data + length == next.data; }
};

struct Node;

// A node with the sums of its subtree.
struct Child {
  Ref<Node> node;
  std::int64_t bytes = 0, breaks = 0;
};

struct alignas(8) Node {
  std::atomic<std::uint32_t> refs{1};
  std::uint32_t count;
  std::uint32_t height;

  const Piece* pieces() const { return reinterpret_cast<const Piece*>(this + 1); }
  const Child* children() const { return reinterpret_cast<const Child*>(this + 1); }

  // Takes the entries [first, first + count); moves from them only when nothing can fail any more.
  static Child leaf(Piece* first, std::size_t count);
  static Child inner(Child* first, std::size_t count);
  static void destroy(Node* node);

 private:
  Node(std::uint32_t n, std::uint32_t h) : count(n), height(h) {}
  template <class Entry>
  static Ref<Node> make(Entry* first, std::size_t count, std::uint32_t height);
};
static_assert(sizeof(Node) % alignof(Piece) == 0 && sizeof(Node) % alignof(Child) == 0);

}   // namespace text::engine
