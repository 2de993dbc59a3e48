// Every dialog that a command opens can be used without the mouse: its buttons, pages and fields answer to Alt and a letter.
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTabBar>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

#include "app/frame/FrameCommand.h"
#include "tests/app/FrameFixture.h"

namespace {

QChar letterOf(const QString& caption) {
  const QKeySequence keys = QKeySequence::mnemonic(caption);
  return keys.isEmpty() ? QChar() : QChar(static_cast<char16_t>(keys[0].key())).toLower();
}

bool isField(const QWidget* widget) {
  if (widget->focusPolicy() == Qt::NoFocus || !widget->isEnabled()) return false;
  for (const QWidget* above = widget->parentWidget(); above; above = above->parentWidget())
    if (qobject_cast<const QComboBox*>(above) || qobject_cast<const QAbstractSpinBox*>(above)) return false;
  if (const auto* text = qobject_cast<const QPlainTextEdit*>(widget)) return !text->isReadOnly();
  return qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QComboBox*>(widget) ||
         qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QListView*>(widget) ||
         qobject_cast<const QTreeView*>(widget);
}

// Enter and Esc are the keys of these.
bool hasOwnKey(const QAbstractButton* button) {
  const auto* box = qobject_cast<const QDialogButtonBox*>(button->parentWidget());
  const auto kind = box ? box->standardButton(const_cast<QAbstractButton*>(button)) : QDialogButtonBox::NoButton;
  return kind == QDialogButtonBox::Ok || kind == QDialogButtonBox::Cancel || kind == QDialogButtonBox::Close;
}

// What is shown now. A letter of a button or a page is nobody else's; fields may share one, which then goes round them.
void checkShown(QWidget& window, QSet<QChar> actions) {
  QSet<QChar> fields;
  int buttons = 0;
  const auto take = [&](const QString& caption, const QString& what) {
    const QChar letter = letterOf(caption);
    if (letter.isNull()) ADD_FAILURE() << "no letter: " << what.toStdString() << " \"" << caption.toStdString() << '"';
    EXPECT_FALSE(actions.contains(letter)) << "letter used twice: " << caption.toStdString();
    actions << letter;
  };
  QList<QWidget*> shown;
  for (QWidget* widget : window.findChildren<QWidget*>())
    if (widget->isVisibleTo(&window) && widget->window() == window.window()) shown << widget;
  for (const QWidget* widget : std::as_const(shown)) {
    if (const auto* tabs = qobject_cast<const QTabBar*>(widget))
      for (int i = 0; i < tabs->count(); ++i) take(tabs->tabText(i), QStringLiteral("page"));
    const auto* button = qobject_cast<const QAbstractButton*>(widget);
    if (!button || hasOwnKey(button) || button->objectName().startsWith(QLatin1String("qt_"))) continue;
    const auto* tool = qobject_cast<const QToolButton*>(button);
    if (button->text().isEmpty() || (tool && tool->toolButtonStyle() == Qt::ToolButtonIconOnly && !tool->icon().isNull())) continue;
    take(button->text(), QStringLiteral("button ") + button->objectName());
    ++buttons;
  }
  QList<QWidget*> found;
  for (QWidget* widget : std::as_const(shown))
    if (isField(widget)) found << widget;
  for (QWidget* field : std::as_const(found)) {
    if (found.size() == 1 && field->hasFocus()) continue;                 // nothing else to go to
    if (qobject_cast<QStackedWidget*>(field->parentWidget())) continue;   // a page of its own, which has a letter
    QChar letter;
    for (const QWidget* widget : std::as_const(shown))
      if (const auto* label = qobject_cast<const QLabel*>(widget); label && label->buddy() == field)
        letter = letterOf(label->text());
    const QWidget* before = field->previousInFocusChain();
    while (before != field && !(before->focusPolicy() & Qt::TabFocus)) before = before->previousInFocusChain();
    const auto* check = qobject_cast<const QAbstractButton*>(before);
    if (letter.isNull() && check && check->isCheckable() && !letterOf(check->text()).isNull()) continue;   // its check box has one
    EXPECT_FALSE(letter.isNull()) << "no letter: field " << field->metaObject()->className() << ' '
                                  << field->objectName().toStdString();
    fields << letter;
  }
  for (const QChar letter : std::as_const(fields))
    EXPECT_FALSE(actions.contains(letter)) << "a field has the letter of a button: " << QString(letter).toStdString();
}

void checkAll(QWidget& window, const QSet<QChar>& taken = {}) {
  SCOPED_TRACE(window.metaObject()->className() + std::string(" ") + window.windowTitle().toStdString());
  QTabBar* tabs = window.findChild<QTabBar*>();
  for (int page = 0; page < (tabs ? tabs->count() : 1); ++page) {
    if (tabs) tabs->setCurrentIndex(page);
    QCoreApplication::processEvents();
    checkShown(window, taken);
  }
}

class CancelAll : public Dialogs {
 public:
  Answer messageBox(const QString&, const QString&, Icon, Buttons buttons) override { return declined(buttons); }
  std::optional<QString> inputBox(const QString&, const QString&, const QString&) override { return std::nullopt; }
  QStringList openFile(FileDialogRequest&) override { return {}; }
  QString saveFile(FileDialogRequest&) override { return {}; }
  bool openUrl(const QString&) override { return true; }
};

class Mnemonics : public FrameFixture {};

TEST_F(Mnemonics, EveryButtonAndFieldOfEveryDialogHasOne) {
  main->show();
  frmDocument* document = open("a.v", "one, 1\ntwo, 2\n");
  document->cmx->SetSel({0, 0, 1, 3, false});
  QSet<QChar> menuLetters;
  for (const QAction* menu : main->menuBar()->actions())
    if (menu->isVisible()) menuLetters << letterOf(menu->text());
  CancelAll cancel;
  Dialogs* const before = setDialogs(&cancel);
  QStringList seen;
  bool looking = false;
  const auto look = [&](QWidget& window) {
    if (std::exchange(looking, true)) return;
    const QString kind = QString::fromLatin1(window.metaObject()->className());
    seen << kind;
    if (kind == q("QDialog") || !kind.startsWith(u'Q')) checkAll(window);   // those of the library are its own
    window.close();
    looking = false;
  };
  QTimer modal;
  QObject::connect(&modal, &QTimer::timeout, [&] {
    if (QWidget* window = QApplication::activeModalWidget()) look(*window);
  });
  modal.start(30);
  for (const FrameCommand* row : frameCommands()) {
    const QString caption = q(row->caption);
    if (row->isMenu || row->elements > 0 ||
        !(caption.endsWith(q("...")) || q(row->name) == q("mHelpAbout") || q(row->name) == q("mHelpHandbook")))
      continue;
    QAction* action = main->menus().action(q(row->name));
    if (!action->isEnabled()) continue;
    SCOPED_TRACE(row->name);
    action->trigger();
    QCoreApplication::processEvents();
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window->isVisible() && window != main.get() && window->isWindow() &&
          !(window->windowType() == Qt::ToolTip || window->windowType() == Qt::Popup))
        look(*window);
    for (const char* name : {"findDialog", "findInFiles"})
      if (auto* bar = main->findChild<QDockWidget*>(q(name)); bar && bar->isVisible()) {
        seen << bar->objectName();
        checkAll(*bar->widget(), menuLetters);
        bar->close();
      }
    wait(0);
  }
  modal.stop();
  setDialogs(before);
  for (const char* wanted :
       {"PropertiesDialog", "frmDefinitions", "frmCommand", "frmFormat", "frmPreview", "findDialog", "findInFiles"})
    EXPECT_TRUE(seen.contains(q(wanted))) << wanted << " was not opened";
  EXPECT_GE(seen.size(), 11) << seen.join(u' ').toStdString();
}

}   // namespace
