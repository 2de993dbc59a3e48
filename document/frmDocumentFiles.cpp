// The document window and its file: load, save, look for changes by others.
#include <QDir>
#include <QPointer>
#include <QScopeGuard>
#include <chrono>
#include <new>

#include "base/Hourglass.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/Workspace.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "control/keys/KeyCommands.h"
#include "control/keys/KeyMacro.h"
#include "document/FileErrors.h"
#include "document/Frame.h"
#include "document/Languages.h"
#include "document/frmDocumentShared.h"
#include "document/frmRegistry.h"
#include "language/ucCM.h"
#include "text/diff/EditsBetween.h"
#include "text/file/FileIo.h"
#include "text/line/LineEnds.h"

namespace {

// A file written twice within the resolution of its timestamps can change without new times. Only its content shows that.
constexpr std::int64_t kClockGrainNs = 2'000'000'000;

std::int64_t nowNs() {
  using namespace std::chrono;
  return duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
}

bool firstLineIsCrlf(const std::string& path, const text::SearchControl& control) {
  text::FileSystem& files = text::fileSystem();
  const int fd = files.openAt(text::FileSystem::kCwd, path, text::kRead | text::kNonBlock, 0);
  if (fd < 0) return false;
  bool crlf = text::kPlatformCrlf;
  char block[16384];
  while (!control.cancel) {
    const std::int64_t got = files.read(fd, block, sizeof block);
    if (got == -EINTR) continue;
    if (got < 0) crlf = false;
    if (got <= 0) break;
    const std::string_view bytes(block, std::size_t(got));
    const std::size_t end = bytes.find_first_of("\r\n");
    if (end == std::string_view::npos) continue;
    crlf = bytes[end] == '\r';
    break;
  }
  files.close(fd);
  return crlf;
}

// For a text whose lines end in another way (a lone CR): edits would leave the old way. The bookmarks keep the numbers of their lines.
void exchangeAll(TextModel& model, const text::Snapshot& text, const text::SelectionState& before) {
  std::vector<text::LineNo> lines = model.bookmarks();
  std::erase_if(lines, [&](text::LineNo line) { return line.value >= text.lineCount(); });
  if (!model.document().exchange(text, before)) return;
  try {
    model.clearBookmarks();
    model.setBookmarks(lines, true);
  } catch (const std::bad_alloc&) {}   // the text has been loaded all the same
}

}   // namespace

void frmDocument::LoadDocument(const QString& path, bool& loaded) {
  QString error;
  const bool again = shared_->hasName && path == shared_->name;
  {
    const OwnBox box(*this);
    const Hourglass hourglass;
    error = again ? reload(path) : cmx->OpenFile(path);
  }
  loaded = error.isEmpty();
  if (!loaded) {
    const OwnBox box(*this);
    tellOpenError(path, error);
    return;
  }
  shared_->stampTakenNs = nowNs();
  shared_->hasName = true;
  shared_->detected = cmx->fileFormat();
  shared_->encodingIsChosen = false;
  if (shared_->recovery) shared_->recovery->saved();
  if (again) followRights();
  Timer1->start();
  // In UTF-16 a byte of another character may equal a line feed. Then only the control can tell.
  const text::Encoding encoding = cmx->fileFormat().encoding;
  const bool wide = text::isUnicode(encoding) && encoding != text::Encoding::utf8;
  // An empty file tells nothing about the text that undo may bring back.
  if (!wide && !(again && cmx->LineCount() == 1)) {
    const bool crlf = SetCRLF(path);
    if (crlf != cmx->EnableCRLF()) cmx->setEnableCRLF(crlf);
  }
  if (isActive()) frame()->setPanel(2, QString::number(cmx->LineCount()) + tr(" Lines"));
  shared_->mixedBreaks = text::lineEndsOf(cmx->model()->snapshot(), Shared::kBreaksLook) == text::LineEnds::mixed;
  showLineEnds();
  showFile(path);
}

void frmDocument::ReloadDocument() {
  const OwnBox box(*this);
  const CmRange caret = cmx->GetSel(false);
  bool loaded = false;
  LoadDocument(shared_->name, loaded);
  if (!loaded || box.documentIsGone()) return;
  DocumentChanged(cmx->Modified());
  cmx->SetSel(caret);
}

// Replaces only what differs, so that caret, bookmarks and views elsewhere in the text stay.
QString frmDocument::reload(const QString& path, const std::optional<text::FileFormat>& as) try {
  TextModel& model = *cmx->model();
  text::LoadOptions options;
  options.format = as;
  if (!text::isUnicode(model.format.encoding)) options.fallback = model.format.encoding;
  const std::string name = fromQString(path);
  const auto read = std::make_shared<text::LoadedFile>();
  const auto changes = std::make_shared<std::vector<text::Edit>>();
  const text::Snapshot was = model.document().snapshot();
  const auto load = [name, options, read, changes, was](text::SearchControl& control) {
    *read = text::loadFile(name, options, &control);
    if (read->error.empty()) *changes = text::editsBetween(was, read->text, &control.cancel);
    if (control.cancel) read->error = "Cancelled";   // the changes are not those to this file
  };
  if (!LongWork::runOrLeave(*cmx, load, tr("Opening %1").arg(plainForDisplay(path, 80)))) return tr("Cancelled");
  const text::LoadedFile& file = *read;
  if (!file.error.empty()) return toQString(file.error);

  text::Document& document = model.document();
  const std::vector<text::Edit> edits =
      document.snapshot().sameAs(was) ? std::move(*changes) : text::editsBetween(document.snapshot(), file.text);
  const text::SelectionState before = cmx->editor().selection();
  emit beforeReload();
  const auto done = qScopeGuard([this] { emit reloaded(); });
  {
    struct Writable {   // read-only protects against the user's edits only; the new content of the file must be loaded
      explicit Writable(text::Document& guarded) : document(guarded) { document.setReadOnly(false); }
      ~Writable() { document.setReadOnly(was); }
      text::Document& document;
      const bool was = document.readOnly();
    } writable(document);
    if (file.text.lineMode() == document.snapshot().lineMode()) document.apply(edits, before);
    else exchangeAll(model, file.text, before);
  }
  model.format = file.format;
  model.stamp = file.stamp;
  cmx->setModified(false);
  return {};
} catch (const std::bad_alloc&) { return tr("Out of memory"); }

bool frmDocument::ReopenAs(const text::FileFormat& format) {
  QString error;
  {
    const Hourglass hourglass;
    error = reload(shared_->name, format);
  }
  if (error.isEmpty()) {
    shared_->encodingIsChosen = true;
    if (shared_->recovery) shared_->recovery->saved();
    return true;
  }
  const OwnBox box(*this);
  tellOpenError(shared_->name, error);
  return false;
}

bool frmDocument::makeFolderOf(const QString& path) {
  const QString folder = GetFileDir(path);
  if (folder.isEmpty() || !fileIsMissing(folder)) return true;
  const OwnBox box(*this);
  const QString question = tr("The folder %1 does not exist.\r\nDo you want to create it?").arg(plainForDisplay(folder));
  if (MsgBox(question, savingTitle(path), Icon::question, Buttons::yesNo) != Answer::yes || box.documentIsGone()) return false;
  const std::string error = text::makeFolders(fromQString(folder));
  if (!error.empty()) tellSaveError(path, toQString(error));
  return error.empty();
}

bool frmDocument::SaveDocumment(const QString& path) {
  const auto save = [&](bool guard) {
    const OwnBox box(*this);
    const Hourglass hourglass;
    return cmx->SaveFile(path, guard);
  };
  if (!makeFolderOf(path)) return false;
  const std::uint64_t before = cmx->model()->document().revision();
  std::uint64_t trimmed = before;
  if (cmx->Aids().trimChanged && !cmx->ReadOnly()) {
    const OwnBox box(*this);
    keyMacros().pause([&] { cmx->ExecuteCmd(anyCommandByName(QStringLiteral("TRIMCHANGEDLINES"))->id); });
    if (box.documentIsGone()) return false;
    trimmed = cmx->model()->document().revision();
  }
  const auto notSaved = [&] {   // the text is as it was
    if (trimmed != before && cmx->model()->document().revision() == trimmed) cmx->editor().undo();
    return false;
  };
  text::SaveResult result = save(true);
  if (result.changedOnDisk && !text::fileExists(fromQString(path))) {
    result = save(false);   // the file is gone: nothing would be overwritten
  } else if (result.changedOnDisk) {
    const OwnBox box(*this);
    const QString question = tr("%1 has been changed on disk by another program.\r\nDo you want to overwrite it?");
    if (MsgBox(question.arg(plainForDisplay(path)), savingTitle(path), Icon::exclamation, Buttons::yesNo) != Answer::yes)
      return box.documentIsGone() ? false : notSaved();
    if (box.documentIsGone()) return false;
    result = save(false);
  }
  if (!result.ok()) {
    const OwnBox box(*this);
    tellSaveError(path, toQString(result.error));
    return box.documentIsGone() ? false : notSaved();
  }
  shared_->stampTakenNs = nowNs();
  if (shared_->recovery) shared_->recovery->saved();
  showFile(path);
  return true;
}

bool frmDocument::holdInJournal() { return shared_->recovery && shared_->recovery->holdNow(); }

bool frmDocument::isHeldInJournal() const { return shared_->recovery && shared_->recovery->holds(); }

bool frmDocument::mayEnd() const { return !cmx->Modified() || allAgreed() || isHeldInJournal(); }

void frmDocument::leaveInJournal() { shared_->leftInJournal = mayEnd() && cmx->Modified() && !allAgreed(); }

bool frmDocument::isLeftInJournal() const { return shared_->leftInJournal; }

QString frmDocument::journalName() const { return shared_->recovery ? shared_->recovery->fileName() : QString(); }

bool frmDocument::EncodingIsChosen() const {
  return shared_->encodingIsChosen || (shared_->detected && *shared_->detected != cmx->fileFormat());
}

void frmDocument::keepEncoding() { shared_->encodingIsChosen = true; }

bool frmDocument::CancelSaveFile() {
  if (!cmx->Modified()) return false;
  const OwnBox box(*this);
  if (Frame* main = frame()) main->activate(this);   // so that the user sees the document that the question is about
  switch (MsgBox(tr("There are changes to the current file. Do you wish to save these changes"), CurrentFileTitle(),
                 Icon::exclamation, Buttons::yesNoCancel)) {
    case Answer::yes: break;
    case Answer::no: return false;
    default: return true;
  }
  Frame* main = frame();
  return box.documentIsGone() || !main || !main->saveActive();
}

namespace {
struct Asking {
  bool aboutDates = false;   // over all documents: one question at a time
};
}   // namespace

void frmDocument::inconsistentDate() {
  bool& asking = Workspace::current().part<Asking>().aboutDates;
  std::optional<text::FileStamp>& known = cmx->model()->stamp;
  if (asking || !shared_->hasName || !known || isDialogUp()) return;
  asking = true;
  const auto done = qScopeGuard([&asking] { asking = false; });

  const OwnBox box(*this);
  // The user may have gone to another document while the disk was looked at, or the frame may not show this one yet.
  const auto ask = [&](const QString& text, Buttons buttons) {
    if (Frame* main = frame()) main->activate(this);
    return MsgBox(text, plainForDisplay(shared_->name), Icon::exclamation, buttons);
  };
  text::FileStamp now;
  const auto look = [&](bool withContent) {   // the disk may hang; then the next check decides
    const auto seen = std::make_shared<text::FileStamp>();
    const auto work = [seen, withContent, path = fromQString(shared_->name)](text::SearchControl&) {
      *seen = text::stampOf(path, withContent);
    };
    const bool ended = LongWork::runOrLeave(*cmx, work, tr("Looking at %1").arg(plainForDisplay(shared_->name, 80)));
    if (ended) now = *seen;
    return ended;
  };
  if (!look(false)) return;
  if (!now.exists || !now.status.isRegular()) {
    if (!known->exists) return;   // already reported, and the file has not come back
    noteLostFile();
    ask(tr("The source of this file cannot be found, please re-save it"), Buttons::ok);
    return;
  }
  const bool fresh = shared_->stampTakenNs - now.status.ctimeNs < kClockGrainNs;
  if (now.status == known->status && !fresh) return;
  const std::int64_t lookedAt = nowNs();
  if (!look(true)) return;
  const bool sameLooks = now.status.mtimeNs == known->status.mtimeNs && now.status.size == known->status.size;
  if (now.exists && sameLooks && now.contentHash == 0) return;   // it cannot be read now; the next check decides
  const bool otherText = now.contentHash != known->contentHash || now.status.size != known->status.size;
  if (!now.exists || (now.status.mtimeNs == known->status.mtimeNs && !otherText)) {
    if (now.exists) {   // moved, linked or other permissions: same content and time
      known = now;
      shared_->stampTakenNs = lookedAt;
      followRights();
    }
    return;
  }
  const QString question = tr("Warning : ") + CurrentFileTitle() + tr(" has been changed since it was opened with this editor") +
                           QLatin1String("\r\n") + tr("Do you want to re-load it");
  const Answer answer = ask(question, Buttons::yesNo);
  if (box.documentIsGone()) return;
  if (answer == Answer::yes) return ReloadDocument();
  known = now;
  shared_->stampTakenNs = lookedAt;
  if (otherText) cmx->setModified(true);   // the text shown differs from the file
}

// The text exists only here now.
void frmDocument::noteLostFile() {
  cmx->model()->stamp = text::FileStamp{};   // the next save creates the file again without a question
  cmx->setModified(true);
}

void frmDocument::noteLostFiles(const QList<frmDocument*>& going) {
  struct Seen {
    QPointer<frmDocument> document;
    std::string path;
    std::optional<text::FileStamp> now;   // none: a cancelled look did not come to it
  };
  const auto seen = std::make_shared<std::vector<Seen>>();
  for (frmDocument* document : going) {
    const std::optional<text::FileStamp>& known = document->cmx->model()->stamp;
    if (document->shared_->hasName && known && known->exists && !document->cmx->Modified())
      seen->push_back({document, fromQString(document->shared_->name), {}});
  }
  if (seen->empty()) return;
  const auto look = [seen](text::SearchControl& control) {
    for (Seen& one : *seen) {
      if (control.cancel) return;
      one.now = text::stampOf(one.path, false);
    }
  };
  const QString what = tr("Looking at %1").arg(plainForDisplay(toQString(seen->front().path), 80));
  if (!LongWork::runOrLeave(*going.front()->cmx, look, what)) return;
  for (const Seen& one : *seen) {
    if (!one.now || (one.now->exists && one.now->status.isRegular())) continue;
    if (!one.document || fromQString(one.document->shared_->name) != one.path) continue;
    one.document->noteLostFile();
    AppendReport(tr("%1 is not there any more: its text is not saved now").arg(plainForDisplay(toQString(one.path), 200)));
  }
}

bool frmDocument::SetCRLF(const QString& path) {
  const auto crlf = std::make_shared<bool>(false);
  const auto look = [name = fromQString(path), crlf](text::SearchControl& control) { *crlf = firstLineIsCrlf(name, control); };
  return LongWork::runOrLeave(*cmx, look, tr("Opening %1").arg(plainForDisplay(path, 80))) && *crlf;
}
