#include "text/store/Delta.h"

#include <algorithm>

namespace text::engine {

namespace {

Ref<Node> contentOf(std::vector<Piece>& pieces) {
  return pieces.empty() ? Ref<Node>() : Node::leaf(pieces.data(), pieces.size()).node;
}

std::span<const Piece> piecesOf(const DeltaItem& item) {
  if (!item.content) return {};
  return {item.content->pieces(), item.content->count};
}

Ref<Node> contentOf(const Tree& tree, std::int64_t begin, std::int64_t end) {
  std::vector<Piece> pieces;
  tree.collect(begin, end, pieces);
  return contentOf(pieces);
}

// Appends the bytes [begin, end) of a list of pieces.
void appendPart(std::span<const Piece> list, std::int64_t begin, std::int64_t end, const TreeShape& shape, char breakByte,
                std::vector<Piece>& to) {
  std::int64_t at = 0;
  for (const auto& piece : list) {
    const auto from = std::max<std::int64_t>(begin - at, 0), until = std::min<std::int64_t>(end - at, piece.length);
    if (from < until)
      pushPiece(to, subPiece(piece, static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(until - from), breakByte),
                shape.maxPiece);
    at += piece.length;
    if (at >= end) return;
  }
}

}   // namespace

std::size_t Delta::cost() const {
  std::size_t total = pinned + sizeof(Delta) + items.capacity() * sizeof(DeltaItem);
  for (const auto& item : items) {
    total += static_cast<std::size_t>(item.otherLength);
    total += item.content ? sizeof(Node) + item.content->count * sizeof(Piece) : 0;
  }
  return hasContent ? total : total + items.size() * 4 * sizeof(Piece);
}

Delta deltaOf(const TreePtr& old, std::span<const Exchange> exchanges) {
  Delta delta;
  delta.items.reserve(exchanges.size());
  delta.hasContent = exchanges.size() < old->shape().bulkEdits;
  if (!delta.hasContent) delta.other = old;
  std::int64_t grown = 0;
  for (const auto& exchange : exchanges) {
    DeltaItem item{exchange.begin + grown, exchange.length, exchange.end - exchange.begin, {}};
    if (delta.hasContent && item.otherLength > 0) item.content = contentOf(*old, exchange.begin, exchange.end);
    grown += item.length - item.otherLength;
    delta.items.push_back(std::move(item));
  }
  return delta;
}

Reverted revert(const TreePtr& now, const Delta& delta) {
  Reverted result;
  result.back.hasContent = delta.hasContent;
  result.back.items.reserve(delta.items.size());
  std::vector<Splice> splices;
  std::vector<Piece> pieces;
  if (delta.hasContent) splices.reserve(delta.items.size());
  std::int64_t grown = 0;
  for (const auto& item : delta.items) {
    DeltaItem back{item.begin - grown, item.otherLength, item.length, {}};
    grown += item.length - item.otherLength;
    if (delta.hasContent) {
      const auto content = piecesOf(item);
      splices.push_back({item.begin, item.begin + item.length, pieces.size(), content.size()});
      pieces.insert(pieces.end(), content.begin(), content.end());
      if (item.length > 0) back.content = contentOf(*now, item.begin, item.begin + item.length);
    }
    result.back.items.push_back(std::move(back));
  }
  if (delta.hasContent) {
    result.tree = now->spliced(splices, pieces);
  } else {
    result.tree = delta.other;
    result.back.other = now;
    if (delta.pinned > 0) result.back.pinned = static_cast<std::size_t>(now->bytes());
  }
  return result;
}

Delta compose(const Delta& first, const Delta& second, const TreeShape& shape, char breakByte) {
  Delta whole;
  whole.hasContent = first.hasContent && second.hasContent;
  whole.other = first.other;
  whole.pinned = std::max(first.pinned, second.pinned);
  whole.items.reserve(first.items.size() + second.items.size());
  // Sweeps both lists by the offsets of the intermediate state. Items that overlap or touch there become one item.
  auto a = first.items.begin();
  auto b = second.items.begin();
  std::int64_t grown = 0;   // difference of the offsets in the new and the intermediate state before b
  const auto middle = [&grown](const DeltaItem& item) { return item.begin - grown; };
  while (a != first.items.end() || b != second.items.end()) {
    const auto firstA = a;
    const auto firstB = b;
    const auto grownBefore = grown;
    const bool startsWithA = b == second.items.end() || (a != first.items.end() && a->begin <= middle(*b));
    const auto low = startsWithA ? a->begin : middle(*b);
    auto high = low;
    DeltaItem item{low + grown, 0, 0, {}};
    for (;;) {
      if (a != first.items.end() && a->begin <= high) {
        high = std::max(high, a->begin + a->length);
        item.otherLength += a->otherLength - a->length;
        ++a;
      } else if (b != second.items.end() && middle(*b) <= high) {
        high = std::max(high, middle(*b) + b->otherLength);
        item.length += b->length - b->otherLength;
        grown += b->length - b->otherLength;
        ++b;
      } else {
        break;
      }
    }
    item.length += high - low;
    item.otherLength += high - low;
    if (item.length == 0 && item.otherLength == 0) continue;   // inserted and removed again
    if (whole.hasContent) {
      if (firstB == b && a - firstA == 1) {
        item.content = firstA->content;
      } else if (firstA == a && b - firstB == 1) {
        item.content = firstB->content;
      } else {
        // The old content: where first wrote, the text that it replaced; elsewhere the intermediate text that second removed.
        std::vector<Piece> pieces;
        auto at = low;
        const auto untouched = [&](std::int64_t to) {
          auto offset = grownBefore;
          for (auto it = firstB; it != b && at < to; ++it) {
            const auto begin = it->begin - offset;
            appendPart(piecesOf(*it), at - begin, to - begin, shape, breakByte, pieces);
            at = std::max(at, std::min(to, begin + it->otherLength));
            offset += it->length - it->otherLength;
          }
          at = to;
        };
        for (auto it = firstA; it != a; ++it) {
          untouched(it->begin);
          for (const auto& piece : piecesOf(*it)) pushPiece(pieces, piece, shape.maxPiece);
          at = it->begin + it->length;
        }
        untouched(high);
        item.content = contentOf(pieces);
      }
    }
    whole.items.push_back(std::move(item));
  }
  return whole;
}

std::vector<Change::Span> spansOf(const Delta& delta, const Tree& old, const Tree& now) {
  std::vector<Change::Span> spans;
  spans.reserve(delta.items.size());
  Walker before(old), after(now);
  std::int64_t grown = 0, linesGrown = 0;
  for (const auto& item : delta.items) {
    Change::Span span;
    span.begin = ByteOffset(item.begin);
    span.removed = item.otherLength;
    span.inserted = item.length;
    const auto first = after.breaksBefore(item.begin);
    span.firstLine = LineNo(first);
    span.linesInserted = item.length > 0 ? after.breaksBefore(item.begin + item.length) - first : 0;
    span.oldBegin = ByteOffset(item.begin - grown);
    span.oldLine = LineNo(first - linesGrown);
    if (item.otherLength > 0) span.linesRemoved = before.breaksBefore(span.oldEnd().value) - span.oldLine.value;
    grown += item.length - item.otherLength;
    linesGrown = span.linesGrown();
    spans.push_back(span);
  }
  return spans;
}

}   // namespace text::engine
