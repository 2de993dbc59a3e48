#include "language/clsLang.h"

cTemplate::Pointer cTemplate::Add(const QString& Name) {
  const auto item = append(std::make_shared<clsTemplate>());
  item->Name = Name;
  item->HotKey = Name;
  return item;
}

cWordList::Pointer cWordList::Add(const QString& Name, const QString& WordList) {
  const auto item = append(std::make_shared<clsWordList>());
  item->Name = Name;
  item->WordList = WordList;
  return item;
}

colLangs::Pointer colLangs::Add(const QString& Name) {
  const auto language = append(std::make_shared<clsLang>());
  language->Name = Name;
  return language;
}
