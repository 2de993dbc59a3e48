#include "change/indent/IndentHabits.h"

#include <algorithm>

namespace {
constexpr auto kByCount = [](const auto& a, const auto& b) { return a.second < b.second; };
}

void IndentHabits::count(Tally* tally, int distance) {
  const auto found = std::find_if(tally->begin(), tally->end(), [&](const auto& one) { return one.first == distance; });
  if (found != tally->end()) ++found->second;
  else tally->push_back({distance, 1});
}

int IndentHabits::mostOf(const Tally& tally) {
  const auto most = std::max_element(tally.begin(), tally.end(), kByCount);
  return most == tally.end() ? kNone : most->first;
}

void IndentHabits::note(const QString& word, int distance) {
  if (distance == kNone) return;
  ++blocks_[word][distance];
  if (QStringLiteral("^~:").contains(word.left(1)) || word.contains(u'|')) return;   // tells nothing about the lines inside a block
  ++all_;
  indented_ += distance > 0;
}

void IndentHabits::judgeUnit() {
  std::map<int, int> units;
  for (auto word = blocks_.cbegin(); word != blocks_.cend(); ++word)
    if (!word.key().isEmpty() && !QStringLiteral("([{^~:").contains(word.key()[0]) && !word.key().contains(u'|') &&
        !word.key().contains(u'>'))
      for (const auto& [distance, blocks] : *word)
        if (distance > 0) units[distance] += blocks;
  const auto most = std::max_element(units.begin(), units.end(), kByCount);
  if (most != units.end() && most->second > units[old_]) old_ = most->first;
}

int IndentHabits::scaled(int distance, int otherwise) const {
  if (distance == 0) return indented_ * 10 >= all_ * 3 ? 0 : otherwise;
  if (old_ == fresh_) return distance <= std::max(8, 2 * fresh_) ? distance : otherwise;
  return distance == old_ ? fresh_ : distance == 2 * old_ ? 2 * fresh_ : otherwise;
}

int IndentHabits::width(const QString& word, int otherwise, int own) const {
  const auto found = blocks_.constFind(word);
  if (found == blocks_.constEnd()) return otherwise;
  int all = 0;
  for (const auto& [distance, blocks] : *found) all += blocks;
  if (const auto like = own < 0 ? found->end() : found->find(own);
      like != found->end() && like->second >= 3 && like->second * 4 >= all)
    return scaled(own, otherwise);
  const auto [distance, blocks] = *std::max_element(found->begin(), found->end(), kByCount);
  if (distance < 0 || blocks * 10 < all * (distance == 0 ? 8 : 6)) return otherwise;
  return scaled(distance, otherwise);
}

IndentStyle detectIndent(const LineSource& line, qint64 count, int tabSize) {
  std::map<int, int> steps;
  int last = 0, tabs = 0, blanks = 0;
  for (qint64 i = 0; i < std::min<qint64>(count, 20000); ++i) {
    const QString text = line(i);
    const int leading = leadingLength(text);
    if (leading == text.size()) continue;
    if (text[0] == u'\t') ++tabs;
    else if (leading > 1) ++blanks;
    int column = 0;
    for (int at = 0; at < leading; ++at) column += text[at] == u'\t' ? tabSize - column % tabSize : 1;
    if (column > last + 1 && column <= last + 8) ++steps[column - last];
    last = column;
  }
  IndentStyle style;
  style.tabs = tabs > blanks;
  if (!steps.empty()) style.unit = std::max_element(steps.begin(), steps.end(), kByCount)->first;
  return style;
}
