#include "change/indent/LineScanner.h"

#include "control/edit/TextModel.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

int LineScanner::columnsOf(const QString& blanks) const {
  const std::string bytes = fromQString(blanks);
  return static_cast<int>(text::displayColumn(bytes, static_cast<std::int64_t>(bytes.size()), tabSize_).value);
}

// Caches the look-up of each word.
const Piece& LineScanner::known(std::string_view bytes, bool isWord) {
  auto found = known_.find(bytes);
  if (found == known_.end()) found = known_.emplace(std::string(bytes), Piece(toQString(bytes), isWord, words_)).first;
  return found->second;
}

// Length in bytes of a character literal such as '(' that begins here, for languages whose definition does not list such strings;
// 0: there is none. The first quote of "bit'('1')" and "'{'0, '1}" does not begin one.
static std::size_t characterLiteral(std::string_view line, std::size_t at) {
  if (at + 2 >= line.size() || line[at + 2] != '\'') return 0;
  const auto isName = [&](std::size_t i) {
    return i < line.size() && text::classOf(static_cast<unsigned char>(line[i])) == text::CharClass::word;
  };
  const bool attribute = at > 0 && (isName(at - 1) || line[at - 1] == ')' || line[at - 1] == ']');
  return attribute || isName(at + 3) || (at + 3 < line.size() && line[at + 3] == '{') ? 0 : 3;
}

Pieces LineScanner::scan(const QString& line) {
  const std::string bytes = fromQString(line);
  const std::string_view all(bytes);
  std::vector<text::Token> tokens;
  lines_.scan(all, &tokens);
  Pieces pieces;
  if (!lines_.isCode()) return pieces;
  std::int64_t behind = -1;   // start of the last comment behind code
  auto token = tokens.begin();
  for (std::size_t at = 0; at < all.size();) {
    const auto here = static_cast<std::int64_t>(at);
    while (token != tokens.end() && token->begin + token->length <= here) ++token;
    if (token != tokens.end() && token->begin <= here &&
        (token->kind == text::TokenKind::comment || token->kind == text::TokenKind::string)) {
      if (token->kind == text::TokenKind::string) pieces.push_back(known("\"", false));
      else if (!pieces.empty()) behind = here;
      at = static_cast<std::size_t>(token->begin + token->length);
      continue;
    }
    const auto c = text::decode(all.substr(at));
    const auto kind = text::classOf(c.code);
    std::size_t end = at + static_cast<std::size_t>(c.bytes);
    while (kind == text::CharClass::word && end < all.size()) {
      const auto following = text::decode(all.substr(end));
      if (text::classOf(following.code) != kind) break;
      end += static_cast<std::size_t>(following.bytes);
    }
    if (const std::size_t literal = c.code == '\'' ? characterLiteral(all, at) : 0) {
      pieces.push_back(known("\"", false));
      at += literal;
      continue;
    }
    if (kind != text::CharClass::blank) pieces.push_back(known(all.substr(at, end - at), kind == text::CharClass::word));
    at = end;
  }
  trailing_ = behind < 0 ? -1 : static_cast<int>(text::displayColumn(bytes, behind, tabSize_).value);
  return pieces;
}
