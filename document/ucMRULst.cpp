#include "document/ucMRULst.h"

#include <QtGlobal>

namespace {
#ifdef Q_OS_WIN
constexpr Qt::CaseSensitivity kNames = Qt::CaseInsensitive;
#else
constexpr Qt::CaseSensitivity kNames = Qt::CaseSensitive;
#endif
}   // namespace

void ucMRULst::AddItem(const QString& name) {
  if (name.isEmpty()) return;
  items_.removeIf([&](const QString& item) { return item.compare(name, kNames) == 0; });
  items_.prepend(name);
  if (items_.size() > kLimit) items_.resize(kLimit);
  emit Changed();
}

void ucMRULst::UseItem(int index) {
  if (index < 0 || index >= Count()) return;
  items_.move(index, 0);
  emit Changed();
}

void ucMRULst::Remove(int index) {
  if (index < 0 || index >= Count()) return;
  items_.removeAt(index);
  emit Changed();
}

void ucMRULst::setItems(const QStringList& names) {
  items_.clear();
  for (const QString& name : names)
    if (!name.isEmpty() && items_.size() < kLimit && !items_.contains(name, kNames)) items_ << name;
  emit Changed();
}
