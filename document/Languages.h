// The one language manager of the process, as documents and commands reach it. frmRegistry carries it (ucCM1); tests and
// batch mode may set their own.
#pragma once

#include <QString>

class CodeMax;
class ucCM;

ucCM& languages();                                             // made empty on first use when none was set
int languageOfFile(const QString& name, const CodeMax& cmx);   // by the name, and by the text where that is not enough; 0: none
ucCM* setLanguages(ucCM* manager);   // not owned; null gives back the process's own. Returns what was in force
