// Everything that a language model holds as one text, which is equal for two models only when they are; withMark: where they came
// from too. Break, bar and backslash are escaped.
#pragma once

#include <string>
#include <utility>

#include "control/edit/TextModel.h"
#include "language/LanguageProperties.h"

inline std::string dump(const clsLang& language, bool withMark = false) {
  std::string all;
  const auto add = [&](const char* name, const std::initializer_list<QString>& values) {
    const char* parting = "=";
    all += name;
    for (const QString& value : values) {
      all += std::exchange(parting, " | ");
      for (const char c : fromQString(value)) {
        if (c == '\\' || c == '|') all += '\\';
        all += c == '\r' ? "\\r" : c == '\n' ? "\\n" : std::string(1, c);
      }
    }
    all += '\n';
  };
  add("LANGUAGE", {language.Name});
  add("case", {QLatin1String(language.isCaseSensitive ? "yes" : "no")});
  if (withMark && language.isForeign) add("foreign", {QLatin1String("yes")});
  for (const LanguageProperty& property : languageProperties()) add(property.section, {language.*(property.value)});
  for (const auto& w : *language.cWordList()) add("list", {w->Name, w->WordList, w->Desc});
  for (const auto& m : *language.cMacros()) add("macro", {m->Name, m->CommandString, m->Desc});
  for (const auto& t : *language.cTemplate()) add("template", {t->HotKey, t->Name, t->UserString, t->Desc});
  return all;
}

inline std::string dump(const colLangs& languages, bool withMark = false) {
  std::string all;
  for (const auto& language : languages) all += dump(*language, withMark);
  return all;
}
