// The names of a folder's files, prepared for ranking: which names fit best what the user types.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace folder {

// Paths below a root (or absolute ones, of files elsewhere), each with what ranking needs. Grows only; read by any thread once made.
class NameTable {
 public:
  explicit NameTable(std::string root = {}) : root_(std::move(root)) {}
  void add(std::string_view path);
  std::size_t size() const { return entries_.size(); }
  std::string_view path(std::size_t i) const { return part(paths_, i, &Entry::path); }
  std::string_view folded(std::size_t i) const { return part(folded_, i, &Entry::folded); }   // small letters
  std::string_view name(std::size_t i) const;                                                 // the last part of folded()
  std::uint64_t letters(std::size_t i) const { return entries_[i].letters; }
  std::string fullPath(std::size_t i) const;
  const std::string& root() const { return root_; }

 private:
  struct Entry {
    std::uint32_t path = 0, folded = 0;   // where they begin
    std::uint32_t nameLength = 0;         // in folded
    std::uint64_t letters = 0;            // which characters occur
  };
  std::string_view part(const std::string& all, std::size_t i, std::uint32_t Entry::*begin) const;
  std::string root_, paths_, folded_;
  std::vector<Entry> entries_;
};

// What was typed: parts of a name, in any order, and a place: "alu rtl:120:5".
struct NameQuery {
  std::vector<std::string> parts;      // small letters
  std::int64_t line = 0, column = 0;   // from 1; 0: not said
};
NameQuery parseNameQuery(std::string_view typed);

struct RankedName {
  std::uint32_t table = 0, index = 0;
  std::uint64_t rank = 0;   // small is good
};

// What breaks ties. recency: 0 is the last used; large for what was not used.
struct NameTies {
  std::function<std::uint32_t(std::uint32_t table, std::uint32_t index)> recency;
  std::string near;   // path of the folder that one is in, as the table has it
};

// The best `most` of all that hold every part, best first: a part that is a whole name before a whole word before the beginning of a
// word before any piece, the name before the folders, contiguous before scattered letters; then what ties decide, then the
// shorter name. Empty: cancelled, or nothing fits. total: how many fit.
std::vector<RankedName> rankNames(const std::vector<const NameTable*>& tables, const NameQuery& query, const NameTies& ties,
                                  std::size_t most, std::size_t* total = nullptr, const std::atomic<bool>* cancel = nullptr);

// Where the parts stand in a path: pairs of first byte and length, ascending.
std::vector<std::pair<std::size_t, std::size_t>> namePlaces(std::string_view folded, const NameQuery& query);

std::string foldedName(std::string_view path);

}   // namespace folder
