// Finding in files from the command line, without a window: --find TEXT [OPTION...] [PATH...].
#pragma once

#include <QStringList>

// arguments without the program's name. Prints "path:line:column: text" for each line with a hit, sorted by path. 0: found, 1: not found, 2: trouble, which is told on
// standard error. Needs no application object.
int runFind(const QStringList& arguments);
