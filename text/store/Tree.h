// The balanced tree of pieces behind a Snapshot. Immutable: an edit makes a new tree that shares all untouched nodes with the old
// one.
//
// Invariants: all leaves have the same height. Every node except the root holds maxEntries / 2 to maxEntries entries. No piece is
// empty or longer than maxPiece, so that a search inside a piece is cheap. The bytes and breaks of each subtree are stored next to
// the pointer to it. A break is one '\n' in LineMode::lf and one '\r' in LineMode::cr. A CR LF across two pieces needs no special
// case, because only its LF counts.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "text/store/Piece.h"
#include "text/store/Snapshot.h"

namespace text {

// Sizes in the tree and in the data that a document keeps for it. A document keeps the shape of its text's tree.
struct TreeShape {
  std::uint32_t maxEntries = 16;        // entries of a node; even, >= 4
  std::uint32_t maxPiece = 8 * 1024;    // bytes of a piece; >= 1
  std::uint32_t addBlock = 64 * 1024;   // maximum size of a block for small insertions; bytes
  std::size_t bulkEdits = 1024;         // a change with at least so many edits keeps the whole old tree for undo, not the pieces
  // If at most so many bytes lie between two such edits, they are copied. Two pieces take about 64 bytes, and reading many small
  // pieces is much slower than copying these bytes.
  std::int64_t smallGap = 256;
};

namespace engine {

// Replaces the bytes [begin, end) of the old text by pieceCount pieces, starting at firstPiece of a separate list.
struct Splice {
  std::int64_t begin = 0, end = 0;
  std::size_t firstPiece = 0, pieceCount = 0;
};

}   // namespace engine

using TreePtr = std::shared_ptr<const class Tree>;

class Tree {
 public:
  // A piece with its leaf, its start and the number of breaks before it. Valid while the tree lives.
  struct Place {
    const engine::Node* leaf = nullptr;
    const engine::Piece* piece = nullptr;
    std::int64_t start = 0, breaksBefore = 0;
    bool last() const { return piece + 1 == leaf->pieces() + leaf->count; }   // in its leaf
    void next() {
      start += piece->length;
      breaksBefore += piece->breaks;
      ++piece;
    }
  };

  Tree(LineMode mode, const TreeShape& shape, std::vector<engine::Piece> pieces);

  LineMode mode() const { return mode_; }
  const TreeShape& shape() const { return shape_; }
  char breakByte() const { return mode_ == LineMode::lf ? '\n' : '\r'; }
  std::int64_t bytes() const { return root_.bytes; }
  std::int64_t breaks() const { return root_.breaks; }

  Place locate(std::int64_t offset) const;                // precondition: 0 <= offset < bytes()
  std::int64_t breaksBefore(std::int64_t offset) const;   // breaks in [0, offset); 0 <= offset <= bytes()
  std::int64_t behindBreak(std::int64_t nth) const;       // behind the nth (from 1) break; 1 <= nth <= breaks()
  // Contiguous bytes from or up to offset: a piece, with neighbours in the same node that continue in the same block.
  std::string_view runFrom(std::int64_t offset) const;
  std::string_view runBefore(std::int64_t offset) const;
  void copy(std::int64_t begin, std::int64_t end, std::string& to) const;   // appends
  // Appends the pieces of [begin, end), cut to it.
  void collect(std::int64_t begin, std::int64_t end, std::vector<engine::Piece>& to) const;

  // The tree after the splices, which ascend and do not overlap. Costs O(log n) each, less when they are dense.
  TreePtr spliced(std::span<const engine::Splice> splices, std::span<const engine::Piece> pieces) const;

  void checkInvariants() const;   // aborts with a message on a breach

 private:
  friend class TreeEditor;
  Tree(LineMode mode, const TreeShape& shape, engine::Child root) : mode_(mode), shape_(shape), root_(std::move(root)) {}

  LineMode mode_;
  TreeShape shape_;
  engine::Child root_;   // null: the empty text
};

namespace engine {

// Cuts the bytes, which lie in block, into pieces of at most maxPiece and appends these.
void cutPieces(const Ref<Block>& block, const char* data, std::size_t length, const TreeShape& shape, char breakByte,
               std::vector<Piece>& to);
// The part [from, from + length) of a piece.
Piece subPiece(const Piece& piece, std::uint32_t from, std::uint32_t length, char breakByte);
// Appends a piece. If it continues the last one, they are joined, up to maxPiece.
void pushPiece(std::vector<Piece>& list, Piece piece, std::uint32_t maxPiece);

// Looks up ascending offsets: a step inside one piece costs only the bytes between.
class Walker {
 public:
  explicit Walker(const Tree& tree) : tree_(tree) {}
  std::int64_t breaksBefore(std::int64_t offset);             // as in Tree; offset must not be smaller than the previous one
  bool equals(std::int64_t offset, std::string_view bytes);   // whether the text has these bytes there; the range lies in the text

 private:
  void seek(std::int64_t offset);
  const Tree& tree_;
  Tree::Place place_;
  std::int64_t at_ = 0, breaks_ = 0;
};

// Prints the message and aborts.
void invariantBroken(const char* what);
inline void require(bool holds, const char* what) {
  if (!holds) invariantBroken(what);
}

}   // namespace engine
}   // namespace text
