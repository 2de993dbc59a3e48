// Printing without a window: "--print-pdf OUT FILE..." with the options of the print options dialog.
#pragma once

#include <QString>
#include <QStringList>

struct PrintSettings;

struct PrintArguments {
  bool help = false;
  QString output;        // a PDF file, or a folder that gets one for each file
  QString definitions;   // language definitions other than those of the settings; empty: those
  QStringList files;
  QString error;   // not empty: nothing else counts
};

// arguments without the program's name. What is said of pages and text goes to *settings, which holds what was chosen last.
PrintArguments parsePrintArguments(const QStringList& arguments, PrintSettings* settings);
// Prints; the exit status: 0 done, 2 wrong use, or a file that could not be read or written. Needs an application object. The stored
// settings are read and never written.
int runPrintPdf(const QStringList& arguments);
