// Registers the languages with the edit control.
//
// The registered names are kept here: the definitions editor renames and deletes languages in place, so the collection does not
// know them any more when they are unregistered.
#pragma once

#include <QStringList>

#include "control/code/LanguageTable.h"

class clsLang;
class colLangs;

// A language as the edit control takes it: entries separated by LF. Extensions, help file and the like are not part of it.
CmLanguage handedOver(const clsLang& language);

// Registers every language of the collection under its name, in order. The first call in a process first removes the control's
// built-in languages.
void AddLanguages(const colLangs& languages);
// Unregisters what AddLanguages registered.
void RemoveLanguages();

// The number of registered languages. It is lowered when pasting replaces a language.
int RegisteredLanguageCount();
void LowerRegisteredLanguageCount();
