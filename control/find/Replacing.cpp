#include "control/find/Replacing.h"

using namespace text;

namespace {
constexpr std::size_t kMostFinds = std::size_t(1) << 26;
}

ReplacePlan planReplacements(const Snapshot& text, const Finder& searcher, std::span<const ByteRange> within,
                             const Replacement& replacement, SearchControl* control) {
  ReplacePlan plan;
  for (const ByteRange& range : within) {
    SearchEnd end = searcher.each(
        text, range,
        [&](const Match& match) {
          if (plan.finds.size() == kMostFinds) {
            plan.error = "The text is found more than " + std::to_string(kMostFinds) + " times.";
            return false;
          }
          auto fresh =
              searcher.replacementFor(text, match, replacement.text, replacement.preserveCase, &plan.error, replacement.newLines);
          if (!fresh) return false;
          plan.finds.push_back(match.range);
          plan.lengths.push_back(static_cast<std::uint32_t>(fresh->size()));
          plan.texts += *fresh;
          return true;
        },
        control);
    if (plan.error.empty()) plan.error = std::move(end.error);
    plan.cancelled = end.cancelled;
    if (plan.error.empty() && !plan.cancelled) continue;
    return {{}, {}, {}, std::move(plan.error), plan.cancelled};
  }
  return plan;
}
