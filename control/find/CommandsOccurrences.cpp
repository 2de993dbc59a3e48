// Carets at the occurrences of a text.
#include <QCoreApplication>
#include <algorithm>

#include "control/commands/CommandFunctions.h"
#include "control/edit/EditorAccess.h"
#include "control/find/Finding.h"
#include "text/line/WordNear.h"

using namespace text;

namespace {

QString said(const char* text) { return QCoreApplication::translate("Find", text); }

// Of the text of the selection, or of a whole word if it is one. Letter case counts: names are renamed this way.
std::unique_ptr<Finder> finderOf(Editor& e, ByteRange range) {
  if (range.empty() || range.length() > kLongestFind) return nullptr;
  return std::make_unique<Finder>(e.snapshot().bytes(range),
                                  SearchOptions{.matchCase = true, .wholeWord = wordNear(e.snapshot(), range.begin) == range});
}

// Selects the word at each caret that has no selection. False: none had to be.
bool selectWords(Editor& e) {
  std::size_t main = 0;
  std::vector<Caret> list = carets::all(e, &main);
  bool any = false;
  for (Caret& caret : list) {
    if (!caret.empty()) continue;
    const ByteRange word = wordNear(e.snapshot(), caret.caret);
    any = any || !word.empty();
    caret = {word.empty() ? caret.anchor : word.begin, word.empty() ? caret.caret : word.end};
  }
  if (any) carets::set(e, std::move(list), main);
  return any;
}

bool isCaret(const std::vector<Caret>& list, ByteRange range) {
  const auto caret = std::ranges::lower_bound(list, range.begin, {}, &Caret::begin);
  return caret != list.end() && caret->begin() == range.begin && caret->end() == range.end;
}

}   // namespace

void selectFinds(Editor& e, std::span<const ByteRange> finds) {
  if (finds.empty() || !commandFunctions::mayHaveCarets(e, finds.size())) return;
  std::vector<Caret> list;
  list.reserve(finds.size());
  for (const ByteRange& find : finds) list.push_back({find.begin, find.end});
  // The main one stays near what is shown.
  const auto near = std::ranges::lower_bound(list, e.selectedRange().begin, {}, &Caret::begin);
  const auto main = static_cast<std::size_t>(std::min(near, std::prev(list.end())) - list.begin());
  carets::set(e, std::move(list), main);
}

namespace commandFunctions {

void caretAddNext(Editor& e, const QVariant&) {
  if (e.selection().column) return caretsInSelection(e, {});
  if (!e.hasSelection() && selectWords(e)) return;
  const auto finder = finderOf(e, e.selectedRange());
  if (!finder) return e.host().note(said("There is no word or short selection to look for"));
  const Snapshot text = e.snapshot();
  const std::vector<Caret> list = carets::all(e);
  const ByteRange whole{ByteOffset(0), text.size()}, from = e.selectedRange();
  FindOutcome outcome;
  bool wrapped = false, again = false;
  e.host().work(whole.length(), [&](SearchControl& control) {
    // Each that is taken already is passed over; back at the first one there are no others.
    std::size_t passed = 0;
    for (ByteRange at = from;; at = *outcome.found) {
      outcome = findNear(text, *finder, at, std::span(&whole, 1), true, &control);
      wrapped = wrapped || outcome.wrapped;
      if (!outcome.found || !(again = isCaret(list, *outcome.found)) || ++passed > list.size()) return;
    }
  });
  if (outcome.cancelled || !outcome.error.empty()) return e.host().note(noteOf(outcome, {}, true));
  if (!outcome.found || again) return e.host().note(said("There is no further occurrence"));
  if (!mayHaveCarets(e, list.size() + 1)) return;
  outcome.wrapped = wrapped;
  carets::add(e, {outcome.found->begin, outcome.found->end});
  e.host().note(noteOf(outcome, {}, true));
}

void caretAddAll(Editor& e, const QVariant&) {
  if (e.selection().column) return caretsInSelection(e, {});
  ByteRange range = e.selectedRange();
  if (range.empty()) range = wordNear(e.snapshot(), e.selection().caret);
  const auto finder = finderOf(e, range);
  if (!finder) return e.host().note(said("There is no word or short selection to look for"));
  selectAllFinds(e, *finder);
}

}   // namespace commandFunctions

void selectAllFinds(Editor& e, const Finder& finder) {
  const Snapshot text = e.snapshot();
  SearchAllResult found;
  e.host().work(text.size().value, [&](SearchControl& control) {
    found = finder.all(text, {ByteOffset(0), text.size()}, &control);
  });
  if (found.cancelled) return e.host().note(said("Cancelled"));
  if (!found.error.empty()) return e.host().note(QString::fromStdString(found.error));
  selectFinds(e, found.ranges);
  if (found.ranges.size() <= commandFunctions::kMostCarets) e.host().note(noteOfFinds(found.ranges.size()));
}
