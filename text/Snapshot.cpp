#include "text/Snapshot.h"

#include <algorithm>
#include <vector>

namespace text {

std::string_view breakBytes(LineBreak lineBreak) {
  switch (lineBreak) {
    case LineBreak::lf: return "\n";
    case LineBreak::crlf: return "\r\n";
    case LineBreak::cr: return "\r";
    case LineBreak::none: break;
  }
  return {};
}

class Tree {
 public:
  Tree(std::string b, LineMode m) : bytes(std::move(b)), mode(m) {
    starts.push_back(0);
    const char breaker = mode == LineMode::lf ? '\n' : '\r';
    for (std::size_t i = 0; i < bytes.size(); ++i)
      if (bytes[i] == breaker) starts.push_back(static_cast<std::int64_t>(i) + 1);
  }
  std::string bytes;
  LineMode mode;
  std::vector<std::int64_t> starts;
};

Snapshot::Snapshot() : Snapshot(std::string()) {}
Snapshot::Snapshot(std::string bytes, LineMode mode) : tree_(std::make_shared<Tree>(std::move(bytes), mode)) {}
Snapshot::Snapshot(std::shared_ptr<const Tree> tree) : tree_(std::move(tree)) {}

ByteOffset Snapshot::size() const { return ByteOffset(static_cast<std::int64_t>(tree_->bytes.size())); }
LineMode Snapshot::lineMode() const { return tree_->mode; }
std::int64_t Snapshot::lineCount() const { return static_cast<std::int64_t>(tree_->starts.size()); }
ByteOffset Snapshot::lineStart(LineNo line) const { return ByteOffset(tree_->starts[static_cast<std::size_t>(line.value)]); }
ByteOffset Snapshot::lineEnd(LineNo line) const {
  return lineEndWithBreak(line) - static_cast<std::int64_t>(breakBytes(lineBreak(line)).size());
}
ByteOffset Snapshot::lineEndWithBreak(LineNo line) const {
  return line.value + 1 < lineCount() ? lineStart(line + 1) : size();
}
LineBreak Snapshot::lineBreak(LineNo line) const {
  if (line.value + 1 >= lineCount()) return LineBreak::none;
  if (tree_->mode == LineMode::cr) return LineBreak::cr;
  const auto end = lineStart(line + 1);
  return end - lineStart(line) > 1 && at(end - 2) == '\r' ? LineBreak::crlf : LineBreak::lf;
}
LineNo Snapshot::lineAt(ByteOffset offset) const {
  auto it = std::upper_bound(tree_->starts.begin(), tree_->starts.end(), offset.value);
  return LineNo(it - tree_->starts.begin() - 1);
}
std::string Snapshot::bytes(ByteRange range) const {
  const auto b = std::clamp<std::int64_t>(range.begin.value, 0, size().value);
  const auto e = std::clamp<std::int64_t>(range.end.value, b, size().value);
  return tree_->bytes.substr(static_cast<std::size_t>(b), static_cast<std::size_t>(e - b));
}
std::string Snapshot::line(LineNo line) const { return bytes({lineStart(line), lineEnd(line)}); }
char Snapshot::at(ByteOffset offset) const { return tree_->bytes[static_cast<std::size_t>(offset.value)]; }
std::string_view Snapshot::chunkAt(ByteOffset offset) const {
  return std::string_view(tree_->bytes).substr(static_cast<std::size_t>(offset.value));
}
std::string_view Snapshot::chunkBefore(ByteOffset offset) const {
  return std::string_view(tree_->bytes).substr(0, static_cast<std::size_t>(offset.value));
}
bool Snapshot::sameAs(const Snapshot& other) const { return tree_ == other.tree_; }

struct SnapshotBuilder::State {
  std::string bytes;
  LineMode mode;
};
SnapshotBuilder::SnapshotBuilder(LineMode mode) : state_(new State{{}, mode}) {}
SnapshotBuilder::~SnapshotBuilder() = default;
void SnapshotBuilder::append(std::shared_ptr<const char[]> bytes, std::size_t length) { state_->bytes.append(bytes.get(), length); }
void SnapshotBuilder::append(std::string bytes) { state_->bytes += bytes; }
Snapshot SnapshotBuilder::finish() { return Snapshot(std::move(state_->bytes), state_->mode); }

}  // namespace text
