#include "text/diff/DiffRules.h"

#include "text/line/CharTables.h"
#include "text/line/Chars.h"

namespace text {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }

}   // namespace

BareLines::BareLines(const Snapshot& text, const DiffRules& rules, std::shared_ptr<const Highlighter> comments)
    : text_(text),
      reader_(text),
      blanks_(rules.ignoreBlanks),
      case_(rules.ignoreCase),
      comments_(comments && comments->valid() ? std::move(comments) : nullptr) {}

bool BareLines::next(std::string_view* bare) {
  if (!reader_.next(bare)) return false;
  whole_ = *bare;
  nothing_ = false;
  if (!blanks_ && !case_ && !comments_) return true;
  if (comments_) withoutComments(*bare);
  else bare_ = *bare;
  if (blanks_ || case_) withoutBlanksAndCase();
  if (blanks_ && bare_.empty()) nothing_ = true;
  *bare = bare_;
  return true;
}

void BareLines::to(LineNo line) {
  constexpr std::int64_t kFar = 100;
  if (!comments_ && line < LineNo(text_.lineCount()) && line - reader_.line() > kFar) reader_ = LineReader(text_, line);
  for (std::string_view passed; reader_.line() + 1 < line;)
    if (!(comments_ ? next(&passed) : reader_.next(&passed))) return;
}

// A comment goes with the blanks around it; between two parts of a line one blank stays for it.
void BareLines::withoutComments(std::string_view line) {
  const bool inside = state_ != 0;
  tokens_.clear();
  state_ = comments_->scanLine(line, state_, &tokens_);
  bare_.clear();
  std::size_t at = 0;
  bool any = inside;
  const auto take = [&](std::size_t upTo) {
    std::string_view part = line.substr(at, upTo - at);
    if (any) {
      while (!part.empty() && isBlank(part.front())) part.remove_prefix(1);
      if (!part.empty() && !bare_.empty()) bare_ += ' ';
    }
    bare_ += part;
  };
  for (const Token& token : tokens_) {
    if (token.kind != TokenKind::comment) continue;
    const auto begin = static_cast<std::size_t>(token.begin);
    if (begin > at) take(begin);
    while (!bare_.empty() && isBlank(bare_.back())) bare_.pop_back();
    any = true;
    at = begin + static_cast<std::size_t>(token.length);
  }
  take(line.size());
  nothing_ = any && bare_.empty();
}

void BareLines::withoutBlanksAndCase() {
  std::size_t to = 0;
  bool ascii = true;
  for (const char c : bare_) {
    if (blanks_ && isBlank(c)) continue;
    ascii &= static_cast<unsigned char>(c) < 0x80;
    bare_[to++] = case_ && c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  }
  bare_.resize(to);
  if (ascii) return;
  std::string folded;
  for (std::string_view rest = bare_; !rest.empty();) {
    const Char c = decode(rest);
    const std::string_view own = rest.substr(0, static_cast<std::size_t>(c.bytes));
    rest.remove_prefix(own.size());
    if (blanks_ && !c.bad && c.code >= 0x80 && isBlankChar(c.code)) continue;
    if (case_ && !c.bad) folded += encode(fold(c.code));
    else folded += own;
  }
  bare_ = std::move(folded);
}

}   // namespace text
