#include "text/find/Needles.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace text {

namespace {

using Any = std::vector<std::string>;   // one of them stands in every match; empty: nothing is known
constexpr std::size_t kMost = 16;

std::size_t shortest(const Any& any) {
  std::size_t length = any.empty() ? 0 : any[0].size();
  for (const auto& text : any) length = std::min(length, text.size());
  return length;
}

// The one that costs less to look for.
void better(Any* best, Any other) {
  if (other.empty() || other.size() > kMost) return;
  if (best->empty() || shortest(other) > shortest(*best) || (shortest(other) == shortest(*best) && other.size() < best->size()))
    *best = std::move(other);
}

// Reads an expression as far as it is made of plain things; everything else makes the answer unknown.
class Reader {
 public:
  Reader(std::string_view pattern, bool matchCase) : p_(pattern), matchCase_(matchCase) {}
  Any read() {
    Any any = alternatives(0);
    return failed_ || at_ < p_.size() ? Any{} : any;
  }

 private:
  bool more() const { return !failed_ && at_ < p_.size(); }
  char next() const { return at_ < p_.size() ? p_[at_] : '\0'; }
  Any fail() { return failed_ = true, Any{}; }

  Any alternatives(int depth) {
    if (depth > 50) return fail();
    Any all;
    bool known = true;
    for (;;) {
      const Any one = sequence(depth);
      known = known && !one.empty();
      all.insert(all.end(), one.begin(), one.end());
      if (!more() || next() != '|') break;
      ++at_;
    }
    return known && all.size() <= kMost ? all : Any{};
  }

  Any sequence(int depth) {
    Any best;
    std::string run;
    const auto flush = [&] {
      if (!run.empty()) better(&best, {run});
      run.clear();
    };
    while (more() && next() != '|' && next() != ')') {
      if (next() == '(') {
        flush();
        const Any inside = group(depth);
        if (repeats() != never) better(&best, inside);
        continue;
      }
      const std::optional<char> literal = atom();
      const Times times = repeats();
      if (literal && times != never) run += *literal;
      if (!literal || times != once) flush();
    }
    flush();
    return best;
  }

  Any group(int depth) {
    ++at_;
    if (next() == '*') return fail();
    if (next() == '?') {
      if (p_.substr(at_, 2) != "?:") return fail();
      at_ += 2;
    }
    Any inside = alternatives(depth + 1);
    if (next() != ')') return fail();
    ++at_;
    return inside;
  }

  // One element: the character that it is, or none where it may be several.
  std::optional<char> atom() {
    const char c = p_[at_++];
    if (c == '[') return characterClass();
    if (c == '\\') return escape();
    if (c == '.' || c == '^' || c == '$' || c == '*' || c == '+' || c == '?' || c == '{') return std::nullopt;
    return plain(c);
  }

  std::optional<char> plain(char c) const {
    if (static_cast<unsigned char>(c) >= 0x80 || c == '\n' || c == '\r') return std::nullopt;
    // Without case these two have forms beyond ASCII.
    if (!matchCase_ && (c == 'k' || c == 'K' || c == 's' || c == 'S')) return std::nullopt;
    return c;
  }

  std::optional<char> escape() {
    if (at_ >= p_.size()) return failed_ = true, std::nullopt;
    const char c = p_[at_++];
    if (c == 't') return '\t';
    if (static_cast<unsigned char>(c) < 0x80 && !std::isalnum(static_cast<unsigned char>(c))) return plain(c);
    const bool oneDigit = c >= '1' && c <= '9' && !std::isdigit(static_cast<unsigned char>(next()));
    if (!oneDigit && (c == '\0' || std::string_view("dDwWsSbBhHvVRAZznr").find(c) == std::string_view::npos)) failed_ = true;
    return std::nullopt;
  }

  std::optional<char> characterClass() {
    if (next() == '^') ++at_;
    for (bool first = true; at_ < p_.size(); first = false) {
      const char c = p_[at_++];
      if (c == ']' && !first) return std::nullopt;
      if (c == '[' || (c == '\\' && (at_ >= p_.size() || next() == 'Q' || next() == 'E' || next() == 'c'))) break;
      if (c == '\\') ++at_;
    }
    return failed_ = true, std::nullopt;
  }

  enum Times { once, several, never };   // never: it may be left out
  Times repeats() {
    Times times = once;
    const char c = next();
    if (c == '*' || c == '?') times = never;
    else if (c == '+') times = several;
    else if (c == '{') return braces();
    else return once;
    ++at_;
    lazy();
    return times;
  }
  void lazy() {
    if (next() == '?' || next() == '+') ++at_;
  }
  Times braces() {
    const auto close = p_.find('}', at_);
    if (close == std::string_view::npos) return never;
    const auto inside = p_.substr(at_ + 1, close - at_ - 1);
    if (inside.find_first_not_of("0123456789, ") != std::string_view::npos) return never;   // a brace that is only a brace
    at_ = close + 1;
    lazy();
    return !inside.empty() && inside[0] >= '1' && inside[0] <= '9' ? several : never;
  }

  std::string_view p_;
  bool matchCase_, failed_ = false;
  std::size_t at_ = 0;
};

// The longest part that is the same in every encoding and for every kind of line break.
std::string longestPlain(std::string_view what) {
  std::string_view best;
  for (std::size_t at = 0; at < what.size();) {
    const auto plain = [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != '\n' && c != '\r'; };
    std::size_t end = at;
    while (end < what.size() && plain(what[end])) ++end;
    if (end - at > best.size()) best = what.substr(at, end - at);
    at = end + 1;
  }
  return std::string(best);
}

}   // namespace

std::vector<std::string> neededTexts(std::string_view what, const SearchOptions& options) {
  if (options.regex) return Reader(what, options.matchCase).read();
  std::string plain = longestPlain(what);
  return plain.empty() ? std::vector<std::string>{} : std::vector{std::move(plain)};
}

Needles::Needles(std::string_view what, const SearchOptions& options) {
  for (auto& text : neededTexts(what, options)) any_.emplace_back(std::move(text), options.matchCase);
}

bool Needles::mayMatch(std::string_view bytes) const {
  return any_.empty() || std::any_of(any_.begin(), any_.end(), [&](const Literal& one) { return one.find(bytes, 0).has_value(); });
}

}   // namespace text
