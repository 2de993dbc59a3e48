#include "text/store/History.h"

#include <iterator>
#include <new>

namespace text::engine {

namespace {

// Whether `next` continues the run `last`: each edit starts where the previous one ended (typing), or removes text next to it
// (deleting; direction then says on which side).
bool continues(const Delta& last, const Delta& next, Join join, std::int8_t& direction) {
  if (last.hasContent != next.hasContent || last.items.size() != next.items.size()) return false;
  std::int64_t grown = 0;
  std::int8_t side = direction;
  for (std::size_t i = 0; i < last.items.size(); ++i) {
    const auto &a = last.items[i], &b = next.items[i];
    const auto begin = b.begin - grown, end = begin + b.otherLength;
    grown += b.length - b.otherLength;
    if (join == Join::typing) {
      if (begin != a.begin + a.length) return false;
      continue;
    }
    if (a.length > 0 || b.length > 0) return false;
    const std::int8_t here = begin == a.begin ? 1 : end == a.begin ? -1 : 0;
    if (here == 0 || (side != 0 && side != here)) return false;
    side = here;
  }
  direction = side;
  return true;
}

}   // namespace

History::Entry History::prepare(Delta delta, const SelectionState& before, Join join, const TreePtr& old) {
  const auto& shape = old->shape();
  const char breakByte = old->breakByte();
  Entry entry;
  if (groupHasStep_) {
    // Combines deltas of similar size, so that a group of n changes costs n log n and holds few deltas.
    auto& deltas = done_.back().deltas;
    delta.other = old;
    while (entry.replaced < deltas.size()) {
      const auto& last = deltas[deltas.size() - 1 - entry.replaced];
      if (last.items.size() > 2 * delta.items.size()) break;
      delta = compose(last, delta, shape, breakByte);
      ++entry.replaced;
    }
    entry.deltas.push_back(std::move(delta));
    deltas.reserve(deltas.size() + 1);
    return entry;
  }
  if (depth_ == 0 && !run_ && joinable_ && join != Join::none && !done_.empty() && state() != saved_) {
    auto& last = done_.back();
    entry.direction = last.direction;
    if (last.join == join && last.deltas.size() == 1 && continues(last.deltas[0], delta, join, entry.direction)) {
      entry.deltas.push_back(compose(last.deltas[0], delta, shape, breakByte));
      entry.replaced = 1;
      return entry;
    }
  }
  Step step;
  step.before = before;
  const auto& item = delta.items.back();
  step.after.anchor = step.after.caret = ByteOffset(item.begin + item.length);
  step.join = depth_ > 0 ? Join::none : join;
  if (depth_ > 0) delta.other = old;
  step.deltas.push_back(std::move(delta));
  entry.fresh.push_back(std::move(step));
  return entry;
}

void History::forgetUndone() noexcept {
  for (const auto& step : undone_) cost_ -= step.cost;
  if (run_) {
    run_->dropped.splice(run_->dropped.end(), undone_, std::prev(undone_.end(), std::ptrdiff_t(run_->undone)), undone_.end());
    run_->undone = 0;
  }
  undone_.clear();
}

void History::restoreUndone() noexcept {
  forgetUndone();
  if (!run_) return;
  undone_.swap(run_->dropped);
  for (const auto& step : undone_) cost_ += step.cost;
  run_->undone = undone_.size();
}

void History::commit(Entry entry) noexcept {
  forgetUndone();
  if (!entry.fresh.empty()) {
    done_.splice(done_.end(), entry.fresh);
    groupHasStep_ = depth_ > 0;
  } else {
    auto& deltas = done_.back().deltas;
    deltas.resize(deltas.size() - entry.replaced);
    deltas.push_back(std::move(entry.deltas[0]));   // prepare() has reserved the space
    done_.back().direction = entry.direction;
    const auto& last = deltas.back().items;
    if (!last.empty())
      done_.back().after = {ByteOffset(last.back().begin + last.back().length), ByteOffset(last.back().begin + last.back().length)};
  }
  done_.back().state = ++lastState_;
  joinable_ = true;
  if (depth_ == 0) {
    weigh(done_.back());
    trim();
  }
}

const Delta& History::single(Step& step) {
  while (step.deltas.size() > 1) {
    const auto& last = step.deltas.back();
    const auto& before = step.deltas[step.deltas.size() - 2];
    auto one = compose(before, last, before.other->shape(), before.other->breakByte());
    step.deltas.pop_back();
    step.deltas.back() = std::move(one);
  }
  return step.deltas.front();
}

const History::Step& History::shift(std::list<Step>& from, std::list<Step>& to, Delta back) noexcept {
  joinable_ = false;
  to.splice(to.end(), from, std::prev(from.end()));
  auto& step = to.back();
  step.deltas.front() = std::move(back);
  weigh(step);
  if (run_ && &from == &done_ && done_.size() < run_->base) {
    --run_->base;
    ++run_->undone;
  } else if (run_ && &from == &undone_ && run_->undone > 0) {
    ++run_->base;
    --run_->undone;
  }
  return step;
}

const History::Step& History::stepBack(Delta back) noexcept {
  const Step& step = shift(done_, undone_, std::move(back));
  if (step.newLineBefore != step.newLineAfter) newLine_ = step.newLineBefore;
  return step;
}

const History::Step& History::stepOn(Delta back) noexcept {
  const Step& step = shift(undone_, done_, std::move(back));
  if (step.newLineBefore != step.newLineAfter) newLine_ = step.newLineAfter;
  return step;
}

void History::beginGroup() {
  if (depth_++ == 0) newLineAtGroup_ = newLine_;
}

void History::beginRun() {
  if (!run_) run_ = Run{done_.size(), 0, {}};
  joinable_ = false;
}

void History::endRun(const TreePtr& now) noexcept {
  if (!run_) return;
  const std::size_t base = run_->base;
  run_.reset();
  joinable_ = false;
  if (!groupHasStep_ && done_.size() > base + 1) {
    try {
      mergeSteps(base, now);
    } catch (const std::bad_alloc&) {
      // They stay separate steps.
    }
  }
  trim();
  // Steps undone by the run were not counted. Together with the done steps they stay within the limit, so that redo does too.
  while (!undone_.empty() && done_.size() + undone_.size() > stepLimit_) {
    cost_ -= undone_.front().cost;
    undone_.pop_front();
  }
}

// Joins all done steps except the `base` oldest. Combines deltas of similar size, as in a group.
void History::mergeSteps(std::size_t base, const TreePtr& now) {
  const auto begin = std::next(done_.begin(), static_cast<std::ptrdiff_t>(base));
  const auto compose2 = [&](Delta& first, const Delta& second) {
    // If the second step does not hold the replaced text, the first must lead to its whole tree.
    if (first.hasContent && !second.hasContent && !first.other) first.other = revert(second.other, first).tree;
    return compose(first, second, now->shape(), now->breakByte());
  };
  std::vector<Delta> merged;
  const Step* firstBreaks = nullptr;
  const Step* lastBreaks = nullptr;   // that changed the line ends
  for (auto step = begin; step != done_.end(); ++step) {
    if (step->newLineBefore != step->newLineAfter) {
      if (!firstBreaks) firstBreaks = &*step;
      lastBreaks = &*step;
    }
    Delta next = single(*step);
    while (!merged.empty() && merged.back().items.size() <= 2 * next.items.size()) {
      next = compose2(merged.back(), next);
      merged.pop_back();
    }
    merged.push_back(std::move(next));
  }
  while (merged.size() > 1) {
    Delta next = std::move(merged.back());
    merged.pop_back();
    merged.back() = compose2(merged.back(), next);
  }
  if (merged.front().hasContent) merged.front().other.reset();

  Step& last = done_.back();
  last.before = begin->before;
  if (firstBreaks) {
    last.newLineAfter = lastBreaks->newLineAfter;
    last.newLineBefore = firstBreaks->newLineBefore;
  }
  last.join = Join::none;
  last.direction = 0;
  std::swap(last.deltas, merged);
  for (auto step = begin; step != std::prev(done_.end());) {
    cost_ -= step->cost;
    step = done_.erase(step);
  }
  weigh(last);
  if (!last.deltas.front().items.empty()) return;
  const bool saved = last.state == saved_;
  cost_ -= last.cost;   // the changes cancelled each other
  done_.pop_back();
  if (saved) saved_ = state();
}

void History::endGroup() noexcept {
  if (depth_ == 0 || --depth_ > 0) return;
  joinable_ = false;
  if (!groupHasStep_) return;   // without a new step no old one is dropped
  groupHasStep_ = false;
  auto& step = done_.back();
  step.newLineBefore = newLineAtGroup_;
  step.newLineAfter = newLine_;
  try {
    single(step);
    auto& delta = step.deltas.front();
    if (delta.hasContent) delta.other.reset();
    delta.items.shrink_to_fit();
  } catch (const std::bad_alloc&) {
    // The deltas stay separate until the step is undone.
  }
  if (step.deltas.size() == 1 && step.deltas.front().items.empty()) {
    forgetGroupStep();   // the changes cancelled each other
  } else {
    weigh(step);
  }
  trim();
}

void History::forgetGroupStep() noexcept {
  cost_ -= done_.back().cost;
  done_.pop_back();
  groupHasStep_ = false;
  joinable_ = false;
}

void History::setSelectionAfter(const SelectionState& after) {
  if (!done_.empty() && (depth_ == 0 || groupHasStep_)) done_.back().after = after;
}

void History::setLimit(std::size_t steps, std::size_t bytes) {
  stepLimit_ = steps;
  byteLimit_ = bytes;
  trim();
}

void History::weigh(Step& step) noexcept {
  cost_ -= step.cost;
  step.cost = sizeof(Step);
  for (const auto& delta : step.deltas) step.cost += delta.cost();
  cost_ += step.cost;
}

void History::trim() noexcept {
  if (groupHasStep_ || run_) return;   // the open step is the newest, and its size is not known yet
  while (!done_.empty() && (done_.size() > stepLimit_ || (cost_ > byteLimit_ && done_.size() > 1))) {
    bottom_ = done_.front().state;
    cost_ -= done_.front().cost;
    done_.pop_front();
    dropped_ = true;
  }
}

void History::clear() noexcept {
  done_.clear();
  undone_.clear();
  cost_ = 0;
  bottom_ = saved_ = ++lastState_;
  newLine_ = newLineAtGroup_ = LineBreak::none;
  groupHasStep_ = joinable_ = unsaved_ = dropped_ = false;
  if (run_) run_ = Run{};
}

void History::checkInvariants() const {
  std::size_t cost = 0;
  for (const auto* list : {&done_, &undone_}) {
    for (const auto& step : *list) {
      cost += step.cost;
      require(!step.deltas.empty(), "a step has a delta");
      const bool open = groupHasStep_ && &step == &done_.back();
      require(open || step.deltas.size() > 1 || step.deltas[0].hasContent != static_cast<bool>(step.deltas[0].other),
              "a closed step keeps either its content or the other tree");
      for (const auto& delta : step.deltas) {
        require(delta.hasContent || delta.other, "a delta leads to the other state");
        std::int64_t end = 0;
        for (const auto& item : delta.items) {
          require(item.begin >= end && item.length >= 0 && item.otherLength >= 0, "items of a delta ascend");
          require(item.length + item.otherLength > 0, "an item of a delta is not empty");
          end = item.begin + item.length;
          if (!delta.hasContent) continue;
          std::int64_t bytes = 0;
          for (std::uint32_t i = 0; item.content && i < item.content->count; ++i) bytes += item.content->pieces()[i].length;
          require(bytes == item.otherLength, "an item of a delta carries the other side");
        }
      }
    }
  }
  require(cost == cost_, "the cost of all steps");
  require(!run_ || (run_->base <= done_.size() && run_->undone <= undone_.size()), "a run knows what is older than it");
  require(groupHasStep_ || run_ || done_.size() <= stepLimit_, "steps within the limit");
  require(!groupHasStep_ || (depth_ > 0 && !done_.empty()), "an open step belongs to an open group");
}

}   // namespace text::engine
