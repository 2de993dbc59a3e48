#include "change/indent/StandingLines.h"

#include <algorithm>

#include "control/edit/TextModel.h"
#include "text/line/LineReader.h"

namespace {

constexpr std::size_t none = std::string_view::npos;
constexpr std::size_t mostOfRawWord = 16;

bool wordByte(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; }

bool escaped(std::string_view line, std::size_t at) {
  std::size_t slashes = 0;
  while (slashes < at && line[at - 1 - slashes] == '\\') ++slashes;
  return slashes % 2 == 1;
}

}   // namespace

StandingLines::StandingLines(const text::Highlighter* highlighter, const FormatRules& rules)
    : highlighter_(highlighter && highlighter->valid() ? highlighter : nullptr), rules_(rules) {
  for (const QStringList& signs : {rules_.raw, rules_.lines, rules_.here, rules_.rest, rules_.atLine})
    for (const QString& sign : signs) openers_.push_back(fromQString(sign));
  if (highlighter_) escape_ = highlighter_->tables().escapeChar;
  if (!rules_.lines.isEmpty()) openers_.push_back("\\");   // \" begins no string
}

void StandingLines::restart() {
  state_ = 0;
  close_.clear();
  here_.clear();
  rest_ = column_ = false;
}

// The position behind the delimiter that closes the open string; none: it continues.
std::size_t StandingLines::closeAt(std::string_view line, std::size_t from) const {
  for (std::size_t at = line.find(close_, from); at != none; at = line.find(close_, at + 1)) {
    std::size_t slashes = 0;
    while (escapes_ && at > from + slashes && line[at - 1 - slashes] == '\\') ++slashes;
    if (slashes % 2 == 0) return at + close_.size();
  }
  return none;
}

// A line of a here-document, or a line behind the end of the code.
bool StandingLines::standsWhole(std::string_view line) {
  if (rest_) return true;
  if (here_.empty()) return false;
  while (line.ends_with('\r')) line.remove_suffix(1);
  const HereDocument& document = here_.front();
  while (!line.empty() && ((document.strips && line[0] == '\t') || (document.strips == '~' && line[0] == ' ')))
    line.remove_prefix(1);
  if (line == document.word) here_.pop_front();
  return true;
}

bool StandingLines::mayHold(std::string_view line) const {
  const auto isIn = [&](const std::string& sign) { return line.find(sign) != none; };
  while (line.ends_with('\r')) line.remove_suffix(1);
  return line.ends_with('\\') || (!escape_.empty() && line.ends_with(escape_)) ||
         std::any_of(openers_.begin(), openers_.end(), isIn);
}

bool StandingLines::mayHold(const text::Snapshot& text, std::int64_t lines) const {
  std::string bytes = "\\";   // a line that holds has one of them; most texts lack them
  if (!escape_.empty()) bytes += escape_.back();
  for (const std::string& sign : openers_) bytes += sign.front();
  bool any = false;
  const text::ByteOffset end = lines < text.lineCount() ? text.lineStart(text::LineNo(lines)) : text.size();
  for (text::ByteOffset at; at < end && !any;) {
    const std::string_view chunk = text.chunkAt(at);
    any = std::any_of(bytes.begin(), bytes.end(), [&](char byte) { return chunk.find(byte) != none; });
    at = at + static_cast<std::int64_t>(chunk.size());
  }
  if (!any) return false;
  text::LineReader reader(text);
  std::string_view line;
  for (std::int64_t i = 0; i < lines && reader.next(&line); ++i)
    if (mayHold(line)) return true;
  return false;
}

// Whether a raw string begins before a token, or the token is a string that continues in the next line. Such a string becomes open.
bool StandingLines::opensAt(std::string_view line, const text::Token& token, std::size_t from) {
  const auto begin = static_cast<std::size_t>(token.begin);
  const std::string_view rest = line.substr(begin);
  for (const QString& sign : rules_.raw) {   // R"
    const std::string opener = fromQString(sign);
    const std::size_t before = opener.size() - 1;
    if (begin < from + before || line.substr(begin - before, opener.size()) != opener) continue;
    const std::size_t bracket = rest.substr(0, mostOfRawWord + 2).find('(');
    if (bracket == none) continue;
    close_ = ')' + std::string(rest.substr(1, bracket - 1)) + '"';
    escapes_ = false;
    return true;
  }
  for (const QString& sign : rules_.lines) {
    const std::string delimiter = fromQString(sign);
    if (!rest.starts_with(delimiter) || token.begin + token.length < static_cast<std::int64_t>(line.size())) continue;
    close_ = delimiter;
    escapes_ = !rules_.plain.contains(sign) && !highlighter_->tables().escapeChar.empty();
    if (closeAt(line, begin + delimiter.size()) == none) return true;
    close_.clear();
  }
  return false;
}

void StandingLines::noteHereDocuments(std::string_view line, std::size_t from, const std::vector<text::Token>& tokens) {
  const auto isText = [&](std::size_t at) {
    return std::any_of(tokens.begin(), tokens.end(), [&](const text::Token& token) {
      const bool covers = token.kind == text::TokenKind::comment || token.kind == text::TokenKind::string;
      return covers && token.begin <= static_cast<std::int64_t>(at) && static_cast<std::int64_t>(at) < token.begin + token.length;
    });
  };
  for (const QString& opener : rules_.here) {
    const std::string sign = fromQString(opener);
    for (std::size_t at = line.find(sign, from); at != none; at = line.find(sign, at + sign.size())) {
      std::size_t p = at + sign.size();
      if (line.substr(p).starts_with(sign[0])) {   // "<<<"
        while (p < line.size() && line[p] == sign[0]) ++p;
        at = p - sign.size();
        continue;
      }
      const std::size_t before = line.find_last_not_of(" \t", at == 0 ? 0 : at - 1);
      const bool number =
          at > 0 && before != none && ((line[before] >= '0' && line[before] <= '9') || line[before] == ')' || line[before] == ']');
      const bool counts = line.substr(0, at).rfind("((") != none && line.find("))", at) != none;   // a shift
      if (isText(at) || (number && (before + 1 < at || p >= line.size() || line[p] == ' ')) || counts) continue;
      HereDocument document;
      if (p < line.size() && (line[p] == '-' || line[p] == '~')) document.strips = line[p++];
      while (p < line.size() && (line[p] == ' ' || line[p] == '\t')) ++p;
      const char quote = p < line.size() && (line[p] == '"' || line[p] == '\'') ? line[p] : '\0';
      p += quote || line.substr(p).starts_with('\\');
      std::size_t end = p;
      while (end < line.size() && (quote ? line[end] != quote : wordByte(line[end]))) ++end;
      document.word = line.substr(p, end - p);
      if (quote ? end < line.size() : !document.word.empty() && !(line[p] >= '0' && line[p] <= '9')) here_.push_back(document);
    }
  }
}

void StandingLines::scan(std::string_view line, std::vector<text::Token>* tokens) {
  if (tokens) tokens->clear();
  code_ = true;
  const auto size = static_cast<std::int64_t>(line.size());
  const text::LinePoint start = this->start();
  stays_ = !close_.empty() || (start.inside == text::LinePoint::string && start.index != none);   // else only a command continues
  if (standsWhole(line)) {
    stays_ = true;
    code_ = false;
    return;
  }
  column_ = column_ && inComment();
  for (const QString& sign : rules_.atLine)
    if (state_ == 0 && close_.empty() && line.starts_with(fromQString(sign))) column_ = true;
  stays_ = stays_ || column_;
  if (!highlighter_) return;
  if (!tokens && close_.empty() && !mayHold(line)) {
    state_ = highlighter_->scanLine(line, state_, nullptr);
    return;
  }
  std::vector<text::Token> own;
  if (!tokens) tokens = &own;

  std::size_t from = 0;   // behind the strings found so far
  if (!close_.empty()) {
    from = closeAt(line, 0);
    tokens->push_back({0, from == none ? size : static_cast<std::int64_t>(from), text::TokenKind::string});
    if (from == none) return;
    close_.clear();
    state_ = 0;
  }
  std::vector<text::Token> found;
  std::string covered;
  for (bool again = true; again;) {
    again = false;
    if (from > 0) covered = std::string(from, ',') + std::string(line.substr(from));
    state_ = highlighter_->scanLine(from > 0 ? std::string_view(covered) : line, from > 0 ? text::LineState(0) : state_, &found);
    for (const text::Token& token : found) {
      const auto begin = static_cast<std::size_t>(token.begin);
      if (begin < from) continue;
      if (token.kind == text::TokenKind::string && !rules_.lines.isEmpty() && begin > from && escaped(line, begin)) {
        from = begin + 1;   // \" begins no string
        again = true;
        break;
      }
      if (token.kind != text::TokenKind::string || (begin == 0 && start.inside != text::LinePoint::nothing) ||
          !opensAt(line, token, from)) {
        tokens->push_back(token);
        continue;
      }
      from = closeAt(line, begin + 1);
      const std::int64_t end = from == none ? size : static_cast<std::int64_t>(from);
      tokens->push_back({token.begin, end - token.begin, text::TokenKind::string});
      state_ = 0;
      if (from == none) break;
      close_.clear();
      again = true;
      break;
    }
  }
  noteHereDocuments(line, 0, *tokens);
  rest_ = std::any_of(rules_.rest.begin(), rules_.rest.end(), [&](const QString& word) { return line == fromQString(word); });
}
