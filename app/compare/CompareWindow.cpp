#include "app/compare/CompareWindow.h"

#include <QAction>
#include <QCloseEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>
#include <QTimer>

#include "app/frame/FrameMenus.h"
#include "app/frame/frmMain.h"
#include "app/look/Icons.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/QStringBytes.h"
#include "control/keys/KeyMap.h"
#include "control/options/ControlOptions.h"
#include "document/CMXRegistry.h"
#include "document/FileErrors.h"
#include "document/frmDocument.h"

using compare::kLeft;
using compare::kRight;
using compare::Side;

namespace {

const char* const kMenu = "mToolsCompare";

QString titleOf(const CompareSource& source) { return source.document ? source.document->Caption() : source.name; }

}   // namespace

CompareWindow::CompareWindow(frmMain& frame, const CompareSource& left, const CompareSource& right)
    : frame_(frame), sources_{left, right}, view_(new CompareView(makeText(left), makeText(right), this)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setObjectName(QStringLiteral("CompareWindow"));
  setWindowIcon(icons::application());
  setCentralWidget(view_);
  summary_ = new QLabel(this);
  summary_->setObjectName(QStringLiteral("summary"));
  summary_->setTextFormat(Qt::PlainText);
  statusBar()->addWidget(summary_, 1);
  statusBar()->setSizeGripEnabled(false);
  makeMenus();
  connect(view_, &CompareView::stateChanged, this, &CompareWindow::showState);
  for (const CompareSource& source : sources_)
    if (source.document) connect(source.document, &frmDocument::captionChanged, this, &CompareWindow::showNames);
  resize(frame.size().expandedTo({900, 500}));
  view_->activate(kLeft);
  for (const Side side : {kLeft, kRight})
    connect(&view_->text(side), &CodeMax::PropsChange, this, [this, text = &view_->text(side)] { storeOptions(*text); });
  showNames();
  showState();
}

void CompareWindow::useOptions() {
  const auto use = [](CodeMax& text) {
    CMXRegistry::applyTo(text);
    text.setHSplitter(false);   // both sides scroll together
    text.setVSplitter(false);
    text.setMayWrap(false);   // lines stand beside lines
  };
  for (const Side side : {kLeft, kRight}) use(view_->text(side));
  if (merge_) use(merge_->result());
}

// A document's window knows what follows from changed options.
void CompareWindow::storeOptions(const CodeMax& of) {
  const QList<frmDocument*> documents = frame_.documents();
  CodeMax stand(this);
  stand.hide();
  CodeMax& all = documents.isEmpty() ? stand : *documents.first()->cmx;
  CMXRegistry::applyTo(all);   // the options that this window does not have stay
  const bool across = all.HSplitter(), down = all.VSplitter();
  ControlOptions::of(of).applyTo(all);
  all.setHSplitter(across);
  all.setVSplitter(down);
  if (documents.isEmpty()) CMXRegistry::storeOptions(all);
  else emit all.PropsChange();
  useOptions();
}

void CompareWindow::refresh() {
  const QPointer<CompareWindow> alive = this;
  for (const Side side : {kLeft, kRight}) {
    if (!alive || !sources_[side].again) continue;
    const std::optional<text::LoadedFile> now = sources_[side].again();
    if (!alive || !now) return;
    if (!now->error.empty()) return tellOpenError(sources_[side].name, toQString(now->error));
    view_->text(side).model()->replaceAll(now->text, now->format);
  }
  view_->comparison().refresh();
}

CompareWindow::~CompareWindow() { view_->disconnect(this); }

CodeMax* CompareWindow::makeText(const CompareSource& source) {
  if (source.document) {
    auto* text = new CodeMax(*source.document->cmx, nullptr);
    CMXRegistry::applyTo(*text);
    return text;
  }
  auto* text = new CodeMax;
  CMXRegistry::applyTo(*text);
  text->model()->replaceAll(source.text, source.format);
  text->setLanguage(source.language);
  text->setReadOnly(true);
  return text;
}

frmDocument* CompareWindow::document(Side side) const { return sources_[side].document; }

bool CompareWindow::shows(const frmDocument* document) const {
  return document && (sources_[kLeft].document == document || sources_[kRight].document == document || result_ == document);
}

CodeMax& CompareWindow::active() { return merge_ ? merge_->result() : view_->text(view_->active()); }

frmDocument* CompareWindow::activeDocument() const { return result_ ? result_.data() : document(view_->active()); }

MergeView& CompareWindow::merge(frmDocument* result, const std::vector<text::MergeRegion>& regions,
                                const text::MergedText& merged) {
  result_ = result;
  auto* splitter = new QSplitter(Qt::Vertical, this);
  takeCentralWidget();
  splitter->addWidget(view_);
  merge_ = new MergeView(makeText({result, {}, {}, {}, {}, {}}), view_->text(kLeft).model()->snapshot(),
                         view_->text(kRight).model()->snapshot(), regions, merged);
  splitter->addWidget(merge_);
  splitter->setChildrenCollapsible(false);
  splitter->setSizes({1000, 1000});   // parts of what there is
  merge_->setMinimumHeight(4 * fontMetrics().lineSpacing());
  setCentralWidget(splitter);
  view_->show();
  connect(result, &frmDocument::captionChanged, this, &CompareWindow::showNames);
  connect(&merge_->result(), &CodeMax::SelChange, this, &CompareWindow::showState);
  connect(merge_, &MergeView::shown, this, [this](const text::MergeRegion& region) {
    view_->text(kRight).SetSel({region.rightBegin.value, 0, region.rightBegin.value, 0, false}, false);
    view_->text(kLeft).SetSel({region.leftBegin.value, 0, region.leftBegin.value, 0, false}, false);
    view_->showLine(kLeft, region.leftBegin.value);
  });
  met_ = true;
  showNames();
  showState();
  if (!merge_->step(1)) merge_->result().setFocus();
  return *merge_;
}

// The keys and the caption are those of the frame's menu; what it does concerns the texts of this window.
QAction* CompareWindow::mirror(const FrameCommand& row) {
  auto* action = new QAction(this);
  const QAction* original = frame_.menus().action(QString::fromLatin1(row.name));
  action->setObjectName(QString::fromLatin1(row.name));
  action->setText(original->text());
  action->setToolTip(original->toolTip());
  action->setIcon(original->icon());
  action->setShortcuts(original->shortcuts());
  action->setCheckable(row.checkable);
  action->setProperty(kNamedActionProperty, original->property(kNamedActionProperty));
  connect(action, &QAction::triggered, this, [this, &row] {
    if (!merge_ && (row.needs & (kUndo | kRedo))) view_->undo(row.command);
    else if (row.command) active().ExecuteCmd(row.command);
    else row.run(frame_);
  });
  actions_ << std::pair(&row, action);
  return action;
}

void CompareWindow::makeMenus() {
  QMenu* file = menuBar()->addMenu(tr("&File"));
  const auto own = [&](const char* name, const QString& caption, void (CompareWindow::*run)()) {
    QAction* action = mirror(*frameCommand(name));
    action->setText(caption);
    action->disconnect(this);
    connect(action, &QAction::triggered, this, run);
    file->addAction(action);
    return action;
  };
  own("mnuFileSave", tr("&Save"), &CompareWindow::save);
  own("mnuFileSaveAll", tr("Save &Both"), &CompareWindow::saveAll);
  file->addSeparator();
  QAction* close = file->addAction(tr("&Close"), this, [this] { this->close(); });
  close->setShortcuts(frame_.menus().action(QStringLiteral("mnuFileClose"))->shortcuts());
  const auto fill = [&](QMenu* menu, const char* of, bool commandsOnly) {
    int group = 0;
    QList<const FrameCommand*> rows;
    for (const FrameCommand* row : frameCommands())
      if (qstrcmp(row->menu, of) == 0 && !row->isMenu && row->elements == 0 && (row->command || !commandsOnly)) rows << row;
    std::stable_sort(rows.begin(), rows.end(), [](const auto* a, const auto* b) { return a->place < b->place; });
    for (const FrameCommand* row : std::as_const(rows)) {
      if (!commandsOnly && !(row->needs & kOthers)) continue;   // those that begin a comparison
      if (group != 0 && group != row->place / 100) menu->addSeparator();
      group = row->place / 100;
      menu->addAction(mirror(*row));
    }
  };
  fill(menuBar()->addMenu(tr("&Edit")), "mEdit", true);
  fill(menuBar()->addMenu(tr("&Compare")), kMenu, false);
}

void CompareWindow::showNames() {
  for (const Side side : {kLeft, kRight}) {
    const CompareSource& source = sources_[side];
    QString name = source.name;
    if (source.document) {
      const QString& path = source.document->CurrentFileName();
      name = nameForDisplay(path.isEmpty() ? source.document->CurrentFileTitle() : path) +
             (source.document->DocumentModified() ? QStringLiteral("*") : QString());
    }
    if (view_->text(side).ReadOnly()) name += tr(" (read only)");
    view_->setName(side, name);
  }
  if (result_) return setWindowTitle(tr("Merge: %1").arg(result_->Caption()).replace(u'[', u'('));
  setWindowTitle(tr("Compare %1 with %2").arg(titleOf(sources_[kLeft]), titleOf(sources_[kRight])).replace(u'[', u'('));
}

void CompareWindow::showState() {
  summary_->setText(view_->summary());
  for (const auto& [row, action] : actions_) {
    bool on = true;
    if (row->command) {
      CodeMax& text = !merge_ && (row->needs & (kUndo | kRedo)) ? view_->text(view_->undoSide()) : active();
      on = (!(row->needs & kWritable) || !text.ReadOnly()) && (!(row->needs & kSelection) || text.AnySelection()) &&
           (!(row->needs & kUndo) || text.CanUndo()) && (!(row->needs & kRedo) || text.CanRedo());
    } else if (row->needs & kOthers) {
      if (row->checked) action->setChecked(row->checked(frame_));
    }
    action->setEnabled(on);
  }
  const auto enable = [&](const char* name, bool on) {
    if (auto* action = findChild<QAction*>(QString::fromLatin1(name))) action->setEnabled(on);
  };
  const frmDocument* here = activeDocument();
  const auto unsaved = [](const frmDocument* document) { return document && frmMain::isUnsaved(*document); };
  enable("mnuFileSave", unsaved(here));
  enable("mnuFileSaveAll", unsaved(document(kLeft)) || unsaved(document(kRight)));
  enable("mCompareNext", view_->count() > 0);
  enable("mComparePrevious", view_->count() > 0);
  enable("mCompareToLeft", view_->canTakeOver(kRight));
  enable("mCompareToRight", view_->canTakeOver(kLeft));
  if (!met_ && isVisible() && view_->comparison().compared() && view_->count() > 0) {
    met_ = true;
    view_->showDifference(0);
  }
  emit stateChanged();
}

void CompareWindow::swapSides() {
  std::swap(sources_[kLeft], sources_[kRight]);
  view_->swapSides();
  showNames();
}

void CompareWindow::save() {
  bool ok = false;
  if (frmDocument* document = activeDocument()) frame_.mainFileSave(*document, ok);
  showState();
}

void CompareWindow::saveAll() {
  for (const Side side : {kLeft, kRight}) {
    bool ok = true;
    frmDocument* document = this->document(side);
    if (document && frmMain::isUnsaved(*document)) frame_.mainFileSave(*document, ok);
    if (!ok) break;
  }
  showState();
}

void CompareWindow::closeEvent(QCloseEvent* event) {
  if (mayClose && !mayClose()) return event->ignore();
  event->accept();
  view_->disconnect(this);   // what still goes on would show itself in a window that outlives its frame
  emit closed();
}

void CompareWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::ActivationChange || !isActiveWindow()) return;
  emit activated();
  useOptions();
  // Others may have changed the files meanwhile.
  QTimer::singleShot(0, this, [this] {
    for (const Side side : {kLeft, kRight})
      if (const QPointer<CompareWindow> alive = this; alive && isActiveWindow() && sources_[side].document)
        sources_[side].document->inconsistentDate();
  });
}
