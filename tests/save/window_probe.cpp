// The saves that go through windows and managers, in a process of their own, to be traced and killed:
//   window_probe definition|log|pdf TARGET NEW-FILE
// definition: the languages of NEW-FILE are written to TARGET; log: its text; pdf: pages of its text. Prints the outcome
// and what the user was told; exits with 1 when the save was refused.
#include <sys/stat.h>

#include <QApplication>

#include <cstdio>

#include "base/dialog/Dialogs.h"
#include "control/edit/TextModel.h"
#include "document/frmLog.h"
#include "language/ucCM.h"
#include "page/VSPrinter.h"
#include "print/CWordWrap.h"
#include "print/PrintJob.h"
#include "settings/modRegistry.h"
#include "text/file/FileIo.h"

namespace {

// No to whatever is asked; what was said is printed.
class Printed : public Dialogs {
 public:
  Answer messageBox(const QString& text, const QString&, Icon, Buttons buttons) override {
    std::printf("%s\n", qPrintable(text));
    return declined(buttons);
  }
  std::optional<QString> inputBox(const QString&, const QString&, const QString&) override { return std::nullopt; }
  QStringList openFile(FileDialogRequest&) override { return {}; }
  QString saveFile(FileDialogRequest&) override { return {}; }
  bool openUrl(const QString&) override { return false; }
};

template <class Save>
bool marked(Save save) {
  struct stat mark {};
  ::stat("/the-save-begins-here", &mark);   // seen in the trace
  const bool saved = save();
  ::stat("/the-save-ends-here", &mark);
  return saved;
}

}   // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  QApplication application(argc, argv);
  modRegistry::SetReadOnly(true);
  Printed printed;
  setDialogs(&printed);
  const QString kind = QString::fromLocal8Bit(argv[1]), target = toQString(argv[2]);
  bool saved = false;
  if (kind == QLatin1String("definition")) {
    ucCM fresh, manager;
    fresh.setIniFile(toQString(argv[3]));
    fresh.Init();
    manager.setIniFile(target);
    if (text::fileExists(argv[2])) manager.Init();
    manager.setLanguages(fresh.Languages());
    saved = marked([&] { return manager.SaveIniFile(); });
  } else {
    std::string error;
    const QString content = toQString(text::readBytes(argv[3], &error));
    if (!error.empty()) return 2;
    if (kind == QLatin1String("log")) {
      frmLog log;
      log.AppendLog(content);
      saved = marked([&] { return log.SaveDocumment(target); });
    } else {
      CodeMax control;
      control.setText(content);
      CWordWrap wrap;
      VSPrinter printer;
      if (!layOut(control, QStringLiteral("title"), PrintSettings(), wrap, printer)) return 2;
      const int pages = static_cast<int>(printer.document().pages.size());
      savePages(printer.document(), 1, 1, QString::fromLocal8Bit(argv[3]) + QStringLiteral(".pdf"));   // fonts are read once
      saved = marked([&] { return savePages(printer.document(), 1, pages, target); });
    }
  }
  setDialogs(nullptr);
  std::printf("%s\n", saved ? "saved" : "refused");
  return saved ? 0 : 1;
}
