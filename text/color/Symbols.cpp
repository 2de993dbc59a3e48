#include "text/color/Symbols.h"

#include <tuple>

#include "text/line/CharTables.h"
#include "text/line/Chars.h"

namespace text {

void Signs::add(const std::string& sign, int value) {
  if (sign.empty() || sign.size() > maxLength || sign.find_first_of("\r\n") != std::string::npos) return;
  Entry e{sign, value};
  if (folds_) std::transform(e.sign.begin(), e.sign.end(), e.sign.begin(), lowerAscii);
  entries_.push_back(std::move(e));
}

void Signs::build() {
  std::sort(entries_.begin(), entries_.end(),
            [](const Entry& a, const Entry& b) { return std::tie(a.sign, a.value) < std::tie(b.sign, b.value); });
  entries_.erase(std::unique(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) { return a.sign == b.sign; }),
                 entries_.end());
  for (std::uint32_t i = 0; i < entries_.size(); ++i) {
    auto& range = first_[static_cast<unsigned char>(entries_[i].sign[0])];
    if (range.first == range.second) range.first = i;
    range.second = i + 1;
  }
  if (folds_)
    for (unsigned char c = 'A'; c <= 'Z'; ++c) first_[c] = first_[c + 32u];
}

// The spelling under which a word is kept: in lower case when case does not count.
static std::string_view folded(std::string_view word, bool folds, std::string& buffer) {
  if (!folds) return word;
  buffer.clear();
  if (isAscii(word)) {
    for (const char c : word) buffer += lowerAscii(c);
    return buffer;
  }
  while (!word.empty()) {
    const Char c = decode(word);
    if (c.bad) buffer += word[0];
    else buffer += encode(fold(c.code));
    word.remove_prefix(static_cast<std::size_t>(c.bytes));
  }
  return buffer;
}

static unsigned lengthBit(std::string_view word) { return 1u << std::min<std::size_t>(word.size(), 31); }

std::size_t WordSet::slotOf(std::string_view word) const {
  std::uint64_t hash = 0xCBF29CE484222325u;
  for (const char c : word) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
  hash ^= hash >> 29;
  std::size_t slot = hash & (slots_.size() - 1);
  while (slots_[slot] != 0 && entries_[slots_[slot] - 1].word != word) slot = (slot + 1) & (slots_.size() - 1);
  return slot;
}

void WordSet::grow() {
  slots_.assign(std::max<std::size_t>(64, slots_.size() * 2), 0);
  for (std::uint32_t i = 0; i < entries_.size(); ++i) slots_[slotOf(entries_[i].word)] = i + 1;
}

void WordSet::add(std::string_view word, int value) {
  if (word.empty()) return;
  std::string buffer;
  const auto key = folded(word, folds_, buffer);
  if (slots_.size() < 2 * (entries_.size() + 1)) grow();
  auto& slot = slots_[slotOf(key)];
  if (slot != 0) return;
  entries_.push_back({std::string(key), value});
  slot = static_cast<std::uint32_t>(entries_.size());
  longest_ = std::max(longest_, key.size());
  lengths_[static_cast<unsigned char>(key[0])] |= lengthBit(key);
}

int WordSet::find(std::string_view word) const {
  if (word.empty() || entries_.empty() || word.size() > 2 * longest_) return -1;
  const auto first = static_cast<unsigned char>(folds_ ? lowerAscii(word[0]) : word[0]);
  if (first < 0x80 && word.size() < 31 && !(lengths_[first] & lengthBit(word)) && isAscii(word)) return -1;
  std::string buffer;
  const auto key = folded(word, folds_, buffer);
  const auto slot = slots_[slotOf(key)];
  return slot == 0 ? -1 : entries_[slot - 1].value;
}

}   // namespace text
