#include "app/find/frmFindInFiles.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>

#include "app/frame/DocumentTabs.h"
#include "app/frame/LateDocument.h"
#include "app/frame/frmMain.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/FolderDialog.h"
#include "bridge/QStringBytes.h"
#include "control/CodeMax.h"
#include "control/find/FindFields.h"
#include "control/find/UsersSearch.h"
#include "document/frmDocument.h"

using namespace Qt::StringLiterals;

namespace {

constexpr std::int64_t kMostHits = 100'000;   // unless all are asked for
enum Where { inFolder, inOpenDocuments, inResultFiles, inOpenList };

}   // namespace

frmFindInFiles::frmFindInFiles(frmMain& frame) : QDockWidget(tr("Find in Files"), &frame), frame_(frame) {
  setObjectName(u"findInFiles"_s);
  setAllowedAreas(Qt::TopDockWidgetArea | Qt::BottomDockWidgetArea);
  setFeatures(DockWidgetClosable | DockWidgetMovable | DockWidgetFloatable);
  build();
}

void frmFindInFiles::build() {
  FindGrid fields(this);
  find_ = fields.field(tr("Fi&nd:"), "filesFindText", 0);
  findAll_ = fields.button(tr("Find &All"), "filesFindAll", 0, 2);
  replace_ = fields.field(tr("Replace b&y:"), "filesReplaceText", 1);
  replaceAll_ = fields.button(tr("&Replace..."), "filesReplace", 1, 2);
  replaceAll_->setToolTip(tr("Shows every change first"));
  cancel_ = fields.cancel;   // stands there while a search runs: away from what a double click may hit
  cancel_->setObjectName(u"filesCancel"_s);
  cancel_->setText(tr("Cancel"));
  fields.grid->addWidget(cancel_, 1, 2);

  where_ = new QComboBox(fields.content);
  where_->setObjectName(u"filesWhere"_s);
  where_->addItems({tr("Folder"), tr("Open documents"), tr("Files of the list of results"), tr("File list")});
  folder_ = makeFindField(fields.content, u"filesFolder"_s);
  folder_->lineEdit()->setClearButtonEnabled(false);
  browse_ = fields.button(tr("Brow&se..."), "filesBrowse", 2, 2);
  fields.label(tr("&In:"), where_, 2);
  auto* place = new QHBoxLayout;
  place->setSpacing(6);
  auto* name = new QLabel(tr("Na&me:"), fields.content);
  name->setBuddy(folder_);
  place->addWidget(where_);
  place->addWidget(name);
  place->addWidget(folder_, 1);
  fields.grid->addLayout(place, 2, 1);

  masks_ = makeFindField(fields.content, u"filesMasks"_s);
  masks_->lineEdit()->setPlaceholderText(tr("All files; for example *.sv,*.svh;!*_tb.sv"));
  fields.label(tr("Mas&ks:"), masks_, 3);
  ignored_ = fields.box(tr("I&gnored"), "filesIgnored", tr("Also what version control ignores"));
  hidden_ = fields.box(tr("Hi&dden"), "filesHidden", tr("Also names that begin with a point"));
  binary_ = fields.box(tr("&Binary"), "filesBinary", tr("Also files that are no text"));
  auto* files = new QHBoxLayout;
  files->setSpacing(12);
  files->addWidget(masks_, 1);
  for (QWidget* part : std::initializer_list<QWidget*>{new QLabel(tr("Also:"), fields.content), ignored_, hidden_, binary_})
    files->addWidget(part);
  fields.grid->addLayout(files, 3, 1, 1, 2);

  matchCase_ = fields.box(tr("Mat&ch case"), "filesMatchCase");
  wholeWord_ = fields.box(tr("Who&le word"), "filesWholeWord");
  regex_ = fields.box(tr("Regular e&xpression"), "filesRegex",
                      tr("It may go over line ends; $1 to $99, ${name}, \\n and \\t may stand in the replacement"));
  preserveCase_ = fields.box(tr("&Preserve case"), "filesPreserveCase",
                             tr("Gives the replacement the case of what it replaces: all upper, all lower or capitalised"));
  all_ = fields.box(tr("N&o limit"), "filesAll", tr("Otherwise a search ends at %L1 hits").arg(kMostHits));
  status_ = fields.status;
  status_->setObjectName(u"filesStatus"_s);
  progress_ = fields.progress;
  progress_->setRange(0, 0);
  progress_->setTextVisible(false);
  progress_->setMinimumWidth(0);
  progress_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  fields.setSwitches(4, {matchCase_, wholeWord_, regex_, preserveCase_, all_});
  FindGrid::setTabOrder({find_, replace_, where_, folder_, browse_, masks_, ignored_, hidden_, binary_, matchCase_, wholeWord_,
                         regex_, preserveCase_, all_, findAll_, replaceAll_, cancel_});

  for (QComboBox* field : {find_, replace_, folder_, masks_}) field->installEventFilter(this);
  for (QComboBox* field : {find_, replace_}) connect(field, &QComboBox::editTextChanged, this, &frmFindInFiles::shareTexts);
  connect(where_, &QComboBox::currentIndexChanged, this, [this] { updateButtons(); });
  connect(findAll_, &QPushButton::clicked, this, &frmFindInFiles::findAsked);
  connect(replaceAll_, &QPushButton::clicked, this, &frmFindInFiles::replaceAsked);
  connect(browse_, &QPushButton::clicked, this, &frmFindInFiles::browse);
  connect(cancel_, &QPushButton::clicked, this, &frmFindInFiles::cancelAsked);
  updateButtons();
}

void frmFindInFiles::follow(const QString& root, const QString& list) {
  if (folder_->currentText().isEmpty() || folder_->currentText() == root_) folder_->setEditText(root);
  root_ = root;
  // A list that was opened instead of a folder is what the user works on; another choice stays until the next one is opened.
  where_->setItemText(inOpenList,
                      list.isEmpty() ? tr("File list") : tr("File list %1").arg(plainForDisplay(GetFileTitle(list), 40)));
  if (list != list_ && !list.isEmpty()) where_->setCurrentIndex(inOpenList);
  else if (list.isEmpty() && where_->currentIndex() == inOpenList) where_->setCurrentIndex(inFolder);
  list_ = list;
  updateButtons();
}

void frmFindInFiles::open(const QString& root, const QString& list, bool replace) {
  setWindowTitle(replace ? tr("Replace in Files") : tr("Find in Files"));
  follow(root, list);
  SearchState& state = usersSearch();
  if (frmDocument* document = frame_.activeDocument()) {
    Editor& editor = document->cmx->editor();
    const QString word = editor.hasSelection() && editor.selectedRange().length() < 4096 ? editor.selectedText() : QString();
    if (!word.isEmpty() && !word.contains(u'\n') && !word.contains(u'\r')) state.findText = word;
  }
  fillFindField(find_, state.findText, false);
  fillFindField(replace_, state.replaceText, true);
  updateButtons();
  if (!running_) tell({});
  showFindWindow(this);
  QComboBox* first = replace && !find_->currentText().isEmpty() ? replace_ : find_;
  first->setFocus(Qt::ShortcutFocusReason);
  first->lineEdit()->selectAll();
}

// The texts are those of the find bar, too; the switches are not.
void frmFindInFiles::shareTexts() {
  SearchState& state = usersSearch();
  state.findText = find_->currentText();
  state.replaceText = replace_->currentText();
  updateButtons();
}

bool frmFindInFiles::hasKeys() const { return isAncestorOf(QApplication::focusWidget()); }

void frmFindInFiles::takeKeys() {
  typed_ = false;
  find_->setFocus(Qt::OtherFocusReason);
}

void frmFindInFiles::updateButtons() {
  const bool text = !find_->currentText().isEmpty(), folder = where_->currentIndex() == inFolder;
  findAll_->setEnabled(text && !running_);
  replaceAll_->setEnabled(text);
  replaceAll_->setVisible(!running_);
  cancel_->setVisible(running_);
  for (QWidget* part : std::initializer_list<QWidget*>{folder_, browse_, ignored_, hidden_}) part->setEnabled(folder);
  binary_->setEnabled(where_->currentIndex() != inOpenDocuments);
}

void frmFindInFiles::tell(const QString& text, bool bad) { tellFind(status_, text, bad); }

void frmFindInFiles::setRunning(bool on) {
  running_ = on;
  progress_->setVisible(on);
  updateButtons();
}

QString frmFindInFiles::status() const { return status_->text(); }
QString frmFindInFiles::replaceText() const { return replace_->currentText(); }
bool frmFindInFiles::preserveCase() const { return preserveCase_->isChecked(); }
bool frmFindInFiles::inFileList() const { return where_->currentIndex() == inOpenList; }

bool frmFindInFiles::readTask(FindTask* task) {
  const auto fail = [&](const QString& why) {
    tell(why, true);
    return false;
  };
  const text::SearchOptions options{matchCase_->isChecked(), wholeWord_->isChecked(), regex_->isChecked()};
  task->what = std::make_shared<const folder::FindText>(fromQString(find_->currentText()), options);
  if (!task->what->error().empty()) return fail(toQString(task->what->error()));
  task->where = where_->currentIndex() == inFolder          ? FindTask::Where::folder
                : where_->currentIndex() == inOpenDocuments ? FindTask::Where::openDocuments
                                                            : FindTask::Where::files;
  QString root = folder_->currentText().isEmpty() ? root_ : folder_->currentText();
  root = fullPath(root);
  if (task->where == FindTask::Where::folder && !isFolder(root))
    return fail(tr("There is no folder %1").arg(plainForDisplay(root)));
  task->root = fromQString(root);
  task->walk.ignored = ignored_->isChecked();
  task->walk.hidden = hidden_->isChecked();
  task->binary = binary_->isChecked();
  task->setMasks(fromQString(masks_->currentText().trimmed()));
  task->mostHits = all_->isChecked() ? 0 : kMostHits;
  task->addOpen(frame_.documents());
  if (task->where == FindTask::Where::openDocuments)
    for (const LateDocument* late : frame_.tabs().late()) {
      const std::string name = fromQString(late->path);
      const auto isOpen = [&](const FindTask::Open& one) { return one.path == name; };
      if (!name.empty() && std::ranges::none_of(task->open, isOpen) && std::ranges::find(task->files, name) == task->files.end())
        task->files.push_back(name);
    }
  rememberFind(find_, false);
  putFirst(folder_);
  putFirst(masks_);
  return true;
}

void frmFindInFiles::browse() {
  const QString chosen = askForFolder(tr("Find in Folder"), folder_->currentText());
  if (!chosen.isEmpty()) folder_->setEditText(chosen);
}

bool frmFindInFiles::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
      if (QPushButton* button = object == replace_ ? replaceAll_ : findAll_; button->isEnabled()) button->click();
      return true;
    }
    typed_ = true;
  }
  return QDockWidget::eventFilter(object, event);
}

void frmFindInFiles::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Escape) return QDockWidget::keyPressEvent(event);
  event->accept();
  if (running_) return emit cancelAsked();
  if (frmDocument* document = frame_.activeDocument()) document->cmx->setFocus();
  close();
}

#include "moc_frmFindInFiles.cpp"
