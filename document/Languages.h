// The one language manager of the process, as documents and commands reach it. frmRegistry carries it (ucCM1); tests and
// batch mode may set their own.
#pragma once

class ucCM;

ucCM& languages();                  // made empty on first use when none was set
ucCM* setLanguages(ucCM* manager);  // not owned; null gives back the process's own. Returns what was in force
