// The command line of batch mode: what to run, on which files, and where the texts are written.
#pragma once

#include <QStringList>

// Runs batch mode with the program's arguments ("--batch" among them); returns the exit status. Needs an application object.
// Settings are read and never written.
int runBatch(const QStringList& arguments);
