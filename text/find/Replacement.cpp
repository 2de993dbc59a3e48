#include "text/find/Replacement.h"

#include <algorithm>

#include "text/line/CharTables.h"
#include "text/line/Chars.h"

namespace text {

namespace {

bool digit(std::string_view s, std::size_t i) { return i < s.size() && s[i] >= '0' && s[i] <= '9'; }

}   // namespace

std::optional<std::string> expandReplacement(const Snapshot& text, const Match& match, std::string_view replacement,
                                             const std::function<std::optional<int>(std::string_view)>& groupByName,
                                             std::string* error, const NewLines& newLines) {
  const auto fail = [error](std::string why) {
    if (error) *error = std::move(why);
    return std::nullopt;
  };
  const auto groups = std::max<std::size_t>(match.groups.size(), 1);
  std::string out;
  const auto put = [&](std::size_t n) {
    const ByteRange range = n < match.groups.size() ? match.groups[n] : match.range;
    if (range.begin >= ByteOffset(0)) out += text.bytes(range);
  };
  for (std::size_t i = 0; i < replacement.size(); ++i) {
    const char c = replacement[i], next = i + 1 < replacement.size() ? replacement[i + 1] : '\0';
    if (c == '\\' && (next == 'n' || next == 't' || next == '\\')) {
      if (next == 'n') out += newLines.at(text, text.lineAt(match.range.begin));
      else out += next == 't' ? '\t' : '\\';
      ++i;
    } else if (c == '$' && next == '$') {
      out += '$';
      ++i;
    } else if (c == '$' && digit(replacement, i + 1)) {
      // Two digits if there is such a group, else one: $12 may be group 1 and "2".
      std::size_t n = static_cast<std::size_t>(next - '0');
      i += 1;
      if (digit(replacement, i + 1)) {
        const std::size_t two = 10 * n + static_cast<std::size_t>(replacement[i + 1] - '0');
        if (two < groups) {
          n = two;
          i += 1;
        }
      }
      if (n >= groups) return fail("The expression has no group " + std::to_string(n) + ".");
      put(n);
    } else if (c == '$' && next == '{') {
      const auto close = replacement.find('}', i + 2);
      if (close == std::string_view::npos) return fail("A closing brace is missing behind \"${\".");
      const auto name = replacement.substr(i + 2, close - i - 2);
      std::size_t n = groups;
      if (!name.empty() && name.size() <= 4 && std::all_of(name.begin(), name.end(), [](char d) { return d >= '0' && d <= '9'; }))
        n = static_cast<std::size_t>(std::stoi(std::string(name)));
      else if (const auto number = groupByName(name)) n = static_cast<std::size_t>(*number);
      if (n >= groups) return fail("The expression has no group \"" + std::string(name) + "\".");
      put(n);
      i = close;
    } else {
      out += c;
    }
  }
  return out;
}

std::string withBreaks(const Snapshot& text, ByteOffset at, std::string_view replacement, const NewLines& newLines) {
  if (replacement.find('\n') == std::string_view::npos) return std::string(replacement);
  const std::string_view lineBreak = newLines.at(text, text.lineAt(at));
  std::string out;
  for (std::size_t i = 0; i < replacement.size(); ++i) {
    if (replacement.substr(i, 2) == "\r\n") ++i;
    if (replacement[i] == '\n') out += lineBreak;
    else out += replacement[i];
  }
  return out;
}

std::string inCaseOf(std::string_view found, std::string_view replacement) {
  int uppers = 0, lowers = 0;
  bool firstUpper = false;
  for (std::string_view rest = found; !rest.empty();) {
    const Char c = decode(rest);
    rest.remove_prefix(static_cast<std::size_t>(c.bytes));
    if (c.bad) continue;
    const bool upper = toLower(c.code) != c.code, lower = toUpper(c.code) != c.code;
    if (upper && uppers + lowers == 0) firstUpper = true;
    uppers += upper;
    lowers += lower && !upper;
  }
  enum { asIs, upper, lower, capitalised } shape = asIs;
  if (uppers > 1 && lowers == 0) shape = upper;
  else if (uppers == 0 && lowers > 0) shape = lower;
  else if (uppers == 1 && firstUpper) shape = capitalised;
  if (shape == asIs) return std::string(replacement);
  std::string out;
  bool first = true;
  for (std::string_view rest = replacement; !rest.empty();) {
    const Char c = decode(rest);
    const auto bytes = rest.substr(0, static_cast<std::size_t>(c.bytes));
    rest.remove_prefix(bytes.size());
    const bool up = shape == upper || (shape == capitalised && first);
    if (c.bad) out += bytes;
    else out += encode(up ? toUpper(c.code) : toLower(c.code));
    if (!c.bad && toUpper(c.code) != toLower(c.code)) first = false;
  }
  return out;
}

}   // namespace text
