// The command dialog: what it offers, what it keeps; and the options of the control in the settings.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include "control/keys/KeyMacro.h"
#include "control/keys/KeyMap.h"
#include "control/options/ControlOptions.h"
#include "document/CMXRegistry.h"
#include "script/CommandField.h"
#include "script/frmCommand.h"
#include "settings/RegistryFile.h"
#include "settings/modRegistry.h"
#include "tests/document/RunFixture.h"
#include "tests/support/OnceAProgramRuns.h"

using namespace Qt::StringLiterals;

namespace {

class OwnSettings {
 public:
  OwnSettings() : file(QString::fromStdString(folder / "settings.conf")), old_(registry::setStore(&file)) {}
  ~OwnSettings() { registry::setStore(old_); }
  testing_files::TempFolder folder;
  RegistryFile file;

 private:
  registry::Store* old_;
};

QStringList offered(const QString& before) {
  qsizetype begin = 0;
  QStringList list;
  for (const Completion& completion : completionsFor(before, &begin)) {
    EXPECT_FALSE(completion.help.isEmpty()) << qPrintable(completion.text);
    list << QString::number(begin) + u' ' + completion.text;
  }
  return list;
}

}   // namespace

TEST(CommandDialog, OffersWhatMayStandThere) {
  struct Case {
    QString before;
    QStringList some;
    int least, most;
  };
  const std::vector<Case> cases{
      {u""_s, {u"0 ECHO"_s, u"0 cmdUNDO"_s, u"0 cmdSELECTAREA"_s}, 120, 200},
      {u"ec"_s, {u"0 ECHO"_s}, 1, 1},
      {u"cmdund"_s, {u"0 cmdUNDO"_s, u"0 cmdUNDOCHANGES"_s}, 2, 2},
      {u"undo"_s, {u"0 cmdUNDO"_s}, 2, 2},
      {u"LOGS"_s, {u"0 LOGSAVE"_s}, 1, 1},
      {u"ECHO x $na"_s, {u"7 $Name"_s}, 1, 1},
      {u"ECHO $"_s, {u"5 $Name"_s, u"5 $Input("_s}, 12, 12},
      {u"usage foo -c"_s, {u"9  -cs"_s, u"9  -c"_s}, 2, 2},
      {u"ECHO plain"_s, {}, 0, 0},
      {u"ZZZ"_s, {}, 0, 0},
  };
  for (const Case& c : cases) {
    const QStringList list = offered(c.before);
    EXPECT_GE(list.size(), c.least) << qPrintable(c.before);
    EXPECT_LE(list.size(), c.most) << qPrintable(c.before);
    for (const QString& one : c.some) EXPECT_TRUE(list.contains(one)) << qPrintable(c.before) << ": " << qPrintable(one);
  }
  EXPECT_TRUE(commandHelp(u"echo hello"_s, 3).startsWith(u"ECHO text: "_s));
  EXPECT_TRUE(commandHelp(u"ECHO $Title x"_s, 8).startsWith(u"$Title: "_s));
  EXPECT_FALSE(commandHelp(u"xyzgotoline 3"_s, 5).isEmpty());
  EXPECT_EQ(commandHelp(u"NONSENSE"_s, 2), u""_s);
}

TEST(CommandDialog, KeepsWhatFailsAndRemembersWhatRan) {
  OwnSettings settings;
  RunFrame frame;
  ScriptedDialogs boxes;
  {
    frmCommand dialog;
    auto* const field = dialog.findChild<QPlainTextEdit*>();
    dialog.setCommands(u"ECHO 1"_s);
    dialog.run();
    EXPECT_EQ(dialog.commands(), u""_s);
    dialog.setCommands(u"ECHO 2\nBAD $Title\nECHO 3"_s);
    boxes.answer(Answer::ok);
    dialog.run();
    EXPECT_EQ(dialog.commands(), u"ECHO 2\nBAD $Title\nECHO 3"_s);
    EXPECT_EQ(field->textCursor().blockNumber(), 1);
    bool told = false;
    for (const auto* label : dialog.findChildren<QLabel*>()) told = told || label->text() == u"Line 2: Invalid Command : BAD "_s;
    EXPECT_TRUE(told);
    EXPECT_EQ(frame.logWindow->Text(), u"1\r\n2\r\n\r\nInvalid Command BAD "_s);
    dialog.setCommands(u"typed"_s);
    dialog.recall(1);
    dialog.recall(1);
    EXPECT_EQ(dialog.commands(), u"ECHO 1"_s);
    dialog.recall(1);
    EXPECT_EQ(dialog.commands(), u"ECHO 1"_s);
    dialog.recall(-1);
    dialog.recall(-1);
    EXPECT_EQ(dialog.commands(), u"typed"_s);
    for (int n = 0; n < 25; ++n) {
      dialog.setCommands(u"ECHO %1"_s.arg(n));
      dialog.run();
    }
    frame.active = nullptr;
    dialog.setCommands(u"ECHO x"_s);
    dialog.run();
    EXPECT_EQ(dialog.commands(), u"ECHO x"_s) << "without a document nothing ran";
  }
  frmCommand again;
  ASSERT_EQ(again.history().size(), 20);
  EXPECT_EQ(again.history()[0], u"ECHO x"_s);
  EXPECT_EQ(again.history()[19], u"ECHO 6"_s);
}

TEST(CommandDialog, WhatIsTypedDuringARunStays) {
  OwnSettings settings;
  RunFrame frame;
  frmCommand dialog;
  const QString first = u"SHELL "_s + startee() + u" sleep 200"_s;
  bool wasRunning = false, couldRun = true;
  const OnceAProgramRuns meanwhile([&] {
    wasRunning = mCMXParser::isRunning();
    dialog.setCommands(u"ECHO next"_s);
    dialog.run();
    couldRun = dialog.findChild<QPushButton*>(u"run"_s)->isEnabled();
  });
  dialog.setCommands(first);
  dialog.run();
  ASSERT_TRUE(wasRunning);
  EXPECT_FALSE(couldRun) << "one at a time";
  EXPECT_EQ(dialog.commands(), u"ECHO next"_s);
  EXPECT_EQ(dialog.history(), QStringList{first});
}

TEST(CommandDialog, TheListTakesReturnOnlyOnceTheUserIsInIt) {
  OwnSettings settings;
  RunFrame frame;
  frmCommand dialog;
  dialog.show();
  auto* const field = dialog.findChild<QPlainTextEdit*>();
  field->setFocus();
  const auto press = [&](int key, Qt::KeyboardModifiers modifiers = {}) {
    QWidget* const popup = QApplication::activePopupWidget();
    QTest::keyClick(popup ? popup : field, Qt::Key(key), modifiers);
  };
  QTest::keyClicks(field, u"echo"_s);
  QTest::keyClicks(QApplication::activePopupWidget() ? QApplication::activePopupWidget() : field, u" a"_s);
  press(Qt::Key_Return);
  QTest::keyClicks(field, u"save"_s);
  ASSERT_TRUE(QApplication::activePopupWidget()) << "SAVE and SAVEALL";
  press(Qt::Key_Return);
  EXPECT_EQ(dialog.commands(), u"echo a\nsave\n"_s);
  dialog.setCommands({});
  QTest::keyClicks(field, u"sav"_s);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(dialog.commands(), u"SAVE"_s);
  dialog.setCommands({});
  QTest::keyClicks(field, u"ECHO 1"_s);
  press(Qt::Key_Return);
  QTest::keyClicks(field, u"LOGC"_s);
  ASSERT_TRUE(QApplication::activePopupWidget());
  press(Qt::Key_Tab);
  EXPECT_EQ(dialog.commands(), u"ECHO 1\nLOGCLEAR"_s);
  dialog.setCommands(u"ECHO 2\n"_s);
  field->moveCursor(QTextCursor::End);
  QTest::keyClicks(field, u"cmdundo"_s);
  press(Qt::Key_Return, Qt::ControlModifier);
  EXPECT_TRUE(frame.logWindow->Text().startsWith(u"2\r\n"_s)) << "Ctrl+Return runs the commands";
}

TEST(CommandDialog, OptionsOfTheControlComeBackOneByOne) {
  OwnSettings settings;
  CodeMax first;
  CMXRegistry::applyTo(first);
  EXPECT_TRUE(modRegistry::KeyValid(modRegistry::kEditorKey)) << "a first run stores the control's own options";
  EXPECT_EQ(modRegistry::Number(modRegistry::kEditorKey, u"TABSIZE"_s, -1), first.TabSize());
  EXPECT_EQ(modRegistry::GetValue(modRegistry::kEditorKey, u"COLORS17"_s).typeId(), QMetaType::Int);
  ControlOptions other = ControlOptions::of(first);
  constexpr bool ControlOptions::*switches[] = {
      &ControlOptions::hSplitter,       &ControlOptions::vSplitter,    &ControlOptions::hScrollBar, &ControlOptions::vScrollBar,
      &ControlOptions::smoothScrolling, &ControlOptions::lineToolTips, &ControlOptions::leftMargin, &ControlOptions::colorSyntax,
      &ControlOptions::whiteSpace,      &ControlOptions::tabExpand,    &ControlOptions::columnSel,  &ControlOptions::dragDrop,
      &ControlOptions::preserveCase,    &ControlOptions::stickyLine};
  for (const auto option : switches) other.*option = !(other.*option);
  for (const auto& row : TypingAids::switches()) other.aids.*row.value = !(other.aids.*row.value);
  other.aids.completionKeys = 2;
  other.aids.rulers = {80, 120};
  other.tabSize = 7;
  other.autoIndentMode = 2;
  other.applyTo(first);
  first.SetColor(3, QColor(1, 2, 3));
  QFont font = first.Font();
  font.setPointSizeF(15.5);
  font.setBold(true);
  first.setFontOf(font);
  CMXRegistry::save(first);
  CodeMax second;
  CMXRegistry::applyTo(second);
  const ControlOptions back = ControlOptions::of(second);
  for (const auto option : switches) EXPECT_EQ(back.*option, other.*option) << &option - switches;
  EXPECT_EQ(back.aids, other.aids);
  EXPECT_EQ(second.TabSize(), 7);
  EXPECT_EQ(second.AutoIndentMode(), 2);
  EXPECT_EQ(second.GetColor(3), QColor(1, 2, 3));
  EXPECT_EQ(modRegistry::Number(modRegistry::kEditorKey, u"COLORS3"_s, 0), 0x030201);
  EXPECT_EQ(second.Font().pointSizeF(), 15.5);
  EXPECT_TRUE(second.Font().bold());
}

TEST(CommandDialog, MacrosAndKeysComeBack) {
  OwnSettings settings;
  CMXRegistry::loadMacros();   // nothing stored: nothing changes
  CMXRegistry::loadHotKeys();
  const QString keysBefore = keyMap().toText(), macrosBefore = keyMacros().toText();
  keyMacros().set({u"twice"_s, {{0, u"a\n\"b"_s}, {168, 3}}});
  keyMap().bind(QKeySequence(u"Ctrl+Alt+F9"_s), {CommandNumber(Cmd::UNDO), {}});
  const QString macros = keyMacros().toText(), keys = keyMap().toText();
  CMXRegistry::storeOptions(CodeMax());
  EXPECT_EQ(modRegistry::Flush(), 0);
  keyMacros().remove(u"twice"_s);
  keyMap().restoreDefaults();
  CMXRegistry::loadMacros();
  CMXRegistry::loadHotKeys();
  EXPECT_EQ(keyMacros().toText(), macros);
  EXPECT_EQ(keyMap().toText(), keys);
  keyMacros().fromText(macrosBefore);
  keyMap().fromText(keysBefore);
}
