#include "app/folder/FilesView.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>

#include "app/folder/FilesModel.h"
#include "app/folder/FolderParts.h"
#include "app/folder/FolderWatch.h"
#include "app/folder/WorkFolder.h"
#include "app/frame/DocumentTabs.h"
#include "app/frame/LateDocument.h"
#include "app/frame/frmMain.h"
#include "base/Background.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/QStringBytes.h"
#include "document/frmDocument.h"
#include "folder/Glob.h"

namespace {

constexpr int kSoonMs = 50, kTypingMs = 120;
constexpr std::size_t kMostFiltered = 2000;

// The files that a filter lets through: with "*" or "?" it is a mask, else parts of names as they are typed to go to a file.
std::vector<std::string> filtered(const folder::NameTable& names, const std::string& filter, std::size_t* total) {
  std::vector<std::string> paths;
  if (filter.find_first_of("*?") != std::string::npos) {
    const folder::Masks masks(filter);
    *total = 0;
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (!masks.fit(names.path(i))) continue;
      if (++*total <= kMostFiltered) paths.emplace_back(names.path(i));
    }
    return paths;
  }
  for (const auto& one :
       folder::rankNames({&names}, folder::parseNameQuery(filter), {}, filter.empty() ? names.size() : kMostFiltered, total))
    paths.emplace_back(names.path(one.index));
  return paths;
}

// The current row shows by its colour whether the tree has the keys.
class FilesTree : public QTreeView {
 public:
  using QTreeView::QTreeView;

 protected:
  void drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QStyleOptionViewItem row = option;
    if (!hasFocus()) {   // many desktops have one colour for both: it is taken out, as light as it was, so that text and icon stay readable
      const QColor active = row.palette.color(QPalette::Highlight);
      row.palette.setColor(QPalette::Highlight, QColor::fromHsl(active.hslHue(), active.hslSaturation() / 8, active.lightness()));
    }
    QTreeView::drawRow(painter, row, index);
  }
};

}   // namespace

FilesView::FilesView(frmMain& frame, WorkFolder& work, QWidget* parent)
    : QWidget(parent),
      frame_(frame),
      work_(work),
      title_(new QLabel(this)),
      menu_(new QToolButton(this)),
      filter_(new QLineEdit(this)),
      tree_(new FilesTree(this)),
      note_(new QLabel(this)),
      model_(new FilesModel(this)),
      watch_(new FolderWatch(this)) {
  setObjectName(QStringLiteral("files"));
  title_->setTextFormat(Qt::PlainText);
  title_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  menu_->setText(QStringLiteral("\u2261"));
  menu_->setAccessibleName(tr("Folder commands"));
  menu_->setToolTip(tr("Folder commands"));
  menu_->setPopupMode(QToolButton::InstantPopup);
  menu_->setAutoRaise(true);
  auto* commands = new QMenu(menu_);
  connect(commands, &QMenu::aboutToShow, this, [this, commands] {
    commands->clear();
    fillMenu(*commands);
  });
  menu_->setMenu(commands);
  filter_->setPlaceholderText(tr("Filter: parts of names, or *.sv"));
  filter_->setAccessibleName(tr("Filter"));
  filter_->setClearButtonEnabled(true);
  filter_->installEventFilter(this);
  tree_->setModel(model_);
  tree_->setHeaderHidden(true);
  tree_->setUniformRowHeights(true);
  tree_->setAccessibleName(tr("Files"));
  tree_->setContextMenuPolicy(Qt::CustomContextMenu);
  tree_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  tree_->setTextElideMode(Qt::ElideMiddle);
  tree_->setMinimumHeight(2 * fontMetrics().lineSpacing());   // else it would enlarge the frame on a low screen
  tree_->installEventFilter(this);
  note_->setTextFormat(Qt::PlainText);
  note_->setWordWrap(true);
  note_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  note_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  note_->hide();
  auto* top = new QHBoxLayout;
  top->addWidget(title_, 1);
  top->addWidget(menu_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(4, 2, 4, 4);
  layout->setSpacing(3);
  layout->addLayout(top);
  layout->addWidget(filter_);
  layout->addWidget(tree_, 1);
  layout->addWidget(note_);
  setFocusProxy(tree_);

  for (QTimer* timer : {&marks_, &watches_, &narrowing_}) timer->setSingleShot(true);
  marks_.setInterval(kSoonMs);
  watches_.setInterval(kSoonMs);
  narrowing_.setInterval(kTypingMs);
  connect(&marks_, &QTimer::timeout, this, &FilesView::markDocuments);
  connect(&watches_, &QTimer::timeout, this, &FilesView::watchOpenFolders);
  connect(&narrowing_, &QTimer::timeout, this, &FilesView::showTree);
  connect(filter_, &QLineEdit::textChanged, this, [this] { narrowing_.start(); });
  connect(&work_, &WorkFolder::changed, this, &FilesView::showRoot);
  connect(&work_, &WorkFolder::namesChanged, this, [this] {
    if (work_.kind() == WorkFolder::Kind::list || !filter_->text().trimmed().isEmpty()) showTree();
    showNotes();
  });
  connect(model_, &FilesModel::renameAsked, this, &FilesView::rename, Qt::QueuedConnection);   // when the field has gone
  connect(model_, &FilesModel::folderRead, this, [this](const QModelIndex& folder) {
    if (model_->isFixed()) return;
    for (int row = 0; row < model_->rowCount(folder); ++row) {   // as it was before the filter
      const QModelIndex inside = model_->index(row, 0, folder);
      if (model_->isFolder(inside) && expanded_.contains(model_->path(inside))) tree_->expand(inside);
    }
    if (const QModelIndex made = select_.isEmpty() ? QModelIndex() : model_->indexOf(select_); made.isValid()) {
      tree_->setCurrentIndex(made);
      select_.clear();
    }
    if (!tree_->currentIndex().isValid() && model_->rowCount() > 0) tree_->setCurrentIndex(model_->index(0, 0));
    watches_.start();
  });
  connect(tree_, &QTreeView::expanded, this, [this](const QModelIndex& folder) {
    if (model_->isFixed()) return;
    if (!expanded_.contains(model_->path(folder))) expanded_ << model_->path(folder);
    watches_.start();
  });
  connect(tree_, &QTreeView::collapsed, this, [this](const QModelIndex& folder) {
    if (model_->isFixed()) return;
    expanded_.removeAll(model_->path(folder));
    watches_.start();
  });
  connect(tree_, &QTreeView::doubleClicked, this, [this](const QModelIndex& index) {
    if (!model_->isFolder(index)) open(model_->path(index));
  });
  connect(tree_, &QWidget::customContextMenuRequested, this, &FilesView::showMenu);
  connect(watch_, &FolderWatch::changed, this, [this](const QString& folder) {
    model_->refresh({folder});
    work_.refresh();
  });
  connect(watch_, &FolderWatch::begun, this, [this](const QStringList& folders) { model_->refresh(folders); });
  connect(watch_, &FolderWatch::unwatched, this, [this](int folders) {
    unwatched_ = folders;
    showNotes();
  });
  connect(&frame_, &frmMain::documentOpened, this, [this](frmDocument* document) {
    connect(document, &frmDocument::captionChanged, this, [this] { marks_.start(); });
    marks_.start();
  });
  connect(&frame_, &frmMain::documentClosed, this, [this] { marks_.start(); });
  connect(&frame_, &frmMain::tabsChanged, this, [this] { marks_.start(); });
  connect(&frame_, &frmMain::fileNamed, this, [this](const QString& path) {
    model_->refresh({GetFileDir(path)});
    marks_.start();
  });
  for (frmDocument* document : frame_.documents())
    connect(document, &frmDocument::captionChanged, this, [this] { marks_.start(); });
  showRoot();
  markDocuments();
  work_.use();
}

QString FilesView::filter() const { return filter_->text(); }
void FilesView::setFilter(const QString& text) { filter_->setText(text); }
void FilesView::focusTree() { tree_->setFocus(Qt::OtherFocusReason); }

void FilesView::lookAtDisk() {
  model_->refresh();
  work_.refresh();
}

// ---- what is shown

void FilesView::showRoot() {
  const QString& root = work_.root();
  QString title = work_.kind() == WorkFolder::Kind::none ? tr("No folder is open") : plainForDisplay(work_.title(), 60);
  if (work_.kind() == WorkFolder::Kind::list && !work_.relativeToList())
    title = tr("%1 from %2").arg(title, plainForDisplay(GetFileTitle(root), 60));
  title_->setText(title);
  QString tip = plainForDisplay(root);
  if (work_.kind() == WorkFolder::Kind::list)
    tip = work_.relativeToList() ? tr("%1\nPaths count from the list").arg(plainForDisplay(work_.list()))
                                 : tr("%1\nPaths count from %2").arg(plainForDisplay(work_.list()), plainForDisplay(root));
  title_->setToolTip(QLatin1String("<p style='white-space:pre'>") + tip.toHtmlEscaped() + QLatin1String("</p>"));
  title_->setAccessibleName(tip.isEmpty() ? title_->text() : tip);
  if (root != shownRoot_) expanded_.clear();
  const bool same =
      root == shownRoot_ && work_.showsAll() == shownAll_ && !model_->isFixed() && work_.kind() != WorkFolder::Kind::list;
  shownRoot_ = root;
  shownAll_ = work_.showsAll();
  if (!same) showTree();
  showNotes();
}

void FilesView::showTree() {
  const std::string filter = fromQString(filter_->text().trimmed());
  const bool list = work_.kind() == WorkFolder::Kind::list;
  notShown_ = 0;
  if (filter.empty() && !list) {
    filtered_ = false;
    model_->showFolder(work_.root(), work_.showsAll());
    return showNotes();
  }
  const auto names = work_.names();
  struct Some {
    std::vector<std::string> paths;
    std::size_t total = 0;
  };
  const auto look = [names, filter] {
    Some some;
    some.paths = filtered(*names, filter, &some.total);
    return some;
  };
  inBackground(this, look, [this, names, filter](const Some& some) {
    if (filter != fromQString(filter_->text().trimmed()) || names != work_.names()) return;   // more was typed
    const QString was = current();
    model_->showFiles(work_.root(), some.paths);
    notShown_ = qsizetype(some.total) - qsizetype(some.paths.size());
    filtered_ = true;
    if (some.paths.size() <= kMostFiltered) tree_->expandAll();
    const QModelIndex again = model_->indexOf(was);
    const QModelIndex named = select_.isEmpty() ? QModelIndex() : model_->indexOf(select_);
    // An entry that left the list by its new name: no other takes the keys that were meant for it.
    const bool gone = !select_.isEmpty() && !again.isValid();
    tree_->setCurrentIndex(named.isValid() ? named : again.isValid() ? again : gone ? QModelIndex() : model_->index(0, 0));
    select_.clear();
    watches_.start();
    showNotes();
  });
}

void FilesView::showNotes() {
  QStringList notes;
  if (!work_.trouble().isEmpty()) notes << work_.trouble();
  if (notShown_ > 0) notes << tr("%1 more fit the filter").arg(notShown_);
  if (unwatched_ > 0 && !model_->isFixed())
    notes << tr("Not watched: %1 of the open folders. They are looked at when the window comes forward.").arg(unwatched_);
  note_->setText(notes.join(u'\n'));
  note_->setVisible(!notes.isEmpty());
}

void FilesView::markDocuments() {
  QSet<QString> open, modified;
  for (const frmDocument* document : frame_.documents()) {
    if (document->CurrentFileName().isEmpty()) continue;
    open << document->CurrentFileName();
    if (document->DocumentModified()) modified << document->CurrentFileName();
  }
  for (const LateDocument* late : frame_.tabs().late()) open << late->path;
  model_->setOpen(open, modified);
  tree_->viewport()->update();
}

// Only folders that are open in the tree are watched.
void FilesView::watchOpenFolders() {
  QStringList folders;
  if (!model_->isFixed() && !work_.root().isEmpty()) {
    folders << work_.root();
    for (const QString& folder : expanded_)
      if (model_->indexOf(folder).isValid()) folders << folder;
  }
  watch_->setFolders(folders);
}
