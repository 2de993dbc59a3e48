// What the person has chosen for printing, kept under Software\Zelkor Editor\Printer: the nine values of CWordWrap and the rest beside them.
#pragma once

#include <QFont>
#include <QPageLayout>

#include "page/PrintPages.h"
#include "print/CWordWrap.h"

class CodeMax;
class VSPrinter;
class frmDocument;

struct PrintSettings {
  CWordWrap text;   // its nine options and its colours; the rest of it is not used here
  QFont font;
  int columns = 1;   // side by side on a page
  QPageLayout layout;
  // Of one run only, never kept.
  int firstPage = 1, lastPage = 0;   // from 1, both included; 0: to the end
  bool reviewSheet = false;          // one behind each text

  PrintSettings();               // the defaults
  static PrintSettings load();   // a value that is missing or makes no sense leaves the default
  void save() const;
  void applyTo(VSPrinter& printer) const;
  void copyOptionsTo(CWordWrap& wrap) const;
};

// Puts variables of the command language into a header or footer part by part, so that a "|" in a value splits nothing, and no value is
// taken for a field. "%f" becomes `fileDate`; "%d" and "%n" stay for the pages.
PrintEdge GenerateHandF(const QString& text, bool enabled, const QString& fileDate = {});

// One document laid out: settings, delimiters of its language, header and footer. False: ended by goOn.
bool layOut(frmDocument& document, const PrintSettings& settings, CWordWrap& wrap, VSPrinter& printer,
            const std::function<bool(qint64 done, qint64 all)>& goOn = {});
// The same for a text without a document (the log).
bool layOut(CodeMax& cmx, const QString& title, const PrintSettings& settings, CWordWrap& wrap, VSPrinter& printer,
            const std::function<bool(qint64 done, qint64 all)>& goOn = {});
