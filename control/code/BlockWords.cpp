#include "control/code/BlockWords.h"

#include <algorithm>

namespace {
const QString kBreak = QStringLiteral("\r\n");
constexpr qsizetype kMostKnown = 10000;   // size of the cache

// The search itself; `listed` says whether an entry is in the list.
template <class Listed>
bool search(const QString& word, const Listed& listed, BlockWordFlags& flags) {
  flags = {};
  if (listed(word)) return true;
  if (listed(word + u'*')) {
    flags.doubleIndent = true;
    return true;
  }
  flags.tilde = listed(word + u'~');
  return false;
}
}   // namespace

bool searchWordList(const QString& word, const QString& list, BlockWordFlags& flags) {
  const QString text = list + kBreak;
  return search(
      word, [&](const QString& entry) { return text.contains(kBreak + entry + kBreak, Qt::CaseInsensitive); }, flags);
}

// A stored list has no line break before its first entry; this adds one, so that each entry is found.
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
  BlockWordFlags flags;
  const QString asked = folded(word);
  const auto in = [](const QSet<QString>& list) { return [&list](const QString& text) { return list.contains(text); }; };
  if (search(asked, in(end_), flags)) {
    entry.kind = BlockClass::end;
  } else if (search(asked, in(start_), flags)) {
    entry.kind = BlockClass::start;
    entry.doubleIndent = flags.doubleIndent;
  } else {
    entry.opensNothing = flags.tilde;
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
