#define PCRE2_CODE_UNIT_WIDTH 8
#include "text/find/Regex.h"

#include <pcre2.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <utility>

#include "text/line/Chars.h"

namespace text {

namespace {

template <auto Free>
struct Freer {
  template <class T>
  void operator()(T* p) const {
    Free(p);
  }
};
using Code = std::unique_ptr<pcre2_code, Freer<pcre2_code_free>>;
using CompileContext = std::unique_ptr<pcre2_compile_context, Freer<pcre2_compile_context_free>>;
using MatchContext = std::unique_ptr<pcre2_match_context, Freer<pcre2_match_context_free>>;
using MatchData = std::unique_ptr<pcre2_match_data, Freer<pcre2_match_data_free>>;
using JitStack = std::unique_ptr<pcre2_jit_stack, Freer<pcre2_jit_stack_free>>;

constexpr std::size_t maxStack = 32u << 20;   // of the compiled matcher
constexpr std::uint32_t maxSteps = 10'000'000, maxDepth = 250'000, maxHeapKiB = 256u << 10;
constexpr std::uint32_t cheapSteps = 5'000;   // of an attempt that is not supervised

std::string messageOf(int code) {
  PCRE2_UCHAR buffer[256];
  const int length = pcre2_get_error_message(code, buffer, sizeof buffer);
  return length < 0 ? "error " + std::to_string(code)
                    : std::string(reinterpret_cast<char*>(buffer), static_cast<std::size_t>(length));
}

struct Compiled {
  Code code;
  bool jit = false;
  int error = 0;
  std::size_t errorAt = 0;
};

Compiled compile(const std::string& pattern, std::uint32_t options, bool jit) {
  const CompileContext context(pcre2_compile_context_create(nullptr));
  Compiled result;
  if (!context) {
    result.error = PCRE2_ERROR_NOMEMORY;
    return result;
  }
  pcre2_set_newline(context.get(), PCRE2_NEWLINE_ANYCRLF);
  options |= PCRE2_MULTILINE | PCRE2_ALT_CIRCUMFLEX | PCRE2_NEVER_BACKSLASH_C;
  result.code.reset(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size(), options, &result.error,
                                  &result.errorAt, context.get()));
  if (result.code && jit) result.jit = pcre2_jit_compile(result.code.get(), PCRE2_JIT_COMPLETE | PCRE2_JIT_PARTIAL_HARD) == 0;
  return result;
}

// For ASCII-only bytes an expression means the same without the Unicode modes and runs much faster.
bool samePlain(const std::string& pattern) {
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (static_cast<unsigned char>(pattern[i]) >= 0x80) return false;
    if (pattern[i] == '(' && i + 1 < pattern.size() && pattern[i + 1] == '*') return false;
    if (pattern[i] == '\\' && i + 1 < pattern.size() && std::strchr("xopPXNuU", pattern[++i])) return false;
  }
  return true;
}

// Whether no part of the pattern can match a line break or depend on text behind one.
bool plainlyInLine(const std::string& p) {
  const auto safeEscape = [](char c) {
    return c == 'd' || c == 'w' || c == 'S' || c == 'b' || c == 't' || (c >= '1' && c <= '9') ||
           (c != '\0' && std::ispunct(static_cast<unsigned char>(c)));
  };
  for (std::size_t i = 0; i < p.size(); ++i) {
    if (static_cast<unsigned char>(p[i]) < ' ' && p[i] != '\t') return false;
    if (p[i] == '\\') {
      if (i + 1 == p.size() || !safeEscape(p[++i])) return false;
    } else if (p[i] == '(' && i + 1 < p.size() && (p[i + 1] == '*' || (p[i + 1] == '?' && p.compare(i, 3, "(?:") != 0))) {
      return false;
    } else if (p[i] == '[') {   // a simple character class; its first character may be ']'
      std::size_t end = i + 1;
      if (end < p.size() && p[end] == '^') return false;
      do {
        if (end >= p.size() || static_cast<unsigned char>(p[end]) < ' ' || p[end] == '[') return false;
        if (p[end] == '\\' &&
            (++end >= p.size() || p[end] == 'b' || p[end] == 't' || (p[end] >= '1' && p[end] <= '9') || !safeEscape(p[end])))
          return false;
        ++end;
      } while (end >= p.size() || p[end] != ']');
      i = end;
    }
  }
  return true;
}

// The end of the leading settings, such as (*UCP).
std::size_t settingsOf(const std::string& pattern) {
  std::size_t verbs = 0;
  while (pattern.compare(verbs, 2, "(*") == 0 && verbs + 2 < pattern.size() && pattern[verbs + 2] >= 'A' &&
         pattern[verbs + 2] <= 'Z') {
    const auto close = pattern.find(')', verbs);
    if (close == std::string::npos) break;
    verbs = close + 1;
  }
  return verbs;
}

// Adds look-arounds for word boundaries to the pattern. This only speeds up the search, which checks both ends itself; it does not
// compile behind a comment, for example. It must not be used for a pattern that calls itself as a whole.
std::string asWholeWord(const std::string& pattern) {
  for (const char* whole : {"(?R", "(?0", "\\g<0", "\\g'0"})
    if (pattern.find(whole) != std::string::npos) return pattern;
  const std::string word = "[\\w\\p{M}]";
  const auto verbs = settingsOf(pattern);
  return pattern.substr(0, verbs) + "(?:(?<!" + word + ")|(?!" + word + "))(?:" + pattern.substr(verbs) + "\\E)(?:(?!" + word +
         ")|(?<!" + word + "))";
}

// "\n", and a literal line break in the pattern, match every kind of line break.
class LineEnds {
 public:
  static std::string in(const std::string& pattern) {
    LineEnds walk(pattern);
    const std::string result = walk.rewritten("(?>\\r\\n|(?<!\\r)\\n|\\r)", false);
    return walk.namesCr_ || !walk.namesLf_ ? pattern : result;
  }

 private:
  explicit LineEnds(std::string_view pattern) : p_(pattern), extended_(isExtended(pattern)) {}

  // In an extended pattern line breaks are layout.
  static bool isExtended(std::string_view p) {
    for (std::size_t at = p.find("(?"); at != std::string_view::npos; at = p.find("(?", at + 2))
      if (p[std::min(p.find_first_not_of("imsnJU^-", at + 2), p.size() - 1)] == 'x') return true;
    return false;
  }
  bool isLineEnd(std::string_view part) const { return part == "\\n" || (!extended_ && (part == "\n" || part == "\r\n")); }
  // A break inside a quotation is moved out of it.
  static std::string quoted(std::string_view part, std::string_view lineEnd) {
    std::string out;
    for (std::size_t i = 0; i < part.size(); ++i) {
      const bool pair = part[i] == '\r' && i + 1 < part.size() && part[i + 1] == '\n';
      if (!pair && part[i] != '\n') out += part[i];
      else out.append("\\E").append(lineEnd).append("\\Q");
      i += pair;
    }
    return out;
  }

  bool starts(std::string_view what) const { return p_.substr(at_, what.size()) == what; }
  // The next element that has the same meaning everywhere: an escape, a quotation, a comment or one byte.
  std::string_view element() {
    std::size_t end = at_ + 1;
    if (starts("\\Q")) end = p_.find("\\E", at_) == std::string_view::npos ? p_.size() : p_.find("\\E", at_) + 2;
    else if (starts("(?#")) end = std::min(p_.find(')', at_), p_.size() - 1) + 1;
    else if (starts("\\c")) end = at_ + 3;
    else if (starts("\\") || starts("\r\n")) end = at_ + 2;
    const bool quotation = starts("\\Q") && p_.substr(at_, end - at_).find('\n') != std::string_view::npos;
    namesCr_ = namesCr_ || starts("\\r") || (starts("\r") && !starts("\r\n"));
    namesLf_ = namesLf_ || quotation || isLineEnd(p_.substr(at_, end - at_));
    const auto part = p_.substr(at_, end - at_);
    at_ = std::min(end, p_.size());
    return part;
  }

  std::string rewritten(const char* lineEnd, bool behind) {
    std::string out;
    while (at_ < p_.size()) {
      if (p_[at_] == '[') {
        out += characterClass(behind);
      } else if (!behind && (starts("(?<=") || starts("(?<!"))) {
        out += p_.substr(at_, 4);
        at_ += 4;
        out += lookBehind();
      } else {
        const auto part = element();
        if (part.substr(0, 2) == "\\Q") out += quoted(part, lineEnd);
        else out += isLineEnd(part) ? std::string_view(lineEnd) : part;
      }
    }
    return out;
  }

  // Look-behind needs a known length: one alternative for each kind of break. Nested groups are not rewritten.
  std::string lookBehind() {
    const auto begin = at_;
    bool named = false;
    while (at_ < p_.size() && p_[at_] != ')' && p_[at_] != '(') {
      if (p_[at_] == '[') characterClass(true);
      else if (isLineEnd(element())) named = true;
    }
    const auto body = p_.substr(begin, at_ - begin);
    if (!named || at_ >= p_.size() || p_[at_] == '(') return std::string(body);
    std::string out;
    for (const char* lineEnd : {"(?:\\r\\n)", "\\n", "(?:\\r(?!\\n))"})
      out += (out.empty() ? "" : "|") + LineEnds(body).rewritten(lineEnd, true);
    return out;
  }

  std::string characterClass(bool behind) {
    const bool before = std::exchange(namesLf_, false);
    const bool negative = starts("[^");
    const auto open = at_;
    at_ += negative ? 2 : 1;
    const auto first = at_;
    while (at_ < p_.size() && (p_[at_] != ']' || at_ == first)) {
      if (starts("[:")) at_ = std::min(p_.find(":]", at_), p_.size() - 2) + 2;
      else element();
    }
    const bool named = std::exchange(namesLf_, namesLf_ || before);
    at_ = std::min(at_ + 1, p_.size());
    if (!named) return std::string(p_.substr(open, at_ - open));
    const bool plain = p_[first] == ']' || p_[first] == '-';
    const std::string both =
        std::string(negative ? "[^\\r" : "[\\r") + (plain ? "\\" : "") + std::string(p_.substr(first, at_ - first));
    return negative || behind ? both : "(?>\\r\\n|(?!(?<=\\r)\\n)" + both + ")";
  }

  std::string_view p_;
  const bool extended_;
  std::size_t at_ = 0;
  bool namesCr_ = false, namesLf_ = false;
};

// Called at the start of each attempt to match.
std::string watched(const std::string& pattern) {
  const auto verbs = settingsOf(pattern);
  return pattern.substr(0, verbs) + "(?C1)" + pattern.substr(verbs);
}

}   // namespace

struct Regex::Programs {
  std::string pattern;   // as it was compiled
  std::uint32_t options = 0;
  Compiled plain;      // for ASCII; may be absent
  Compiled unicode;    // for valid UTF-8
  Compiled any;        // for all bytes
  Compiled anchored;   // for all bytes, only at the start
};

Regex::Regex(const std::string& pattern, bool matchCase, bool wholeWord) : programs_(new Programs) {
  Programs& p = *programs_;
  const std::uint32_t base = matchCase ? 0 : PCRE2_CASELESS, utf = base | PCRE2_UTF | PCRE2_UCP;
  p.unicode = compile(pattern, utf, false);
  std::string text = pattern;
  if (p.unicode.code) {   // an expression that does not compile then is left unchanged
    const std::string lineEnds = LineEnds::in(pattern);
    for (const std::string& form : {wholeWord ? asWholeWord(lineEnds) : lineEnds, lineEnds, pattern}) {
      Compiled compiled = compile(text = form, utf, true);
      if (!compiled.code) continue;
      p.unicode = std::move(compiled);
      break;
    }
  }
  // Behind an invalid byte, ".*" could begin in the middle of a line.
  const std::uint32_t any = utf | PCRE2_MATCH_INVALID_UTF | PCRE2_NO_DOTSTAR_ANCHOR;
  if (p.unicode.code) p.any = compile(text, any, true);
  if (p.any.code) p.anchored = compile(text, any | PCRE2_ANCHORED, true);
  p.pattern = text;
  p.options = any;
  for (const Compiled* c : {&p.unicode, &p.any, &p.anchored})
    if (!c->code) {
      const auto at = std::min(c->errorAt, pattern.size());
      error_ = "Error in the expression at character " +
               std::to_string(columnOf(pattern, static_cast<std::int64_t>(at)).value + 1) + ": " + messageOf(c->error) + ".";
      return;
    }
  if (samePlain(pattern)) p.plain = compile(text, base, true);
  staysInLine_ = plainlyInLine(pattern);
  needsWholeText_ = pattern.find("\\G") != std::string::npos || pattern.find("(*") != std::string::npos;
  std::uint32_t value = 0;
  pcre2_pattern_info(p.any.code.get(), PCRE2_INFO_MAXLOOKBEHIND, &value);
  lookBehind_ = static_cast<int>(value);
  pcre2_pattern_info(p.any.code.get(), PCRE2_INFO_LASTCODETYPE, &value);
  if (value == 1) {
    pcre2_pattern_info(p.any.code.get(), PCRE2_INFO_LASTCODEUNIT, &value);
    const auto b = static_cast<unsigned char>(value);
    // Without case, a letter with further forms outside ASCII is not required.
    if (b < 0x80 && (matchCase ? pattern.find("(?") == std::string::npos : b != 'k' && b != 'K' && b != 's' && b != 'S')) {
      required_.add(b);
      if (b >= 'A' && b <= 'Z') required_.add(static_cast<unsigned char>(b + 32));
      if (b >= 'a' && b <= 'z') required_.add(static_cast<unsigned char>(b - 32));
    }
  }
  pcre2_pattern_info(p.any.code.get(), PCRE2_INFO_CAPTURECOUNT, &value);
  groupCount_ = static_cast<int>(value);
  pcre2_pattern_info(p.any.code.get(), PCRE2_INFO_HASCRORLF, &value);
  namesLineBreaks_ = value != 0;
}

Regex::~Regex() = default;

std::optional<int> Regex::groupByName(std::string_view name) const {
  const int n =
      pcre2_substring_number_from_name(programs_->any.code.get(), reinterpret_cast<PCRE2_SPTR>(std::string(name).c_str()));
  if (n > 0) return n;
  return std::nullopt;
}

struct Regex::Matcher::Memory {
  MatchData data;
  MatchContext cheap, full;   // full: `stop` is asked
  JitStack stack;
  const Compiled* program = nullptr;
  std::function<bool()> stop;
  std::uint32_t steps = 0;
  Compiled watched;   // made when it is needed
};

Regex::Matcher::Matcher(const Regex& regex, std::function<bool()> stop, std::uint32_t steps) : regex_(regex), memory_(new Memory) {
  Memory& m = *memory_;
  m.stop = std::move(stop);
  m.steps = steps;
  m.data.reset(pcre2_match_data_create_from_pattern(regex.programs_->any.code.get(), nullptr));
  m.stack.reset(pcre2_jit_stack_create(64u << 10, maxStack, nullptr));
  for (MatchContext* context : {&m.cheap, &m.full}) {
    context->reset(pcre2_match_context_create(nullptr));
    if (!*context) continue;
    pcre2_set_match_limit(context->get(), context == &m.cheap ? cheapSteps : steps > 0 ? steps : maxSteps);
    pcre2_set_depth_limit(context->get(), maxDepth);
    pcre2_set_heap_limit(context->get(), maxHeapKiB);
    if (m.stack) pcre2_jit_stack_assign(context->get(), nullptr, m.stack.get());
  }
  const auto ask = [](pcre2_callout_block* block, void* memory) {
    const auto& stopped = static_cast<Memory*>(memory)->stop;
    return block->callout_number == 1 && stopped && stopped() ? PCRE2_ERROR_CALLOUT : 0;
  };
  if (m.full) pcre2_set_callout(m.full.get(), ask, &m);
}

Regex::Matcher::~Matcher() = default;

void Regex::Matcher::setSubject(std::string_view subject) {
  subject_ = subject;
  careful_ = false;
  const Programs& p = *regex_.programs_;
  const bool ascii = isAscii(subject);
  memory_->program = ascii && p.plain.code ? &p.plain : ascii || validUtf8(subject) ? &p.unicode : &p.any;
}

int Regex::Matcher::run(std::size_t from, const Options& options, bool careful) {
  Memory& m = *memory_;
  if (careful && !options.onlyAtStart && !m.watched.code)
    m.watched = compile(watched(regex_.programs_->pattern), regex_.programs_->options, true);
  const bool watch = careful && !options.onlyAtStart && m.watched.code;
  const Compiled& program = options.onlyAtStart ? regex_.programs_->anchored : watch ? m.watched : *m.program;
  const bool checked = &program == &regex_.programs_->plain || &program == &regex_.programs_->unicode;
  std::uint32_t flags = 0;
  if (!options.last) flags |= PCRE2_PARTIAL_HARD;
  else if (!options.endsLine) flags |= PCRE2_NOTEOL;
  if (options.notEmptyAtStart) flags |= PCRE2_NOTEMPTY_ATSTART;
  const auto subject = reinterpret_cast<PCRE2_SPTR>(subject_.empty() ? "" : subject_.data());
  pcre2_match_context* context = careful ? m.full.get() : m.cheap.get();
  if (checked && program.jit)
    return pcre2_jit_match(program.code.get(), subject, subject_.size(), from, flags, m.data.get(), context);
  return pcre2_match(program.code.get(), subject, subject_.size(), from, checked ? flags | PCRE2_NO_UTF_CHECK : flags, m.data.get(),
                     context);
}

Regex::Outcome Regex::Matcher::match(std::size_t from, const Options& options) {
  Memory& m = *memory_;
  if (!m.data || !m.cheap || !m.full) {
    error_ = "Not enough memory to search for the expression.";
    return {Outcome::failed};
  }
  int code = run(from, options, careful_);
  if (code == PCRE2_ERROR_MATCHLIMIT && !careful_) {
    careful_ = true;
    code = run(from, options, true);
  }
  const std::size_t* offsets = pcre2_get_ovector_pointer(m.data.get());
  if (code >= 0) return {Outcome::found, std::min(offsets[0], offsets[1]), std::max(offsets[0], offsets[1])};
  if (code == PCRE2_ERROR_NOMATCH) return {};
  if (code == PCRE2_ERROR_PARTIAL) return {Outcome::undecided, offsets[0], offsets[1]};
  if (code == PCRE2_ERROR_CALLOUT || (code == PCRE2_ERROR_MATCHLIMIT && m.steps > 0)) return {Outcome::stopped};
  error_ = "The expression takes too long on this text: the search was given up (" + messageOf(code) + ").";
  return {Outcome::failed};
}

std::pair<std::size_t, std::size_t> Regex::Matcher::group(int n) const {
  const auto i = static_cast<std::uint32_t>(n);
  if (i >= pcre2_get_ovector_count(memory_->data.get())) return {std::string::npos, std::string::npos};
  const std::size_t* offsets = pcre2_get_ovector_pointer(memory_->data.get());
  return {offsets[2 * i], offsets[2 * i + 1]};
}

}   // namespace text
