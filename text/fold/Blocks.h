// The blocks of one text, found from the events of its stretches. Immutable; may be read on any thread.
//
// Blocks are typed: a closer matches only an opener that it closes, and looks for it only within the unit (module, entity) around it.
// Conditional compilation is a layer of its own: all its arms continue from where the first began, and behind them the first counts.
// Lines count from 0.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

#include "text/fold/FoldScan.h"
#include "text/store/Change.h"

namespace text {

// Lines that can be folded into the first: first + 1 to last go.
struct Fold {
  LineNo first, last;
  bool operator==(const Fold&) const = default;
};

class Blocks {
 public:
  struct Part {
    std::shared_ptr<const FoldStretch> stretch;
    std::int64_t byte = 0, line = 0;   // of its start
    std::int64_t event = 0;            // the number of its first
  };
  Blocks(Snapshot text, std::shared_ptr<const FoldRules> rules, std::vector<Part> parts);

  const Snapshot& text() const { return text_; }
  const FoldRules& rules() const { return *rules_; }

  struct Pair {
    ByteRange here, partner;   // two words
  };
  // The word that touches the offset, opens or closes a block, and has a partner. Brackets are not words (control/code/Brackets.h).
  std::optional<Pair> pairAt(ByteOffset at) const;
  // The innermost block that holds the range and more, from the opener to behind the closer. Costs what stands before it.
  std::optional<ByteRange> around(ByteRange range) const;

  // The folds that begin in lines [first, end), at most one a line, ascending.
  std::vector<Fold> foldsIn(LineNo first, LineNo end) const;
  // Those that have the line, also as their first; the innermost first. Costs what stands before it: no more than so many events are
  // looked at, and none when there are enough.
  std::vector<Fold> foldsAround(LineNo line, std::int64_t most = INT64_MAX, std::size_t enough = SIZE_MAX) const;

 private:
  static constexpr std::int32_t kNone = -1, kEnd = -2;   // kEnd: to the end of the text
  class Matching;
  class Reader;
  const Part& partOf(std::int64_t event) const;
  const FoldEvent& event(std::int64_t number) const;
  ByteOffset at(std::int64_t number) const;
  LineNo lineOf(std::int64_t number) const;
  std::int64_t eventFrom(ByteOffset offset) const;   // the first at or behind it
  std::int64_t eventFromLine(LineNo line) const;
  ByteRange wordOf(std::int64_t number) const;
  std::int64_t closerOf(std::int64_t opener) const;   // over the middles of its layer
  std::optional<Fold> foldOf(std::int64_t number) const;
  bool opens(FoldEvent::Role role) const;

  Snapshot text_;
  std::shared_ptr<const FoldRules> rules_;
  std::vector<Part> parts_;
  std::vector<std::int32_t> partner_;   // by event
};

// The stretches of a text, kept up to date with its edits.
class BlockIndex {
 public:
  void setRules(std::shared_ptr<const FoldRules> rules);
  const std::shared_ptr<const FoldRules>& rules() const { return rules_; }
  void edit(const Change& change);   // every change since update(), in their order
  // Reads what changed. False: cancelled; what was read stays. Lines of more than kLongest bytes are left out.
  static constexpr std::int64_t kLongest = 16 << 20;
  bool update(const Snapshot& text, const std::atomic<bool>* cancel = nullptr);
  std::shared_ptr<const Blocks> blocks(const Snapshot& text) const;   // of the text of the last update()
  std::int64_t stretchesRead() const { return read_; }                // so far

 private:
  struct Entry {
    std::shared_ptr<const FoldStretch> stretch;   // null: to be read
    std::int64_t bytes = 0, lines = 0;
  };
  FoldState read(const Snapshot& text, std::int64_t line, std::int64_t end, FoldState state, std::vector<Entry>& to,
                 const std::atomic<bool>* cancel);

  std::shared_ptr<const FoldRules> rules_;
  std::vector<Entry> entries_;   // together the text
  std::int64_t read_ = 0;
};

}   // namespace text
