// How often each word occurs in a text; kept right change by change. Words are runs of letters, digits and '_' (Words.h) that begin
// with no digit and have kShortestCounted bytes to kLongestWord.
//
// Belongs to one thread at a time; meant for work on snapshots in the background.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "text/store/Change.h"
#include "text/words/PartMatch.h"

namespace text {

inline constexpr std::size_t kShortestCounted = 3;

// Calls use(word, first byte) for the words that lie in the range; one that an end of the range cuts is taken as cut.
void eachWord(const Snapshot& text, ByteRange range, const std::function<void(std::string_view word, ByteOffset at)>& use);

class WordCounts {
 public:
  // When so many different words are known, new ones are left out.
  explicit WordCounts(std::size_t mostWords = 200'000) : most_(mostWords) {}

  // Counts a whole text afresh. False: cancelled, and nothing is known.
  bool count(const Snapshot& text, const std::atomic<bool>& cancel);
  // Costs the bytes that changed.
  void change(const Snapshot& old, const Snapshot& now, const Change& change);

  struct Found {
    std::string word;
    std::int64_t count = 0;
    PartMatch match;
  };
  // The best `most` words that fit: by fit, then the more frequent, then the shorter, then by their bytes.
  std::vector<Found> find(std::string_view typed, std::size_t most) const;
  std::size_t size() const { return counts_.size(); }
  std::int64_t countOf(std::string_view word) const;

 private:
  void add(std::string_view word, std::int64_t by);
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view word) const { return std::hash<std::string_view>()(word); }
  };
  std::unordered_map<std::string, std::int64_t, Hash, std::equal_to<>> counts_;
  std::size_t most_;
};

}   // namespace text
