// The start of the program and the routines that belong to no window: start-up in its fixed order, the hand-off between
// copies, the languages of the edit control, help and web pages.
#pragma once

#include <QString>
#include <memory>

#include "handoff/Msghook.h"

class colLangs;
class frmDocument;
class frmMain;
class QWidget;

// The whole program; the process's exit status. 0 done, 1 refused or busy, 2 usage.
int Main(int argc, char** argv);

const std::shared_ptr<colLangs>& gLangs();   // the current set of languages
const QString& gWebHome();                   // base address of the web pages, from the settings; empty: there are none
void setWebHome(const QString& address);

// Opens the file that another program names in a command line that no shell has taken apart: trimmed, without its double quotes,
// one name, with ":LINE:COLUMN" behind it if there is no file of that very name. Null: nothing was opened or brought forward.
frmDocument* OpenCommandLine(frmMain& frame, const QString& text);

void useDefinitionFileOfSettings();   // or of the program's config folder when there is none
void InitLanguages();
// For a run without windows: the definitions of the file named, or those of the settings where none is. Empty: done, else why
// the named ones cannot be read.
QString readDefinitions(const QString& named);
// After the definitions changed: registers them anew and binds every open document by its extension.
void ReloadLanguages();

void openHandbook(QWidget& beside);
void openLanguageHelp(const frmDocument* about);   // null: its contents; else at the word of the caret
void openWebPage(const QString& page);             // below gWebHome
