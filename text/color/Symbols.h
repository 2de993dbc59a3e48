// The sets in which the highlighter looks up words and signs: words by hash, signs by the longest match. Internal to the engine.
// Both cost the length of the compared text, whatever the number of entries.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace text {

inline char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

// Signs such as "<=" or "$display", each with a value. Entries longer than maxLength are left out, because they would make each
// byte of a text expensive.
class Signs {
 public:
  static constexpr std::size_t maxLength = 128;
  explicit Signs(bool folds = false) : folds_(folds) {}
  // Of equal entries the one with the smallest value stays.
  void add(const std::string& sign, int value);
  void build();   // call once behind the last add()
  bool startsWith(unsigned char first) const { return first_[first].first < first_[first].second; }
  bool empty() const { return entries_.empty(); }

  // Calls visit(length, value) for every entry that matches the bytes at `at`, shortest first.
  template <class Visit>
  void at(std::string_view bytes, std::size_t at, Visit visit) const {
    auto [low, high] = first_[static_cast<unsigned char>(bytes[at])];
    for (std::size_t depth = 1; low < high; ++depth) {
      if (entries_[low].sign.size() == depth) {
        visit(depth, entries_[low].value);
        if (++low == high) return;
      }
      if (high - low == 1) {   // only this one can fit
        const Entry& e = entries_[low];
        if (bytes.size() - at < e.sign.size()) return;
        for (std::size_t i = depth; i < e.sign.size(); ++i)
          if ((folds_ ? lowerAscii(bytes[at + i]) : bytes[at + i]) != e.sign[i]) return;
        visit(e.sign.size(), e.value);
        return;
      }
      if (at + depth >= bytes.size()) return;
      const char c = folds_ ? lowerAscii(bytes[at + depth]) : bytes[at + depth];
      const auto begin = entries_.begin();
      const auto from = std::partition_point(begin + low, begin + high, [&](const Entry& e) { return e.sign[depth] < c; });
      const auto to = std::partition_point(from, begin + high, [&](const Entry& e) { return e.sign[depth] == c; });
      low = static_cast<std::uint32_t>(from - begin);
      high = static_cast<std::uint32_t>(to - begin);
    }
  }

 private:
  struct Entry {
    std::string sign;
    int value;
  };
  bool folds_;
  std::vector<Entry> entries_;
  std::array<std::pair<std::uint32_t, std::uint32_t>, 256> first_{};
};

// Words with a value each.
class WordSet {
 public:
  explicit WordSet(bool folds = false) : folds_(folds) {}
  void add(std::string_view word, int value);   // the first value stays
  int find(std::string_view word) const;        // -1: not in the set

 private:
  void grow();
  std::size_t slotOf(std::string_view folded) const;
  struct Entry {
    std::string word;
    int value;
  };
  bool folds_;
  std::vector<Entry> entries_;
  std::vector<std::uint32_t> slots_;           // 0: free, else index + 1
  std::array<std::uint32_t, 256> lengths_{};   // by first byte: which lengths occur (bit 31: 31 and more)
  std::size_t longest_ = 0;
};

}   // namespace text
