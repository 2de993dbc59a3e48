// Hands the languages to the edit control's table of languages.
//
// The names that were handed over are kept here: the definitions editor renames and deletes languages in place, so the
// collection cannot tell later which names have to go.
#pragma once

#include <QStringList>

#include "control/code/LanguageTable.h"

class clsLang;
class colLangs;

// A language in the form that the edit control takes: entries parted by LF. Extensions, help and the like stay here.
CmLanguage handedOver(const clsLang& language);

// Registers every language of the collection under its name, in order. The first call in a process removes the control's
// built-in languages before.
void AddLanguages(const colLangs& languages);
// Removes what AddLanguages registered.
void RemoveLanguages();

const QStringList& RegisteredLanguages();
// How many languages count as registered; lowered when a language is taken out by pasting another over it.
int RegisteredLanguageCount();
void LowerRegisteredLanguageCount();
