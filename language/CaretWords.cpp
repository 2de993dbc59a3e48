#include "language/CaretWords.h"

#include <algorithm>
#include <optional>

#include "base/Program.h"
#include "base/Strings.h"
#include "control/CodeMax.h"
#include "language/FieldWalk.h"
#include "language/ucCM.h"
#include "text/Chars.h"

namespace {

const QString kCrLf = QStringLiteral("\r\n");
const QString kField = QStringLiteral("$$");

// Numbers of the edit commands used here.
enum Cmd { WORDRIGHTEXTEND = 102, WORDLEFT = 108, WORDENDLEFT = 109, FINDNEXT = 176, SETFINDTEXT = 179, SETREPLACETEXT = 180 };

bool holds(const QString& list, const QString& word) {
  return (kCrLf + list).contains(kCrLf + word + kCrLf, Qt::CaseInsensitive);
}

// The words of a list; text behind the last CR LF is none.
QStringList wordsOf(const QString& list) {
  QStringList words = list.split(kCrLf);
  words.removeLast();
  return words;
}

// Padded on the left with blanks to a width, never cut.
QString formatted(const QString& word, qsizetype width) { return word.rightJustified(width, u' '); }

CmRange caretAt(const CmPosition& at) { return {at.LineNo, at.ColNo, at.LineNo, at.ColNo, false}; }

// The edit control's own search for the word selects what is to be replaced. The search options are the person's and
// may keep it from finding the word at the caret; then the word's own range holds.
CmRange findCurrentWord(CodeMax& cmx, const QString& findText, const QString& replaceText) {
  const CmRange word = cmx.CurrentWordRange();
  const text::SearchOptions options = searchState().options;
  searchState().options = {};
  cmx.ExecuteCmd(WORDENDLEFT);
  cmx.ExecuteCmd(SETFINDTEXT, findText);
  cmx.ExecuteCmd(SETREPLACETEXT, replaceText);
  cmx.ExecuteCmd(FINDNEXT);
  searchState().options = options;
  const CmRange found = cmx.GetSel(true);
  return found == word ? found : word;
}

// The text of the hot key's template, ready to go in at `word`.
QString templateText(CodeMax& cmx, ucCM& manager, int languageIndex, const QString& hotKey, const CmRange& word,
                     const ExpandText& expand) {
  QString text = manager.GetUserString(languageIndex, hotKey);
  // "$$name" is a field in front of "name", not a dollar in front of the variable "$name".
  QChar stand(0xFDD0);
  while (text.contains(stand)) stand = QChar(stand.unicode() + 1);
  text.replace(kField, QString(stand));
  if (expand) expand(text);
  text.replace(QString(stand), kField);
  text = toCrLf(text);

  const QString before = cmx.GetLine(word.StartLineNo).left(word.StartColNo);
  qint64 indentation = word.StartColNo;
  if (before.contains(u'\t')) {
    const std::string bytes = fromQString(before);
    indentation = text::displayColumn(bytes, static_cast<std::int64_t>(bytes.size()), cmx.TabSize()).value;
  }
  UserStringToCode(text, indentation);
  return text;
}

void putIn(CodeMax& cmx, const QString& text, const CmRange& word) {
  cmx.SetSel(word);
  const text::ByteOffset start = cmx.editor().selectedRange().begin;
  cmx.ReplaceSel(text);
  const qsizetype field = text.indexOf(kField);
  if (field < 0) return;
  FieldWalk::start(cmx, {start, cmx.editor().selectedRange().end});
  const QString before = text.left(field);
  const qsizetype lineStart = before.lastIndexOf(u'\n') + 1;
  const qint64 line = word.StartLineNo + before.count(u'\n');
  const qint64 column = field - lineStart + (lineStart == 0 ? word.StartColNo : 0);
  cmx.SetSel({line, column, line, column + kField.size(), false});
}

}  // namespace

bool isInWordList(const CodeMax& cmx, const clsLang* language) {
  if (!language || cmx.CurrentWordLength() <= 0) return false;
  const QString word = cmx.CurrentWord();
  const auto& lists = *language->cWordList();
  return std::any_of(lists.begin(), lists.end(), [&](const auto& list) { return holds(list->WordList, word); });
}

void ProcessWordList(CodeMax& cmx, const clsLang* language, int& WordListIndex, bool previous) {
  if (!language || cmx.ReadOnly() || cmx.CurrentWordLength() <= 0 || cmx.Language().isEmpty()) return;
  const QString word = cmx.CurrentWord().toUpper();
  const auto& lists = *language->cWordList();
  const auto listHolds = [&](int index) { return holds(lists.Item(index)->WordList, word); };
  if (WordListIndex < 1 || WordListIndex > lists.Count() || !listHolds(WordListIndex)) {
    int found = 1;
    while (found <= lists.Count() && !listHolds(found)) ++found;
    if (found > lists.Count()) return;
    WordListIndex = found;
  }
  SetStatusText(QStringLiteral("Processing WordList '") + lists.Item(WordListIndex)->Name + u'\'');

  const QStringList words = wordsOf(lists.Item(WordListIndex)->WordList);
  qsizetype at = words.size() - 1;   // the last line that holds the word decides
  while (at >= 0 && words[at].toUpper() != word) --at;
  if (at < 0) return;
  const QString replacement = words[(at + (previous ? words.size() - 1 : 1)) % words.size()];

  const CmPosition caret = cmx.CurrentPosition();
  const EditBlock block(cmx);
  const CmRange range = findCurrentWord(cmx, formatted(word, word.size()), formatted(word, replacement.size()));
  cmx.ReplaceText(replacement, range);
  // The caret stays on the word, so that the key can be pressed again.
  const qint64 offset = caret.LineNo == range.StartLineNo ? caret.ColNo - range.StartColNo : 0;
  cmx.SetSel(caretAt({range.StartLineNo, range.StartColNo + std::clamp<qint64>(offset, 0, replacement.size())}));
}

bool isTemplate(CodeMax& cmx, ucCM& manager, int languageIndex, bool afterTyping, const ExpandText& expand) {
  const QString word = cmx.CurrentWord();
  std::optional<BusyGuard> busy(std::in_place);
  if (cmx.CurrentWordLength() <= 0 || languageIndex <= 0) return false;
  if (afterTyping && word == QLatin1String("..") && !cmx.ReadOnly()) {
    const CmRange before = cmx.GetSel(false);
    cmx.ExecuteCmd(WORDLEFT);
    const QString hotKey = cmx.CurrentWord();
    const CmPosition dots = cmx.CurrentPosition();
    const CmRange range = cmx.CurrentWordRange();
    if (range.EndColNo == dots.ColNo && manager.isHotKey(languageIndex, hotKey)) {
      const QString text = templateText(cmx, manager, languageIndex, hotKey, range, expand);
      const EditBlock block(cmx);
      cmx.SetSel(caretAt(dots));
      cmx.ExecuteCmd(WORDRIGHTEXTEND);
      cmx.ReplaceSel(QStringLiteral(" "));
      putIn(cmx, text, range);
      busy.reset();   // the caret's new place is news for everybody, once the block ends
      cmx.setFocus();
      return false;
    }
    cmx.SetSel(before);
  }
  return manager.isHotKey(languageIndex, word);
}

bool ExpandTemplate(CodeMax& cmx, ucCM& manager, int languageIndex, const ExpandText& expand) {
  const QString word = cmx.CurrentWord();
  if (word.isEmpty() || languageIndex <= 0 || cmx.ReadOnly() || !manager.isHotKey(languageIndex, word)) return false;
  const CmRange range = cmx.CurrentWordRange();
  const QString text = templateText(cmx, manager, languageIndex, word, range, expand);
  {
    const EditBlock block(cmx);
    putIn(cmx, text, range);
  }
  cmx.setFocus();
  return true;
}

void UserStringToCode(QString& text, qint64 indentation) {
  const QString blanks(indentation, u' ');
  for (qsizetype from = 1; (from = text.indexOf(kCrLf, from)) >= 0; from += kCrLf.size()) text.insert(from + kCrLf.size(), blanks);
}

bool NextField(CodeMax& cmx, std::optional<text::ByteOffset> limit) {
  Editor& editor = cmx.editor();
  const text::ByteRange within{text::ByteOffset(0), limit.value_or(editor.snapshot().size())};
  const text::Searcher fields(kField.toStdString(), {true, false, false});
  const auto found = fields.forward(editor.snapshot(), editor.selectedRange().end, within).match;
  if (!found) return false;
  const CmPosition begin = editor.positionOf(found->range.begin);
  cmx.SetSel({begin.LineNo, begin.ColNo, begin.LineNo, begin.ColNo + kField.size(), false});
  return true;
}
