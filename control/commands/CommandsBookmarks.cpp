// Bookmarks: setting them, going to them, and the lines that have one.
#include <QCoreApplication>
#include <algorithm>
#include <optional>

#include "control/commands/CommandFunctions.h"
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

struct MarkedLines {
  std::string text;             // for the clipboard
  std::vector<Edit> deletion;   // of these lines
};

// nullopt: no line has a bookmark, or the user cancelled; the text and its bookmarks are as they were.
std::optional<MarkedLines> markedLines(Editor& e, bool copies, bool deletes) {
  const std::vector<LineNo> marks = e.model().bookmarks();
  if (marks.empty()) {
    e.host().note(QCoreApplication::translate("Editor", "No line has a bookmark"));
    return std::nullopt;
  }
  const Snapshot text = e.snapshot();
  const std::string lineEnd = e.model().newLineFor(marks.back());
  MarkedLines lines;
  bool cancelled = false;
  e.host().work(text.size().value, [&](SearchControl& control) {
    control.bytesTotal = text.size().value;
    const LineNo last(text.lineCount() - 1);
    for (std::size_t i = 0, end = 0; i < marks.size() && !control.cancel; i = end) {
      for (end = i + 1; end < marks.size() && marks[end].value == marks[end - 1].value + 1;) ++end;   // neighbours
      const bool isLast = marks[end - 1] == last;
      const ByteRange range{text.lineStart(marks[i]), text.lineEndWithBreak(marks[end - 1])};
      for (ByteOffset at = range.begin; copies && at < range.end && !control.cancel;) {
        const std::string_view chunk = text.chunkAt(at).substr(0, std::size_t(range.end - at));
        lines.text += chunk;
        at = at + std::int64_t(chunk.size());
        control.bytesDone = at.value;
      }
      if (copies && isLast) lines.text += lineEnd;   // it is pasted as a line
      const ByteRange gone = isLast ? wholeLines(text, marks[i], last) : range;
      if (deletes && !gone.empty()) lines.deletion.push_back({gone, {}});
      control.bytesDone = range.end.value;
    }
    cancelled = control.cancel;
  });
  return cancelled ? std::nullopt : std::optional(std::move(lines));
}

void deleteMarked(Editor& e, const MarkedLines& lines) {
  EditorAccess::change(e, lines.deletion);
  e.model().clearBookmarks();   // also that of an empty last line
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

void bookmarkLinesCopy(Editor& e, const QVariant&) {
  if (const auto lines = markedLines(e, true, false)) toClipboard(e, toQString(lines->text), false);
}

void bookmarkLinesCut(Editor& e, const QVariant&) {
  if (EditorAccess::isGuarded(e)) return;
  const auto lines = markedLines(e, true, true);
  if (!lines) return;
  toClipboard(e, toQString(lines->text), false);
  deleteMarked(e, *lines);
}

void bookmarkLinesDelete(Editor& e, const QVariant&) {
  if (EditorAccess::isGuarded(e)) return;
  if (const auto lines = markedLines(e, false, true)) deleteMarked(e, *lines);
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
