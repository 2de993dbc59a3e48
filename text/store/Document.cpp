#include "text/store/Document.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

#include "text/store/AddBuffer.h"
#include "text/store/CommonEnds.h"
#include "text/store/Delta.h"
#include "text/store/History.h"
#include "text/store/Marks.h"
#include "text/store/Tree.h"

namespace text {

using namespace engine;

struct Document::Impl {
  Snapshot now;
  std::uint64_t revision = 0;
  bool readOnly = false, notifying = false;
  std::function<void()> cancelledOut;
  History history;
  Marks marks;
  AddBuffer added;
  std::vector<std::weak_ptr<Listener>> listeners;

  const TreePtr& tree() const { return now.tree_; }
  std::int64_t within(ByteOffset at) const { return std::clamp<std::int64_t>(at.value, 0, tree()->bytes()); }
  bool mayChange() const { return !readOnly && !notifying; }

  bool valid(std::span<const Edit> edits) const {
    std::int64_t at = 0;
    for (const auto& edit : edits) {
      if (edit.range.begin.value < at || edit.range.end < edit.range.begin) return false;
      at = edit.range.end.value;
    }
    return at <= tree()->bytes();
  }

  // Everything that a change needs, allocated before anything is changed.
  struct Ready {
    TreePtr tree;
    Change change;
  };
  // The delta is relative to `to` and leads back to the current tree.
  Ready ready(TreePtr to, const Delta& delta) const {
    Ready result;
    result.change.spans = spansOf(delta, *tree(), *to);
    result.tree = std::move(to);
    return result;
  }
  void put(Ready& ready) noexcept {
    marks.move(ready.change);
    now.tree_ = std::move(ready.tree);
    ready.change.revision = ++revision;
  }

  template <class End>
  void joining(End end) noexcept {
    const bool before = history.modified();
    end();
    if (before == history.modified() || !cancelledOut) return;
    try {
      cancelledOut();
    } catch (...) {}
  }
  void notify(const Change& change) {
    struct Guard {
      bool& flag;
      ~Guard() { flag = false; }
    } guard{notifying};
    notifying = true;
    std::exception_ptr failure;
    const auto count = listeners.size();   // a listener added meanwhile is first called for the next change
    for (std::size_t i = 0; i < count; ++i) {
      try {
        if (const auto listener = listeners[i].lock()) (*listener)(change);
      } catch (...) {
        if (!failure) failure = std::current_exception();
      }
    }
    if (failure) std::rethrow_exception(failure);
  }
};

Document::Document() : impl_(new Impl) {}
Document::~Document() = default;
const Snapshot& Document::snapshot() const { return impl_->now; }
std::uint64_t Document::revision() const { return impl_->revision; }
bool Document::readOnly() const { return impl_->readOnly; }
void Document::setReadOnly(bool on) { impl_->readOnly = on; }

void Document::reset(Snapshot snapshot) {
  auto& d = *impl_;
  d.history.clear();
  d.marks.clear();
  d.added = AddBuffer();
  d.now = std::move(snapshot);
  Change change;
  change.revision = ++d.revision;
  change.reset = true;
  d.notify(change);
}

bool Document::apply(std::span<const Edit> edits, const SelectionState& before, Join join) {
  auto& d = *impl_;
  if (!d.mayChange() || !d.valid(edits)) return false;
  const auto old = d.tree();
  const auto shape = old->shape();
  const bool bulk = edits.size() >= shape.bulkEdits;
  const auto joined = [&](std::int64_t end, std::int64_t begin) { return bulk && begin - end <= shape.smallGap; };
  std::size_t length = 0;
  for (std::size_t i = 0; i < edits.size(); ++i) {
    length += edits[i].text.size();
    if (i > 0 && joined(edits[i - 1].range.end.value, edits[i].range.begin.value))
      length += static_cast<std::size_t>(edits[i].range.begin - edits[i - 1].range.end);
  }
  auto room = d.added.room(length, shape.addBlock);
  std::vector<Exchange> exchanges;
  std::vector<Splice> splices;   // the same for the tree, where adjacent edits may be joined
  std::vector<Piece> pieces;
  exchanges.reserve(edits.size());
  Walker walker(*old);
  std::size_t written = 0, run = 0;   // run: start of the text of the last splice
  const auto write = [&](std::string_view text) {
    if (!text.empty()) std::memcpy(room.base + room.used + written, text.data(), text.size());
    written += text.size();
  };
  const auto endRun = [&] {
    if (splices.empty()) return;
    auto& splice = splices.back();
    splice.firstPiece = pieces.size();
    cutPieces(room.block, room.base + room.used + run, written - run, shape, old->breakByte(), pieces);
    splice.pieceCount = pieces.size() - splice.firstPiece;
    run = written;
  };
  std::string gap;
  std::size_t copied = 0;
  for (const auto& edit : edits) {
    const auto begin = edit.range.begin.value, end = edit.range.end.value;
    const auto size = static_cast<std::int64_t>(edit.text.size());
    if (end - begin == size && walker.equals(begin, edit.text)) continue;
    if (!splices.empty() && joined(splices.back().end, begin)) {
      gap.clear();
      old->copy(splices.back().end, begin, gap);
      write(gap);
      copied += gap.size();
      splices.back().end = end;
    } else {
      endRun();
      splices.push_back({begin, end, 0, 0});
    }
    write(edit.text);
    exchanges.push_back({begin, end, size});
  }
  if (splices.empty()) return true;
  endRun();

  auto delta = deltaOf(old, exchanges);
  if (!delta.hasContent) delta.pinned = copied;
  auto ready = d.ready(old->spliced(splices, pieces), delta);
  auto entry = d.history.prepare(std::move(delta), before, join, old);
  d.put(ready);
  d.history.commit(std::move(entry));
  d.added.commit(std::move(room), written);
  d.notify(ready.change);
  return true;
}

bool Document::apply(Edit edit, const SelectionState& before, Join join) {
  return apply(std::span<const Edit>(&edit, 1), before, join);
}

bool Document::exchange(const Snapshot& text, const SelectionState& before) {
  auto& d = *impl_;
  if (!d.mayChange()) return false;
  const auto old = d.tree();
  const auto [head, tail] = commonEnds(d.now, text);
  DeltaItem item{head, text.tree_->bytes() - head - tail, old->bytes() - head - tail, {}};
  if (item.length == 0 && item.otherLength == 0) return true;
  Delta delta;
  delta.items.push_back(std::move(item));
  delta.hasContent = false;
  delta.other = old;
  delta.pinned = static_cast<std::size_t>(old->bytes());
  auto ready = d.ready(text.tree_, delta);
  auto entry = d.history.prepare(std::move(delta), before, Join::none, old);
  d.put(ready);
  d.history.commit(std::move(entry));
  d.notify(ready.change);
  return true;
}

void Document::setSelectionAfter(const SelectionState& after) { impl_->history.setSelectionAfter(after); }
LineBreak Document::newLine() const { return impl_->history.newLine(); }
void Document::setNewLine(LineBreak newLine) { impl_->history.setNewLine(newLine); }
void Document::breakJoin() { impl_->history.breakJoin(); }
bool Document::canUndo() const { return !impl_->readOnly && !impl_->history.groupOpen() && impl_->history.canStepBack(); }
bool Document::canRedo() const { return !impl_->readOnly && !impl_->history.groupOpen() && impl_->history.canStepOn(); }

std::optional<SelectionState> Document::undo() {
  auto& d = *impl_;
  if (!canUndo() || d.notifying) return std::nullopt;
  auto [tree, back] = revert(d.tree(), d.history.deltaBack());
  auto ready = d.ready(std::move(tree), back);
  d.put(ready);
  const auto selection = d.history.stepBack(std::move(back)).before;
  d.notify(ready.change);
  return selection;
}

std::optional<SelectionState> Document::redo() {
  auto& d = *impl_;
  if (!canRedo() || d.notifying) return std::nullopt;
  auto [tree, back] = revert(d.tree(), d.history.deltaOn());
  auto ready = d.ready(std::move(tree), back);
  d.put(ready);
  const auto selection = d.history.stepOn(std::move(back)).after;
  d.notify(ready.change);
  return selection;
}

void Document::beginGroup() { impl_->history.beginGroup(); }
void Document::endGroup() {
  impl_->joining([&] { impl_->history.endGroup(); });
}
void Document::abandonGroup() noexcept {
  try {
    rollbackGroup();
  } catch (...) {   // out of memory: nothing was undone; or it was, and a listener threw
  }
}

void Document::rollbackGroup() {
  auto& d = *impl_;
  if (d.notifying) return;
  d.history.resetNewLine();
  if (!d.history.groupHasStep()) return;
  const auto& delta = d.history.deltaBack();
  auto [tree, back] = revert(d.tree(), delta);
  auto ready = d.ready(delta.other, back);
  d.put(ready);
  d.history.forgetGroupStep();
  if (!ready.change.spans.empty()) d.notify(ready.change);
}

void Document::beginRun() { impl_->history.beginRun(); }
void Document::endRun() noexcept {
  impl_->joining([&] { impl_->history.endRun(impl_->tree()); });
}
void Document::abandonRun() noexcept {
  auto& d = *impl_;
  const bool guarded = std::exchange(d.readOnly, false);
  try {
    while (d.history.runHasSteps() && undo()) {}
    if (!d.history.runHasSteps()) {
      d.history.restoreUndone();
      while (redo()) {}
    }
  } catch (...) {   // steps that could not be rolled back stay and can be undone
  }
  d.readOnly = guarded;
}

void Document::setUndoLimit(std::size_t steps, std::size_t bytes) { impl_->history.setLimit(steps, bytes); }
bool Document::undoWasDropped() const { return impl_->history.dropped(); }

void Document::markSaved() { impl_->history.markSaved(); }
void Document::markUnsaved() { impl_->history.markUnsaved(); }
void Document::whenCancelledOut(std::function<void()> listener) { impl_->cancelledOut = std::move(listener); }
bool Document::modified() const { return impl_->history.modified(); }

MarkId Document::addMark(ByteOffset at, Bias bias) { return impl_->marks.add(impl_->within(at), bias); }
void Document::removeMark(MarkId id) { impl_->marks.remove(id); }
ByteOffset Document::markAt(MarkId id) const { return ByteOffset(impl_->marks.at(id)); }

std::shared_ptr<void> Document::subscribe(Listener listener) {
  auto& list = impl_->listeners;
  if (!impl_->notifying) std::erase_if(list, [](const auto& weak) { return weak.expired(); });
  auto held = std::make_shared<Listener>(std::move(listener));
  list.push_back(held);
  return held;
}

void Document::checkInvariants() const {
  impl_->tree()->checkInvariants();
  impl_->history.checkInvariants();
  impl_->marks.checkInvariants(impl_->tree()->bytes());
}

}   // namespace text
