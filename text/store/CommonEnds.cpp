#include "text/store/CommonEnds.h"

#include <algorithm>

namespace text {

std::pair<std::int64_t, std::int64_t> commonEnds(const Snapshot& a, const Snapshot& b) {
  if (a.lineMode() != b.lineMode() && a.lineCount() + b.lineCount() > 2) return {0, 0};
  const auto most = std::min(a.size(), b.size()).value;
  std::int64_t head = 0, tail = 0;
  while (head < most) {
    const auto x = a.chunkAt(ByteOffset(head)), y = b.chunkAt(ByteOffset(head));
    const auto length = std::min({x.size(), y.size(), static_cast<std::size_t>(most - head)});
    const auto same = std::mismatch(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(length), y.begin()).first - x.begin();
    head += same;
    if (static_cast<std::size_t>(same) < length) break;
  }
  while (tail < most - head) {
    const auto x = a.chunkBefore(a.size() - tail), y = b.chunkBefore(b.size() - tail);
    const auto length = std::min({x.size(), y.size(), static_cast<std::size_t>(most - head - tail)});
    const auto same = std::mismatch(x.rbegin(), x.rbegin() + static_cast<std::ptrdiff_t>(length), y.rbegin()).first - x.rbegin();
    tail += same;
    if (static_cast<std::size_t>(same) < length) break;
  }
  return {head, tail};
}

bool sameBytes(const Snapshot& a, ByteRange inA, const Snapshot& b, ByteRange inB, const std::atomic<bool>* cancel) {
  std::int64_t left = inA.end - inA.begin;
  if (left != inB.end - inB.begin) return false;
  while (left > 0 && !(cancel && *cancel)) {
    const std::string_view x = a.chunkAt(inA.end - left), y = b.chunkAt(inB.end - left);
    const std::size_t run = std::min({x.size(), y.size(), static_cast<std::size_t>(left)});
    if (x.data() != y.data() && x.substr(0, run) != y.substr(0, run)) return false;   // versions of a text share most of it
    left -= static_cast<std::int64_t>(run);
  }
  return true;
}

bool sameText(const Snapshot& a, const Snapshot& b, const std::atomic<bool>* cancel) {
  return sameBytes(a, {ByteOffset(0), a.size()}, b, {ByteOffset(0), b.size()}, cancel);
}

}   // namespace text
