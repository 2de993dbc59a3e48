// Searching: every match with its groups, the replacement text, and a budget for callers that cannot wait. Searcher is a shorter
// interface. Works on snapshots and on any thread; one search at a time for each budget.
#pragma once

#include <chrono>
#include <functional>

#include "text/find/Search.h"
#include "text/line/NewLines.h"

namespace text {

// Limits of a search. A search that reaches one ends as cancelled.
struct FindBudget {
  using Clock = std::chrono::steady_clock;
  explicit FindBudget(std::chrono::milliseconds time) : deadline(Clock::now() + time) {}
  Clock::time_point deadline;
  std::uint32_t steps = 100'000;   // for one attempt to match an expression: about a millisecond
  bool spent = false;              // written by the search
};

// How a search ended that passes its matches to a callback.
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

  // The match of exactly `range` that a search would find, with regard to the text around the range. None: the range is not a
  // match. Examines little more than the range.
  SearchResult at(const Snapshot& text, ByteRange range, ByteRange within, FindBudget* budget = nullptr) const;
  // Passes every match (ascending, not overlapping) with its groups to `take`, until `take` returns false.
  SearchEnd each(const Snapshot& text, ByteRange within, const std::function<bool(const Match&)>& take,
                 SearchControl* control = nullptr) const;

  // The replacement of a match. Regex: $0..$99, ${name}, \n, \t, \\, $$; literal: `replacement` unchanged. A line break of the
  // replacement (as \n or literally) becomes that of the match's line; one inside a group is kept. preserveCase: matches in ALL
  // UPPER, all lower or Capitalised form give the replacement the same form. Error (unknown group ...): nullopt and *error.
  std::optional<std::string> replacementFor(const Snapshot& text, const Match& match, std::string_view replacement,
                                            bool preserveCase, std::string* error, const NewLines& newLines = {}) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}   // namespace text
