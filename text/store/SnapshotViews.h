// Contiguous views into a snapshot: directly into its blocks where they are long enough, else into a copy. Internal to the engine.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "text/store/Snapshot.h"

namespace text {

class SnapshotViews {
 public:
  // `text` must outlive this object and every view.
  explicit SnapshotViews(const Snapshot& text) : text_(text) {}

  // The bytes from `from` on: at least `need` bytes or all up to `limit`, never more than that. Valid until the next call.
  std::string_view ahead(ByteOffset from, std::int64_t need, ByteOffset limit) {
    if (from >= limit) return {};
    const auto chunk = text_.chunkAt(from).substr(0, static_cast<std::size_t>(limit - from));
    const auto wanted = std::min(need, limit - from);
    if (static_cast<std::int64_t>(chunk.size()) >= wanted) return chunk;
    return copy(from, from + wanted);
  }
  // The same for the bytes that end at `end`.
  std::string_view behind(ByteOffset end, std::int64_t need, ByteOffset limit) {
    if (end <= limit) return {};
    auto chunk = text_.chunkBefore(end);
    if (static_cast<std::int64_t>(chunk.size()) > end - limit)
      chunk.remove_prefix(chunk.size() - static_cast<std::size_t>(end - limit));
    const auto wanted = std::min(need, end - limit);
    if (static_cast<std::int64_t>(chunk.size()) >= wanted) return chunk;
    return copy(end - wanted, end);
  }

 private:
  std::string_view copy(ByteOffset from, ByteOffset to) {
    buffer_.clear();
    buffer_.reserve(static_cast<std::size_t>(to - from));
    for (ByteOffset at = from; at < to;) {
      const auto part = text_.chunkAt(at).substr(0, static_cast<std::size_t>(to - at));
      buffer_ += part;
      at += static_cast<std::int64_t>(part.size());
    }
    return buffer_;
  }

  const Snapshot& text_;
  std::string buffer_;
};

}   // namespace text
