#include "document/frmDocument.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QPointer>
#include <algorithm>
#include <chrono>
#include <new>
#include <vector>

#include "base/FileNames.h"
#include "base/Hourglass.h"
#include "base/LongWork.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/Workspace.h"
#include "base/dialog/Dialogs.h"
#include "document/CMXRegistry.h"
#include "document/FileErrors.h"
#include "document/Frame.h"
#include "document/Languages.h"
#include "document/Recovery.h"
#include "document/frmRegistry.h"
#include "language/ucCM.h"
#include "text/file/FileIo.h"
#include "text/line/LineEnds.h"
#include "text/line/LineReader.h"

// What all windows of one text share.
struct frmDocument::Shared {
  QString name, title, folder;
  bool hasName = false;
  bool modified = false;
  bool leftInJournal = false;                    // closing keeps the journal
  bool protectedFile = false, guarded = false;   // the file is write-protected; the text is read-only because of that
  int language = 0;
  bool languageIsChosen = false;
  QString lineComment, blockStart, blockEnd;
  std::int64_t stampTakenNs = 0;   // time of the last complete check of the file
  bool mixedBreaks = false;        // as far as was looked
  QTimer breaksLook;               // runs shortly after line ends were added or removed
  std::vector<frmDocument*> windows;
  std::unique_ptr<Recovery> recovery;   // null when there are no journals
};

namespace {

constexpr int kWatchMs = 4000, kBreaksLookMs = 300;
constexpr std::int64_t kBreaksLook = 8 << 20;   // bytes; reading them takes some milliseconds
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

int windowStateOf(const QWidget& window) {
  return window.isMinimized() ? windowstate::kMinimised : window.isMaximized() ? windowstate::kMaximised : windowstate::kNormal;
}

}   // namespace

// While a box of the document is open, the file is not watched, and the focus that returns when the box closes does not trigger a
// check.
class frmDocument::OwnBox {
 public:
  explicit OwnBox(frmDocument& document) : document_(&document), watched_(document.Timer1->isActive()) {
    document.Timer1->stop();
    ++document.ownBoxes_;
  }
  ~OwnBox() {
    if (!document_) return;
    --document_->ownBoxes_;
    if (watched_) document_->Timer1->start();
  }
  bool documentIsGone() const { return document_.isNull(); }

 private:
  QPointer<frmDocument> document_;
  bool watched_;
};

frmDocument::frmDocument(QWidget* parent)
    : QWidget(parent), cmx(new CodeMax(this)), Timer1(new QTimer(this)), shared_(std::make_shared<Shared>()) {
  setUp();
  beginJournal();
  QTimer* look = &shared_->breaksLook;
  look->setSingleShot(true);
  look->setInterval(kBreaksLookMs);
  const auto lookNow = [shared = shared_.get(), model = cmx->model().get()] {
    shared->mixedBreaks = text::lineEndsOf(model->snapshot(), kBreaksLook) == text::LineEnds::mixed;
    for (frmDocument* window : shared->windows)
      if (frame() && frame()->activeDocument() == window) window->showLineEnds();
  };
  connect(look, &QTimer::timeout, look, lookNow);
  connect(cmx->model().get(), &TextModel::changed, look, [look, lookNow](const text::Change& change) {
    const auto has = [](const text::Change::Span& span) { return span.linesRemoved + span.linesInserted > 0; };
    const auto changes = [](const text::Change::Span& span) { return span.linesRemoved > 0 && span.linesInserted > 0; };
    if (change.reset || std::ranges::any_of(change.spans, changes)) lookNow();   // not for a typed character
    else if (std::ranges::any_of(change.spans, has)) look->start();
  });
  frmRegistry::instance().SetupMenusModified(false);
  CMXRegistry::applyTo(*cmx);
}

void frmDocument::beginJournal() {
  shared_->recovery = Recovery::of(cmx->model());
  if (!shared_->recovery) return;
  shared_->recovery->caret = [shared = shared_.get()] {
    return shared->windows.empty() ? -1 : shared->windows.front()->cmx->editor().selection().caret.value;
  };
  shared_->recovery->setFile(shared_->name, shared_->title);
}

void frmDocument::beginFill() {
  shared_->recovery.reset();
  cmx->model()->document().setUndoLimit(0, 0);
}

void frmDocument::endFill() {
  cmx->model()->document().setUndoLimit(SIZE_MAX, std::size_t(1) << 30);
  cmx->setModified(false);
  beginJournal();
}

frmDocument::frmDocument(frmDocument& viewOf, QWidget* parent)
    : QWidget(parent), cmx(new CodeMax(*viewOf.cmx, this)), Timer1(new QTimer(this)), shared_(viewOf.shared_) {
  setUp();
  CMXRegistry::applyTo(*cmx);
  updateCaption();
}

frmDocument::~frmDocument() {
  disconnect(cmx, nullptr, this, nullptr);   // it loses the focus when it is destroyed, after this object
  std::erase(shared_->windows, this);
}

void frmDocument::setUp() {
  shared_->windows.push_back(this);
  Timer1->setInterval(kWatchMs);
  setFocusProxy(cmx);
  connect(Timer1, &QTimer::timeout, this, &frmDocument::Timer1_Timer);
  connect(cmx, &CodeMax::GotFocus, this, &frmDocument::cmx_GotFocus);
  connect(cmx, &CodeMax::LostFocus, this, &frmDocument::cmx_LostFocus);
  connect(cmx, &CodeMax::ModifiedChange, this, &frmDocument::cmx_ModifiedChange);
  connect(cmx, &CodeMax::RClick, this, &frmDocument::cmx_RClick);
  connect(cmx, &CodeMax::Return, this, &frmDocument::cmx_Return);
  connect(cmx, &CodeMax::Typed, this, &frmDocument::cmx_Typed);
  connect(cmx, &CodeMax::SelChange, this, &frmDocument::cmx_SelChange);
  connect(cmx, &CodeMax::PropsChange, this, &frmDocument::cmx_PropsChange);
  connect(cmx->model().get(), &TextModel::lineEndsChanged, this, [this] {
    if (Frame* main = frame(); main && main->activeDocument() == this) showLineEnds();
  });
  connect(cmx, &CodeMax::Note, this, [](const QString& text) {
    if (!text.isEmpty()) SetStatusText(text);   // an empty note only clears the message of an earlier action; the frame does that
  });
}

const QString& frmDocument::CurrentFileName() const { return shared_->name; }
const QString& frmDocument::CurrentFileTitle() const { return shared_->title; }
const QString& frmDocument::CurrentFileDir() const { return shared_->folder; }
bool frmDocument::DocumentHasName() const { return shared_->hasName; }
bool frmDocument::DocumentModified() const { return shared_->modified; }
int frmDocument::LanguageIndex() const { return shared_->language; }
const QString& frmDocument::LineComment() const { return shared_->lineComment; }
const QString& frmDocument::BlockCommentStart() const { return shared_->blockStart; }
const QString& frmDocument::BlockCommentEnd() const { return shared_->blockEnd; }
int frmDocument::views() const { return static_cast<int>(shared_->windows.size()); }

void frmDocument::setUntitled(const QString& title, const QString& folder) {
  shared_->name.clear();
  shared_->hasName = false;
  shared_->title = title;
  shared_->folder = folder;
  if (shared_->recovery) shared_->recovery->setFile({}, title);
  updateCaption();
}

void frmDocument::beginFile(const QString& path) {
  setFile(path);
  shared_->hasName = false;
  cmx->model()->path = path;
  cmx->model()->stamp = text::FileStamp{};   // a file that appears there meanwhile is not overwritten without a question
}

void frmDocument::setFile(const QString& path) {
  shared_->name = path;
  shared_->title = GetFileTitle(path);
  shared_->folder = GetFileDir(path);
  shared_->hasName = true;
  if (shared_->recovery) shared_->recovery->setFile(path, shared_->title);
  updateCaption();
}

void frmDocument::followRights() {
  const bool isProtected = text::writeProtected(fromQString(shared_->name));
  if (isProtected == shared_->protectedFile) return;
  shared_->protectedFile = isProtected;
  const bool guard = isProtected && !cmx->Modified() && !cmx->ReadOnly();
  if (guard || shared_->guarded) cmx->setReadOnly(guard);
  shared_->guarded = guard;
  if (Frame* main = frame()) main->refreshToolbar();
}

void frmDocument::showLineEnds() {
  if (Frame* main = frame()) main->setUnixPanel(!cmx->EnableCRLF(), shared_->mixedBreaks);
}

QString frmDocument::Caption() const {
  const QString title = nameForDisplay(shared_->title, 200);
  return shared_->modified ? title + u'*' : title;
}

void frmDocument::updateCaption() {
  for (frmDocument* window : shared_->windows) {
    QString caption = window->Caption();
    caption.replace(QLatin1String("[*]"), QLatin1String("[*][*]"));   // else Qt replaces "[*]"
    window->setWindowTitle(caption);
    emit window->captionChanged();
  }
}

void frmDocument::DocumentChanged(bool modified) {
  shared_->modified = modified;
  frmRegistry::instance().SetupMenusModified(modified);
  updateCaption();
  if (Frame* main = frame()) main->refreshToolbar();
}

void frmDocument::RowAndCol() {
  Frame* main = frame();
  if (!main) return;
  const CmRange selection = cmx->GetSel(false);
  main->setPanel(2, QString::number(selection.EndLineNo + 1) + u',' + QString::number(selection.EndColNo));
}

// ---- load, save, watch

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
  if (Frame* main = frame()) main->setPanel(2, QString::number(cmx->LineCount()) + tr(" Lines"));
  shared_->mixedBreaks = text::lineEndsOf(cmx->model()->snapshot(), kBreaksLook) == text::LineEnds::mixed;
  showLineEnds();
  SetStatusText(nameForDisplay(path));
}

// Replaces only what differs, so that caret, bookmarks and views elsewhere in the text stay.
QString frmDocument::reload(const QString& path, const std::optional<text::FileFormat>& as) try {
  TextModel& model = *cmx->model();
  text::LoadOptions options;
  options.format = as;
  if (!text::isUnicode(model.format.encoding)) options.fallback = model.format.encoding;
  const std::string name = fromQString(path);
  const auto read = std::make_shared<text::LoadedFile>();
  const auto load = [name, options, read](text::SearchControl& control) { *read = text::loadFile(name, options, &control); };
  if (!LongWork::runOrLeave(*cmx, load, tr("Opening %1").arg(plainForDisplay(path, 80)))) return tr("Cancelled");
  const text::LoadedFile& file = *read;
  if (!file.error.empty()) return toQString(file.error);

  text::Document& document = model.document();
  const text::Snapshot was = document.snapshot();
  const std::int64_t oldSize = was.size().value, newSize = file.text.size().value, shorter = std::min(oldSize, newSize);
  std::int64_t head = 0, tail = 0;
  while (head < shorter) {
    const std::string_view a = was.chunkAt(text::ByteOffset(head)), b = file.text.chunkAt(text::ByteOffset(head));
    const std::size_t run = std::min({a.size(), b.size(), std::size_t(shorter - head)});
    const auto differs = std::mismatch(a.begin(), a.begin() + std::ptrdiff_t(run), b.begin());
    head += differs.first - a.begin();
    if (differs.first != a.begin() + std::ptrdiff_t(run)) break;
  }
  while (tail < shorter - head) {
    const std::string_view a = was.chunkBefore(text::ByteOffset(oldSize - tail)),
                           b = file.text.chunkBefore(text::ByteOffset(newSize - tail));
    const std::size_t run = std::min({a.size(), b.size(), std::size_t(shorter - head - tail)});
    const auto differs = std::mismatch(a.rbegin(), a.rbegin() + std::ptrdiff_t(run), b.rbegin());
    tail += differs.first - a.rbegin();
    if (differs.first != a.rbegin() + std::ptrdiff_t(run)) break;
  }
  text::Edit edit{{text::ByteOffset(head), text::ByteOffset(oldSize - tail)},
                  file.text.bytes({text::ByteOffset(head), text::ByteOffset(newSize - tail)})};
  const text::SelectionState before = cmx->editor().selection();
  {
    struct Writable {   // read-only protects against the user's edits only; the new content of the file must be loaded
      explicit Writable(text::Document& guarded) : document(guarded) { document.setReadOnly(false); }
      ~Writable() { document.setReadOnly(was); }
      text::Document& document;
      const bool was = document.readOnly();
    } writable(document);
    document.apply(std::move(edit), before);
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
  text::SaveResult result = save(true);
  if (result.changedOnDisk && !text::fileExists(fromQString(path))) {
    result = save(false);   // the file is gone: nothing would be overwritten
  } else if (result.changedOnDisk) {
    const OwnBox box(*this);
    const QString question = tr("%1 has been changed on disk by another program.\r\nDo you want to overwrite it?");
    if (MsgBox(question.arg(plainForDisplay(path)), savingTitle(path), Icon::exclamation, Buttons::yesNo) != Answer::yes)
      return false;
    if (box.documentIsGone()) return false;
    result = save(false);
  }
  if (!result.ok()) {
    const OwnBox box(*this);
    tellSaveError(path, toQString(result.error));
    return false;
  }
  shared_->stampTakenNs = nowNs();
  if (shared_->recovery) shared_->recovery->saved();
  SetStatusText(nameForDisplay(path));
  return true;
}

bool frmDocument::holdInJournal() { return shared_->recovery && shared_->recovery->holdNow(); }

bool frmDocument::mayEnd() const { return !cmx->Modified() || allAgreed() || (shared_->recovery && shared_->recovery->holds()); }

void frmDocument::leaveInJournal() { shared_->leftInJournal = mayEnd() && cmx->Modified() && !allAgreed(); }

bool frmDocument::isLeftInJournal() const { return shared_->leftInJournal; }

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
    known = text::FileStamp{};    // the next save creates the file again without a question
    cmx->setModified(true);       // the text exists only in this window
    MsgBox(tr("The source of this file cannot be found, please re-save it"), {}, Icon::exclamation);
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
  const Answer answer = MsgBox(question, {}, Icon::exclamation, Buttons::yesNo);
  if (box.documentIsGone()) return;
  if (answer == Answer::yes) {
    const CmRange caret = cmx->GetSel(false);
    bool loaded = false;
    LoadDocument(shared_->name, loaded);
    if (!loaded || box.documentIsGone()) return;
    DocumentChanged(false);
    cmx->SetSel(caret);
    return;
  }
  known = now;
  shared_->stampTakenNs = lookedAt;
  if (otherText) cmx->setModified(true);   // the text shown differs from the file
}

bool frmDocument::SetCRLF(const QString& path) {
  const auto crlf = std::make_shared<bool>(false);
  const auto look = [name = fromQString(path), crlf](text::SearchControl& control) { *crlf = firstLineIsCrlf(name, control); };
  return LongWork::runOrLeave(*cmx, look, tr("Opening %1").arg(plainForDisplay(path, 80))) && *crlf;
}

// ---- events

void frmDocument::focusWork() {
  frmRegistry& service = frmRegistry::instance();
  service.SetupMenusModified(shared_->modified);
  if (shared_->language > languages().Languages()->Count()) shared_->language = 0;
  languages().setListLanguage(shared_->language);
  service.CommandstoMenu();
  service.SetHelpMenu();
  Frame* main = frame();
  if (!main) return;
  main->setUndoRedo(cmx->CanUndo(), cmx->CanRedo());
  showLineEnds();
  main->setPanel(1, nameForDisplay(shared_->name.isEmpty() ? shared_->title : shared_->name));
  RowAndCol();
  main->refreshToolbar();
}

void frmDocument::cmx_GotFocus() {
  if (gBusy()) return;
  focusWork();
  Timer1->start();
  if (std::exchange(focusComesBack_, false)) return;
  inconsistentDate();
}

void frmDocument::cmx_LostFocus() {
  Timer1->stop();
  if (ownBoxes_ > 0) focusComesBack_ = true;
}

void frmDocument::cmx_ModifiedChange() { DocumentChanged(cmx->Modified()); }

void frmDocument::cmx_RClick(const QPoint& globalPosition, bool* handled) {
  Frame* main = frame();
  if (!main) return;
  *handled = true;
  main->showEditPopup(globalPosition);
}

void frmDocument::showTemplateState(bool afterTyping) {
  Frame* main = frame();
  if (!main) return;
  main->setTemplatePanel(shared_->language > 0 && main->isTemplateAtCaret(afterTyping));
  main->refreshToolbar();
}

void frmDocument::cmx_Return() {
  if (gBusy()) return;
  RowAndCol();
  showTemplateState(true);
}

void frmDocument::cmx_Typed() {
  if (!gBusy()) showTemplateState(true);
}

void frmDocument::cmx_SelChange() {
  if (gBusy()) return;
  RowAndCol();
  showTemplateState(false);   // moving the caret over an old hot key with two dots must not expand it
}

void frmDocument::cmx_PropsChange() {
  if (!cmx->Language().isEmpty()) SetLanguage(languages().GetIndex(cmx->Language()));
  CMXRegistry::storeOptions(*cmx);
  Frame* main = frame();
  if (!main) return;
  for (frmDocument* document : main->documents())   // a changed option applies to all windows
    if (document != this) CMXRegistry::applyTo(*document->cmx);
}

void frmDocument::Timer1_Timer() {
  Frame* main = frame();
  if (!main || !main->isMinimised()) inconsistentDate();
}

void frmDocument::resizeEvent(QResizeEvent*) { cmx->setGeometry(0, 0, width(), height()); }

bool frmDocument::hasAgreedToClose() const {
  return closeAsked_ && (!cmx->Modified() || closeAskedAt_ == cmx->model()->document().revision());
}

bool frmDocument::allAgreed(const frmDocument* but) const {
  return std::ranges::all_of(shared_->windows, [but](const frmDocument* window) {
    return window == but || window->closed_ || window->hasAgreedToClose();
  });
}

void frmDocument::withdrawClose() { closeAsked_ = shared_->leftInJournal = false; }

bool frmDocument::closingAsks() const {
  return cmx->Modified() && !shared_->leftInJournal && !hasAgreedToClose() && !CurrentFileTitle().isEmpty();
}

void frmDocument::letGo() {
  closeAsked_ = true;
  closeAskedAt_ = cmx->model()->document().revision();
}

bool frmDocument::agreeToClose() {
  if (hasAgreedToClose()) return true;
  const bool last = allAgreed(this);   // other windows of the text close without a question
  closeAsked_ = shared_->leftInJournal || CurrentFileTitle().isEmpty() || !last || !CancelSaveFile();
  closeAskedAt_ = cmx->model()->document().revision();
  return closeAsked_;
}

void frmDocument::closeEvent(QCloseEvent* event) {
  if (!agreeToClose()) {
    event->ignore();
    return;
  }
  event->accept();
  Timer1->stop();
  closed_ = true;
  // The user has agreed to lose unsaved changes.
  if (shared_->recovery && !shared_->leftInJournal && std::ranges::all_of(shared_->windows, &frmDocument::closed_))
    shared_->recovery->discard();
  Frame* main = frame();
  if (!main || CurrentFileTitle().isEmpty()) return;
  main->rememberDocumentState(windowStateOf(parentWidget() ? *parentWidget() : *this));
  main->documentClosing(this);
  main->refreshWindowMenu();
}

// ---- languages, comments, words

void frmDocument::SetLanguage(int index) {
  ucCM& manager = languages();
  if (index < 0 || index > manager.Languages()->Count()) index = 0;
  manager.setListLanguage(index);
  shared_->language = index;
  if (index == 0) {
    cmx->setLanguage(QString());
  } else {
    const QString name = manager.Language()->Name;
    const bool bound = cmx->setLanguage(name);
    shared_->lineComment = manager.Comment();
    shared_->blockStart = manager.MultiCommentStart();
    shared_->blockEnd = manager.MultiCommentEnd();
    if (!bound) {
      const OwnBox box(*this);
      MsgBox(tr("Language Definition ") + name + tr(" Contains error : Please check that multi-line comments match"), {},
             Icon::exclamation);
    }
  }
  frmRegistry::instance().CommandstoMenu();
}

void frmDocument::chooseLanguage(int index) {
  SetLanguage(index);
  shared_->languageIsChosen = true;
}

bool frmDocument::LanguageIsChosen() const { return shared_->languageIsChosen; }

namespace {

// Makes at most one edit in each selected line, as `editOf` returns it, as one undo step. A selection that starts at column 0 still
// covers whole lines afterwards. Only blanks may stand before an edit, and it changes the length of the line by `by` characters.
template <class EditOf>
void editLines(CodeMax& control, const QString& what, qint64 by, EditOf editOf) {
  const LineRange lines = control.editor().selectedLines(LineAtEnd::included);
  CmRange selection = control.GetSel(false);
  const text::LineNo first(lines.first), last(lines.end - 1);
  text::Document& document = control.model()->document();
  const text::Snapshot text = document.snapshot();
  const std::uint64_t revision = document.revision();
  std::vector<text::Edit> edits;
  const auto work = [&](text::SearchControl& progress) {
    text::LineReader reader(text, first);
    std::string_view line;
    for (text::LineNo at = first; at <= last && !progress.cancel && reader.next(&line); ++at) {
      progress.bytesDone = reader.start() - text.lineStart(first);
      if (std::optional<text::Edit> edit = editOf(line, reader.start())) edits.push_back(std::move(*edit));
    }
    if (progress.cancel) edits.clear();
  };
  LongWork::run(control, text.lineEnd(last) - text.lineStart(first), work, what, true);
  if (edits.empty() || document.revision() != revision) return;
  const bool keepStart = !selection.IsEmpty();
  const auto move = [&](qint64 line, qint64& column) {
    for (const text::Edit* edit : {&edits.front(), &edits.back()}) {
      if (text.lineAt(edit->range.begin).value != line) continue;
      const qint64 from = edit->range.begin - text.lineStart(text::LineNo(line));
      if (column >= from && !(keepStart && column == 0)) column = std::max(from, column + by);
      return;
    }
  };
  move(selection.StartLineNo, selection.StartColNo);
  move(selection.EndLineNo, selection.EndColNo);
  const EditBlock block(control);
  document.apply(edits, control.editor().selection());
  control.SetSel(selection);
}

}   // namespace

void frmDocument::CommentBlock() {
  const QString& token = shared_->lineComment;
  if (token.isEmpty() || cmx->ReadOnly()) return;
  editLines(*cmx, tr("Commenting the lines"), token.size(), [mark = fromQString(token)](std::string_view, text::ByteOffset start) {
    return std::optional(text::Edit{{start, start}, mark});
  });
}

void frmDocument::UnCommentBlock() {
  const QString& token = shared_->lineComment;
  if (token.isEmpty() || cmx->ReadOnly()) return;
  const auto editOf = [mark = fromQString(token)](std::string_view line, text::ByteOffset start) -> std::optional<text::Edit> {
    const std::size_t code = std::min(line.find_first_not_of(" \t"), line.size());
    const std::size_t at = line.substr(0, code + mark.size()).find(mark);   // the mark itself may begin with a blank
    if (at == std::string_view::npos) return std::nullopt;
    const text::ByteOffset begin = start + std::int64_t(at);
    return text::Edit{{begin, begin + std::int64_t(mark.size())}, {}};
  };
  editLines(*cmx, tr("Uncommenting the lines"), -token.size(), editOf);
}

QString frmDocument::GetCurrentWord() const { return cmx->HasSelection() ? cmx->SelText() : cmx->CurrentWord(); }
int frmDocument::GetCurrentWordLength() const { return static_cast<int>(GetCurrentWord().size()); }
bool frmDocument::isSelection() const { return !cmx->GetSel(true).IsEmpty(); }
CmPosition frmDocument::CurrentPosition() const {
  const CmRange selection = cmx->GetSel(false);
  return {selection.EndLineNo, selection.EndColNo};
}
