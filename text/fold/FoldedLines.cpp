#include "text/fold/FoldedLines.h"

#include <algorithm>
#include <new>
#include <optional>

namespace text {

namespace {

// The fold in the new text; nothing: it opens.
std::optional<Fold> moved(const Fold& fold, const Change& change, const Snapshot& now) {
  auto span = std::partition_point(change.spans.begin(), change.spans.end(),
                                   [&](const Change::Span& s) { return s.oldLastLine() < fold.first; });
  const auto grown = [&] { return span == change.spans.begin() ? 0 : std::prev(span)->linesGrown(); };
  Fold to{fold.first + grown(), fold.last};
  for (; span != change.spans.end() && span->oldLine <= fold.last; ++span) {
    if (span->linesRemoved == 0 && span->linesInserted == 0) continue;
    if (span->oldLastLine() == fold.first) {   // the first line is where its rest is
      to.first = span->firstLine + span->linesInserted;
      if (span->linesInserted > 0 && span->end() == now.lineEnd(to.first)) return std::nullopt;
    } else if (span->oldLine <= fold.first || span->oldLastLine() > fold.last) {
      return std::nullopt;
    }
  }
  to.last = fold.last + grown();
  return to.last > to.first ? std::optional(to) : std::nullopt;
}

}   // namespace

const Fold* FoldedLines::at(LineNo first) const {
  const auto found = std::ranges::lower_bound(folds_, first, {}, &Fold::first);
  return found != folds_.end() && found->first == first ? &*found : nullptr;
}

void FoldedLines::showAll(DisplayMap& map) noexcept {
  folds_.clear();
  map.showAll();
}

void FoldedLines::hide(LineNo from, LineNo end, DisplayMap& map) const {
  LineNo done = from;   // what a fold hides of the lines above, it hides as a whole
  for (const Fold& fold : folds_) {
    if (fold.first + 1 >= end) break;
    const LineNo first = std::max(fold.first + 1, done), stop = std::min(fold.last + 1, end);
    if (first >= stop) continue;
    map.hide(first, stop);
    done = stop;
  }
}

void FoldedLines::add(std::span<const Fold> folds, DisplayMap& map) {
  try {
    std::vector<Fold> all;
    all.reserve(folds_.size() + folds.size());
    const auto less = [](const Fold& a, const Fold& b) { return a.first < b.first; };
    std::merge(folds_.begin(), folds_.end(), folds.begin(), folds.end(), std::back_inserter(all), less);
    std::size_t kept = 0;
    for (Fold fold : all) {
      fold.last = std::min(fold.last, LineNo(map.lines() - 1));
      if (fold.first.value < 0 || fold.last <= fold.first) continue;
      if (kept > 0 && all[kept - 1].first == fold.first) all[kept - 1].last = std::max(all[kept - 1].last, fold.last);
      else all[kept++] = fold;
    }
    all.resize(kept);
    folds_ = std::move(all);
    if (folds.empty()) return;
    const auto last = std::ranges::max_element(folds, {}, &Fold::last);
    hide(folds.front().first, std::min(last->last + 1, LineNo(map.lines())), map);
  } catch (const std::bad_alloc&) {
    showAll(map);
    throw;
  }
}

void FoldedLines::set(std::span<const Fold> folds, DisplayMap& map) {
  showAll(map);
  add(folds, map);
}

std::vector<Fold> FoldedLines::open(const std::function<bool(const Fold&)>& meant, DisplayMap& map) {
  std::vector<Fold> opened;
  try {
    std::ranges::copy_if(folds_, std::back_inserter(opened), meant);
    if (opened.empty()) return opened;
    std::erase_if(folds_, meant);
    const LineNo from = opened.front().first, end = std::ranges::max_element(opened, {}, &Fold::last)->last + 1;
    if (folds_.empty()) map.showAll();
    else map.show(from, end);
    hide(from, end, map);
  } catch (const std::bad_alloc&) {
    showAll(map);
    throw;
  }
  return opened;
}

void FoldedLines::onChange(const Change& change, const Snapshot& now, DisplayMap& map) noexcept {
  if (folds_.empty()) return;
  if (change.reset || !map.hidesAny()) return showAll(map);   // there may have been no memory for the map
  const auto keepsLines = [](const Change::Span& s) { return s.linesRemoved == 0 && s.linesInserted == 0; };
  if (std::ranges::all_of(change.spans, keepsLines)) return;
  LineNo from(map.lines()), end;   // what has opened
  std::size_t kept = 0;
  const LineNo above = change.spans.front().oldLine, below = change.spans.back().oldLastLine();
  const std::int64_t grown = change.spans.back().linesGrown();
  for (const Fold& fold : folds_) {
    const std::optional<Fold> to = fold.last < above    ? fold
                                   : fold.first > below ? Fold{fold.first + grown, fold.last + grown}
                                                        : moved(fold, change, now);
    if (!to) {
      // With the lines that came within it or at its end.
      const auto behind = std::partition_point(change.spans.begin(), change.spans.end(),
                                               [&](const Change::Span& s) { return s.oldLine <= fold.last; });
      from = std::min(from, change.mapLine(fold.first, now, Bias::left));
      end = std::max(end, change.mapLine(fold.last, now) + 1);
      if (behind != change.spans.begin())
        end = std::max({end, fold.last + std::prev(behind)->linesGrown() + 1,
                        std::prev(behind)->firstLine + std::prev(behind)->linesInserted + 1});
    } else if (kept > 0 && folds_[kept - 1].first == to->first) {
      folds_[kept - 1].last = std::max(folds_[kept - 1].last, to->last);
    } else {
      folds_[kept++] = *to;
    }
  }
  folds_.resize(kept);
  try {
    if (from >= end) return;
    if (folds_.empty()) return map.showAll();
    end = std::min(end, LineNo(map.lines()));
    map.show(from, end);
    hide(from, end, map);
  } catch (const std::bad_alloc&) { showAll(map); }
}

}   // namespace text
