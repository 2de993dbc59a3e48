// Printing documents and the log.
#include <QCoreApplication>

#include "app/commands/Groups.h"
#include "app/frame/frmMain.h"
#include "base/dialog/Dialogs.h"
#include "document/frmDocument.h"
#include "document/frmLog.h"
#include "print/PrintJob.h"
#include "print/frmPrintOptions.h"

namespace {
PrintSource activeText(frmMain& f) { return {f.activeDocument(), nullptr, {}}; }

void printOptions(frmMain& f) {
  const ModalGuard modal;
  frmPrintOptions(PrintSettings::load(), &f).exec();
}
}   // namespace

std::span<const FrameCommand> printCommands() {
  // clang-format off
  static const FrameCommand rows[] = {
      {.name = "mnuFilePreview", .menu = "mnuFile", .place = 300, .caption = QT_TRANSLATE_NOOP("frmMain", "Print Pre&view..."),
       .icon = "document-print-preview", .tip = QT_TRANSLATE_NOOP("frmMain", "Show the document as it will be printed"),
       .needs = kDocument, .run = [](frmMain& f) { PrintPreview(activeText(f), &f); }},
      {.name = "mnuFilePrint", .menu = "mnuFile", .place = 310, .caption = QT_TRANSLATE_NOOP("frmMain", "&Print..."),
       .keys = "Ctrl+P", .icon = "document-print", .tip = QT_TRANSLATE_NOOP("frmMain", "Print the document"), .needs = kDocument,
       .run = [](frmMain& f) { PrintText(activeText(f), &f); }, .tool = "Print", .toolPlace = 200},
      {.name = "mnuFilePrintOptions", .menu = "mnuFile", .place = 320,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Print Op&tions..."),
       .tip = QT_TRANSLATE_NOOP("frmMain", "Header, footer, line numbers, emphasis, paper"), .run = printOptions},
      {.name = "mnuFilePrintLog", .menu = "mnuFile", .place = 330, .caption = QT_TRANSLATE_NOOP("frmMain", "Print Lo&g..."),
       .tip = QT_TRANSLATE_NOOP("frmMain", "Show the log as it will be printed"),
       .run = [](frmMain& f) { PrintPreview({nullptr, f.log()->cmx, QCoreApplication::translate("frmMain", "Log")}, &f); }},
  };
  // clang-format on
  return rows;
}
