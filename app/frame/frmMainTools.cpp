// The main frame's services at the caret, the Custom menu, the log and the definitions editor.
#include <QDockWidget>
#include <QTimer>
#include <algorithm>

#include "app/frame/FrameMenus.h"
#include "app/frame/KeyActions.h"
#include "app/frame/frmMain.h"
#include "app/start/mGlobals.h"
#include "base/Program.h"
#include "control/complete/Completer.h"
#include "control/complete/TextWords.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "document/frmLog.h"
#include "language/CaretWords.h"
#include "language/HotWords.h"
#include "language/editor/frmDefinitions.h"
#include "language/ucCM.h"
#include "script/frmCommand.h"
#include "script/mCMXParser.h"

using keyactions::expandTemplateText;

// ---- word lists and templates

void frmMain::isInWordList(bool& found) {
  frmDocument* document = activeDocument();
  found = document && document->LanguageIndex() > 0 && ::isInWordList(*document->cmx, languages().Language().get());
}

void frmMain::ProcessWordList(bool previous) {
  if (frmDocument* document = activeDocument())
    ::ProcessWordList(*document->cmx, languages().Language().get(), WordListIndex, previous);
}

void frmMain::isTemplate(bool& found, bool afterTyping) {
  frmDocument* document = activeDocument();
  found = document && ::isTemplate(*document->cmx, languages(), document->LanguageIndex(), afterTyping, expandTemplateText);
}

bool frmMain::isTemplateAtCaret(bool afterTyping) {
  bool found = false;
  isTemplate(found, afterTyping);
  return found;
}

void frmMain::mHelpExpandTemplate_Click() {
  frmDocument* document = activeDocument();
  if (!document) return;
  ExpandTemplate(*document->cmx, languages(), document->LanguageIndex(), expandTemplateText);
  document->cmx->setFocus();
}

void frmMain::mHelpNextField_Click() {
  if (frmDocument* document = activeDocument()) NextField(*document->cmx);
}

void frmMain::offerWords(frmDocument* document) {
  auto* completer = new Completer(*document->cmx);
  completer->add(std::make_unique<HotWords>(
      *document->cmx, languages(), [document] { return document->LanguageIndex(); }, expandTemplateText));
  completer->add(std::make_unique<OtherWords>([this] {
    std::vector<TextModel*> texts;
    for (frmDocument* each : documents_) texts.push_back(each->cmx->model().get());
    return texts;
  }));
}

// ---- Custom menu

void frmMain::mCustom_Click(int index) {
  frmDocument* document = activeDocument();
  const auto language = languages().Language();
  if (!document || !language || index < 0 || index >= language->cMacros()->Count()) return;
  mCMXParser::Run(languages().ListLanguage(), index + 1, language->cMacros()->Item(index + 1)->CommandString);
}

void frmMain::mToolsCommand_Click() {
  if (!command_) command_ = new frmCommand(this);
  command_->show();
  command_->raise();
  command_->activateWindow();
}

// ---- definitions editor

frmDefinitions& frmMain::definitions() {
  if (!definitions_) {
    definitions_ = new frmDefinitions(languages(), gWebHome(), this);
    definitions_->setAttribute(Qt::WA_DeleteOnClose);
    connect(definitions_, &frmDefinitions::LanguagesChanged, this, [] { ReloadLanguages(); });
    definitions_->LoadDefiner();
  }
  definitions_->show();
  definitions_->raise();
  definitions_->activateWindow();
  return *definitions_;
}

void frmMain::mToolsDefinitions_Click() { definitions(); }

void frmMain::mCustomEdit_Click() { definitions().ShowMacro(languages().ListLanguage(), 0, {}); }

void frmMain::showMacro(int language, int macro, const QString& report) { definitions().ShowMacro(language, macro, report); }

bool frmMain::closeDefinitions() { return !definitions_ || !definitions_->isVisible() || definitions_->close(); }

// ---- log

frmLog* frmMain::log() {
  if (!log_) {
    logDock_ = new QDockWidget(tr("Log"), this);
    logDock_->setObjectName(QStringLiteral("logDock"));
    logDock_->setAllowedAreas(Qt::AllDockWidgetAreas);
    log_ = new frmLog(logDock_);
    const QSize size = log_->size().expandedTo(log_->minimumSizeHint());   // as its profile says
    const frmRegistry::LogDock profile = frmRegistry::instance().GetLogDock();
    logDock_->setWidget(log_);
    addDockWidget(profile.area, logDock_, Qt::Vertical);   // not beside the find bar
    logDock_->hide();
    if (profile.floating) {
      logDock_->setFloating(true);
      frmRegistry::instance().GetLogWindowProfile(*logDock_);
    }
    // A dock takes a size only after its layout, so the size is set when it is first shown.
    connect(logDock_, &QDockWidget::visibilityChanged, log_, [this, size](bool visible) {
      if (!visible || logDock_->isFloating() || logDock_->property("placed").toBool()) return;
      logDock_->setProperty("placed", true);
      QTimer::singleShot(0, log_, [this, size] {
        const int title = logDock_->height() - log_->height();
        // The stored size may come from a larger window or another scale: the text keeps half.
        resizeDocks({logDock_}, {std::min(size.height() + title, height() / 2)}, Qt::Vertical);
        resizeDocks({logDock_}, {std::min(size.width(), width() / 2)}, Qt::Horizontal);
      });
    });
    connect(logDock_, &QDockWidget::visibilityChanged, this, [this] { refreshToolbar(); });
    connect(log_, &frmLog::closeAsked, logDock_, &QDockWidget::hide);
  }
  return log_;
}

void frmMain::showLog() {
  log();
  logDock_->show();
  logDock_->raise();
}

void frmMain::restoreLog() {
  if (frmRegistry::instance().GetLogDock().shown) showLog();
}

void frmMain::saveLogProfile() {
  if (!log_) return;
  frmRegistry::instance().SaveLogDock({dockWidgetArea(logDock_), logDock_->isFloating(), !logDock_->isHidden()});
  log_->Form_Unload();
}

void frmMain::toggleLog() {
  log();
  if (menus().hidesDock(*logDock_)) return menus().hideDock(*logDock_);
  showLog();
  log_->cmx->setFocus(Qt::OtherFocusReason);
}

bool frmMain::logIsShown() const { return logDock_ && !logDock_->isHidden(); }
