#include "text/store/Snapshot.h"

#include <algorithm>
#include <cassert>

#include "text/store/Tree.h"

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

Snapshot::Snapshot() {
  static const TreePtr empty = std::make_shared<const Tree>(LineMode::lf, TreeShape(), std::vector<engine::Piece>());
  tree_ = empty;
}
Snapshot::Snapshot(std::string bytes, LineMode mode) {
  SnapshotBuilder builder(mode);
  builder.append(std::move(bytes));
  tree_ = builder.finish().tree_;
}
Snapshot::Snapshot(std::shared_ptr<const Tree> tree) : tree_(std::move(tree)) {}

ByteOffset Snapshot::size() const { return ByteOffset(tree_->bytes()); }
LineMode Snapshot::lineMode() const { return tree_->mode(); }
std::int64_t Snapshot::lineCount() const { return tree_->breaks() + 1; }

// A place that does not exist is a bug of the caller: debug builds stop there. A release does not crash: that would lose the user's
// text.
ByteOffset Snapshot::lineStart(LineNo line) const {
  assert(line.value >= 0 && line.value < lineCount());
  if (line.value > tree_->breaks()) return size();
  return ByteOffset(line.value <= 0 ? 0 : tree_->behindBreak(line.value));
}
ByteOffset Snapshot::lineEndWithBreak(LineNo line) const { return line.value < tree_->breaks() ? lineStart(line + 1) : size(); }
ByteOffset Snapshot::lineEnd(LineNo line) const {
  assert(line.value >= 0 && line.value < lineCount());
  const auto end = lineEndWithBreak(line);
  if (line.value >= tree_->breaks()) return end;
  if (tree_->mode() == LineMode::cr || end.value < 2) return end - 1;
  // The byte before the break is either a break itself or a byte of this line: so a '\r' belongs to this break.
  return at(end - 2) == '\r' ? end - 2 : end - 1;
}
LineBreak Snapshot::lineBreak(LineNo line) const {
  if (line.value >= tree_->breaks()) return LineBreak::none;
  if (tree_->mode() == LineMode::cr) return LineBreak::cr;
  const auto end = lineEndWithBreak(line);
  return end.value >= 2 && at(end - 2) == '\r' ? LineBreak::crlf : LineBreak::lf;   // see lineEnd
}
LineNo Snapshot::lineAt(ByteOffset offset) const { return LineNo(tree_->breaksBefore(std::max<std::int64_t>(offset.value, 0))); }

std::string Snapshot::bytes(ByteRange range) const {
  const auto begin = std::clamp<std::int64_t>(range.begin.value, 0, tree_->bytes());
  std::string copy;
  tree_->copy(begin, std::clamp(range.end.value, begin, tree_->bytes()), copy);
  return copy;
}
std::string Snapshot::line(LineNo line) const { return bytes({lineStart(line), lineEnd(line)}); }
char Snapshot::at(ByteOffset offset) const {
  assert(offset.value >= 0 && offset < size());
  if (offset.value < 0 || offset >= size()) return '\0';
  const auto place = tree_->locate(offset.value);
  return place.piece->data[offset.value - place.start];
}
std::string_view Snapshot::chunkAt(ByteOffset offset) const { return tree_->runFrom(std::max<std::int64_t>(offset.value, 0)); }
std::string_view Snapshot::chunkBefore(ByteOffset offset) const { return tree_->runBefore(std::min(offset.value, tree_->bytes())); }
bool Snapshot::sameAs(const Snapshot& other) const { return tree_ == other.tree_; }
void Snapshot::checkInvariants() const { tree_->checkInvariants(); }

struct SnapshotBuilder::State {
  LineMode mode;
  TreeShape shape;
  std::vector<engine::Piece> pieces;
};
SnapshotBuilder::SnapshotBuilder(LineMode mode) : SnapshotBuilder(mode, TreeShape()) {}
SnapshotBuilder::SnapshotBuilder(LineMode mode, const TreeShape& shape) : state_(new State{mode, shape, {}}) {}
SnapshotBuilder::~SnapshotBuilder() = default;

void SnapshotBuilder::append(std::shared_ptr<const char[]> bytes, std::size_t length) {
  const char* data = bytes.get();
  const auto block = engine::Block::make(std::move(bytes));
  engine::cutPieces(block, data, length, state_->shape, state_->mode == LineMode::lf ? '\n' : '\r', state_->pieces);
}
void SnapshotBuilder::append(std::string bytes) {
  const auto owner = std::make_shared<const std::string>(std::move(bytes));
  append(std::shared_ptr<const char[]>(owner, owner->data()), owner->size());
}
Snapshot SnapshotBuilder::finish() {
  auto tree = std::make_shared<const Tree>(state_->mode, state_->shape, std::move(state_->pieces));
  state_->pieces.clear();
  return Snapshot(std::move(tree));
}

}   // namespace text
