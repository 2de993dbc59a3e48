#include "text/words/WordCounts.h"

#include <algorithm>
#include <array>

#include "text/line/CharTables.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

namespace text {
namespace {

constexpr std::int64_t kReach = static_cast<std::int64_t>(kLongestWord) + 1;   // a run that goes on so far is too long for a word

constexpr std::array<bool, 256> kWordByte = [] {
  std::array<bool, 256> all{};
  for (int c = 0; c < 256; ++c)
    all[static_cast<std::size_t>(c)] =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c >= 0x80;
  return all;
}();

bool isWordByte(char c) { return kWordByte[static_cast<unsigned char>(c)]; }

using Use = std::function<void(std::string_view word, ByteOffset at)>;

void tell(std::string_view word, ByteOffset at, const Use& use) {
  if (word.size() >= kShortestCounted && word.size() <= kLongestWord && !(word[0] >= '0' && word[0] <= '9')) use(word, at);
}

// A run of word bytes; letters beyond ASCII may turn out to be signs.
void tellRun(std::string_view run, ByteOffset at, const Use& use) {
  if (run.size() < kShortestCounted || run.size() > kLongestWord) return;
  if (isAscii(run)) return tell(run, at, use);
  std::size_t begin = 0, here = 0;
  while (here < run.size()) {
    const Char c = decode(run.substr(here));
    const bool inside = !c.bad && (classOf(c.code) == CharClass::word || (here > begin && isExtending(c.code)));
    if (!inside) {
      tell(run.substr(begin, here - begin), at + static_cast<std::int64_t>(begin), use);
      begin = here + static_cast<std::size_t>(c.bytes);
    }
    here += static_cast<std::size_t>(c.bytes);
  }
  tell(run.substr(begin), at + static_cast<std::int64_t>(begin), use);
}

// The range, made longer at both ends by the run that it touches, as far as it reaches.
ByteRange withRuns(const Snapshot& text, ByteRange range) {
  const ByteOffset first = std::max(ByteOffset(0), range.begin - kReach), last = std::min(text.size(), range.end + kReach);
  const std::string before = text.bytes({first, range.begin}), behind = text.bytes({range.end, last});
  const auto from = std::find_if_not(before.rbegin(), before.rend(), isWordByte);
  const auto to = std::find_if_not(behind.begin(), behind.end(), isWordByte);
  return {range.begin - (from - before.rbegin()), range.end + (to - behind.begin())};
}

}   // namespace

void eachWord(const Snapshot& text, ByteRange range, const Use& use) {
  std::string joined;   // a run in several chunks
  ByteOffset start, at = range.begin;
  while (at < range.end) {
    std::string_view chunk = text.chunkAt(at);
    chunk =
        chunk.substr(0, static_cast<std::size_t>(std::min<std::int64_t>(range.end - at, static_cast<std::int64_t>(chunk.size()))));
    std::size_t i = 0;
    if (!joined.empty()) {
      while (i < chunk.size() && isWordByte(chunk[i])) ++i;
      if (joined.size() <= kLongestWord) joined.append(chunk.substr(0, std::min<std::size_t>(i, kReach)));
      if (i < chunk.size()) {
        tellRun(joined, start, use);
        joined.clear();
      }
    }
    while (i < chunk.size()) {
      while (i < chunk.size() && !isWordByte(chunk[i])) ++i;
      const std::size_t begin = i;
      while (i < chunk.size() && isWordByte(chunk[i])) ++i;
      if (i < chunk.size()) {
        tellRun(chunk.substr(begin, i - begin), at + static_cast<std::int64_t>(begin), use);
      } else if (begin < i) {
        start = at + static_cast<std::int64_t>(begin);
        joined.assign(chunk.substr(begin, std::min<std::size_t>(i - begin, kReach)));
      }
    }
    at += static_cast<std::int64_t>(chunk.size());
  }
  tellRun(joined, start, use);
}

void WordCounts::add(std::string_view word, std::int64_t by) {
  const auto known = counts_.find(word);
  if (known != counts_.end()) {
    if ((known->second += by) <= 0) counts_.erase(known);
  } else if (by > 0 && counts_.size() < most_) {
    counts_.emplace(std::string(word), by);
  }
}

bool WordCounts::count(const Snapshot& text, const std::atomic<bool>& cancel) {
  constexpr std::int64_t kStep = 1 << 20;
  counts_.clear();
  for (ByteOffset at(0); at < text.size();) {
    if (cancel) {
      counts_.clear();
      return false;
    }
    // A step ends behind a run, unless that is too long to hold a word.
    const ByteOffset end = withRuns(text, {at, std::min(text.size(), at + kStep)}).end;
    eachWord(text, {at, end}, [this](std::string_view word, ByteOffset) { add(word, 1); });
    at = end;
    while (at < text.size() && isWordByte(text.at(at))) {   // the rest of a run that is no word
      const std::string_view chunk = text.chunkAt(at);
      at += std::find_if_not(chunk.begin(), chunk.end(), isWordByte) - chunk.begin();
      if (cancel) break;
    }
  }
  return true;
}

void WordCounts::change(const Snapshot& old, const Snapshot& now, const Change& change) {
  for (std::size_t i = 0; i < change.spans.size();) {
    const auto& first = change.spans[i];
    ByteRange was{first.oldBegin, first.oldEnd()}, is{first.begin, first.end()};
    // Spans that one word may touch are taken together.
    for (++i; i < change.spans.size() && change.spans[i].begin - is.end <= 2 * kReach; ++i) {
      was.end = change.spans[i].oldEnd();
      is.end = change.spans[i].end();
    }
    eachWord(old, withRuns(old, was), [this](std::string_view word, ByteOffset) { add(word, -1); });
    eachWord(now, withRuns(now, is), [this](std::string_view word, ByteOffset) { add(word, 1); });
  }
}

std::int64_t WordCounts::countOf(std::string_view word) const {
  const auto known = counts_.find(word);
  return known == counts_.end() ? 0 : known->second;
}

std::vector<WordCounts::Found> WordCounts::find(std::string_view typed, std::size_t most) const {
  std::vector<Found> found;
  for (const auto& [word, count] : counts_)
    if (auto match = matchParts(word, typed)) found.push_back({word, count, std::move(*match)});
  const auto better = [](const Found& a, const Found& b) {
    if (a.match.fit != b.match.fit) return a.match.fit < b.match.fit;
    if (a.count != b.count) return a.count > b.count;
    return a.word.size() != b.word.size() ? a.word.size() < b.word.size() : a.word < b.word;
  };
  const std::size_t kept = std::min(most, found.size());
  std::partial_sort(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(kept), found.end(), better);
  found.resize(kept);
  return found;
}

}   // namespace text
