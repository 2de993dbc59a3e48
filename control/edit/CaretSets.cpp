#include "control/edit/Carets.h"

using text::SelectionState;

namespace {
constexpr std::size_t kMostKept = 2000000;   // carets of all steps: 48 MB; the oldest sets go first
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
