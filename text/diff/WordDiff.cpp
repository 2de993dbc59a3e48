#include "text/diff/WordDiff.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include "text/diff/Match.h"
#include "text/line/CharTables.h"
#include "text/line/Chars.h"
#include "text/line/LineReader.h"
#include "text/line/Words.h"
#include "text/store/ContentHash.h"

namespace text {
namespace {

constexpr std::size_t kLongest = 64 << 10;
constexpr std::int64_t kLineBytes = 4 << 10, kLineLeast = 64, kHunkBytes = 256 << 10;   // in which pairs are looked for
constexpr std::int64_t kTable = 4096;   // pairs of lines that are looked at one by one
constexpr int kLike = 40;               // percent: less is no pair

struct Word {
  std::int64_t begin, end;
  std::uint32_t id;
  CharClass kind;
};

bool startsChar(std::string_view line, std::size_t at) {
  return at >= line.size() || (static_cast<unsigned char>(line[at]) & 0xC0) != 0x80;
}

class Splitter {
 public:
  explicit Splitter(const DiffRules& rules) : rules_(rules) {}

  // Bytes [begin, end) of the line.
  std::vector<Word> split(std::string_view line, std::size_t begin, std::size_t end) {
    std::vector<Word> words;
    for (std::size_t at = begin; at < end;) {
      const std::size_t from = at;
      const auto next = [&] { return decode(line.substr(at, end - at)); };
      Char c = next();
      const CharClass kind = c.bad ? CharClass::punctuation : classOf(c.code);
      std::string key;
      do {
        if (rules_.ignoreCase && !c.bad) key += encode(fold(c.code));
        else key += line.substr(at, static_cast<std::size_t>(c.bytes));
        at += static_cast<std::size_t>(c.bytes);
        c = next();
      } while (at < end && kind != CharClass::punctuation && !c.bad && classOf(c.code) == kind);
      while (at < end && kind == CharClass::punctuation && !c.bad && isExtending(c.code)) {
        key += line.substr(at, static_cast<std::size_t>(c.bytes));
        at += static_cast<std::size_t>(c.bytes);
        c = next();
      }
      if (rules_.ignoreBlanks && kind == CharClass::blank) continue;
      const auto id = ids_.try_emplace(std::move(key), static_cast<std::uint32_t>(ids_.size())).first->second;
      words.push_back({static_cast<std::int64_t>(from), static_cast<std::int64_t>(at), id, kind});
    }
    return words;
  }

 private:
  const DiffRules& rules_;
  std::unordered_map<std::string, std::uint32_t> ids_;
};

using Words = std::vector<Word>;

// Marks in gone and fresh what differs between [a, aEnd) and [b, bEnd).
struct Marks {
  std::vector<char> gone, fresh;

  void compare(const Words& before, std::size_t a, std::size_t aEnd, const Words& after, std::size_t b, std::size_t bEnd) {
    std::vector<std::uint32_t> idsA, idsB;
    for (std::size_t i = a; i < aEnd; ++i) idsA.push_back(before[i].id);
    for (std::size_t j = b; j < bEnd; ++j) idsB.push_back(after[j].id);
    const Matched matched = matchIds(idsA, idsB);
    std::copy(matched.gone.begin(), matched.gone.end(), gone.begin() + static_cast<std::ptrdiff_t>(a));
    std::copy(matched.fresh.begin(), matched.fresh.end(), fresh.begin() + static_cast<std::ptrdiff_t>(b));
  }
};

// Real words are put together first: blanks and signs are too many to say what belongs together.
Marks compare(const Words& before, const Words& after) {
  Marks marks{std::vector<char>(before.size()), std::vector<char>(after.size())};
  std::vector<std::size_t> placesA, placesB;
  std::vector<std::uint32_t> idsA, idsB;
  for (std::size_t i = 0; i < before.size(); ++i)
    if (before[i].kind == CharClass::word) placesA.push_back(i), idsA.push_back(before[i].id);
  for (std::size_t j = 0; j < after.size(); ++j)
    if (after[j].kind == CharClass::word) placesB.push_back(j), idsB.push_back(after[j].id);
  const Matched matched = matchIds(idsA, idsB);
  std::size_t a = 0, b = 0, j = 0;
  for (std::size_t i = 0; i < placesA.size(); ++i) {
    if (matched.gone[i]) continue;
    while (matched.fresh[j]) ++j;
    marks.compare(before, a, placesA[i], after, b, placesB[j]);
    a = placesA[i] + 1, b = placesB[j] + 1;
    ++j;
  }
  marks.compare(before, a, before.size(), after, b, after.size());
  return marks;
}

// The words of a line as numbers, sorted; blanks are left out.
std::vector<std::uint32_t> bag(Splitter* splitter, const std::string& line) {
  std::vector<std::uint32_t> ids;
  for (const Word& word : splitter->split(line, 0, line.size()))
    if (word.kind != CharClass::blank) ids.push_back(word.id);
  std::sort(ids.begin(), ids.end());
  return ids;
}

// Percent of the words that both have.
int likeness(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
  if (a.empty() || b.empty()) return a.empty() && b.empty() ? 100 : 0;
  std::size_t both = 0;
  for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
    if (a[i] == b[j]) ++both, ++i, ++j;
    else if (a[i] < b[j]) ++i;
    else ++j;
  }
  return static_cast<int>(200 * both / (a.size() + b.size()));
}

class Pairing {
 public:
  Pairing(const Snapshot& before, const Snapshot& after, std::int64_t lines)
      : before_(before),
        after_(after),
        most_(std::clamp(kHunkBytes / std::max<std::int64_t>(lines, 1), kLineLeast, kLineBytes)),
        splitter_(rules_) {}

  void pair(LineHunk hunk, bool divides) {
    const std::int64_t n = hunk.beforeEnd - hunk.beforeBegin, m = hunk.afterEnd - hunk.afterBegin;
    if (n == 0 || m == 0) return;
    if (n <= kTable / m) table(hunk);
    else if (divides) divide(hunk);
    else inOrder(hunk);
  }
  std::vector<LinePair> take() { return std::move(pairs_); }

 private:
  // The pairs with the largest sum of likeness.
  void table(const LineHunk& hunk) {
    std::vector<std::vector<std::uint32_t>> a, b;
    for (LineNo i = hunk.beforeBegin; i < hunk.beforeEnd; ++i) a.push_back(bag(&splitter_, beginOfLine(before_, i, most_)));
    for (LineNo j = hunk.afterBegin; j < hunk.afterEnd; ++j) b.push_back(bag(&splitter_, beginOfLine(after_, j, most_)));
    const std::size_t n = a.size(), m = b.size();
    std::vector<int> like(n * m), best((n + 1) * (m + 1));   // best: of the lines from i and j on
    for (std::size_t i = n; i-- > 0;) {
      for (std::size_t j = m; j-- > 0;) {
        const int own = like[i * m + j] = likeness(a[i], b[j]);
        int& sum = best[i * (m + 1) + j];
        sum = std::max(best[(i + 1) * (m + 1) + j], best[i * (m + 1) + j + 1]);
        if (own >= kLike) sum = std::max(sum, own + best[(i + 1) * (m + 1) + j + 1]);
      }
    }
    for (std::size_t i = 0, j = 0; i < n && j < m;) {
      const int sum = best[i * (m + 1) + j], own = like[i * m + j];
      if (own >= kLike && sum == own + best[(i + 1) * (m + 1) + j + 1]) {
        pairs_.push_back({hunk.beforeBegin + static_cast<std::int64_t>(i), hunk.afterBegin + static_cast<std::int64_t>(j)});
        ++i, ++j;
      } else if (sum == best[(i + 1) * (m + 1) + j]) {
        ++i;
      } else {
        ++j;
      }
    }
  }

  // Lines that are equal but for blanks, case and digits are pairs, and divide the others.
  void divide(const LineHunk& hunk) {
    std::unordered_map<std::uint64_t, std::uint32_t> numbers;
    const auto read = [&](const Snapshot& text, LineNo begin, LineNo end) {
      std::vector<std::uint32_t> ids;
      std::string key;
      for (; begin < end; ++begin) {
        key.clear();
        for (const char c : beginOfLine(text, begin, most_)) {
          if (c == ' ' || c == '\t' || (c >= '0' && c <= '9')) continue;
          key += c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
        }
        ids.push_back(numbers.try_emplace(ContentHash::of(key), static_cast<std::uint32_t>(numbers.size())).first->second);
      }
      return ids;
    };
    const Matched matched = matchIds(read(before_, hunk.beforeBegin, hunk.beforeEnd), read(after_, hunk.afterBegin, hunk.afterEnd));
    LineHunk rest = hunk;
    std::int64_t j = 0;
    for (std::int64_t i = 0; i < std::ssize(matched.gone); ++i) {
      if (matched.gone[static_cast<std::size_t>(i)]) continue;
      while (matched.fresh[static_cast<std::size_t>(j)]) ++j;
      rest.beforeEnd = hunk.beforeBegin + i, rest.afterEnd = hunk.afterBegin + j;
      pair(rest, false);
      pairs_.push_back({rest.beforeEnd, rest.afterEnd});
      rest.beforeBegin = rest.beforeEnd + 1, rest.afterBegin = rest.afterEnd + 1;
      ++j;
    }
    rest.beforeEnd = hunk.beforeEnd, rest.afterEnd = hunk.afterEnd;
    pair(rest, false);
  }

  // Too many for a table: a line looks only at its neighbours' counterpart.
  void inOrder(const LineHunk& hunk) {
    LineNo j = hunk.afterBegin;
    for (LineNo i = hunk.beforeBegin; i < hunk.beforeEnd && j < hunk.afterEnd; ++i, ++j) {
      const auto a = bag(&splitter_, beginOfLine(before_, i, most_));
      if (likeness(a, bag(&splitter_, beginOfLine(after_, j, most_))) >= kLike) pairs_.push_back({i, j});
    }
  }

  const Snapshot &before_, &after_;
  const std::int64_t most_;   // bytes of a line
  const DiffRules rules_{.ignoreBlanks = true, .ignoreCase = true};
  Splitter splitter_;
  std::vector<LinePair> pairs_;
};

}   // namespace

std::vector<WordHunk> diffWords(std::string_view before, std::string_view after, const DiffRules& rules) {
  // What is equal at both ends is cut off between two words.
  const auto inWord = [](std::string_view line, std::size_t at) {
    if (at == 0 || at >= line.size()) return false;
    if (!startsChar(line, at)) return true;
    const Char left = decodeLast(line.substr(0, at)), right = decode(line.substr(at));
    if (!right.bad && isExtending(right.code)) return true;
    return !left.bad && !right.bad && classOf(left.code) == classOf(right.code) && classOf(left.code) != CharClass::punctuation;
  };
  const std::size_t most = std::min(before.size(), after.size());
  std::size_t head = static_cast<std::size_t>(
      std::mismatch(before.begin(), before.begin() + std::ptrdiff_t(most), after.begin()).first - before.begin());
  if (head == before.size() && head == after.size()) return {};
  for (std::size_t steps = 0; head > 0 && (inWord(before, head) || inWord(after, head)) && steps < kLongest; ++steps) --head;
  while (head > 0 && !(startsChar(before, head) && startsChar(after, head))) --head;
  std::size_t tail = 0;
  while (tail < most - head && before[before.size() - 1 - tail] == after[after.size() - 1 - tail]) ++tail;
  for (std::size_t steps = 0; tail > 0 && steps < kLongest; --tail, ++steps)
    if (!inWord(before, before.size() - tail) && !inWord(after, after.size() - tail)) break;
  while (tail > 0 && !startsChar(before, before.size() - tail)) --tail;   // then in the other as well
  const std::size_t endA = before.size() - tail, endB = after.size() - tail;
  if (std::max(endA, endB) - head > kLongest)
    return {{std::int64_t(head), std::int64_t(endA), std::int64_t(head), std::int64_t(endB)}};

  Splitter splitter(rules);
  const Words a = splitter.split(before, head, endA), b = splitter.split(after, head, endB);
  const Marks marks = compare(a, b);
  std::vector<WordHunk> hunks;
  const auto placeIn = [](const Words& words, std::size_t i, std::size_t head_) {
    return i > 0 ? words[i - 1].end : static_cast<std::int64_t>(head_);
  };
  for (std::size_t i = 0, j = 0; i < a.size() || j < b.size(); ++i, ++j) {
    const std::size_t fromA = i, fromB = j;
    while (i < a.size() && marks.gone[i]) ++i;
    while (j < b.size() && marks.fresh[j]) ++j;
    if (i == fromA && j == fromB) continue;
    WordHunk hunk{i > fromA ? a[fromA].begin : placeIn(a, fromA, head), i > fromA ? a[i - 1].end : placeIn(a, fromA, head),
                  j > fromB ? b[fromB].begin : placeIn(b, fromB, head), j > fromB ? b[j - 1].end : placeIn(b, fromB, head)};
    // Between two changes a blank is no more than their join.
    if (!hunks.empty() && fromA > 0 && a[fromA - 1].kind == CharClass::blank && hunks.back().beforeEnd == a[fromA - 1].begin &&
        hunks.back().afterEnd == b[fromB - 1].begin && i > fromA && j > fromB) {
      hunks.back().beforeEnd = hunk.beforeEnd, hunks.back().afterEnd = hunk.afterEnd;
    } else {
      hunks.push_back(hunk);
    }
  }
  return hunks;
}

std::vector<LinePair> pairLines(const Snapshot& before, const Snapshot& after, const LineHunk& hunk) {
  Pairing pairing(before, after, (hunk.beforeEnd - hunk.beforeBegin) + (hunk.afterEnd - hunk.afterBegin));
  pairing.pair(hunk, true);
  return pairing.take();
}

}   // namespace text
