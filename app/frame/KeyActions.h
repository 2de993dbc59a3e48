// What keys can be bound to besides the commands of the edit control: the frame's own commands, and by their names the macros
// of the Custom menu and the templates. A macro's key runs the macro of that name in the language of the active document.
#pragma once

#include <QList>
#include <QString>

#include "control/keys/KeyMap.h"

class frmMain;

namespace keyactions {
QList<NamedAction> all();                      // of the frame's table and the languages as they are now
QString ofCommand(const char* frameCommand);   // the name that stands in the settings
bool isCommand(const QString& name);           // one of ofCommand(): its action stands in a menu
QString ofMacro(const QString& macro);
void run(frmMain& frame, const QString& name);   // says so in the status bar where there is no such macro or template

// Puts prompts and variables of the command language into a template's text.
void expandTemplateText(QString& text);
}   // namespace keyactions
