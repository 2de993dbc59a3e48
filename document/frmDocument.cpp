#include "document/frmDocument.h"

#include <QApplication>
#include <QCloseEvent>
#include <QPointer>
#include <algorithm>
#include <vector>

#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "control/edit/Carets.h"
#include "document/CMXRegistry.h"
#include "document/Frame.h"
#include "document/Languages.h"
#include "document/LineComments.h"
#include "document/frmDocumentShared.h"
#include "document/frmRegistry.h"
#include "language/ucCM.h"
#include "text/line/LineEnds.h"

namespace {

constexpr int kWatchMs = 4000, kBreaksLookMs = 300;
int windowStateOf(const QWidget& window) {
  return window.isMinimized() ? windowstate::kMinimised : window.isMaximized() ? windowstate::kMaximised : windowstate::kNormal;
}

}   // namespace

frmDocument::frmDocument(QWidget* parent)
    : QWidget(parent), cmx(new CodeMax(this)), Timer1(new QTimer(this)), shared_(std::make_shared<Shared>()) {
  setUp();
  beginJournal();
  QTimer* look = &shared_->breaksLook;
  look->setSingleShot(true);
  look->setInterval(kBreaksLookMs);
  const auto lookNow = [shared = shared_.get(), model = cmx->model().get()] {
    shared->mixedBreaks = text::lineEndsOf(model->snapshot(), Shared::kBreaksLook) == text::LineEnds::mixed;
    for (frmDocument* window : shared->windows) window->showLineEnds();
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
  connect(cmx->model().get(), &TextModel::lineEndsChanged, this, &frmDocument::showLineEnds);
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

bool frmDocument::isGuarded() const { return shared_->guarded; }

bool frmDocument::isActive() const { return frame() && frame()->activeDocument() == this; }

// The path takes the place of a message; that of a document that is not active stays away.
void frmDocument::showFile(const QString& path) {
  SetStatusText({});
  if (isActive()) frame()->setPanel(1, nameForDisplay(path));
}

void frmDocument::showLineEnds() {
  if (isActive()) frame()->setUnixPanel(!cmx->EnableCRLF(), shared_->mixedBreaks);
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
  if (!isActive()) return;
  const CmRange selection = cmx->GetSel(false);
  QString place = QString::number(selection.EndLineNo + 1) + u',' + QString::number(selection.EndColNo);
  if (carets::several(cmx->editor())) place += u' ' + tr("(%1 carets)").arg(carets::count(cmx->editor()));
  frame()->setPanel(2, place);
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
  // Later: the focus comes while the windows change, and a question would hold them there, with the text of another document in view.
  QTimer::singleShot(0, this, [this] {
    if (Timer1->isActive()) inconsistentDate();
  });
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
  if (!isActive()) return;
  Frame* main = frame();
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
  const QPointer<frmDocument> alive = this;
  if (!hasAgreedToClose()) noteLostFiles({this});
  if (!alive) return;
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

void frmDocument::CommentBlock() { commentLines(*cmx, shared_->lineComment); }
void frmDocument::UnCommentBlock() { uncommentLines(*cmx, shared_->lineComment); }

QString frmDocument::GetCurrentWord() const { return cmx->HasSelection() ? cmx->SelText() : cmx->CurrentWord(); }
int frmDocument::GetCurrentWordLength() const { return static_cast<int>(GetCurrentWord().size()); }
bool frmDocument::isSelection() const { return !cmx->GetSel(true).IsEmpty(); }
CmPosition frmDocument::CurrentPosition() const {
  const CmRange selection = cmx->GetSel(false);
  return {selection.EndLineNo, selection.EndColNo};
}
