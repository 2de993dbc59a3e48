// What a search does: every find with its groups, the text that replaces it, and a budget for who cannot wait. Searcher is
// its short form. Works on snapshots, from any thread; one search at a time with one budget.
#pragma once

#include <chrono>
#include <functional>

#include "text/find/Search.h"
#include "text/line/NewLines.h"

namespace text {

// What a search may cost. One that spends it ends as cancelled.
struct FindBudget {
  using Clock = std::chrono::steady_clock;
  explicit FindBudget(std::chrono::milliseconds time) : deadline(Clock::now() + time) {}
  Clock::time_point deadline;
  std::uint32_t steps = 100'000;   // of one attempt to match an expression: about a millisecond
  bool spent = false;              // written by the search
};

// The end of a search that hands out its finds.
struct SearchEnd {
  std::string error;
  bool cancelled = false;
};

class Finder {
 public:
  Finder(std::string what, SearchOptions options);
  ~Finder();
  Finder(Finder&&) noexcept;
  Finder& operator=(Finder&&) noexcept;
  const std::string& error() const;

  // See Searcher.
  SearchResult forward(const Snapshot& text, ByteOffset from, ByteRange within, SearchControl* control = nullptr) const;
  SearchResult backward(const Snapshot& text, ByteOffset from, ByteRange within, SearchControl* control = nullptr) const;
  SearchAllResult all(const Snapshot& text, ByteRange within, SearchControl* control = nullptr, FindBudget* budget = nullptr) const;

  // The match that is exactly `range`, found as a search for it would have, with all that stands around the range. None: it is
  // no match. Looks at little more than the range.
  SearchResult at(const Snapshot& text, ByteRange range, ByteRange within, FindBudget* budget = nullptr) const;
  // Hands every match (ascending, not overlapping) with its groups to `take` until that says no.
  SearchEnd each(const Snapshot& text, ByteRange within, const std::function<bool(const Match&)>& take,
                 SearchControl* control = nullptr) const;

  // The text that replaces a match. Regex: $0..$99, ${name}, \n, \t, \\, $$; literal: `replacement` as it is. A line break
  // of the replacement, written as \n or as itself, is that of the match's line; one that a group took stays as it was.
  // preserveCase: ALL UPPER, all lower and Capitalised finds give the replacement the same shape.
  // Error (unknown group ...): nullopt and *error.
  std::optional<std::string> replacementFor(const Snapshot& text, const Match& match, std::string_view replacement,
                                            bool preserveCase, std::string* error, const NewLines& newLines = {}) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}   // namespace text
