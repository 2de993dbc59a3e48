#include "text/diff/LineDiff.h"

#include <algorithm>

#include "text/store/ContentHash.h"

namespace text {
namespace {

constexpr std::int64_t kMost = 2000;   // differing lines in succession

struct Side {
  std::vector<std::uint64_t> lines;   // equal numbers: equal lines
  std::vector<char> nothing;          // only what the rules ignore
};

Side read(const Snapshot& text, const DiffRules& rules, const std::shared_ptr<const Highlighter>& comments) {
  Side side;
  side.lines.reserve(static_cast<std::size_t>(text.lineCount()));
  BareLines reader(text, rules, comments);
  for (std::string_view line; reader.next(&line);) {
    side.lines.push_back(ContentHash::of(line));
    side.nothing.push_back(reader.nothing());
  }
  return side;
}

// The shortest edit from a to b by deleting and inserting lines: for d = 0, 1, 2 ... how far each diagonal k (line of a minus line
// of b) reaches with d edits.
class ShortestEdit {
 public:
  ShortestEdit(const std::uint64_t* a, std::int64_t n, const std::uint64_t* b, std::int64_t m) : a_(a), b_(b), n_(n), m_(m) {}

  // False: more than `most` edits are needed.
  bool run(std::int64_t most, const std::atomic<bool>* cancel) {
    most = std::min(most, n_ + m_);
    std::vector<std::int64_t> reached(static_cast<std::size_t>(2 * most + 3), 0);
    const auto at = [&](std::int64_t k) -> std::int64_t& { return reached[static_cast<std::size_t>(k + most + 1)]; };
    for (std::int64_t d = 0; d <= most; ++d) {
      if (cancel && *cancel) return false;
      for (std::int64_t k = -d; k <= d; k += 2) {
        std::int64_t x = k == -d || (k != d && at(k - 1) < at(k + 1)) ? at(k + 1) : at(k - 1) + 1;
        while (x < n_ && x - k < m_ && x - k >= 0 && a_[x] == b_[x - k]) ++x;
        at(k) = x;
        if (x >= n_ && x - k >= m_) {
          trace_.emplace_back(reached.begin() + (most + 1 - d), reached.begin() + (most + 2 + d));
          return true;
        }
      }
      trace_.emplace_back(reached.begin() + (most + 1 - d), reached.begin() + (most + 2 + d));   // diagonals -d to d
    }
    return false;
  }

  // Calls deleted(line of a) and inserted(line of b), last to first.
  template <class Deleted, class Inserted>
  void backwards(const Deleted& deleted, const Inserted& inserted) const {
    std::int64_t x = n_, y = m_;
    for (auto d = static_cast<std::int64_t>(trace_.size()) - 1; d > 0; --d) {
      const std::vector<std::int64_t>& last = trace_[static_cast<std::size_t>(d - 1)];
      const auto at = [&](std::int64_t k) {
        return k < -(d - 1) || k > d - 1 ? std::int64_t(-1) : last[static_cast<std::size_t>(k + d - 1)];
      };
      const std::int64_t k = x - y;
      const bool down = k == -d || (k != d && at(k - 1) < at(k + 1));
      x = down ? at(k + 1) : at(k - 1);
      y = x - (down ? k + 1 : k - 1);
      if (down) inserted(y);
      else deleted(x);
    }
  }

 private:
  const std::uint64_t *a_, *b_;
  std::int64_t n_, m_;
  std::vector<std::vector<std::int64_t>> trace_;
};

}   // namespace

std::vector<LineHunk> diffLines(const Snapshot& before, const Snapshot& after, const DiffRules& rules,
                                const std::atomic<bool>* cancel) {
  const Side sideA = read(before, rules, rules.commentsBefore), sideB = read(after, rules, rules.commentsAfter);
  const std::vector<std::uint64_t>&a = sideA.lines, &b = sideB.lines;
  const auto n = static_cast<std::int64_t>(a.size()), m = static_cast<std::int64_t>(b.size());
  std::int64_t head = 0, tail = 0;
  while (head < std::min(n, m) && a[std::size_t(head)] == b[std::size_t(head)]) ++head;
  while (tail < std::min(n, m) - head && a[std::size_t(n - 1 - tail)] == b[std::size_t(m - 1 - tail)]) ++tail;
  std::vector<LineHunk> hunks;
  if (head + tail == n && head + tail == m) return hunks;

  ShortestEdit edit(a.data() + head, n - head - tail, b.data() + head, m - head - tail);
  if (!edit.run(kMost, cancel)) return {{LineNo(head), LineNo(n - tail), LineNo(head), LineNo(m - tail), false}};
  std::vector<char> gone(a.size(), 0), fresh(b.size(), 0);
  edit.backwards([&](std::int64_t line) { gone[std::size_t(head + line)] = 1; },
                 [&](std::int64_t line) { fresh[std::size_t(head + line)] = 1; });
  for (std::int64_t i = head, j = head; i < n || j < m;) {
    const std::int64_t fromA = i, fromB = j;
    while (i < n && gone[std::size_t(i)]) ++i;
    while (j < m && fresh[std::size_t(j)]) ++j;
    if (i > fromA || j > fromB) {
      const bool nothing = std::find(sideA.nothing.begin() + fromA, sideA.nothing.begin() + i, 0) == sideA.nothing.begin() + i &&
                           std::find(sideB.nothing.begin() + fromB, sideB.nothing.begin() + j, 0) == sideB.nothing.begin() + j;
      hunks.push_back({LineNo(fromA), LineNo(i), LineNo(fromB), LineNo(j), nothing});
    }
    ++i, ++j;
  }
  return hunks;
}

}   // namespace text
