#include "print/BlockWords.h"

namespace {
const QString kBreak = QStringLiteral("\r\n");

bool listed(const QString& entry, const QString& list) {
  return list.contains(kBreak + entry + kBreak, Qt::CaseInsensitive);
}
}  // namespace

bool searchWordList(const QString& word, const QString& list, BlockWordFlags& flags) {
  flags = {};
  const QString text = list + kBreak;
  if (listed(word, text)) return true;
  if (listed(word + u'*', text)) {
    flags.doubleIndent = true;
    return true;
  }
  flags.tilde = listed(word + u'~', text);
  return false;
}

BlockWords::BlockWords(QString startList, QString endList, QString middleList)
    : start_(kBreak + startList), end_(kBreak + endList), middle_(kBreak + middleList) {}

bool BlockWords::isEmpty() const {
  return start_.trimmed().isEmpty() && end_.trimmed().isEmpty() && middle_.trimmed().isEmpty();
}

BlockWords::Entry BlockWords::classify(const QString& word) const {
  if (word.isEmpty()) return {};
  if (const auto found = known_.constFind(word); found != known_.constEnd()) return *found;
  Entry entry;
  BlockWordFlags flags;
  if (searchWordList(word, end_, flags)) {
    entry.kind = BlockClass::end;
  } else if (searchWordList(word, start_, flags)) {
    entry.kind = BlockClass::start;
    entry.doubleIndent = flags.doubleIndent;
  } else {
    entry.opensNothing = flags.tilde;
    if (listed(word, middle_ + kBreak)) entry.kind = BlockClass::middle;
  }
  entry.needsIs = listed(word + u'-', start_ + kBreak);
  known_.insert(word, entry);
  return entry;
}
