#include "language/Registration.h"

#include "language/clsLang.h"

namespace {

QStringList registered;
int count = 0;
bool gFixedLangsRemoved = false;

QString lines(QString list) { return list.replace(QLatin1String("\r\n"), QLatin1String("\n")); }

}  // namespace

CmLanguage handedOver(const clsLang& language) {
  CmLanguage handed;
  handed.CaseSensitive = language.isCaseSensitive;
  handed.Keywords = lines(language.Keywords);
  handed.Operators = lines(language.Operators);
  handed.SingleLineComments = lines(language.SingleComments);
  handed.MultiLineComments1 = lines(language.MultiCommentStart);
  handed.MultiLineComments2 = lines(language.MultiCommentEnd);
  handed.StringDelims = lines(language.StringDelims);
  handed.BlockStart = lines(language.BlockStart);
  handed.BlockEnd = lines(language.BlockEnd);
  handed.BlockMid = lines(language.BlockMid);
  return handed;
}

void AddLanguages(const colLangs& languages) {
  if (!gFixedLangsRemoved) {
    for (const char* name : {"SQL", "C/C++", "PASCAL", "BASIC", "JAVA"})
      LanguageTable::unregisterLanguage(QString::fromLatin1(name));
    gFixedLangsRemoved = true;
  }
  for (const auto& language : languages) {
    LanguageTable::registerLanguage(language->Name, handedOver(*language));
    registered += language->Name;
  }
  count = languages.Count();
}

void RemoveLanguages() {
  for (const QString& name : registered) LanguageTable::unregisterLanguage(name);
  registered.clear();
}

const QStringList& RegisteredLanguages() { return registered; }
int RegisteredLanguageCount() { return count; }
void LowerRegisteredLanguageCount() { --count; }
