// The program's command line: the requested actions and files. It only looks at files to distinguish a name that ends in ":12" from
// a line number. A name is taken byte by byte (FileNames.h).
#pragma once

#include <QString>
#include <QStringList>

// A file with the position to go to; line and column from 1, 0 = not given.
struct FilePlace {
  QString path;
  qint64 line = 0, column = 0;
  bool operator==(const FilePlace&) const = default;
};

// Splits "a.v:12:3" into name and position, unless a file of that very name exists. For full paths or in the current folder.
FilePlace placeIn(const QString& argument);

struct Arguments {
  bool help = false, version = false, newInstance = false, wait = false, readOnly = false, standardInput = false;
  bool noSession = false, sessions = false;
  QString session;          // name; empty: none was given
  bool batch = false;       // batch mode reads the rest
  bool find = false;        // finding in files without a window reads the rest
  bool diff = false;        // comparing two files reads the rest
  bool printPdf = false;    // printing without a window reads the rest
  QList<FilePlace> files;   // in order; paths absolute relative to the given folder
  QString error;            // for standard error; if not empty, the rest is invalid
};

// arguments without the program name. folder: where the names were typed.
Arguments parseArguments(const QStringList& arguments, const QString& folder);
QString argumentsHelp();   // of --help, lines of at most 80 characters
