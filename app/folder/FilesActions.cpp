// What the user does in the dock "Files": keys, menus, and the changes on the disk.
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QTreeView>
#include <QUrl>

#include "app/folder/FilesModel.h"
#include "app/folder/FilesView.h"
#include "app/folder/FolderParts.h"
#include "app/folder/WorkFolder.h"
#include "app/frame/frmMain.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "bridge/QStringBytes.h"
#include "control/edit/TextModel.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "document/frmRegistry.h"
#include "folder/Trash.h"
#include "process/CommandLine.h"
#include "process/Process.h"
#include "text/file/FileCalls.h"

using namespace Qt::StringLiterals;

namespace {

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

}   // namespace

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
  frmDocument* document = frame_.goToFile(path);
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
  emit frame_.fileRenamed(from, to);
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
  QString question = (folder && model_->isFixed()
                          ? tr("Do you want to put the folder %1 into the trash, with all that is in it, also what is not shown?")
                      : folder ? tr("Do you want to put the folder %1 with all that is in it into the trash?")
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
