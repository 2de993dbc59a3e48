// Searches text: literally at memory speed, or by regular expressions (PCRE2) with limits. Works on snapshots and on any thread.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "text/store/Snapshot.h"

namespace text {

struct SearchOptions {
  bool matchCase = false;
  bool wholeWord = false;
  bool regex = false;               // '^' and '$' match at every line; '.' does not match a line break
  std::int64_t window = 32 << 10;   // bytes of text examined at once, at least 8; tests make it tiny
};

// Shared by the searching thread and the one that shows the progress.
struct SearchControl {
  std::atomic<bool> cancel{false};
  std::atomic<std::int64_t> bytesDone{0};
  std::atomic<std::int64_t> bytesTotal{0};   // 0: only the caller knows the size
};

struct Match {
  ByteRange range;
  std::vector<ByteRange> groups;   // regex only; [0] is the whole match; a group that did not take part is {-1,-1}
};

// The result of a search that may fail. "Not found" and "failed" are different results.
struct SearchResult {
  std::optional<Match> match;
  std::string error;   // a text for the user; not empty = failed
  bool cancelled = false;
};
struct SearchAllResult {
  std::vector<ByteRange> ranges;   // ascending, not overlapping
  std::string error;
  bool cancelled = false;
};

class Searcher {
 public:
  // Compiles. error() is not empty if the expression is invalid (it names the position) or the text is empty.
  Searcher(std::string what, SearchOptions options);
  ~Searcher();
  Searcher(Searcher&&) noexcept;
  Searcher& operator=(Searcher&&) noexcept;
  const std::string& error() const;

  // The first match that starts at or behind `from` and ends at or before `within.end`.
  SearchResult forward(const Snapshot& text, ByteOffset from, ByteRange within, SearchControl* control = nullptr) const;
  // The last match that ends at or before `from` and starts at or behind `within.begin`.
  SearchResult backward(const Snapshot& text, ByteOffset from, ByteRange within, SearchControl* control = nullptr) const;
  SearchAllResult all(const Snapshot& text, ByteRange within, SearchControl* control = nullptr) const;
  SearchResult forward(const Snapshot& text, ByteOffset from) const;
  SearchResult backward(const Snapshot& text, ByteOffset from) const;

  // The replacement of a match. Regex: $0..$99, ${name}, \n, \t, \\, $$; literal: `replacement` unchanged. preserveCase: matches in
  // ALL UPPER, all lower or Capitalised form give the replacement the same form. Error (unknown group ...): nullopt and *error.
  std::optional<std::string> replacementFor(const Snapshot& text, const Match& match, std::string_view replacement,
                                            bool preserveCase, std::string* error) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}   // namespace text
