// Which definitions may start programs and write files. Those of the installed definition file and of the user's own file may. A
// foreign language (ucCM::isForeign, clsLang::isForeign) colours like any other; before its first such action the user is asked,
// once for its content.
#pragma once

#include <QString>

class clsLang;
class ucCM;

namespace trust {

enum class Deed { start, write };

// May this language of the manager start `what` (a command line, a help file), or write it (a file)? Asks if necessary. "Yes" is
// stored in the settings until the foreign definitions change.
bool may(Deed deed, const QString& what, const clsLang& language, ucCM& manager);

// May the value of a variable be the name of the started program, or a statement that starts programs or writes files? The user is
// asked once for each `what` (the program, or the whole statement); `shown` is the text of the question.
bool mayBeValue(const QString& what, const QString& shown);

}   // namespace trust
