// The table of the frame's commands and what the frame makes of it.
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenu>
#include <QSet>
#include <QToolButton>
#include <QtTest/QTest>

#include "app/frame/KeyActions.h"
#include "app/look/Icons.h"
#include "base/Program.h"
#include "control/keys/KeyCommands.h"
#include "control/keys/KeyMacro.h"
#include "control/keys/KeyMap.h"
#include "tests/app/FrameFixture.h"

namespace {

class Commands : public FrameFixture {};

QList<QKeySequence> sequences(const char* keys) {
  QList<QKeySequence> all;
  for (const QString& key : q(keys).split(u';', Qt::SkipEmptyParts)) all << QKeySequence(key.trimmed());
  return all;
}

TEST(CommandsTable, RowsAreWhole) {
  QSet<QString> names, keys, tools;
  for (const FrameCommand* row : frameCommands()) {
    SCOPED_TRACE(row->name);
    if (row->elements > 0) {
      EXPECT_NE(row->runElement, nullptr);
      EXPECT_NE(row->place, 0);
      continue;
    }
    EXPECT_FALSE(names.contains(q(row->name)));
    names << q(row->name);
    EXPECT_EQ(row->isMenu, !row->run && !row->command);
    EXPECT_FALSE(row->run && row->command);
    EXPECT_TRUE(!row->command || anyCommandById(row->command));
    EXPECT_TRUE(q(row->name).startsWith(q("m")));
    EXPECT_NE(q(row->caption), QString());
    EXPECT_TRUE(!*row->icon || !icons::byName(q(row->icon)).isNull()) << row->icon;
    EXPECT_EQ(*row->tool != 0, row->toolPlace > 0);
    if (*row->tool) {
      EXPECT_TRUE(*row->icon) << "a button without a picture";
      EXPECT_FALSE(tools.contains(q(row->tool)));
      tools << q(row->tool);
    }
    for (const QKeySequence& key : sequences(row->keys)) {
      EXPECT_FALSE(key.isEmpty());
      EXPECT_FALSE(keys.contains(key.toString())) << key.toString().toStdString();
      keys << key.toString();
      const KeyAction there = KeyMap().actionOf(key);
      EXPECT_TRUE(there.isNone() || there.command == row->command) << key.toString().toStdString() << " types something else";
    }
  }
  for (const FrameCommand* row : frameCommands()) EXPECT_TRUE(!*row->menu || names.contains(q(row->menu))) << row->name;
}

TEST(CommandsTable, MnemonicsAreTheirOwn) {
  QHash<QString, QSet<QChar>> used;
  for (const FrameCommand* row : frameCommands()) {
    const QString caption = q(row->caption);
    const qsizetype at = caption.indexOf(u'&');
    if (row->elements > 0 || at < 0) continue;
    const QChar letter = caption[at + 1].toLower();
    EXPECT_FALSE(used[q(row->menu)].contains(letter)) << row->name << ' ' << row->caption;
    used[q(row->menu)] << letter;
  }
}

TEST_F(Commands, KeysCanBeGivenToEverything) {
  main->show();
  main->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(main.get()));
  frmDocument* document = open("a.v", "one\n");
  document->cmx->setFocus();
  for (const FrameCommand* row : frameCommands())   // the defaults come through the key map unchanged
    if (*row->keys && row->elements == 0) {
      EXPECT_EQ(main->menus().action(q(row->name))->shortcuts(), sequences(row->keys)) << row->name;
    }
  const auto bind = [&](const char* keys, const char* shown) {
    for (const NamedAction& action : keyMap().namedActions())
      if (action.shown == q(shown)) return void(keyMap().bind(QKeySequence(q(keys)), {0, {}, action.name}));
    ADD_FAILURE() << shown << " cannot be bound";
  };
  bind("Ctrl+Alt+1", "File > New");
  bind("Ctrl+Alt+2", "Custom > Shout");
  bind("Ctrl+K, Ctrl+3", "Template > alw");
  keyMap().bind(QKeySequence(q("Ctrl+N")), {});
  main->menus().refreshKeys();
  EXPECT_EQ(main->menus().action(q("mnuFileNew"))->shortcuts(), QList{QKeySequence(q("Ctrl+Alt+1"))});
  EXPECT_TRUE(main->menus().action(q("mCustom"), 0)->text().startsWith(q("Shout\t")));
  const auto press = [&](int key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), modifiers);
    QCoreApplication::processEvents();
  };
  press(Qt::Key_2, Qt::ControlModifier | Qt::AltModifier);
  EXPECT_EQ(document->cmx->Text().trimmed(), q("ONE"));
  document->cmx->SetSel({1, 0, 1, 0, false});
  press(Qt::Key_K, Qt::ControlModifier);   // begins sequences of the text too
  press(Qt::Key_3, Qt::ControlModifier);
  EXPECT_TRUE(document->cmx->Text().contains(q("always @"))) << document->cmx->Text().toStdString();
  press(Qt::Key_1, Qt::ControlModifier | Qt::AltModifier);
  EXPECT_EQ(main->documents().size(), 2);
  press(Qt::Key_2, Qt::ControlModifier | Qt::AltModifier);   // the new text has no language: nothing, and no harm
  keyMap().fromText({});
  main->menus().refreshKeys();
  EXPECT_EQ(main->menus().action(q("mnuFileNew"))->shortcuts(), sequences("Ctrl+N"));
}

// '+' enabled, '-' disabled: without a document; with an untouched untitled one; with a modified named one of a language;
// with that and others, an untouched one active.
struct State {
  const char* name;
  const char* states;
};
// clang-format off
constexpr State kStates[] = {
    {"mnuFileNew", "++++"},        {"mnuFileOpen", "++++"},      {"mnuFileReload", "--++"},
    {"mnuFileClose", "-+++"},      {"mnuFileCloseAll", "-+++"},  {"mnuFileSave", "-++-"},
    {"mnuFileSaveAs", "-+++"},     {"mnuFileSaveAll", "--++"},   {"mnuFileExit", "++++"},
    {"mnuFileRecovered", "++++"},
    {"mEditUndo", "--+-"},         {"mEditRedo", "----"},        {"mEditCut", "--+-"},
    {"mEditCopy", "--+-"},         {"mEditDelete", "--+-"},      {"mEditSelectAll", "-+++"},
    {"mEditFind", "-+++"},         {"mEditFindNext", "-+++"},    {"mEditReplace", "-+++"},
    {"mEditGoToLine", "-+++"},     {"mEditBookmarks", "-+++"},   {"mEditBookmarkToggle", "-+++"},
    {"mEditComment", "--++"},      {"mEditUnComment", "--++"},   {"mEditUpperCase", "--+-"},
    {"mEditTabsToSpaces", "--+-"}, {"mEditIndent", "-+++"},      {"mEditReadOnly", "-+++"},
    {"mnuViewToolbar", "++++"},    {"mnuViewStatusBar", "++++"}, {"mnuViewTabs", "++++"},
    {"mnuViewLog", "++++"},        {"mnuViewWhiteSpace", "-+++"}, {"mnuViewWordWrap", "-+++"}, {"mnuViewFoldAll", "-+++"}, {"mToolsCommand", "++++"},
    {"mToolsLanguage", "-+++"},    {"mToolsDefinitions", "++++"}, {"mWindowNew", "-+++"},
    {"mWindowCascade", "-+++"},    {"mWindowNext", "---+"},      {"mWindowPrevious", "---+"},
    {"mHelpHandbook", "++++"},     {"mHelpContents", "----"},    {"mHelpWordListNext", "--+-"},
    {"mHelpExpandTemplate", "---+"}, {"mHelpNextField", "-+++"}, {"mHelpWeb", "----"},
    {"mHelpAbout", "++++"},        {"mToolsOptions", "++++"},
};
// clang-format on

TEST_F(Commands, EnabledAtEveryMoment) {
  const auto check = [&](int moment) {
    for (const State& state : kStates)
      EXPECT_EQ(enabled(state.name), state.states[moment] == '+') << state.name << " at moment " << moment;
    for (const FrameCommand* row : frameCommands()) {
      if (row->elements > 0 || (row->needs & kOthers) || !main->menus().action(q(row->name))->isVisible()) continue;
      EXPECT_FALSE(moment == 0 && (row->needs & kDocument) && enabled(row->name)) << row->name << " works without a document";
      EXPECT_TRUE(row->needs != kAlways || enabled(row->name)) << row->name;
    }
  };
  check(0);
  frmDocument* untitled = main->LoadNewDoc();
  check(1);
  frmDocument* named = open("a.v", "old\n");
  main->activate(untitled);
  main->mnuFileClose_Click();
  wait(1);
  named->cmx->setText(q("posedge x"));
  named->cmx->SetSel({0, 0, 0, 7, false});
  check(2);
  open("b.v", "alw\n");
  check(3);
}

TEST_F(Commands, MessagesStayUntilTheNextActionAndNoLonger) {
  frmDocument* document = open("a.v", "one two\n");
  StatusPanels& panels = main->panels();
  quint64 time = 1;
  QWidget* target = document->cmx->focusProxy();
  const auto press = [&](int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers, key < 0x80 && !modifiers ? QString(QChar(key).toLower()) : QString());
    event.setTimestamp(++time);
    QApplication::sendEvent(target, &event);
  };
  press(Qt::Key_X);
  SetStatusText(q("Printing Complete"));
  document->focusWork();   // the focus comes back from a dialog
  EXPECT_EQ(panels.text(), q("Printing Complete"));
  press(Qt::Key_Right);
  EXPECT_EQ(panels.text(), path("a.v"));
  press(Qt::Key_K, Qt::ControlModifier);
  EXPECT_EQ(panels.text(), q("Ctrl+K"));
  press(Qt::Key_F9);   // no such sequence, and nothing moves
  EXPECT_EQ(panels.text(), path("a.v"));
  trigger("mToolsRecordMacro");
  EXPECT_FALSE(panels.button(Panel::recording)->isHidden());
  press(Qt::Key_X);
  panels.button(Panel::recording)->click();
  EXPECT_TRUE(panels.button(Panel::recording)->isHidden());
  EXPECT_EQ(panels.text(), q("Recorded as \"Macro 1\""));
  keyMacros().remove(q("Macro 1"));
  EXPECT_TRUE(main->saveActive());
  EXPECT_EQ(panels.text(), path("a.v"));
  trigger("mnuFileClose");
  EXPECT_EQ(panels.text(), QString()) << "what is closed is not shown any more";
  target = main.get();
  press(Qt::Key_F9);
  main->SetupMenus();
  EXPECT_EQ(panels.text(), QString());
}

TEST_F(Commands, ReadOnlyTextTakesNoEdits) {
  frmDocument* document = open("a.v", "posedge\n");
  document->cmx->SetSel({0, 0, 0, 7, false});
  trigger("mEditReadOnly");
  EXPECT_TRUE(document->cmx->ReadOnly());
  for (const char* name :
       {"mEditCut", "mEditPaste", "mEditDelete", "mEditReplace", "mEditComment", "mEditUpperCase", "mHelpWordListNext"})
    EXPECT_FALSE(enabled(name)) << name;
  EXPECT_TRUE(enabled("mEditCopy"));
  trigger("mEditReadOnly");
  EXPECT_TRUE(enabled("mEditCut"));
}

TEST_F(Commands, KeystrokesArePlayedAsOftenAsAsked) {
  frmDocument* document = open("a.v", "");
  trigger("mToolsRecordMacro");
  document->cmx->editor().typeText(q("ab"));
  trigger("mToolsRecordMacro");
  struct Case {
    const char *answer, *text;
  };
  for (const Case& c : {Case{"3", "abababab"}, Case{" 1 ", "ababababab"}, Case{"0", "ababababab"}, Case{"x", "ababababab"},
                        Case{nullptr, "ababababab"}}) {
    boxes.answerInput(c.answer ? std::optional(q(c.answer)) : std::nullopt);
    const bool refused = c.answer && (*c.answer == '0' || *c.answer == 'x');
    if (refused) boxes.answer(Answer::ok);
    trigger("mToolsPlayTimes");
    EXPECT_EQ(document->cmx->Text(), q(c.text));
    EXPECT_TRUE(!refused || boxes.last().text == q(c.answer) + q(" is not a number of times"));
  }
  document->cmx->ExecuteCmd(Cmd::UNDO);
  document->cmx->ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(document->cmx->Text(), q("ab")) << "each playing was one step";
}

TEST_F(Commands, MenusWork) {
  frmDocument* document = open("a.v", "alw\nposedge\n");
  document->cmx->SetSel({1, 0, 1, 0, false});
  EXPECT_TRUE(enabled("mHelpWordListNext"));
  trigger("mHelpWordListNext");
  EXPECT_EQ(document->cmx->GetLine(1), q("negedge"));
  EXPECT_EQ(main->panels().text(), q("Processing WordList 'Edges'"));
  trigger("mHelpWordListPrevious");
  EXPECT_EQ(document->cmx->GetLine(1), q("posedge"));
  document->cmx->SetSel({0, 3, 0, 3, false});
  EXPECT_TRUE(main->panels().templatePicture());
  trigger("mHelpExpandTemplate");
  EXPECT_EQ(document->cmx->GetLine(0), q("always @($$)"));
  EXPECT_EQ(document->cmx->SelText(), q("$$"));
  trigger("mEditUndo");
  EXPECT_EQ(document->cmx->GetLine(0), q("alw"));
  trigger("mEditComment");
  EXPECT_EQ(document->cmx->GetLine(0), q("//alw"));
  trigger("mCustom", 0);
  EXPECT_EQ(document->cmx->Text(), q("//ALW\nPOSEDGE\n"));
}

TEST_F(Commands, CustomMenuFollowsTheDocument) {
  const auto shown = [&] { return main->menus().action(q("mCustom"))->isVisible(); };
  EXPECT_FALSE(shown());
  open("a.v");
  EXPECT_TRUE(shown());
  EXPECT_EQ(main->menus().action(q("mCustom"), 0)->text(), q("Shout"));
  EXPECT_FALSE(main->menus().action(q("mCustom"), 1)->isVisible());
  frmDocument* vhdl = open("b.vhd");
  EXPECT_FALSE(shown());
  vhdl->SetLanguage(1);
  EXPECT_TRUE(shown());
  main->mnuFileCloseAll_Click();
  wait(1);
  EXPECT_FALSE(shown());
}

TEST_F(Commands, PanelsShowAndChange) {
  frmDocument* document = open("a.v", "one\r\ntwo\r\n");
  EXPECT_EQ(main->panels().panel(Panel::lineEnds), q("Win"));
  EXPECT_EQ(main->panels().panel(Panel::overtype), q("INS"));
  main->panels().button(Panel::overtype)->click();
  EXPECT_EQ(main->panels().panel(Panel::overtype), q("OVR"));
  boxes.answerInput(q("2:3"));
  main->panels().button(Panel::rowAndColumn)->click();
  EXPECT_EQ(document->CurrentPosition(), (CmPosition{1, 2}));
  EXPECT_EQ(main->panels().panel(Panel::rowAndColumn), q("2,2"));
  struct Case {
    const char* typed;
    qint64 line;
  };
  for (const Case& c : {Case{"1", 0}, Case{"+1", 1}, Case{"999", 2}, Case{"-1", 1}, Case{"0", 0}}) {
    boxes.answerInput(q(c.typed));
    main->goToLine();
    EXPECT_EQ(document->CurrentPosition().LineNo, c.line) << c.typed;
  }
  boxes.answerInput(q("<b>")).answer(Answer::ok);
  main->goToLine();
  QMenu lineEnds;
  main->fillLineEnds(lineEnds);
  lineEnds.actions().last()->trigger();   // convert to Unix or Win, the last of the menu
  for (QAction* action : lineEnds.actions())
    if (action->text().contains(q("U&nix"))) action->trigger();
  EXPECT_EQ(main->panels().panel(Panel::lineEnds), q("Unix"));
  EXPECT_TRUE(main->saveActive());
  EXPECT_EQ(read(path("a.v")), "one\ntwo\n");
  open("mixed.v", "one\r\ntwo\n");
  EXPECT_EQ(main->panels().panel(Panel::lineEnds), q("Mixed"));
  main->activeDocument()->cmx->ConvertLineEnds(true);
  main->activeDocument()->focusWork();
  EXPECT_EQ(main->panels().panel(Panel::lineEnds), q("Win"));
  main->activate(document);
  QMenu encodings;
  main->fillEncodings(encodings);
  for (QAction* action : encodings.actions())
    if (action->text() == q("UTF-16LE with BOM")) action->trigger();
  EXPECT_TRUE(document->DocumentModified());
  EXPECT_TRUE(main->saveActive());
  EXPECT_EQ(read(path("a.v")).left(4), QByteArray("\xFF\xFEo\0", 4));
}

}   // namespace
