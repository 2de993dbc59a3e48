#include "text/color/Highlight.h"

#include <cstring>
#include <optional>

#include "text/color/EntryMarks.h"
#include "text/color/Symbols.h"
#include "text/find/Literal.h"
#include "text/find/Scan.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

namespace text {

namespace {

constexpr std::size_t none = std::string_view::npos;
constexpr std::size_t mostPairs = 255;
constexpr std::size_t sureBytes = 512;          // at the end of a part: tokens that end here may end differently in the whole line
constexpr std::size_t mostBlanks = 100;         // examined before a sign whose place matters; less than kBehind
constexpr std::size_t mostBasedDigits = 4096;   // examined for the closing '#'

// Values in the signs of the language.
enum : int { keywordValue, operatorValue };

struct ByteClasses {
  std::array<CharClass, 128> of{};
  constexpr ByteClasses() {
    for (unsigned char c = 0; c < 128; ++c) {
      const bool word = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
      of[c] = word ? CharClass::word : c == ' ' || (c >= '\t' && c <= '\r') ? CharClass::blank : CharClass::punctuation;
    }
  }
};
constexpr ByteClasses ascii;

// A line that continues the command of the previous line.
constexpr LinePoint continuedLine{0, LinePoint::string, none};
bool isContinued(const LinePoint& point) { return point.inside == LinePoint::string && point.index == continuedLine.index; }

unsigned char at(std::string_view s, std::size_t i) { return static_cast<unsigned char>(s[i]); }
bool digit(char c) { return c >= '0' && c <= '9'; }
bool hexDigit(char c) { return digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool isWord(const Char& c) {
  return c.bytes > 0 && !c.bad && (c.code < 128 ? ascii.of[c.code] : classOf(c.code)) == CharClass::word;
}
bool wordAtByte(std::string_view s, std::size_t i) {
  if (i >= s.size()) return false;
  return at(s, i) < 0x80 ? ascii.of[at(s, i)] == CharClass::word : isWord(decode(s.substr(i)));
}
bool wordBefore(std::string_view s, std::size_t i) {
  if (i == 0) return false;
  return at(s, i - 1) < 0x80 ? ascii.of[at(s, i - 1)] == CharClass::word : isWord(decodeLast(s.substr(0, i)));
}
std::size_t wordEnd(std::string_view s, std::size_t i) {
  while (i < s.size()) {
    if (at(s, i) < 0x80) {
      if (ascii.of[at(s, i)] != CharClass::word) return i;
      ++i;
    } else {
      const Char c = decode(s.substr(i));
      if (!isWord(c)) return i;
      i += static_cast<std::size_t>(c.bytes);
    }
  }
  return i;
}
bool wholeWord(std::string_view s) { return !s.empty() && wordEnd(s, 0) == s.size(); }

// What begins a comment or a string.
struct Start {
  enum Kind : unsigned char { line, block, string, name } kind;
  std::size_t index;   // of the pair, the delimiter or the name
  bool wordFirst, wordLast;
  EntryMark place;   // where it counts
};

struct Begin {
  const Start* start = nullptr;
  std::size_t length = 0;
};

}   // namespace

struct Highlighter::Impl {
  LanguageTables tables;
  bool valid = false, folds = true;
  std::vector<Start> starts;
  Signs startSigns, signs;   // comments and strings; operators, and keywords with other than word characters
  WordSet words;             // keywords and operators that are words; library words again with their mark
  std::vector<std::string> closersOfNames;
  bool tickQuotes = false, commands = false;   // the tick is a delimiter; some signs count only at the start of a command
  ByteSet interesting;                         // the first bytes of startSigns
  struct Closer {
    std::optional<Literal> text;
    bool wordFirst = false, wordLast = false;
  };
  std::vector<Closer> closers;
  std::vector<std::string> delimiters, escapes;   // escapes: the escape character of each delimiter; empty: none
  std::vector<bool> wholeLine;                    // for each delimiter: the string is the rest of its line
  struct StringStops {
    ByteSet upToLf, upToCr;   // the delimiter, the escape character, the break
  };
  std::vector<StringStops> stops;
  std::array<bool, 256> lead{};   // signs that begin keywords and are followed by a word

  explicit Impl(LanguageTables t);
  void addStart(std::string sign, Start::Kind kind, std::size_t index);
  Begin rawStart(std::string_view s, std::size_t p) const;
  Begin startAt(std::string_view s, std::size_t p) const;
  bool startsInside(std::string_view s, std::size_t p, std::size_t& checked, std::size_t length) const;
  std::size_t signAt(std::string_view s, std::size_t p, int value) const;
  std::size_t closeEnd(std::string_view s, std::size_t from, std::size_t pair) const;
  std::size_t stringEnd(std::string_view s, std::size_t from, std::size_t index, char breaker, bool& goesOn,
                        std::size_t limit = none, bool toEnd = true) const;
  std::size_t numberEnd(std::string_view s, std::size_t p) const;
  static bool partsDigits(std::string_view s, std::size_t tick);
  std::size_t basedEnd(std::string_view s, std::size_t tick) const;
  std::size_t directiveAt(std::string_view s, std::size_t p) const;
  std::size_t nameEnd(std::string_view s, std::size_t from, std::size_t name) const;
  bool goesOn(std::string_view s, std::size_t p) const { return !rawStart(s, p).start; }
  // States above those of the comments: an open string and an open command; 0 if there is no number left for them.
  LineState stringState(std::size_t index) const {
    const std::size_t state = closers.size() + 2 + index;
    return state <= 255 ? static_cast<LineState>(state) : LineState(0);
  }
  LineState continuedState() const {
    return commands && closers.size() < 255 ? static_cast<LineState>(closers.size() + 1) : LineState(0);
  }
};

// Compiling -----------------------------------------------------------------------------------------------------------

Highlighter::Impl::Impl(LanguageTables t)
    : tables(std::move(t)), folds(!tables.caseSensitive), startSigns(folds), signs(folds), words(folds) {
  valid = tables.multiCommentStart.size() == tables.multiCommentEnd.size();
  if (!valid) return;
  for (std::size_t i = 0; i < tables.multiCommentStart.size() && closers.size() < mostPairs; ++i) {
    const auto& open = tables.multiCommentStart[i];
    const auto& close = tables.multiCommentEnd[i];
    if (open.empty() || close.empty()) continue;
    addStart(open, Start::block, closers.size());
    closers.push_back({Literal(close, !folds), wordAtByte(close, 0), wordBefore(close, close.size())});
  }
  for (const auto& s : tables.singleComments) addStart(s, Start::line, 0);
  std::vector<std::string> plainDelimiters;
  for (auto s : tables.stringDelims) {
    const std::string entry = s;
    const EntryMark mark = takeMark(s);
    if (s.empty()) continue;
    if (mark == EntryMark::name) {
      const auto blank = std::min(s.find(' '), s.size());
      addStart(s.substr(0, blank), Start::name, closersOfNames.size());
      closersOfNames.push_back(blank < s.size() ? s.substr(blank + 1) : std::string());
      continue;
    }
    addStart(entry, Start::string, delimiters.size());
    plainDelimiters.push_back(s);
    delimiters.push_back(s);
    escapes.push_back(mark == EntryMark::plain ? std::string() : mark == EntryMark::escape ? std::string("\\") : tables.escapeChar);
    wholeLine.push_back(!starts.empty() && starts.back().place == EntryMark::atLine);
    tickQuotes = tickQuotes || s == "'";
    StringStops stop;
    for (const char c : {s[0], folds ? lowerAscii(s[0]) : s[0], escapes.back().empty() ? s[0] : escapes.back()[0]}) {
      stop.upToLf.add(static_cast<unsigned char>(c));
      stop.upToCr.add(static_cast<unsigned char>(c));
      if (folds && c >= 'a' && c <= 'z') {
        stop.upToLf.add(static_cast<unsigned char>(c - 32));
        stop.upToCr.add(static_cast<unsigned char>(c - 32));
      }
    }
    stop.upToLf.add('\n');
    stop.upToCr.add('\r');
    stops.push_back(stop);
  }
  tables.stringDelims = std::move(plainDelimiters);   // without marks, as other readers of the tables expect
  startSigns.build();
  for (int c = 0; c < 256; ++c)
    if (startSigns.startsWith(static_cast<unsigned char>(c))) interesting.add(static_cast<unsigned char>(c));

  const auto addAll = [this](const std::vector<std::string>& list, int value) {
    for (auto s : list) {
      if (const EntryMark mark = takeMark(s); mark == EntryMark::library) words.add(marked(mark, s), keywordValue);
      if (wholeWord(s)) words.add(s, value);
      else signs.add(s, value);
      // "$display" makes '$' a sign that begins names.
      if (value == keywordValue && s.size() > 1 && at(s, 0) < 0x80 && !wordAtByte(s, 0) && wholeWord(std::string_view(s).substr(1)))
        lead[at(s, 0)] = true;
    }
  };
  addAll(tables.keywords, keywordValue);
  addAll(tables.operators, operatorValue);
  signs.build();
}

void Highlighter::Impl::addStart(std::string sign, Start::Kind kind, std::size_t index) {
  const EntryMark mark = takeMark(sign), place = mark <= EntryMark::atLine ? mark : EntryMark::none;
  if (sign.empty() || !validUtf8(sign)) return;
  commands = commands || place == EntryMark::atCommand;
  startSigns.add(sign, static_cast<int>(starts.size()));
  starts.push_back({kind, index, wordAtByte(sign, 0), wordBefore(sign, sign.size()), place});
}

// Examining one place -------------------------------------------------------------------------------------------------
// The full scan and the scan for states must find the same comments and strings. So nothing may hide one: keywords and operators
// that would cover such a start are not taken, and numbers end before it.

// 1'000 and 0xFF'FF: a tick within a number. The look-behind is bounded; no number is that long.
bool Highlighter::Impl::partsDigits(std::string_view s, std::size_t tick) {
  if (tick == 0 || tick + 1 >= s.size() || !hexDigit(s[tick - 1]) || !hexDigit(s[tick + 1])) return false;
  std::size_t begin = tick;
  while (begin > 0 && tick - begin < 64 && (wordBefore(s, begin) || s[begin - 1] == '\'')) --begin;
  return digit(s[begin]);
}

// Whether p is such a place, as far as the line itself tells. The start of the text counts as the start of a line.
static bool isPlace(std::string_view s, std::size_t p, EntryMark place) {
  const auto breakBefore = [&](std::size_t at) { return at == 0 || s[at - 1] == '\n' || s[at - 1] == '\r'; };
  if (place == EntryMark::none || breakBefore(p)) return true;
  if (place == EntryMark::atLine) return false;
  if (place == EntryMark::atWord) return std::string_view(" \t;&|()<>").find(s[p - 1]) != none;
  std::size_t at = p;
  while (at > 0 && p - at < mostBlanks && (s[at - 1] == ' ' || s[at - 1] == '\t')) --at;
  return breakBefore(at) || s[at - 1] == ';' || (s[at - 1] == '{' && at < p);
}

// Whether the line of p (a place of kind `command` at the start of its line) continues a previous line that is in s.
static std::size_t continuedFrom(std::string_view s, std::size_t p, char breaker) {
  while (p > 0 && (s[p - 1] == ' ' || s[p - 1] == '\t')) --p;
  if (p == 0 || s[p - 1] != breaker) return none;
  std::size_t brk = p - 1;
  while (breaker == '\n' && brk > 0 && s[brk - 1] == '\r') --brk;
  return brk > 0 && s[brk - 1] == '\\' ? p - 1 : none;
}

// Whether a line, with or without its break, ends with a backslash.
static bool endsEscaped(std::string_view line, char breaker) {
  if (line.ends_with(breaker)) line.remove_suffix(1);
  while (breaker == '\n' && line.ends_with('\r')) line.remove_suffix(1);
  return line.ends_with('\\');
}

// The length of "#  define", a keyword with blanks behind its first sign, at the start of a line; 0: none.
std::size_t Highlighter::Impl::directiveAt(std::string_view s, std::size_t p) const {
  if (s[p] != '#' || !lead['#'] || startSigns.startsWith('#') || p + 1 >= s.size() || (s[p + 1] != ' ' && s[p + 1] != '\t'))
    return 0;
  std::size_t from = p;
  while (from > 0 && p - from < mostBlanks && (s[from - 1] == ' ' || s[from - 1] == '\t')) --from;
  if (from > 0 && s[from - 1] != '\n' && s[from - 1] != '\r') return 0;
  std::size_t word = p + 1;
  while (word < s.size() && word - p < mostBlanks && (s[word] == ' ' || s[word] == '\t')) ++word;
  const std::size_t end = wordEnd(s.substr(0, std::min(s.size(), word + Signs::maxLength)), word);
  if (end == word) return 0;
  const std::string joined = '#' + std::string(s.substr(word, end - word));
  bool found = false;
  signs.at(joined, 0, [&](std::size_t length, int kind) { found = found || (kind == keywordValue && length == joined.size()); });
  std::size_t checked = 1;
  return found && !startsInside(s, p, checked, end - p) ? end - p : 0;
}

// The end of the name that began before `from`.
std::size_t Highlighter::Impl::nameEnd(std::string_view s, std::size_t from, std::size_t name) const {
  const std::string& closer = closersOfNames[name];
  for (std::size_t p = from; p < s.size(); ++p) {
    if (s[p] == '\n' || s[p] == '\r' || (closer.empty() && (s[p] == ' ' || s[p] == '\t'))) return p;
    if (!closer.empty() && s.compare(p, closer.size(), closer) == 0) return p + closer.size();
  }
  return s.size();
}

Begin Highlighter::Impl::rawStart(std::string_view s, std::size_t p) const {
  Begin best;
  if (p >= s.size() || !interesting.has(at(s, p))) return best;
  startSigns.at(s, p, [&](std::size_t length, int value) {
    const Start& start = starts[static_cast<std::size_t>(value)];
    if (start.wordFirst && wordBefore(s, p)) return;
    if (start.wordLast && wordAtByte(s, p + length)) return;
    if (start.kind == Start::string && length == 1 && s[p] == '\'' && partsDigits(s, p)) return;
    if (start.kind == Start::string && !tickQuotes && length == 1 && p > 0 && s[p - 1] == '\'' && p + 1 < s.size() &&
        s[p + 1] == '\'')
      return;
    if (!isPlace(s, p, start.place)) return;
    if (start.kind == Start::name) {
      const std::size_t first = p + length;   // "\" at the end of a line or before a blank opens no name
      if (first >= s.size() || std::string_view(" \t\r\n").find(s[first]) != none) return;
    }
    best = {&start, length};
  });
  return best;
}

Begin Highlighter::Impl::startAt(std::string_view s, std::size_t p) const {
  const Begin best = rawStart(s, p);
  if (best.start && signs.startsWith(at(s, p)) && signAt(s, p, keywordValue) > best.length) return {};
  return best;
}

// Whether a comment or string starts behind p but before p + length; `checked` caches how far was examined.
bool Highlighter::Impl::startsInside(std::string_view s, std::size_t p, std::size_t& checked, std::size_t length) const {
  for (; checked < length; ++checked)
    if (rawStart(s, p + checked).start) return true;
  return false;
}

// The length of the longest keyword or operator (of the kind `value`) at p; 0: none.
std::size_t Highlighter::Impl::signAt(std::string_view s, std::size_t p, int value) const {
  std::size_t best = value == keywordValue ? directiveAt(s, p) : 0, checked = 1;
  signs.at(s, p, [&](std::size_t length, int kind) {
    if (kind != value || startsInside(s, p, checked, length)) return;
    const auto sign = s.substr(p, length);
    if (wordBefore(sign, length) && wordAtByte(s, p + length)) return;
    // "$display" cannot begin in the middle of "a$display"; "=>" can begin anywhere.
    if (wordBefore(s, p) && std::any_of(sign.begin(), sign.end(), [](char c) {
          return static_cast<unsigned char>(c) >= 0x80 || ascii.of[static_cast<unsigned char>(c)] == CharClass::word;
        }))
      return;
    best = std::max(best, length);
  });
  return best;
}

std::size_t Highlighter::Impl::closeEnd(std::string_view s, std::size_t from, std::size_t pair) const {
  const Closer& closer = closers[pair];
  for (auto hit = closer.text->find(s, from); hit; hit = closer.text->find(s, hit->begin + 1)) {
    const std::size_t end = hit->begin + hit->length;
    if (!(closer.wordFirst && wordBefore(s, hit->begin)) && !(closer.wordLast && wordAtByte(s, end))) return end;
  }
  return none;
}

// Returns the position behind the closing delimiter or the end of the line; the end of s (goesOn) if an escaped break is last in
// it. If the end is not found before `limit`, returns a position at or behind `limit` from which the search can continue (goesOn).
// toEnd: s ends with its line.
std::size_t Highlighter::Impl::stringEnd(std::string_view s, std::size_t from, std::size_t index, char breaker, bool& goesOn,
                                         std::size_t limit, bool toEnd) const {
  const std::string& delimiter = delimiters[index];
  const std::string& escape = escapes[index];
  const ByteSet& stop = breaker == '\n' ? stops[index].upToLf : stops[index].upToCr;
  const auto same = [&](std::size_t p) {
    if (s.size() - p < delimiter.size()) return false;
    for (std::size_t i = 0; i < delimiter.size(); ++i)
      if (folds ? lowerAscii(s[p + i]) != lowerAscii(delimiter[i]) : s[p + i] != delimiter[i]) return false;
    return true;
  };
  if (wholeLine[index]) {
    const std::size_t end = s.find(breaker, std::min(from, s.size()));
    if (end != none || limit >= s.size() || (toEnd && from >= s.size())) return std::min(end, s.size());
    goesOn = true;
    return std::max(from, limit);
  }
  std::size_t looked = from;
  for (std::size_t p = stop.find(s, from); p < std::min(limit, s.size()); p = stop.find(s, p)) {
    if (s[p] == breaker) return p;
    if (!escape.empty() && s.compare(p, escape.size(), escape) == 0 &&
        (escape != delimiter || s.compare(p + escape.size(), escape.size(), escape) == 0)) {
      p += escape.size();
      const std::size_t behind = breaker == '\n' ? std::min(s.find_first_not_of('\r', p), s.size()) : p;
      if (behind >= s.size() || s[behind] == breaker) p = behind;
      const bool over = escape != delimiter && stringState(index) > 0;   // over the break
      const bool last = p >= s.size() || (p + 1 == s.size() && s[p] == breaker);
      if (last && over) {
        goesOn = true;
        return s.size();
      }
      if (p < s.size() && (s[p] != breaker || over)) p += static_cast<std::size_t>(decode(s.substr(p)).bytes);
    } else if (same(p)) {
      return p + delimiter.size();
    } else {
      ++p;
    }
    looked = p;
  }
  if (limit >= s.size() || (toEnd && looked >= s.size())) return s.size();   // what was escaped last can lie behind the limit
  goesOn = true;
  return std::max(looked, limit);
}

// 'hFF, 'sb01, '0: the end of the number whose "'" is at `tick`; `tick` itself when there is no number.
std::size_t Highlighter::Impl::basedEnd(std::string_view s, std::size_t tick) const {
  if (!goesOn(s, tick) || !goesOn(s, tick + 1)) return tick;
  std::size_t p = tick + 1;
  if (p < s.size() && (s[p] == 's' || s[p] == 'S')) ++p;
  if (p < s.size() && std::strchr("bBoOdDhH", s[p]) && s[p] != '\0') {
    const std::size_t begin = ++p;
    while (p < s.size() && (hexDigit(s[p]) || std::strchr("xXzZ_?", s[p])) && s[p] != '\0') {
      if (s[p] == '?' && !(goesOn(s, p) && goesOn(s, p + 1))) break;
      ++p;
    }
    if (p > begin && !wordAtByte(s, p)) return p;
  }
  // One digit for all bits; 'x' with a tick behind it is a character literal.
  p = tick + 1;
  if (p < s.size() && s[p] != '\0' && std::strchr("01xXzZ", s[p]) && !wordAtByte(s, p + 1) &&
      !(p + 1 < s.size() && s[p + 1] == '\''))
    return p + 1;
  return tick;
}

// p stands on a digit that begins a word.
std::size_t Highlighter::Impl::numberEnd(std::string_view s, std::size_t p) const {
  std::size_t end = wordEnd(s, p);
  const bool plain = std::all_of(s.begin() + static_cast<std::ptrdiff_t>(p), s.begin() + static_cast<std::ptrdiff_t>(end),
                                 [](char c) { return digit(c) || c == '_'; });
  if (end == s.size()) return end;
  if (plain && s[end] == '\'') {
    const std::size_t based = basedEnd(s, end);
    if (based > end + 1) return based;
    const bool delimiter = std::find(delimiters.begin(), delimiters.end(), "'") != delimiters.end();
    while (delimiter && end < s.size() && s[end] == '\'' && partsDigits(s, end)) end = wordEnd(s, end + 1);
    return end;
  }
  if (plain && s[end] == '#' && goesOn(s, end) && goesOn(s, end + 1)) {
    std::size_t q = end + 1;
    while (q < s.size() && q - end < mostBasedDigits &&
           (hexDigit(s[q]) || s[q] == '_' || (s[q] == '.' && goesOn(s, q) && goesOn(s, q + 1))))
      ++q;
    if (q > end + 1 && q < s.size() && s[q] == '#' && goesOn(s, q)) end = goesOn(s, q + 1) ? wordEnd(s, q + 1) : q + 1;
    else return end;
  } else if (plain && s[end] == '.' && end + 1 < s.size() && digit(s[end + 1]) && goesOn(s, end) && goesOn(s, end + 1)) {
    end = wordEnd(s, end + 1);
  }
  const auto sign = [&] { return s[end] == '+' || s[end] == '-'; };
  if (end + 1 < s.size() && (s[end - 1] == 'e' || s[end - 1] == 'E') && sign() && digit(s[end + 1]) && goesOn(s, end) &&
      goesOn(s, end + 1)) {
    const bool hex = s[p] == '0' && p + 1 < s.size() && (s[p + 1] == 'x' || s[p + 1] == 'X');
    if (!hex) end = wordEnd(s, end + 1);
  }
  return end;
}

// Scanning ------------------------------------------------------------------------------------------------------------

Highlighter::Highlighter(LanguageTables tables) : impl_(new Impl(std::move(tables))) {}
Highlighter::~Highlighter() = default;
bool Highlighter::valid() const { return impl_->valid; }
const LanguageTables& Highlighter::tables() const { return impl_->tables; }

bool Highlighter::isKeyword(std::string_view word) const {
  if (!impl_->valid || word.empty()) return false;
  if (impl_->words.find(word) == keywordValue) return true;
  bool found = false;
  impl_->signs.at(word, 0, [&](std::size_t length, int kind) { found = found || (kind == keywordValue && length == word.size()); });
  return found;
}

LineState Highlighter::scanBlock(std::string_view s, LineState state, char breaker, std::vector<HiddenPart>* hidden) const {
  const Impl& h = *impl_;
  if (!h.valid) return 0;
  const auto hide = [&](std::size_t begin, std::size_t end, HiddenPart::Kind kind) {
    if (hidden && end > begin) hidden->push_back({begin, std::min(end, s.size()), kind});
  };
  std::size_t p = 0, commentEnd = none;   // the break behind the last line comment
  bool goesOn = false;
  const LinePoint from = startOf(state);
  const std::size_t noCommand = isContinued(from) ? s.find_first_not_of(" \t") : none;
  if (from.inside == LinePoint::block) {
    p = h.closeEnd(s, 0, from.index);
    hide(0, p, HiddenPart::blockComment);
    if (p == none) return state;
  } else if (from.inside == LinePoint::string && !isContinued(from)) {
    p = h.stringEnd(s, 0, from.index, breaker, goesOn);
    hide(0, p, HiddenPart::string);
    if (goesOn) return state;
  }
  for (p = h.interesting.find(s, p); p < s.size(); p = h.interesting.find(s, p)) {
    const Begin begin = h.startAt(s, p);
    if (!begin.start) {
      ++p;
      continue;
    }
    if (begin.start->place == EntryMark::atCommand) {
      const std::size_t brk = continuedFrom(s, p, breaker);
      if (p == noCommand || (brk != none && brk != commentEnd)) {
        p += begin.length;
        continue;
      }
    }
    const std::size_t first = p;
    p += begin.length;
    if (begin.start->kind == Start::string) {
      p = h.stringEnd(s, p, begin.start->index, breaker, goesOn);
      hide(first, p, HiddenPart::string);
      if (goesOn) return h.stringState(begin.start->index);
    } else if (begin.start->kind == Start::name) {
      p = h.nameEnd(s, p, begin.start->index);
      hide(first, p, HiddenPart::name);
    } else if (begin.start->kind == Start::block) {
      p = h.closeEnd(s, p, begin.start->index);
      hide(first, p, HiddenPart::blockComment);
      if (p == none) return static_cast<LineState>(begin.start->index + 1);
    } else {
      const void* end = std::memchr(s.data() + p, breaker, s.size() - p);
      hide(first, end ? static_cast<std::size_t>(static_cast<const char*>(end) - s.data()) : none, HiddenPart::lineComment);
      if (!end) return 0;
      commentEnd = p = static_cast<std::size_t>(static_cast<const char*>(end) - s.data());
    }
  }
  if (!h.commands) return 0;
  return (commentEnd == none || commentEnd + 1 < s.size()) && endsEscaped(s, breaker) ? h.continuedState() : LineState(0);
}

LinePoint Highlighter::startOf(LineState state) const {
  const std::size_t pairs = impl_->closers.size();
  if (state == 0 || state >= pairs + 2 + impl_->delimiters.size()) return {};
  if (state <= pairs) return {0, LinePoint::block, state - 1u};
  if (state == pairs + 1) return impl_->commands ? continuedLine : LinePoint{};
  return {0, LinePoint::string, state - pairs - 2};
}

LineState Highlighter::scanLine(std::string_view s, LineState state, std::vector<Token>* tokens) const {
  if (!tokens) return scanBlock(s, state, '\n');
  tokens->clear();
  const LinePoint end = scanPart(s, 0, true, startOf(state), static_cast<std::int64_t>(s.size()), tokens);
  if (end.inside == LinePoint::block) return static_cast<LineState>(end.index + 1);
  if (end.inside != LinePoint::string) return 0;
  return end.index == continuedLine.index ? impl_->continuedState() : impl_->stringState(end.index);
}

LinePoint Highlighter::scanPart(std::string_view s, std::int64_t base, bool toEnd, LinePoint from, std::int64_t upTo,
                                std::vector<Token>* tokens) const {
  const Impl& h = *impl_;
  if (!h.valid) return {upTo, LinePoint::lost, 0};
  std::size_t p = static_cast<std::size_t>(from.byte - base);
  const std::size_t limit = std::min(s.size(), static_cast<std::size_t>(upTo - base));
  if (s.size() > limit + kAhead) {   // the rest of the part cannot change the colours before the limit
    s = s.substr(0, limit + kAhead);
    toEnd = false;
  }
  const std::size_t sure = toEnd ? s.size() : std::max(limit, s.size() - std::min(s.size(), sureBytes));
  const auto put = [&](std::size_t begin, std::size_t end, TokenKind kind) {
    if (tokens && end > begin)
      tokens->push_back({base + static_cast<std::int64_t>(begin), static_cast<std::int64_t>(end - begin), kind});
    return end;
  };
  // Each moves p behind the comment or string that began at `begin`, searching its end from `inside`. False: it continues behind p.
  const auto endsBlock = [&](std::size_t begin, std::size_t inside, std::size_t pair) {
    const std::size_t end = h.closeEnd(s, inside, pair);
    const bool ends = end != none && end <= sure;
    p = put(begin, ends ? end : std::max(inside, limit), TokenKind::comment);
    return ends;
  };
  const auto endsString = [&](std::size_t begin, std::size_t inside, std::size_t delimiter) {
    bool goesOn = false;
    p = put(begin, h.stringEnd(s, inside, delimiter, '\n', goesOn, limit, toEnd), TokenKind::string);
    return !goesOn;
  };
  const auto here = [&](LinePoint::Inside inside, std::size_t index) {
    return LinePoint{base + static_cast<std::int64_t>(p), inside, index};
  };
  const LinePoint lost{upTo, LinePoint::lost, 0};
  std::size_t noCommand = none;   // position of the first word of a line that does not begin a command

  const bool goesOnFrom = isContinued(from);
  if (goesOnFrom) {
    noCommand = s.find_first_not_of(" \t", p);
    from = {from.byte, LinePoint::nothing, 0};
  }
  switch (from.inside) {
    case LinePoint::nothing: break;
    case LinePoint::lost: return lost;
    case LinePoint::comment: p = put(p, std::max(p, limit), TokenKind::comment); return here(LinePoint::comment, 0);
    case LinePoint::block:
      if (!endsBlock(p, p, from.index)) return here(LinePoint::block, from.index);
      break;
    case LinePoint::string:
      if (!endsString(p, p, from.index)) return here(LinePoint::string, from.index);
      break;
  }
  while (p < limit) {
    const unsigned char c = at(s, p);
    if (c < 0x80 && ascii.of[c] == CharClass::blank && !h.interesting.has(c) && !h.signs.startsWith(c)) {
      ++p;
      continue;
    }
    if (const Begin begin = h.startAt(s, p); begin.start && (p != noCommand || begin.start->place != EntryMark::atCommand)) {
      const std::size_t inside = p + begin.length, index = begin.start->index;
      if (begin.start->kind == Start::string) {
        if (!endsString(p, inside, index)) return here(LinePoint::string, index);
      } else if (begin.start->kind == Start::name) {
        const std::size_t end = h.nameEnd(s, inside, index);
        if (end > sure) return lost;
        p = end;
      } else if (begin.start->kind == Start::block) {
        if (!endsBlock(p, inside, index)) return here(LinePoint::block, index);
      } else {
        p = put(p, std::max(inside, limit), TokenKind::comment);
        return here(LinePoint::comment, 0);
      }
      continue;
    }
    const std::size_t sign = h.signs.startsWith(c) ? h.signAt(s, p, keywordValue) : 0;
    if (const std::size_t end = wordEnd(s, p); end > p) {
      if (end > sure) return lost;
      const int known = h.words.find(s.substr(p, end - p));
      if (p + sign > end) {
        p = put(p, p + sign, TokenKind::keyword);
      } else if (known == keywordValue) {
        p = put(p, end, TokenKind::keyword);
      } else if (known == operatorValue) {
        p = put(p, end, TokenKind::operatorSign);
      } else if (digit(s[p])) {
        const std::size_t behind = h.numberEnd(s, p);
        if (behind > sure) return lost;
        p = put(p, behind, TokenKind::number);
      } else {
        p = end;
      }
      continue;
    }
    if (c == '\'' && !wordBefore(s, p))
      if (const std::size_t end = h.basedEnd(s, p); end > p) {
        if (end > sure) return lost;
        p = put(p, end, TokenKind::number);
        continue;
      }
    const std::size_t op = h.signs.startsWith(c) ? h.signAt(s, p, operatorValue) : 0;
    if (sign > 0 && sign >= op) {
      p = put(p, p + sign, TokenKind::keyword);
    } else if (op > 0) {
      p = put(p, p + op, TokenKind::operatorSign);
    } else if (h.lead[c] && h.goesOn(s, p + 1)) {   // a name, or a part of one
      p = wordEnd(s, p + 1);
      if (p > sure) return lost;
    } else {
      p += c < 0x80 ? 1 : static_cast<std::size_t>(decode(s.substr(p)).bytes);
    }
  }
  if (goesOnFrom && noCommand >= p && !(toEnd && p >= s.size()))
    return here(continuedLine.inside, continuedLine.index);   // the first word of the command follows
  const bool continued = h.commands && toEnd && p >= s.size() && endsEscaped(s, '\n');
  return continued ? here(continuedLine.inside, continuedLine.index) : here(LinePoint::nothing, 0);
}

}   // namespace text
