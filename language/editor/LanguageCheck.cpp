#include "language/editor/LanguageCheck.h"

#include <QCoreApplication>

#include "base/Strings.h"
#include "language/DefinitionText.h"
#include "language/LanguageProperties.h"

namespace languagecheck {

namespace {

void add(QStringList& to, const QString& where, const QString& body) {
  const QList<int> taken = definition::linesTakenForHeaders(body);
  if (taken.isEmpty()) return;
  const QStringList lines = splitCrLf(toCrLf(body));
  for (const int line : taken)
    to += QCoreApplication::translate("LanguageCheck", "%1, line %2: %3")
              .arg(plainForDisplay(where, 80), QString::number(line + 1), plainForDisplay(lines.value(line), 80));
}

int entries(const QString& list) {
  int count = 0;
  for (const QString& line : splitCrLf(toCrLf(list))) count += !line.trimmed().isEmpty();
  return count;
}

}   // namespace

QStringList linesAtRisk(const clsLang& language) {
  const auto say = [](const char* text) { return QCoreApplication::translate("LanguageCheck", text); };
  QStringList found;
  for (const LanguageProperty& property : languageProperties()) add(found, captionOf(property), language.*(property.value));
  for (const auto& macro : *language.cMacros()) add(found, say("Macro") + u' ' + macro->Name, macro->CommandString);
  for (const auto& item : *language.cTemplate()) add(found, say("Template") + u' ' + item->HotKey, item->UserString);
  for (const auto& list : *language.cWordList()) add(found, say("WordList") + u' ' + list->Name, list->WordList);
  return found;
}

QStringList linesAtRisk(const colLangs& languages) {
  QStringList found;
  for (const auto& language : languages)
    for (const QString& line : linesAtRisk(*language)) found += plainForDisplay(language->Name, 80) + QStringLiteral(": ") + line;
  return found;
}

QString refusal(const clsLang& language) {
  if (entries(language.MultiCommentStart) == entries(language.MultiCommentEnd)) return {};
  return QCoreApplication::translate(
      "LanguageCheck", "Multi Line Start and Multi Line End have different numbers of entries: this language cannot be coloured.");
}

}   // namespace languagecheck
