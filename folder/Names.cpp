#include "folder/Names.h"

#include <algorithm>
#include <limits>

#include "bridge/QStringBytes.h"
#include "folder/Walk.h"

namespace folder {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

// How well one part fits, best first.
enum Fit : int { kWholeName, kWholeWord, kWordBegin, kInside, kFolderWord, kFolderInside, kScattered, kFolderScattered, kNot };

std::uint64_t letterOf(unsigned char c) {
  if (c >= 'a' && c <= 'z') return std::uint64_t{1} << (c - 'a');
  if (c >= '0' && c <= '9') return std::uint64_t{1} << (26 + c - '0');
  return std::uint64_t{1} << (36 + c % 28);
}

std::uint64_t lettersOf(std::string_view s) {
  std::uint64_t all = 0;
  for (const char c : s) all |= letterOf(static_cast<unsigned char>(c));
  return all;
}

bool isWordByte(char c) {
  const auto b = static_cast<unsigned char>(c);
  return (b >= 'a' && b <= 'z') || (b >= '0' && b <= '9') || b >= 128;
}

bool beginsWord(std::string_view s, std::size_t at) { return at == 0 || !isWordByte(s[at]) || !isWordByte(s[at - 1]); }
bool endsWord(std::string_view s, std::size_t end) { return end == s.size() || !isWordByte(s[end]) || !isWordByte(s[end - 1]); }

// The best place of a part that stands in one piece at or behind `from`: a whole word, the beginning of one, any.
std::size_t bestPlace(std::string_view s, std::string_view part, std::size_t from, int* grade) {
  std::size_t best = kNone;
  *grade = 3;
  for (std::size_t at = s.find(part, from); at != kNone; at = s.find(part, at + 1)) {
    const int here = !beginsWord(s, at) ? 2 : endsWord(s, at + part.size()) ? 0 : 1;
    if (here < *grade) {
      *grade = here;
      best = at;
    }
    if (here == 0) break;
  }
  return best;
}

bool scattered(std::string_view s, std::string_view part) {
  std::size_t at = 0;
  for (const char c : part) {
    at = s.find(c, at);
    if (at == kNone) return false;
    ++at;
  }
  return true;
}

Fit fitOf(std::string_view path, std::size_t nameAt, std::string_view part) {
  const std::string_view name = path.substr(nameAt);
  int grade = 3;
  if (part.find('/') == kNone) {
    if (name == part || name.substr(0, name.rfind('.')) == part) return kWholeName;
    if (bestPlace(name, part, 0, &grade) != kNone) return static_cast<Fit>(kWholeWord + grade);
    if (bestPlace(path, part, 0, &grade) != kNone) return grade < 2 ? kFolderWord : kFolderInside;
    if (scattered(name, part)) return kScattered;
  } else if (const std::size_t at = bestPlace(path, part, 0, &grade); at != kNone) {   // a piece of the path: as far as it reaches
    return at + part.size() > nameAt ? static_cast<Fit>(kWholeWord + grade) : grade < 2 ? kFolderWord : kFolderInside;
  }
  return scattered(path, part) ? kFolderScattered : kNot;
}

// How many folders two places have not in common.
std::uint32_t distance(std::string_view folder, std::string_view path) {
  const std::string_view own = path.substr(0, path.rfind('/') == kNone ? 0 : path.rfind('/'));
  std::size_t same = 0;   // bytes of whole parts that both begin with
  for (std::size_t i = 0;; ++i) {
    const bool aEnds = i >= folder.size() || folder[i] == '/', bEnds = i >= own.size() || own[i] == '/';
    if (aEnds && bEnds) same = i;
    if (i >= folder.size() || i >= own.size() || folder[i] != own[i]) break;
  }
  const auto parts = [&](std::string_view s) {
    if (s.size() <= same) return std::ptrdiff_t{0};
    return std::count(s.begin() + static_cast<std::ptrdiff_t>(same), s.end(), '/') + (same == 0 ? 1 : 0);
  };
  return static_cast<std::uint32_t>(std::min<std::ptrdiff_t>(parts(folder) + parts(own), 15));
}

}   // namespace

std::string foldedName(std::string_view path) {
  std::string out(path);
  bool plain = true;
  for (char& c : out) {
    plain = plain && static_cast<unsigned char>(c) < 128;
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  return plain ? out : fromQString(toQString(out).toLower());
}

void NameTable::add(std::string_view path) {
  const std::string small = foldedName(path);
  // Places are 32 bits; beyond 4 GB of names nobody types one.
  if (paths_.size() + path.size() > std::numeric_limits<std::uint32_t>::max() ||
      folded_.size() + small.size() > std::numeric_limits<std::uint32_t>::max())
    return;
  Entry entry;
  entry.path = static_cast<std::uint32_t>(paths_.size());
  entry.folded = static_cast<std::uint32_t>(folded_.size());
  entry.nameLength = static_cast<std::uint32_t>(small.size() - (small.rfind('/') + 1));
  entry.letters = lettersOf(small);
  paths_ += path;
  folded_ += small;
  entries_.push_back(entry);
}

std::string_view NameTable::part(const std::string& all, std::size_t i, std::uint32_t Entry::*begin) const {
  const std::size_t from = entries_[i].*begin, end = i + 1 < entries_.size() ? entries_[i + 1].*begin : all.size();
  return std::string_view(all).substr(from, end - from);
}

std::string_view NameTable::name(std::size_t i) const {
  const std::string_view all = folded(i);
  return all.substr(all.size() - entries_[i].nameLength);
}

std::string NameTable::fullPath(std::size_t i) const {
  const std::string_view own = path(i);
  if (own.starts_with('/') || (own.size() > 1 && own[1] == ':') || root_.empty()) return std::string(own);
  return joined(root_, own);
}

NameQuery parseNameQuery(std::string_view typed) {
  NameQuery query;
  const auto takeNumber = [&](std::int64_t* number) {   // ":120" at the end
    const std::size_t colon = typed.rfind(':');
    if (colon == kNone || typed.size() - colon > 16) return false;
    std::int64_t value = 0;
    for (const char c : typed.substr(colon + 1)) {
      if (c < '0' || c > '9') return false;
      value = value * 10 + (c - '0');
    }
    typed = typed.substr(0, colon);
    *number = value;
    return true;
  };
  while (typed.ends_with(' ')) typed.remove_suffix(1);
  std::int64_t last = 0, first = 0;
  if (takeNumber(&last)) {
    if (takeNumber(&first)) {
      query.line = first;
      query.column = last;
    } else {
      query.line = last;
    }
  }
  std::string part;
  for (const char c : foldedName(typed) + ' ') {
    if (c != ' ' && c != '\t') {
      part += c == '\\' ? '/' : c;
    } else if (!part.empty()) {
      query.parts.push_back(std::move(part));
      part.clear();
    }
  }
  return query;
}

std::vector<RankedName> rankNames(const std::vector<const NameTable*>& tables, const NameQuery& query, const NameTies& ties,
                                  std::size_t most, std::size_t* total, const std::atomic<bool>* cancel) {
  std::vector<RankedName> all;
  std::uint64_t needed = 0;
  for (const std::string& part : query.parts) needed |= lettersOf(part);
  for (std::uint32_t t = 0; t < tables.size(); ++t) {
    const NameTable& table = *tables[t];
    for (std::uint32_t i = 0; i < table.size(); ++i) {
      if (i % 1024 == 0 && cancel && cancel->load(std::memory_order_relaxed)) return {};
      if ((table.letters(i) & needed) != needed) continue;
      const std::string_view path = table.folded(i);
      const std::size_t nameAt = path.size() - table.name(i).size();
      int worst = 0, sum = 0;
      for (const std::string& part : query.parts) {
        const Fit fit = fitOf(path, nameAt, part);
        worst = std::max<int>(worst, fit);
        sum += fit;
        if (fit == kNot) break;
      }
      if (worst == kNot) continue;
      // From the most to the least: the worst part, all parts, recency, nearness, length of the name.
      const auto bits = [](std::uint64_t value, int width) { return std::min(value, (std::uint64_t{1} << width) - 1); };
      std::uint64_t rank = static_cast<std::uint64_t>(worst);
      rank = rank << 8 | bits(static_cast<std::uint64_t>(sum), 8);
      rank = rank << 16 | bits(ties.recency ? ties.recency(t, i) : 0, 16);
      rank = rank << 4 | bits(distance(ties.near, table.path(i)), 4);
      rank = rank << 12 | bits(path.size() - nameAt, 12);
      all.push_back({t, i, rank});
    }
  }
  if (total) *total = all.size();
  const auto better = [&](const RankedName& a, const RankedName& b) {
    if (a.rank != b.rank) return a.rank < b.rank;
    return std::pair(a.table, a.index) < std::pair(b.table, b.index);
  };
  const std::size_t kept = std::min(most, all.size());
  std::partial_sort(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(kept), all.end(), better);
  all.resize(kept);
  return all;
}

std::vector<std::pair<std::size_t, std::size_t>> namePlaces(std::string_view folded, const NameQuery& query) {
  std::vector<bool> marked(folded.size());
  const std::size_t nameAt = folded.rfind('/') + 1;
  for (const std::string& part : query.parts) {
    int grade = 0;
    std::size_t at = bestPlace(folded, part, nameAt, &grade);
    if (at == kNone) at = bestPlace(folded, part, 0, &grade);
    for (std::size_t i = 0; at != kNone && i < part.size(); ++i) marked[at + i] = true;
    if (at != kNone) continue;
    at = scattered(folded.substr(nameAt), part) ? nameAt : 0;
    for (const char c : part) {
      at = folded.find(c, at);
      if (at == kNone) break;
      marked[at++] = true;
    }
  }
  std::vector<std::pair<std::size_t, std::size_t>> places;
  for (std::size_t i = 0; i < marked.size(); ++i) {
    if (!marked[i]) continue;
    if (!places.empty() && places.back().first + places.back().second == i) ++places.back().second;
    else places.emplace_back(i, 1);
  }
  return places;
}

}   // namespace folder
