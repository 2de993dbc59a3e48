#include "change/CaseFilter.h"

#include <algorithm>

#include "control/edit/TextModel.h"
#include "text/color/EntryMarks.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

QString applyCase(const QString& word, CaseMode mode) {
  QString changed = word;
  switch (mode) {
    case CaseMode::upper: changed = word.toUpper(); break;
    case CaseMode::lower: changed = word.toLower(); break;
    case CaseMode::capitalize: changed = word.left(1).toUpper() + word.mid(1).toLower(); break;
    case CaseMode::none: break;
  }
  return sameInk(changed, word) ? changed : word;   // a letter without a single counterpart keeps its word as it is
}

namespace {

// The same for bytes.
std::string applyCase(std::string_view word, CaseMode mode) {
  if (std::any_of(word.begin(), word.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; }))
    return fromQString(applyCase(toQString(word), mode));
  std::string changed(word);
  for (std::size_t i = 0; i < changed.size(); ++i) {
    const bool upper = mode == CaseMode::upper || (mode == CaseMode::capitalize && i == 0);
    if (upper && changed[i] >= 'a' && changed[i] <= 'z') changed[i] = static_cast<char>(changed[i] - 32);
    if (!upper && changed[i] >= 'A' && changed[i] <= 'Z') changed[i] = static_cast<char>(changed[i] + 32);
  }
  return changed;
}

bool isWordChar(std::string_view bytes, std::size_t at, int* length) {
  const auto c = text::decode(bytes.substr(at));
  *length = c.bytes;
  return !c.bad && text::classOf(c.code) == text::CharClass::word;
}

// Rewrites the words of plain text between two tokens.
std::string filterPlain(std::string_view bytes, CaseMode mode) {
  std::string out;
  for (std::size_t at = 0; at < bytes.size();) {
    if (bytes[at] == '\\') {   // an escaped identifier
      std::size_t end = at + 1;
      while (end < bytes.size() && bytes[end] != ' ' && bytes[end] != '\t' && bytes[end] != '\\') ++end;
      out += bytes.substr(at, end - at);
      at = end;
      continue;
    }
    int length = 0;
    std::size_t end = at;
    while (end < bytes.size() && isWordChar(bytes, end, &length)) end += static_cast<std::size_t>(length);
    if (end == at) {
      out += bytes.substr(at, static_cast<std::size_t>(length));
      at += static_cast<std::size_t>(length);
      continue;
    }
    const auto word = bytes.substr(at, end - at);
    const bool number = (word[0] >= '0' && word[0] <= '9') || (at > 0 && bytes[at - 1] == '\'');
    out += number ? std::string(word) : applyCase(word, mode);
    at = end;
  }
  return out;
}

}   // namespace

QString filterCase(const QString& line, CaseTarget target, CaseMode mode, const text::Highlighter& highlighter,
                   text::LineState* state) {
  const std::string bytes = fromQString(line);
  const std::string_view all(bytes);
  std::vector<text::Token> tokens;
  *state = highlighter.scanLine(all, *state, &tokens);
  std::string out;
  std::size_t plain = 0;   // start of the text behind the last token that is not to be touched
  const auto flush = [&](std::size_t to) {
    const auto part = all.substr(plain, to - plain);
    out += target == CaseTarget::mainText ? filterPlain(part, mode) : std::string(part);
    plain = to;
  };
  for (const auto& token : tokens) {
    if (token.kind == text::TokenKind::text || token.kind == text::TokenKind::operatorSign) continue;
    const auto begin = static_cast<std::size_t>(token.begin), length = static_cast<std::size_t>(token.length);
    const auto part = all.substr(begin, length);
    const bool library = token.kind == text::TokenKind::keyword && text::isLibraryWord(highlighter, part);
    if (library && !highlighter.tables().caseSensitive) continue;   // a name like those of the text
    flush(begin);
    const bool rewrite = target == CaseTarget::keywords && token.kind == text::TokenKind::keyword && !library;
    out += rewrite ? applyCase(part, mode) : std::string(part);
    plain = begin + length;
  }
  flush(all.size());
  return toQString(out);
}

bool sameInk(QStringView a, QStringView b) {
  qsizetype i = 0, j = 0;
  const auto skip = [](QStringView s, qsizetype& at) {
    while (at < s.size() && s[at].isSpace()) ++at;
  };
  for (;;) {
    while (i < a.size() && j < b.size() && a[i] == b[j]) ++i, ++j;
    skip(a, i);
    skip(b, j);
    if (i == a.size() || j == b.size()) return i == a.size() && j == b.size();
    if (a[i].toCaseFolded() != b[j].toCaseFolded()) return false;
    ++i;
    ++j;
  }
}
