// The lines that differ from the file: going to them, and taking them back.
#include <QCoreApplication>
#include <algorithm>

#include "control/commands/CommandFunctions.h"
#include "control/edit/Carets.h"
#include "control/edit/EditorAccess.h"
#include "control/marks/ChangeMarks.h"

using namespace text;

namespace commandFunctions {

namespace {

// The lines that carry the mark of a hunk, inclusive: where lines are missing, the one below.
std::pair<LineNo, LineNo> markedBy(const LineHunk& hunk, const Snapshot& text) {
  const LineNo last(text.lineCount() - 1), begin = std::min(hunk.afterBegin, last);
  return {begin, std::max(begin, hunk.afterEnd - 1)};
}

void goToChange(Editor& e, bool forward) {
  const auto known = ChangeMarks::of(e.model()).now(e.host());
  if (!known) return;
  const auto& parts = *known;
  if (parts.empty()) return e.host().note(QCoreApplication::translate("Editor", "No line differs from the file"));
  const LineNo line = caretLine(e);
  const auto beginOf = [&](const ChangedLines::Part& part) { return markedBy(part.lines, e.snapshot()).first; };
  const auto begins = [&](const ChangedLines::Part& part) { return part.lines.afterBegin <= line || beginOf(part) <= line; };
  auto to = std::partition_point(parts.begin(), parts.end(), begins);
  if (forward) {
    if (to == parts.end()) to = parts.begin();
  } else {
    const auto above = [&](const ChangedLines::Part& part) { return beginOf(part) < line; };
    to = std::partition_point(parts.begin(), to, above);
    to = (to == parts.begin() ? parts.end() : to) - 1;
  }
  e.moveCaret(e.snapshot().lineStart(beginOf(*to)), false);
}

}   // namespace

void gotoNextChange(Editor& e, const QVariant&) { goToChange(e, true); }
void gotoPreviousChange(Editor& e, const QVariant&) { goToChange(e, false); }

void revertChange(Editor& e, const QVariant&) {
  if (EditorAccess::isGuarded(e)) return;
  ChangeMarks& marks = ChangeMarks::of(e.model());
  const auto parts = marks.now(e.host());
  if (!parts) return;
  const Snapshot text = e.snapshot();
  std::vector<std::pair<LineNo, LineNo>> chosen;   // lines of the selections, inclusive
  const auto choose = [&](ByteOffset begin, ByteOffset end) {
    const LineNo first = text.lineAt(begin);
    LineNo last = text.lineAt(end);
    if (last > first && text.lineStart(last) == end && end < text.size()) last = last - 1;   // nothing of it is selected
    chosen.push_back({first, last});
  };
  const SelectionState& s = e.selection();
  choose(std::min(s.anchor, s.caret), std::max(s.anchor, s.caret));
  for (const Caret& caret : carets::others(e)) choose(caret.begin(), caret.end());
  std::ranges::sort(chosen);
  std::vector<Edit> edits;
  auto at = chosen.begin();
  for (const ChangedLines::Part& part : *parts) {
    const auto [first, last] = markedBy(part.lines, text);
    while (at != chosen.end() && at->second < first) ++at;
    if (at == chosen.end()) break;
    if (at->first > last) continue;
    edits.push_back(revertHunk(marks.file(), text, part.lines, e.model().newLines().at(text, first)));
  }
  if (edits.empty()) return e.host().note(QCoreApplication::translate("Editor", "This line does not differ from the file"));
  EditorAccess::change(e, edits);
}

}   // namespace commandFunctions
