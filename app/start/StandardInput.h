// Text that is piped into the program, on its way to the copy that opens it (frmMain::takeIn): a file in the user's state folder, readable
// by the user alone. Its sender locks it as long as it lives, so the next start knows what a sender that has gone left there.
#pragma once

#include <QString>

#include "text/file/FileCalls.h"

class frmMain;

struct StandardInput {
  QString path;   // empty: `error` says why
  QString error;
  text::files::Descriptor lock;
};

StandardInput spoolStandardInput();         // reads it to its end
bool isSpooledInput(const QString& path);   // by its name
void takeInLeftInput(frmMain& frame);       // opens what senders left that have gone
