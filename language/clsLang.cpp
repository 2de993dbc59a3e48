#include "language/clsLang.h"

#include <QCoreApplication>
#include <new>

#include "base/dialog/Dialogs.h"

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

namespace {

template <class List>
std::shared_ptr<List> copied(const List& list) {
  auto result = std::make_shared<List>();
  for (const auto& item : list) result->Insert(result->Count() + 1, std::make_shared<typename List::Pointer::element_type>(*item));
  return result;
}

}   // namespace

std::shared_ptr<clsLang> clsLang::copy() const {
  auto result = std::make_shared<clsLang>(*this);
  result->setcMacros(copied(*cMacros()));
  result->setcTemplate(copied(*cTemplate()));
  result->setcWordList(copied(*cWordList()));
  return result;
}

colLangs::Pointer colLangs::Add(const QString& Name) {
  const auto language = std::make_shared<clsLang>();
  language->Name = Name;
  try {
    append(language);
  } catch (const std::bad_alloc&) { MsgBox(QCoreApplication::translate("colLangs", "Language already defined")); }
  return language;
}
