// What a language definition would lose or not do, in words for the person who edits it.
#pragma once

#include <QStringList>

class clsLang;
class colLangs;

namespace languagecheck {

// Lines that the definition file would take for headers, one text each: "Operators, line 2: [*]".
QStringList linesAtRisk(const clsLang& language);
// The same for all languages, each text led by the language's name.
QStringList linesAtRisk(const colLangs& languages);
// Empty, or why the edit control would refuse the language.
QString refusal(const clsLang& language);

}   // namespace languagecheck
