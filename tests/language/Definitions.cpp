// The definitions editor, worked by injected keys and clicks.
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabBar>
#include <QTemporaryDir>
#include <QtTest>

#include "base/Program.h"
#include "language/Registration.h"
#include "language/editor/frmDefinitions.h"
#include "language/ucCM.h"
#include "tests/language/Language.h"
#include "tests/support/ScriptedDialogs.h"

namespace {

const char kQuestion[] = "Languages defintion has changed. Do you want to save?";

class Definitions : public testing::Test {
 protected:
  Definitions() {
    manager.setIniFile(temporary.filePath(q("Zelkor.ini")));
    setApplicationFolder(temporary.path());
    add("Verilog", "v;vh");
    add("VHDL", "vhd");
    const auto verilog = manager.Languages()->Item(1);
    verilog->Keywords = q("module\r\nendmodule\r\n");
    verilog->Description = q("one\r\ntwo\r\n");
    const auto macro = verilog->cMacros()->Add();
    macro->Name = q("Compile");
    macro->CommandString = q("Exe a\r\n");
    macro->Desc = q("runs");
    verilog->cTemplate()->Add(q("alw"))->UserString = q("always\r\nend");
    verilog->cWordList()->Add(q("Edges"), q("posedge\r\nnegedge\r\n"));
  }
  ~Definitions() override {
    dialog.reset();
    setApplicationFolder({});
  }

  std::shared_ptr<clsLang> add(const char* name, const char* extension = "") {
    const auto language = manager.Languages()->Add(q(name));
    language->Extension = q(extension);
    return language;
  }
  std::shared_ptr<clsLang> language(int index) { return manager.Languages()->Item(index); }
  void open() {
    dialog = std::make_unique<frmDefinitions>(manager, q("https://example.org/editor"));
    dialog->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
  }
  template <class W>
  W* find(const char* name) {
    auto* found = dialog->findChild<W*>(q(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
  }
  ListField* field(const char* name) { return find<ListField>(name); }
  QLineEdit* line(const char* name) { return find<QLineEdit>(name); }
  QListWidget* list(const char* name) { return find<QListWidget>(name); }
  void click(const char* name) { QTest::mouseClick(find<QPushButton>(name), Qt::LeftButton); }
  bool enabled(const char* name) { return find<QWidget>(name)->isEnabled(); }
  void leave(QWidget* widget) {
    QFocusEvent event(QEvent::FocusOut, Qt::TabFocusReason);
    QApplication::sendEvent(widget, &event);
  }
  // Finishes the in-place editing that is under way in a list.
  void typeName(const char* listName, const char* text) {
    auto* editor = list(listName)->viewport()->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr) << "no name is being edited";
    editor->selectAll();
    QTest::keyClicks(editor, q(text));
    QTest::keyClick(editor, Qt::Key_Return);
    QApplication::processEvents();
  }
  // Keys go where the focus is, so the focus goes there first.
  void press(QWidget* widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    widget->setFocus();
    QTest::keyClick(widget, key, modifiers);
  }
  void type(QWidget* widget, const char* text) {
    widget->setFocus();
    for (const QChar c : q(text))
      if (c == u'\n') QTest::keyClick(widget, Qt::Key_Return);
      else QTest::keyClick(widget, c.toLatin1());
  }
  void tab(int index) { find<QTabBar>("TabStrip1")->setCurrentIndex(index); }
  QStringList names(const char* listName) {
    QStringList all;
    for (int i = 0; i < list(listName)->count(); ++i) all += list(listName)->item(i)->text();
    return all;
  }
  std::string title() { return s(dialog->windowTitle()); }

  QTemporaryDir temporary;
  ScriptedDialogs boxes;
  ucCM manager;
  std::unique_ptr<frmDefinitions> dialog;
};

}   // namespace

TEST_F(Definitions, EveryFieldWritesThrough) {
  open();
  for (const LanguageProperty& property : languageProperties()) {
    const auto value = [&] { return s((*language(1)).*(property.value)); };
    if (property.form == LanguageProperty::line) {
      line(property.field)->selectAll();
      type(line(property.field), "x;y");
      leave(line(property.field));
      EXPECT_EQ(value(), "x;y");   // left as typed
    } else if (property.form == LanguageProperty::list) {
      ListField* one = field(property.field);
      one->selectAll();
      type(one, property.field);
      EXPECT_EQ(value(), property.field);
      for (int i = 0; i < 2; ++i) {
        leave(one);
        EXPECT_EQ(value(), std::string(property.field) + "\r\n");   // once only
      }
    }
    EXPECT_TRUE(dialog->isChanged()) << property.field;
  }
  find<QCheckBox>("chkCase")->click();
  EXPECT_TRUE(language(1)->isCaseSensitive);
  EXPECT_EQ(s(field("txtDescription")->toPlainText()), "one\ntwo");
  field("txtDescription")->moveCursor(QTextCursor::End);
  type(field("txtDescription"), "!");
  leave(field("txtDescription"));
  EXPECT_EQ(s(field("txtDescription")->toPlainText()), "one\ntwo!");
  EXPECT_EQ(s(language(1)->Description), "one\r\ntwo!\r\n");
  EXPECT_EQ(dump(*definition::read(definition::write(*manager.Languages()))), dump(*manager.Languages()));
}

TEST_F(Definitions, NamesAreNeverMarkup) {
  language(1)->Name = q("[*]<b>%1");
  language(1)->cMacros()->Item(1)->Name = q("<b>x</b>");
  open();
  EXPECT_EQ(title(), "Language Definition - [*][*]<b>%1");   // the doubled mark is shown as one
  tab(1);
  EXPECT_EQ(s(field("txtList")->toolTip()),
            "<qt>Commands to be run when [&lt;b&gt;x&lt;/b&gt;] is selected from the 'Custom' menu");
}

TEST_F(Definitions, AddingALanguage) {
  open();
  click("cmdAdd");
  EXPECT_EQ(names("lstLanguage"), (QStringList{q("Verilog"), q("VHDL"), q("Language2")}));
  EXPECT_EQ(list("lstLanguage")->currentRow(), 2);
  EXPECT_TRUE(dialog->isChanged());
  typeName("lstLanguage", "C++");
  EXPECT_EQ(s(language(3)->Name), "C++");
  EXPECT_EQ(title(), "Language Definition - C++");
  press(list("lstLanguage"), Qt::Key_Insert);
  EXPECT_EQ(s(language(4)->Name), "Language3");
}

TEST_F(Definitions, WithoutLanguagesEverythingWaits) {
  manager.setLanguages(nullptr);
  open();
  EXPECT_EQ(title(), "Language Definition");
  for (const char* name : {"fraStructure", "txtExtension", "txtFileNames", "txtContents", "cmdDelete", "cmdDuplicate", "txtList"})
    EXPECT_FALSE(enabled(name)) << name;
  tab(1);
  click("cmdAddList");
  press(list("lst"), Qt::Key_Insert);
  press(list("lstLanguage"), Qt::Key_Delete);
  EXPECT_FALSE(dialog->isChanged());
  click("cmdAdd");
  EXPECT_EQ(s(language(1)->Name), "Language0");
  EXPECT_TRUE(enabled("cmdAddList"));
}

TEST_F(Definitions, RenamingItems) {
  open();
  tab(2);
  press(list("lst"), Qt::Key_F2);
  typeName("lst", "always");
  EXPECT_EQ(s(language(1)->cTemplate()->Item(1)->HotKey), "always");
  EXPECT_EQ(s(language(1)->cTemplate()->Item(1)->Name), "alw");   // renaming changes the hot key only
  EXPECT_EQ(s(field("txtList")->toolTip()), "Code to be inserted when [always] is typed and SHIFT-F1 is pressed");
  tab(1);
  list("lst")->item(0)->setText(q("Run"));
  EXPECT_EQ(s(language(1)->cMacros()->Item(1)->Name), "Run");
  tab(3);
  list("lst")->item(0)->setText(q("Signs"));
  EXPECT_EQ(s(language(1)->cWordList()->Item(1)->Name), "Signs");
}

TEST_F(Definitions, AddingAndDeletingItems) {
  open();
  const char* const made[] = {"New Macro", "New Template", "New WordList"};
  for (int i = 0; i < 3; ++i) {
    tab(i + 1);
    click("cmdAddList");
    EXPECT_EQ(list("lst")->currentRow(), 1);
    EXPECT_EQ(s(list("lst")->currentItem()->text()), made[i]);
    QTest::keyClick(list("lst")->viewport()->findChild<QLineEdit*>(), Qt::Key_Return);
    QApplication::processEvents();
    type(field("txtList"), "x");
    type(line("txtDesc"), "d");
    leave(field("txtList"));
  }
  EXPECT_EQ(s(language(1)->cMacros()->Item(2)->CommandString), "x\r\n");
  EXPECT_EQ(s(language(1)->cMacros()->Item(2)->Desc), "d");
  EXPECT_EQ(s(language(1)->cTemplate()->Item(2)->UserString), "x");
  EXPECT_EQ(s(language(1)->cTemplate()->Item(2)->HotKey), "New Template");
  EXPECT_EQ(s(language(1)->cWordList()->Item(2)->WordList), "x\r\n");
  list("lst")->selectAll();
  click("cmdDeleteList");
  EXPECT_EQ(language(1)->cWordList()->Count(), 0);
  EXPECT_FALSE(enabled("txtList"));
  tab(1);
  list("lst")->setCurrentRow(0);
  press(list("lst"), Qt::Key_Delete);
  ASSERT_EQ(language(1)->cMacros()->Count(), 1);
  EXPECT_EQ(s(language(1)->cMacros()->Item(1)->Name), "New Macro");
  EXPECT_EQ(s(field("txtList")->toPlainText()), "x\n");
}

TEST_F(Definitions, DeletingLanguagesAsks) {
  add("C");
  open();
  list("lstLanguage")->item(2)->setSelected(true);   // with the first, which is selected
  boxes.answer(Answer::cancel);
  click("cmdDelete");
  EXPECT_EQ(manager.Languages()->Count(), 3);
  EXPECT_FALSE(dialog->isChanged());
  boxes.answer(Answer::ok);
  press(list("lstLanguage"), Qt::Key_Delete);
  ASSERT_EQ(names("lstLanguage"), QStringList{q("VHDL")});
  EXPECT_EQ(s(language(1)->Name), "VHDL");
  EXPECT_EQ(title(), "Language Definition - VHDL");
  EXPECT_TRUE(dialog->isChanged());
}

TEST_F(Definitions, TheFilterHidesAndProtects) {
  open();
  type(line("txtFilter"), "vhd");
  EXPECT_TRUE(list("lstLanguage")->item(0)->isHidden());
  EXPECT_FALSE(list("lstLanguage")->item(1)->isHidden());
  // The first is still the one shown, but what is hidden is not deleted.
  click("cmdDelete");
  EXPECT_TRUE(boxes.boxes.empty());
  dialog->SelectLanguage(1);
  EXPECT_FALSE(list("lstLanguage")->item(0)->isHidden());
}

TEST_F(Definitions, SavingApplyingAndTheirButtons) {
  open();
  QSignalSpy handed(dialog.get(), &frmDefinitions::LanguagesChanged);
  type(line("txtExtension"), ";x");
  EXPECT_TRUE(enabled("cmdSave") && enabled("cmdApply"));
  click("cmdApply");
  EXPECT_FALSE(enabled("cmdApply"));
  EXPECT_TRUE(enabled("cmdSave"));
  EXPECT_TRUE(dialog->isChanged());
  EXPECT_FALSE(QFile::exists(manager.IniFile()));
  EXPECT_EQ(handed.count(), 1);
  click("cmdSave");
  EXPECT_FALSE(enabled("cmdSave"));
  EXPECT_FALSE(dialog->isChanged());
  EXPECT_EQ(handed.count(), 2);
  ucCM again;
  again.setIniFile(manager.IniFile());
  again.Init();
  EXPECT_EQ(dump(*again.Languages()), dump(*manager.Languages()));
  EXPECT_TRUE(dialog->close());
  EXPECT_EQ(handed.count(), 2);   // nothing new since
}

TEST_F(Definitions, ClosingAsksWhenSomethingChanged) {
  open();
  QSignalSpy handed(dialog.get(), &frmDefinitions::LanguagesChanged);
  boxes.answer(Answer::ok);
  press(list("lstLanguage"), Qt::Key_Delete);
  boxes.answer(Answer::cancel);
  click("cmdClose");
  EXPECT_EQ(s(boxes.last().text), kQuestion);
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_EQ(manager.Languages()->Count(), 1);   // the deletion stays
  boxes.answer(Answer::cancel);
  QTest::keyClick(dialog.get(), Qt::Key_Escape);
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_EQ(handed.count(), 0);
  boxes.answer(Answer::no);
  EXPECT_TRUE(dialog->close());
  EXPECT_FALSE(dialog->isVisible());
  EXPECT_FALSE(QFile::exists(manager.IniFile()));
  EXPECT_EQ(manager.Languages()->Count(), 1);   // the languages keep the edits until they are read anew
  EXPECT_EQ(handed.count(), 1);

  open();
  type(line("txtExtension"), "z");
  boxes.answer(Answer::yes);
  EXPECT_TRUE(dialog->close());
  EXPECT_TRUE(QFile::exists(manager.IniFile()));
}

TEST_F(Definitions, AFailedSaveKeepsTheDialogOpen) {
  manager.setIniFile(temporary.filePath(q("no/folder/x.ini")));
  open();
  type(line("txtExtension"), "z");
  boxes.answer(Answer::yes).answer(Answer::no);   // no file of one's own either
  EXPECT_FALSE(dialog->close());
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_TRUE(dialog->isChanged());
  EXPECT_TRUE(enabled("cmdSave"));
  boxes.answer(Answer::no);
  dialog->close();
}

TEST_F(Definitions, LinesThatWouldBeLostAreMarked) {
  open();
  EXPECT_FALSE(find<QLabel>("lblWarning")->isVisible());
  type(field("txtOperator"), "+\n[*]\n");
  EXPECT_EQ(field("txtOperator")->linesAtRisk(), QList<int>{1});
  EXPECT_EQ(field("txtOperator")->extraSelections().size(), 1);
  EXPECT_TRUE(find<QLabel>("lblWarning")->isVisible());
  EXPECT_TRUE(find<QLabel>("lblWarning")->text().contains(q("Operators, line 2: [*]")));
  boxes.answer(Answer::no);
  click("cmdSave");
  EXPECT_TRUE(boxes.last().text.contains(q("Verilog: Operators, line 2: [*]")));
  EXPECT_TRUE(dialog->isChanged());
  EXPECT_FALSE(QFile::exists(manager.IniFile()));
  field("txtOperator")->selectAll();
  type(field("txtOperator"), "+\n");
  EXPECT_FALSE(find<QLabel>("lblWarning")->isVisible());
  type(field("txtMLCS"), "/*");
  EXPECT_TRUE(find<QLabel>("lblWarning")->text().contains(q("different numbers of entries")));
  click("cmdSave");
  EXPECT_FALSE(dialog->isChanged());
}

TEST_F(Definitions, CopyingAndPastingLanguages) {
  open();
  RemoveLanguages();
  AddLanguages(*manager.Languages());
  line("txtExtension")->setText(q("v;new"));   // not saved yet, and copied all the same
  list("lstLanguage")->setFocus();
  list("lstLanguage")->selectAll();
  press(list("lstLanguage"), Qt::Key_C, Qt::ControlModifier);
  const QString text = QGuiApplication::clipboard()->text();
  EXPECT_EQ(s(text), s(definition::write(*manager.Languages())));
  // What this program copied stays what it was; the same from anybody else would be foreign.
  boxes.answer(Answer::no).answer(Answer::no);
  press(list("lstLanguage"), Qt::Key_V, Qt::ControlModifier);
  ASSERT_EQ(manager.Languages()->Count(), 4);
  EXPECT_FALSE(language(3)->isForeign);
  language(3)->isForeign = true;
  dialog->SelectLanguage(3);
  press(list("lstLanguage"), Qt::Key_C, Qt::ControlModifier);
  language(3)->Name = q("renamed");
  press(list("lstLanguage"), Qt::Key_V, Qt::ControlModifier);
  ASSERT_EQ(manager.Languages()->Count(), 5);
  EXPECT_TRUE(language(5)->isForeign) << "the mark is copied";
  for (int n = 5; n > 2; --n) manager.Languages()->Remove(n);
  dialog->LoadDefiner();

  QGuiApplication::clipboard()->setText(q("[Keywords]\r\nno language\r\n"));
  press(list("lstLanguage"), Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(manager.Languages()->Count(), 2);

  // In place of the first; the second is left; both boxes name the language.
  QGuiApplication::clipboard()->setText(q("SetLanguage:Verilog\n[Extensions]\nother\nSetLanguage:VHDL\n"));
  boxes.answer(Answer::yes).answer(Answer::cancel);
  press(list("lstLanguage"), Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(boxes.boxes[0].text.startsWith(q("Language 'Verilog' already defined")));
  EXPECT_EQ(names("lstLanguage"), (QStringList{q("Verilog"), q("VHDL")}));
  EXPECT_EQ(s(language(1)->Extension), "other");
  EXPECT_EQ(s(language(2)->Extension), "vhd");
  EXPECT_TRUE(language(1)->isForeign);
  EXPECT_FALSE(language(2)->isForeign);
  EXPECT_EQ(RegisteredLanguageCount(), 1);

  QGuiApplication::clipboard()->setText(q("SetLanguage:VHDL\nSetLanguage:Third\n"));
  boxes.answer(Answer::no);
  press(list("lstLanguage"), Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(names("lstLanguage"), (QStringList{q("Verilog"), q("VHDL"), q("VHDL 2"), q("Third")}));
  EXPECT_EQ(RegisteredLanguageCount(), 1);
  RemoveLanguages();
}

TEST_F(Definitions, DuplicatingALanguage) {
  open();
  click("cmdDuplicate");
  typeName("lstLanguage", "Mine");
  ASSERT_EQ(names("lstLanguage"), (QStringList{q("Verilog"), q("Mine"), q("VHDL")}));
  language(2)->Name = q("Verilog");
  EXPECT_EQ(s(definition::writeLanguage(*language(2))), s(definition::writeLanguage(*language(1))));
  language(2)->cMacros()->Item(1)->Name = q("changed");
  EXPECT_EQ(s(language(1)->cMacros()->Item(1)->Name), "Compile");
}

TEST_F(Definitions, BrowsingAsksFirst) {
  const QString other = temporary.filePath(q("other.ini"));
  QFile file(other);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("SetLanguage:Other\r\n");
  file.close();
  open();
  QSignalSpy handed(dialog.get(), &frmDefinitions::LanguagesChanged);
  type(line("txtExtension"), "z");
  boxes.answer(Answer::cancel);
  click("cmdBrowse");
  EXPECT_EQ(s(boxes.last().text), kQuestion);
  EXPECT_EQ(manager.Languages()->Count(), 2);
  boxes.answer(Answer::no).answerOpen({});   // cancelled in the file dialog
  click("cmdBrowse");
  EXPECT_EQ(manager.Languages()->Count(), 2);
  EXPECT_TRUE(dialog->isChanged());
  boxes.answer(Answer::no).answerOpen({other});
  click("cmdBrowse");
  EXPECT_EQ(names("lstLanguage"), QStringList{q("Other")});
  EXPECT_EQ(s(line("txtIni")->text()), s(other));
  EXPECT_EQ(s(manager.IniFile()), s(other));
  EXPECT_FALSE(dialog->isChanged());
  EXPECT_EQ(handed.count(), 1);
}

TEST_F(Definitions, ShowsAMacroWithItsReport) {
  open();
  EXPECT_FALSE(find<QLabel>("lblReport")->isVisible());
  const auto vhdl = language(2);
  vhdl->cMacros()->Add();
  vhdl->cMacros()->Add()->Name = q("Lint");
  dialog->ShowMacro(2, 2, q("Unknown command 'Exce'"));
  EXPECT_EQ(title(), "Language Definition - VHDL");
  EXPECT_EQ(find<QTabBar>("TabStrip1")->currentIndex(), 1);
  EXPECT_EQ(s(list("lst")->currentItem()->text()), "Lint");
  EXPECT_TRUE(find<QLabel>("lblReport")->isVisible());
  EXPECT_EQ(s(find<QLabel>("lblReport")->text()), "Unknown command 'Exce'");
  dialog->ShowMacro(7, 9, q("gone"));   // positions that no longer exist
  EXPECT_FALSE(enabled("txtList"));
}

TEST_F(Definitions, EveryControlIsReachedByTab) {
  open();
  tab(1);
  type(line("txtExtension"), "z");   // so that Save and Apply take part
  for (const bool onStructure : {false, true}) {
    if (onStructure) tab(0);
    line("txtFilter")->setFocus();
    QSet<QString> reached;
    for (int i = 0; i < 60; ++i) {
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
      for (const QWidget* w = QApplication::focusWidget(); w; w = w->parentWidget()) reached += w->objectName();
    }
    QStringList wanted{q("txtFilter"), q("lstLanguage"), q("cmdAdd"),   q("cmdDelete"), q("TabStrip1"),
                       q("cmdApply"),  q("cmdSave"),     q("cmdClose"), q("cmdBrowse")};
    if (onStructure) wanted << q("chkCase");
    if (onStructure)
      for (const LanguageProperty& property : languageProperties()) wanted << q(property.field);
    else wanted << q("lst") << q("cmdAddList") << q("txtDesc") << q("txtList");
    for (const QString& name : wanted) EXPECT_TRUE(reached.contains(name)) << s(name);
  }
  QTest::keyClick(dialog.get(), Qt::Key_PageDown, Qt::ControlModifier);
  EXPECT_EQ(find<QTabBar>("TabStrip1")->currentIndex(), 1);
  QTest::keyClick(dialog.get(), Qt::Key_PageUp, Qt::ControlModifier);
  QTest::keyClick(dialog.get(), Qt::Key_PageUp, Qt::ControlModifier);
  EXPECT_EQ(find<QTabBar>("TabStrip1")->currentIndex(), 3);
  tab(2);
  press(field("txtList"), Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_TRUE(field("txtList")->toPlainText().startsWith(u'\t'));
  boxes.answer(Answer::no);
  dialog->close();
}

TEST_F(Definitions, TheLastWordIsKeptHoweverItsFieldIsLeft) {
  open();
  tab(3);
  field("txtList")->moveCursor(QTextCursor::End);
  type(field("txtList"), "bothedge");
  EXPECT_EQ(s(language(1)->cWordList()->Item(1)->WordList), "posedge\r\nnegedge\r\nbothedge");
  QTest::keyClick(field("txtList"), Qt::Key_PageUp, Qt::ControlModifier);   // to another page, from inside the field
  EXPECT_EQ(s(language(1)->cWordList()->Item(1)->WordList), "posedge\r\nnegedge\r\nbothedge\r\n");
  tab(3);
  field("txtList")->moveCursor(QTextCursor::End);
  type(field("txtList"), "noedge");
  QTest::keyClick(field("txtList"), Qt::Key_P, Qt::AltModifier);   // Apply
  EXPECT_TRUE(QTest::qWaitFor([&] { return !enabled("cmdApply"); }));
  EXPECT_EQ(s(language(1)->cWordList()->Item(1)->WordList), "posedge\r\nnegedge\r\nbothedge\r\nnoedge\r\n");
  boxes.answer(Answer::no);
  dialog->close();
}
