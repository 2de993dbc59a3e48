// Deleting, clipboard, undo and inserting.
#include <QCoreApplication>
#include <algorithm>
#include <cctype>

#include "control/commands/CommandFunctions.h"
#include "control/edit/EditorAccess.h"
#include "control/edit/PasteHistory.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

using namespace text;

namespace commandFunctions {

namespace {

void cutRange(Editor& e, ByteRange range) {
  if (e.document().readOnly() || range.empty()) return;
  toClipboard(e, toQString(e.snapshot().bytes(range)), false);
  EditorAccess::put(e, range, {});
}

// Deletes the selection, or the range if there is none.
void deleteRange(Editor& e, ByteRange range, Join join) {
  if (e.hasSelection()) EditorAccess::deleteSelection(e);
  else if (!range.empty()) EditorAccess::put(e, range, {}, join);
}

// In a column selection without width: the cells of the character beside the caret, in each row.
void deleteColumnBeside(Editor& e, bool forward) {
  const Snapshot& text = e.snapshot();
  const SelectionState& s = e.selection();
  const int tabSize = e.options().tabSize;
  ColumnBlock block = columnBlock(e.model(), s, tabSize);
  const LineNo line = text.lineAt(s.caret);
  const ByteOffset beside = forward ? nextChar(text, s.caret) : previousChar(text, s.caret);
  std::int64_t width = 1;
  if (s.caretVirtual == 0 && text.lineAt(beside) == line)
    width = std::max<std::int64_t>(1, std::abs(cellOf(e.model(), beside, 0, tabSize) - block.left));
  if (forward) block.right += width;
  else block.left = std::max<std::int64_t>(0, block.left - width);
  EditorAccess::fillBlock(e, block, {}, Join::deleting);
}

}   // namespace

void toClipboard(Editor& e, QString text, bool block) {
  auto& impl = EditorAccess::impl(e);
  if (impl.run) return void(impl.run->piece = std::move(text));
  decltype(impl.cuts)::value_type all;
  if (impl.cuts) all = std::move(*impl.cuts);
  else if (impl.cutAppends) all.text = e.host().clipboardText(&all.block);
  if (all.text.isEmpty()) {
    all = {std::move(text), block};
  } else {
    all.block = all.block && block;
    all.text += (all.block ? QStringLiteral("\n") : QString()) + text;
  }
  if (impl.gathersCuts) {
    impl.cuts = std::move(all);
    return;
  }
  pasteHistory().add({all.text, all.block});
  e.host().setClipboard(all.text, all.block);
}

void deleteForward(Editor& e, const QVariant&) {
  const ByteOffset caret = e.selection().caret;
  if (e.selection().column && !e.hasSelection()) return deleteColumnBeside(e, true);
  deleteRange(e, {caret, nextChar(e.snapshot(), caret)}, Join::deleting);
}

void deleteBack(Editor& e, const QVariant&) {
  const ByteOffset caret = e.selection().caret;
  if (e.selection().column && !e.hasSelection()) return deleteColumnBeside(e, false);
  if (autoClose::deletePair(e)) return;
  deleteRange(e, {previousChar(e.snapshot(), caret), caret}, Join::deleting);
}

void wordDeleteToStart(Editor& e, const QVariant&) {
  const ByteOffset caret = e.selection().caret, start = lineStart(e, caret);
  const ByteOffset from = caret == start ? previousChar(e.snapshot(), caret) : std::max(start, wordLeft(e, caret));
  deleteRange(e, {from, caret}, Join::none);
}

void wordDeleteToEnd(Editor& e, const QVariant&) {
  const ByteOffset caret = e.selection().caret, end = lineEnd(e, caret);
  const ByteOffset to = caret == end ? nextChar(e.snapshot(), caret) : std::min(end, wordEndRight(e, caret));
  deleteRange(e, {caret, to}, Join::none);
}

void deleteHorizontalSpace(Editor& e, const QVariant&) {
  const Snapshot& text = e.snapshot();
  const auto blank = [&text](ByteOffset at) { return text.at(at) == ' ' || text.at(at) == '\t'; };
  ByteRange range{e.selection().caret, e.selection().caret};
  while (range.begin.value > 0 && blank(range.begin - 1)) --range.begin;
  while (range.end < text.size() && blank(range.end)) ++range.end;
  if (!range.empty()) EditorAccess::put(e, range, {});
}

void charTranspose(Editor& e, const QVariant&) {
  const Snapshot& text = e.snapshot();
  ByteOffset middle = e.selection().caret;
  if (middle == lineEnd(e, middle)) middle = previousChar(text, middle);
  const ByteOffset start = lineStart(e, middle), end = lineEnd(e, middle);
  if (middle <= start || middle >= end || text.lineAt(middle) != text.lineAt(e.selection().caret)) return;
  const ByteRange before{previousChar(text, middle), middle}, behind{middle, nextChar(text, middle)};
  EditorAccess::put(e, {before.begin, behind.end}, text.bytes(behind) + text.bytes(before));
}

void copy(Editor& e, const QVariant&) {
  if (!e.hasSelection()) return;
  toClipboard(e, e.selectedText(), e.selection().column);
}

void cutSelection(Editor& e, const QVariant&) {
  if (!e.hasSelection() || e.document().readOnly()) return;
  toClipboard(e, e.selectedText(), e.selection().column);
  EditorAccess::deleteSelection(e);
}

void cut(Editor& e, const QVariant& argument) {
  if (e.hasSelection()) cutSelection(e, argument);
  else lineCut(e, argument);
}

void lineCut(Editor& e, const QVariant&) {
  if (e.document().readOnly()) return;
  const Snapshot& text = e.snapshot();
  const LineRange selected = e.selectedLines();
  const LineNo last(selected.end - 1);
  const ByteRange lines{text.lineStart(LineNo(selected.first)), text.lineEndWithBreak(last)};
  if (lines.empty()) return;
  // The last line of the text has no break, but is pasted as a line.
  QString cutText = toQString(text.bytes(lines));
  if (text.lineBreak(last) == LineBreak::none) cutText += toQString(e.model().newLineFor(last));
  toClipboard(e, std::move(cutText), false);
  EditorAccess::put(e, lines, {});
}

void sentenceCut(Editor& e, const QVariant&) {
  const ByteOffset caret = e.selection().caret;
  cutRange(e, {caret, sentenceRight(e, caret)});
}

void paste(Editor& e, const QVariant&) {
  bool block = false;
  QString text = e.host().clipboardText(&block);
  if (text.isEmpty()) return;
  if (!text.contains(u'\n')) text.replace(u'\r', u'\n');
  if (carets::several(e)) {   // to each its piece, if as many carets have copied; else all to each
    const QStringList pieces = e.host().clipboardPieces();
    const bool own = pieces.size() == static_cast<qsizetype>(carets::count(e));
    return carets::atEach(e, [&](std::size_t i) { e.replaceSelection(own ? pieces[static_cast<qsizetype>(i)] : text); });
  }
  if (block || (e.selection().column && text.contains(u'\n'))) e.insertBlock(text);
  else e.replaceSelection(text);
}

void pasteFromHistory(Editor& e, const QVariant& argument) {
  const auto& texts = pasteHistory().texts();
  const qlonglong number = argument.toLongLong();
  if (texts.empty()) return e.host().note(QCoreApplication::translate("Editor", "Nothing was copied yet"));
  if (number < 1) return e.host().offerPasteHistory();
  if (number > static_cast<qlonglong>(texts.size())) return;
  const CopiedText chosen = texts[static_cast<std::size_t>(number - 1)];
  if (carets::several(e)) carets::atEach(e, [&] { e.replaceSelection(chosen.text); });
  else if (chosen.block) e.insertBlock(chosen.text);
  else e.replaceSelection(chosen.text);
}

// The bytes of the character with the number, written in hexadecimal, perhaps behind "U+"; none for what is no character that a line
// may hold.
static std::string characterOf(QString number) {
  if (number.startsWith(QLatin1String("U+"), Qt::CaseInsensitive)) number.remove(0, 2);
  bool valid = false;
  const uint code = number.toUInt(&valid, 16);
  if (!valid || (code < 0x20 && code != '\t') || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return {};
  return encode(code);
}

// Without an argument: the number is selected, or is all the digits before the caret.
void insertUnicode(Editor& e, const QVariant& argument) {
  if (EditorAccess::isGuarded(e)) return;
  constexpr std::int64_t kMostDigits = 16;
  ByteRange range = e.selectedRange();
  QString number = argument.toString().trimmed();
  if (argument.toString().isEmpty() && !e.selection().column) {
    const ByteOffset caret = range.end, start = std::max(lineStart(e, caret), caret - kMostDigits - 2);
    if (!range.empty()) {
      if (range.length() <= kMostDigits + 2) number = toQString(e.snapshot().bytes(range));
    } else {
      const std::string before = e.snapshot().bytes({start, caret});
      const auto digits = std::find_if_not(before.rbegin(), before.rend(), [](unsigned char c) { return std::isxdigit(c); });
      auto length = static_cast<std::size_t>(digits - before.rbegin());
      number = toQString(std::string_view(before).substr(before.size() - length));
      const std::string_view rest = std::string_view(before).substr(0, before.size() - length);
      if (length > 0 && (rest.ends_with("U+") || rest.ends_with("u+"))) length += 2;
      range.begin = caret - static_cast<std::int64_t>(length);
    }
  }
  const std::string character = characterOf(number);
  if (number.isEmpty())
    return e.host().note(
        QCoreApplication::translate("Editor", "Write the number of the character in hexadecimal first, such as 20AC"));
  if (character.empty())
    return e.host().note(QCoreApplication::translate(
                             "Editor", "%1 is not the number of a character: these go to 10FFFF, without 0 to 1F and D800 to DFFF")
                             .arg(number));
  if (e.selection().column) e.replaceSelection(toQString(character));
  else EditorAccess::put(e, range, character);
}

void insertChar(Editor& e, const QVariant& argument) {
  const QString text = argument.toString();
  if (!text.isEmpty()) e.replaceSelection(text);
}

void newLine(Editor& e, const QVariant&) { e.newLine(); }
void undo(Editor& e, const QVariant&) { e.undo(); }
void redo(Editor& e, const QVariant&) { e.redo(); }

void undoChanges(Editor& e, const QVariant&) {
  while (e.document().modified() && e.undo()) {}
}
void redoChanges(Editor& e, const QVariant&) {
  while (e.redo()) {}
}

}   // namespace commandFunctions
