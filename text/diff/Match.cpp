#include "text/diff/Match.h"

#include <algorithm>
#include <limits>

namespace text {
namespace {

constexpr std::int64_t kSmall = 512;   // elements of both sides that are compared without anchors
constexpr std::int64_t kMost = 256;    // edits that are followed from either end before the best way so far is taken
constexpr std::int64_t kFew = 32;      // the same, once there were kPatience steps for each element
constexpr std::int64_t kPatience = 64;
constexpr int kDepth = 32;   // of anchors between anchors

struct Area {
  std::int64_t aBegin, aEnd, bBegin, bEnd;
  int depth = 0;
};

// The shortest edit (Myers), from both ends towards the middle, so that it needs no memory of the way. Marks what differs.
class ShortestEdit {
 public:
  ShortestEdit(Matched* result, const std::atomic<bool>* cancel)
      : result_(*result),
        cancel_(cancel),
        patience_(kPatience * std::max<std::int64_t>(std::ssize(result->gone) + std::ssize(result->fresh), 8 * kSmall)) {}

  // indexA, indexB: of the elements in the result.
  void run(const std::vector<std::uint32_t>& a, const std::vector<std::int64_t>& indexA, const std::vector<std::uint32_t>& b,
           const std::vector<std::int64_t>& indexB) {
    a_ = a.data(), b_ = b.data(), indexA_ = indexA.data(), indexB_ = indexB.data();
    const auto n = static_cast<std::int64_t>(a.size()), m = static_cast<std::int64_t>(b.size());
    zero_ = m + 1;
    if (static_cast<std::int64_t>(forward_.size()) < n + m + 3) {
      forward_.resize(static_cast<std::size_t>(n + m + 3));
      backward_.resize(forward_.size());
    }
    divide({0, n, 0, m});
  }

 private:
  struct Split {
    std::int64_t x, y;
    bool firstIsNear;   // of the two parts
  };

  void divide(Area area) {
    auto& [a, aEnd, b, bEnd, depth] = area;
    for (;;) {
      while (a < aEnd && b < bEnd && a_[a] == b_[b]) ++a, ++b, ++result_.steps;
      while (a < aEnd && b < bEnd && a_[aEnd - 1] == b_[bEnd - 1]) --aEnd, --bEnd, ++result_.steps;
      if (a == aEnd || b == bEnd || (cancel_ && *cancel_)) {
        for (; a < aEnd; ++a) result_.gone[static_cast<std::size_t>(indexA_[a])] = 1;
        for (; b < bEnd; ++b) result_.fresh[static_cast<std::size_t>(indexB_[b])] = 1;
        return;
      }
      const Split at = split(area);
      if (at.firstIsNear) {
        divide({a, at.x, b, at.y});
        a = at.x, b = at.y;
      } else {
        divide({at.x, aEnd, at.y, bEnd});
        aEnd = at.x, bEnd = at.y;
      }
    }
  }

  // A point of a shortest way, or of a good one after some edits from either end. The diagonal of (x, y) is x - y.
  Split split(const Area& area) {
    const auto [a, aEnd, b, bEnd, depth] = area;
    const std::int64_t low = a - bEnd, high = aEnd - b, first = a - b, last = aEnd - bEnd;
    const bool odd = (first - last) & 1;
    std::int64_t* const f = forward_.data() + zero_;   // how far each diagonal reaches in the first sequence
    std::int64_t* const r = backward_.data() + zero_;
    constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max() / 2;
    std::int64_t fLow = first, fHigh = first, rLow = last, rHigh = last;
    f[first] = a, r[last] = aEnd;
    const std::int64_t most = result_.steps < patience_ ? kMost : kFew;
    for (std::int64_t edits = 1;; ++edits) {
      if (fLow > low) f[--fLow - 1] = -1;
      else ++fLow;
      if (fHigh < high) f[++fHigh + 1] = -1;
      else --fHigh;
      for (std::int64_t k = fHigh; k >= fLow; k -= 2) {
        std::int64_t x = f[k - 1] >= f[k + 1] ? f[k - 1] + 1 : f[k + 1];
        const std::int64_t from = x;
        while (x < aEnd && x - k < bEnd && a_[x] == b_[x - k]) ++x;
        result_.steps += 1 + x - from;
        f[k] = x;
        if (odd && k >= rLow && k <= rHigh && r[k] <= x) return {x, x - k, true};
      }
      if (rLow > low) r[--rLow - 1] = kNever;
      else ++rLow;
      if (rHigh < high) r[++rHigh + 1] = kNever;
      else --rHigh;
      for (std::int64_t k = rHigh; k >= rLow; k -= 2) {
        std::int64_t x = r[k - 1] < r[k + 1] ? r[k - 1] : r[k + 1] - 1;
        const std::int64_t from = x;
        while (x > a && x - k > b && a_[x - 1] == b_[x - k - 1]) --x;
        result_.steps += 1 + from - x;
        r[k] = x;
        if (!odd && k >= fLow && k <= fHigh && x <= f[k]) return {x, x - k, true};
      }
      if (edits < most && !(cancel_ && *cancel_)) continue;
      Split ahead{a, b, true}, behind{aEnd, bEnd, false};
      for (std::int64_t k = fHigh; k >= fLow; k -= 2) {
        std::int64_t x = std::min(f[k], aEnd), y = x - k;
        if (y > bEnd) x = bEnd + k, y = bEnd;
        if (x + y > ahead.x + ahead.y) ahead = {x, y, true};
      }
      for (std::int64_t k = rHigh; k >= rLow; k -= 2) {
        std::int64_t x = std::max(r[k], a), y = x - k;
        if (y < b) x = b + k, y = b;
        if (x + y < behind.x + behind.y) behind = {x, y, false};
      }
      return ahead.x + ahead.y - a - b >= aEnd + bEnd - behind.x - behind.y ? ahead : behind;
    }
  }

  Matched& result_;
  const std::atomic<bool>* cancel_;
  const std::int64_t patience_;   // steps
  const std::uint32_t *a_ = nullptr, *b_ = nullptr;
  const std::int64_t *indexA_ = nullptr, *indexB_ = nullptr;
  std::vector<std::int64_t> forward_, backward_;
  std::int64_t zero_ = 0;
};

class Matcher {
 public:
  Matcher(DiffIds a, DiffIds b, Matched* result, const std::atomic<bool>* cancel)
      : a_(a), b_(b), result_(*result), cancel_(cancel), edit_(result, cancel) {
    std::uint32_t most = 0;
    for (const DiffIds side : {a, b})
      for (const std::uint32_t id : side) most = std::max(most, id);
    seen_.resize(std::size_t(most) + 1);
  }

  void run() {
    std::vector<Area> areas{{0, std::ssize(a_), 0, std::ssize(b_)}};
    while (!areas.empty()) {
      Area area = areas.back();
      areas.pop_back();
      while (area.aBegin < area.aEnd && area.bBegin < area.bEnd && a(area.aBegin) == b(area.bBegin))
        ++area.aBegin, ++area.bBegin, ++result_.steps;
      while (area.aBegin < area.aEnd && area.bBegin < area.bEnd && a(area.aEnd - 1) == b(area.bEnd - 1))
        --area.aEnd, --area.bEnd, ++result_.steps;
      const std::int64_t inA = area.aEnd - area.aBegin, inB = area.bEnd - area.bBegin;
      if (inA == 0 || inB == 0 || (cancel_ && *cancel_)) {
        std::fill_n(result_.gone.begin() + area.aBegin, inA, char(1));
        std::fill_n(result_.fresh.begin() + area.bBegin, inB, char(1));
        continue;
      }
      count(area);
      if (inA + inB > kSmall && area.depth < kDepth) findAnchors(area);
      else anchors_.clear();
      if (anchors_.empty()) compare(area);
      else divide(area, &areas);
      forget(area);
    }
  }

 private:
  struct Seen {
    std::uint32_t inA = 0, inB = 0;   // how often
    std::int64_t at = 0;              // the last one in b
  };
  struct Anchor {
    std::int64_t a, b;
  };
  std::uint32_t a(std::int64_t i) const { return a_[static_cast<std::size_t>(i)]; }
  std::uint32_t b(std::int64_t i) const { return b_[static_cast<std::size_t>(i)]; }

  void count(const Area& area) {
    for (std::int64_t i = area.aBegin; i < area.aEnd; ++i) ++seen_[a(i)].inA;
    for (std::int64_t i = area.bBegin; i < area.bEnd; ++i) {
      Seen& seen = seen_[b(i)];
      ++seen.inB;
      seen.at = i;
    }
    result_.steps += area.aEnd - area.aBegin + area.bEnd - area.bBegin;
  }

  void forget(const Area& area) {
    for (std::int64_t i = area.aBegin; i < area.aEnd; ++i) seen_[a(i)] = {};
    for (std::int64_t i = area.bBegin; i < area.bEnd; ++i) seen_[b(i)] = {};
  }

  // The longest row of elements that stand once in each side, ascending in both.
  void findAnchors(const Area& area) {
    std::vector<Anchor> once;
    for (std::int64_t i = area.aBegin; i < area.aEnd; ++i)
      if (const Seen& seen = seen_[a(i)]; seen.inA == 1 && seen.inB == 1) once.push_back({i, seen.at});
    std::vector<std::size_t> ends, before(once.size());   // ends[l]: of the rows of l + 1 anchors the one that ends first in b
    for (std::size_t i = 0; i < once.size(); ++i) {
      auto at = ends.end();
      if (!ends.empty() && once[ends.back()].b > once[i].b) {
        at = std::lower_bound(ends.begin(), ends.end(), once[i].b,
                              [&](std::size_t end, std::int64_t place) { return once[end].b < place; });
      }
      before[i] = at == ends.begin() ? 0 : *(at - 1);
      if (at == ends.end()) ends.push_back(i);
      else *at = i;
    }
    anchors_.resize(ends.size());
    std::size_t i = ends.empty() ? 0 : ends.back();
    for (auto it = anchors_.rbegin(); it != anchors_.rend(); ++it, i = before[i]) *it = once[i];
  }

  void divide(const Area& area, std::vector<Area>* areas) {
    Area next = area;
    ++next.depth;
    for (const Anchor& anchor : anchors_) {
      next.aEnd = anchor.a, next.bEnd = anchor.b;
      if (next.aEnd > next.aBegin || next.bEnd > next.bBegin) areas->push_back(next);
      next.aBegin = anchor.a + 1, next.bBegin = anchor.b + 1;
    }
    next.aEnd = area.aEnd, next.bEnd = area.bEnd;
    if (next.aEnd > next.aBegin || next.bEnd > next.bBegin) areas->push_back(next);
  }

  // Elements that the other side lacks differ in any case; the way is sought among the others.
  void compare(const Area& area) {
    idsA_.clear(), idsB_.clear(), indexA_.clear(), indexB_.clear();
    for (std::int64_t i = area.aBegin; i < area.aEnd; ++i) {
      if (seen_[a(i)].inB == 0) result_.gone[static_cast<std::size_t>(i)] = 1;
      else idsA_.push_back(a(i)), indexA_.push_back(i);
    }
    for (std::int64_t i = area.bBegin; i < area.bEnd; ++i) {
      if (seen_[b(i)].inA == 0) result_.fresh[static_cast<std::size_t>(i)] = 1;
      else idsB_.push_back(b(i)), indexB_.push_back(i);
    }
    edit_.run(idsA_, indexA_, idsB_, indexB_);
  }

  DiffIds a_, b_;
  Matched& result_;
  const std::atomic<bool>* cancel_;
  ShortestEdit edit_;
  std::vector<Seen> seen_;   // by id, of the area at hand
  std::vector<Anchor> anchors_;
  std::vector<std::uint32_t> idsA_, idsB_;
  std::vector<std::int64_t> indexA_, indexB_;
};

}   // namespace

Matched matchIds(DiffIds before, DiffIds after, const std::atomic<bool>* cancel) {
  Matched result;
  result.gone.resize(before.size());
  result.fresh.resize(after.size());
  Matcher(before, after, &result, cancel).run();
  return result;
}

}   // namespace text
