#include "text/store/Piece.h"

#include <new>

namespace text::engine {

Ref<Block> Block::make(std::shared_ptr<const char[]> bytes) {
  auto block = Ref<Block>::adopt(new Block);
  block->bytes = std::move(bytes);
  return block;
}

template <class Entry>
Ref<Node> Node::make(Entry* first, std::size_t count, std::uint32_t height) {
  void* memory = ::operator new(sizeof(Node) + count * sizeof(Entry));
  auto* node = new (memory) Node(static_cast<std::uint32_t>(count), height);
  std::uninitialized_move(first, first + count, reinterpret_cast<Entry*>(node + 1));
  return Ref<Node>::adopt(node);
}

Child Node::leaf(Piece* first, std::size_t count) {
  Child child;
  for (std::size_t i = 0; i < count; ++i) {
    child.bytes += first[i].length;
    child.breaks += first[i].breaks;
  }
  child.node = make(first, count, 0);
  return child;
}

Child Node::inner(Child* first, std::size_t count) {
  Child child;
  for (std::size_t i = 0; i < count; ++i) {
    child.bytes += first[i].bytes;
    child.breaks += first[i].breaks;
  }
  child.node = make(first, count, first->node->height + 1);
  return child;
}

void Node::destroy(Node* node) {
  if (node->height == 0) std::destroy_n(const_cast<Piece*>(node->pieces()), node->count);
  else std::destroy_n(const_cast<Child*>(node->children()), node->count);
  node->~Node();
  ::operator delete(node);
}

}   // namespace text::engine
