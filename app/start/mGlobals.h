// The start of the program, and functions that belong to no window: start-up in its fixed order, the hand-off between copies, the
// languages of the edit control, help and web pages.
#pragma once

#include <QString>
#include <memory>

#include "handoff/Msghook.h"

class colLangs;
class frmDocument;
class frmMain;
class QWidget;

// The whole program; returns the exit status. 0 success, 1 refused or busy, 2 wrong usage.
int Main(int argc, char** argv);

const std::shared_ptr<colLangs>& gLangs();   // the current set of languages
const QString& gWebHome();                   // base address of the web pages, from the settings; may be empty
void setWebHome(const QString& address);

// Opens the file that another program names in an unparsed command line: trimmed, without double quotes, one name, with
// ":LINE:COLUMN" behind it unless a file of that very name exists. Null: nothing was opened or activated.
frmDocument* OpenCommandLine(frmMain& frame, const QString& text);

void useDefinitionFileOfSettings();   // or of the program's config folder if the settings name none
void InitLanguages();
// For a run without windows: reads the named definition file, or that of the settings if none is named. Empty: success; else why
// the named file cannot be read.
QString readDefinitions(const QString& named);
// After a change of the definitions: registers the languages again and chooses the language of each open document by its extension.
void ReloadLanguages();

void openHandbook(QWidget& beside);
void openLanguageHelp(const frmDocument* about);   // null: the contents; else at the word of the caret
void openWebPage(const QString& page);             // below gWebHome
