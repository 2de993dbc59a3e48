#include "app/folder/FilesView.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
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
#include "app/frame/frmMain.h"
#include "base/Background.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "bridge/QStringBytes.h"
#include "control/edit/TextModel.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "document/frmRegistry.h"
#include "folder/Glob.h"
#include "folder/Trash.h"
#include "process/CommandLine.h"
#include "process/Process.h"
#include "text/file/FileCalls.h"

using namespace Qt::StringLiterals;

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

// A call on the disk that the user waits for, and may leave when it hangs. The text of what went wrong; empty: it was done.
QString onDisk(QWidget& asker, const QString& what, const std::function<std::string()>& call) {
  const auto error = std::make_shared<std::string>();
  if (!LongWork::runOrLeave(
          asker, [call, error](text::SearchControl&) { *error = call(); }, what))
    return FilesView::tr("The disk does not answer");
  return toQString(*error);
}

// Whether a file is that entry of the tree, or lies in it.
bool isIn(const QString& file, const QString& entry) { return file == entry || file.startsWith(entry + u'/'); }

std::string errorOf(int r) { return r < 0 ? text::errorText(r) : std::string(); }

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
    tree_->setCurrentIndex(again.isValid() ? again : model_->index(0, 0));
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

// ---- what the user does

QString FilesView::current() const { return tree_->currentIndex().isValid() ? model_->path(tree_->currentIndex()) : QString(); }

QString FilesView::currentFolder() const {
  const QModelIndex index = tree_->currentIndex();
  if (!index.isValid()) return work_.root();
  return model_->isFolder(index) ? model_->path(index) : GetFileDir(model_->path(index));
}

bool FilesView::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride) return QWidget::eventFilter(object, event);
  if (const QWidget* focus = QApplication::focusWidget(); tree_->isAncestorOf(focus) && focus != tree_)
    return QWidget::eventFilter(object, event);   // what a field in the tree left over
  auto* key = static_cast<QKeyEvent*>(event);
  const bool plain = (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
  const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
  const bool mine = object == tree_
                        ? plain && (enter || key->key() == Qt::Key_F2 || key->key() == Qt::Key_Delete || key->key() == Qt::Key_F5)
                        : plain && (enter || key->key() == Qt::Key_Down);
  const bool away = plain && key->key() == Qt::Key_Escape;
  const bool beside = object == tree_ && enter && key->modifiers() == Qt::ControlModifier;
  if (!mine && !away && !beside) return QWidget::eventFilter(object, event);
  if (event->type() == QEvent::ShortcutOverride) return event->accept(), true;   // a key of the tree, not of the frame
  const QString path = current();
  if (away) {
    if (object == filter_ && !filter_->text().isEmpty()) filter_->clear();
    else if (frmDocument* document = frame_.activeDocument()) document->cmx->setFocus();
  } else if (object == filter_) {
    focusTree();
  } else if (key->key() == Qt::Key_F5) {
    lookAtDisk();
  } else if (path.isEmpty()) {
    return true;
  } else if (enter && model_->isFolder(tree_->currentIndex())) {
    tree_->setExpanded(tree_->currentIndex(), !tree_->isExpanded(tree_->currentIndex()));
  } else if (enter) {
    open(path, beside);
  } else if (key->key() == Qt::Key_F2) {
    editName();
  } else {
    remove(path);
  }
  return true;
}

void FilesView::fillMenu(QMenu& menu) {
  FolderParts& parts = frame_.folders();
  menu.addAction(tr("&Open Folder..."), &parts, &FolderParts::askForFolder);
  menu.addAction(tr("Open File &List..."), &parts, &FolderParts::askForList);
  if (work_.kind() == WorkFolder::Kind::list) {
    menu.addAction(tr("&Working Folder of the List..."), &parts, &FolderParts::askForWorkingFolder);
    QAction* relative = menu.addAction(tr("&Paths Count from the List (-F)"));
    relative->setCheckable(true);
    relative->setChecked(work_.relativeToList());
    connect(relative, &QAction::triggered, this, [this](bool on) { work_.openList(work_.list(), on); });
  }
  QAction* close = menu.addAction(tr("&Close Folder"), &work_, &WorkFolder::close);
  close->setEnabled(work_.kind() == WorkFolder::Kind::folder || work_.kind() == WorkFolder::Kind::list);
  menu.addSeparator();
  QAction* all = menu.addAction(tr("Show &Ignored, Hidden and Binary Files"), &work_, &WorkFolder::setShowsAll);
  all->setCheckable(true);
  all->setChecked(work_.showsAll());
  all->setEnabled(work_.kind() != WorkFolder::Kind::list);
  menu.addAction(tr("Co&llapse All"), tree_, &QTreeView::collapseAll);
  menu.addAction(tr("Look Again\tF5"), this, &FilesView::lookAtDisk);
}

void FilesView::showMenu(const QPoint& at) {
  const QModelIndex index = tree_->indexAt(at);
  const QString path = index.isValid() ? model_->path(index) : QString();
  QMenu menu(this);
  menu.setObjectName(QStringLiteral("filesPopup"));
  if (index.isValid()) {
    tree_->setCurrentIndex(index);
    if (!model_->isFolder(index)) {
      menu.addAction(tr("&Open\tEnter"), this, [this, path] { open(path); });
      menu.addAction(tr("Open &Beside\tCtrl+Enter"), this, [this, path] { open(path, true); });
    } else {
      menu.addAction(tr("&Open as Folder"), this, [this, path] { frame_.folders().open(path); });
    }
    menu.addSeparator();
    menu.addAction(tr("&Copy Path"), this, [path] { QApplication::clipboard()->setText(path); });
    menu.addAction(tr("Copy R&elative Path"), this, [this, path] {
      const QString below = work_.root().endsWith(u'/') ? work_.root() : work_.root() + u'/';
      QApplication::clipboard()->setText(path.startsWith(below) ? path.mid(below.size()) : path);
    });
    menu.addSeparator();
    menu.addAction(tr("&Rename\tF2"), this, &FilesView::editName);
    menu.addAction(tr("&Delete to the Trash\tDel"), this, [this, path] { remove(path); });
  } else {
    tree_->setCurrentIndex({});
  }
  if (!work_.root().isEmpty()) {
    menu.addAction(tr("&New File..."), this, [this] { make(false); });
    menu.addAction(tr("New &Folder..."), this, [this] { make(true); });
    menu.addSeparator();
    menu.addAction(tr("Re&veal in the File Manager"), this, [this, path] { reveal(path.isEmpty() ? work_.root() : path); });
  }
  menu.exec(tree_->viewport()->mapToGlobal(at));
}

void FilesView::open(const QString& path, bool beside) {
  const QPointer<frmDocument> was = frame_.activeDocument();
  frmDocument* document = frame_.openFile(path);
  if (!document) return;
  if (beside && was && was != document) frame_.showBeside(was, document);
  document->cmx->setFocus();
}

void FilesView::editName() {
  if (tree_->currentIndex().isValid()) tree_->edit(tree_->currentIndex());
}

void FilesView::rename(const QString& path, const QString& name) {
  if (name.contains(u'/') || name == QLatin1String(".") || name == QLatin1String("..")) {
    MsgBox(tr("%1 is no name of a file.").arg(nameForDisplay(name)));
    return;
  }
  const QString to = GetFileDir(path) + u'/' + name;
  const QString error = onDisk(*this, tr("Renaming..."), [from = fromQString(path), to = fromQString(to)] {
    text::FileSystem& disk = text::fileSystem();
    int r = disk.renameAt(text::FileSystem::kCwd, from, text::FileSystem::kCwd, to, text::kNoReplace);
    if (r == -EINVAL) {   // a disk that cannot do both at once
      text::FileStatus status;
      r = disk.statAt(text::FileSystem::kCwd, to, false, &status) == 0
              ? -EEXIST
              : disk.renameAt(text::FileSystem::kCwd, from, text::FileSystem::kCwd, to, text::kReplace);
    }
    return errorOf(r);
  });
  if (!error.isEmpty()) MsgBox(tr("%1 could not be renamed: %2").arg(plainForDisplay(path), error));
  else follow(path, select_ = to);
  model_->refresh({GetFileDir(path)});
  work_.refresh();
}

void FilesView::follow(const QString& from, const QString& to) {
  for (frmDocument* document : documentsIn(from)) {
    const QString now = to + document->CurrentFileName().mid(from.size());
    document->cmx->model()->path = now;   // so that a save still notices what others wrote there
    document->setFile(now);
    if (!document->LanguageIsChosen()) document->SetLanguage(languageOfFile(now, *document->cmx));
  }
  followRecent(from, to);
  frame_.refreshToolbar();
  marks_.start();
}

void FilesView::followRecent(const QString& from, const QString& to) {
  ucMRULst& files = frmRegistry::instance().mruFile;
  QStringList names = files.items();
  if (to.isEmpty()) names.removeIf([&](const QString& name) { return isIn(name, from); });
  for (QString& name : names)
    if (isIn(name, from)) name.replace(0, from.size(), to);
  if (names != files.items()) files.setItems(names);
}

QList<frmDocument*> FilesView::documentsIn(const QString& path) const {
  QList<frmDocument*> found;
  for (frmDocument* document : frame_.documents())
    if (document->DocumentHasName() && isIn(document->CurrentFileName(), path)) found << document;
  return found;
}

void FilesView::make(bool folder) {
  const QString in = currentFolder();
  const auto name =
      InputBox((folder ? tr("Name of the new folder in %1:") : tr("Name of the new file in %1:")).arg(plainForDisplay(in)),
               folder ? tr("New Folder") : tr("New File"));
  if (!name || name->isEmpty()) return;
  const QString path = in + u'/' + *name;
  const QString error = onDisk(*this, tr("Making..."), [path = fromQString(path), folder] {
    if (folder) return errorOf(text::fileSystem().makeDirAt(text::FileSystem::kCwd, path, 0777));
    return errorOf(text::files::open(text::FileSystem::kCwd, path, text::kWrite | text::kCreate | text::kExclusive, 0666).error());
  });
  if (!error.isEmpty()) {
    MsgBox(tr("%1 could not be made: %2").arg(plainForDisplay(path), error));
    return;
  }
  select_ = path;
  if (const QModelIndex at = model_->indexOf(in); at.isValid()) tree_->expand(at);
  model_->refresh({in});
  work_.refresh();
  if (!folder) open(path);
}

void FilesView::remove(const QString& path) {
  const bool folder = model_->isFolder(tree_->currentIndex());
  QString question = (folder ? tr("Do you want to put the folder %1 with all that is in it into the trash?")
                             : tr("Do you want to put %1 into the trash?"))
                         .arg(plainForDisplay(path));
  if (const qsizetype open = documentsIn(path).size(); open > 0)
    question +=
        u"\r\n\r\n"_s + (folder ? tr("Files of it are open (%L1). Their texts stay in their windows, as unsaved ones.").arg(open)
                                : tr("It is open. Its text stays in its window, as an unsaved one."));
  if (MsgBox(question, {}, Icon::question, Buttons::yesNo) != Answer::yes) return;
  const QString error = onDisk(*this, tr("Deleting..."), [path = fromQString(path)] { return folder::moveToTrash(path); });
  if (!error.isEmpty()) {
    MsgBox(tr("%1 was not deleted: %2").arg(plainForDisplay(path), error));
  } else {
    for (const frmDocument* document : documentsIn(path)) {
      document->cmx->model()->stamp = text::FileStamp{};   // nobody is told again; the next save makes the file anew
      document->cmx->setModified(true);
    }
    followRecent(path, {});
  }
  model_->refresh({GetFileDir(path)});
  work_.refresh();
}

// File managers that follow the desktop's standard show the entry itself; else its folder is opened.
void FilesView::reveal(const QString& path) {
  const QString folder = path == work_.root() ? path : GetFileDir(path);
  const auto openFolder = [folder] {
    if (!dialogs().openUrl(fileUrl(folder).toString(QUrl::FullyEncoded)))
      MsgBox(tr("The desktop has no file manager that shows %1").arg(plainForDisplay(folder)));
  };
#ifdef Q_OS_UNIX
  const std::string address = fileUrl(path).toEncoded().toStdString();
  int error = 0;
  process::Program* program = nullptr;
  if (address.find(',') == std::string::npos)   // which would end the address
    program = process::Program::start(
        {"dbus-send", "--session", "--print-reply", "--reply-timeout=2000", "--dest=org.freedesktop.FileManager1",
         "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1.ShowItems", "array:string:" + address, "string:"},
        {}, &error);
  if (!program) return openFolder();
  connect(program, &process::Program::finished, this, [openFolder](int exitCode) {
    if (exitCode != 0) openFolder();
  });
#else
  openFolder();
#endif
}
