// Carets as they were: before and behind the undo steps, and before their own last changes.
#include <algorithm>
#include <utility>

#include "control/edit/Carets.h"
#include "control/edit/EditorAccess.h"

using text::SelectionState;

namespace {
constexpr std::size_t kMostKept = 2000000;   // carets of all steps: 48 MB; the oldest sets go first
constexpr std::size_t kMostBefore = 100, kMostCaretsBefore = 1000000;
}

CaretSets& CaretSets::of(TextModel& model) {
  if (auto* sets = model.findChild<CaretSets*>(QString(), Qt::FindDirectChildrenOnly)) return *sets;
  return *new CaretSets(&model);
}

SelectionState CaretSets::keep(const SelectionState& main, std::span<const Caret> others) {
  if (others.empty() || main.column) return main;
  SelectionState kept = main;
  // The state behind a step is that before the next one.
  const auto last = sets_.rbegin();
  if (last == sets_.rend() || !std::ranges::equal(last->second, others)) {
    const std::int64_t number = last == sets_.rend() ? 1 : last->first + 1;
    sets_.emplace_hint(sets_.end(), number, std::vector<Caret>(others.begin(), others.end()));
    size_ += others.size();
    while (size_ > kMostKept && sets_.size() > 2) {
      size_ -= sets_.begin()->second.size();
      sets_.erase(sets_.begin());
    }
  }
  kept.anchorVirtual = sets_.rbegin()->first;
  return kept;
}

const std::vector<Caret>* CaretSets::find(const SelectionState& kept, bool* known) const {
  *known = true;
  if (kept.column || kept.anchorVirtual == 0) return nullptr;
  const auto set = sets_.find(kept.anchorVirtual);
  *known = set != sets_.end();
  return *known ? &set->second : nullptr;
}

namespace carets {

void keepBefore(Editor& e) {
  auto& impl = EditorAccess::impl(e);
  auto& before = impl.caretsBefore;
  if (impl.run || impl.stepBefore) return;   // a command that runs at each of them
  if (std::exchange(impl.caretsBeforeIn, e.document().revision()) != e.document().revision()) before.clear();
  if (!before.empty() && before.back().main == e.selection() && before.back().others == impl.others) return;
  before.push_back({e.selection(), impl.goal, impl.others});
  std::size_t all = 0, from = before.size();
  while (from > 0 && before.size() - from < kMostBefore && (all += before[from - 1].others.size()) <= kMostCaretsBefore) --from;
  before.erase(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(from));
}

bool takeBack(Editor& e) {
  auto& impl = EditorAccess::impl(e);
  if (impl.caretsBeforeIn != e.document().revision()) impl.caretsBefore.clear();
  while (!impl.caretsBefore.empty()) {
    auto was = std::move(impl.caretsBefore.back());
    impl.caretsBefore.pop_back();
    if (was.main == e.selection() && was.others == impl.others) continue;
    e.document().breakJoin();
    impl.autoBlanks.reset();
    impl.others = std::move(was.others);
    impl.goal = was.goal;
    EditorAccess::setSelection(e, was.main);
    if (e.onSelectionChanged) e.onSelectionChanged();
    return true;
  }
  return false;
}

}   // namespace carets
