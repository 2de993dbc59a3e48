// Moving the caret and selecting.
#include <algorithm>

#include "control/code/Brackets.h"
#include "control/code/LanguageTable.h"
#include "control/commands/CommandFunctions.h"
#include "control/edit/DisplayRows.h"
#include "control/edit/EditorAccess.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

using namespace text;

namespace commandFunctions {

namespace {

constexpr std::int64_t kNear = 1 << 20;   // bytes searched for the partner of a bracket before a thread is used

bool blankAt(const Snapshot& text, ByteOffset at) { return classOf(decode(text.bytes({at, at + 4})).code) == CharClass::blank; }

void select(Editor& e, ByteRange range) { e.setSelection({range.begin, range.end, 0, 0, false}); }

}   // namespace

ByteOffset charRight(Editor& e, ByteOffset at) { return nextChar(e.snapshot(), at); }
ByteOffset charLeft(Editor& e, ByteOffset at) { return previousChar(e.snapshot(), at); }

ByteOffset wordRight(Editor& e, ByteOffset at) {
  const Snapshot& text = e.snapshot();
  const ByteOffset next = wordStartAfter(text, at);
  const LineNo line = text.lineAt(at);
  if (at < text.lineEnd(line)) return std::min(next, text.lineEnd(line));
  return line.value + 1 < text.lineCount() ? std::min(next, text.lineEnd(line + 1)) : next;
}

ByteOffset runRight(Editor& e, ByteOffset at) {
  return at == e.snapshot().size() || blankAt(e.snapshot(), at) ? wordRight(e, at) : wordEndAfter(e.snapshot(), at);
}

ByteOffset wordEndRight(Editor& e, ByteOffset at) { return wordEndAfter(e.snapshot(), at); }
ByteOffset wordLeft(Editor& e, ByteOffset at) { return wordStartBefore(e.snapshot(), at); }
ByteOffset wordEndLeft(Editor& e, ByteOffset at) { return wordEndBefore(e.snapshot(), at); }
ByteOffset sentenceRight(Editor& e, ByteOffset at) { return sentenceStartAfter(e.snapshot(), at); }
ByteOffset sentenceLeft(Editor& e, ByteOffset at) { return sentenceStartBefore(e.snapshot(), at); }
ByteOffset paraUp(Editor& e, ByteOffset at) { return paragraphStartBefore(e.snapshot(), at); }
ByteOffset paraDown(Editor& e, ByteOffset at) { return paragraphStartAfter(e.snapshot(), at); }
ByteOffset lineStart(Editor& e, ByteOffset at) { return e.snapshot().lineStart(e.snapshot().lineAt(at)); }
ByteOffset lineEnd(Editor& e, ByteOffset at) { return e.snapshot().lineEnd(e.snapshot().lineAt(at)); }
ByteOffset documentStart(Editor&, ByteOffset) { return ByteOffset(0); }
ByteOffset documentEnd(Editor& e, ByteOffset) { return e.snapshot().size(); }

ByteOffset indentation(Editor& e, ByteOffset at) {
  const LineNo line = e.snapshot().lineAt(at);
  return e.snapshot().lineStart(line) + static_cast<std::int64_t>(EditorAccess::indentOf(e.snapshot(), line).size());
}

ByteOffset home(Editor& e, ByteOffset at) {
  if (DisplayRows* const rows = e.host().displayRows()) {
    const ByteOffset row = rows->rowAt(at).begin;
    if (row != at && row != lineStart(e, at)) return row;
  }
  const ByteOffset first = indentation(e, at);
  return at == first ? lineStart(e, at) : first;
}

ByteOffset rowEnd(Editor& e, ByteOffset at) {
  DisplayRows* const rows = e.host().displayRows();
  const ByteOffset end = rows ? rows->rowAt(at).end : at;
  return end == at ? lineEnd(e, at) : end;
}

ByteOffset smartEnd(Editor& e, ByteOffset at) {
  const Snapshot& text = e.snapshot();
  const ByteOffset start = lineStart(e, at);
  ByteOffset end = lineEnd(e, at);
  if (at != end) return rowEnd(e, at);
  while (end > start && (text.at(end - 1) == ' ' || text.at(end - 1) == '\t')) --end;
  return end == start ? at : end;
}

ByteOffset pastHidden(Editor& e, ByteOffset from, ByteOffset to) {
  DisplayRows* const rows = e.host().displayRows();
  return rows ? rows->shownFrom(to, to > from) : to;
}

void charRightOrEnd(Editor& e, const QVariant& argument) {
  if (e.hasSelection()) e.moveCaret(e.selectedRange().end, false);
  else go<charRight>(e, argument);
}
void charLeftOrStart(Editor& e, const QVariant& argument) {
  if (e.hasSelection()) e.moveCaret(e.selectedRange().begin, false);
  else go<charLeft>(e, argument);
}

bool inColumnMode(Editor& e) { return EditorAccess::impl(e).columnMode && e.options().columnSel && !EditorAccess::impl(e).run; }

void extendTo(Editor& e, ByteOffset to) {
  if (!inColumnMode(e)) return e.moveCaret(to, true);
  const Snapshot& text = e.snapshot();
  const SelectionState s = e.selection();
  const int tabSize = e.options().tabSize;
  e.setSelection(columnSelection(e.model(), text.lineAt(s.anchor), cellOf(e.model(), s.anchor, s.anchorVirtual, tabSize),
                                 text.lineAt(to), cellOf(e.model(), to, 0, tabSize), tabSize));
}

void extendBlock(Editor& e, std::int64_t cells, std::int64_t lines) {
  if (!e.options().columnSel) {
    if (lines != 0) return moveLines(e, lines, true);
    return e.moveCaret(cells < 0 ? charLeft(e, e.selection().caret) : charRight(e, e.selection().caret), true);
  }
  const Snapshot& text = e.snapshot();
  const SelectionState s = e.selection();
  const int tabSize = e.options().tabSize;
  const std::int64_t cell = cellOf(e.model(), s.caret, s.caretVirtual, tabSize) + cells;
  const LineNo line(std::clamp<std::int64_t>(text.lineAt(s.caret).value + lines, 0, text.lineCount() - 1));
  e.setSelection(columnSelection(e.model(), text.lineAt(s.anchor), cellOf(e.model(), s.anchor, s.anchorVirtual, tabSize), line,
                                 std::max<std::int64_t>(0, cell), tabSize));
}

void moveLines(Editor& e, std::int64_t lines, bool extend) {
  if (extend && inColumnMode(e)) return extendBlock(e, 0, lines);
  const Snapshot& text = e.snapshot();
  const SelectionState s = e.selection();
  const int tabSize = e.options().tabSize;
  const auto kept = EditorAccess::impl(e).goal;
  if (DisplayRows* const rows = e.host().displayRows()) {
    const std::int64_t cell = kept ? *kept : rows->cellInRow(s.caret) + s.caretVirtual;
    const ByteOffset caret = rows->below(s.caret, lines, cell);
    e.document().breakJoin();
    return EditorAccess::place(e, {extend ? s.anchor : caret, caret, 0, 0, false}, cell);
  }
  const LineNo from = text.lineAt(s.caret);
  const LineNo to(std::clamp<std::int64_t>(from.value + lines, 0, text.lineCount() - 1));
  const std::int64_t cell = kept ? *kept : cellOf(e.model(), s.caret, s.caretVirtual, tabSize);
  const ByteOffset caret = to == from ? s.caret : offsetAtCell(e.model(), to, cell, tabSize);
  e.document().breakJoin();
  EditorAccess::place(e, {extend ? s.anchor : caret, caret, 0, 0, false}, cell);
}

void movePage(Editor& e, int direction, bool extend) {
  EditorHost& host = e.host();
  const qint64 lines = std::max<qint64>(1, host.visibleLines() - 1);
  const qint64 lastTop = std::max<qint64>(0, e.snapshot().lineCount() - host.visibleLines());
  const CaretRun* run = EditorAccess::impl(e).run;
  DisplayRows* const rows = host.displayRows();
  if ((!run || run->isMain) && rows) rows->scrollRows(direction * lines);
  else if (!run || run->isMain)
    host.setTopLine(std::clamp<qint64>(host.topLine() + direction * lines, 0, std::max(lastTop, host.topLine())));
  moveLines(e, direction * lines, extend);
}

void gotoLine(Editor& e, const QVariant& argument) {
  const qint64 line = std::clamp<qint64>(argument.toLongLong(), 0, e.snapshot().lineCount() - 1);
  e.moveCaret(e.snapshot().lineStart(LineNo(line)), false);
}

void gotoMatchBrace(Editor& e, const QVariant&) {
  const ByteOffset caret = e.selection().caret;
  const Snapshot text = e.snapshot();
  bool known = true;   // the colours are known, not guessed
  e.model().stateAt(text.lineAt(caret), kNear, &known);
  std::optional<BracketPair> pair;
  bool cut = !known;
  if (known) pair = matchingBracket(e.model(), caret, kNear, &cut);
  if (!pair && cut) {
    const auto colors = e.model().highlighter() ? LanguageTable::find(e.model().language()) : nullptr;
    e.host().work(text.size().value, [&](SearchControl& control) { pair = matchingBracket(text, colors, caret, control); });
  }
  if (pair) e.moveCaret(pair->partner, false);
}

void selectSwapAnchor(Editor& e, const QVariant&) {
  SelectionState s = e.selection();
  std::swap(s.anchor, s.caret);
  std::swap(s.anchorVirtual, s.caretVirtual);
  e.setSelection(s);
}

void selectPara(Editor& e, const QVariant&) { select(e, paragraphAt(e.snapshot(), e.selection().caret)); }

void selectLine(Editor& e, const QVariant&) {
  const Snapshot& text = e.snapshot();
  const ByteRange range = e.selectedRange();
  LineNo last = text.lineAt(range.end);
  if (DisplayRows* const rows = e.host().displayRows()) last = rows->lastOf(last);
  select(e, {text.lineStart(text.lineAt(range.begin)), text.lineEndWithBreak(last)});
}

void selectAll(Editor& e, const QVariant&) { select(e, {ByteOffset(0), e.snapshot().size()}); }

}   // namespace commandFunctions
