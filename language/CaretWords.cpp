#include "language/CaretWords.h"

#include <algorithm>
#include <map>
#include <optional>

#include "base/Program.h"
#include "base/Strings.h"
#include "control/CodeMax.h"
#include "control/edit/Carets.h"
#include "control/find/UsersSearch.h"
#include "language/FieldWalk.h"
#include "language/FormatRules.h"
#include "language/ucCM.h"
#include "text/line/Chars.h"
#include "text/line/WordNear.h"

namespace {

const QString kField = QStringLiteral("$$");

bool holds(const QString& list, const QString& word) { return (kCrLf + list).contains(kCrLf + word + kCrLf, Qt::CaseInsensitive); }

// The words of a list. Text behind the last CR LF is ignored.
QStringList wordsOf(const QString& list) {
  QStringList words = list.split(kCrLf);
  words.removeLast();
  return words;
}

// Padded on the left with blanks to a width, never cut.
QString formatted(const QString& word, qsizetype width) { return word.rightJustified(width, u' '); }

CmRange caretAt(const CmPosition& at) { return {at.LineNo, at.ColNo, at.LineNo, at.ColNo, false}; }

constexpr qsizetype kLongestWord = 128;   // longer words of a list are never found at the caret

// A word of a list and its position in the text.
struct ListedWord {
  QString text;   // as in the list
  text::ByteRange range;
};

bool isWordChar(QChar c) { return text::classOf(c.unicode()) == text::CharClass::word; }

// Whether the word at `at` of `line` stands alone. No letter continues it at an end that is a letter; a sign such as "-eq" is not a
// part of "a-eq"; and no longer operator of the language covers it ("<" in "<=").
bool standsAlone(const QString& line, qsizetype at, const QString& word, const QStringList& operators) {
  const qsizetype end = at + word.size();
  const bool before = at > 0 && isWordChar(line[at - 1]), behind = end < line.size() && isWordChar(line[end]);
  if (isWordChar(word.back()) && behind) return false;
  if (isWordChar(word.front())) return !before;
  if (std::any_of(word.begin(), word.end(), isWordChar)) return !before || word[0] == u'.' || word[0] == u'\'';
  for (const QString& sign : operators)
    for (qsizetype from = end - sign.size(); from >= 0 && from <= at && sign.size() > word.size(); ++from)
      if (from + sign.size() >= end && QStringView(line).mid(from, sign.size()) == sign) return false;
  return true;
}

// The longest listed word that the caret touches. Of words of equal length, the current word.
std::optional<ListedWord> listedWordAt(CodeMax& cmx, const clsLang& language) {
  const Editor& editor = cmx.editor();
  const text::Snapshot& text = editor.snapshot();
  const text::ByteOffset caret = editor.selection().caret;
  const text::LineNo number = text.lineAt(caret);
  constexpr std::int64_t reach = 4 * (kLongestWord + 1);   // bytes
  const text::ByteOffset from = std::max(text.lineStart(number), caret - reach);
  const text::ByteOffset to = std::min(text.lineEnd(number), caret + reach);
  const QString before = toQString(text.bytes({from, caret})), line = before + toQString(text.bytes({caret, to}));
  const QStringList operators = splitCrLf(language.Operators);
  const text::ByteRange current = text::wordNear(text, caret);
  std::optional<ListedWord> best;
  for (const auto& list : *language.cWordList())
    for (const QString& word : wordsOf(list->WordList)) {
      if (word.isEmpty() || word.size() > kLongestWord || (best && word.size() < best->text.size())) continue;
      for (qsizetype at = std::max<qsizetype>(0, before.size() - word.size()); at <= before.size(); ++at) {
        if (QStringView(line).mid(at, word.size()).compare(word, Qt::CaseInsensitive) != 0 ||
            !standsAlone(line, at, word, operators))
          continue;
        const text::ByteOffset begin = from + static_cast<std::int64_t>(fromQString(line.left(at)).size());
        const text::ByteRange range{begin, begin + static_cast<std::int64_t>(fromQString(line.mid(at, word.size())).size())};
        if (!best || word.size() > best->text.size() || range == current) best = {word, range};
      }
    }
  return best;
}

// Selects the word by the edit control's own search. The user's search options may keep it from finding the word at the caret; then
// the range of the word is used.
CmRange findListedWord(CodeMax& cmx, const CmRange& word, const QString& findText, const QString& replaceText) {
  SearchState users = usersSearch();
  searchState().options = {};
  cmx.SetSel(caretAt({word.StartLineNo, word.StartColNo}));
  cmx.ExecuteCmd(Cmd::WORDENDLEFT);
  cmx.ExecuteCmd(Cmd::SETFINDTEXT, findText);
  cmx.ExecuteCmd(Cmd::SETREPLACETEXT, replaceText);
  cmx.ExecuteCmd(Cmd::FINDNEXT);
  searchState().options = users.options;
  lendSearch(std::move(users));
  const CmRange found = cmx.GetSel(true);
  return found == word ? found : word;
}

QString leadOf(const QString& line) {
  qsizetype end = 0;
  while (end < line.size() && (line[end] == u' ' || line[end] == u'\t')) ++end;
  return line.left(end);
}

// True: the document indents with tabs. No value: unknown. The caret's own line decides first, then the nearest indented line
// above, then below.
std::optional<bool> indentsWithTabs(CodeMax& cmx, qint64 line) {
  constexpr qint64 kAround = 200, kLead = 64;   // lines examined in each direction; bytes of each
  const text::Snapshot text = cmx.editor().snapshot();
  const auto look = [&](qint64 at) -> std::optional<bool> {
    const text::ByteOffset begin = text.lineStart(text::LineNo(at)), end = text.lineEnd(text::LineNo(at));
    const QString start = toQString(text.bytes({begin, std::min(end, begin + kLead)}));
    const QString lead = leadOf(start);
    if (lead.isEmpty() || (lead == start && at != line)) return std::nullopt;
    return lead.contains(u'\t');
  };
  for (qint64 at = line; at >= std::max<qint64>(0, line - kAround); --at)
    if (const auto found = look(at)) return found;
  for (qint64 at = line + 1; at < std::min<qint64>(text.lineCount(), line + kAround); ++at)
    if (const auto found = look(at)) return found;
  return std::nullopt;
}

// The text of a template behind `indentation` blanks, converted to the document's tabs or blanks: the indentation becomes `lead`
// (the beginning of the line itself), each level of the template a tab, or each of its tabs blanks. If tabs have a meaning
// (`asWritten`), the template's own blanks and tabs are kept.
QString asTheDocument(const QString& text, qint64 indentation, const QString& lead, bool tabs, bool asWritten, int tabSize) {
  QStringList lines = text.split(kCrLf);
  const qsizetype from = lines[0].isEmpty() ? 2 : 1;   // see UserStringToCode
  qsizetype level = 0;                                 // blanks of the least indented line of the template
  for (qsizetype i = from; i < lines.size(); ++i) {
    const QString own = leadOf(lines[i].mid(indentation));
    if (!own.isEmpty() && !own.contains(u'\t') && (level == 0 || own.size() < level)) level = own.size();
  }
  const std::string bytes = fromQString(lead);
  const qint64 width = text::displayColumn(bytes, static_cast<std::int64_t>(bytes.size()), tabSize).value;
  const QString begin = tabs && width <= indentation ? lead + QString(indentation - width, u' ') : QString(indentation, u' ');
  for (qsizetype i = from; i < lines.size(); ++i) {
    const QString rest = lines[i].mid(indentation), own = leadOf(rest);
    QString changed = own;
    if (asWritten) changed = own;
    else if (!tabs) changed.replace(u'\t', QString(tabSize, u' '));
    else if (level > 0 && !own.contains(u'\t')) changed = QString(own.size() / level, u'\t') + QString(own.size() % level, u' ');
    lines[i] = begin + changed + rest.mid(own.size());
  }
  return lines.join(kCrLf);
}

// The text of the hot key's template, ready for insertion at `word`.
QString templateText(CodeMax& cmx, ucCM& manager, int languageIndex, const QString& hotKey, const CmRange& word,
                     const ExpandText& expand) {
  QString text = manager.GetUserString(languageIndex, hotKey);
  // "$$name" is a field before "name", not a "$" before the variable "$name".
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
  const auto& languages = manager.Languages();
  if (formatRules(*languages->Item(languageIndex)).tabs)
    return asTheDocument(text, indentation, leadOf(before), true, true, cmx.TabSize());
  const auto tabs = indentsWithTabs(cmx, word.StartLineNo);
  return tabs ? asTheDocument(text, indentation, leadOf(before), *tabs, false, cmx.TabSize()) : text;
}

// Runs the work at the caret, or at each of several as one undo step: then a text that several of them have is expanded once.
void atCarets(CodeMax& cmx, const ExpandText& expand, const std::function<void(const ExpandText&, bool several)>& work) {
  if (!carets::several(cmx.editor())) return work(expand, false);
  std::map<QString, QString> expanded;
  const ExpandText once = [&](QString& text) {
    const auto [known, isNew] = expanded.try_emplace(text, text);
    if (isNew && expand) expand(known->second);
    text = known->second;
  };
  const EditBlock block(cmx);
  carets::oneAfterOther(cmx.editor(), [&] { work(once, true); });
}

// Of several carets, each selects its first field; Tab does not go through the fields.
void putIn(CodeMax& cmx, const QString& text, const CmRange& word, bool several) {
  cmx.SetSel(word);
  const text::ByteOffset start = cmx.editor().selectedRange().begin;
  cmx.ReplaceSel(text);
  const qsizetype field = text.indexOf(kField);
  if (field < 0) return;
  if (!several) FieldWalk::start(cmx, {start, cmx.editor().selectedRange().end});
  const QString before = text.left(field);
  const qsizetype lineStart = before.lastIndexOf(u'\n') + 1;
  const qint64 line = word.StartLineNo + before.count(u'\n');
  const qint64 column = field - lineStart + (lineStart == 0 ? word.StartColNo : 0);
  cmx.SetSel({line, column, line, column + kField.size(), false});
}

bool exchange(CodeMax& cmx, ucCM& manager, int languageIndex, const QString& hotKey, const CmRange& range, const ExpandText& expand,
              bool several) {
  if (languageIndex <= 0 || cmx.ReadOnly() || !manager.isHotKey(languageIndex, hotKey)) return false;
  const QString text = templateText(cmx, manager, languageIndex, hotKey, range, expand);
  {
    const EditBlock block(cmx);
    putIn(cmx, text, range, several);
  }
  cmx.setFocus();
  return true;
}

// Expands the hot key before the two dots at the caret, which become a blank.
bool expandDots(CodeMax& cmx, ucCM& manager, int languageIndex, const ExpandText& expand, bool several,
                std::optional<BusyGuard>& busy) {
  const CmRange before = cmx.GetSel(false);
  if (cmx.CurrentWord() != QLatin1String("..")) return false;
  cmx.ExecuteCmd(Cmd::WORDLEFT);
  const QString hotKey = cmx.CurrentWord();
  const CmPosition dots = cmx.CurrentPosition();
  const CmRange range = cmx.CurrentWordRange();
  if (range.EndColNo != dots.ColNo || !manager.isHotKey(languageIndex, hotKey)) {
    cmx.SetSel(before);
    return false;
  }
  const QString text = templateText(cmx, manager, languageIndex, hotKey, range, expand);
  const EditBlock block(cmx);
  cmx.SetSel(caretAt(dots));
  cmx.ExecuteCmd(Cmd::WORDRIGHTEXTEND);
  cmx.ReplaceSel(QStringLiteral(" "));
  putIn(cmx, text, range, several);
  if (!several) busy.reset();   // the new caret position is notified when the block ends
  cmx.setFocus();
  return true;
}

}   // namespace

bool isInWordList(CodeMax& cmx, const clsLang* language) { return language && listedWordAt(cmx, *language).has_value(); }

void ProcessWordList(CodeMax& cmx, const clsLang* language, int& WordListIndex, bool previous) {
  if (!language || cmx.ReadOnly() || cmx.Language().isEmpty()) return;
  if (carets::several(cmx.editor())) {
    const EditBlock block(cmx);
    return carets::oneAfterOther(cmx.editor(), [&] { ProcessWordList(cmx, language, WordListIndex, previous); });
  }
  const auto listed = listedWordAt(cmx, *language);
  if (!listed) return;
  const QString word = listed->text.toUpper();
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
  const CmPosition from = cmx.editor().positionOf(listed->range.begin), to = cmx.editor().positionOf(listed->range.end);
  const CmRange range = findListedWord(cmx, {from.LineNo, from.ColNo, to.LineNo, to.ColNo, false}, formatted(word, word.size()),
                                       formatted(word, replacement.size()));
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
    bool done = false;
    atCarets(cmx, expand, [&](const ExpandText& once, bool several) {
      done = expandDots(cmx, manager, languageIndex, once, several, busy) || done;
    });
    if (done) return false;
  }
  return manager.isHotKey(languageIndex, word);
}

bool ExpandTemplate(CodeMax& cmx, ucCM& manager, int languageIndex, const ExpandText& expand) {
  bool done = false;
  atCarets(cmx, expand, [&](const ExpandText& once, bool several) {
    const QString word = cmx.CurrentWord();
    done = (!word.isEmpty() && exchange(cmx, manager, languageIndex, word, cmx.CurrentWordRange(), once, several)) || done;
  });
  return done;
}

bool InsertTemplate(CodeMax& cmx, ucCM& manager, int languageIndex, const QString& hotKey, const ExpandText& expand) {
  bool done = false;
  atCarets(cmx, expand, [&](const ExpandText& once, bool several) {
    done = exchange(cmx, manager, languageIndex, hotKey, cmx.GetSel(true), once, several) || done;
  });
  return done;
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
