#include "text/diff/LineDiff.h"

#include <algorithm>

#include "text/diff/Match.h"
#include "text/store/CommonEnds.h"
#include "text/store/ContentHash.h"

namespace text {
namespace {

constexpr unsigned char kBlankLine = 255;
constexpr std::int64_t kSlide = 1000;   // lines
constexpr std::int64_t kMany = 64;      // lines that are compared by their bytes at once

// Gives lines with equal hashes equal numbers.
class Numbers {
 public:
  Numbers() : slots_(1 << 10) {}

  // The numbers of lines by their hashes. The table is larger than any cache: places that will be asked for are fetched ahead.
  std::vector<std::uint32_t> of(const std::vector<std::uint64_t>& hashes) {
    constexpr std::size_t kAhead = 16;
    std::vector<std::uint32_t> ids;
    ids.reserve(hashes.size());
    for (std::size_t i = 0; i < hashes.size(); ++i) {
      if (i + kAhead < hashes.size()) fetch(&slots_[hashes[i + kAhead] & (slots_.size() - 1)]);
      Slot* const slot = find(hashes[i]);
      if (slot->id == 0) *slot = {hashes[i], ++used_};
      ids.push_back(slot->id - 1);
      if (std::size_t(used_) * 3 > slots_.size() * 2) grow();
    }
    return ids;
  }

 private:
  struct Slot {
    std::uint64_t hash = 0;
    std::uint32_t id = 0;   // 0: free
  };
  static void fetch([[maybe_unused]] const Slot* slot) {
#ifdef __GNUC__
    __builtin_prefetch(slot, 1);
#endif
  }
  Slot* find(std::uint64_t hash) {
    std::size_t at = hash & (slots_.size() - 1);
    while (slots_[at].id != 0 && slots_[at].hash != hash) at = (at + 1) & (slots_.size() - 1);
    return &slots_[at];
  }
  void grow() {
    std::vector<Slot> old(slots_.size() * 2);
    old.swap(slots_);
    for (const Slot& slot : old)
      if (slot.id != 0) *find(slot.hash) = slot;
  }
  std::vector<Slot> slots_;
  std::uint32_t used_ = 0;
};

struct Side {
  std::vector<std::uint32_t> ids;
  std::vector<unsigned char> indents;   // in cells, or kBlankLine
  std::vector<char> nothing;            // only what the rules ignore; empty: there are no rules

  bool nothingIn(LineNo begin, LineNo end) const {
    return std::find(nothing.begin() + begin.value, nothing.begin() + end.value, 0) == nothing.begin() + end.value;
  }
};

unsigned char indentOf(std::string_view line) {
  unsigned cells = 0;
  for (const char c : line) {
    if (c == '\t') cells = (cells / 8 + 1) * 8;
    else if (c == ' ') ++cells;
    else return static_cast<unsigned char>(std::min(cells, 254u));
  }
  return kBlankLine;
}

Side read(const Snapshot& text, const DiffRules& rules, const std::shared_ptr<const Highlighter>& comments, Numbers* numbers,
          const std::atomic<bool>* cancel) {
  Side side;
  const auto count = static_cast<std::size_t>(text.lineCount());
  std::vector<std::uint64_t> hashes;
  hashes.reserve(count);
  side.indents.reserve(count);
  if (!rules.plain()) side.nothing.reserve(count);
  BareLines reader(text, rules, comments);
  for (std::string_view line; reader.next(&line) && !(cancel && *cancel);) {
    hashes.push_back(ContentHash::of(line));
    side.indents.push_back(indentOf(reader.whole()));
    if (!rules.plain()) side.nothing.push_back(reader.nothing());
  }
  side.ids = numbers->of(hashes);
  return side;
}

// Lines that do not count must not draw others apart: those that do are matched alone. The others follow the lines above and below.
Matched match(const Side& a, const Side& b, const std::atomic<bool>* cancel) {
  if (a.nothing.empty()) return matchIds(a.ids, b.ids, cancel);
  std::vector<std::uint32_t> one, other;
  const auto counting = [](const Side& side, std::vector<std::uint32_t>* ids) {
    for (std::size_t i = 0; i < side.ids.size(); ++i)
      if (!side.nothing[i]) ids->push_back(side.ids[i]);
  };
  counting(a, &one), counting(b, &other);
  const Matched counts = matchIds(one, other, cancel);
  Matched all{std::vector<char>(a.ids.size(), 1), std::vector<char>(b.ids.size(), 1), counts.steps};
  const auto pair = [&](std::size_t i, std::size_t j) { all.gone[i] = all.fresh[j] = 0; };
  std::size_t i = 0, j = 0, n = 0, m = 0;   // lines; lines that count
  for (const std::size_t endA = a.ids.size(), endB = b.ids.size(); i < endA || j < endB;) {
    std::size_t toA = i, toB = j;   // the next lines that both have
    for (; toA < endA && (a.nothing[toA] || counts.gone[n]); ++toA) n += !a.nothing[toA];
    for (; toB < endB && (b.nothing[toB] || counts.fresh[m]); ++toB) m += !b.nothing[toB];
    std::size_t lastA = toA, lastB = toB;
    for (; i < toA && j < toB && a.nothing[i] && b.nothing[j]; ++i, ++j) pair(i, j);
    for (; lastA > i && lastB > j && a.nothing[lastA - 1] && b.nothing[lastB - 1]; --lastA, --lastB) pair(lastA - 1, lastB - 1);
    if (toA < endA && toB < endB) pair(toA, toB), ++n, ++m;
    i = toA + 1, j = toB + 1;
  }
  return all;
}

std::vector<LineHunk> hunksOf(const Matched& matched) {
  std::vector<LineHunk> hunks;
  const auto n = std::ssize(matched.gone), m = std::ssize(matched.fresh);
  for (std::int64_t i = 0, j = 0; i < n || j < m; ++i, ++j) {
    const std::int64_t fromA = i, fromB = j;
    while (i < n && matched.gone[std::size_t(i)]) ++i;
    while (j < m && matched.fresh[std::size_t(j)]) ++j;
    if (i > fromA || j > fromB) hunks.push_back({LineNo(fromA), LineNo(i), LineNo(fromB), LineNo(j), false});
  }
  return hunks;
}

// How little a place between two lines looks like the border of two parts: the indent of the line below it. A blank line above is
// best; worse is a line that ends what stands above it.
int roughness(const Side& side, std::int64_t line) {
  const auto count = std::ssize(side.indents);
  const auto indent = [&](std::int64_t i) { return side.indents[std::size_t(i)]; };
  std::int64_t below = line, above = line - 1;
  while (below < count && below < line + 8 && indent(below) == kBlankLine) ++below;
  while (above >= 0 && above >= line - 8 && indent(above) == kBlankLine) --above;
  if (line == 0 || below >= count) return 0;
  int rough = 0;
  if (indent(below) != kBlankLine) {
    rough = indent(below);
    if (above >= 0 && indent(above) != kBlankLine && indent(above) > rough) rough += 6;
  }
  if (below > line) rough += 2;
  if (above < line - 1) rough -= 4;
  return rough;
}

// Moves hunks that stand in one side only among equal lines to where people see the change. Where that leads to another hunk, both
// are one.
class Slider {
 public:
  Slider(const Side& before, const Side& after) : before_(before), after_(after) {}

  void slide(std::vector<LineHunk>* hunks) {
    std::vector<LineHunk> done;
    for (std::size_t i = 0; i < hunks->size(); ++i) {
      LineHunk hunk = (*hunks)[i];
      LineHunk* const next = i + 1 < hunks->size() ? &(*hunks)[i + 1] : nullptr;
      const bool inAfter = hunk.beforeBegin == hunk.beforeEnd;
      if (!inAfter && hunk.afterBegin != hunk.afterEnd) {
        done.push_back(hunk);
        continue;
      }
      const Side& side = inAfter ? after_ : before_;
      const std::int64_t begin = (inAfter ? hunk.afterBegin : hunk.beforeBegin).value;
      const std::int64_t end = (inAfter ? hunk.afterEnd : hunk.beforeEnd).value;
      const std::int64_t top = inAfter        ? (done.empty() ? 0 : done.back().afterEnd.value)
                               : done.empty() ? 0
                                              : done.back().beforeEnd.value;
      const std::int64_t bottom = next ? (inAfter ? next->afterBegin : next->beforeBegin).value : std::ssize(side.ids);
      std::int64_t up = 0, down = 0;
      while (up < kSlide && begin - up > top && same(side, begin - up - 1, end - up - 1)) ++up;
      while (down < kSlide && end + down < bottom && same(side, begin + down, end + down)) ++down;
      if (!done.empty() && begin - up == top) {
        move(&hunk, -up);
        join(&done.back(), hunk);
      } else if (next && end + down == bottom) {
        move(&hunk, down);
        join(&hunk, *next);
        *next = hunk;
      } else {
        std::int64_t best = down;
        int least = roughness(side, begin + down) + roughness(side, end + down);
        for (std::int64_t by = down - 1; by >= -up; --by) {
          const int rough = roughness(side, begin + by) + roughness(side, end + by);
          if (rough < least) best = by, least = rough;
        }
        move(&hunk, best);
        done.push_back(hunk);
      }
    }
    *hunks = std::move(done);
  }

 private:
  static bool same(const Side& side, std::int64_t one, std::int64_t other) {
    return side.ids[std::size_t(one)] == side.ids[std::size_t(other)];
  }
  static void move(LineHunk* hunk, std::int64_t by) {
    for (LineNo* line : {&hunk->beforeBegin, &hunk->beforeEnd, &hunk->afterBegin, &hunk->afterEnd}) *line = *line + by;
  }
  static void join(LineHunk* first, const LineHunk& second) {
    first->beforeEnd = second.beforeEnd;
    first->afterEnd = second.afterEnd;
  }
  const Side &before_, &after_;
};

// Lines with equal hashes may differ: somebody can make such lines. Those that do become hunks.
class Check {
 public:
  Check(const Snapshot& before, const Snapshot& after, const DiffRules& rules)
      : before_(before),
        after_(after),
        atOnce_(!rules.commentsBefore && !rules.commentsAfter),
        a_(before, rules, rules.commentsBefore),
        b_(after, rules, rules.commentsAfter) {}

  void check(std::vector<LineHunk>* hunks, const std::atomic<bool>* cancel) {
    LineNo a, b;
    for (const LineHunk& hunk : *hunks) {
      equal(a, b, hunk.beforeBegin, cancel);
      add(hunk);
      a = hunk.beforeEnd, b = hunk.afterEnd;
    }
    equal(a, b, LineNo(before_.lineCount()), cancel);
    *hunks = std::move(all_);
  }

 private:
  void equal(LineNo a, LineNo b, LineNo upTo, const std::atomic<bool>* cancel) {
    if (a == upTo) return;
    const auto range = [](const Snapshot& text, LineNo begin, LineNo end) {
      return ByteRange{text.lineStart(begin), end.value < text.lineCount() ? text.lineStart(end) : text.size()};
    };
    if (atOnce_ && upTo - a >= kMany &&
        sameBytes(before_, range(before_, a, upTo), after_, range(after_, b, b + (upTo - a)), cancel))
      return;
    a_.to(a), b_.to(b);
    std::string_view one, other;
    for (; a < upTo && a_.next(&one) && b_.next(&other) && !(cancel && *cancel); ++a, ++b)
      if (one != other) add({a, a + 1, b, b + 1, false});
  }
  void add(const LineHunk& hunk) {   // those that touch are one
    LineHunk* const last = all_.empty() ? nullptr : &all_.back();
    if (!last || last->beforeEnd != hunk.beforeBegin || last->afterEnd != hunk.afterBegin) return all_.push_back(hunk);
    last->beforeEnd = hunk.beforeEnd, last->afterEnd = hunk.afterEnd;
  }

  const Snapshot &before_, &after_;
  const bool atOnce_;
  BareLines a_, b_;
  std::vector<LineHunk> all_;
};

}   // namespace

std::vector<LineHunk> diffLines(const Snapshot& before, const Snapshot& after, const DiffRules& rules,
                                const std::atomic<bool>* cancel) {
  if (before.sameAs(after) && rules.commentsBefore == rules.commentsAfter) return {};
  Side a, b;
  {
    Numbers numbers;
    a = read(before, rules, rules.commentsBefore, &numbers, cancel);
    b = read(after, rules, rules.commentsAfter, &numbers, cancel);
  }
  if (cancel && *cancel) return {};
  std::vector<LineHunk> hunks = hunksOf(match(a, b, cancel));
  Slider(a, b).slide(&hunks);
  Check(before, after, rules).check(&hunks, cancel);
  if (rules.plain()) return hunks;
  for (LineHunk& hunk : hunks)
    hunk.nothing = a.nothingIn(hunk.beforeBegin, hunk.beforeEnd) && b.nothingIn(hunk.afterBegin, hunk.afterEnd);
  return hunks;
}

}   // namespace text
