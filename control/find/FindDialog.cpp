#include "control/find/FindDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include "control/CodeMax.h"
#include "control/find/FindFields.h"
#include "control/find/FindJob.h"
#include "control/find/FindScope.h"
#include "control/find/Finding.h"
#include "control/find/UsersSearch.h"

FindDialog::FindDialog(QWidget* parent) : QDockWidget(tr("Find and Replace"), parent), job_(new FindJob(this)) {
  setObjectName(QStringLiteral("findDialog"));
  setAllowedAreas(Qt::TopDockWidgetArea | Qt::BottomDockWidgetArea);
  setFeatures(DockWidgetClosable | DockWidgetMovable | DockWidgetFloatable);
  build();
  // Searches the control that has the focus.
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
    for (QWidget* each = now; each; each = each->parentWidget()) {
      if (each == this) return readState();
      if (auto* control = qobject_cast<CodeMax*>(each)) {
        if (isVisible() && control->window() == (isFloating() && parentWidget() ? parentWidget()->window() : window()))
          work(*control);
        typingFrom_.reset();
        return;
      }
    }
  });
}

FindDialog::~FindDialog() {
  job_->drop();   // notifies objects that still exist
  dropScope();
}

void FindDialog::build() {
  FindGrid fields(this);
  int column = 2;
  const auto button = [&](const QString& text, const char* name, int row, auto slot) {
    QPushButton* b = fields.button(text, name, row, column++);
    connect(b, &QPushButton::clicked, this, slot);
    return b;
  };
  find_ = fields.field(tr("Fi&nd:"), "findText", 0);
  next_ = button(tr("Find Ne&xt"), "findNext", 0, [this] { findNext(true); });
  previous_ = button(tr("Find &Previous"), "findPrevious", 0, [this] { findNext(false); });
  count_ = button(tr("C&ount"), "count", 0, [this] { count(); });
  markAll_ = button(tr("Mar&k All"), "markAll", 0, [this] { markAll(); });
  markAll_->setToolTip(tr("Sets a bookmark on every line with a match"));
  selectAll_ = button(tr("Sele&ct All"), "selectAll", 0, [this] { selectAll(); });
  selectAll_->setToolTip(tr("Selects every match, each with a caret of its own"));

  replace_ = fields.field({}, "replaceText", 1);
  replaceLabel_ = fields.label(tr("Replace b&y:"), replace_, 1);
  column = 2;
  replaceOne_ = button(tr("&Replace"), "replace", 1, [this] { replaceOne(); });
  replaceAll_ = button(tr("Replace &All"), "replaceAll", 1, [this] { replaceAll(); });
  preserveCase_ = fields.box(tr("Preserve ca&se"), "preserveCase",
                             tr("Gives the replacement the letter case of the match: all upper, all lower or capitalised"));
  fields.grid->addWidget(preserveCase_, 1, column, 1, 2);

  matchCase_ = fields.box(tr("&Match case"), "matchCase");
  wholeWord_ = fields.box(tr("Who&le word"), "wholeWord");
  regex_ = fields.box(tr("Re&gular expression"), "regex", tr("The replacement may contain $1 to $99, ${name}, \\n and \\t"));
  inSelection_ = fields.box(tr("&In selection"), "inSelection", tr("Only what is selected now"));
  backwards_ = fields.box(tr("&Backwards"), "backwards", tr("Return and Replace search backwards"));
  status_ = fields.status;
  status_->setObjectName(QStringLiteral("status"));
  progress_ = fields.progress;
  progress_->setRange(0, 100);
  cancel_ = fields.cancel;
  cancel_->setObjectName(QStringLiteral("cancel"));
  fields.setSwitches(2, {matchCase_, wholeWord_, regex_, inSelection_, backwards_});
  FindGrid::setTabOrder({find_, replace_, next_, previous_, count_, markAll_, selectAll_, replaceOne_, replaceAll_, preserveCase_,
                         matchCase_, wholeWord_, regex_, inSelection_, backwards_, cancel_});

  // The combo box has the focus and passes keys to its line edit without its event filters.
  for (QComboBox* field : {find_, replace_}) field->installEventFilter(this);
  connect(find_, &QComboBox::editTextChanged, this, [this] {
    writeState();
    findWhileTyping();
  });
  connect(replace_, &QComboBox::editTextChanged, this, [this] { writeState(); });
  for (QCheckBox* box : {matchCase_, wholeWord_, regex_})
    connect(box, &QCheckBox::clicked, this, [this] {
      writeState();
      findWhileTyping();
    });
  connect(preserveCase_, &QCheckBox::clicked, this, [this] { writeState(); });
  connect(inSelection_, &QCheckBox::clicked, this, [this](bool on) {
    if (on) takeScope();
    else dropScope();
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { job_->cancel(); });

  auto* timer = new QTimer(this);
  timer->setInterval(100);
  connect(timer, &QTimer::timeout, this, [this] { progress_->setValue(job_->percent()); });
  connect(job_, &FindJob::runningChanged, this, [this, timer](bool running) {
    progress_->setValue(0);
    progress_->setVisible(running);
    cancel_->setVisible(running);
    if (running) timer->start();
    else timer->stop();
    updateButtons();
  });
}

FindDialog* FindDialog::of(const CodeMax& control) {
  return control.window()->findChild<FindDialog*>(QString(), Qt::FindDirectChildrenOnly);
}

bool isFindWindowShown(const QWidget* within) {
  for (; within; within = within->parentWidget())
    if (const auto* control = qobject_cast<const CodeMax*>(within)) {
      const FindDialog* dialog = FindDialog::of(*control);
      return dialog && dialog->isVisible();
    }
  return false;
}

void FindDialog::hideFor(CodeMax& control) {
  if (FindDialog* dialog = of(control)) dialog->close();
}

void FindDialog::showFor(CodeMax& control, bool replace) {
  FindDialog* dialog = of(control);
  if (!dialog) {
    QWidget* window = control.window();
    dialog = new FindDialog(window);
    if (auto* main = qobject_cast<QMainWindow*>(window)) {
      main->addDockWidget(Qt::BottomDockWidgetArea, dialog,
                          Qt::Vertical);   // a row of its own: beside another dock it would widen the window
    } else {
      dialog->setAllowedAreas(Qt::NoDockWidgetArea);
      dialog->setFloating(true);
    }
  }
  dialog->open(control, replace);
}

void FindDialog::open(CodeMax& control, bool replace) {
  work(control);
  showReplace(replace);
  Editor& editor = control.editor();
  const bool lines =
      editor.hasSelection() && (editor.spansLines() || editor.selection().column || editor.selectedRange().length() > kLongestFind);
  if (lines) {
    takeScope();
  } else {
    dropScope();
    const QString word = editor.hasSelection() ? editor.selectedText() : QString();
    if (!word.isEmpty()) usersSearch().findText = word;
  }
  readState();
  tell({});
  showFindWindow(this);
  typingFrom_.reset();
  find_->setFocus(Qt::ShortcutFocusReason);
  find_->lineEdit()->selectAll();
  updateHits();
}

void FindDialog::work(CodeMax& control) {
  if (control_ == &control) return;
  job_->drop();
  dropScope();
  if (control_) control_->showHits({}, {});
  control_ = &control;
  updateButtons();
  updateHits();
}

void FindDialog::showReplace(bool on) {
  for (QWidget* part : std::initializer_list<QWidget*>{replaceLabel_, replace_, replaceOne_, replaceAll_, preserveCase_})
    part->setVisible(on);
  setWindowTitle(on ? tr("Find and Replace") : tr("Find"));
}

QString FindDialog::status() const { return status_->text(); }

void FindDialog::readState() {
  const SearchState& state = usersSearch();
  fillFindField(find_, state.findText, false);
  fillFindField(replace_, state.replaceText, true);
  matchCase_->setChecked(state.options.matchCase);
  wholeWord_->setChecked(state.options.wholeWord);
  regex_->setChecked(state.options.regex);
  preserveCase_->setChecked(control_ ? keepsCase(control_->editor(), state) : state.preserveCase);
  inSelection_->setChecked(scope_ != nullptr);
  updateButtons();
}

void FindDialog::writeState() {
  SearchState& state = usersSearch();
  state.findText = find_->currentText();
  state.replaceText = replace_->currentText();
  state.options = {matchCase_->isChecked(), wholeWord_->isChecked(), regex_->isChecked()};
  state.preserveCase = preserveCase_->isChecked();
  if (control_) control_->editor().options().preserveCase = state.preserveCase;
  updateButtons();
  updateHits();
}

void FindDialog::remember(QComboBox* field) { rememberFind(field, field == replace_); }

void FindDialog::tell(const QString& text, bool bad) {
  tellFind(status_, text, bad);
  QPalette colors = find_->palette();
  if (bad) colors.setColor(QPalette::Text, badTextColor(palette()));
  find_->lineEdit()->setPalette(colors);
  if (control_) control_->editor().host().note(text);
}

void FindDialog::updateButtons() {
  const bool can = control_ && !find_->currentText().isEmpty() && !job_->running();
  const bool writable = can && !control_->ReadOnly();
  for (QPushButton* button : {next_, previous_, count_, markAll_, selectAll_}) button->setEnabled(can);
  for (QPushButton* button : {replaceOne_, replaceAll_}) button->setEnabled(writable);
}

void FindDialog::updateHits() {
  if (control_ && isVisible()) control_->showHits(find_->currentText(), searchState().options);
}

void FindDialog::backToText() {
  if (control_) control_->setFocus();
}

bool FindDialog::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::KeyPress && (object == find_ || object == replace_)) {
    auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
      const bool back = backwards_->isChecked() != key->modifiers().testFlag(Qt::ShiftModifier);
      if (object == find_) findNext(!back);
      else replaceOne();
      return true;
    }
  }
  return QDockWidget::eventFilter(object, event);
}

void FindDialog::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Escape) return QDockWidget::keyPressEvent(event);
  event->accept();
  if (job_->running()) return job_->cancel();
  backToText();
  close();
}

void FindDialog::hideEvent(QHideEvent* event) {
  job_->drop();
  if (control_) control_->showHits({}, {});
  dropScope();
  QDockWidget::hideEvent(event);
}

void FindDialog::changeEvent(QEvent* event) {
  QDockWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && status_) tell(status_->text());
}
