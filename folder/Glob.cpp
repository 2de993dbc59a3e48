#include "folder/Glob.h"

#include <algorithm>
#include <array>
#include <utility>

namespace folder {
namespace {

constexpr std::size_t kNoPlace = std::string_view::npos;

unsigned char lower(unsigned char c) { return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + 32) : c; }
unsigned char upper(unsigned char c) { return c >= 'a' && c <= 'z' ? static_cast<unsigned char>(c - 32) : c; }
bool isLower(unsigned char c) { return c >= 'a' && c <= 'z'; }
bool isUpper(unsigned char c) { return c >= 'A' && c <= 'Z'; }
bool isDigit(unsigned char c) { return c >= '0' && c <= '9'; }
bool isGraph(unsigned char c) { return c > 32 && c < 127; }
bool isAlnum(unsigned char c) { return isLower(c) || isUpper(c) || isDigit(c); }

struct Class {
  std::string_view name;
  bool (*holds)(unsigned char);
};
constexpr std::array<Class, 12> kClasses{{
    {"alnum", isAlnum},
    {"alpha", [](unsigned char c) { return isLower(c) || isUpper(c); }},
    {"blank", [](unsigned char c) { return c == ' ' || c == '\t'; }},
    {"cntrl", [](unsigned char c) { return c < 32 || c == 127; }},
    {"digit", isDigit},
    {"graph", isGraph},
    {"lower", isLower},
    {"print", [](unsigned char c) { return c >= 32 && c < 127; }},
    {"punct", [](unsigned char c) { return isGraph(c) && !isAlnum(c); }},
    {"space", [](unsigned char c) { return c == ' ' || (c >= 9 && c <= 13); }},
    {"upper", isUpper},
    {"xdigit", [](unsigned char c) { return isDigit(c) || (lower(c) >= 'a' && lower(c) <= 'f'); }},
}};

// One byte of a name against the set that begins at pattern[*at] == '['. Moves *at behind the set. A set without its end holds nothing.
bool inSet(std::string_view pattern, std::size_t* at, unsigned char c, bool foldCase) {
  std::size_t i = *at + 1;
  const auto here = [&] { return i < pattern.size() ? static_cast<unsigned char>(pattern[i]) : '\0'; };
  const bool negated = here() == '!' || here() == '^';
  if (negated) ++i;
  bool found = false;
  unsigned char before = 0;   // what a range may begin with
  const auto range = [&](unsigned char from, unsigned char to) {
    found = found || (from <= c && c <= to);
    if (foldCase) found = found || (from <= lower(c) && lower(c) <= to) || (from <= upper(c) && upper(c) <= to);
  };
  for (bool first = true; first || here() != ']'; first = false, ++i) {
    if (i >= pattern.size()) return false;
    unsigned char member = here();
    if (member == '\\') {
      if (++i >= pattern.size()) return false;
      member = here();
      range(member, member);
    } else if (member == '-' && before != 0 && i + 1 < pattern.size() && pattern[i + 1] != ']') {
      ++i;
      if (here() == '\\' && ++i >= pattern.size()) return false;
      range(before, here());
      member = 0;
    } else if (member == '[' && i + 1 < pattern.size() && pattern[i + 1] == ':') {
      const std::size_t end = pattern.find(']', i + 2);
      if (end == kNoPlace) return false;
      if (end < i + 3 || pattern[end - 1] != ':') {   // no class: "[" itself
        range('[', '[');
      } else {
        const std::string_view name = pattern.substr(i + 2, end - i - 3);
        const Class* known = nullptr;
        for (const Class& one : kClasses)
          if (one.name == name) known = &one;
        if (!known) return false;
        found = found || known->holds(c) || (foldCase && (known->holds(lower(c)) || known->holds(upper(c))));
        i = end;
        member = 0;
      }
    } else {
      range(member, member);
    }
    before = member;
  }
  *at = i + 1;
  return found != negated && c != '/';
}

// One byte against what stands at pattern[*at], which is no star; moves *at behind that.
bool oneFits(std::string_view pattern, std::size_t* at, unsigned char c, bool foldCase) {
  unsigned char p = static_cast<unsigned char>(pattern[*at]);
  if (p == '[') return inSet(pattern, at, c, foldCase);
  if (p == '?') return ++*at, c != '/';
  if (p == '\\') {
    if (*at + 1 >= pattern.size()) return false;
    p = static_cast<unsigned char>(pattern[++*at]);
  }
  ++*at;
  return p == c || (foldCase && lower(p) == lower(c));
}

}   // namespace

std::size_t literalLength(std::string_view pattern) {
  const std::size_t end = pattern.find_first_of("*?[\\");
  return end == kNoPlace ? pattern.size() : end;
}

// A star that failed takes one byte more and what is behind it is tried again; only the last "*" and the last "**" need that,
// since an earlier one could only give the later one less to choose from.
bool globMatches(std::string_view pattern, std::string_view name, bool foldCase) {
  const std::size_t literal = literalLength(pattern);
  std::size_t p = 0, n = 0;
  std::size_t star = kNoPlace, starAt = 0;   // pattern behind the last "*", and where in the name it ends
  std::size_t deep = kNoPlace, deepAt = 0;   // the same for "**/"
  for (;;) {
    bool fits = false;
    if (p == pattern.size()) {
      if (n == name.size()) return true;
    } else if (pattern[p] == '*') {
      std::size_t end = pattern.find_first_not_of('*', p);
      if (end == kNoPlace) end = pattern.size();
      const std::string_view rest = pattern.substr(end);
      // Version control lets "**" count as a part of its own behind plain text too ("foo**/bar").
      const bool whole = end - p >= 2 && (p == literal || pattern[p - 1] == '/');
      if (whole && rest.empty()) return true;
      if (whole && (rest.starts_with('/') || rest.starts_with("\\/"))) {
        deep = end + (rest[0] == '/' ? 1 : 2);
        deepAt = n;
        star = kNoPlace;
        p = deep;
        fits = rest[0] == '/';   // "\/" is a slash that must be there
      } else {
        star = p = end;
        starAt = n;
        fits = true;
      }
    } else if (n < name.size() && oneFits(pattern, &p, static_cast<unsigned char>(name[n]), foldCase)) {
      ++n;
      fits = true;
    }
    if (fits) continue;
    if (star != kNoPlace && starAt < name.size() && name[starAt] != '/') {
      p = star;
      n = ++starAt;
    } else if (deep != kNoPlace) {
      const std::size_t slash = name.find('/', deepAt);
      if (slash == kNoPlace) return false;
      star = kNoPlace;
      p = deep;
      n = deepAt = slash + 1;
    } else {
      return false;
    }
  }
}

Masks::Masks(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    std::string word;
    bool quoted = false;
    for (; at < text.size(); ++at) {
      const char c = text[at];
      if (c == '"') quoted = !quoted;
      else if (!quoted && (c == ',' || c == ';' || c == ' ' || c == '\t')) break;
      else word += c;
    }
    ++at;
    Mask mask;
    mask.not_ = word.starts_with('!');
    if (mask.not_) word.erase(0, 1);
    if (word.starts_with("./")) word.erase(0, 2);
    if (word.empty()) continue;
    if (word.ends_with('/')) word += "**";
    mask.path = word.find('/') != std::string::npos;
    if (word.starts_with('/')) word.erase(0, 1);
    else if (mask.path) word.insert(0, "**/");
    mask.pattern = std::move(word);
    onlyNot_ = onlyNot_ && mask.not_;
    masks_.push_back(std::move(mask));
  }
  std::stable_partition(masks_.begin(), masks_.end(), [](const Mask& mask) { return !mask.not_; });
}

bool Masks::fit(std::string_view relativePath) const {
  const std::string_view name = relativePath.substr(relativePath.rfind('/') + 1);
  bool in = onlyNot_;
  for (const Mask& mask : masks_) {
    if (in != mask.not_) continue;   // it could change nothing
    if (globMatches(mask.pattern, mask.path ? relativePath : name, true)) in = !mask.not_;
  }
  return in;
}

}   // namespace folder
