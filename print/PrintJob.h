// The ways in to printing and the ways out to a printer and to a PDF file.
#pragma once

#include "page/PrintPages.h"
#include "print/frmPreview.h"

class QPrinter;

// The ways in: each asks about a selection first. Print shows the desktop's print dialog.
void PrintPreview(const PrintSource& source, QWidget* parent);
void PrintText(const PrintSource& source, QWidget* parent);

// The ways out; false: cancelled or failed, of which the person has been told.
// `folder` is where the dialog for a PDF file begins; empty: where it does else.
bool printPages(const PrintDocument& document, QWidget* parent,
                const QString& folder = {});   // on a printer that the desktop's dialog chooses
bool sendPages(QPrinter& printer, const PrintDocument& document, QWidget* parent);   // its page range, order and copies
bool savePdf(const PrintDocument& document, const QString& proposedName, QWidget* parent,
             const QString& folder = {});                                                  // chosen in a dialog
bool savePages(const PrintDocument& document, int first, int last, const QString& path);   // pages from 1, both included
PrintDocument pagesOf(const PrintDocument& document, int first,
                      int last);   // these pages under their own numbers; last 0: to the end
