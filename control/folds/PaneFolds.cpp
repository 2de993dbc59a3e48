#include "control/folds/PaneFolds.h"

#include <QCoreApplication>
#include <algorithm>

#include "base/Strings.h"
#include "control/code/BlockFinder.h"
#include "control/commands/CommandTable.h"
#include "control/edit/Carets.h"

using text::ByteOffset;
using text::ByteRange;
using text::Fold;
using text::LineNo;

namespace {

constexpr std::size_t kHandles = 2000;                    // lines kept
constexpr std::int64_t kTipLines = 12, kTipBytes = 400;   // of one line

QString foldText(const char* text) { return QCoreApplication::translate("PaneFolds", text); }

ByteRange rangeOf(const Caret& caret) { return {caret.begin(), caret.end()}; }

bool hides(const Fold& fold, LineNo line) { return fold.first < line && line <= fold.last; }

}   // namespace

PaneFolds::PaneFolds(Editor& editor, text::DisplayMap& map, ChangeRows changeRows)
    : editor_(editor), map_(map), changeRows_(std::move(changeRows)), revision_(editor.document().revision()) {}

bool PaneFolds::follows() const { return revision_ == editor_.document().revision() && map_.lines() == snapshot().lineCount(); }

void PaneFolds::setAllowed(bool allowed) {
  if (!allowed) unfoldAll();
  allowed_ = allowed;
}

// --- Commands -----------------------------------------------------------------------------------------------------------------

std::shared_ptr<const text::Blocks> PaneFolds::blocks() {
  if (!allowed_) {
    editor_.host().note(foldText(QT_TRANSLATE_NOOP("PaneFolds", "This text is not folded")));
    return nullptr;
  }
  if (snapshot().size().value > BlockFinder::kLargest)
    editor_.host().note(foldText(QT_TRANSLATE_NOOP("PaneFolds", "This text is too large to be folded by its blocks")));
  return BlockFinder::of(editor_.model()).now(editor_.host());
}

LineRange PaneFolds::linesOf(ByteRange range) const {
  const LineNo first = snapshot().lineAt(range.begin), last = snapshot().lineAt(range.end);
  const bool endsAtStart = last > first && range.end == snapshot().lineStart(last);
  return {first.value, last.value + (endsAtStart ? 0 : 1)};
}

// The work gets what each caret has selected.
template <class Work>
void PaneFolds::eachCaret(Work work) {
  if (editor_.selection().column) return work(editor_.selectedRange());
  for (const Caret& caret : carets::all(editor_)) work(rangeOf(caret));
}

void PaneFolds::add(std::vector<Fold> folds) {
  if (folds.empty()) return;
  std::ranges::sort(folds, {}, &Fold::first);
  changeRows_([&] {
    folds_.add(folds, map_);
    pullCarets();
  });
}

void PaneFolds::open(const std::function<bool(const Fold&)>& meant, std::vector<Fold>* opened) {
  if (std::ranges::none_of(folds_.folds(), meant)) return;
  changeRows_([&] {
    auto gone = folds_.open(meant, map_);
    if (opened) *opened = std::move(gone);
  });
}

void PaneFolds::fold() {
  const auto known = blocks();
  if (!known) return;
  std::vector<Fold> chosen;
  eachCaret([&](ByteRange range) {
    const LineRange lines = linesOf(range);
    if (lines.end - lines.first > 1) {
      for (const Fold& fold : known->foldsIn(LineNo(lines.first), LineNo(lines.end))) chosen.push_back(fold);
      return;
    }
    for (const Fold& fold : known->foldsAround(LineNo(lines.first)))
      if (!folds_.at(fold.first)) return chosen.push_back(fold);
  });
  if (chosen.empty()) editor_.host().note(foldText(QT_TRANSLATE_NOOP("PaneFolds", "There is no block to fold here")));
  add(std::move(chosen));
}

void PaneFolds::unfold() {
  std::vector<LineRange> meant;
  eachCaret([&](ByteRange range) { meant.push_back(linesOf(range)); });
  open([&](const Fold& fold) {   // the carets ascend
    const auto after = std::ranges::upper_bound(meant, fold.first.value, {}, &LineRange::first);
    return after != meant.begin() && fold.first.value < std::prev(after)->end;
  });
}

void PaneFolds::toggle() {
  bool folded = false;
  eachCaret([&](ByteRange range) { folded = folded || hiddenBehind(snapshot().lineAt(range.begin)) > 0; });
  folded ? unfold() : fold();
}

void PaneFolds::foldLevel(int level) {
  const auto known = blocks();
  if (!known) return;
  std::vector<Fold> chosen = known->foldsIn(LineNo(0), LineNo(snapshot().lineCount()));
  if (level > 0) {
    std::vector<LineNo> around;   // the ends of the blocks that hold the line
    std::vector<Fold> ofLevel;
    for (const Fold& fold : chosen) {
      while (!around.empty() && around.back() < fold.last) around.pop_back();
      around.push_back(fold.last);
      if (static_cast<int>(around.size()) == level) ofLevel.push_back(fold);
    }
    // What is folded within them stays so.
    chosen = ofLevel;
    for (const Fold& fold : folds_.folds()) {
      const auto after = std::ranges::upper_bound(ofLevel, fold.first, {}, &Fold::first);
      if (after != ofLevel.begin() && hides(*std::prev(after), fold.first)) chosen.push_back(fold);
    }
    std::ranges::sort(chosen, {}, &Fold::first);
  }
  if (chosen.empty()) editor_.host().note(foldText(QT_TRANSLATE_NOOP("PaneFolds", "There is no block to fold here")));
  changeRows_([&] {
    folds_.set(chosen, map_);
    pullCarets();
  });
}

void PaneFolds::unfoldAll() {
  open([](const Fold&) { return true; });
}

void PaneFolds::foldSelection() {
  if (!allowed_) return void(blocks());
  std::vector<Fold> chosen;
  eachCaret([&](ByteRange range) {
    const LineRange lines = linesOf(range);
    if (lines.end - lines.first > 1) chosen.push_back({LineNo(lines.first), LineNo(lines.end - 1)});
  });
  if (chosen.empty()) editor_.host().note(foldText(QT_TRANSLATE_NOOP("PaneFolds", "Select the lines to fold")));
  add(std::move(chosen));
}

void PaneFolds::toggleAt(LineNo line, bool withInner) {
  const bool folded = hiddenBehind(line) > 0;
  if (folded && !withInner) return open([&](const Fold& fold) { return fold.first == line; });
  std::int64_t last = line.value + hiddenBehind(line);
  std::vector<Fold> chosen;
  if (!folded) {
    const auto known = blocks();
    if (!known) return;
    for (const Fold& fold : known->foldsIn(line, line + 1)) {
      last = fold.last.value;
      chosen = withInner ? known->foldsIn(line, fold.last + 1) : std::vector<Fold>{fold};
    }
    return add(std::move(chosen));
  }
  open([&](const Fold& fold) { return fold.first >= line && fold.first.value <= last; });
}

void PaneFolds::setFolds(std::span<const Fold> folds) {
  if (!allowed_ || (folds.empty() && folds_.empty())) return;
  changeRows_([&] {
    folds_.set(folds, map_);
    pullCarets();
  });
}

std::int64_t PaneFolds::hiddenBehind(LineNo line) const {
  if (!map_.hidesAny() || line.value + 1 >= map_.lines()) return 0;
  return map_.shownFrom(line + 1) - line - 1;
}

// --- Margin -------------------------------------------------------------------------------------------------------------------

PaneFolds::Handle PaneFolds::handleAt(LineNo line) {
  if (!allowed_) return Handle::none;
  const auto known = follows() ? BlockFinder::of(editor_.model()).known() : nullptr;
  if (hiddenBehind(line) > 0) return Handle::folded;
  if (known) {
    if (!std::exchange(handlesKnown_, true) || handles_.size() > kHandles) handles_.clear();
    const auto [entry, isNew] = handles_.try_emplace(line.value, -1);
    if (isNew)
      for (const Fold& fold : known->foldsIn(line, line + 1)) entry->second = fold.last.value;
  }
  const auto entry = handles_.find(line.value);
  return entry != handles_.end() && entry->second > line.value ? Handle::open : Handle::none;
}

QString PaneFolds::hiddenText(LineNo line) const {
  const std::int64_t hidden = hiddenBehind(line), shown = std::min(hidden, kTipLines);
  QString text;
  for (LineNo each = line + 1; each <= line + shown; ++each) {
    const ByteOffset start = snapshot().lineStart(each), end = std::min(snapshot().lineEnd(each), start + kTipBytes);
    const QString part = toQString(snapshot().bytes({start, end})).replace(QLatin1Char('\t'), QStringLiteral("    "));
    text += plainForDisplay(part, 100) + QLatin1Char('\n');
  }
  if (hidden > shown) text += QStringLiteral("\u2026\n");
  text.chop(1);
  return text;
}

void PaneFolds::onChange(const text::Change& change) {
  folds_.onChange(change, snapshot(), map_);
  revision_ = editor_.document().revision();
  lent_.clear();
  handlesKnown_ = false;
  std::map<std::int64_t, std::int64_t> moved;
  if (!change.reset)
    for (const auto& [line, last] : handles_)
      if (last >= 0)
        moved[change.mapLine(LineNo(line), snapshot()).value] = std::max(line, change.mapLine(LineNo(last), snapshot()).value);
  handles_ = std::move(moved);
}

// --- Carets -------------------------------------------------------------------------------------------------------------------

bool PaneFolds::isCovered(LineNo hidden, ByteRange selection) const {
  const LineNo head = map_.shownUpTo(hidden), next = map_.shownFrom(hidden);
  return selection.begin <= snapshot().lineEnd(head) && selection.end >= snapshot().lineEnd(next - 1);
}

// What is folded with the caret within takes it to the end of its row.
void PaneFolds::pullCarets() {
  if (!follows()) return;
  bool any = false;
  const auto pulled = [&](ByteOffset at, ByteRange selection) {
    const LineNo line = snapshot().lineAt(at);
    if (!map_.isHidden(line) || isCovered(line, selection)) return at;
    any = true;
    return snapshot().lineEnd(map_.shownUpTo(line));
  };
  if (editor_.selection().column) {
    const ByteOffset caret = pulled(editor_.selection().caret, {});
    pulled(editor_.selection().anchor, {});
    if (any) editor_.moveCaret(caret, false);
    return;
  }
  std::size_t main = 0;
  std::vector<Caret> all = carets::all(editor_, &main);
  for (Caret& caret : all) {
    const ByteRange range = rangeOf(caret);
    const bool before = std::exchange(any, false);
    const ByteOffset to = pulled(caret.caret, range), anchor = pulled(caret.anchor, range);
    if (any) caret = {caret.caret == caret.anchor ? to : anchor, to};
    any = any || before;
  }
  if (any) carets::set(editor_, std::move(all), main);
}

void PaneFolds::reveal() {
  if (folds_.empty() || !map_.hidesAny() || !follows()) return;
  std::vector<LineRange> meant;
  const auto look = [&](ByteOffset at, ByteRange selection) {
    const LineNo line = snapshot().lineAt(at);
    if (map_.isHidden(line) && !isCovered(line, selection)) meant.push_back({line.value, line.value + 1});
  };
  if (editor_.selection().column) {   // each row of it can be changed
    const ByteRange rows = editor_.selectedRange();
    meant.push_back({snapshot().lineAt(rows.begin).value, snapshot().lineAt(rows.end).value + 1});
  } else {
    look(editor_.selection().anchor, editor_.selectedRange());
    look(editor_.selection().caret, editor_.selectedRange());
    for (const Caret& caret : carets::others(editor_))
      for (const ByteOffset at : {caret.anchor, caret.caret}) look(at, rangeOf(caret));
  }
  if (meant.empty()) return;
  std::ranges::sort(meant, {}, &LineRange::first);
  std::vector<Fold> opened;
  open(
      [&](const Fold& fold) {
        const auto from = std::ranges::lower_bound(meant, fold.first.value + 1, {}, &LineRange::first);
        if (from != meant.end() && from->first <= fold.last.value) return true;
        return from != meant.begin() && std::prev(from)->end > fold.first.value + 1;
      },
      &opened);
  for (const Fold& fold : opened) lent_.push_back({fold, editor_.selection()});
}

void PaneFolds::settle() {
  reveal();
  if (lent_.empty() || !follows()) return;
  const text::SelectionState& now = editor_.selection();
  const CaretMove how = lastMove(editor_);
  const bool jumped = how == CaretMove::jump || how == CaretMove::preview;
  const LineNo line = snapshot().lineAt(now.caret);
  std::vector<Fold> closing;
  std::erase_if(lent_, [&](Lent& lent) {
    if (lent.at == now) return false;
    if (!jumped) return true;
    lent.at = now;
    if (hides(lent.fold, line)) return false;
    closing.push_back(lent.fold);
    return true;
  });
  add(std::move(closing));
}

bool PaneFolds::opensBefore(CommandNumber id) {
  const bool back = id == CommandNumber(Cmd::DELETEBACK);
  if ((!back && id != CommandNumber(Cmd::DELETE)) || !map_.hidesAny() || !follows() || editor_.document().readOnly()) return false;
  std::vector<std::int64_t> meant;
  eachCaret([&](ByteRange range) {
    if (!range.empty()) return;
    const LineNo line = snapshot().lineAt(range.begin), other = back ? line - 1 : line + 1;
    const bool atEdge = range.begin == (back ? snapshot().lineStart(line) : snapshot().lineEnd(line));
    if (atEdge && other.value >= 0 && other.value < map_.lines() && map_.isHidden(other)) meant.push_back(other.value);
  });
  if (meant.empty()) return false;
  open([&](const Fold& fold) {   // ascending
    const auto from = std::ranges::lower_bound(meant, fold.first.value + 1);
    return from != meant.end() && *from <= fold.last.value;
  });
  return true;
}
