// What menus, tool bar and status bar show of the active document, and the options of the editor.
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMimeData>
#include <QToolBar>
#include <QToolButton>

#include "app/frame/DocumentTabs.h"
#include "app/frame/FrameMenus.h"
#include "app/frame/StatusPanels.h"
#include "app/frame/frmMain.h"
#include "app/look/Look.h"
#include "app/start/mGlobals.h"
#include "base/Strings.h"
#include "control/keys/KeyCommands.h"
#include "control/keys/KeyMacro.h"
#include "document/CMXRegistry.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "document/frmLog.h"
#include "language/ucCM.h"

void frmMain::optionsChanged(const CodeMax& of) {
  menus_->refreshKeys();
  if (log_) CMXRegistry::applyLook(*log_->cmx);
  showLook(ControlOptions::of(of).look());
  refreshToolbar();
}

void frmMain::editorOptions() {
  if (frmDocument* document = activeDocument()) return document->cmx->ExecuteProperties();
  CodeMax stand(this);   // the options apply to all documents; without a document a temporary control holds them
  stand.hide();
  CMXRegistry::applyTo(stand);
  connect(&stand, &CodeMax::PropsChange, this, [this, &stand] {
    CMXRegistry::storeOptions(stand);
    optionsChanged(stand);
  });
  stand.ExecuteProperties();
}

bool frmMain::runEditCommand(CommandNumber id, const QVariant& argument) {
  frmDocument* document = activeDocument();
  if (!document) return false;
  document->cmx->setFocus();
  const bool known = document->cmx->ExecuteCmd(id, argument);
  refreshToolbar();
  return known;
}

unsigned frmMain::presentFacts() {
  unsigned facts = 0;
  const auto when = [&](bool holds, Fact fact) {
    if (holds) facts |= fact;
  };
  when(clipboardHasText_, kClipboard);
  when(tabs_->count() > 1, kSeveral);
  when(!gWebHome().isEmpty(), kWeb);
  when(anyModified_, kAnyModified);
  frmDocument* document = activeDocument();
  if (!document) return facts;
  const CodeMax& text = *document->cmx;
  facts |= kDocument;
  when(!text.ReadOnly(), kWritable);
  when(text.AnySelection(), kSelection);
  when(text.CanUndo(), kUndo);
  when(text.CanRedo(), kRedo);
  when(isUnsaved(*document), kUnsaved);
  when(document->DocumentHasName(), kNamed);
  when(document->LanguageIndex() > 0, kLanguage);
  when(!document->LineComment().isEmpty(), kLineComment);
  bool found = false;
  isInWordList(found);
  when(found, kWordList);
  isTemplate(found, false);
  when(found, kTemplate);
  return facts;
}

void frmMain::refreshToolbar() {
  menus_->refresh(presentFacts());
  frmDocument* document = activeDocument();
  if (!document) {
    for (const Panel panel : {Panel::rowAndColumn, Panel::lineEnds, Panel::encoding, Panel::language, Panel::overtype})
      panels_->setPanel(panel, {});
    panels_->setTemplatePicture(false);
    panels_->setRest({});
    panels_->settle();
    return;
  }
  const text::FileFormat format = document->cmx->fileFormat();
  QString encoding = QString::fromLatin1(text::name(format.encoding));
  if (format.bom) encoding += tr(" BOM");
  panels_->setPanel(Panel::encoding, encoding);
  panels_->setPanel(Panel::language, document->cmx->Language().isEmpty() ? tr("No language") : document->cmx->Language());
  QString typing = document->cmx->ReadOnly() ? tr("Read only") : document->cmx->overtype() ? tr("OVR") : tr("INS");
  if (columnMode(document->cmx->editor())) typing += tr(" COL");
  panels_->setPanel(Panel::overtype, typing);
  const QString& name = document->CurrentFileName();
  panels_->setRest(nameForDisplay(name.isEmpty() ? document->CurrentFileTitle() : name));
  panels_->settle();
}

void frmMain::SetupMenus() {
  if (!activeDocument() && !documents_.isEmpty()) active_ = documents_.last();
  frmDocument* document = activeDocument();
  if (!document) {
    languages().setListLanguage(0);
    frmRegistry::instance().CommandstoMenu();
    frmRegistry::instance().SetHelpMenu();
  }
  frmRegistry::instance().SetupMenusModified(document && document->DocumentModified());
  refreshToolbar();
}

void frmMain::SetupToolStatus() {
  menus_->toolBar()->setVisible(isChecked(QStringLiteral("mnuViewToolbar")));
  panels_->setVisible(isChecked(QStringLiteral("mnuViewStatusBar")));
  tabs_->setVisible(isChecked(QStringLiteral("mnuViewTabs")));
}

void frmMain::lookAtClipboard() {
  const QMimeData* data = QApplication::clipboard()->mimeData();
  clipboardHasText_ = data && data->hasText();
  refreshToolbar();
}

bool frmMain::isChecked(const QString& menuName) {
  const QAction* action = menus_->action(menuName);
  return action && action->isChecked();
}
void frmMain::setChecked(const QString& menuName, bool on) {
  if (QAction* action = menus_->action(menuName)) action->setChecked(on);
}
void frmMain::setMenu(const QString& menuName, int index, const QString& caption, bool visible) {
  menus_->setCaption(menuName, index, caption, visible);
}
void frmMain::setMenuEnabled(const QString& menuName, bool on) {
  if (QAction* action = menus_->action(menuName)) action->setEnabled(on);
}
void frmMain::setModifiedFacts(bool, bool any) {
  anyModified_ = any;
  refreshToolbar();
}

void frmMain::panelClicked(Panel panel) {
  const auto pop = [&](void (frmMain::*fill)(QMenu&)) {
    if (!activeDocument()) return;
    QMenu menu(this);
    (this->*fill)(menu);
    const QToolButton* button = panels_->button(panel);
    menu.exec(button->mapToGlobal(QPoint(0, -menu.sizeHint().height())));
  };
  switch (panel) {
    case Panel::recording: keyMacros().toggleRecording(); break;
    case Panel::rowAndColumn: goToLine(); break;
    case Panel::lineEnds: pop(&frmMain::fillLineEnds); break;
    case Panel::templates:
      if (QAction* expand = menus_->action(QStringLiteral("mHelpExpandTemplate"))) expand->trigger();
      break;
    case Panel::encoding: pop(&frmMain::fillEncodings); break;
    case Panel::language: pop(&frmMain::fillLanguages); break;
    case Panel::overtype:
      if (activeDocument() && activeDocument()->cmx->ReadOnly()) menus_->action(QStringLiteral("mEditReadOnly"))->trigger();
      else runEditCommand(Cmd::TOGGLEOVERTYPE);
      break;
  }
}
