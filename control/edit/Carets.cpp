#include "control/edit/Carets.h"

#include <QCoreApplication>
#include <QScopeGuard>
#include <QScopedValueRollback>
#include <algorithm>
#include <utility>

#include "bridge/LongWork.h"
#include "control/commands/CommandFunctions.h"
#include "control/edit/CaretRun.h"
#include "control/edit/EditorAccess.h"
#include "control/edit/PasteHistory.h"

using namespace text;

namespace {

using Work = std::function<void(std::size_t)>;

SelectionState stateOf(const Caret& caret) { return {caret.anchor, caret.caret, 0, 0, false}; }
std::optional<std::int64_t> goalOf(const Caret& caret) { return caret.goal < 0 ? std::nullopt : std::optional(caret.goal); }
Caret caretOf(const SelectionState& s, std::optional<std::int64_t> goal) { return {s.anchor, s.caret, goal.value_or(-1)}; }

bool startsBefore(const Caret& a, const Caret& b) { return a.begin() != b.begin() ? a.begin() < b.begin() : a.end() < b.end(); }
// a starts first.
bool touch(const Caret& a, const Caret& b) { return b.begin() < a.end() || (b.begin() == a.end() && (a.empty() || b.empty())); }

// Sorts the list and joins what touches; a joined caret looks where the main one or else the first one did. Returns the main one.
std::size_t arrange(std::vector<Caret>& list, std::size_t main) {
  if (!std::ranges::is_sorted(list, startsBefore)) {
    const Caret chief = list[main];
    std::ranges::stable_sort(list, startsBefore);
    main = static_cast<std::size_t>(std::ranges::find(list, chief) - list.begin());
  }
  std::size_t kept = 0, mainKept = 0;
  for (std::size_t i = 1; i < list.size(); ++i) {
    Caret& last = list[kept];
    if (!touch(last, list[i])) {
      list[++kept] = list[i];
      if (i == main) mainKept = kept;
      continue;
    }
    const Caret lead = i == main ? list[i] : last;
    const ByteOffset begin = last.begin(), end = std::max(last.end(), list[i].end());
    const bool forward = lead.empty() ? list[i].anchor <= list[i].caret : lead.anchor < lead.caret;
    last = {forward ? begin : end, forward ? end : begin, lead.goal};
    if (i == main) mainKept = kept;
  }
  list.resize(kept + 1);
  return mainKept;
}

// Makes the list, which is arranged, the carets; nobody is told.
void give(Editor& e, std::vector<Caret> list, std::size_t main) {
  auto& impl = EditorAccess::impl(e);
  EditorAccess::setSelection(e, stateOf(list[main]));
  impl.goal = goalOf(list[main]);
  list.erase(list.begin() + static_cast<std::ptrdiff_t>(main));
  impl.others = std::move(list);
}

void tell(Editor& e) {
  if (e.onSelectionChanged) e.onSelectionChanged();
}

void snapped(const Editor& e, Caret& caret) {
  const bool empty = caret.empty();
  caret.caret = EditorAccess::snap(e.snapshot(), caret.caret);
  caret.anchor = empty ? caret.caret : EditorAccess::snap(e.snapshot(), caret.anchor);
}

void giveSnapped(Editor& e, std::vector<Caret> list, std::size_t main) {
  for (Caret& caret : list) snapped(e, caret);
  main = arrange(list, main);
  give(e, std::move(list), main);
}

// Where a selection goes that only moves with the text. Text put in at its edges is not selected.
Caret moved(const Change& change, const Caret& caret) {
  const bool forward = caret.anchor < caret.caret, empty = caret.empty();
  return {change.map(caret.anchor, !empty && forward ? Bias::alongRight : Bias::alongLeft),
          change.map(caret.caret, !empty && !forward ? Bias::alongRight : Bias::alongLeft)};
}

// Takes the carets out of the editor; gives them back at the end, unless the text has changed or it was told to forget them.
class Taken {
 public:
  explicit Taken(Editor& e)
      : e_(e), goal_(EditorAccess::impl(e).goal), revision_(e.document().revision()), selection_(e.selection()) {
    list = carets::all(e, &main);
    others_.swap(EditorAccess::impl(e).others);
    before = CaretSets::of(e.model()).keep(selection_, others_);
  }
  ~Taken() {
    if (!given_ && e_.document().revision() == revision_) putBack();
  }
  void putBack() {
    given_ = true;
    EditorAccess::setSelection(e_, selection_);
    EditorAccess::impl(e_).others = std::move(others_);
    EditorAccess::impl(e_).goal = goal_;
  }
  Taken(const Taken&) = delete;
  Taken& operator=(const Taken&) = delete;
  void forget() { given_ = true; }

  std::vector<Caret> list;
  std::size_t main = 0;
  SelectionState before;   // as an undo step keeps it

 private:
  Editor& e_;
  const std::optional<std::int64_t> goal_;
  const std::uint64_t revision_;
  const SelectionState selection_;
  std::vector<Caret> others_;
  bool given_ = false;
};

void keepAfter(Editor& e) { e.document().setSelectionAfter(CaretSets::of(e.model()).keep(e.selection(), carets::others(e))); }

class Progress {
 public:
  Progress(Editor& e, std::size_t all)
      : loop_(e.host().widget(), QCoreApplication::translate("Editor", "Working at each caret...")), all_(all) {}
  bool goesOn(std::size_t done) { return done % 64 != 0 || loop_.goesOn(static_cast<int>(done * 100 / all_)); }

 private:
  LongWork::Loop loop_;
  const std::size_t all_;
};

// What came out at one caret.
struct Outcome {
  SelectionState now;
  std::int64_t goal = -1;
  std::size_t first = 0, end = 0;   // its edits
  enum { still, followsText, placed } how = still;
};

// Several pieces are joined by line ends; a whole line has its own.
void copyPieces(Editor& e, const QStringList& pieces) {
  QString joined;
  for (qsizetype i = 0; i < pieces.size(); ++i) {
    if (i > 0 && !pieces[i - 1].endsWith(u'\n')) joined += u'\n';
    joined += pieces[i];
  }
  const auto& impl = EditorAccess::impl(e);
  if (impl.cutAppends || impl.gathersCuts || pieces.size() < 2) {
    commandFunctions::toClipboard(e, joined, false);
  } else {
    pasteHistory().add({joined, false});
    e.host().setClipboardPieces(joined, pieces);
  }
}

// The outcomes in the text with the changes of all carets.
std::vector<Caret> placesOf(const Taken& taken, const std::vector<Outcome>& outcomes, const std::vector<Edit>& edits) {
  Change change;
  change.spans.reserve(edits.size());
  for (std::int64_t grown = 0; const Edit& edit : edits) {
    Change::Span span;
    span.oldBegin = edit.range.begin;
    span.begin = edit.range.begin + grown;
    span.removed = edit.range.length();
    span.inserted = static_cast<std::int64_t>(edit.text.size());
    grown += span.inserted - span.removed;
    change.spans.push_back(span);
  }
  std::vector<Caret> places;
  places.reserve(outcomes.size());
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    const Outcome& one = outcomes[i];
    // From the text with the caret's own edits to that with all.
    const auto whole = [&](ByteOffset at) {
      std::int64_t grown = 0;
      for (std::size_t own = one.first; own < one.end; ++own) {
        const Change::Span& span = change.spans[own];
        const ByteOffset begin = span.oldBegin + grown;
        if (at < begin) break;
        if (at <= begin + span.inserted) return span.begin + (at - begin);
        grown += span.inserted - span.removed;
      }
      return change.map(at - grown, Bias::alongLeft);
    };
    if (one.how == Outcome::placed) places.push_back({whole(one.now.anchor), whole(one.now.caret), one.goal});
    else places.push_back(moved(change, one.how == Outcome::still ? caretOf(one.now, std::nullopt) : taken.list[i]));
  }
  return places;
}

enum class Collected { done, cancelled, refused };

Collected collect(Editor& e, const Work& work) {
  auto& impl = EditorAccess::impl(e);
  Taken taken(e);
  CaretRun run;
  std::vector<Outcome> outcomes;
  QStringList pieces;
  std::vector<std::size_t> owners;   // of the pieces: the last caret that cut it
  bool anyPiece = false;
  outcomes.reserve(taken.list.size());
  {
    const QScopedValueRollback collecting(impl.run, &run);
    Progress progress(e, taken.list.size());
    for (std::size_t i = 0; i < taken.list.size(); ++i) {
      if (!progress.goesOn(i)) return Collected::cancelled;
      EditorAccess::setSelection(e, stateOf(taken.list[i]));
      impl.goal = goalOf(taken.list[i]);
      run.begin(i == taken.main);
      work(i);
      if (run.refused) return Collected::refused;
      Outcome one{e.selection(), impl.goal.value_or(-1), run.first, run.edits.size()};
      if (run.changed) {
        one.how = run.after && !run.cut ? Outcome::placed : Outcome::followsText;
        if (one.how == Outcome::placed) one.now = *run.after;
      }
      // What several carets cut together is copied in one piece.
      if (run.grown && run.piece) {
        while (!owners.empty() && outcomes[owners.back()].end > run.popped) {
          owners.pop_back();
          pieces.pop_back();
        }
        run.piece = toQString(e.snapshot().bytes(run.edits.back().range));
      }
      // Edits of earlier carets that became one with others: these carets go where their text goes.
      for (auto old = outcomes.rbegin(); old != outcomes.rend() && old->end > run.popped; ++old) {
        if (old->how == Outcome::placed) old->how = Outcome::followsText;
        old->first = old->end = run.popped;
      }
      if (one.now.column) one.now = {one.now.caret, one.now.caret, 0, 0, false};
      outcomes.push_back(one);
      const bool lost = run.cut && !run.grown && one.first == one.end;   // an earlier caret has done and copied the same
      if (lost) continue;
      anyPiece = anyPiece || run.piece.has_value();
      pieces += run.piece.value_or(QString());
      owners.push_back(i);
    }
  }
  if (anyPiece) copyPieces(e, pieces);
  if (run.edits.empty()) {
    std::vector<Caret> places;
    places.reserve(outcomes.size());
    for (const Outcome& one : outcomes) places.push_back(caretOf(one.now, one.goal < 0 ? std::nullopt : std::optional(one.goal)));
    const std::size_t main = arrange(places, taken.main);
    taken.putBack();
    carets::keepBefore(e);
    give(e, std::move(places), main);
    tell(e);
    return Collected::done;
  }
  std::vector<Caret> places = placesOf(taken, outcomes, run.edits);
  const std::size_t main = arrange(places, taken.main);
  std::optional<UndoGroup> group;
  if (run.closers) group.emplace(e.document());
  const std::uint64_t revision = e.document().revision();
  give(e, places, main);   // the views are told during the change
  {
    const QScopedValueRollback own(impl.ownChange, impl.ownChange + 1);
    const QScopedValueRollback placed(impl.placed, true);
    if (!e.document().apply(run.edits, taken.before, run.join)) return Collected::done;   // read-only
  }
  taken.forget();
  giveSnapped(e, std::move(places), main);
  if (e.document().revision() != revision) keepAfter(e);
  if (run.closers) collect(e, [&e](std::size_t) { EditorAccess::stepBack(e); });
  tell(e);
  return Collected::done;
}

void oneByOne(Editor& e, const Work& work) {
  auto& impl = EditorAccess::impl(e);
  Document& document = e.document();
  std::vector<std::pair<MarkId, MarkId>> marks;
  const auto forgotten = qScopeGuard([&] {
    for (const auto& [anchor, caret] : marks) {
      document.removeMark(anchor);
      document.removeMark(caret);
    }
  });
  Taken taken(e);
  const auto add = [&](const Caret& caret) {
    const bool forward = caret.anchor < caret.caret, empty = caret.empty();
    return std::pair(document.addMark(caret.anchor, !empty && forward ? Bias::alongRight : Bias::alongLeft),
                     document.addMark(caret.caret, !empty && !forward ? Bias::alongRight : Bias::alongLeft));
  };
  for (const Caret& caret : taken.list) marks.push_back(add(caret));
  const QScopedValueRollback before(impl.stepBefore, std::optional(taken.before));
  const UndoGroup group(document);
  const std::uint64_t revision = document.revision();
  Progress progress(e, taken.list.size());
  for (std::size_t i = 0; i < marks.size(); ++i) {
    if (!progress.goesOn(i)) {
      document.rollbackGroup();
      taken.putBack();
      return tell(e);
    }
    Caret here{document.markAt(marks[i].first), document.markAt(marks[i].second)};
    snapped(e, here);   // work at another caret may have joined characters here
    EditorAccess::setSelection(e, stateOf(here));
    impl.goal = goalOf(taken.list[i]);
    work(i);
    const SelectionState now = e.selection();
    document.removeMark(marks[i].first);
    document.removeMark(marks[i].second);
    marks[i] = add({now.column ? now.caret : now.anchor, now.caret});
  }
  std::vector<Caret> places;
  for (const auto& [anchor, caret] : marks) places.push_back({document.markAt(anchor), document.markAt(caret)});
  taken.forget();
  giveSnapped(e, std::move(places), taken.main);
  if (document.revision() != revision) keepAfter(e);
  tell(e);
}

}   // namespace

void CaretRun::begin(bool main) {
  changed = cut = grown = false;
  isMain = main;
  after.reset();
  piece.reset();
  first = edits.size();
  popped = SIZE_MAX;
}

bool CaretRun::take(std::span<const Edit> own, const std::optional<SelectionState>& behind, Join how) {
  if (changed) {
    refused = true;
    return false;
  }
  changed = true;
  after = behind;
  join = how;
  for (const Edit& edit : own) {
    if (edits.empty() || edit.range.begin > edits.back().range.end ||
        (edit.range.begin == edits.back().range.end &&
         (!edit.range.empty() || !edits.back().range.empty() || edits.size() > first))) {
      edits.push_back(edit);
      continue;
    }
    cut = true;
    // Two deletions that overlap become one; else what an earlier caret does counts.
    if (!edit.text.empty() || !edits.back().text.empty()) continue;
    grown = grown || edit.range.begin < edits.back().range.begin || edit.range.end > edits.back().range.end;
    ByteRange gone{std::min(edit.range.begin, edits.back().range.begin), std::max(edit.range.end, edits.back().range.end)};
    edits.pop_back();
    while (!edits.empty() && edits.back().range.end > gone.begin) {
      if (!edits.back().text.empty()) {
        gone.begin = edits.back().range.end;
        break;
      }
      gone.begin = std::min(gone.begin, edits.back().range.begin);
      edits.pop_back();
    }
    popped = std::min(popped, edits.size());
    edits.push_back({gone, {}});
    first = edits.size();   // it belongs to both
  }
  return true;
}

namespace carets {

std::span<const Caret> others(const Editor& e) { return EditorAccess::impl(e).others; }

bool anySelection(const Editor& e) {
  return e.hasSelection() || std::ranges::any_of(others(e), [](const Caret& caret) { return !caret.empty(); });
}

std::vector<Caret> all(const Editor& e, std::size_t* main) {
  const auto& impl = EditorAccess::impl(e);
  std::vector<Caret> list;
  list.reserve(impl.others.size() + 1);
  Caret chief = caretOf(e.selection(), impl.goal);
  if (e.selection().column) chief = {chief.caret, chief.caret};
  const auto behind = std::ranges::upper_bound(impl.others, chief, startsBefore);
  list.assign(impl.others.begin(), behind);
  if (main) *main = list.size();
  list.push_back(chief);
  list.insert(list.end(), behind, impl.others.end());
  return list;
}

static void setQuietly(Editor& e, std::vector<Caret> list, std::size_t main) {
  e.document().breakJoin();
  EditorAccess::impl(e).autoBlanks.reset();
  giveSnapped(e, std::move(list), main);
  tell(e);
}

void set(Editor& e, std::vector<Caret> list, std::size_t main) {
  if (list.empty()) return;
  if (list.size() > 1 || several(e)) carets::keepBefore(e);
  setQuietly(e, std::move(list), main);
}

void add(Editor& e, const Caret& caret) {
  std::vector<Caret> list = all(e);
  list.push_back(caret);
  set(e, std::move(list), list.size() - 1);
}

void toggle(Editor& e, ByteOffset at) {
  std::size_t main = 0;
  std::vector<Caret> list = all(e, &main);
  const Caret here{at, at};
  const auto old = std::ranges::find_if(
      list, [&](const Caret& caret) { return startsBefore(here, caret) ? touch(here, caret) : touch(caret, here); });
  if (old == list.end()) return add(e, here);
  if (list.size() == 1) return;
  const auto gone = static_cast<std::size_t>(old - list.begin());
  list.erase(old);
  if (gone < main || main == list.size()) --main;
  set(e, std::move(list), main);
}

void setMain(Editor& e, const Caret& caret) {
  std::size_t main = 0;
  std::vector<Caret> list = all(e, &main);
  list[main] = caret;
  setQuietly(e, std::move(list), main);
}

void drop(Editor& e) {
  auto& impl = EditorAccess::impl(e);
  if (impl.others.empty()) return;
  carets::keepBefore(e);
  impl.others = {};
  tell(e);
}

void atEach(Editor& e, const std::function<void(std::size_t)>& work) {
  EditorAccess::impl(e).autoBlanks.reset();
  if (collect(e, work) == Collected::refused) oneByOne(e, work);
}

void atEach(Editor& e, const std::function<void()>& work) {
  atEach(e, [&work](std::size_t) { work(); });
}

void oneAfterOther(Editor& e, const std::function<void()>& work) {
  EditorAccess::impl(e).autoBlanks.reset();
  oneByOne(e, [&work](std::size_t) { work(); });
}

bool edit(Editor& e, std::span<const Edit> edits) { return EditorAccess::change(e, edits); }

bool editAround(Editor& e, std::span<const Edit> edits) {
  auto& impl = EditorAccess::impl(e);
  const SelectionState before = impl.stepBefore.value_or(CaretSets::of(e.model()).keep(e.selection(), impl.others));
  if (!e.document().apply(edits, before)) return false;
  if (several(e)) keepAfter(e);
  return true;
}

std::vector<LineRange> lines(Editor& e, LineAtEnd lineAtEnd) {
  if (!several(e)) return {e.selectedLines(lineAtEnd)};
  const Snapshot& text = e.snapshot();
  std::vector<LineRange> ranges;
  for (const Caret& caret : all(e)) {
    const LineNo first = text.lineAt(caret.begin()), last = text.lineAt(caret.end());
    const bool endsAtStart = last > first && caret.end() == text.lineStart(last);
    const LineRange own{first.value, last.value + (endsAtStart && lineAtEnd == LineAtEnd::excluded ? 0 : 1)};
    if (!ranges.empty() && own.first <= ranges.back().end) ranges.back().end = std::max(ranges.back().end, own.end);
    else ranges.push_back(own);
  }
  return ranges;
}

}   // namespace carets

void EditorAccess::settle(Editor& e, SelectionState& main, std::optional<std::int64_t> goal) {
  auto& others = e.impl_->others;
  if (main.column) return others.clear();
  others.push_back(caretOf(main, goal));
  const std::size_t at = arrange(others, others.size() - 1);
  main = stateOf(others[at]);
  others.erase(others.begin() + static_cast<std::ptrdiff_t>(at));
}

void EditorAccess::follow(Editor& e, const Change& change) {
  auto& others = e.impl_->others;
  if (change.reset) return others.clear();
  for (Caret& caret : others) snapped(e, caret = moved(change, caret));
}
