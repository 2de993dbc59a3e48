#include "text/store/Tree.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "text/store/CountBytes.h"

namespace text {

using namespace engine;

namespace {

std::uint32_t breaksInPrefix(const Piece& piece, std::int64_t length, char breakByte) {
  if (length <= 0 || piece.breaks == 0) return 0;
  if (length >= piece.length) return piece.breaks;
  const auto head = static_cast<std::size_t>(length), tail = piece.length - head;
  if (head <= tail) return static_cast<std::uint32_t>(countByte(piece.data, head, breakByte));
  return piece.breaks - static_cast<std::uint32_t>(countByte(piece.data + head, tail, breakByte));
}

// Calls visit(piece, from, to) for each part of a piece in [begin, end) of the node; offsets count from the node's start.
template <class Visit>
void eachPiece(const Node& node, std::int64_t begin, std::int64_t end, const Visit& visit) {
  std::int64_t at = 0;
  for (std::uint32_t i = 0; i < node.count && at < end; ++i) {
    const std::int64_t length = node.height == 0 ? node.pieces()[i].length : node.children()[i].bytes;
    if (at + length > begin) {
      const auto from = std::max<std::int64_t>(begin - at, 0), to = std::min(end - at, length);
      if (node.height == 0) visit(node.pieces()[i], static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to));
      else eachPiece(*node.children()[i].node, from, to, visit);
    }
    at += length;
  }
}

void checkNode(const Child& child, bool isRoot, const Tree& tree) {
  const Node& node = *child.node;
  const auto& shape = tree.shape();
  require(node.refs.load() > 0, "a node in use is counted");
  require(node.count >= 1 && node.count <= shape.maxEntries, "entries of a node within its limit");
  require(isRoot || node.count >= shape.maxEntries / 2, "a node below the root is half full");
  std::int64_t bytes = 0, breaks = 0;
  for (std::uint32_t i = 0; i < node.count; ++i) {
    if (node.height == 0) {
      const Piece& piece = node.pieces()[i];
      require(piece.length > 0 && piece.length <= shape.maxPiece, "length of a piece within its limits");
      require(countByte(piece.data, piece.length, tree.breakByte()) == piece.breaks, "breaks of a piece");
      require(static_cast<bool>(piece.block), "a piece keeps its block");
      require(i == 0 || !node.pieces()[i - 1].runsInto(piece) || node.pieces()[i - 1].length + piece.length > shape.maxPiece,
              "pieces that belong together are one");
      bytes += piece.length;
      breaks += piece.breaks;
    } else {
      const Child& below = node.children()[i];
      require(below.node->height + 1 == node.height, "all leaves have the same height");
      checkNode(below, false, tree);
      bytes += below.bytes;
      breaks += below.breaks;
    }
  }
  require(bytes == child.bytes && breaks == child.breaks, "sums beside a node");
  require(!isRoot || node.height == 0 || node.count > 1, "a root above others has more than one child");
}

}   // namespace

Tree::Place Tree::locate(std::int64_t offset) const {
  Place place;
  const Node* node = root_.node.get();
  while (node->height > 0) {
    const Child* child = node->children();
    while (offset >= place.start + child->bytes) {
      place.start += child->bytes;
      place.breaksBefore += child->breaks;
      ++child;
    }
    node = child->node.get();
  }
  place.leaf = node;
  place.piece = node->pieces();
  while (offset >= place.start + place.piece->length) place.next();
  return place;
}

std::int64_t Tree::breaksBefore(std::int64_t offset) const {
  if (offset >= bytes()) return breaks();
  const auto place = locate(offset);
  return place.breaksBefore + breaksInPrefix(*place.piece, offset - place.start, breakByte());
}

std::int64_t Tree::behindBreak(std::int64_t nth) const {
  std::int64_t at = 0;
  const Node* node = root_.node.get();
  while (node->height > 0) {
    const Child* child = node->children();
    for (; nth > child->breaks; ++child) {
      nth -= child->breaks;
      at += child->bytes;
    }
    node = child->node.get();
  }
  const Piece* piece = node->pieces();
  for (; nth > piece->breaks; ++piece) {
    nth -= piece->breaks;
    at += piece->length;
  }
  return at + static_cast<std::int64_t>(behindNthByte(piece->data, piece->length, breakByte(), nth));
}

std::string_view Tree::runFrom(std::int64_t offset) const {
  if (offset >= bytes()) return {};
  const auto place = locate(offset);
  const Piece* piece = place.piece;
  const Piece* last = place.leaf->pieces() + place.leaf->count - 1;
  const char* from = piece->data + (offset - place.start);
  while (piece != last && piece->runsInto(piece[1])) ++piece;
  return {from, static_cast<std::size_t>(piece->data + piece->length - from)};
}

std::string_view Tree::runBefore(std::int64_t offset) const {
  if (offset <= 0) return {};
  const auto place = locate(offset - 1);
  const Piece* piece = place.piece;
  const char* to = piece->data + (offset - place.start);
  while (piece != place.leaf->pieces() && piece[-1].runsInto(*piece)) --piece;
  return {piece->data, static_cast<std::size_t>(to - piece->data)};
}

void Tree::copy(std::int64_t begin, std::int64_t end, std::string& to) const {
  if (begin >= end) return;
  to.reserve(to.size() + static_cast<std::size_t>(end - begin));
  eachPiece(*root_.node, begin, end,
            [&](const Piece& piece, std::uint32_t from, std::uint32_t until) { to.append(piece.data + from, until - from); });
}

void Tree::collect(std::int64_t begin, std::int64_t end, std::vector<Piece>& to) const {
  if (begin >= end) return;
  eachPiece(*root_.node, begin, end, [&](const Piece& piece, std::uint32_t from, std::uint32_t until) {
    pushPiece(to, subPiece(piece, from, until - from, breakByte()), shape_.maxPiece);
  });
}

void Tree::checkInvariants() const {
  require(shape_.maxEntries >= 4 && shape_.maxEntries % 2 == 0 && shape_.maxPiece >= 1, "the shape of a tree");
  if (root_.node) checkNode(root_, true, *this);
  else require(root_.bytes == 0 && root_.breaks == 0, "the empty tree has no sums");
}

namespace engine {

void cutPieces(const Ref<Block>& block, const char* data, std::size_t length, const TreeShape& shape, char breakByte,
               std::vector<Piece>& to) {
  while (length > 0) {
    const auto part = std::min<std::size_t>(length, shape.maxPiece);
    to.push_back({data, static_cast<std::uint32_t>(part), static_cast<std::uint32_t>(countByte(data, part, breakByte)), block});
    data += part;
    length -= part;
  }
}

Piece subPiece(const Piece& piece, std::uint32_t from, std::uint32_t length, char breakByte) {
  if (length == piece.length) return piece;
  const auto breaks = breaksInPrefix(piece, from + length, breakByte) - breaksInPrefix(piece, from, breakByte);
  return {piece.data + from, length, breaks, piece.block};
}

void pushPiece(std::vector<Piece>& list, Piece piece, std::uint32_t maxPiece) {
  if (!list.empty() && list.back().runsInto(piece) && list.back().length <= maxPiece - piece.length) {
    list.back().length += piece.length;
    list.back().breaks += piece.breaks;
  } else {
    list.push_back(std::move(piece));
  }
}

void Walker::seek(std::int64_t offset) {
  const auto behind = [&] { return offset >= place_.start + place_.piece->length; };
  if (place_.piece) {
    if (!behind()) return;
    while (behind() && !place_.last()) place_.next();   // mostly it is not far
  }
  if (!place_.piece || behind()) place_ = tree_.locate(offset);
  at_ = place_.start;
  breaks_ = place_.breaksBefore;
}

std::int64_t Walker::breaksBefore(std::int64_t offset) {
  if (offset >= tree_.bytes()) return tree_.breaks();
  seek(offset);
  const auto& piece = *place_.piece;
  if (place_.start == at_) breaks_ = place_.breaksBefore + breaksInPrefix(piece, offset - at_, tree_.breakByte());
  else breaks_ += countByte(piece.data + (at_ - place_.start), static_cast<std::size_t>(offset - at_), tree_.breakByte());
  at_ = offset;
  return breaks_;
}

bool Walker::equals(std::int64_t offset, std::string_view bytes) {
  while (!bytes.empty()) {
    seek(offset);
    const auto skip = static_cast<std::size_t>(offset - place_.start);
    const std::string_view here(place_.piece->data + skip, std::min<std::size_t>(place_.piece->length - skip, bytes.size()));
    if (here != bytes.substr(0, here.size())) return false;
    bytes.remove_prefix(here.size());
    offset += static_cast<std::int64_t>(here.size());
  }
  return true;
}

void invariantBroken(const char* what) {
  std::fprintf(stderr, "text engine: broken invariant: %s\n", what);
  std::abort();
}

}   // namespace engine
}   // namespace text
