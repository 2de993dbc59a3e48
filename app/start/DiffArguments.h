// Comparing and merging from the command line: --diff LEFT RIGHT [BASE --output FILE]. A difference and merge tool of version control:
// the window that compares is all that is shown, and the program ends when it is closed.
#pragma once

#include <QString>
#include <QStringList>

class frmMain;

struct DiffTask {
  QStringList files;   // left, right and, for merging, the base; full paths
  QString output;      // of merging; else empty
  bool help = false;
  QString error;   // for standard error; if not empty, the rest is invalid
};

// arguments without the program's name. folder: where the names were typed.
DiffTask parseDiffArguments(const QStringList& arguments, const QString& folder);
QString diffHelp();
// A file that cannot be compared, for standard error; empty: all can.
QString diffTrouble(const DiffTask& task);
// Returns when the window has been closed. 0: in order; 1: merging, and the result was not saved or has conflicts; 2: trouble, which
// the user has been told.
int runDiff(frmMain& frame, const DiffTask& task);
