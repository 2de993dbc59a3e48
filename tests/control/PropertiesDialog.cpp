// The properties dialog: OK gives everything once, Cancel nothing; the keyboard page binds, tells conflicts and restores.
#include "control/PropertiesDialog.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest/QTest>

#include "base/Dialogs.h"
#include "control/KeyCommands.h"
#include "control/KeyField.h"
#include "control/KeyMacro.h"
#include "control/KeyMap.h"

namespace {

QKeySequence keys(const char* text) { return QKeySequence(QString::fromLatin1(text), QKeySequence::PortableText); }
int idOf(const char* name) { return anyCommandByName(QString::fromLatin1(name))->id; }

class PropertiesDialogTest : public testing::Test {
 protected:
  CodeMax control;
  int raised = 0;

  void SetUp() override {
    QObject::connect(&control, &CodeMax::PropsChange, [this] { ++raised; });
  }
  void TearDown() override {
    keyMacros().fromText({});
    keyMap().fromText({});
  }
  // Runs the dialog, does `use` in it and leaves it by the button.
  void run(QDialogButtonBox::StandardButton button, const std::function<void(QWidget& dialog)>& use) {
    bool seen = false;
    QTimer::singleShot(0, [&] {
      QWidget* dialog = QApplication::activeModalWidget();
      ASSERT_NE(dialog, nullptr);
      seen = isDialogUp();
      use(*dialog);
      dialog->findChild<QDialogButtonBox*>()->button(button)->click();
    });
    control.ExecuteProperties();
    EXPECT_TRUE(seen);
  }
  template <class Part>
  static Part& part(QWidget& dialog, const char* name) { return *dialog.findChild<Part*>(QString::fromLatin1(name)); }
  static void choose(QWidget& dialog, const char* command) {
    auto& tree = part<QTreeWidget>(dialog, "commands");
    tree.setCurrentItem(tree.findItems(QString::fromLatin1(command), Qt::MatchExactly).value(0));
  }
  static int shownCommands(QWidget& dialog) {
    auto& tree = part<QTreeWidget>(dialog, "commands");
    int shown = 0;
    for (int i = 0; i < tree.topLevelItemCount(); ++i) shown += !tree.topLevelItem(i)->isHidden();
    return shown;
  }
  static void changeEverything(QWidget& dialog) {
    for (QCheckBox* box : dialog.findChildren<QCheckBox*>())
      if (!box->objectName().isEmpty()) box->toggle();
    part<QSpinBox>(dialog, "tabSize").setValue(7);
    part<QComboBox>(dialog, "autoIndent").setCurrentIndex(2);
    part<QDoubleSpinBox>(dialog, "fontSize").setValue(17.5);
    part<QListWidget>(dialog, "slots").setCurrentRow(9);
    QTest::keyClicks(&part<QLineEdit>(dialog, "colorCode"), QString());
    part<QLineEdit>(dialog, "colorCode").clear();
    QTest::keyClicks(&part<QLineEdit>(dialog, "colorCode"), QStringLiteral("#123456"));
    auto& languages = part<QListWidget>(dialog, "languages");
    languages.setCurrentItem(languages.findItems(QStringLiteral("SQL"), Qt::MatchExactly).value(0));
    choose(dialog, "FINDNEXT");
    QTest::keyClick(&part<KeyField>(dialog, "newKeys"), Qt::Key_F9);
    part<QPushButton>(dialog, "bind").click();
  }
};

}  // namespace

TEST_F(PropertiesDialogTest, OkChangesEverythingOnce) {
  const ControlOptions before = ControlOptions::of(control);
  run(QDialogButtonBox::Ok, changeEverything);
  EXPECT_EQ(raised, 1);
  const ControlOptions now = ControlOptions::of(control);
  EXPECT_NE(now.hSplitter, before.hSplitter);
  EXPECT_NE(now.vSplitter, before.vSplitter);
  EXPECT_NE(now.hScrollBar, before.hScrollBar);
  EXPECT_NE(now.vScrollBar, before.vScrollBar);
  EXPECT_NE(now.smoothScrolling, before.smoothScrolling);
  EXPECT_NE(now.lineToolTips, before.lineToolTips);
  EXPECT_NE(now.leftMargin, before.leftMargin);
  EXPECT_NE(now.colorSyntax, before.colorSyntax);
  EXPECT_NE(now.whiteSpace, before.whiteSpace);
  EXPECT_NE(now.tabExpand, before.tabExpand);
  EXPECT_NE(now.columnSel, before.columnSel);
  EXPECT_NE(now.dragDrop, before.dragDrop);
  EXPECT_NE(now.preserveCase, before.preserveCase);
  EXPECT_EQ(now.tabSize, 7);
  EXPECT_EQ(now.autoIndentMode, 2);
  EXPECT_EQ(now.font.pointSizeF(), 17.5);
  EXPECT_NE(now.font.bold(), before.font.bold());
  EXPECT_NE(now.font.italic(), before.font.italic());
  EXPECT_EQ(now.language, QStringLiteral("SQL"));
  for (int slot = 0; slot < kColorSlots; ++slot)
    EXPECT_EQ(now.colors[slot], slot == 9 ? QColor(0x12, 0x34, 0x56) : before.colors[slot]) << slot;
  EXPECT_EQ(keyMap().actionOf(keys("F9")).command, idOf("FINDNEXT"));
  EXPECT_FALSE(isDialogUp());
}

TEST_F(PropertiesDialogTest, CancelChangesNothing) {
  const ControlOptions before = ControlOptions::of(control);
  run(QDialogButtonBox::Cancel, changeEverything);
  EXPECT_EQ(raised, 0);
  const ControlOptions now = ControlOptions::of(control);
  EXPECT_EQ(now.colors, before.colors);
  EXPECT_EQ(now.tabSize, before.tabSize);
  EXPECT_EQ(now.font, before.font);
  EXPECT_EQ(now.leftMargin, before.leftMargin);
  EXPECT_EQ(now.language, before.language);
  EXPECT_EQ(keyMap().toText(), QString());
}

TEST_F(PropertiesDialogTest, SchemesFollowTheDesktopOrStay) {
  QPalette light, dark;
  light.setColor(QPalette::Base, Qt::white);
  light.setColor(QPalette::Text, Qt::black);
  dark.setColor(QPalette::Base, Qt::black);
  dark.setColor(QPalette::Text, Qt::white);
  control.setPalette(light);
  const QColor lightWindow = control.GetColor(0);
  run(QDialogButtonBox::Ok, [](QWidget& d) { part<QPushButton>(d, "alwaysLight").click(); });
  control.setPalette(dark);
  EXPECT_NEAR(control.GetColor(0).blue(), lightWindow.blue(), 1);
  run(QDialogButtonBox::Ok, [](QWidget& d) {
    part<QPushButton>(d, "followDesktop").click();
    d.findChild<CodeMax*>(QStringLiteral("colorPreview"));
  });
  EXPECT_EQ(control.GetColor(0), ColorScheme::schemeColor(0, true));
  control.setPalette(light);
  EXPECT_EQ(control.GetColor(0), lightWindow);
}

TEST_F(PropertiesDialogTest, KeysAreFoundBoundTakenAndRestored) {
  run(QDialogButtonBox::Ok, [](QWidget& d) {
    const int all = shownCommands(d);
    EXPECT_EQ(all, static_cast<int>(commands().size() + keyCommands().size()));
    part<QLineEdit>(d, "searchName").setText(QStringLiteral("transpose"));
    EXPECT_EQ(shownCommands(d), 3);
    part<QLineEdit>(d, "searchName").clear();
    auto& search = part<KeyField>(d, "searchKeys");
    QTest::keyClick(&search, Qt::Key_K, Qt::ControlModifier);
    EXPECT_GT(shownCommands(d), 10);
    QTest::keyClick(&search, Qt::Key_U, Qt::ControlModifier);
    EXPECT_EQ(shownCommands(d), 1);
    search.setKeys({});
    EXPECT_EQ(shownCommands(d), all);

    auto& conflicts = part<QLabel>(d, "conflicts");
    auto& fresh = part<KeyField>(d, "newKeys");
    choose(d, "WORDCAPITALIZE");
    QTest::keyClick(&fresh, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(conflicts.text().contains(QStringLiteral("UNDO"))) << conflicts.text().toStdString();
    part<QPushButton>(d, "bind").click();
    EXPECT_TRUE(conflicts.text().isEmpty());
    QTest::keyClick(&fresh, Qt::Key_K, Qt::ControlModifier);
    EXPECT_TRUE(conflicts.text().contains(QStringLiteral("In the way of")));
    choose(d, "COPY");
    while (part<QListWidget>(d, "keysOfCommand").count() > 0) part<QPushButton>(d, "unbind").click();
  });
  EXPECT_EQ(keyMap().actionOf(keys("Ctrl+Z")).command, idOf("WORDCAPITALIZE"));
  EXPECT_TRUE(keyMap().actionOf(keys("Ctrl+C")).isNone());
  run(QDialogButtonBox::Ok, [](QWidget& d) { part<QPushButton>(d, "restoreDefaults").click(); });
  EXPECT_EQ(keyMap().toText(), QString());
}

TEST_F(PropertiesDialogTest, MacrosGetKeysAndNames) {
  keyMacros().fromText(QStringLiteral("[one] Ctrl+1\nUNDO\n[two]\nREDO"));
  struct Answers : Dialogs {
    Answer messageBox(const QString&, const QString&, Icon, Buttons) override { return ++boxes, Answer::ok; }
    std::optional<QString> inputBox(const QString&, const QString&, const QString&) override { return name; }
    QStringList openFile(FileDialogRequest&) override { return {}; }
    QString saveFile(FileDialogRequest&) override { return {}; }
    bool openUrl(const QString&) override { return false; }
    QString name;
    int boxes = 0;
  } answers;
  Dialogs* old = setDialogs(&answers);
  run(QDialogButtonBox::Ok, [&](QWidget& d) {
    choose(d, "Macro: one");
    answers.name = QStringLiteral("two");
    part<QPushButton>(d, "renameMacro").click();
    EXPECT_EQ(answers.boxes, 1);
    answers.name = QStringLiteral("uno");
    part<QPushButton>(d, "renameMacro").click();
    choose(d, "Macro: two");
    part<QPushButton>(d, "removeMacro").click();
    choose(d, "Macro: uno");
    QTest::keyClick(&part<KeyField>(d, "newKeys"), Qt::Key_2, Qt::ControlModifier);
    part<QPushButton>(d, "bind").click();
  });
  setDialogs(old);
  EXPECT_EQ(keyMacros().toText().toStdString(), "[uno] Ctrl+1; Ctrl+2\nUNDO");
}
