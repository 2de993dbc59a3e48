#include "base/dialog/Dialogs.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSpinBox>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

#include "base/Program.h"
#include "base/Workspace.h"
#include "base/dialog/FitScreen.h"
#include "base/dialog/PageKeys.h"
#include "base/dialog/PressAtOnce.h"
#include "base/dialog/TypedKeys.h"
#include "tests/support/Text.h"

namespace {

// Does something with the modal window that is up soon, of the type W; other windows that come first fail the test.
template <class W, class F>
void onceUp(F act) {
  QTimer::singleShot(0, qApp, [act] {
    auto* window = qobject_cast<W*>(QApplication::activeModalWidget());
    ASSERT_NE(window, nullptr);
    act(window);
  });
}

}   // namespace

TEST(Dialogs, MessageBoxShowsPlainTextAndItsButtons) {
  struct Case {
    Buttons buttons;
    std::vector<std::pair<QMessageBox::StandardButton, Answer>> answers;
    Answer onEscape;
  };
  using B = QMessageBox;
  for (const Case& c :
       {Case{Buttons::ok, {{B::Ok, Answer::ok}}, Answer::ok},
        Case{Buttons::okCancel, {{B::Ok, Answer::ok}, {B::Cancel, Answer::cancel}}, Answer::cancel},
        Case{Buttons::yesNo, {{B::Yes, Answer::yes}, {B::No, Answer::no}}, Answer::no},
        Case{Buttons::yesNoCancel, {{B::Yes, Answer::yes}, {B::No, Answer::no}, {B::Cancel, Answer::cancel}}, Answer::cancel}}) {
    for (const auto& [button, answer] : c.answers) {
      EXPECT_FALSE(isDialogUp());
      onceUp<QMessageBox>([&, wanted = button](QMessageBox* box) {
        EXPECT_TRUE(isDialogUp());
        EXPECT_EQ(box->textFormat(), Qt::PlainText);
        EXPECT_EQ(box->text(), q("<b>a</b>\n%1<U+202E>x"));
        EXPECT_EQ(box->windowTitle(), q(kApplicationTitle));
        EXPECT_EQ(box->icon(), QMessageBox::Question);
        EXPECT_EQ(box->buttons().size(), static_cast<qsizetype>(c.answers.size()));
        box->button(wanted)->click();
      });
      EXPECT_EQ(MsgBox(q("<b>a</b>\r\n%1\xE2\x80\xAEx"), {}, Icon::question, c.buttons), answer);
    }
    onceUp<QMessageBox>([](QMessageBox* box) {
      QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
      QApplication::sendEvent(box, &escape);
    });
    EXPECT_EQ(MsgBox(q("x"), q("t"), Icon::none, c.buttons), c.onEscape);
    onceUp<QMessageBox>([](QMessageBox* box) { box->done(0); });   // as when the program ends
    EXPECT_EQ(MsgBox(q("x"), q("t"), Icon::none, c.buttons), c.onEscape);
  }
  EXPECT_FALSE(isDialogUp());
}

TEST(Dialogs, LargeOnesFitTheScreenOrScroll) {
  FitScreen fits;
  qApp->installEventFilter(&fits);
  for (const bool withButtons : {true, false}) {
    QDialog dialog;
    auto* layout = new QVBoxLayout(&dialog);
    for (int i = 0; i < 100; ++i) layout->addWidget(new QLineEdit);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    if (withButtons) layout->addWidget(buttons);
    else layout->insertWidget(0, buttons);
    dialog.move(5000, 5000);
    const auto fields = dialog.findChildren<QLineEdit*>();
    QWidget* first = withButtons ? fields[0] : fields[3];   // by itself, or by choice
    if (!withButtons) first->setFocus();
    for (int time = 0; time < 2; ++time) {   // shown again it is as it was
      dialog.show();
      EXPECT_TRUE(dialog.screen()->availableGeometry().contains(dialog.geometry()));
      EXPECT_EQ(dialog.findChildren<QScrollArea*>().size(), 1);
      EXPECT_EQ(dialog.focusWidget(), first);
      EXPECT_EQ(fields[0]->nextInFocusChain(), fields[1]);
      QWidget* next = fields.last()->nextInFocusChain();
      while (next->focusPolicy() == Qt::NoFocus) next = next->nextInFocusChain();
      EXPECT_EQ(next, buttons->button(QDialogButtonBox::Ok)) << "Tab";
      QCoreApplication::processEvents();
      EXPECT_TRUE(dialog.rect().contains(buttons->mapTo(&dialog, buttons->rect().center())));
      dialog.hide();
    }
  }
  QDialog small;
  new QVBoxLayout(&small);
  small.resize(9000, 9000);
  small.show();
  EXPECT_TRUE(small.screen()->availableGeometry().contains(small.geometry()));
  EXPECT_EQ(small.findChild<QScrollArea*>(), nullptr) << "it only opened too large";
}

TEST(Dialogs, FieldsTakeNoLettersOfMenus) {
  TypedKeys typed;
  qApp->installEventFilter(&typed);
  QLineEdit line;
  QPlainTextEdit lines;
  QSpinBox number;
  QComboBox choice;
  choice.setEditable(true);
  for (QWidget* field : std::initializer_list<QWidget*>{&line, &lines, &number, &choice})
    for (const auto modifiers : {Qt::KeyboardModifiers(Qt::AltModifier),
                                 Qt::AltModifier | Qt::ControlModifier,
                                 Qt::KeyboardModifiers(Qt::MetaModifier),
                                 {}}) {
      QKeyEvent key(QEvent::KeyPress, Qt::Key_5, modifiers, q("5"));
      QApplication::sendEvent(field, &key);
    }
  EXPECT_EQ(line.text() + q("|") + lines.toPlainText() + q("|") + choice.currentText(), q("5|5|5"));
  EXPECT_EQ(number.value(), 5);
}

TEST(Dialogs, ALetterTicksItsBoxBeforeTheNextKey) {
  PressAtOnce filter;
  qApp->installEventFilter(&filter);
  QDialog dialog;
  auto* layout = new QVBoxLayout(&dialog);
  auto* box = new QCheckBox(q("&Left margin"));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  layout->addWidget(box);
  layout->addWidget(buttons);
  bool taken = false;
  QObject::connect(buttons, &QDialogButtonBox::accepted, [&] { taken = box->isChecked(); });
  dialog.show();
  dialog.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  QTest::keyClick(&dialog, Qt::Key_L, Qt::AltModifier);
  QTest::keyClick(&dialog, Qt::Key_Return);
  EXPECT_TRUE(taken);
}

TEST(Dialogs, PagesAreWalkedFromAnywhereInTheDialog) {
  QDialog dialog;
  QTabBar pages(&dialog);
  for (const char* name : {"a", "b", "c"}) pages.addTab(q(name));
  pages.setTabVisible(1, false);
  walkPagesByKeys(dialog, pages);
  QLineEdit other(&dialog);
  dialog.show();
  dialog.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  other.setFocus();
  QTest::keyClick(&other, Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_EQ(pages.currentIndex(), 2);
  QTest::keyClick(&other, Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_EQ(pages.currentIndex(), 0);
  QTest::keyClick(&other, Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(pages.currentIndex(), 2);
}

TEST(Dialogs, InputBoxGivesTextOrNothing) {
  onceUp<QDialog>([](QDialog* box) {
    EXPECT_EQ(box->findChild<QLabel*>()->textFormat(), Qt::PlainText);
    auto* line = box->findChild<QLineEdit*>();
    EXPECT_EQ(line->selectedText(), q("old"));
    line->setText(q(""));
    box->accept();
  });
  EXPECT_EQ(InputBox(q("<i>Prompt"), q("Title"), q("old")), std::optional<QString>(q("")));
  onceUp<QDialog>([](QDialog* box) { box->reject(); });
  EXPECT_EQ(InputBox(q("Prompt")), std::nullopt);
}

TEST(Dialogs, FileDialogKeepsTheFilterIndex) {
  const QTemporaryDir temporary;
  const QString path = temporary.filePath(q("a.vhd"));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  FileDialogRequest request;
  request.title = q("Open a File");
  request.filter = q("(*.*)|*.*|Verilog (*.v;*.vh)|*.v;*.vh|VHDL (*.vhd)|*.vhd|");
  request.filterIndex = 2;
  request.folder = temporary.path();
  request.multiple = true;
  onceUp<QFileDialog>([&](QFileDialog* dialog) {
    EXPECT_EQ(dialog->selectedNameFilter(), q("Verilog (*.v *.vh)"));
    EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFiles);
    dialog->selectNameFilter(q("VHDL (*.vhd)"));
    dialog->selectFile(path);
    static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
  });
  EXPECT_EQ(dialogs().openFile(request), QStringList{path});
  EXPECT_EQ(request.filterIndex, 3);

  request.filterIndex = 1;
  onceUp<QFileDialog>([](QFileDialog* dialog) { dialog->reject(); });
  EXPECT_TRUE(dialogs().openFile(request).isEmpty());
  EXPECT_EQ(request.filterIndex, 1);
}

TEST(Dialogs, SavingOverAFileAsksFirst) {
  const QTemporaryDir temporary;
  const QString path = temporary.filePath(q("<b>old.v"));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  FileDialogRequest request;
  request.folder = temporary.path();
  request.name = q("<b>old.v");
  for (const bool overwrite : {true, false}) {
    onceUp<QFileDialog>([&](QFileDialog* dialog) {
      onceUp<QMessageBox>([&](QMessageBox* box) {
        EXPECT_TRUE(box->text().contains(q("<b>old.v already exists."))) << box->text().toStdString();
        if (!overwrite) onceUp<QFileDialog>([](QFileDialog* again) { again->reject(); });
        box->button(overwrite ? QMessageBox::Yes : QMessageBox::No)->click();
      });
      static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
    });
    EXPECT_EQ(dialogs().saveFile(request), overwrite ? path : QString());
  }
}

TEST(DialogsProgram, AWorkspaceOfOnesOwnLeavesTheOtherAsItWas) {
  struct Counted {
    int value = 0;
    std::function<void()> atEnd = [] {};
    ~Counted() { atEnd(); }
  };
  Workspace::current().part<Counted>().value = 1;
  int seen = 0;
  {
    const Workspace own;
    EXPECT_EQ(Workspace::current().part<Counted>().value, 0);
    Workspace::current().part<Counted>().atEnd = [&] { seen = gBusy() ? 1 : 2; };   // a part may ask for others while it ends
  }
  EXPECT_EQ(seen, 2);
  EXPECT_EQ(Workspace::current().part<Counted>().value, 1);
}
