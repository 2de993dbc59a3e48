#include "base/dialog/Dialogs.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QScreen>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

#include "base/Program.h"
#include "base/Strings.h"
#include "base/Workspace.h"
#include "base/dialog/FileFilter.h"
#include "base/dialog/OddNames.h"

namespace {

constexpr int kMostLines = 1000, kMostPromptLines = 40, kLongestWord = 60;

// Keeps the line breaks of the program's own texts, escapes all other invisible characters and lets long words (paths) wrap.
QString boxText(const QString& text, int mostLines) {
  QStringList lines = splitCrLf(toCrLf(text));
  if (lines.size() > mostLines) lines = lines.first(mostLines) << QString(QChar(0x2026));
  for (QString& line : lines) {
    line = plainForDisplay(line);
    int run = 0;
    for (qsizetype i = 0; i < line.size(); ++i) {
      run = line[i].isSpace() ? 0 : run + 1;
      if (run >= kLongestWord && !line[i].isHighSurrogate()) {
        line.insert(++i, QChar(0x200B));   // a place to wrap, of no width
        run = 0;
      }
    }
  }
  return lines.join(u'\n');
}

// If the text is too high for the screen, the whole text is behind a button, in a scrolling field. A message box lays itself out
// when it is shown; before that its text is measured at the width at which boxes wrap.
void shorten(QMessageBox& box) {
  const QString all = box.text();
  const QSize screen = box.screen()->availableSize();
  const QRect room(0, 0, std::min(360, screen.width() / 2), screen.height() * 6 / 10);
  QString shown = all;
  const auto fits = [&] { return box.fontMetrics().boundingRect(room, Qt::TextWordWrap, shown).height() <= room.height(); };
  for (qsizetype most = all.size() / 2; most > 0 && !fits(); most /= 2) {
    const qsizetype end = all.lastIndexOf(u'\n', most);
    shown = all.first(end > 0 ? end : most) + u'\n' + QChar(0x2026);
  }
  if (shown == all) return;
  box.setText(shown);
  box.setDetailedText(all);
}

QMessageBox::StandardButtons offered(Buttons buttons) {
  switch (buttons) {
    case Buttons::ok: break;
    case Buttons::okCancel: return QMessageBox::Ok | QMessageBox::Cancel;
    case Buttons::yesNo: return QMessageBox::Yes | QMessageBox::No;
    case Buttons::yesNoCancel: return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

QMessageBox::Icon shown(Icon icon) {
  switch (icon) {
    case Icon::none: break;
    case Icon::information: return QMessageBox::Information;
    case Icon::exclamation: return QMessageBox::Warning;
    case Icon::question: return QMessageBox::Question;
    case Icon::critical: return QMessageBox::Critical;
  }
  return QMessageBox::NoIcon;
}

class DesktopDialogs : public Dialogs {
 public:
  Answer messageBox(const QString& text, const QString& title, Icon icon, Buttons buttons) override {
    const ModalGuard guard;
    QMessageBox box(shown(icon), plainForDisplay(title, 200), boxText(text, kMostLines), offered(buttons),
                    QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText);
    shorten(box);
    switch (box.exec()) {
      case QMessageBox::Yes: return Answer::yes;
      case QMessageBox::No: return Answer::no;
      case QMessageBox::Ok: return Answer::ok;
      case QMessageBox::Cancel: return Answer::cancel;
      default: return declined(buttons);
    }
  }

  std::optional<QString> inputBox(const QString& prompt, const QString& title, const QString& initial) override {
    const ModalGuard guard;
    QDialog box(QApplication::activeWindow());
    box.setWindowTitle(plainForDisplay(title, 200));
    auto* layout = new QVBoxLayout(&box);
    auto* label = new QLabel(&box);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setText(boxText(prompt, kMostPromptLines));
    auto* line = new QLineEdit(initial, &box);
    line->setAccessibleName(label->text());
    line->setMinimumWidth(box.fontMetrics().averageCharWidth() * 50);
    line->selectAll();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &box);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &box, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &box, &QDialog::reject);
    layout->addWidget(label);
    layout->addWidget(line);
    layout->addWidget(buttons);
    line->setFocus();
    if (box.exec() != QDialog::Accepted) return std::nullopt;
    return line->text();
  }

  QStringList openFile(FileDialogRequest& request) override {
    QFileDialog dialog(QApplication::activeWindow());
    prepare(dialog, request);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(request.filter == kFoldersOnly ? QFileDialog::Directory
                       : request.multiple             ? QFileDialog::ExistingFiles
                                                      : QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::ShowDirsOnly, request.filter == kFoldersOnly);
    return run(dialog, request);
  }

  QString saveFile(FileDialogRequest& request) override {
    QFileDialog dialog(QApplication::activeWindow());
    prepare(dialog, request);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);   // Qt's question would interpret a file name as markup
    for (;;) {
      const QString path = run(dialog, request).value(0);
      if (path.isEmpty() || !(request.disk ? request.disk->exists(path) : QFileInfo::exists(path))) return path;
      const QString question =
          QCoreApplication::translate("Dialogs", "%1 already exists.\nDo you want to replace it?").arg(plainForDisplay(path));
      if (messageBox(question, dialog.windowTitle(), Icon::exclamation, Buttons::yesNo) == Answer::yes) return path;
    }
  }

  bool openUrl(const QString& url) override {
    if (QFileInfo::exists(url)) return QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(url).absoluteFilePath()));
    const QUrl parsed(url, QUrl::StrictMode);
    static const QStringList known{QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("file")};
    return parsed.isValid() && known.contains(parsed.scheme()) && QDesktopServices::openUrl(parsed);
  }

 private:
  static void prepare(QFileDialog& dialog, const FileDialogRequest& request) {
    if (!request.title.isEmpty()) dialog.setWindowTitle(plainForDisplay(request.title, 200));
    const QStringList filters = request.filter == kFoldersOnly ? QStringList() : dialogFilters(request.filter);
    if (!filters.isEmpty()) {
      dialog.setNameFilters(filters);
      dialog.selectNameFilter(filters.value(request.filterIndex - 1, filters.first()));
    }
    if (!request.folder.isEmpty()) dialog.setDirectory(plainPart(request.folder));
    if (!request.name.isEmpty()) dialog.selectFile(request.name);
    if (!request.defaultExtension.isEmpty()) dialog.setDefaultSuffix(request.defaultExtension);
  }

  static QStringList run(QFileDialog& dialog, FileDialogRequest& request) {
    const ModalGuard guard;
    std::unique_ptr<OddNames> others;
    if (request.disk) others = std::make_unique<OddNames>(dialog, *request.disk, request.folder);
    if (dialog.exec() != QDialog::Accepted) return {};
    if (others && !others->chosen().isEmpty()) return {others->chosen()};
    const qsizetype entry = dialogFilters(request.filter).indexOf(dialog.selectedNameFilter());
    if (entry >= 0) request.filterIndex = static_cast<int>(entry) + 1;
    return dialog.selectedFiles();
  }
};

}   // namespace

Answer declined(Buttons buttons) {
  switch (buttons) {
    case Buttons::ok: return Answer::ok;
    case Buttons::yesNo: return Answer::no;
    default: return Answer::cancel;
  }
}

namespace {
struct Boxes {
  DesktopDialogs desktop;
  Dialogs* replacement = nullptr;
  int modalDepth = 0;
};
Boxes& boxes() { return Workspace::current().part<Boxes>(); }
}   // namespace

Dialogs& dialogs() { return boxes().replacement ? *boxes().replacement : boxes().desktop; }
Dialogs* setDialogs(Dialogs* replacement) { return std::exchange(boxes().replacement, replacement); }

bool isDialogUp() { return boxes().modalDepth > 0; }
ModalGuard::ModalGuard() { ++boxes().modalDepth; }
ModalGuard::~ModalGuard() { --boxes().modalDepth; }

Answer MsgBox(const QString& text, const QString& title, Icon icon, Buttons buttons) {
  return dialogs().messageBox(text, title.isEmpty() ? QString::fromLatin1(kApplicationTitle) : title, icon, buttons);
}

std::optional<QString> InputBox(const QString& prompt, const QString& title, const QString& initial) {
  return dialogs().inputBox(prompt, title.isEmpty() ? QString::fromLatin1(kApplicationTitle) : title, initial);
}
