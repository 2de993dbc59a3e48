// The find and replace commands; they use the program's one search state.
#include <QCoreApplication>
#include <algorithm>

#include "control/commands/CommandFunctions.h"
#include "control/edit/EditorAccess.h"
#include "control/find/Finding.h"
#include "control/find/Replacing.h"
#include "control/find/UsersSearch.h"
#include "text/line/WordNear.h"

using namespace text;

namespace {

constexpr std::size_t kEditsAtOnce = 1 << 16;
constexpr std::chrono::milliseconds kOneFind{50};   // time limit for testing whether the selection is a match

QString tr(const char* text, int n = -1) { return QCoreApplication::translate("Find", text, nullptr, n); }

bool sameOptions(const SearchOptions& a, const SearchOptions& b) {
  return a.matchCase == b.matchCase && a.wholeWord == b.wholeWord && a.regex == b.regex;
}

const Finder& searcherFor(Editor& e, const std::string& what, const SearchOptions& options) {
  auto& impl = EditorAccess::impl(e);
  if (!impl.searcher || impl.searcherKey.first != what || !sameOptions(impl.searcherKey.second, options)) {
    impl.searcher = std::make_unique<Finder>(what, options);
    impl.searcherKey = {what, options};
  }
  return *impl.searcher;
}

// The searcher of the search state. Null, after a note, when the text is empty or the expression is invalid.
const Finder* stateSearcher(Editor& e) {
  const SearchState& state = usersSearch();
  EditorAccess::searchFailed(e) = true;
  if (state.findText.isEmpty()) {
    e.host().note(tr("There is no find text"));
    return nullptr;
  }
  const Finder& searcher = searcherFor(e, findBytes(e, state), state.options);
  if (searcher.error().empty()) {
    EditorAccess::searchFailed(e) = false;
    return &searcher;
  }
  e.host().note(QString::fromStdString(searcher.error()));
  return nullptr;
}

// Selects the next match behind the selection; wraps at the end of the text if needed.
bool findFrom(Editor& e, const Finder& searcher, const QString& shown, ByteRange from, bool forward) {
  const Snapshot text = e.snapshot();
  const ByteRange whole{ByteOffset(0), text.size()};
  FindOutcome outcome;
  e.host().work(whole.length(),
                [&](SearchControl& control) { outcome = findNear(text, searcher, from, std::span(&whole, 1), forward, &control); });
  EditorAccess::searchFailed(e) = !outcome.found;
  if (outcome.found) e.setSelection({outcome.found->begin, outcome.found->end, 0, 0, false});
  e.host().note(noteOf(outcome, shown, forward));
  return outcome.found.has_value();
}

void replaceAllIn(Editor& e, const std::vector<ByteRange>& within) {
  if (EditorAccess::isGuarded(e)) return;
  const Finder* searcher = stateSearcher(e);
  if (!searcher) return;
  const SearchState& state = searchState();
  const Replacement replacement = replacementOf(e, state);
  const Snapshot text = e.snapshot();
  ReplacePlan plan;
  e.host().work(within.empty() ? 0 : within.back().end - within.front().begin,
                [&](SearchControl& control) { plan = planReplacements(text, *searcher, within, replacement, &control); });
  applyReplacements(e, plan);
}

}   // namespace

FindOutcome findNear(const Snapshot& text, const Finder& searcher, ByteRange from, std::span<const ByteRange> within, bool forward,
                     SearchControl* control) {
  const auto ends = [](const SearchResult& result) { return result.match || !result.error.empty() || result.cancelled; };
  const auto search = [&](ByteOffset at) {
    SearchResult result;
    if (forward) {
      auto range = std::partition_point(within.begin(), within.end(), [at](const ByteRange& r) { return r.end < at; });
      for (; range != within.end() && !ends(result); ++range)
        result = searcher.forward(text, std::max(at, range->begin), *range, control);
    } else {
      auto range = std::partition_point(within.begin(), within.end(), [at](const ByteRange& r) { return r.begin <= at; });
      while (range != within.begin() && !ends(result)) {
        --range;
        result = searcher.backward(text, std::min(at, range->end), *range, control);
      }
    }
    return result;
  };
  FindOutcome outcome;
  if (within.empty()) return outcome;
  SearchResult result = search(forward ? from.end : from.begin);
  // An empty match at the caret would be found again and again.
  if (result.match && result.match->range.empty() && from.empty() && result.match->range.begin == from.begin) {
    const ByteOffset next = forward ? nextChar(text, from.end) : previousChar(text, from.begin);
    result = next == from.begin ? SearchResult() : search(next);
  }
  if (!result.match && result.error.empty() && !result.cancelled) {
    outcome.wrapped = true;
    result = search(forward ? within.front().begin : within.back().end);
  }
  if (result.match) outcome.found = result.match->range;
  outcome.error = std::move(result.error);
  outcome.cancelled = result.cancelled;
  return outcome;
}

QString noteOf(const FindOutcome& outcome, const QString& findText, bool forward) {
  if (outcome.cancelled) return tr("Cancelled");
  if (!outcome.error.empty()) return QString::fromStdString(outcome.error);
  if (!outcome.found) return tr("\"%1\" was not found").arg(findText);
  if (!outcome.wrapped) return {};
  return forward ? tr("Went on from the start of the text") : tr("Went on from the end of the text");
}

std::string findBytes(Editor& e, const SearchState& state) {
  return state.options.regex ? fromQString(state.findText) : EditorAccess::incoming(e, state.findText, LineNo(0));
}

Replacement replacementOf(Editor& e, const SearchState& state) {
  return {fromQString(state.replaceText), keepsCase(e, state), e.model().newLines()};
}

bool keepsCase(Editor& e, const SearchState& state) { return state.preserveCase || e.options().preserveCase; }

QString findSwitches(Editor& e, const SearchState& state) {
  QStringList words;
  if (state.options.matchCase) words += QStringLiteral("case");
  if (state.options.wholeWord) words += QStringLiteral("word");
  if (state.options.regex) words += QStringLiteral("regex");
  if (keepsCase(e, state)) words += QStringLiteral("preserve");
  return words.join(u' ');
}

void setFindSwitches(Editor& e, const QString& words) {
  const QStringList on = words.toLower().split(u' ', Qt::SkipEmptyParts);
  SearchState& state = searchState();
  state.options.matchCase = on.contains(QStringLiteral("case"));
  state.options.wholeWord = on.contains(QStringLiteral("word"));
  state.options.regex = on.contains(QStringLiteral("regex"));
  state.preserveCase = e.options().preserveCase = on.contains(QStringLiteral("preserve"));
}

std::vector<ByteRange> selectedRanges(Editor& e) {
  if (!e.hasSelection()) return {};
  if (!e.selection().column) return {e.selectedRange()};
  std::vector<ByteRange> rows;
  const int tabSize = e.options().tabSize;
  const ColumnBlock block = columnBlock(e.model(), e.selection(), tabSize);
  for (LineNo line = block.first; line <= block.last; ++line) {
    const ByteRange body = columnRow(e.model(), line, block.left, block.right, tabSize).body;
    if (!body.empty()) rows.push_back(body);
  }
  return rows;
}

QString noteOf(const ReplacePlan& plan) {
  if (plan.cancelled) return tr("Cancelled; nothing was replaced");
  if (!plan.error.empty()) return QString::fromStdString(plan.error);
  return tr("%1 replaced").arg(plan.finds.size());
}

void applyReplacements(Editor& e, const ReplacePlan& plan) {
  // From the end to the start, so that earlier positions stay valid; in parts, because the edits are much larger than the plan.
  const UndoGroup group(e.document());
  std::size_t textEnd = plan.texts.size();
  for (std::size_t last = plan.finds.size(); last > 0;) {
    const std::size_t first = last > kEditsAtOnce ? last - kEditsAtOnce : 0;
    std::vector<Edit> edits(last - first);
    for (std::size_t i = last; i-- > first;) {
      textEnd -= plan.lengths[i];
      edits[i - first] = {plan.finds[i], plan.texts.substr(textEnd, plan.lengths[i])};
    }
    EditorAccess::change(e, edits);
    last = first;
  }
  e.host().note(noteOf(plan));
}

bool replaceSelectedFind(Editor& e, const Finder& searcher, std::span<const ByteRange> within, QString* error) {
  const ByteRange range = e.selectedRange();
  if (e.selection().column) return false;
  const auto home = std::partition_point(within.begin(), within.end(), [&](const ByteRange& r) { return r.end < range.end; });
  if (home == within.end() || range.begin < home->begin) return false;
  FindBudget budget(kOneFind);
  const SearchResult at = searcher.at(e.snapshot(), range, *home, &budget);
  *error = budget.spent ? tr("The expression takes too long on this text") : QString::fromStdString(at.error);
  if (!at.match) return false;
  const Replacement by = replacementOf(e, searchState());
  std::string why;
  auto fresh = searcher.replacementFor(e.snapshot(), *at.match, by.text, by.preserveCase, &why, by.newLines);
  *error = QString::fromStdString(why);
  return fresh && EditorAccess::put(e, range, std::move(*fresh));
}

QString wordToFind(Editor& e) {
  const Snapshot& text = e.snapshot();
  if (e.hasSelection() && !e.selection().column) {
    const ByteRange range = e.selectedRange();
    if (range.length() <= kLongestFind && text.lineAt(range.begin) == text.lineAt(range.end)) return e.selectedText();
  }
  return toQString(text.bytes(wordNear(text, e.selection().caret)));
}

namespace commandFunctions {

bool findAgain(Editor& e, bool forward) {
  const Finder* searcher = stateSearcher(e);
  return searcher && findFrom(e, *searcher, searchState().findText, e.selectedRange(), forward);
}

bool findWordAtCaret(Editor& e, bool forward) {
  const QString word = wordToFind(e);
  if (word.isEmpty()) return false;
  const bool selected = e.hasSelection();
  const ByteRange from = selected ? e.selectedRange() : wordNear(e.snapshot(), e.selection().caret);
  usersSearch().findText = word;
  SearchOptions options = searchState().options;
  options.regex = false;
  options.wholeWord = !selected || options.wholeWord || wordNear(e.snapshot(), from.begin) == from;
  return findFrom(e, searcherFor(e, fromQString(word), options), word, from, forward);
}

void find(Editor& e, const QVariant&) { e.host().showFindDialog(false); }
void findReplace(Editor& e, const QVariant&) { e.host().showFindDialog(true); }

void findMarkAll(Editor& e, const QVariant&) {
  const Finder* searcher = stateSearcher(e);
  if (!searcher) return;
  const Snapshot text = e.snapshot();
  const ByteRange whole{ByteOffset(0), text.size()};
  SearchAllResult found;
  e.host().work(whole.length(), [&](SearchControl& control) { found = searcher->all(text, whole, &control); });
  if (found.cancelled) return e.host().note(tr("Cancelled"));
  if (!found.error.empty()) return e.host().note(QString::fromStdString(found.error));
  markFinds(e, text, found.ranges);
}

void findSelectAll(Editor& e, const QVariant&) {
  if (const Finder* searcher = stateSearcher(e)) selectAllFinds(e, *searcher);
}

void replace(Editor& e, const QVariant&) {
  if (EditorAccess::isGuarded(e)) return;
  const Finder* searcher = stateSearcher(e);
  if (!searcher) return;
  QString error;
  const ByteRange whole{ByteOffset(0), e.snapshot().size()};
  const bool replaced = replaceSelectedFind(e, *searcher, std::span(&whole, 1), &error);
  if (!error.isEmpty()) return e.host().note(error);
  findFrom(e, *searcher, searchState().findText, e.selectedRange(), true);
  if (replaced) e.document().setSelectionAfter(e.selection());
}

void replaceAllInBuffer(Editor& e, const QVariant&) { replaceAllIn(e, {{ByteOffset(0), e.snapshot().size()}}); }
void replaceAllInSelection(Editor& e, const QVariant&) { replaceAllIn(e, selectedRanges(e)); }

void setFindText(Editor&, const QVariant& argument) { usersSearch().findText = argument.toString(); }
void setReplaceText(Editor&, const QVariant& argument) { usersSearch().replaceText = argument.toString(); }

void togglePreserveCase(Editor& e, const QVariant&) {
  const bool on = !keepsCase(e, searchState());
  searchState().preserveCase = on;
  e.options().preserveCase = on;
}
void toggleWholeWord(Editor&, const QVariant&) { searchState().options.wholeWord = !searchState().options.wholeWord; }
void toggleCaseSensitive(Editor&, const QVariant&) { searchState().options.matchCase = !searchState().options.matchCase; }

}   // namespace commandFunctions

void markFinds(Editor& e, const Snapshot& text, std::span<const ByteRange> finds) {
  std::vector<LineNo> lines;
  for (const ByteRange& find : finds) {
    const LineNo line = text.lineAt(find.begin);
    if (lines.empty() || lines.back() != line) lines.push_back(line);
  }
  e.model().setBookmarks(lines, true);
  e.host().note(noteOfFinds(finds.size()));
}

QString noteOfFinds(std::size_t number) { return tr("%1 found").arg(number); }
