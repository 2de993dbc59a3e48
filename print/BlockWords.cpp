#include "print/BlockWords.h"

namespace {
const QString kBreak = QStringLiteral("\r\n");


// The search itself; `listed` says whether an entry stands in the list.
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

QSet<QString> entriesOf(const QString& list) {
  QSet<QString> entries;
  for (const QString& entry : list.split(kBreak, Qt::SkipEmptyParts)) entries.insert(entry.toCaseFolded());
  return entries;
}
}  // namespace

bool searchWordList(const QString& word, const QString& list, BlockWordFlags& flags) {
  const QString text = list + kBreak;
  return search(word, [&](const QString& entry) { return text.contains(kBreak + entry + kBreak, Qt::CaseInsensitive); }, flags);
}

// A list as it is stored has no line break before its first entry; here each entry counts.
BlockWords::BlockWords(const QString& startList, const QString& endList, const QString& middleList)
    : start_(entriesOf(startList)), end_(entriesOf(endList)), middle_(entriesOf(middleList)) {}

bool BlockWords::isEmpty() const {
  return start_.isEmpty() && end_.isEmpty() && middle_.isEmpty();
}

BlockWords::Entry BlockWords::classify(const QString& word) const {
  if (word.isEmpty()) return {};
  if (const auto found = known_.constFind(word); found != known_.constEnd()) return *found;
  Entry entry;
  BlockWordFlags flags;
  const QString folded = word.toCaseFolded();
  const auto in = [](const QSet<QString>& list) { return [&list](const QString& text) { return list.contains(text); }; };
  if (search(folded, in(end_), flags)) {
    entry.kind = BlockClass::end;
  } else if (search(folded, in(start_), flags)) {
    entry.kind = BlockClass::start;
    entry.doubleIndent = flags.doubleIndent;
  } else {
    entry.opensNothing = flags.tilde;
    if (middle_.contains(folded)) entry.kind = BlockClass::middle;
  }
  entry.needsIs = start_.contains(folded + u'-');
  known_.insert(word, entry);
  return entry;
}
