// The properties dialog: OK gives everything once, Cancel nothing; the keyboard page binds, tells conflicts and restores.
#include "control/options/PropertiesDialog.h"

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
#include <QTimer>
#include <QTreeWidget>
#include <QtTest/QTest>

#include "base/dialog/Dialogs.h"
#include "control/code/LanguageTable.h"
#include "control/edit/TextModel.h"
#include "control/keys/KeyCommands.h"
#include "control/keys/KeyField.h"
#include "control/keys/KeyMacro.h"
#include "control/keys/KeyMap.h"
#include "tests/control/PaneFixture.h"
#include "tests/support/ScriptedDialogs.h"

namespace {

QKeySequence keys(const char* text) { return QKeySequence(QString::fromLatin1(text), QKeySequence::PortableText); }
int idOf(const char* name) { return anyCommandByName(QString::fromLatin1(name))->id; }

constexpr bool ControlOptions::*kSwitches[] = {
    &ControlOptions::hSplitter,       &ControlOptions::vSplitter,    &ControlOptions::hScrollBar, &ControlOptions::vScrollBar,
    &ControlOptions::smoothScrolling, &ControlOptions::lineToolTips, &ControlOptions::leftMargin, &ControlOptions::colorSyntax,
    &ControlOptions::whiteSpace,      &ControlOptions::tabExpand,    &ControlOptions::columnSel,  &ControlOptions::dragDrop,
    &ControlOptions::preserveCase,    &ControlOptions::stickyLine};

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
  static Part& part(QWidget& dialog, const char* name) {
    return *dialog.findChild<Part*>(QString::fromLatin1(name));
  }
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
    part<QComboBox>(dialog, "completionKeys").setCurrentIndex(1);
    part<QLineEdit>(dialog, "rulers").setText(QStringLiteral("100, 80"));
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

}   // namespace

TEST_F(PropertiesDialogTest, OkChangesEverythingOnceAndCancelNothing) {
  const ControlOptions before = ControlOptions::of(control);
  for (const bool ok : {false, true}) {
    run(ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel, changeEverything);
    EXPECT_EQ(raised, ok ? 1 : 0);
    EXPECT_FALSE(isDialogUp());
    const ControlOptions now = ControlOptions::of(control);
    for (std::size_t i = 0; i < std::size(kSwitches); ++i) EXPECT_EQ(now.*kSwitches[i] != before.*kSwitches[i], ok) << i;
    for (const auto& row : TypingAids::switches()) EXPECT_EQ(now.aids.*row.value != before.aids.*row.value, ok) << row.field;
    EXPECT_EQ(now.aids.completionKeys, ok ? 1 : 0);
    EXPECT_EQ(now.aids.rulers, ok ? (std::vector<int>{80, 100}) : std::vector<int>());
    EXPECT_EQ(now.tabSize, ok ? 7 : before.tabSize);
    EXPECT_EQ(now.autoIndentMode, ok ? 2 : before.autoIndentMode);
    EXPECT_EQ(now.font.pointSizeF(), ok ? 17.5 : before.font.pointSizeF());
    EXPECT_EQ(now.font.bold() != before.font.bold(), ok);
    EXPECT_EQ(now.font.italic() != before.font.italic(), ok);
    EXPECT_EQ(now.language, ok ? QStringLiteral("SQL") : before.language);
    for (int slot = 0; slot < kColorSlots; ++slot)
      EXPECT_EQ(now.colors[slot], ok && slot == 9 ? QColor(0x12, 0x34, 0x56) : before.colors[slot]) << slot;
    EXPECT_EQ(keyMap().actionOf(keys("F9")).command == idOf("FINDNEXT"), ok);
  }
}

TEST_F(PropertiesDialogTest, EachOptionOfTheDisplayCanBeSeen) {
  control.setLanguage(QStringLiteral("C/C++"));
  control.setText(QStringLiteral("int\ta = 1;   // one\n"));
  control.resize(500, 200);
  control.setFocusPolicy(Qt::NoFocus);
  control.setAids({});   // no mark that comes later
  control.show();
  control.findChild<Pane*>()->clearFocus();   // no caret that blinks
  const auto picture = [&] {
    QApplication::processEvents();
    return control.grab().toImage();
  };
  const QImage before = picture();
  ControlOptions options = ControlOptions::of(control);
  for (const auto option :
       {&ControlOptions::hSplitter, &ControlOptions::vSplitter, &ControlOptions::hScrollBar, &ControlOptions::vScrollBar,
        &ControlOptions::leftMargin, &ControlOptions::colorSyntax, &ControlOptions::whiteSpace}) {
    for (const bool changed : {true, false}) {
      options.*option = !(options.*option);
      options.applyTo(control);
      EXPECT_EQ(picture() != before, changed);
    }
  }
  options.tabSize = 3;
  options.applyTo(control);
  EXPECT_NE(picture(), before);
  options.tabExpand = true;
  options.applyTo(control);
  control.SetSel({0, 0, 0, 0, false});
  control.ExecuteCmd(idOf("INDENTSELECTION"));
  EXPECT_EQ(control.GetLine(0), QStringLiteral("   int\ta = 1;   // one"));
}

TEST_F(PropertiesDialogTest, SchemesFollowTheDesktopOrStay) {
  const QPalette light = desktopPalette(false), dark = desktopPalette(true);
  control.setPalette(light);
  const QColor lightWindow = control.GetColor(0);
  run(QDialogButtonBox::Ok, [](QWidget& d) { part<QPushButton>(d, "alwaysLight").click(); });
  control.setPalette(dark);
  EXPECT_NEAR(control.GetColor(0).blue(), lightWindow.blue(), 1);
  EXPECT_EQ(ControlOptions::of(control).look(), ControlOptions::Look::light);
  run(QDialogButtonBox::Ok, [](QWidget& d) { part<QPushButton>(d, "followDesktop").click(); });
  EXPECT_EQ(control.GetColor(0), ColorScheme::schemeColor(0, true));
  EXPECT_EQ(ControlOptions::of(control).look(), ControlOptions::Look::desktop);
  control.setPalette(light);
  EXPECT_EQ(control.GetColor(0), lightWindow);
}

TEST_F(PropertiesDialogTest, KeysAreFoundBoundTakenAndRestored) {
  run(QDialogButtonBox::Ok, [](QWidget& d) {
    const int all = shownCommands(d);
    EXPECT_EQ(all, static_cast<int>(commands().size() + keyCommands().size()));
    part<QLineEdit>(d, "searchName").setText(QStringLiteral("transpose"));
    EXPECT_EQ(shownCommands(d), 3);
    const QTreeWidgetItem* current = part<QTreeWidget>(d, "commands").currentItem();
    EXPECT_TRUE(current && !current->isHidden()) << "what is described below must be one that is shown";
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
  ScriptedDialogs boxes;
  boxes.answerInput(QStringLiteral("two")).answer(Answer::ok).answerInput(QStringLiteral("uno"));   // the first is taken
  run(QDialogButtonBox::Ok, [&](QWidget& d) {
    choose(d, "Macro: one");
    part<QPushButton>(d, "renameMacro").click();
    part<QPushButton>(d, "renameMacro").click();
    choose(d, "Macro: two");
    part<QPushButton>(d, "removeMacro").click();
    choose(d, "Macro: uno");
    QTest::keyClick(&part<KeyField>(d, "newKeys"), Qt::Key_2, Qt::ControlModifier);
    part<QPushButton>(d, "bind").click();
  });
  EXPECT_EQ(keyMacros().toText().toStdString(), "[uno] Ctrl+1; Ctrl+2\nUNDO");
}
