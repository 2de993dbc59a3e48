// Text piped into the program, on its way to the copy that opens it (frmMain::takeIn): a file in the user's state folder, readable
// by the user only. The sender keeps it locked while it lives, so that the next start recognises files of dead senders.
#pragma once

#include <QString>

#include "text/file/FileCalls.h"

class frmMain;

struct StandardInput {
  QString path;   // empty: `error` gives the reason
  QString error;
  text::files::Descriptor lock;
};

StandardInput spoolStandardInput();         // reads it to its end
bool isSpooledInput(const QString& path);   // by its name
void takeInLeftInput(frmMain& frame);       // opens files of dead senders
