#include "text/fold/FoldScan.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace text {

namespace {

enum Class : unsigned char { other, blank, word, bracket, semicolon, colon, breakClass };

struct Classes {
  std::array<Class, 256> of{};
  constexpr Classes() {
    for (int c = 0; c < 256; ++c)
      of[static_cast<std::size_t>(c)] = wordByte(static_cast<char>(c))                                         ? word
                                        : c == ' ' || c == '\t'                                                ? blank
                                        : c == '(' || c == ')' || c == '[' || c == ']' || c == '{' || c == '}' ? bracket
                                        : c == ';'                                                             ? semicolon
                                        : c == ':'                                                             ? colon
                                        : c == '\n' || c == '\r'                                               ? breakClass
                                                                                                               : other;
  }
};
constexpr Classes kClasses;
constexpr std::string_view kBrackets = "([{)]}";
constexpr int kMostNumber = 0xFFF;   // of an event

class Scan {
 public:
  Scan(const FoldRules& rules, std::string_view bytes, char breaker, const FoldState& in)
      : rules_(rules), s_(bytes), break_(breaker), state_(in) {
    result_.in = in;
    result_.bytes = static_cast<std::int64_t>(bytes.size());
  }

  FoldStretch run(bool* whole) {
    std::vector<HiddenPart> hidden;
    if (rules_.colors()) state_.colors = rules_.colors()->scanBlock(s_, state_.colors, break_, &hidden);
    beginLine(0);
    for (const HiddenPart& part : hidden) {
      code(part.begin);
      skip(part);
    }
    code(s_.size());
    if (!s_.empty() && s_.back() != break_) endLine();   // the last line of the text
    *whole = !state_.opened && !state_.awaitsIs && !state_.seenIs;
    result_.lines = line_;
    result_.out = state_;
    result_.events.shrink_to_fit();   // they are kept
    return std::move(result_);
  }

 private:
  static unsigned char at(std::string_view s, std::size_t i) { return static_cast<unsigned char>(s[i]); }

  void put(FoldEvent::Role role, int number, std::size_t at, std::int64_t line) {
    result_.events.push_back({static_cast<std::uint32_t>(at), static_cast<std::uint16_t>(line), FoldEvent::coded(role, number)});
  }

  void beginLine(std::size_t at) {
    lineStart_ = at;
    hasCode_ = hasComment_ = false;
    after_ = -1;
  }

  // Where events of the present line begin.
  std::size_t eventsOfLine() const {
    std::size_t place = result_.events.size();
    while (place > 0 && result_.events[place - 1].line == line_) --place;
    return place;
  }

  // Puts an event at the start of the present line.
  void putFirst(FoldEvent::Role role, int number) {
    const std::size_t place = eventsOfLine();
    result_.events.insert(
        result_.events.begin() + static_cast<std::ptrdiff_t>(place),
        {static_cast<std::uint32_t>(lineStart_), static_cast<std::uint16_t>(line_), FoldEvent::coded(role, number)});
    if (opener_ >= static_cast<std::int64_t>(place)) ++opener_;
  }

  void endLine() {
    const bool commentOnly = hasComment_ && !hasCode_;
    if (state_.inRun && !commentOnly) {
      const std::size_t place = eventsOfLine();
      auto& events = result_.events;
      if (place > 0 && events[place - 1].role() == FoldEvent::runOpen && events[place - 1].line == line_ - 1) {   // only one
        events.erase(events.begin() + static_cast<std::ptrdiff_t>(place - 1));
        if (opener_ >= static_cast<std::int64_t>(place)) --opener_;
      } else {
        putFirst(FoldEvent::runClose, 0);
      }
      state_.inRun = false;
    } else if (!state_.inRun && commentOnly) {
      putFirst(FoldEvent::runOpen, 0);
      state_.inRun = true;
    }
    if (rules_.indent()) noteIndent();
    if (rules_.commands() || (!rules_.hasStops() && state_.depth == 0 && state_.opened && !state_.awaitsIs)) endStatement();
    ++line_;
  }

  void noteIndent() {
    if (!hasCode_) {
      state_.noCode = static_cast<std::uint16_t>(std::min<int>(state_.noCode + 1, kMostNumber - 1));
      return;
    }
    int width = 0;
    for (std::size_t i = lineStart_; i < s_.size() && (s_[i] == ' ' || s_[i] == '\t') && width < kMostNumber - 8; ++i)
      width = s_[i] == '\t' ? (width / 8 + 1) * 8 : width + 1;
    if (width != state_.indent) {
      putFirst(FoldEvent::indent, width);
      putFirst(FoldEvent::lastCode, state_.noCode + 1);
    }
    state_.indent = static_cast<std::uint16_t>(width);
    state_.noCode = 0;
  }

  // The code up to `end`.
  void code(std::size_t end) {
    while (at_ < end) {
      const unsigned char c = at(s_, at_);
      switch (kClasses.of[c]) {
        case word: readWord(end); break;
        case blank: ++at_; break;
        case breakClass:
          ++at_;
          if (static_cast<char>(c) == break_) {
            endLine();
            beginLine(at_);
          }
          break;
        case bracket:
          hasCode_ = true;
          if (at_ > 0 && at_ + 1 < end && s_[at_ - 1] == '\'' && s_[at_ + 1] == '\'') {   // a character
            at_ += 2;
            break;
          }
          readBracket(kBrackets.find(static_cast<char>(c)));
          break;
        case semicolon:
          hasCode_ = true;
          ++at_;
          if (state_.depth == 0 || rules_.commands()) {
            if (state_.awaitsIs || state_.seenIs) cancelOpener();   // only a declaration
            endStatement();
          }
          break;
        case colon:
          hasCode_ = true;
          ++at_;
          after_ = -1;                                                                    // its label follows
          if (state_.words == 1 && !state_.opened && state_.depth == 0) endStatement();   // a label
          break;
        case other:
          hasCode_ = true;
          if (rules_.signs(c) && readSigned(end)) break;
          if (rules_.commands() && (c == '|' || c == '&' || c == '!')) endStatement();
          ++at_;
          break;
      }
    }
  }

  // What is no code: its lines end all the same.
  void skip(const HiddenPart& part) {
    const bool block = part.kind == HiddenPart::blockComment, comment = block || part.kind == HiddenPart::lineComment;
    const bool fromAbove = block && part.begin == 0 && result_.in.colors != 0;
    const bool toBelow = block && part.end == s_.size() && state_.colors != 0;
    const bool region = comment && !fromAbove && readRegion(part);
    if (part.kind == HiddenPart::lineComment) hasComment_ = !region;
    if (!comment) {
      hasCode_ = true;
      noteWord(-1);
    }
    const std::int64_t first = line_;
    at_ = part.begin;
    for (std::size_t end; (end = s_.substr(0, part.end).find(break_, at_)) != std::string_view::npos;) {
      endLine();
      at_ = end + 1;
      beginLine(at_);
      hasCode_ = !comment;
    }
    if (block && !fromAbove && (line_ > first || toBelow)) put(FoldEvent::commentOpen, 0, part.begin, first);
    if (block && !toBelow && (line_ > first || fromAbove)) put(FoldEvent::commentClose, 0, part.end - 1, line_);
    at_ = part.end;
  }

  bool readRegion(const HiddenPart& part) {
    const std::string_view comment = s_.substr(part.begin, std::min<std::size_t>(part.end - part.begin, 200));
    const auto begins = [&](const std::string& mark) {
      if (comment.size() < mark.size()) return false;
      for (std::size_t i = 0; i < mark.size(); ++i)
        if (lowerAscii(comment[i]) != lowerAscii(mark[i])) return false;
      return kClasses.of[at(mark, mark.size() - 1)] != word || comment.size() == mark.size() ||
             kClasses.of[at(comment, mark.size())] != word;
    };
    for (std::size_t i = 0; i < rules_.regions().size(); ++i) {
      const bool opens = begins(rules_.regions()[i].begin);
      if (!opens && !begins(rules_.regions()[i].end)) continue;
      put(opens ? FoldEvent::regionOpen : FoldEvent::regionClose, static_cast<int>(i), part.begin, line_);
      return true;
    }
    return false;
  }

  void readBracket(std::size_t which) {
    const int kind = static_cast<int>(which % 3);
    auto& events = result_.events;
    if (which < 3) {
      put(FoldEvent::bracketOpen, kind, at_, line_);
      ++state_.depth;
    } else {
      if (!events.empty() && events.back().line == line_ && events.back().at >= lineStart_ &&
          events.back().code == FoldEvent::coded(FoldEvent::bracketOpen, kind))
        events.pop_back();
      else put(FoldEvent::bracketClose, kind, at_, line_);
      if (state_.depth > 0) --state_.depth;
    }
    ++at_;
    if (rules_.commands()) endStatement();
    const bool closed = !events.empty() && events.back().role() == FoldEvent::bracketClose && events.back().at + 1 == at_;
    after_ = closed && kind == 2 ? static_cast<std::int64_t>(events.size()) - 1 : -1;
  }

  // A word with a sign before it: "`ifdef", "#  if". False: the byte is only a sign.
  bool readSigned(std::size_t end) {
    std::size_t from = at_ + 1;
    const bool first = isFirst(at_);
    while (first && s_[at_] == '#' && from < end && kClasses.of[at(s_, from)] == blank) ++from;
    std::size_t stop = from;
    while (stop < end && kClasses.of[at(s_, stop)] == word) ++stop;
    if (stop == from) return false;
    int number = -1;
    if (from == at_ + 1) number = rules_.find(s_.substr(at_, stop - at_));
    else number = rules_.find(std::string(1, s_[at_]).append(s_.substr(from, stop - from)));
    const std::size_t begin = at_;
    at_ = stop;
    if (number >= 0) readListed(number, begin);
    else noteWord(-1);
    return true;
  }

  void readWord(std::size_t end) {
    const std::size_t begin = at_;
    do ++at_;
    while (at_ < end && kClasses.of[at(s_, at_)] == word);
    hasCode_ = true;
    const char before = begin > 0 ? s_[begin - 1] : ' ';
    if (before == '`' || before == '$' || before == '.') return noteWord(-1);
    const int number = rules_.find(s_.substr(begin, at_ - begin));
    if (number < 0) return noteWord(-1);
    readListed(number, begin);
  }

  void noteWord(int number) {
    noteFollowed();
    if (state_.seenIs) endStatement();
    if (state_.words++ == 0) {
      state_.first = static_cast<std::int16_t>(number);
      state_.opensNothing = number >= 0 && rules_.words()[static_cast<std::size_t>(number)].opensNothing;
    }
    state_.words = std::min<unsigned char>(state_.words, 2);
  }

  // Something of a statement stands behind a closer.
  void noteFollowed() {
    if (after_ >= 0 && !rules_.endsByName()) result_.events[static_cast<std::size_t>(after_)].code |= FoldEvent::kFollowed;
    after_ = -1;
  }

  // Only blanks stand before it in its line.
  bool isFirst(std::size_t at) {
    if (std::exchange(indentOf_, lineStart_) != lineStart_)
      indentEnd_ = std::min(s_.find_first_not_of(" \t", lineStart_), s_.size());
    return at <= indentEnd_;
  }

  void readListed(int number, std::size_t begin) {
    const FoldRules::Word& listed = rules_.words()[static_cast<std::size_t>(number)];
    hasCode_ = true;
    const bool firstInLine = isFirst(begin);
    if (listed.layer != FoldRules::Word::none) {
      if (listed.layer == FoldRules::Word::opens) state_.armDepth = state_.depth;
      else if (listed.layer == FoldRules::Word::middle) state_.depth = state_.armDepth;
      if (s_[begin] == '`' || firstInLine)
        put(listed.layer == FoldRules::Word::opens    ? FoldEvent::layerOpen
            : listed.layer == FoldRules::Word::middle ? FoldEvent::layerMiddle
                                                      : FoldEvent::layerClose,
            0, begin, line_);
      if (s_[begin] == '`' || s_[begin] == '#') return;
    }
    const bool misplaced = rules_.commands() && state_.words > 0;
    if (listed.closer >= 0 && !misplaced) {
      put(FoldEvent::close, listed.closer, begin, line_);
      state_.depth = 0;
      endStatement();
      after_ = static_cast<std::int64_t>(result_.events.size()) - 1;
      return;
    }
    if (listed.opener >= 0 && after_ >= 0 && rules_.endsByName() &&
        result_.events[static_cast<std::size_t>(after_)].role() == FoldEvent::close) {   // "end if"
      result_.events[static_cast<std::size_t>(after_)].code = FoldEvent::coded(FoldEvent::close, FoldEvent::kNamed + listed.opener);
      after_ = -1;
      return;
    }
    if (listed.is && state_.awaitsIs) state_.awaitsIs = false;
    if (listed.is) {
      state_.seenIs = state_.opened;
      if (listed.stops && !state_.opened) endStatement();
      else {
        state_.words = 2;
        after_ = -1;
      }
      return;
    }
    if (state_.seenIs) {
      if (listed.isNew) {
        cancelOpener();   // an instance of something that stands elsewhere
        return;
      }
      endStatement();
    }
    if (listed.opener >= 0 && !misplaced && opens(listed, firstInLine)) {
      const FoldRules::Opener& opener = rules_.openers()[static_cast<std::size_t>(listed.opener)];
      put(FoldEvent::open, listed.opener, begin, line_);
      noteWord(number);
      state_.opened = true;
      state_.awaitsIs = listed.needsIs;
      opener_ = static_cast<std::int64_t>(result_.events.size()) - 1;
      if (opener.always || listed.stops) endStatement();
    } else {
      if (listed.becomes && listed.opener >= 0 && state_.opened && opener_ >= 0 && state_.depth == 0)
        result_.events[static_cast<std::size_t>(opener_)].code = FoldEvent::coded(FoldEvent::open, listed.opener);
      noteWord(number);
      if (listed.stops) endStatement();
    }
  }

  bool opens(const FoldRules::Word& listed, bool firstInLine) {
    const FoldRules::Opener& opener = rules_.openers()[static_cast<std::size_t>(listed.opener)];
    if (opener.always) return true;
    if (opener.unit && firstInLine && state_.depth > 0) {   // a bracket above was not closed
      state_.depth = 0;
      endStatement();
    }
    const bool below = opener_ >= 0 ? result_.events[static_cast<std::size_t>(opener_)].line < line_ : firstInLine;
    if (rules_.hasStops() && state_.opened && below && state_.depth == 0 && !listed.becomes)
      endStatement();   // "process" without more, and a procedure of it below
    if (state_.depth > 0 && !rules_.commands()) return false;
    if (state_.opened || state_.opensNothing) return false;
    if (state_.words == 0 && listed.opensNothing) return false;
    if (state_.words == 1 && state_.first >= 0)
      for (const int first : listed.nothingBefore)
        if (first == state_.first) return false;
    return true;
  }

  void cancelOpener() {
    if (opener_ >= 0 && opener_ < static_cast<std::int64_t>(result_.events.size()))
      result_.events[static_cast<std::size_t>(opener_)].code = FoldEvent::coded(FoldEvent::nothing, 0);
    endStatement();
  }

  void endStatement() {
    state_.words = 0;
    state_.opened = state_.opensNothing = state_.awaitsIs = state_.seenIs = false;
    state_.first = -1;
    opener_ = after_ = -1;
  }

  const FoldRules& rules_;
  const std::string_view s_;
  const char break_;
  FoldState state_;
  FoldStretch result_;
  std::size_t at_ = 0, lineStart_ = 0;
  std::size_t indentOf_ = std::string_view::npos, indentEnd_ = 0;   // see isFirst
  std::int64_t line_ = 0, opener_ = -1, after_ = -1;                // events: the opener of the statement, the closer just before
  bool hasCode_ = false, hasComment_ = false;
};

}   // namespace

FoldStretch scanStretch(const FoldRules& rules, std::string_view bytes, char breaker, const FoldState& in, bool* whole) {
  return Scan(rules, bytes, breaker, in).run(whole);
}

}   // namespace text
