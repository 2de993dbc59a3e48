// The main frame's commands on files.
#include <QApplication>
#include <QMdiSubWindow>
#include <QMenu>
#include <new>

#include "app/folder/FolderParts.h"
#include "app/frame/DocumentTabs.h"
#include "app/frame/LateDocument.h"
#include "app/frame/frmMain.h"
#include "app/start/StandardInput.h"
#include "base/Background.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "control/marks/ChangeMarks.h"
#include "document/FileErrors.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "language/ucCM.h"
#include "text/file/FileSystem.h"
#include "text/journal/JournalRead.h"

namespace {

// The caret of a recovered text; -1: unknown.
void caretTo(qint64 byte, CodeMax& cmx) {
  if (byte < 0) return;
  const text::ByteOffset at(std::min<std::int64_t>(byte, cmx.model()->snapshot().size().value));
  const CmPosition place = cmx.editor().positionOf(at);
  cmx.SetSel({place.LineNo, place.ColNo, place.LineNo, place.ColNo, false});
  cmx.ExecuteCmd(Cmd::WINDOWSCROLLTOCENTER);
}

int filterEntryOf(const frmDocument& document) { return document.LanguageIndex() > 0 ? document.LanguageIndex() + 1 : 1; }

// A recovered text differs from its file, which is read for that.
void markChanges(const std::shared_ptr<TextModel>& model, const text::RecoveredText& found) {
  const auto read = [path = found.about.path, format = found.about.format] {
    text::LoadOptions options;
    options.format = format;
    return std::make_shared<text::LoadedFile>(text::loadFile(path, options));
  };
  const auto mark = [model = model.get(), base = found.text](const std::shared_ptr<text::LoadedFile>& file) {
    ChangeMarks& marks = ChangeMarks::of(*model);
    if (file->error.empty() && marks.file().sameAs(base)) marks.setFile(file->text);   // else it was saved since
  };
  inBackground(model.get(), read, mark);
}

}   // namespace

QString frmMain::nextTitle() const { return tr("Untitled ") + QString::number(DocCount + 1); }

frmDocument* frmMain::LoadNewDoc() {
  auto* document = new frmDocument;
  document->setUntitled(nextTitle(), currentFolder());
  adopt(document);
  SetupMenus();
  return document;
}

void frmMain::mnuFileOpen_Click() {
  int entry = 1;
  const QStringList names =
      frmRegistry::instance().stdOpenFile(tr("Open File"), languages().GetFilterList(), entry, currentFolder(), {}, true);
  for (const QString& name : names) openFile(name);
}

frmDocument* frmMain::openFile(const QString& path) {
  bool ok = false;
  const QString name = fullPath(path);
  frmDocument* document = mainOpenFile(name, ok);
  if (ok) frmRegistry::instance().mruFile.AddItem(name);
  return document;
}

frmDocument* frmMain::mainOpenFile(const QString& path, bool& ok) {
  ok = false;
  const QString name = fullPath(path);
  bool proceed = false;
  frmDocument* shown = CheckFileStatus(name, proceed);
  if (!proceed) return shown;
  if (isDialogUp() || QApplication::activeModalWidget()) {
    MsgBox(
        tr("Cannot open Zelkor Editor as it is awaiting response from a fixed dialog e.g. File open dialog or Print "
           "Preview etc."));
    return nullptr;
  }
  auto document = std::make_unique<frmDocument>();
  bool loaded = false;
  document->LoadDocument(name, loaded);
  if (!loaded) {
    document.reset();
    SetupMenus();
    return nullptr;
  }
  document->SetLanguage(languageOfFile(name, *document->cmx));
  document->setFile(name);
  document->followRights();
  shown = document.release();
  adopt(shown);
  SetupMenus();
  UpdateEditMenu();
  ok = true;
  emit fileNamed(name);
  return shown;
}

frmDocument* frmMain::CheckFileStatus(const QString& name, bool& proceed) {
  proceed = true;
  QPointer<frmDocument> document = documentOn(name);
  if (!document) return nullptr;
  if (document->DocumentModified()) {
    const Answer answer = MsgBox(tr("This file is already open and modified. Do you want to revert to this modified version?"),
                                 document->CurrentFileTitle(), Icon::question, Buttons::yesNoCancel);
    proceed = answer == Answer::no;
    if (answer != Answer::yes || !document) return nullptr;
    // "Revert" means showing the window that holds the changes, at its normal size; the file is not read.
    activate(document);
    windowOf(document)->showNormal();
    return document;
  }
  proceed = false;
  activate(document);
  return document;
}

frmDocument* frmMain::documentOn(const QString& name) {
  for (frmDocument* document : std::as_const(documents_))
    if (document->CurrentFileName() == name) return document;
  LateDocument* late = tabs_->lateOn(name);
  frmDocument* opened = late && late != opening_ ? openLate(*late) : nullptr;
  return opened ? opened : ::documentOn(*this, name);
}

frmDocument* frmMain::beginFile(const QString& name) {
  const QString question = tr("%1 does not exist.\r\nDo you want to create it?");
  if (MsgBox(question.arg(plainForDisplay(name)), {}, Icon::question, Buttons::yesNo) != Answer::yes) return nullptr;
  auto* document = new frmDocument;
  document->beginFile(name);
  document->SetLanguage(languageOfFile(name, *document->cmx));
  adopt(document);
  SetupMenus();
  UpdateEditMenu();
  return document;
}

frmDocument* frmMain::openAt(const QString& path, qint64 line, qint64 column) {
  const QString name = fullPath(path);
  if (isFolder(name)) return folders_->open(name), nullptr;
  if (!documentOn(name) && fileIsMissing(name)) return beginFile(name);
  frmDocument* document = openFile(name);
  if (document && line > 0) goTo(document, line, column);
  return document;
}

void frmMain::goTo(frmDocument* document, qint64 line, qint64 column) {
  const qint64 row = std::min(line, document->cmx->LineCount()) - 1;
  document->cmx->ExecuteCmd(Cmd::GOTOLINE, row);
  const qint64 at = std::clamp<qint64>(column - 1, 0, document->cmx->GetLineLength(row));
  document->cmx->SetSel({row, at, row, at, false});
  document->cmx->ExecuteCmd(Cmd::WINDOWSCROLLTOCENTER);
}

frmDocument* frmMain::goToFile(const QString& path, qint64 line, qint64 column) {
  frmDocument* document = documentOn(fullPath(path));
  if (!document) return openAt(path, line, column);
  activate(document);
  if (line > 0) goTo(document, line, column);
  return document;
}

frmDocument* frmMain::takeIn(const QString& path) {
  // Removes only files that a copy of this program has left for this purpose.
  if (!isSpooledInput(path)) {
    tellOpenError(path, tr("This is no text that was piped in"));
    return nullptr;
  }
  auto document = std::make_unique<frmDocument>();
  const QString error = document->cmx->OpenFile(path);
  if (!error.isEmpty()) {   // the file stays, because the text exists nowhere else
    tellOpenError(path, error);
    return nullptr;
  }
  document->cmx->model()->stamp.reset();
  document->cmx->setModified(true);   // it is nowhere else
  document->setUntitled(nextTitle(), currentFolder());
  // Removes the file once the journal has the text.
  if (document->holdInJournal()) text::fileSystem().unlinkAt(text::FileSystem::kCwd, fromQString(path), false);
  frmDocument* shown = document.release();
  adopt(shown);
  SetupMenus();
  return shown;
}

frmDocument* frmMain::restore(const text::RecoveredText& found) {
  // An incomplete text must not replace the whole file by a simple save.
  const QString name = found.baseWhole ? toQString(found.about.path) : QString();
  frmDocument* taken = nullptr;
  for (frmDocument* document : documents())
    if (!name.isEmpty() && document->CurrentFileName() == name) taken = document;
  if (taken && !taken->DocumentModified() && !taken->cmx->ReadOnly()) {
    activate(taken);
    TextModel& model = *taken->cmx->model();
    model.document().exchange(found.text, taken->cmx->editor().selection());
    taken->cmx->setFileFormat(found.about.format);
    taken->cmx->setModified(true);
    if (found.about.stamp) model.stamp = found.about.stamp;   // as below: the file may have been changed since
    caretTo(found.caret, *taken->cmx);
    return taken;
  }
  auto* document = new frmDocument;
  TextModel& model = *document->cmx->model();
  model.replaceAll(found.text, found.about.format);
  if (name.isEmpty() || taken) {
    document->setUntitled(tr("Recovered %1").arg(toQString(found.about.title)), currentFolder());
  } else {
    model.path = name;
    model.stamp = found.about.stamp;   // so that a save notices what others have made of the file since
    document->SetLanguage(languageOfFile(name, *document->cmx));
    document->setFile(name);
    markChanges(document->cmx->model(), found);
  }
  document->cmx->setModified(true);
  adopt(document);
  caretTo(found.caret, *document->cmx);
  SetupMenus();
  UpdateEditMenu();
  return document;
}

// ---- saving

// A text with a name that has no file yet is also saved while it is empty.
bool frmMain::isUnsaved(const frmDocument& document) { return document.DocumentModified() || !document.DocumentHasName(); }

void frmMain::mnuFileSave_Click() { saveActive(); }

bool frmMain::saveActive() {
  bool ok = false;
  if (frmDocument* document = activeDocument()) mainFileSave(*document, ok);
  return ok;
}

void frmMain::mainFileSave(frmDocument& document, bool& ok) {
  if (document.DocumentHasName()) ok = document.SaveDocumment(document.CurrentFileName());
  else ok = document.CurrentFileName().isEmpty() ? saveAs(document) : mainSaveDocument(document, document.CurrentFileName());
}

bool frmMain::saveAs(frmDocument& document) {
  int entry = filterEntryOf(document);
  const QPointer<frmDocument> alive = &document;
  const QString folder = isInstalled(document.CurrentFileDir()) ? currentFolder() : document.CurrentFileDir();
  // The name is used as typed: a language may list whole names ("Makefile").
  const bool giveExtension =
      document.CurrentFileName().isEmpty() && (entry == 1 || languages().Languages()->Item(entry - 1)->FileNames.isEmpty());
  const QString name = frmRegistry::instance().stdSaveFile(tr("Save File"), languages().GetFilterList(), entry, folder,
                                                           document.CurrentFileTitle(), giveExtension);
  return !name.isEmpty() && alive && mainSaveDocument(document, fullPath(name));
}

void frmMain::mnuFileSaveAs_Click() {
  if (frmDocument* document = activeDocument()) saveAs(*document);
}

bool frmMain::mainSaveDocument(frmDocument& document, const QString& name) {
  if (!document.SaveDocumment(name)) return false;
  document.setFile(name);
  document.followRights();
  document.SetLanguage(languageOfFile(name, *document.cmx));
  if (document.cmx->hasFocus()) document.Timer1->start();
  frmRegistry::instance().mruFile.AddItem(name);
  emit fileNamed(name);
  // Binding a language made it the manager's current one; restore that of the active document.
  if (frmDocument* active = activeDocument()) workOn(active);
  return true;
}

void frmMain::mnuFileSaveAll_Click() {
  const QPointer<frmDocument> was = activeDocument();
  const QList<QPointer<frmDocument>> all(documents_.begin(), documents_.end());
  for (const QPointer<frmDocument>& document : all) {
    if (!document || !document->DocumentModified()) continue;
    if (document->CurrentFileName().isEmpty()) activate(document);   // so that the user sees the document that the dialog is about
    bool ok = false;
    mainFileSave(*document, ok);
  }
  if (was) activate(was);
}

void frmMain::mnuFileReload_Click() {
  frmDocument* document = activeDocument();
  if (!document || !document->DocumentHasName()) return;
  document->ReloadDocument();
}

// ---- closing, recently used, drop

void frmMain::mnuFileClose_Click() {
  if (QMdiSubWindow* window = windowOf(activeDocument())) window->close();
}

void frmMain::mnuFileCloseAll_Click() { closeOthers(nullptr); }

void frmMain::closeOthers(frmDocument* keep) {
  QList<frmDocument*> going;
  for (frmDocument* document : documents())
    if (document != keep) going << document;
  if (!agreeToClose(going)) return;
  if (!keep) emit closing(false);
  dropLate();
  closeAgreed({going.begin(), going.end()});
}

void frmMain::closeAgreed(QList<QPointer<frmDocument>> going) {
  // The active one is closed last: whenever it closes another one must be activated.
  if (const qsizetype at = going.indexOf(active_); at >= 0) going.move(at, going.size() - 1);
  for (const auto& document : going)
    if (QMdiSubWindow* window = windowOf(document)) window->close();
}

void frmMain::mainFileClose() { --DocCount; }

void frmMain::mnuFileMRU_Click(int index) {
  const QString name = frmRegistry::instance().mruFile.Item(index);
  bool ok = false;
  mainOpenFile(name, ok);
  if (ok) {
    frmRegistry::instance().mruFile.UseItem(index);
  } else if (fileIsMissing(name)) {
    const QString question = tr("%1 does not exist any more.\r\nDo you want to remove it from the list?");
    if (MsgBox(question.arg(plainForDisplay(name)), {}, Icon::question, Buttons::yesNo) == Answer::yes)
      frmRegistry::instance().mruFile.Remove(index);
  }
}

void frmMain::MDIForm_OLEDragDrop(const QStringList& files) {
  try {
    for (const QString& file : files)
      if (isFolder(file)) folders_->open(file);
      else openFile(file);
  } catch (const std::exception&) {
    MsgBox(tr("Error occured during drag/drop"), tr("Zelkor Editor : OLE Error"), Icon::exclamation);
  }
}
