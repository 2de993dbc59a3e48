// Checks a language definition, with messages for the user: lines that the file would lose, and definitions that do not work.
#pragma once

#include <QStringList>

class clsLang;
class colLangs;

namespace languagecheck {

// Lines that the definition file would read as headers, one text for each: "Operators, line 2: [*]".
QStringList linesAtRisk(const clsLang& language);
// The same for all languages; each text begins with the name of the language.
QStringList linesAtRisk(const colLangs& languages);
// Empty, or the reason why the edit control would refuse the language.
QString refusal(const clsLang& language);

}   // namespace languagecheck
