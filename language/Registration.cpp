#include "language/Registration.h"

#include "base/Workspace.h"
#include "language/LanguageProperties.h"

namespace {

struct Registered {
  QStringList names;
  int count = 0;
  bool gFixedLangsRemoved = false;
};
Registered& registered() { return Workspace::current().part<Registered>(); }

// One entry a line, each ended by LF.
QString lines(QString list) {
  list.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  return list.isEmpty() || list.endsWith(u'\n') ? list : list + u'\n';
}

QString marked(text::EntryMark mark, const QString& list) {
  QString all;
  for (const QString& entry : list.split(u'\n', Qt::SkipEmptyParts)) all += QChar(static_cast<char16_t>(mark)) + entry + u'\n';
  return all;
}

// The entries of a list, with the marks that "Sign Places" gives them ("command #").
QString placed(const QString& list, const QString& places) {
  QString all = lines(list);
  for (const QString& line : lines(places).split(u'\n', Qt::SkipEmptyParts)) {
    const QString place = line.section(u' ', 0, 0), sign = line.section(u' ', 1);
    const auto mark = place == QLatin1String("word")      ? text::EntryMark::atWord
                      : place == QLatin1String("command") ? text::EntryMark::atCommand
                      : place == QLatin1String("line")    ? text::EntryMark::atLine
                      : place == QLatin1String("plain")   ? text::EntryMark::plain
                      : place == QLatin1String("escape")  ? text::EntryMark::escape
                                                          : text::EntryMark::none;
    if (mark == text::EntryMark::none || sign.isEmpty()) continue;
    all = QString(u'\n' + all).replace(u'\n' + sign + u'\n', u'\n' + marked(mark, sign)).mid(1);
  }
  return all;
}

}   // namespace

CmLanguage handedOver(const clsLang& language) {
  CmLanguage handed;
  handed.CaseSensitive = language.isCaseSensitive;
  for (const LanguageProperty& property : languageProperties()) {
    if (!property.registered) continue;
    const QString& list = language.*(property.value);
    QString& to = handed.*(property.registered);
    if (property.mark != text::EntryMark::none) to += marked(property.mark, lines(list));
    else to += property.hasPlaces ? placed(list, language.SignPlaces) : lines(list);
  }
  return handed;
}

void AddLanguages(const colLangs& languages) {
  if (!registered().gFixedLangsRemoved) {
    for (const char* name : {"SQL", "C/C++", "PASCAL", "BASIC", "JAVA"})
      LanguageTable::unregisterLanguage(QString::fromLatin1(name));
    registered().gFixedLangsRemoved = true;
  }
  for (const auto& language : languages) {
    LanguageTable::registerLanguage(language->Name, handedOver(*language));
    registered().names += language->Name;
  }
  registered().count = languages.Count();
}

void RemoveLanguages() {
  for (const QString& name : registered().names) LanguageTable::unregisterLanguage(name);
  registered().names.clear();
}

int RegisteredLanguageCount() { return registered().count; }
void LowerRegisteredLanguageCount() { --registered().count; }
