// The program's command line: what is asked for, and which files. Looks at no file except to tell a name that ends in
// ":12" from a line number. A name is taken byte by byte (FileNames.h).
#pragma once

#include <QString>
#include <QStringList>

// A file with the place to go to; line and column from 1, 0 = not said.
struct FilePlace {
  QString path;
  qint64 line = 0, column = 0;
  bool operator==(const FilePlace&) const = default;
};

// "a.v:12:3" with the places taken off unless a file of that very name exists. Works on full paths or in the current folder.
FilePlace placeIn(const QString& argument);

struct Arguments {
  bool help = false, version = false, newInstance = false, wait = false, readOnly = false, standardInput = false;
  bool batch = false;       // the rest is the batch mode's affair
  bool printPdf = false;    // the rest is the affair of printing without a window
  QList<FilePlace> files;   // in order, paths absolute against the folder that was given
  QString error;            // for standard error; not empty: nothing else counts
};

// arguments without the program's name. folder: where the names were typed.
Arguments parseArguments(const QStringList& arguments, const QString& folder);
QString argumentsHelp();   // of --help, lines of at most 80 characters
