// Printing without a window: "--print-pdf OUT FILE..." with the options of the print options dialog.
#pragma once

#include <QString>
#include <QStringList>

struct PrintSettings;

struct PrintArguments {
  bool help = false;
  QString output;        // a PDF file, or a folder for one PDF file of each source
  QString definitions;   // another definition file; empty: that of the settings
  QStringList files;
  QString error;   // not empty: everything else is invalid
};

// arguments without the program's name. What is said of pages and text goes to *settings, which holds what was chosen last.
PrintArguments parsePrintArguments(const QStringList& arguments, PrintSettings* settings);
// Prints; returns the exit status: 0 success, 2 wrong usage or a file that could not be read or written. Needs an application
// object. The stored settings are read and never written.
int runPrintPdf(const QStringList& arguments);
