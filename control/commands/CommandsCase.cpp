// Upper and lower case, and exchanging words.
#include <algorithm>

#include "control/commands/CommandFunctions.h"
#include "control/edit/SelectedPieces.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

using namespace text;

namespace commandFunctions {

namespace {

void convert(std::string_view bytes, WordCase to, std::string& result) {
  const auto ascii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (to != WordCase::capital && std::all_of(bytes.begin(), bytes.end(), ascii)) {
    result.assign(bytes);
    for (char& c : result) {
      if (to == WordCase::upper ? c >= 'a' && c <= 'z' : c >= 'A' && c <= 'Z') c = static_cast<char>(c ^ 0x20);
    }
    return;
  }
  // Invalid bytes are not changed.
  result.clear();
  bool first = to == WordCase::capital;
  const auto flush = [&](std::string_view valid) {
    QString text = toQString(valid);
    if (to == WordCase::upper) {
      text = text.toUpper();
    } else {
      text = text.toLower();
      const qsizetype head = !first || text.isEmpty() ? 0 : text[0].isHighSurrogate() ? 2 : 1;
      text = text.left(head).toUpper() + text.mid(head);
    }
    first = first && valid.empty();
    result += fromQString(text);
  };
  std::size_t from = 0;
  for (std::size_t at = 0; at < bytes.size();) {
    const Char c = decode(bytes.substr(at));
    if (c.bad) {
      flush(bytes.substr(from, at - from));
      result += bytes[at];
      from = at + 1;
    }
    at += static_cast<std::size_t>(c.bytes);
  }
  flush(bytes.substr(from));
}

bool isWord(const Snapshot& text, ByteRange range) {
  return !range.empty() && classOf(decode(text.bytes({range.begin, range.begin + 4})).code) == CharClass::word;
}

// The first word (not punctuation) that starts behind the position; empty when there is none.
ByteRange wordBehind(const Snapshot& text, ByteOffset at) {
  for (;;) {
    const ByteOffset next = wordStartAfter(text, at);
    if (next <= at || next == text.size()) return {text.size(), text.size()};
    const ByteRange word{next, wordEndAfter(text, next)};
    if (isWord(text, word)) return word;
    at = next;
  }
}

}   // namespace

void changeWordCase(Editor& e, WordCase to) {
  const Snapshot& text = e.snapshot();
  const ByteOffset caret = e.selection().caret;
  ByteRange word = wordAt(text, caret);
  // A repetition continues with the next word.
  if (!isWord(text, word) || (EditorAccess::impl(e).pass > 0 && word.end == caret)) word = wordBehind(text, caret);
  if (word.empty()) return;
  std::string fresh;
  convert(text.bytes(word), to, fresh);
  EditorAccess::put(e, word, std::move(fresh));
}

void changeSelectionCase(Editor& e, WordCase to) {
  if (!e.hasSelection() || e.document().readOnly()) return;
  std::vector<Edit> edits;
  std::string fresh;
  forEachSelectedPiece(e, [&](ByteOffset start, std::string_view bytes, std::int64_t) {
    convert(bytes, to, fresh);
    addDifference(edits, start, bytes, fresh);
  });
  EditorAccess::change(e, edits);
}

void wordTranspose(Editor& e, const QVariant&) {
  const Snapshot& text = e.snapshot();
  const ByteOffset caret = e.selection().caret;
  ByteRange first = wordAt(text, caret);
  for (ByteOffset at = caret; !isWord(text, first);) {
    const ByteOffset before = wordStartBefore(text, at);
    if (before >= at) return;
    first = {before, wordEndAfter(text, before)};
    at = before;
  }
  const ByteRange second = wordBehind(text, first.begin);
  if (second.empty()) return;
  EditorAccess::put(e, {first.begin, second.end}, text.bytes(second) + text.bytes({first.end, second.begin}) + text.bytes(first));
}

}   // namespace commandFunctions
