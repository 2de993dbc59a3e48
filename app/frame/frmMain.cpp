#include "app/frame/frmMain.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMimeData>
#include <QTimer>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

#include "app/boxes/frmUnsaved.h"
#include "app/folder/FolderParts.h"
#include "app/frame/DocumentTabs.h"
#include "app/frame/FrameMenus.h"
#include "app/frame/LateDocument.h"
#include "app/frame/StatusPanels.h"
#include "app/look/Icons.h"
#include "app/places/Bookmarks.h"
#include "app/places/Places.h"
#include "app/start/mGlobals.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "change/LineDialogs.h"
#include "control/keys/KeyMacro.h"
#include "document/Languages.h"
#include "document/Recovery.h"
#include "document/frmDocument.h"
#include "document/frmLog.h"
#include "language/editor/frmDefinitions.h"
#include "language/ucCM.h"
#include "settings/modRegistry.h"

namespace {

constexpr int kLeastLines = 4;   // the docks leave at least this room to the text

}   // namespace

frmMain::frmMain() : lineDialogs_(std::make_unique<LineDialogs>()) {
  setObjectName(QStringLiteral("frmMain"));
  resize(1000, 720);
  setAcceptDrops(true);

  auto* centre = new QWidget(this);
  auto* layout = new QVBoxLayout(centre);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  tabs_ = new DocumentTabs(centre);
  mdi_ = new QMdiArea(centre);
  mdi_->setObjectName(QStringLiteral("documents"));
  mdi_->setActivationOrder(QMdiArea::ActivationHistoryOrder);
  mdi_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  mdi_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  mdi_->setMinimumHeight(fontMetrics().lineSpacing() * kLeastLines);
  layout->addWidget(tabs_);
  layout->addWidget(mdi_, 1);
  setCentralWidget(centre);

  panels_ = new StatusPanels(this);
  setStatusBar(panels_);
  setStatusSink([panels = QPointer<StatusPanels>(panels_)](const QString& text) {
    if (panels) panels->setText(text);
  });
  setReportSink([this](const QString& line) { log()->AppendLog(line + QStringLiteral("\r\n")); });
  folders_ = new FolderParts(*this);
  menus_ = new FrameMenus(*this);
  places_ = std::make_unique<Places>(*this);
  Bookmarks::of(*this);   // follows the documents from the first one on
  addToolBar(menus_->toolBar());
  for (const QString& name : {QStringLiteral("mnuViewStatusBar"), QStringLiteral("mnuViewToolbar"), QStringLiteral("mnuViewTabs")})
    if (QAction* action = menus_->action(name)) action->setChecked(true);

  connect(mdi_, &QMdiArea::subWindowActivated, this, &frmMain::mdiActivated);
  connect(tabs_, &DocumentTabs::chosen, this, &frmMain::showEntry);
  connect(tabs_, &DocumentTabs::closeWanted, this, &frmMain::closeEntry);
  connect(this, &frmMain::fileRenamed, this, &frmMain::followRenamed);
  connect(tabs_, &DocumentTabs::menuWanted, this, &frmMain::showTabMenu);
  connect(tabs_, &DocumentTabs::newWanted, this, &frmMain::mnuFileNew_Click);
  connect(panels_, &StatusPanels::clicked, this, &frmMain::panelClicked);
  connect(QApplication::clipboard(), &QClipboard::dataChanged, this, &frmMain::lookAtClipboard);
  keyMacros().onRecording = [this](const QString& tells) {
    panels_->setRecording(keyMacros().recording());
    panels_->setText(tells);
  };
  clipboardHasText_ = true;   // asked of the desktop only after a change: asking at start is slow
  setFrame(this);
  SetupMenus();
}

frmMain::~frmMain() {
  places_.reset();
  frmRegistry::instance().forgetFrame();
  setStatusSink({});
  setReportSink({});
  keyMacros().onRecording = {};
  // While the base class destroys the sub-windows they emit signals; this object is not a frame any more by then.
  for (frmDocument* document : std::as_const(documents_)) {
    document->disconnect(this);
    if (QMdiSubWindow* window = windowOf(document)) window->disconnect(this);
  }
  if (logDock_) logDock_->disconnect(this);
  disconnect(mdi_, nullptr, this, nullptr);
  setFrame(nullptr);
}

// ---- what documents ask

frmDocument* frmMain::activeDocument() { return active_; }
QList<frmDocument*> frmMain::documents() { return documents_; }

void frmMain::activate(frmDocument* document) {
  QMdiSubWindow* window = windowOf(document);
  if (!window) return;
  if (window->isMinimized()) window->showNormal();
  mdi_->setActiveSubWindow(window);
  scrollTo(*window);
  active_ = document;
  tabs_->setActive(document);
  document->cmx->setFocus();
}

void frmMain::setPanel(int panel, const QString& text) {
  if (panel == 1) panels_->setRest(text);
  else panels_->setPanel(Panel::rowAndColumn, text);
}
void frmMain::setUnixPanel(bool unixFile, bool mixed) {
  panels_->setPanel(Panel::lineEnds, mixed ? tr("Mixed") : unixFile ? QStringLiteral("Unix") : QStringLiteral("Win"));
}
void frmMain::showJournalWarning(const QString& reason) {
  panels_->setWarning(reason.isEmpty() ? QString() : tr("No recovery journal"),
                      tr("What you type would be lost if the program ended without warning: %1").arg(reason));
}
void frmMain::setTemplatePanel(bool on) { panels_->setTemplatePicture(on); }
void frmMain::setUndoRedo(bool, bool) { refreshToolbar(); }
bool frmMain::isMinimised() { return isMinimized(); }
void frmMain::rememberDocumentState(int windowState) {
  if (windowState != windowstate::kMinimised) documentState_ = windowState;   // the next document should not start minimised
}

void frmMain::showEditPopup(const QPoint& globalPosition) {
  refreshToolbar();
  menus_->makePopup(this)->exec(globalPosition);
}

void frmMain::documentClosing(frmDocument* document) {
  documents_.removeOne(document);
  const int tab = tabs_->tabOf(document);
  tabs_->remove(document);
  document->disconnect(this);
  document->cmx->disconnect(this);
  if (active_ == document) active_ = nullptr;
  if (documents_.isEmpty() && tabs_->count() > 0) QTimer::singleShot(0, this, [this, tab] { showTabFrom(tab); });
  if (documents_.isEmpty()) SetStatusText({});   // the text is about the document that closes
  mainFileClose();
  emit documentClosed(document);
}

void frmMain::refreshWindowMenu() { SetupMenus(); }   // the list itself is made when the menu is opened

void frmMain::mdiActivated(QMdiSubWindow* window) {
  auto* document = window ? qobject_cast<frmDocument*>(window->widget()) : nullptr;
  if (!document || !documents_.contains(document)) return;
  active_ = document;
  tabs_->setActive(document);
  workOn(document);
}

void frmMain::workOn(frmDocument* document) {
  document->focusWork();
  frmRegistry::instance().followFolder(document->CurrentFileDir());
  emit activeChanged();
}

QMdiSubWindow* frmMain::windowOf(const frmDocument* document) const {
  return document ? qobject_cast<QMdiSubWindow*>(document->parentWidget()) : nullptr;
}

void frmMain::adopt(frmDocument* document) {
  // The first window opens in the state that documents had last; further ones follow the active window.
  const QMdiSubWindow* front = mdi_->currentSubWindow();
  const bool maximised = documents_.isEmpty() || !front ? documentState_ == windowstate::kMaximised : front->isMaximized();
  QMdiSubWindow* window = mdi_->addSubWindow(document);
  window->setAttribute(Qt::WA_DeleteOnClose);
  window->setWindowIcon(icons::byName(QStringLiteral("text-x-generic")));
  // The keys belong to the frame's commands; a second short-cut would make both ambiguous.
  for (QAction* action : window->systemMenu()->actions()) action->setShortcuts(QList<QKeySequence>());
  LateDocument* late = opening_;
  if (!late && document->views() == 1) late = tabs_->lateOn(document->CurrentFileName());
  const bool placed = late && !late->place.isEmpty();
  // Also of a maximised window, for the time when it is restored.
  window->setGeometry(placed ? late->place.translated(-scrolledBy()) : normalPlace(documents_.size()));
  connect(window, &QMdiSubWindow::windowStateChanged, this, [this, window](Qt::WindowStates was, Qt::WindowStates now) {
    constexpr Qt::WindowStates elsewhere = Qt::WindowMaximized | Qt::WindowMinimized;
    if ((was & elsewhere) && !(now & elsewhere)) keepInside(*window);
  });
  documents_ << document;
  ++DocCount;
  tabs_->add(document);
  if (late) tabs_->replace(late, document);
  connect(document->cmx, &CodeMax::FilesDropped, this, &frmMain::MDIForm_OLEDragDrop);
  offerWords(document);
  connect(document->cmx, &CodeMax::PropsChange, this, [this, document] { optionsChanged(*document->cmx); });
  connect(document->cmx, &CodeMax::Note, this, [this] { refreshToolbar(); });   // an option may have changed
  connect(document->cmx, &CodeMax::OvertypeChange, this, [this] { refreshToolbar(); });
  if (maximised) window->showMaximized();
  else window->show();
  activate(document);
  workOn(document);
  emit documentOpened(document);
}

// ---- end of the frame

bool frmMain::agreeToEnd() {
  keepTexts();
  return agreeToClose(documents());
}

void frmMain::keepTexts() {
  if (!keepsUnsaved) return;
  frmDocument::noteLostFiles(documents());   // these are unsaved too
  if (RecoverySession* session = RecoverySession::current()) session->holdAll();
  for (frmDocument* document : documents()) document->leaveInJournal();
}

bool frmMain::agreeToClose(const QList<frmDocument*>& going) {
  const QList<QPointer<frmDocument>> all(going.begin(), going.end());
  frmDocument::noteLostFiles(going);
  bool agreed = !all.contains(nullptr) && askAboutSeveral(going);
  for (const auto& document : all) agreed = agreed && document && document->agreeToClose();
  if (agreed) return true;
  for (const auto& document : all)
    if (document) document->withdrawClose();
  return false;
}

bool frmMain::askAboutSeveral(const QList<frmDocument*>& going) {
  QList<frmDocument*> changed;   // one window of each text that would be closed
  for (frmDocument* document : going) {
    const auto shows = [&](const frmDocument* other) { return other->cmx->model() == document->cmx->model(); };
    if (document->closingAsks() && std::ranges::none_of(changed, shows) && std::ranges::count_if(going, shows) == document->views())
      changed << document;
  }
  if (changed.size() < 2) return true;   // each document asks itself
  const QList<QPointer<frmDocument>> texts(changed.begin(), changed.end());
  frmUnsaved box(*this, changed);
  const ModalGuard guard;
  if (box.exec() != QDialog::Accepted) return false;
  for (int i = 0; i < texts.size(); ++i) {
    bool ok = true;
    if (!texts[i]) return false;
    if (!box.isToBeSaved(i)) {
      for (frmDocument* document : documents())
        if (document->cmx->model() == texts[i]->cmx->model()) document->letGo();
    } else {
      activate(texts[i]);
      mainFileSave(*texts[i], ok);
    }
    if (!ok) return false;
  }
  return true;
}

void frmMain::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::PaletteChange || !mdi_) return;
  mdi_->setBackground(palette().brush(QPalette::Dark));
  for (QMdiSubWindow* window : mdi_->subWindowList()) window->setWindowIcon(window->windowIcon());   // repainted in its new colours
}

void frmMain::closeEvent(QCloseEvent* event) {
  if (unloaded_) return event->accept();
  if (isDialogUp() || !closeDefinitions() || !agreeToEnd()) return event->ignore();
  unload();
  event->accept();
}

bool frmMain::endFromOutside(int patienceMs) {
  if (unloaded_) return true;
  frmDocument::noteLostFiles(documents());   // their texts are nowhere else
  if (RecoverySession* session = RecoverySession::current()) session->holdAll(patienceMs);
  bool ask = definitions_ && definitions_->isVisible() && definitions_->isChanged();
  for (const frmDocument* document : documents()) ask = ask || !document->mayEnd();
  if (ask && isDialogUp()) return false;
  for (frmDocument* document : documents()) document->leaveInJournal();
  if (ask && !(closeDefinitions() && agreeToEnd())) {
    for (frmDocument* document : documents()) document->withdrawClose();
    return false;
  }
  for (frmDocument* document : documents()) document->agreeToClose();   // nothing is left to be asked: none asks while it closes
  unload();
  return true;
}

void frmMain::unload() {
  emit closing(true);
  closeAgreed({documents_.begin(), documents_.end()});
  MDIForm_Unload();
}

void frmMain::MDIForm_Unload() {
  if (unloaded_) return;
  unloaded_ = true;
  saveLogProfile();
  folders_->save();
  emit ended();
}

// ---- files from elsewhere

void frmMain::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void frmMain::dropEvent(QDropEvent* event) {
  QStringList files;
  for (const QUrl& url : event->mimeData()->urls())
    if (url.isLocalFile()) files << localFile(url);
  event->acceptProposedAction();
  activateWindow();
  MDIForm_OLEDragDrop(files);
}
