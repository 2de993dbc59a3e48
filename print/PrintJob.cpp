#include "print/PrintJob.h"

#include <QFileInfo>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>

#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/LongWork.h"
#include "control/edit/TextModel.h"
#include "document/FileErrors.h"
#include "document/frmDocument.h"
#include "document/frmRegistry.h"
#include "page/PdfFile.h"
#include "text/file/FileIo.h"

namespace {
QString tr(const char* text) { return QCoreApplication::translate("PrintJob", text); }

// First and last page from 1, inclusive. A printer without a chosen range gives 0.
struct PageRange {
  int first, last;
  PageRange(const QPrinter& printer, const PrintDocument& document)
      : first(std::max(1, printer.fromPage())), last(static_cast<int>(document.pages.size())) {
    if (printer.toPage() > 0) last = std::min(last, printer.toPage());
  }
};
}   // namespace

bool printPages(const PrintDocument& document, QWidget* parent, const QString& folder) {
  if (QPrinterInfo::availablePrinterNames().isEmpty()) {
    const auto answer = MsgBox(tr("No printer is set up. Do you want to save the pages as a PDF file instead?"),
                               tr("Zelkor Printing"), Icon::exclamation, Buttons::yesNo);
    return answer == Answer::yes && savePdf(document, document.name, parent, folder);
  }
  QPrinter printer(QPrinter::HighResolution);
  printer.setPageLayout(document.layout);
  printer.setDocName(document.name);
  printer.setCreator(QLatin1String(kApplicationTitle));
  printer.setFullPage(true);
  {
    QPrintDialog dialog(&printer, parent);
    dialog.setOption(QAbstractPrintDialog::PrintPageRange);
    dialog.setMinMax(1, std::max(1, static_cast<int>(document.pages.size())));
    const ModalGuard modal;
    if (dialog.exec() != QDialog::Accepted) return false;
  }
  // The dialog also offers a file. Qt would truncate an existing one first.
  const PageRange pages(printer, document);
  if (const QString file = printer.outputFileName(); !file.isEmpty()) return savePages(document, pages.first, pages.last, file);
  return sendPages(printer, document, parent);
}

bool sendPages(QPrinter& printer, const PrintDocument& document, QWidget* parent) {
  const auto [first, last] = PageRange(printer, document);
  QPainter painter;
  const auto failed = [&] {
    MsgBox(tr("The printer \"%1\" could not print the pages.").arg(printer.printerName()), tr("Zelkor Printing"));
    return false;
  };
  if (!painter.begin(&printer)) return failed();
  LongWork::Loop loop(parent, tr("Printing..."));
  const bool backwards = printer.pageOrder() == QPrinter::LastPageFirst;
  const int copies = printer.supportsMultipleCopies() ? 1 : printer.copyCount();
  bool begun = false;
  for (int copy = 0; copy < copies; ++copy) {
    for (int i = first; i <= last; ++i) {
      if (!loop.goesOn((i - first) * 100 / (last - first + 1))) {
        printer.abort();
        return false;
      }
      if (begun && !printer.newPage()) return failed();
      begun = true;
      painter.save();
      painter.scale(printer.logicalDpiX() / 72.0, printer.logicalDpiY() / 72.0);
      drawPage(painter, document, (backwards ? last - (i - first) : i) - 1);
      painter.restore();
      if (printer.printerState() == QPrinter::Error) return failed();
    }
  }
  return painter.end() || failed();
}

bool savePdf(const PrintDocument& document, const QString& proposedName, QWidget*, const QString& folder) {
  int filterIndex = 1;
  const QString path =
      frmRegistry::instance().stdSaveFile(tr("Save PDF File"), QStringLiteral("PDF (*.pdf)|*.pdf|(*.*)|*.*|"), filterIndex, folder,
                                          QFileInfo(proposedName).completeBaseName() + QStringLiteral(".pdf"));
  if (path.isEmpty()) return false;
  return savePages(document, 1, static_cast<int>(document.pages.size()), path);
}

PrintDocument pagesOf(const PrintDocument& document, int first, int last) {
  PrintDocument chosen = document;
  const int count = static_cast<int>(document.pages.size());
  const int begin = std::clamp(first - 1, 0, count), end = std::clamp(last == 0 ? count : last, begin, count);
  chosen.pages.assign(document.pages.begin() + begin, document.pages.begin() + end);
  chosen.firstPage = document.firstPage + begin;
  chosen.pageTotal = document.pageTotal > 0 ? document.pageTotal : count;
  return chosen;
}

bool savePages(const PrintDocument& document, int first, int last, const QString& path) {
  const PrintDocument chosen = pagesOf(document, first, last);
  const auto count = std::max<std::size_t>(1, chosen.pages.size());
  LongWork::Loop loop(nullptr, tr("Making the PDF file..."));
  const QByteArray pdf = makePdf({&chosen}, document.name, [&](int page) {
    return loop.goesOn(static_cast<int>(static_cast<std::size_t>(page) * 100 / count));
  });
  if (pdf.isNull()) return false;
  const text::SaveResult saved =
      text::saveBytes(fromQString(path), std::string_view(pdf.constData(), static_cast<std::size_t>(pdf.size())));
  if (saved.ok()) return true;
  tellSaveError(path, toQString(saved.error));
  return false;
}

namespace {
bool askForSelection(const PrintSource& source) {
  CWordWrap wrap;
  wrap.cmx = source.control();
  wrap.PrintSelectedText();
  return wrap.printSelection();
}
}   // namespace

void PrintPreview(const PrintSource& source, QWidget* parent) {
  const bool selection = askForSelection(source);
  frmPreview preview(source, selection, parent);
  preview.exec();
  if (preview.lineToShow() >= 0) {
    source.control()->SelectLine(preview.lineToShow());
    source.control()->setFocus();
  }
}

void PrintText(const PrintSource& source, QWidget* parent) {
  CWordWrap wrap;
  wrap.setPrintSelection(askForSelection(source));
  VSPrinter printer;
  const PrintSettings settings = PrintSettings::load();
  bool done = false;
  {
    LongWork::Loop loop(parent, tr("Laying out pages..."));
    const auto goOn = [&](qint64 lines, qint64 all) {
      return loop.goesOn(static_cast<int>(lines * 100 / std::max<qint64>(1, all)));
    };
    done = source.document ? layOut(*source.document, settings, wrap, printer, goOn)
                           : layOut(*source.cmx, source.title, settings, wrap, printer, goOn);
  }
  if (done && printPages(printer.document(), parent, source.folder())) SetStatusText(tr("Printing Complete"));
}
