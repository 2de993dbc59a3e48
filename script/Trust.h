// What definitions may start programs and write files. Those of the installed definition file and of the person's own may; a
// language from elsewhere (ucCM::isForeign, clsLang::isForeign) colours like any other, and before it does the first such thing the
// person is asked, once for its content.
#pragma once

#include <QString>

class clsLang;
class ucCM;

namespace trust {

enum class Deed { start, write };

// May this language of the manager start `what` (a command line, a help file) or write it (a file)? Asks if need be; "yes" is
// remembered in the settings, and ends when the foreign definitions change.
bool may(Deed deed, const QString& what, const clsLang& language, ucCM& manager);

// May the value of a variable name the program that is started, or be the statement that starts it or writes a file? The user is
// asked for each `what` once (the program, or the whole statement); `shown` is what the question shows.
bool mayBeValue(const QString& what, const QString& shown);

}   // namespace trust
