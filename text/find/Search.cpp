#include "text/find/Finder.h"

#include <algorithm>
#include <utility>

#include "text/find/Literal.h"
#include "text/find/Regex.h"
#include "text/find/Replacement.h"
#include "text/line/Chars.h"
#include "text/line/Cursor.h"
#include "text/line/Words.h"
#include "text/store/SnapshotViews.h"

namespace text {

namespace {

constexpr std::int64_t slice = 1 << 20;   // bytes between two checks of the control
constexpr std::size_t mostMatches = std::size_t(1) << 26;

std::int64_t length(std::string_view s) { return static_cast<std::int64_t>(s.size()); }

ByteRange clipped(const Snapshot& text, ByteRange within) {
  const ByteOffset zero(0), size = text.size();
  const ByteOffset begin = std::clamp(within.begin, zero, size);
  return {begin, std::clamp(within.end, begin, size)};
}

// Reports the progress of a search and checks for cancel.
struct Pace {
  SearchControl* control;
  FindBudget* budget = nullptr;
  bool reports = true;
  bool cancelled = false;
  bool stopped() {
    if (budget && FindBudget::Clock::now() >= budget->deadline) budget->spent = true;
    return (budget && budget->spent) || (control && control->cancel.load(std::memory_order_relaxed));
  }
  bool go(std::int64_t bytesDone) {
    report(bytesDone);
    cancelled = stopped();
    return !cancelled;
  }
  void report(std::int64_t bytesDone) {
    if (control && reports) control->bytesDone.store(bytesDone, std::memory_order_relaxed);
  }
  void stop() {   // the matcher was stopped, or an attempt was too expensive
    cancelled = true;
    if (budget && !stopped()) budget->spent = true;
  }
};

bool isWord(const Char& c) { return c.bytes > 0 && !c.bad && classOf(c.code) == CharClass::word; }

// Whether no word continues across this position.
bool wordBorder(const Snapshot& text, ByteOffset at) {
  Cursor cursor(text, at);
  return !isWord(cursor.peekBefore()) || !isWord(cursor.peek());
}

ByteOffset findByte(const Snapshot& text, const ByteSet& set, ByteOffset from, ByteOffset end) {
  while (from < end) {
    const auto chunk = text.chunkAt(from);
    const auto hit = set.find(chunk, 0);
    from += static_cast<std::int64_t>(hit);
    if (hit < chunk.size()) break;
  }
  return std::min(from, end);
}

// Whether the position is not inside a character.
bool characterBorder(const Snapshot& text, ByteOffset at) {
  const ByteOffset from = std::max(ByteOffset(0), at - 3);
  const std::string around = text.bytes({from, at + 3});
  for (ByteOffset start = from; start < at; start += 1) {
    const Char c = decode(std::string_view(around).substr(static_cast<std::size_t>(start - from)));
    if (!c.bad && start + c.bytes > at) return false;
  }
  return true;
}

}   // namespace

struct Finder::Impl {
  std::string error;
  SearchOptions options;
  std::int64_t usualWindow() const { return std::max<std::int64_t>(options.window, 8); }
  std::optional<Literal> literal;
  std::unique_ptr<Regex> regex;

  // Clips the range to the text. False: the expression is faulty, which the result then says.
  bool begins(const Snapshot& text, ByteRange* within, SearchResult* result) const {
    *within = clipped(text, *within);
    result->error = error;
    return error.empty();
  }

  // `view` begins at `base` and holds the match.
  bool wholeWord(const Snapshot& text, ByteRange r, std::string_view view, ByteOffset base) const {
    const auto border = [&](ByteOffset at) {
      const auto i = static_cast<std::size_t>(at - base);
      if (i == 0 || i >= view.size() || static_cast<unsigned char>(view[i - 1] | view[i]) >= 0x80) return wordBorder(text, at);
      return classOf(static_cast<char32_t>(view[i - 1])) != CharClass::word ||
             classOf(static_cast<char32_t>(view[i])) != CharClass::word;
    };
    return !options.wholeWord || (border(r.begin) && border(r.end));
  }
  bool acceptable(const Snapshot& text, ByteRange r, std::string_view view, ByteOffset base) const {
    if (!wholeWord(text, r, view, base)) return false;
    return literal->wholeCharacters() || (characterBorder(text, r.begin) && characterBorder(text, r.end));
  }

  // A sink takes a match and returns whether to continue.
  template <class Sink>
  void literalForward(const Snapshot& text, ByteRange within, Pace& pace, Sink sink) const;
  std::optional<ByteRange> literalBackward(const Snapshot& text, ByteRange within, Pace& pace) const;
  // Finds matches that start at or before `lastStart`. The sink also gets the matcher and the text offset of its subject. Returns
  // an error or nothing.
  template <class Sink>
  std::string regexForward(const Snapshot& text, ByteRange within, ByteOffset lastStart, Pace& pace, Sink sink) const;
  void setGroups(Match* match, ByteRange range, const Regex::Matcher& matcher, ByteOffset base) const;
  // Where to begin, so that a match at `at` is found as by a search from the top: `size` bytes before it, at the start of a line.
  ByteOffset lineBefore(const Snapshot& text, ByteOffset at, std::int64_t size, ByteOffset limit) const;
  SearchResult regexBackward(const Snapshot& text, ByteOffset from, ByteRange within, SearchControl* control) const;
};

// Literal -------------------------------------------------------------------------------------------------------------

template <class Sink>
void Finder::Impl::literalForward(const Snapshot& text, ByteRange within, Pace& pace, Sink sink) const {
  SnapshotViews views(text);
  const auto longest = static_cast<std::int64_t>(literal->maxBytes());
  const std::int64_t need = std::max(usualWindow() / 8, 2 * longest), most = std::max(slice, 2 * longest);
  const bool check = options.wholeWord || !literal->wholeCharacters();
  ByteOffset at = within.begin;
  while (at < within.end) {
    if (!pace.go(at - within.begin)) return;
    const auto view = views.ahead(at, need, within.end).substr(0, static_cast<std::size_t>(most));
    const bool last = at + length(view) == within.end;
    // A match that starts later may be cut by the end of the window, or be taken for a shorter one.
    const auto starts = last ? view.size() : view.size() - static_cast<std::size_t>(longest) + 1;
    std::size_t next = 0;
    for (auto hit = literal->find(view, next); hit && hit->begin < starts; hit = literal->find(view, next)) {
      const ByteRange range{at + static_cast<std::int64_t>(hit->begin), at + static_cast<std::int64_t>(hit->begin + hit->length)};
      next = hit->begin + 1;
      if (check && !acceptable(text, range, view, at)) continue;
      if (!sink(range)) return;
      next = hit->begin + hit->length;
    }
    at += static_cast<std::int64_t>(std::max(starts, next));
  }
  pace.report(within.length());
}

std::optional<ByteRange> Finder::Impl::literalBackward(const Snapshot& text, ByteRange within, Pace& pace) const {
  SnapshotViews views(text);
  const auto longest = static_cast<std::int64_t>(literal->maxBytes());
  std::int64_t size = std::max(usualWindow() / 8, 4 * longest);
  ByteOffset end = within.end, startsBefore = within.end;   // later starts have been examined
  while (end > within.begin) {
    if (!pace.go(within.end - end)) return std::nullopt;
    auto view = views.behind(end, size, within.begin);
    if (length(view) > size) view.remove_prefix(static_cast<std::size_t>(length(view) - size));
    const ByteOffset base = end - length(view);
    std::optional<ByteRange> found;
    for (auto hit = literal->find(view, 0); hit; hit = literal->find(view, hit->begin + 1)) {
      const ByteRange range{base + static_cast<std::int64_t>(hit->begin),
                            base + static_cast<std::int64_t>(hit->begin + hit->length)};
      if (range.begin >= startsBefore) break;
      if (acceptable(text, range, view, base)) found = range;
    }
    if (found) return found;
    if (base == within.begin) break;
    startsBefore = base;
    end = std::min(within.end, base + longest - 1);
    size = std::max(std::min(size * 2, slice), 4 * longest);
  }
  return std::nullopt;
}

// Regular expressions -------------------------------------------------------------------------------------------------

// Goes through the text in windows of the usual size. If a window cannot decide, another one starts at the undecided place and
// grows until it decides. So each step is cheap whatever the expression does, the search can be cancelled, and no more text is
// copied than a match attempt examines.
template <class Sink>
std::string Finder::Impl::regexForward(const Snapshot& text, ByteRange within, ByteOffset lastStart, Pace& pace, Sink sink) const {
  SnapshotViews views(text);
  Regex::Matcher matcher(
      *regex, [&pace] { return pace.stopped(); }, pace.budget ? pace.budget->steps : 0);
  Regex::Options how;
  const bool endsLine = within.end == text.size() || text.at(within.end) == '\n' || text.at(within.end) == '\r';
  const std::int64_t usual = regex->needsWholeText() ? text.size().value + 1024 : usualWindow();
  std::int64_t grown = usual, effort = 2 * text.size().value + (std::int64_t(4) << 30);
  const char breaker = text.lineMode() == LineMode::lf ? '\n' : '\r';
  ByteOffset required = within.begin;   // the first byte at or behind the last position that every match needs
  ByteOffset at = within.begin;
  // CR LF is one break: no line begins or ends inside it.
  if (!regex->namesLineBreaks() && at > ByteOffset(0) && at < within.end && text.at(at - 1) == '\r' && text.at(at) == '\n') at += 1;
  while (at <= lastStart) {
    if (!pace.go(at - within.begin)) return {};
    const ByteOffset first = at;
    // The text before may decide too, and shows the matcher that the text does not begin here.
    Cursor before(text, at);
    for (int i = 0; i < std::max(regex->lookBehind(), 2) && !before.atStart(); ++i) before.previous();
    const ByteOffset base = before.at();
    const bool growing = grown > usual;
    const std::int64_t size = growing ? grown : std::min(grown, lastStart - at + 1024);
    auto view = views.ahead(base, at - base + size, within.end).substr(0, static_cast<std::size_t>(at - base + size));
    const bool last = base + length(view) == within.end;
    const auto lines = !last && !growing && regex->staysInLine() ? view.rfind(breaker) + 1 : 0;   // 0: none ends here
    const bool wholeLines = lines > static_cast<std::size_t>(at - base);
    how.last = last || wholeLines;
    how.endsLine = endsLine || wholeLines;
    if (wholeLines) {
      view = view.substr(0, lines);
    } else if (!last) {   // do not end inside a character or inside CR LF
      std::size_t cut = view.size();
      while (cut > 0 && view.size() - cut < 3 && (static_cast<unsigned char>(view[cut - 1]) & 0xC0) == 0x80) --cut;
      if (cut > 0 && static_cast<unsigned char>(view[cut - 1]) >= 0xC0 && decode(view.substr(cut - 1)).bad)
        view = view.substr(0, cut - 1);
      if (view.back() == '\r') view.remove_suffix(1);
    }
    matcher.setSubject(view);
    if (growing && (effort -= length(view)) < 0) return "The expression takes too long on this text: the search was given up.";

    auto from = static_cast<std::size_t>(at - base);
    for (bool more = true; more;) {
      how.onlyAtStart = growing;
      const Regex::Outcome result = matcher.match(from, how);
      switch (result.kind) {
        case Regex::Outcome::failed: return matcher.error();
        case Regex::Outcome::stopped: pace.stop(); return {};
        case Regex::Outcome::found: {
          if (wholeLines && result.begin == view.size()) {   // belongs to the next line
            at = base + length(view);
            if (from < result.begin) how.notEmptyAtStart = false;
            more = false;
            break;
          }
          const ByteRange range{base + static_cast<std::int64_t>(result.begin), base + static_cast<std::int64_t>(result.end)};
          if (range.begin > lastStart) return {};
          const bool whole = wholeWord(text, range, view, base);
          if (whole && !sink(range, matcher, base)) return {};
          if (whole || range.empty()) {
            how.notEmptyAtStart = result.begin == result.end;
            from = result.end;
          } else {
            from = result.begin + static_cast<std::size_t>(decode(view.substr(result.begin)).bytes);
            how.notEmptyAtStart = false;
          }
          at = base + static_cast<std::int64_t>(from);
          more = !growing;
          grown = usual;
          break;
        }
        case Regex::Outcome::none:
          more = false;
          if (growing) {   // only this start is decided
            grown = usual;
            if (at >= within.end) return {};
            const bool pair = !regex->namesLineBreaks() && view.substr(from, 2) == "\r\n";
            at += pair ? 2 : decode(view.substr(from)).bytes;
            how.notEmptyAtStart = false;
            break;
          }
          if (last) {
            pace.report(within.length());
            return {};
          }
          if (base + length(view) > at) how.notEmptyAtStart = false;
          at = base + length(view);
          break;
        case Regex::Outcome::undecided: {
          more = false;
          const ByteOffset start = base + static_cast<std::int64_t>(result.begin);
          if (start > at) how.notEmptyAtStart = false;
          at = start;
          grown = start > first ? usual : 2 * std::max(size, usual);
          if (grown > usual && !regex->required().empty()) {
            // A long match in progress: without that byte there is no match, not even a shorter one.
            required = findByte(text, regex->required(), std::max(required, at), within.end);
            if (required >= within.end) {
              pace.report(within.length());
              return {};
            }
            grown = std::max(grown, required - at + 1024);
          }
          break;
        }
      }
    }
  }
  return {};
}

void Finder::Impl::setGroups(Match* match, ByteRange range, const Regex::Matcher& matcher, ByteOffset base) const {
  match->range = range;
  match->groups.assign(1, range);
  for (int n = 1; n <= regex->groupCount(); ++n) {
    const auto [begin, end] = matcher.group(n);
    if (begin == std::string::npos) match->groups.push_back({ByteOffset(-1), ByteOffset(-1)});
    else match->groups.push_back({base + static_cast<std::int64_t>(begin), base + static_cast<std::int64_t>(end)});
  }
}

ByteOffset Finder::Impl::lineBefore(const Snapshot& text, ByteOffset at, std::int64_t size, ByteOffset limit) const {
  const ByteOffset begin = std::max(limit, at - size);
  const ByteOffset line = text.lineStart(text.lineAt(begin));
  return begin - line < slice ? std::max(limit, line) : previousChar(text, nextChar(text, begin));
}

// The last of the successive matches from a line start shortly before. For expressions that cannot match a line break these are the
// matches of a search from the top.
SearchResult Finder::Impl::regexBackward(const Snapshot& text, ByteOffset from, ByteRange within, SearchControl* control) const {
  SearchResult result;
  Pace pace{control}, inner{control, nullptr, false};
  const ByteOffset end = std::clamp(from, within.begin, within.end);
  std::int64_t size = usualWindow() / 8;
  for (ByteOffset lastStart = end;;) {
    if (!pace.go(end - lastStart)) {
      result.cancelled = true;
      return result;
    }
    const ByteOffset begin = lineBefore(text, lastStart, size, within.begin);
    result.error = regexForward(text, {begin, within.end}, lastStart, inner,
                                [&](ByteRange range, const Regex::Matcher& matcher, ByteOffset base) {
                                  if (range.end <= end) setGroups(&result.match.emplace(), range, matcher, base);
                                  return true;
                                });
    result.cancelled = inner.cancelled;
    if (result.cancelled || !result.error.empty()) result.match.reset();
    if (result.match || result.cancelled || !result.error.empty() || begin == within.begin) return result;
    lastStart = begin - 1;
    size = std::min(size * 2, slice);
  }
}

// Finder --------------------------------------------------------------------------------------------------------------

Finder::Finder(std::string what, SearchOptions options) : impl_(new Impl) {
  impl_->options = options;
  if (what.empty()) {
    impl_->error = "There is no text to search for.";
  } else if (options.regex) {
    impl_->regex = std::make_unique<Regex>(what, options.matchCase, options.wholeWord);
    impl_->error = impl_->regex->error();
  } else {
    impl_->literal.emplace(std::move(what), options.matchCase);
  }
}

Finder::~Finder() = default;
Finder::Finder(Finder&&) noexcept = default;
Finder& Finder::operator=(Finder&&) noexcept = default;
const std::string& Finder::error() const { return impl_->error; }

SearchResult Finder::forward(const Snapshot& text, ByteOffset from, ByteRange within, SearchControl* control) const {
  SearchResult result;
  if (!impl_->begins(text, &within, &result) || from > within.end) return result;
  within.begin = std::max(within.begin, from);
  Pace pace{control};
  if (impl_->regex)
    result.error =
        impl_->regexForward(text, within, within.end, pace, [&](ByteRange range, const Regex::Matcher& matcher, ByteOffset base) {
          impl_->setGroups(&result.match.emplace(), range, matcher, base);
          return false;
        });
  else
    impl_->literalForward(text, within, pace, [&](ByteRange range) {
      result.match = Match{range, {}};
      return false;
    });
  result.cancelled = pace.cancelled;
  return result;
}

SearchResult Finder::backward(const Snapshot& text, ByteOffset from, ByteRange within, SearchControl* control) const {
  SearchResult result;
  if (!impl_->begins(text, &within, &result) || from < within.begin) return result;
  if (impl_->regex) return impl_->regexBackward(text, from, within, control);
  within.end = std::min(within.end, from);
  Pace pace{control};
  if (const auto range = impl_->literalBackward(text, within, pace)) result.match = Match{*range, {}};
  result.cancelled = pace.cancelled;
  return result;
}

SearchResult Finder::at(const Snapshot& text, ByteRange range, ByteRange within, FindBudget* budget) const {
  SearchResult result;
  if (!impl_->begins(text, &within, &result) || range.begin < within.begin || range.end > within.end) return result;
  Pace pace{nullptr, budget};
  if (!impl_->regex) {
    const auto longest = static_cast<std::int64_t>(impl_->literal->maxBytes());
    if (range.length() > longest) return result;
    within = {range.begin, std::min(within.end, range.begin + 2 * longest)};
    impl_->literalForward(text, within, pace, [&](ByteRange found) {
      if (found == range) result.match = Match{range, {}};
      return false;
    });
  } else {
    // First from the position itself; then from further up, because with \K a match begins behind the start of matching.
    for (const ByteOffset begin : {range.begin, impl_->lineBefore(text, range.begin, impl_->usualWindow() / 8, within.begin)}) {
      if (result.match || pace.cancelled || !result.error.empty()) break;
      result.error = impl_->regexForward(text, {begin, within.end}, range.begin, pace,
                                         [&](ByteRange found, const Regex::Matcher& matcher, ByteOffset base) {
                                           if (found == range) impl_->setGroups(&result.match.emplace(), found, matcher, base);
                                           return !result.match && found.begin <= range.begin;
                                         });
    }
  }
  result.cancelled = pace.cancelled;
  return result;
}

SearchEnd Finder::each(const Snapshot& text, ByteRange within, const std::function<bool(const Match&)>& take,
                       SearchControl* control) const {
  SearchEnd result{impl_->error};
  if (!result.error.empty()) return result;
  within = clipped(text, within);
  Match match;
  Pace pace{control};
  if (impl_->regex) {
    result.error =
        impl_->regexForward(text, within, within.end, pace, [&](ByteRange range, const Regex::Matcher& matcher, ByteOffset base) {
          impl_->setGroups(&match, range, matcher, base);
          return take(match);
        });
  } else {
    impl_->literalForward(text, within, pace, [&](ByteRange range) {
      match.range = range;
      return take(match);
    });
  }
  result.cancelled = pace.cancelled;
  return result;
}

SearchAllResult Finder::all(const Snapshot& text, ByteRange within, SearchControl* control, FindBudget* budget) const {
  SearchAllResult result;
  result.error = impl_->error;
  if (!result.error.empty()) return result;
  within = clipped(text, within);
  bool tooMany = false;
  const auto take = [&](ByteRange range) {
    tooMany = result.ranges.size() >= mostMatches;
    if (!tooMany) result.ranges.push_back(range);
    return !tooMany;
  };
  Pace pace{control, budget};
  if (impl_->regex)
    result.error =
        impl_->regexForward(text, within, within.end, pace, [&](ByteRange range, const auto&, ByteOffset) { return take(range); });
  else impl_->literalForward(text, within, pace, take);
  if (tooMany) result.error = "The text is found more than " + std::to_string(mostMatches) + " times.";
  result.cancelled = pace.cancelled;
  if (!result.error.empty() || result.cancelled) result.ranges.clear();
  return result;
}

std::optional<std::string> Finder::replacementFor(const Snapshot& text, const Match& match, std::string_view replacement,
                                                  bool preserveCase, std::string* error, const NewLines& newLines) const {
  std::optional<std::string> out(withBreaks(text, match.range.begin, replacement, newLines));
  if (impl_->regex) {
    std::string why;
    out = expandReplacement(
        text, match, *out, [this](std::string_view name) { return impl_->regex->groupByName(name); }, &why, newLines);
    if (!out && error) *error = why;
  }
  if (out && preserveCase) out = inCaseOf(text.bytes(match.range), *out);
  return out;
}

// Searcher ------------------------------------------------------------------------------------------------------------

struct Searcher::Impl {
  Finder finder;
};

Searcher::Searcher(std::string what, SearchOptions options) : impl_(new Impl{Finder(std::move(what), options)}) {}
Searcher::~Searcher() = default;
Searcher::Searcher(Searcher&&) noexcept = default;
Searcher& Searcher::operator=(Searcher&&) noexcept = default;
const std::string& Searcher::error() const { return impl_->finder.error(); }

SearchResult Searcher::forward(const Snapshot& text, ByteOffset from, ByteRange within, SearchControl* control) const {
  return impl_->finder.forward(text, from, within, control);
}
SearchResult Searcher::backward(const Snapshot& text, ByteOffset from, ByteRange within, SearchControl* control) const {
  return impl_->finder.backward(text, from, within, control);
}
SearchAllResult Searcher::all(const Snapshot& text, ByteRange within, SearchControl* control) const {
  return impl_->finder.all(text, within, control);
}
SearchResult Searcher::forward(const Snapshot& text, ByteOffset from) const {
  return forward(text, from, {ByteOffset(0), text.size()});
}
SearchResult Searcher::backward(const Snapshot& text, ByteOffset from) const {
  return backward(text, from, {ByteOffset(0), text.size()});
}
std::optional<std::string> Searcher::replacementFor(const Snapshot& text, const Match& match, std::string_view replacement,
                                                    bool preserveCase, std::string* error) const {
  return impl_->finder.replacementFor(text, match, replacement, preserveCase, error);
}

}   // namespace text
