// The entry points of printing, and the output to a printer or a PDF file.
#pragma once

#include "page/PrintPages.h"
#include "print/frmPreview.h"

class QPrinter;

// Entry points. Each first asks whether to print the selection. Print shows the desktop's print dialog.
void PrintPreview(const PrintSource& source, QWidget* parent);
void PrintText(const PrintSource& source, QWidget* parent);

// Output. False: cancelled, or failed and the user has been told. `folder` is the start folder of the dialog for a PDF file; empty:
// the usual one.
bool printPages(const PrintDocument& document, QWidget* parent,
                const QString& folder = {});   // on a printer that the desktop's dialog chooses
bool sendPages(QPrinter& printer, const PrintDocument& document, QWidget* parent);   // uses its page range, order and copies
bool savePdf(const PrintDocument& document, const QString& proposedName, QWidget* parent,
             const QString& folder = {});                                                  // chosen in a dialog
bool savePages(const PrintDocument& document, int first, int last, const QString& path);   // pages from 1, inclusive
PrintDocument pagesOf(const PrintDocument& document, int first,
                      int last);   // these pages with their own numbers; last 0: to the end
