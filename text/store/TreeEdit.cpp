// Makes trees from a list of pieces, and from another tree by splices.
//
// The old tree is traversed once along the ascending splices. An untouched subtree is shared. A touched leaf is made anew, and a
// node is made from the new nodes of its children. A node that deletions left less than half full is joined with its neighbour. The
// old tree does not change, so a failed allocation loses nothing.
#include <algorithm>

#include "text/store/CountBytes.h"
#include "text/store/Tree.h"

namespace text {

using namespace engine;

class TreeEditor {
 public:
  TreeEditor(const TreeShape& shape, char breakByte, std::span<const Splice> splices, std::span<const Piece> pieces)
      : shape_(shape), breakByte_(breakByte), splices_(splices), pieces_(pieces) {}

  Child edit(const Child& root) {
    std::vector<Child> level;
    if (root.node) {
      rewrite(*root.node, 0, 0, splices_.size(), level);
    } else {
      std::vector<Piece> list;
      for (const auto& splice : splices_) insert(splice, list);
      pack(list, level);
    }
    return crown(std::move(level));
  }

  static Child build(std::vector<Piece>& pieces, const TreeShape& shape) {
    TreeEditor editor(shape, 0, {}, {});
    std::vector<Child> level;
    editor.pack(pieces, level);
    return editor.crown(std::move(level));
  }

 private:
  // Adds levels until one node is left, and removes roots with a single child.
  Child crown(std::vector<Child> level) {
    while (level.size() > 1) {
      std::vector<Child> above;
      pack(level, above);
      level = std::move(above);
    }
    if (level.empty()) return {};
    Child root = std::move(level.front());
    while (root.node->height > 0 && root.node->count == 1) root = Child(root.node->children()[0]);
    return root;
  }

  static Child make(Piece* first, std::size_t count) { return Node::leaf(first, count); }
  static Child make(Child* first, std::size_t count) { return Node::inner(first, count); }

  // Makes nodes of nearly equal size from the entries; if there are several, each is at least half full.
  template <class Entry>
  void pack(std::vector<Entry>& entries, std::vector<Child>& out) {
    const std::size_t nodes = (entries.size() + shape_.maxEntries - 1) / shape_.maxEntries;
    out.reserve(out.size() + nodes);
    for (std::size_t i = 0; i < nodes; ++i) {
      const auto from = entries.size() * i / nodes, to = entries.size() * (i + 1) / nodes;
      out.push_back(make(entries.data() + from, to - from));
    }
  }

  bool thin(const Child& child) const { return child.node->count < shape_.maxEntries / 2; }

  void insert(const Splice& splice, std::vector<Piece>& list) {
    for (std::size_t i = 0; i < splice.pieceCount; ++i) pushPiece(list, pieces_[splice.firstPiece + i], shape_.maxPiece);
  }

  // An insertion between two nodes goes to the left one, where it may continue a piece.
  static bool insertsBehind(const Splice& splice, std::int64_t nodeBegin) { return splice.begin > nodeBegin || nodeBegin == 0; }

  // Narrows [first, last) to the splices that touch a node of the range [begin, end).
  void narrow(std::int64_t begin, std::int64_t end, std::size_t& first, std::size_t& last) const {
    if (begin > 0)
      while (first < last && splices_[first].end <= begin) ++first;
    const auto from = splices_.begin() + static_cast<std::ptrdiff_t>(first),
               to = splices_.begin() + static_cast<std::ptrdiff_t>(last);
    last = static_cast<std::size_t>(std::partition_point(from, to, [&](const Splice& s) { return s.begin <= end; }) -
                                    splices_.begin());
    while (last > first && splices_[last - 1].begin == end && splices_[last - 1].pieceCount == 0) --last;
  }

  // Appends the replacement of the node to out: nodes of its height, all at least half full unless there is only one.
  void rewrite(const Node& node, std::int64_t begin, std::size_t first, std::size_t last, std::vector<Child>& out) {
    if (node.height == 0) {
      rewriteLeaf(node, begin, first, last, out);
      return;
    }
    std::vector<Child> list;
    list.reserve(node.count + 2);
    bool mended = true;
    for (std::uint32_t i = 0; i < node.count; ++i) {
      const Child& child = node.children()[i];
      const auto end = begin + child.bytes;
      std::size_t from = first, to = last;
      narrow(begin, end, from, to);
      first = from;
      if (from == to) {
        list.push_back(child);
      } else if (const auto& s = splices_[from]; to - from > 1 || s.end < end || insertsBehind(s, begin)) {
        const auto before = list.size();
        rewrite(*child.node, begin, from, to, list);
        if (list.size() == before + 1 && thin(list.back())) mended = false;
      }
      begin = end;
    }
    if (!mended) mend(list);
    pack(list, out);
  }

  void rewriteLeaf(const Node& leaf, std::int64_t begin, std::size_t first, std::size_t last, std::vector<Child>& out) {
    std::vector<Piece> list;
    std::size_t inserted = 0;
    for (std::size_t i = first; i < last; ++i) inserted += splices_[i].pieceCount + 1;
    list.reserve(leaf.count + inserted);
    PieceReader reader(leaf, begin, breakByte_);
    for (std::size_t i = first; i < last; ++i) {
      const auto& splice = splices_[i];
      if (insertsBehind(splice, begin)) {
        reader.advance(splice.begin, [&](Piece piece) { pushPiece(list, std::move(piece), shape_.maxPiece); });
        insert(splice, list);
      }
      reader.advance(splice.end, [](const Piece&) {});
    }
    reader.advance(INT64_MAX, [&](Piece piece) { pushPiece(list, std::move(piece), shape_.maxPiece); });
    pack(list, out);
  }

  // Reads the pieces of a leaf in order and cuts them where needed; each byte is counted about once.
  class PieceReader {
   public:
    PieceReader(const Node& leaf, std::int64_t begin, char breakByte)
        : next_(leaf.pieces()), end_(leaf.pieces() + leaf.count), at_(begin), breakByte_(breakByte) {
      load();
    }

    template <class Take>
    void advance(std::int64_t to, const Take& take) {
      while (at_ < to && rest_.length > 0) {
        if (to - at_ >= rest_.length) {
          at_ += rest_.length;
          take(std::move(rest_));
          load();
        } else {
          const auto length = static_cast<std::uint32_t>(to - at_);
          Piece head = subPiece(rest_, 0, length, breakByte_);
          rest_.data += length;
          rest_.length -= length;
          rest_.breaks -= head.breaks;
          at_ = to;
          take(std::move(head));
        }
      }
    }

   private:
    void load() { rest_ = next_ != end_ ? *next_++ : Piece(); }
    const Piece *next_, *end_;
    Piece rest_;
    std::int64_t at_;
    char breakByte_;
  };

  // Joins nodes that are less than half full with a neighbour.
  void mend(std::vector<Child>& list) {
    for (std::size_t i = 0; i < list.size() && list.size() > 1;) {
      if (!thin(list[i])) {
        ++i;
        continue;
      }
      const std::size_t left = i > 0 ? i - 1 : 0;
      std::vector<Child> joined;
      join(*list[left].node, *list[left + 1].node, joined);
      list[left] = std::move(joined[0]);
      if (joined.size() > 1) list[left + 1] = std::move(joined[1]);
      else list.erase(list.begin() + static_cast<std::ptrdiff_t>(left) + 1);
      i = left;
    }
  }

  void join(const Node& a, const Node& b, std::vector<Child>& out) {
    if (a.height == 0) {
      std::vector<Piece> pieces(a.pieces(), a.pieces() + a.count);
      pieces.reserve(a.count + b.count);
      for (std::uint32_t i = 0; i < b.count; ++i) pushPiece(pieces, b.pieces()[i], shape_.maxPiece);
      pack(pieces, out);
      return;
    }
    std::vector<Child> children;
    children.reserve(a.count + b.count);
    children.assign(a.children(), a.children() + a.count);
    children.insert(children.end(), b.children(), b.children() + b.count);
    // A child may be less than half full only where it is the single one of its node.
    if (a.count == 1 || b.count == 1) mend(children);
    pack(children, out);
  }

  TreeShape shape_;
  char breakByte_;
  std::span<const Splice> splices_;
  std::span<const Piece> pieces_;
};

Tree::Tree(LineMode mode, const TreeShape& shape, std::vector<Piece> pieces)
    : mode_(mode), shape_(shape), root_(TreeEditor::build(pieces, shape)) {}

TreePtr Tree::spliced(std::span<const Splice> splices, std::span<const Piece> pieces) const {
  return TreePtr(new Tree(mode_, shape_, TreeEditor(shape_, breakByte(), splices, pieces).edit(root_)));
}

}   // namespace text
