#include "script/Batch.h"

#include <QCoreApplication>
#include <QDir>
#include <QSet>
#include <memory>
#include <set>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "document/Frame.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "document/frmLog.h"
#include "language/ucCM.h"
#include "script/mCMXParser.h"
#include "settings/modRegistry.h"
#include "text/file/FileIo.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int kStandardInput = 0, kStandardOutput = 1, kStandardError = 2;

QString tr(const char* text) { return QCoreApplication::translate("Batch", text); }

void writeTo(int channel, const QString& text) {
#ifdef _WIN32
  const std::string bytes = fromQString(text);   // the channel does not convert CR LF
#else
  QString lines = text;
  lines.remove(u'\r');
  const std::string bytes = fromQString(lines);
#endif
  for (std::size_t done = 0; done < bytes.size();) {
    const std::int64_t count = text::fileSystem().write(channel, bytes.data() + done, bytes.size() - done);
    if (count < 0 && count != -EINTR) return;   // the reader has closed the pipe
    if (count > 0) done += std::size_t(count);
  }
}

bool isTerminal(int channel) {
#ifdef _WIN32
  return _isatty(channel);
#else
  return ::isatty(channel);
#endif
}

// Prints boxes on standard error and answers each so that nothing is changed.
class BatchDialogs : public Dialogs {
 public:
  QString about;   // the current one of several files; empty for a single file

  Answer messageBox(const QString& text, const QString& title, Icon, Buttons buttons) override {
    QString line = text + u"\r\n"_s;
    if (!title.isEmpty() && title != QLatin1String(kApplicationTitle)) line.prepend(plainForDisplay(title) + u": "_s);
    if (!about.isEmpty()) line.prepend(about + u": "_s);
    writeTo(kStandardError, line);
    return buttons == Buttons::ok ? Answer::ok : buttons == Buttons::yesNo ? Answer::no : Answer::cancel;
  }

  std::optional<QString> inputBox(const QString& prompt, const QString&, const QString&) override {
    if (isTerminal(kStandardInput)) writeTo(kStandardError, prompt + u' ');
    std::string line;
    for (char c = 0; text::fileSystem().read(kStandardInput, &c, 1) == 1 && c != '\n';) line += c;
    if (line.ends_with('\r')) line.pop_back();
    return toQString(line);
  }

  QStringList openFile(FileDialogRequest&) override { return {}; }
  QString saveFile(FileDialogRequest&) override { return {}; }
  bool openUrl(const QString&) override { return false; }
};

// Files by name and by identity.
struct Files {
  QSet<QString> names;
  std::set<FileId> ids;

  void add(const QString& path) {
    names.insert(fullPath(path));
    if (const auto id = fileId(path)) ids.insert(*id);
  }
  bool holdsFileOf(const QString& path) const {
    const auto id = fileId(path);
    return id && ids.contains(*id);
  }
};

class BatchFrame : public Frame {
 public:
  const Files* inUse = nullptr;   // what the whole batch reads and has written
  frmDocument* document = nullptr;
  QString target;   // where its text goes
  QString about;    // the current one of several files; empty for a single file
  std::unique_ptr<frmLog> logWindow;

  // Each document has its own log, which starts empty.
  void take(frmDocument* next) {
    document = next;
    target = next ? next->CurrentFileName() : QString();
    logWindow = std::make_unique<frmLog>();
    QObject::connect(logWindow.get(), &frmLog::appended, [](const QString& text) { writeTo(kStandardOutput, text); });
  }

  frmDocument* activeDocument() override { return document; }
  QList<frmDocument*> documents() override { return document ? QList{document} : QList<frmDocument*>(); }
  void activate(frmDocument*) override {}
  void setPanel(int, const QString&) override {}
  void setUnixPanel(bool, bool) override {}
  void setTemplatePanel(bool) override {}
  void refreshToolbar() override {}
  void refreshWindowMenu() override {}
  void setUndoRedo(bool, bool) override {}
  bool isMinimised() override { return true; }   // nothing watches the disk
  bool isInUse(const QString& path) override {
    return Frame::isInUse(path) || path == fullPath(target) || (inUse && (inUse->names.contains(path) || inUse->holdsFileOf(path)));
  }
  bool saveActive() override { return document && document->SaveDocumment(target); }
  void documentClosing(frmDocument*) override {}
  void rememberDocumentState(int) override {}
  bool isTemplateAtCaret(bool) override { return false; }
  void showEditPopup(const QPoint&) override {}
  frmLog* log() override { return logWindow.get(); }
  void showLog() override {}
  frmDocument* openFile(const QString&) override { return nullptr; }
  void showMacro(int, int, const QString&) override {}
  QString reportsAbout() override { return about; }
};

int runOn(frmDocument& document, const BatchOptions& options) {
  const mCMXParser::Outcome outcome = mCMXParser::Run(options.language, options.macro, options.commands,
                                                      {.interactive = false, .allowPrograms = options.allowPrograms});
  int status = outcome.ending == mCMXParser::Ending::done      ? batch::kDone
               : outcome.ending == mCMXParser::Ending::invalid ? batch::kInvalidCommand
                                                               : batch::kFailed;
  if (outcome.ending == mCMXParser::Ending::stopped && !outcome.text.isEmpty())
    MsgBox(tr("Stopped in line %1: %2").arg(outcome.line).arg(outcome.text));
  const bool wanted = !options.outputFolder.isEmpty() || (options.save && document.cmx->Modified());
  if (status == batch::kDone && wanted && !frame()->saveActive()) status = batch::kFailed;
  return status;
}

int workOn(BatchFrame& own, const QString& path, const std::function<int(frmDocument&)>& work) {
  frmDocument document;
  bool loaded = false;
  document.LoadDocument(path, loaded);
  if (!loaded) return batch::kFailed;
  document.setFile(fullPath(path));
  document.SetLanguage(languageOfFile(path, *document.cmx));
  own.take(&document);
  const int status = work(document);
  own.take(nullptr);
  return status;
}

}   // namespace

namespace batch {

struct Session::Impl {
  BatchDialogs boxes;
  Dialogs* before = setDialogs(&boxes);
  bool readOnly = modRegistry::SetReadOnly(true);
};

Session::Session() : impl_(std::make_unique<Impl>()) {}

Session::~Session() {
  setDialogs(impl_->before);
  modRegistry::SetReadOnly(impl_->readOnly);
}

void Session::setAbout(const QString& file) { impl_->boxes.about = file; }

void commandsFromFile(const QString& path, BatchOptions* options, QString* error) {
  const text::LoadedFile file = text::loadFile(fromQString(path));
  *error = file.error.empty() ? QString() : tr("%1: %2").arg(plainForDisplay(path), QString::fromStdString(file.error));
  options->commands = toQString(file.text.bytes());
}

void commandsOfMacro(const QString& languageAndName, BatchOptions* options, QString* error) {
  // The names of a language and of a macro may contain "/": every way to split them is tried.
  for (qsizetype slash = languageAndName.indexOf(u'/'); slash >= 0; slash = languageAndName.indexOf(u'/', slash + 1)) {
    const int index = languages().GetIndex(languageAndName.left(slash));
    if (index == 0) continue;
    const auto& macros = languages().Languages()->Item(index)->cMacros();
    const int macro = macros->IndexOf(&clsMacro::Name, languageAndName.mid(slash + 1));
    if (macro == 0) continue;
    error->clear();
    options->commands = macros->Item(macro)->CommandString;
    options->language = index;
    options->macro = macro;
    return;
  }
  *error = tr("There is no macro %1 (give LANGUAGE/NAME)").arg(plainForDisplay(languageAndName));
}

int eachDocument(const QStringList& files, const std::function<int(frmDocument&)>& work) {
  Session session;
  BatchFrame own;
  Frame* const before = frame();
  setFrame(&own);
  const bool showProgress = files.size() > 1 && isTerminal(kStandardError) && !isTerminal(kStandardOutput);
  int worst = kDone, count = 0;
  for (const QString& path : files) {
    if (showProgress)
      writeTo(kStandardError, u"\x1b[K[%1/%2] %3\r"_s.arg(++count).arg(files.size()).arg(plainForDisplay(path, 60)));
    if (files.size() > 1) session.setAbout(own.about = plainForDisplay(path));
    worst = std::max(worst, workOn(own, path, work));
  }
  if (showProgress) writeTo(kStandardError, u"\x1b[K"_s);
  setFrame(before);
  return worst;
}

int run(const BatchOptions& options) {
  if (options.files.isEmpty()) {
    writeTo(kStandardError, tr("No files are named.") + u"\r\n"_s);
    return kFailed;
  }
  if (!options.outputFolder.isEmpty()) {
    const std::string error = text::makeFolders(fromQString(options.outputFolder));
    if (!error.empty()) {
      writeTo(kStandardError, plainForDisplay(options.outputFolder) + u": "_s + QString::fromStdString(error) + u"\r\n"_s);
      return kFailed;
    }
  }
  QSet<QString> targets;
  Files sources;
  for (const QString& file : options.files) sources.add(file);
  Files inUse = sources;
  return eachDocument(options.files, [&](frmDocument& document) {
    auto& own = *static_cast<BatchFrame*>(frame());
    own.inUse = &inUse;
    if (!options.outputFolder.isEmpty()) {
      const QString target = QDir(options.outputFolder).filePath(document.CurrentFileTitle());
      const QString why = sources.holdsFileOf(target) ? tr("The output folder holds an input file.")
                          : targets.contains(target)  ? tr("Another file of this name was written to the output folder already.")
                          : !options.replace && text::fileExists(fromQString(target))
                              ? tr("The output folder has a file of this name; use --replace to replace it.")
                              : QString();
      if (!why.isEmpty()) {
        MsgBox(why);
        return kFailed;
      }
      targets.insert(target);
      own.target = target;
    }
    const int ending = runOn(document, options);
    inUse.add(own.target);
    return ending;
  });
}

}   // namespace batch
