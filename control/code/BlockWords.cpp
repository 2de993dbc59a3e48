#include "control/code/BlockWords.h"

#include <algorithm>

namespace {
constexpr qsizetype kMostKnown = 10000;   // size of the cache
}   // namespace

BlockWords::BlockWords(const QString& startList, const QString& endList, const QString& middleList, bool caseSensitive)
    : caseSensitive_(caseSensitive), start_(entriesOf(startList)), end_(entriesOf(endList)), middle_(entriesOf(middleList)) {}

QSet<QString> BlockWords::entriesOf(const QString& list) const {
  QSet<QString> entries;
  for (QString entry : list.split(u'\n')) {
    if (entry.endsWith(u'\r')) entry.chop(1);
    if (!entry.isEmpty()) entries.insert(folded(entry));
  }
  return entries;
}

bool BlockWords::isEmpty() const { return start_.isEmpty() && end_.isEmpty() && middle_.isEmpty(); }

BlockWords::Entry BlockWords::classify(const QString& word) const {
  if (word.isEmpty()) return {};
  if (const auto found = known_.constFind(word); found != known_.constEnd()) return *found;
  Entry entry;
  const QString asked = folded(word);
  if (end_.contains(asked) || end_.contains(asked + u'*')) {
    entry.kind = BlockClass::end;
  } else if (start_.contains(asked) || start_.contains(asked + u'*')) {
    entry.kind = BlockClass::start;
    entry.doubleIndent = !start_.contains(asked);
  } else {
    entry.opensNothing = start_.contains(asked + u'~');
    if (middle_.contains(asked)) entry.kind = BlockClass::middle;
  }
  entry.needsIs = start_.contains(asked + u'-');
  if (known_.size() >= kMostKnown) known_.clear();
  known_.insert(word, entry);
  return entry;
}

bool BlockWords::beginsACloser(const QString& prefix) const {
  const QString asked = folded(prefix);
  const auto begins = [&](const QString& word) { return word.size() > asked.size() && word.startsWith(asked); };
  return std::any_of(end_.begin(), end_.end(), begins) || std::any_of(middle_.begin(), middle_.end(), begins);
}
