// What the user has chosen for printing, stored under Software\Zelkor Editor\Printer: the nine values of CWordWrap and further
// ones.
#pragma once

#include <QFont>
#include <QPageLayout>

#include "page/PrintPages.h"
#include "print/CWordWrap.h"

class CodeMax;
class VSPrinter;
class frmDocument;

struct PrintSettings {
  CWordWrap text;   // only its nine options and its colours are used
  QFont font;
  int columns = 1;   // side by side on a page
  QPageLayout layout;
  // For one run only, never stored.
  int firstPage = 1, lastPage = 0;   // from 1, inclusive; 0: to the end
  bool reviewSheet = false;          // one behind each text

  PrintSettings();               // the defaults
  static PrintSettings load();   // a missing or senseless value gives the default
  void save() const;
  void applyTo(VSPrinter& printer) const;
  void copyOptionsTo(CWordWrap& wrap) const;
};

// Replaces the variables of the command language in a header or footer part by part, so that a "|" in a value does not split it and
// no value is taken for a page field. "%f" becomes `fileDate`; "%d" and "%n" are replaced later for each page.
PrintEdge GenerateHandF(const QString& text, bool enabled, const QString& fileDate = {});

// Lays out one document: settings, comment delimiters of its language, header and footer. False: cancelled by goOn.
bool layOut(frmDocument& document, const PrintSettings& settings, CWordWrap& wrap, VSPrinter& printer,
            const std::function<bool(qint64 done, qint64 all)>& goOn = {});
// The same for a text without a document (the log).
bool layOut(CodeMax& cmx, const QString& title, const PrintSettings& settings, CWordWrap& wrap, VSPrinter& printer,
            const std::function<bool(qint64 done, qint64 all)>& goOn = {});
