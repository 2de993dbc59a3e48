// The batch mode's part of the command line: what to run, over which files, and where the texts go.
#pragma once

#include <QStringList>

// Runs the batch mode with the program's arguments ("--batch" among them); the exit status. Needs an application object.
// Settings are read and never written.
int runBatch(const QStringList& arguments);
