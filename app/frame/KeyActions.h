// The actions, besides the edit commands, that keys can be bound to: the commands of the frame and, by name, the macros of the
// Custom menu and the templates. The key of a macro runs the macro of that name in the language of the active document.
#pragma once

#include <QList>
#include <QString>

#include "control/keys/KeyMap.h"

class frmMain;

namespace keyactions {
QList<NamedAction> all();                      // of the frame's table and the current languages
QString ofCommand(const char* frameCommand);   // the name in the settings
bool isCommand(const QString& name);           // made by ofCommand(): its action is in a menu
QString ofMacro(const QString& macro);
void run(frmMain& frame, const QString& name);   // shows in the status bar if there is no such macro or template

// Replaces prompts and variables of the command language in a template's text.
void expandTemplateText(QString& text);
}   // namespace keyactions
