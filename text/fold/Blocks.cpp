#include "text/fold/Blocks.h"

#include <algorithm>
#include <utility>

namespace text {

namespace {
constexpr int kDeepest = 1000;           // how far a closer looks down for its opener
constexpr std::int64_t kLongWord = 80;   // bytes of a block word, with its sign
}   // namespace

// Goes over all events once, with a stack of open blocks. The stack is a chain over the events (below_), so that an arm of conditional
// compilation can go back to where the first began.
class Blocks::Matching {
 public:
  Matching(const Blocks& blocks, const FoldRules& rules, std::vector<std::int32_t>& partner)
      : blocks_(blocks), rules_(rules), partner_(partner), below_(partner.size(), kNone), events_(partner.size()) {}

  void run() {
    std::int32_t number = 0;
    for (const Part& part : blocks_.parts_)
      for (const FoldEvent& event : part.stretch->events) {
        events_[static_cast<std::size_t>(number)] = event.code;
        take(event, number++);
      }
    if (run_ != kNone) partner_[static_cast<std::size_t>(run_)] = kEnd;
    for (const auto& [indent, at] : indents_) partner_[static_cast<std::size_t>(at)] = kEnd;
  }

 private:
  struct Layer {
    std::int32_t opener, last, base, first;   // first: the stack behind the first arm; kEnd: it is not over
  };

  FoldEvent of(std::int32_t number) const { return {0, 0, events_[static_cast<std::size_t>(number)]}; }
  bool isUnit(std::int32_t number) const {
    const FoldEvent event = of(number);
    return event.role() == FoldEvent::open && rules_.openers()[static_cast<std::size_t>(event.number())].unit;
  }
  std::int32_t& below(std::int32_t number) { return below_[static_cast<std::size_t>(number)]; }
  void join(std::int32_t opener, std::int32_t closer) {
    if (partner_[static_cast<std::size_t>(opener)] == kNone) partner_[static_cast<std::size_t>(opener)] = closer;
    partner_[static_cast<std::size_t>(closer)] = opener;
  }

  void take(const FoldEvent& event, std::int32_t number) {
    switch (event.role()) {
      case FoldEvent::nothing: break;
      case FoldEvent::open:
        if (isUnit(number))
          while (top_ != kNone && !isUnit(top_)) top_ = below(top_);
        [[fallthrough]];
      case FoldEvent::bracketOpen:
        below(number) = top_;
        top_ = number;
        break;
      case FoldEvent::close: close(event, number); break;
      case FoldEvent::bracketClose: closeBracket(event.closer(), number); break;
      case FoldEvent::layerOpen: layers_.push_back({number, number, top_, kEnd}); break;
      case FoldEvent::layerMiddle:
        if (layers_.empty()) break;
        if (layers_.back().first == kEnd) layers_.back().first = top_;
        partner_[static_cast<std::size_t>(layers_.back().last)] = number;
        layers_.back().last = number;
        top_ = layers_.back().base;
        break;
      case FoldEvent::layerClose: {
        if (layers_.empty()) break;
        const Layer layer = layers_.back();
        layers_.pop_back();
        if (layer.first != kEnd) top_ = layer.first;
        partner_[static_cast<std::size_t>(layer.last)] = number;
        partner_[static_cast<std::size_t>(number)] = layer.opener;
        break;
      }
      case FoldEvent::regionOpen: regions_.push_back({event.number(), number}); break;
      case FoldEvent::regionClose:
        for (std::size_t i = regions_.size(); i > 0 && regions_.size() - i < kDeepest; --i)
          if (regions_[i - 1].first == event.number()) {
            join(regions_[i - 1].second, number);
            regions_.resize(i - 1);
            break;
          }
        break;
      case FoldEvent::commentOpen: comment_ = number; break;
      case FoldEvent::commentClose:
        if (comment_ != kNone) join(std::exchange(comment_, kNone), number);
        break;
      case FoldEvent::runOpen: run_ = number; break;
      case FoldEvent::runClose:
        if (run_ != kNone) join(std::exchange(run_, kNone), number);
        break;
      case FoldEvent::lastCode: break;
      case FoldEvent::indent: {
        const int width = event.number();
        while (!indents_.empty() && indents_.back().first >= width) {
          partner_[static_cast<std::size_t>(indents_.back().second)] = number;
          indents_.pop_back();
        }
        if (width > indent_) indents_.push_back({indent_, number});
        indent_ = width;
        break;
      }
    }
  }

  void close(const FoldEvent& event, std::int32_t number) {
    const int closer = event.closer();
    std::int32_t open = top_;
    for (int deep = 0; open != kNone && deep < kDeepest; ++deep, open = below(open)) {
      const FoldEvent opened = of(open);
      if (opened.role() != FoldEvent::open) continue;
      const FoldRules::Opener& opener = rules_.openers()[static_cast<std::size_t>(opened.number())];
      if (event.named() ? opened.number() == closer : rules_.closes(closer, opened.number()) && !opener.named && !opener.arms) {
        join(open, number);
        top_ = below(open);
        return;
      }
      if (opener.unit || (opener.arms && !event.named())) return;
    }
  }

  void closeBracket(int kind, std::int32_t number) {
    std::int32_t open = top_;
    for (int deep = 0; open != kNone && deep < kDeepest; ++deep, open = below(open)) {
      const FoldEvent opened = of(open);
      if (opened.role() != FoldEvent::bracketOpen) return;
      if (opened.number() == kind) {
        join(open, number);
        top_ = below(open);
        return;
      }
      if (opened.number() == 2) return;   // a parenthesis closes nothing beyond its braces
    }
  }

  const Blocks& blocks_;
  const FoldRules& rules_;
  std::vector<std::int32_t>& partner_;
  std::vector<std::int32_t> below_;
  std::vector<std::uint16_t> events_;   // their codes
  std::int32_t top_ = kNone, comment_ = kNone, run_ = kNone;
  std::vector<Layer> layers_;
  std::vector<std::pair<int, std::int32_t>> regions_, indents_;
  int indent_ = 0;
};

Blocks::Blocks(Snapshot text, std::shared_ptr<const FoldRules> rules, std::vector<Part> parts)
    : text_(std::move(text)), rules_(std::move(rules)), parts_(std::move(parts)) {
  std::size_t events = 0;
  for (const Part& part : parts_) events += part.stretch->events.size();
  partner_.assign(events, kNone);
  Matching(*this, *rules_, partner_).run();
}

// --- Events -----------------------------------------------------------------------------------------------------------------

const Blocks::Part& Blocks::partOf(std::int64_t number) const {
  const auto behind =
      std::upper_bound(parts_.begin(), parts_.end(), number, [](std::int64_t n, const Part& part) { return n < part.event; });
  return *(behind - 1);
}

const FoldEvent& Blocks::event(std::int64_t number) const {
  const Part& part = partOf(number);
  return part.stretch->events[static_cast<std::size_t>(number - part.event)];
}

ByteOffset Blocks::at(std::int64_t number) const {
  const Part& part = partOf(number);
  return ByteOffset(part.byte + part.stretch->events[static_cast<std::size_t>(number - part.event)].at);
}

LineNo Blocks::lineOf(std::int64_t number) const {
  const Part& part = partOf(number);
  return LineNo(part.line + part.stretch->events[static_cast<std::size_t>(number - part.event)].line);
}

std::int64_t Blocks::eventFrom(ByteOffset offset) const {
  auto part =
      std::upper_bound(parts_.begin(), parts_.end(), offset.value, [](std::int64_t byte, const Part& p) { return byte < p.byte; });
  if (part == parts_.begin()) return 0;
  --part;
  const auto& events = part->stretch->events;
  const auto found =
      std::partition_point(events.begin(), events.end(), [&](const FoldEvent& e) { return part->byte + e.at < offset.value; });
  return part->event + (found - events.begin());
}

std::int64_t Blocks::eventFromLine(LineNo line) const {
  auto part = std::upper_bound(parts_.begin(), parts_.end(), line.value, [](std::int64_t l, const Part& p) { return l < p.line; });
  if (part == parts_.begin()) return 0;
  --part;
  const auto& events = part->stretch->events;
  const auto found =
      std::partition_point(events.begin(), events.end(), [&](const FoldEvent& e) { return part->line + e.line < line.value; });
  return part->event + (found - events.begin());
}

bool Blocks::opens(FoldEvent::Role role) const {
  return role == FoldEvent::open || role == FoldEvent::bracketOpen || role == FoldEvent::layerOpen ||
         role == FoldEvent::layerMiddle || role == FoldEvent::regionOpen || role == FoldEvent::commentOpen ||
         role == FoldEvent::runOpen || role == FoldEvent::indent;
}

std::int64_t Blocks::closerOf(std::int64_t opener) const {
  std::int64_t closer = partner_[static_cast<std::size_t>(opener)];
  while (closer >= 0 && event(closer).role() == FoldEvent::layerMiddle) closer = partner_[static_cast<std::size_t>(closer)];
  return closer;
}

// The bytes of the word of an event, with its sign; of "end if" both words.
ByteRange Blocks::wordOf(std::int64_t number) const {
  const FoldEvent& what = event(number);
  const ByteOffset begin = at(number), end = std::min(text_.lineEnd(lineOf(number)), begin + 2 * kLongWord);
  const std::string bytes = text_.bytes({begin, end});
  std::size_t to = 0;
  const auto blanks = [&] {
    while (to < bytes.size() && (bytes[to] == ' ' || bytes[to] == '\t')) ++to;
  };
  const auto word = [&] {
    while (to < bytes.size() && wordByte(bytes[to])) ++to;
  };
  switch (what.role()) {
    case FoldEvent::regionOpen:
    case FoldEvent::regionClose: {
      const FoldRules::Region& region = rules_->regions()[static_cast<std::size_t>(what.number())];
      to = (what.role() == FoldEvent::regionOpen ? region.begin : region.end).size();
      break;
    }
    case FoldEvent::open:
    case FoldEvent::close:
    case FoldEvent::layerOpen:
    case FoldEvent::layerMiddle:
    case FoldEvent::layerClose:
      if (!bytes.empty() && !wordByte(bytes[0])) {
        ++to;
        blanks();
      }
      word();
      if (what.role() == FoldEvent::close && what.named()) {
        blanks();
        word();
      }
      break;
    default: to = 1;
  }
  return {begin, std::min(begin + static_cast<std::int64_t>(to), text_.size())};
}

// --- Blocks -------------------------------------------------------------------------------------------------------------------

std::optional<Blocks::Pair> Blocks::pairAt(ByteOffset at) const {
  const auto isWord = [&](std::int64_t number) {
    const FoldEvent::Role role = event(number).role();
    return role == FoldEvent::open || role == FoldEvent::close || (role >= FoldEvent::layerOpen && role <= FoldEvent::regionClose);
  };
  for (std::int64_t number = eventFrom(at + 1) - 1; number >= 0; --number) {
    if (at - this->at(number) > 2 * kLongWord) break;
    const std::int32_t partner = partner_[static_cast<std::size_t>(number)];
    if (partner < 0 || !isWord(number)) continue;
    const ByteRange here = wordOf(number);
    if (here.begin <= at && at <= here.end) return Pair{here, wordOf(partner)};
  }
  return std::nullopt;
}

// Reads events one after the other, without a search for each.
class Blocks::Reader {
 public:
  explicit Reader(const Blocks& blocks) : blocks_(blocks) {}
  const FoldEvent& operator()(std::int64_t number) {
    if (!part_ || number < part_->event || number - part_->event >= std::ssize(part_->stretch->events))
      part_ = &blocks_.partOf(number);
    return part_->stretch->events[static_cast<std::size_t>(number - part_->event)];
  }

 private:
  const Blocks& blocks_;
  const Part* part_ = nullptr;
};

std::optional<ByteRange> Blocks::around(ByteRange range) const {
  std::optional<ByteRange> best;
  bool layerFound = false, blockFound = false;
  Reader read(*this);
  // The text of a word is read only where the word may reach so far.
  const auto isBefore = [&](std::int64_t number, ByteOffset offset) {
    return at(number) + 2 * kLongWord < offset || wordOf(number).end < offset;
  };
  for (std::int64_t number = eventFrom(range.begin + 1) - 1; number >= 0 && !(layerFound && blockFound); --number) {
    const FoldEvent& what = read(number);
    const FoldEvent::Role role = what.role();
    const bool layer = role >= FoldEvent::layerOpen && role <= FoldEvent::layerClose;
    if (layer ? layerFound : blockFound) continue;
    const std::int64_t partner = partner_[static_cast<std::size_t>(number)];
    if (role == FoldEvent::close || role == FoldEvent::bracketClose) {   // over the block that it ends
      if (partner >= 0 && isBefore(number, range.begin + 1)) number = partner;
      continue;
    }
    if (partner == kNone || role == FoldEvent::layerMiddle || role == FoldEvent::runOpen || !opens(role)) continue;
    ByteRange block{at(number), text_.size()};
    if (role == FoldEvent::indent) {
      const LineNo first = lineOf(number) - read(number - 1).number();
      if (first.value < 0) continue;   // the first line of the text is indented
      block.begin = text_.lineStart(first);
      if (partner >= 0) block.end = text_.lineEnd(lineOf(partner) - event(partner - 1).number());
    } else if (const std::int64_t closer = closerOf(number); closer >= 0) {
      if (isBefore(closer, range.end)) continue;
      block.end = wordOf(closer).end;
    }
    const bool holds = block.begin <= range.begin && range.end <= block.end && block.length() > range.length();
    if (!holds) continue;
    if (!best || block.length() < best->length()) best = block;
    (layer ? layerFound : blockFound) = true;
  }
  return best;
}

std::optional<Fold> Blocks::foldOf(std::int64_t number) const {
  const FoldEvent what = event(number);
  const std::int64_t partner = partner_[static_cast<std::size_t>(number)];
  if (!opens(what.role()) || partner == kNone) return std::nullopt;
  const std::int64_t lastLine = text_.lineCount() - 1;
  Fold fold{lineOf(number), LineNo(lastLine)};
  if (what.role() == FoldEvent::indent) fold.first = fold.first - event(number - 1).number();
  if (fold.first.value < 0) return std::nullopt;   // the first line of the text is indented
  if (partner < 0) {
    if (lastLine > 0 && text_.lineStart(LineNo(lastLine)) == text_.size()) fold.last = LineNo(lastLine - 1);
  } else {
    const FoldEvent closer = event(partner);
    fold.last = lineOf(partner);
    bool kept = closer.role() == FoldEvent::layerMiddle || closer.role() == FoldEvent::runClose;   // this line goes on being seen
    if (closer.role() == FoldEvent::close || closer.role() == FoldEvent::bracketClose)
      kept = (closer.code & FoldEvent::kFollowed) != 0;
    for (std::int64_t next = partner + 1; !kept && next < static_cast<std::int64_t>(partner_.size()) && lineOf(next) == fold.last;
         ++next)
      kept = opens(event(next).role());
    if (what.role() == FoldEvent::indent) fold.last = fold.last - event(partner - 1).number();
    else if (kept) fold.last = fold.last - 1;
  }
  if (fold.last <= fold.first) return std::nullopt;
  return fold;
}

std::vector<Fold> Blocks::foldsIn(LineNo first, LineNo end) const {
  std::vector<Fold> folds;
  const auto count = static_cast<std::int64_t>(partner_.size());
  std::int64_t number = eventFromLine(first);
  // The first line of an indented block stands above its event.
  for (; number < count; ++number) {
    const LineNo line = lineOf(number);
    if (line >= end) {
      const FoldEvent what = event(number);
      if (!rules_->indent() || (what.role() == FoldEvent::lastCode && line - what.number() >= end)) break;
      if (what.role() != FoldEvent::indent) continue;
    }
    const auto fold = foldOf(number);
    if (!fold || fold->first < first || fold->first >= end) continue;
    const auto place = std::partition_point(folds.begin(), folds.end(), [&](const Fold& f) { return f.first < fold->first; });
    if (place == folds.end() || place->first != fold->first) folds.insert(place, *fold);
    else place->last = std::max(place->last, fold->last);
  }
  return folds;
}

std::vector<Fold> Blocks::foldsAround(LineNo line, std::int64_t most, std::size_t enough) const {
  std::vector<Fold> folds = foldsIn(line, line + 1);
  const auto count = static_cast<std::int64_t>(partner_.size());
  // An indented block whose blank lines above its event hold the line.
  for (std::int64_t number = eventFromLine(line + 1); rules_->indent() && number < count && most > 0; ++number, --most) {
    if (event(number).role() != FoldEvent::indent) continue;
    if (const auto fold = foldOf(number); fold && fold->first < line) folds.push_back(*fold);
    break;
  }
  Reader read(*this);
  for (std::int64_t number = eventFromLine(line + 1) - 1; number >= 0 && most > 0 && folds.size() < enough; --number, --most) {
    const FoldEvent::Role role = read(number).role();
    const std::int64_t partner = partner_[static_cast<std::size_t>(number)];
    if ((role == FoldEvent::close || role == FoldEvent::bracketClose) && partner >= 0 &&
        lineOf(number) < line) {   // over the block that it ends
      number = partner;
      continue;
    }
    if (!opens(role) || (partner >= 0 && lineOf(partner) < line)) continue;
    const auto fold = foldOf(number);
    if (!fold || fold->first >= line || fold->last < line) continue;
    if (!folds.empty() && folds.back().first == fold->first) folds.back().last = std::max(folds.back().last, fold->last);
    else folds.push_back(*fold);
  }
  std::ranges::stable_sort(folds, std::ranges::greater{}, &Fold::first);
  return folds;
}

}   // namespace text
