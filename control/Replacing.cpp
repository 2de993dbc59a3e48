#include "control/Replacing.h"

using namespace text;

namespace {

std::string withBreaks(std::string text, std::string_view newLine) {
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;) {
    const std::size_t from = at > 0 && text[at - 1] == '\r' ? at - 1 : at;
    text.replace(from, at + 1 - from, newLine);
    at = from + newLine.size();
  }
  return text;
}

}  // namespace

ReplacePlan planReplacements(const Snapshot& text, const Searcher& searcher, bool regex, std::span<const ByteRange> within,
                             std::string_view replacement, bool preserveCase, std::string_view newLine,
                             SearchControl* control) {
  ReplacePlan plan;
  const bool constant = !preserveCase && (!regex || replacement.find_first_of("$\\") == std::string_view::npos);
  const auto fail = [&plan](std::string error, bool cancelled) {
    plan.edits.clear();
    plan.error = std::move(error);
    plan.cancelled = cancelled;
    return std::move(plan);
  };
  for (const ByteRange& range : within) {
    SearchAllResult found = searcher.all(text, range, control);
    if (!found.error.empty() || found.cancelled) return fail(std::move(found.error), found.cancelled);
    for (const ByteRange& hit : found.ranges) {
      if (constant) {
        plan.edits.push_back({hit, std::string(replacement)});
        continue;
      }
      if (control && control->cancel) return fail({}, true);
      Match match{hit, {hit}};
      if (regex) {   // the groups are had by matching once more at the same place
        SearchResult again = searcher.forward(text, hit.begin, range);
        if (!again.error.empty()) return fail(std::move(again.error), false);
        if (again.match && again.match->range == hit) match = std::move(*again.match);
      }
      std::string error;
      auto fresh = searcher.replacementFor(text, match, replacement, preserveCase, &error);
      if (!fresh) return fail(std::move(error), false);
      plan.edits.push_back({hit, regex ? withBreaks(std::move(*fresh), newLine) : std::move(*fresh)});
    }
  }
  return plan;
}
