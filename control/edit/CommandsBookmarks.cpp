// Bookmarks: setting them, going to them, and the lines that have one.
#include <QCoreApplication>
#include <algorithm>

#include "control/edit/CommandFunctions.h"
#include "control/edit/EditorAccess.h"

using namespace text;

namespace commandFunctions {

namespace {

void goToBookmark(Editor& e, bool forward) {
  const std::vector<LineNo> marks = e.model().bookmarks();
  if (marks.empty()) return;
  const LineNo line = caretLine(e);
  LineNo to;
  if (forward) {
    const auto next = std::upper_bound(marks.begin(), marks.end(), line);
    to = next == marks.end() ? marks.front() : *next;
  } else {
    const auto here = std::lower_bound(marks.begin(), marks.end(), line);
    to = here == marks.begin() ? marks.back() : *(here - 1);
  }
  e.moveCaret(e.snapshot().lineStart(to), false);
}

// False: there are none, or the user cancelled; nothing is copied then.
bool copyMarked(Editor& e) {
  const std::vector<LineNo> marks = e.model().bookmarks();
  if (marks.empty()) {
    e.host().note(QCoreApplication::translate("Editor", "No line has a bookmark"));
    return false;
  }
  const Snapshot text = e.snapshot();
  const std::string lineEnd = e.model().newLineFor(marks.back());
  std::string lines;
  bool cancelled = false;
  e.host().work(text.size().value, [&](SearchControl& control) {
    control.bytesTotal = text.size().value;
    for (const LineNo line : marks) {
      if (control.cancel) break;
      const ByteRange whole{text.lineStart(line), text.lineEndWithBreak(line)};
      lines += text.bytes(whole);
      if (text.lineBreak(line) == LineBreak::none) lines += lineEnd;   // it is pasted as a line
      control.bytesDone = whole.end.value;
    }
    cancelled = control.cancel;
  });
  if (!cancelled) toClipboard(e, toQString(lines), false);
  return !cancelled;
}

}   // namespace

void bookmarkToggle(Editor& e, const QVariant&) {
  const LineNo line = caretLine(e);
  e.model().setBookmark(line, !e.model().hasBookmark(line));
}
void bookmarkPrev(Editor& e, const QVariant&) { goToBookmark(e, false); }
void bookmarkNext(Editor& e, const QVariant&) { goToBookmark(e, true); }
void bookmarkClearAll(Editor& e, const QVariant&) { e.model().clearBookmarks(); }
void bookmarkJumpToFirst(Editor& e, const QVariant&) {
  const auto marks = e.model().bookmarks();
  if (!marks.empty()) e.moveCaret(e.snapshot().lineStart(marks.front()), false);
}
void bookmarkJumpToLast(Editor& e, const QVariant&) {
  const auto marks = e.model().bookmarks();
  if (!marks.empty()) e.moveCaret(e.snapshot().lineStart(marks.back()), false);
}

void bookmarkLinesCopy(Editor& e, const QVariant&) { copyMarked(e); }

void bookmarkLinesCut(Editor& e, const QVariant& argument) {
  if (!EditorAccess::isGuarded(e) && copyMarked(e)) bookmarkLinesDelete(e, argument);
}

void bookmarkLinesDelete(Editor& e, const QVariant&) {
  if (EditorAccess::isGuarded(e)) return;
  const Snapshot text = e.snapshot();
  const std::vector<LineNo> marks = e.model().bookmarks();
  std::vector<Edit> edits;
  for (std::size_t i = 0, end = 0; i < marks.size(); i = end) {
    for (end = i + 1; end < marks.size() && marks[end].value == marks[end - 1].value + 1;) ++end;   // neighbours
    if (const ByteRange range = wholeLines(text, marks[i], marks[end - 1]); !range.empty()) edits.push_back({range, {}});
  }
  EditorAccess::change(e, edits);
  e.model().clearBookmarks();   // also that of an empty last line
}

void bookmarkInvert(Editor& e, const QVariant&) {
  const std::vector<LineNo> marks = e.model().bookmarks();
  std::vector<LineNo> others;
  auto mark = marks.begin();
  for (LineNo line(0); line.value < e.snapshot().lineCount(); ++line)
    if (mark != marks.end() && *mark == line) ++mark;
    else others.push_back(line);
  e.model().clearBookmarks();
  e.model().setBookmarks(others, true);
}

}   // namespace commandFunctions
