// The language manager of the process. frmRegistry owns it (ucCM1); tests and batch mode may set another one.
#pragma once

#include <QString>

class CodeMax;
class ucCM;

ucCM& languages();   // created empty on first use when none was set
// by the file name, and by the text where the name is not enough; 0: none
int languageOfFile(const QString& name, const CodeMax& cmx);
ucCM* setLanguages(ucCM* manager);   // not owned; null restores the process's own. Returns the old one
