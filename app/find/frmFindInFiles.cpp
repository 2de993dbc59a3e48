#include "app/find/frmFindInFiles.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>

#include "app/frame/frmMain.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/FolderDialog.h"
#include "bridge/QStringBytes.h"
#include "control/CodeMax.h"
#include "control/find/FindFields.h"
#include "control/find/UsersSearch.h"
#include "control/view/ColorScheme.h"
#include "document/frmDocument.h"

using namespace Qt::StringLiterals;

namespace {

constexpr std::int64_t kMostHits = 100'000;   // unless all are asked for
constexpr int kHistory = 20;
enum Where { inFolder, inOpenDocuments, inResultFiles, inOpenList };

void putFirst(QComboBox* field) {
  const QString text = field->currentText();
  if (text.isEmpty() || field->itemText(0) == text) return;
  if (const int old = field->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive); old >= 0) field->removeItem(old);
  field->insertItem(0, text);
  while (field->count() > kHistory) field->removeItem(field->count() - 1);
  field->setEditText(text);
}

}   // namespace

frmFindInFiles::frmFindInFiles(frmMain& frame) : QDockWidget(tr("Find in Files"), &frame), frame_(frame) {
  setObjectName(u"findInFiles"_s);
  setAllowedAreas(Qt::TopDockWidgetArea | Qt::BottomDockWidgetArea);
  setFeatures(DockWidgetClosable | DockWidgetMovable | DockWidgetFloatable);
  build();
}

void frmFindInFiles::build() {
  auto* content = new QWidget(this);
  content->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  auto* grid = new QGridLayout(content);
  grid->setContentsMargins(8, 6, 8, 6);
  grid->setHorizontalSpacing(6);
  grid->setVerticalSpacing(4);
  const auto label = [&](const QString& text, QWidget* buddy, int row) {
    auto* l = new QLabel(text, content);
    l->setBuddy(buddy);
    grid->addWidget(l, row, 0);
  };
  const auto button = [&](const QString& text, const char* name) {
    auto* b = new QPushButton(text, content);
    b->setObjectName(QString::fromLatin1(name));
    b->setAutoDefault(false);
    return b;
  };
  const auto check = [&](const QString& text, const char* name, const QString& tip) {
    auto* box = new QCheckBox(text, content);
    box->setObjectName(QString::fromLatin1(name));
    box->setToolTip(tip);
    return box;
  };
  find_ = makeFindField(content, u"filesFindText"_s);
  label(tr("Fi&nd:"), find_, 0);
  grid->addWidget(find_, 0, 1);
  findAll_ = button(tr("Find &All"), "filesFindAll");
  grid->addWidget(findAll_, 0, 2);

  replace_ = makeFindField(content, u"filesReplaceText"_s);
  label(tr("Replace b&y:"), replace_, 1);
  grid->addWidget(replace_, 1, 1);
  replaceAll_ = button(tr("&Replace..."), "filesReplace");
  replaceAll_->setToolTip(tr("Shows every change first"));
  grid->addWidget(replaceAll_, 1, 2);

  where_ = new QComboBox(content);
  where_->setObjectName(u"filesWhere"_s);
  where_->addItems({tr("Folder"), tr("Open documents"), tr("Files of the list of results"), tr("File list")});
  folder_ = makeFindField(content, u"filesFolder"_s);
  folder_->lineEdit()->setClearButtonEnabled(false);
  browse_ = button(tr("&Browse..."), "filesBrowse");
  label(tr("&In:"), where_, 2);
  auto* place = new QHBoxLayout;
  place->setSpacing(6);
  place->addWidget(where_);
  place->addWidget(folder_, 1);
  grid->addLayout(place, 2, 1);
  grid->addWidget(browse_, 2, 2);

  masks_ = makeFindField(content, u"filesMasks"_s);
  masks_->lineEdit()->setPlaceholderText(tr("All files; for example *.sv,*.svh;!*_tb.sv"));
  label(tr("Mas&ks:"), masks_, 3);
  ignored_ = check(tr("I&gnored files"), "filesIgnored", tr("Also what version control ignores"));
  hidden_ = check(tr("Hi&dden files"), "filesHidden", tr("Also names that begin with a point"));
  auto* files = new QHBoxLayout;
  files->setSpacing(12);
  files->addWidget(masks_, 1);
  files->addWidget(ignored_);
  files->addWidget(hidden_);
  grid->addLayout(files, 3, 1, 1, 2);

  matchCase_ = check(tr("&Match case"), "filesMatchCase", {});
  wholeWord_ = check(tr("Who&le word"), "filesWholeWord", {});
  regex_ = check(tr("Regular e&xpression"), "filesRegex",
                 tr("It may go over line ends; $1 to $99, ${name}, \\n and \\t may stand in the replacement"));
  preserveCase_ = check(tr("Preserve ca&se"), "filesPreserveCase",
                        tr("Gives the replacement the case of what it replaces: all upper, all lower or capitalised"));
  all_ = check(tr("N&o limit"), "filesAll", tr("Otherwise a search ends at %L1 hits").arg(kMostHits));
  status_ = new QLabel(content);
  status_->setObjectName(u"filesStatus"_s);
  status_->setTextFormat(Qt::PlainText);
  status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  progress_ = new QProgressBar(content);
  progress_->setRange(0, 0);
  progress_->setMaximumWidth(120);
  progress_->hide();
  cancel_ = button(tr("Cancel"), "filesCancel");
  cancel_->hide();
  auto* options = new QHBoxLayout;
  options->setSpacing(12);
  for (QCheckBox* box : {matchCase_, wholeWord_, regex_, preserveCase_, all_}) options->addWidget(box);
  options->addWidget(status_, 1);
  options->addWidget(progress_);
  options->addWidget(cancel_);
  grid->addLayout(options, 4, 0, 1, 3);
  grid->setColumnStretch(1, 1);
  setWidget(content);

  QWidget* last = find_;
  for (QWidget* part : std::initializer_list<QWidget*>{replace_, where_, folder_, browse_, masks_, ignored_, hidden_, matchCase_,
                                                       wholeWord_, regex_, preserveCase_, all_, findAll_, replaceAll_, cancel_}) {
    setTabOrder(last, part);
    last = part;
  }
  for (QComboBox* field : {find_, replace_, folder_, masks_}) {
    field->installEventFilter(this);
    connect(field, &QComboBox::editTextChanged, this, [this] { writeState(); });
  }
  for (QCheckBox* box : {matchCase_, wholeWord_, regex_, preserveCase_})
    connect(box, &QCheckBox::clicked, this, [this] { writeState(); });
  connect(where_, &QComboBox::currentIndexChanged, this, [this] { updateButtons(); });
  connect(findAll_, &QPushButton::clicked, this, &frmFindInFiles::findAsked);
  connect(replaceAll_, &QPushButton::clicked, this, &frmFindInFiles::replaceAsked);
  connect(browse_, &QPushButton::clicked, this, &frmFindInFiles::browse);
  connect(cancel_, &QPushButton::clicked, this, &frmFindInFiles::cancelAsked);
  updateButtons();
}

void frmFindInFiles::open(const QString& root, bool replace) {
  setWindowTitle(replace ? tr("Replace in Files") : tr("Find in Files"));
  if (folder_->currentText().isEmpty() || folder_->currentText() == root_) folder_->setEditText(root);
  root_ = root;
  if (frmDocument* document = frame_.activeDocument()) {
    Editor& editor = document->cmx->editor();
    const QString word = editor.hasSelection() && editor.selectedRange().length() < 4096 ? editor.selectedText() : QString();
    if (!word.isEmpty() && !word.contains(u'\n') && !word.contains(u'\r')) usersSearch().findText = word;
  }
  readState();
  if (!running_) tell({});
  show();
  raise();
  if (isFloating()) activateWindow();
  QComboBox* first = replace && !find_->currentText().isEmpty() ? replace_ : find_;
  first->setFocus(Qt::ShortcutFocusReason);
  first->lineEdit()->selectAll();
}

void frmFindInFiles::readState() {
  const SearchState& state = usersSearch();
  fillFindField(find_, state.findText, false);
  fillFindField(replace_, state.replaceText, true);
  matchCase_->setChecked(state.options.matchCase);
  wholeWord_->setChecked(state.options.wholeWord);
  regex_->setChecked(state.options.regex);
  preserveCase_->setChecked(state.preserveCase);
  updateButtons();
}

void frmFindInFiles::writeState() {
  SearchState& state = usersSearch();
  state.findText = find_->currentText();
  state.replaceText = replace_->currentText();
  state.options.matchCase = matchCase_->isChecked();
  state.options.wholeWord = wholeWord_->isChecked();
  state.options.regex = regex_->isChecked();
  state.preserveCase = preserveCase_->isChecked();
  updateButtons();
}

void frmFindInFiles::updateButtons() {
  const bool text = !find_->currentText().isEmpty(), folder = where_->currentIndex() == inFolder;
  findAll_->setEnabled(text && !running_);
  replaceAll_->setEnabled(text && !running_);
  for (QWidget* part : std::initializer_list<QWidget*>{folder_, browse_, masks_, ignored_, hidden_}) part->setEnabled(folder);
}

void frmFindInFiles::tell(const QString& text, bool bad) {
  status_->setText(plainForDisplay(text));
  status_->setToolTip(plainForDisplay(text));
  QPalette colors = palette();
  if (bad)
    colors.setColor(QPalette::WindowText, ColorScheme::isDark(palette()) ? QColor(0xFF, 0x8A, 0x80) : QColor(0xB3, 0x26, 0x1E));
  status_->setPalette(colors);
}

void frmFindInFiles::setRunning(bool on) {
  running_ = on;
  progress_->setVisible(on);
  cancel_->setVisible(on);
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
  const SearchState& state = usersSearch();
  task->what = std::make_shared<const folder::FindText>(fromQString(find_->currentText()), state.options);
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
  task->walk.masks = folder::Masks(fromQString(masks_->currentText()));
  task->mostHits = all_->isChecked() ? 0 : kMostHits;
  task->addOpen(frame_.documents());
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
