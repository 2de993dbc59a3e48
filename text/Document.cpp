#include "text/Document.h"

#include <algorithm>
#include <cstdlib>
#include <map>

namespace text {

struct Document::Impl {
  Snapshot now;
  std::uint64_t revision = 0, nextStep = 1, savedStep = 0;
  bool readOnly = false, forcedUnsaved = false, joinable = false;
  struct Step {
    std::uint64_t id;
    Snapshot before, after;
    std::vector<Change::Span> spans;
    SelectionState selectionBefore, selectionAfter;
    Join join = Join::none;
  };
  std::vector<Step> done, undone;
  int depth = 0;
  std::optional<Step> group;
  std::map<MarkId, std::pair<std::int64_t, Gravity>> marks;
  MarkId nextMark = 1;
  std::vector<std::weak_ptr<Listener>> listeners;

  void notify(const Change& change) {
    auto copy = listeners;
    for (auto& weak : copy)
      if (auto l = weak.lock()) (*l)(change);
  }
  std::uint64_t top() const { return done.empty() ? 0 : done.back().id; }
  void exchange(Snapshot to, bool reset) {   // one span from the first to the last difference
    const auto a = now.bytes({ByteOffset(0), now.size()}), b = to.bytes({ByteOffset(0), to.size()});
    std::size_t p = 0, q = 0;
    while (p < a.size() && p < b.size() && a[p] == b[p]) ++p;
    while (q < a.size() - p && q < b.size() - p && a[a.size() - 1 - q] == b[b.size() - 1 - q]) ++q;
    Change change;
    Change::Span s;
    s.begin = ByteOffset(static_cast<std::int64_t>(p));
    s.removed = static_cast<std::int64_t>(a.size() - p - q);
    s.inserted = static_cast<std::int64_t>(b.size() - p - q);
    s.firstLine = to.lineAt(s.begin);
    s.linesRemoved = now.lineAt(s.begin + s.removed) - now.lineAt(s.begin);
    s.linesInserted = to.lineAt(s.begin + s.inserted) - s.firstLine;
    for (auto& [id, m] : marks) {
      if (m.first > s.begin.value || (m.first == s.begin.value && m.second == Gravity::right)) {
        if (m.first >= s.begin.value + s.removed) m.first += s.inserted - s.removed;
        else m.first = s.begin.value + (m.second == Gravity::right ? s.inserted : 0);
      }
    }
    now = std::move(to);
    change.revision = ++revision;
    change.reset = reset;
    if (!reset) change.spans.push_back(s);
    notify(change);
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
  d.done.clear();
  d.undone.clear();
  d.group.reset();
  d.marks.clear();
  d.savedStep = 0;
  d.forcedUnsaved = false;
  d.exchange(std::move(snapshot), true);
}

bool Document::apply(std::span<const Edit> edits, const SelectionState& before, Join join) {
  auto& d = *impl_;
  if (d.readOnly) return false;
  const auto old = d.now.bytes({ByteOffset(0), d.now.size()});
  std::string fresh;
  std::size_t at = 0;
  for (const auto& e : edits) {
    fresh.append(old, at, static_cast<std::size_t>(e.range.begin.value) - at);
    fresh += e.text;
    at = static_cast<std::size_t>(e.range.end.value);
  }
  fresh.append(old, at, std::string::npos);
  if (fresh == old) return true;
  const Snapshot previous = d.now;
  const Snapshot after(std::move(fresh), d.now.lineMode());
  d.undone.clear();
  if (d.depth > 0) {
    if (!d.group) d.group = Impl::Step{d.nextStep++, previous, after, {}, before, before, Join::none};
    d.group->after = after;
  } else if (join != Join::none && d.joinable && !d.done.empty() && d.done.back().join == join && d.top() != d.savedStep) {
    d.done.back().after = after;
  } else {
    d.done.push_back({d.nextStep++, previous, after, {}, before, before, join});
  }
  d.joinable = true;
  d.exchange(after, false);
  return true;
}
bool Document::apply(Edit edit, const SelectionState& before, Join join) { return apply(std::span<const Edit>(&edit, 1), before, join); }
void Document::setSelectionAfter(const SelectionState& after) {
  if (impl_->group) impl_->group->selectionAfter = after;
  else if (!impl_->done.empty()) impl_->done.back().selectionAfter = after;
}
void Document::breakJoin() { impl_->joinable = false; }
bool Document::canUndo() const { return !impl_->done.empty() || impl_->group; }
bool Document::canRedo() const { return !impl_->undone.empty(); }
std::optional<SelectionState> Document::undo() {
  auto& d = *impl_;
  if (d.readOnly || d.depth > 0 || d.done.empty()) return std::nullopt;
  auto step = std::move(d.done.back());
  d.done.pop_back();
  const auto selection = step.selectionBefore;
  const auto to = step.before;
  d.undone.push_back(std::move(step));
  d.joinable = false;
  d.exchange(to, false);
  return selection;
}
std::optional<SelectionState> Document::redo() {
  auto& d = *impl_;
  if (d.readOnly || d.depth > 0 || d.undone.empty()) return std::nullopt;
  auto step = std::move(d.undone.back());
  d.undone.pop_back();
  const auto selection = step.selectionAfter;
  const auto to = step.after;
  d.done.push_back(std::move(step));
  d.joinable = false;
  d.exchange(to, false);
  return selection;
}
void Document::beginGroup() { ++impl_->depth; }
void Document::endGroup() {
  auto& d = *impl_;
  if (--d.depth == 0 && d.group) {
    d.done.push_back(std::move(*d.group));
    d.group.reset();
    d.joinable = false;
  }
}
void Document::rollbackGroup() {
  auto& d = *impl_;
  if (!d.group) return;
  const auto to = d.group->before;
  d.group.reset();
  d.exchange(to, false);
}
void Document::setUndoLimit(std::size_t, std::size_t) {}
bool Document::undoWasDropped() const { return false; }
void Document::markSaved() { impl_->savedStep = impl_->top(); impl_->forcedUnsaved = false; }
void Document::markUnsaved() { impl_->forcedUnsaved = true; }
bool Document::modified() const { return impl_->forcedUnsaved || impl_->group || impl_->top() != impl_->savedStep; }
MarkId Document::addMark(ByteOffset at, Gravity gravity) { impl_->marks[impl_->nextMark] = {at.value, gravity}; return impl_->nextMark++; }
void Document::removeMark(MarkId id) { impl_->marks.erase(id); }
ByteOffset Document::markAt(MarkId id) const { return ByteOffset(impl_->marks.at(id).first); }
void Document::moveMark(MarkId id, ByteOffset at) { impl_->marks.at(id).first = at.value; }
std::shared_ptr<void> Document::subscribe(Listener listener) {
  auto held = std::make_shared<Listener>(std::move(listener));
  impl_->listeners.push_back(held);
  return held;
}
void Document::checkInvariants() const {}

}  // namespace text
