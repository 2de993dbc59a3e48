// The find dialog, used as the user does: in a main window, with keys and clicks.
#include "control/find/FindDialog.h"

#include <gtest/gtest.h>

#include <atomic>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QSplitter>
#include <QThread>
#include <QtTest/QTest>

#include "control/CodeMax.h"
#include "control/edit/Carets.h"
#include "control/find/FindJob.h"
#include "control/keys/KeyMacro.h"
#include "tests/support/Caret.h"
#include "tests/support/Cost.h"
#include "tests/support/EventLoop.h"

namespace {

class FindDialogTest : public testing::Test {
 protected:
  QMainWindow window;
  CodeMax* text = new CodeMax(&window);
  QStringList notes;

  void SetUp() override {
    searchState() = {};
    window.setCentralWidget(text);
    window.resize(900, 500);
    window.show();
    QObject::connect(text, &CodeMax::Note, [this](const QString& note) {
      if (!note.isEmpty()) notes += note;
    });
  }
  void TearDown() override { searchState() = {}; }

  void show(const char* marked, bool replace = false) {
    const CaretText parsed = parseCaret(marked);
    text->setText(toQString(parsed.bytes));
    text->editor().setSelection(parsed.selection);
    text->ExecuteCmd(replace ? 169 : 178);
    dialog().job().patience = std::chrono::seconds(20);   // the machine may be busy
  }
  std::string shown() { return printCaret(text->editor().snapshot().bytes(), text->editor().selection()); }
  FindDialog& dialog() { return *window.findChild<FindDialog*>(); }
  template <class Part>
  Part& part(const char* name) {
    return *dialog().findChild<Part*>(QString::fromLatin1(name));
  }
  void click(const char* name) { QTest::mouseClick(&part<QPushButton>(name), Qt::LeftButton); }
  void check(const char* name, bool on) {
    if (part<QCheckBox>(name).isChecked() != on) part<QCheckBox>(name).click();
  }
  void type(const char* field, const QString& what) {
    QLineEdit* edit = part<QComboBox>(field).lineEdit();
    edit->selectAll();
    QTest::keyClicks(&part<QComboBox>(field), what);
  }
  void press(const char* field, int key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(&part<QComboBox>(field), static_cast<Qt::Key>(key), modifiers);   // it has the focus, not its line
  }
  static bool showsHits(CodeMax& control) {   // whether the text is painted otherwise without hits
    control.SetSel({0, 3, 0, 3, false});
    const QImage with = control.grab().toImage();
    control.showHits({}, {});
    return with != control.grab().toImage();
  }
  // Until the search on its thread came back.
  bool finish() {
    return spinUntil([this] { return !dialog().job().running(); });
  }
};

}   // namespace

TEST_F(FindDialogTest, FindsWhileTypingAndOn) {
  show("x| abc ab abd");
  type("findText", QStringLiteral("ab"));
  EXPECT_EQ(shown(), "x @ab|c ab abd");
  type("findText", QStringLiteral("abd"));
  EXPECT_EQ(shown(), "x abc ab @abd|");
  type("findText", QStringLiteral("abdx"));
  EXPECT_EQ(shown(), "x| abc ab abd") << "back where the typing began";
  EXPECT_EQ(dialog().status(), QStringLiteral("\"abdx\" was not found"));
  type("findText", QStringLiteral("ab"));
  press("findText", Qt::Key_Return);
  EXPECT_EQ(shown(), "x abc @ab| abd");
  press("findText", Qt::Key_Return, Qt::ShiftModifier);
  EXPECT_EQ(shown(), "x @ab|c ab abd");
  click("findPrevious");
  EXPECT_EQ(shown(), "x abc ab @ab|d");
  EXPECT_EQ(dialog().status(), QStringLiteral("Went on from the end of the text"));
  EXPECT_EQ(notes.last(), QStringLiteral("Went on from the end of the text"));
  check("backwards", true);
  press("findText", Qt::Key_Return);
  EXPECT_EQ(shown(), "x abc @ab| abd");
  check("wholeWord", true);
  EXPECT_TRUE(searchState().options.wholeWord);
  click("count");
  EXPECT_EQ(dialog().status(), QStringLiteral("1 found"));
  press("findText", Qt::Key_Escape);
  EXPECT_FALSE(dialog().isVisible());
  EXPECT_EQ(text->findText(), QStringLiteral("ab"));

  show("|zaxb axB axb a.b");
  for (const char* box : {"wholeWord", "backwards"}) check(box, false);
  type("findText", QStringLiteral("a.b"));
  for (const auto& [box, found] : {std::pair("regex", "z@axb| axB axb a.b"), std::pair("wholeWord", "zaxb @axB| axb a.b"),
                                   std::pair("matchCase", "zaxb axB @axb| a.b")}) {
    check(box, true);
    EXPECT_EQ(shown(), found) << box;
  }
}

TEST_F(FindDialogTest, TakesItsTextFromTheSelection) {
  show("a @bc| d bc");
  EXPECT_EQ(part<QComboBox>("findText").currentText(), QStringLiteral("bc"));
  EXPECT_FALSE(part<QCheckBox>("inSelection").isChecked());
  EXPECT_TRUE(part<QComboBox>("replaceText").isHidden());
  show("a|");
  EXPECT_EQ(part<QComboBox>("findText").currentText(), QStringLiteral("bc")) << "stays without a selection";
  show("@bc\nbc\n|bc\n", true);
  EXPECT_TRUE(part<QCheckBox>("inSelection").isChecked());
  EXPECT_FALSE(part<QComboBox>("replaceText").isHidden());
  click("count");
  EXPECT_EQ(dialog().status(), QStringLiteral("2 found"));
  check("inSelection", false);
  click("count");
  EXPECT_EQ(dialog().status(), QStringLiteral("3 found"));
}

TEST_F(FindDialogTest, Replaces) {
  show("|ab AB Ab ab", true);
  type("findText", QStringLiteral("ab"));
  type("replaceText", QStringLiteral("xy"));
  click("replace");
  EXPECT_EQ(shown(), "xy @AB| Ab ab");
  check("preserveCase", true);
  press("replaceText", Qt::Key_Return);
  EXPECT_EQ(shown(), "xy XY @Ab| ab");
  check("backwards", true);
  click("replace");
  EXPECT_EQ(shown(), "xy XY Xy @ab|") << "backwards, round the start";
  click("replaceAll");
  EXPECT_EQ(text->Text(), QStringLiteral("xy XY Xy xy"));
  EXPECT_EQ(dialog().status(), QStringLiteral("1 replaced"));
  EXPECT_EQ(notes.last(), QStringLiteral("1 replaced"));
  text->ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(text->Text(), QStringLiteral("xy XY Xy ab"));
  check("preserveCase", false);   // what was put in holds the text to find
  for (const auto& [from, way] : {std::pair("|ab ab", "xab @ab|"), std::pair("ab ab|", "@ab| xab")}) {
    show(from, true);
    check("backwards", from[0] != '|');
    type("findText", QStringLiteral("ab"));
    type("replaceText", QStringLiteral("xab"));
    text->editor().setSelection(parseCaret(from).selection);
    for (int i = 0; i < 2; ++i) click("replace");
    EXPECT_EQ(shown(), way);
  }
}

TEST_F(FindDialogTest, AColumnSelectionIsSearchedRowByRow) {
  show("|", true);
  type("findText", QStringLiteral("a+"));
  type("replaceText", QStringLiteral("xyz"));
  check("regex", true);
  text->setText(QStringLiteral("aaaa a\nbaab a\nbbbb a\n\nabca a\n"));
  const auto selectBlock = [&] {
    text->SetSel({0, 1, 4, 4, true});   // columns 1 to 3
    check("inSelection", false);
    check("inSelection", true);
    text->SetSel({0, 0, 0, 0, false});
  };
  selectBlock();
  click("markAll");
  for (const int line : {0, 1, 4}) EXPECT_TRUE(text->hasBookmark(line)) << line;
  const char* const forward[] = {"a@aaa| a\nbaab a\nbbbb a\n\nabca a\n", "aaaa a\nb@aa|b a\nbbbb a\n\nabca a\n",
                                 "aaaa a\nbaab a\nbbbb a\n\nabc@a| a\n", "a@aaa| a\nbaab a\nbbbb a\n\nabca a\n"};
  for (const char* expected : forward) {
    click("findNext");
    EXPECT_EQ(shown(), expected);
  }
  EXPECT_EQ(dialog().status(), QStringLiteral("Went on from the start of the text"));
  click("findPrevious");
  EXPECT_EQ(shown(), forward[2]);
  click("findNext");
  click("replace");
  EXPECT_EQ(shown(), "axyz a\nb@aa|b a\nbbbb a\n\nabca a\n") << "no more than what stood in the block";
  text->InsertText(QStringLiteral("a\n"), {0, 0});
  click("replace");
  EXPECT_EQ(shown(), "a\naxyz a\nbxyzb a\nbbbb a\n\nabc@a| a\n") << "the rows move with the text";
  click("replaceAll");
  EXPECT_EQ(shown(), "a\naxyz a\nbxyzb a\nbbbb a\n\nabc@xyz| a\n");
  text->ExecuteCmd(Cmd::UNDO);
  text->InsertText(QStringLiteral("aa"), {1, 1});
  text->InsertText(QStringLiteral("aa"), {1, 6});
  click("count");
  EXPECT_EQ(dialog().status(), QStringLiteral("3 found")) << "what comes in at the edges of a row belongs to it";
  click("replaceAll");
  EXPECT_EQ(text->GetLine(1), QStringLiteral("axyzxyzxyz a"));
}

TEST_F(FindDialogTest, ReplacesInTheSelectionAndStaysInIt) {
  show("a\n@a\na a\n|a\n", true);
  type("findText", QStringLiteral("a"));
  type("replaceText", QStringLiteral("bb"));
  click("replaceAll");
  EXPECT_EQ(text->Text(), QStringLiteral("a\nbb\nbb bb\na\n"));
  EXPECT_EQ(dialog().status(), QStringLiteral("3 replaced"));
  type("findText", QStringLiteral("bb"));
  type("replaceText", QStringLiteral("c"));
  click("replaceAll");
  EXPECT_EQ(text->Text(), QStringLiteral("a\nc\nc c\na\n"));
  // The rows of a column selection.
  show("aaa#a\naa\naaaa|\n", true);
  text->ExecuteCmd(Cmd::FINDREPLACE);
  text->editor().setRange({0, 1, 2, 3, true});
  text->ExecuteCmd(Cmd::FINDREPLACE);
  type("findText", QStringLiteral("a"));
  click("count");
  EXPECT_EQ(dialog().status(), QStringLiteral("5 found"));
  click("replaceAll");
  EXPECT_EQ(text->Text(), QStringLiteral("acca\nac\nacca\n"));
}

TEST_F(FindDialogTest, LeavesNothingBehind) {
  show("|ab xx ab");
  for (const char* what : {"ab", "xx", "ab", "xx"}) {
    type("findText", QString::fromLatin1(what));
    click("findNext");
  }
  QStringList history;
  for (int i = 0; i < part<QComboBox>("findText").count(); ++i) history += part<QComboBox>("findText").itemText(i);
  EXPECT_EQ(history.removeDuplicates(), 0) << history.join(u',').toStdString();
  EXPECT_EQ(history.mid(0, 2), QStringList({QStringLiteral("xx"), QStringLiteral("ab")}));
  EXPECT_TRUE(showsHits(*text));
  type("findText", QStringLiteral("ab"));
  press("findText", Qt::Key_Escape);
  EXPECT_FALSE(showsHits(*text)) << "no marks when it is closed";
}

TEST_F(FindDialogTest, ReplacesNothingInAReadOnlyText) {
  show("|ab", true);
  text->setReadOnly(true);
  text->ExecuteCmd(Cmd::FINDREPLACE);
  type("findText", QStringLiteral("ab"));
  EXPECT_TRUE(part<QPushButton>("findNext").isEnabled());
  EXPECT_FALSE(part<QPushButton>("replace").isEnabled() || part<QPushButton>("replaceAll").isEnabled());
  text->setReadOnly(false);
  text->ExecuteCmd(Cmd::FINDREPLACE);
  EXPECT_TRUE(part<QPushButton>("replace").isEnabled() && part<QPushButton>("replaceAll").isEnabled());
  text->setReadOnly(true);   // while it is open: Return in the field comes through
  press("replaceText", Qt::Key_Return);
  EXPECT_EQ(text->Text(), QStringLiteral("ab"));
}

// Whatever an expression costs: painting, typing and searching do not wait for it.
TEST_F(FindDialogTest, ACostlyExpressionHoldsNothingUp) {
  std::string lines;
  for (int i = 0; i < 2000; ++i) lines += std::string(26, 'a') + " c\n";
  show("|");
  text->setText(QString::fromStdString(lines));
  dialog().job().patience = std::chrono::milliseconds(30);
  check("regex", true);
  const double before = spentMs();
  type("findText", QStringLiteral("(a|aa)+[bd]"));
  EXPECT_TRUE(dialog().job().running());
  text->grab();
  text->InsertText(QStringLiteral("x"), {0, 0});
  text->grab();
  EXPECT_LT(spentMs() - before, 1500);
  click("cancel");
  ASSERT_TRUE(finish());
}

TEST_F(FindDialogTest, SaysWhyAnExpressionFails) {
  show("k=v|", true);
  check("regex", true);
  type("findText", QStringLiteral("(k"));
  EXPECT_FALSE(dialog().status().isEmpty());
  const QString why = dialog().status();
  click("replaceAll");
  EXPECT_EQ(dialog().status(), why);
  EXPECT_EQ(text->Text(), QStringLiteral("k=v"));
  type("findText", QStringLiteral("(k)=(v)"));
  type("replaceText", QStringLiteral("$2=$7"));
  click("replaceAll");
  EXPECT_EQ(text->Text(), QStringLiteral("k=v")) << "no such group";
  EXPECT_NE(dialog().status(), QStringLiteral("1 replaced"));
  type("replaceText", QStringLiteral("$2=$1"));
  click("replaceAll");
  EXPECT_EQ(text->Text(), QStringLiteral("v=k"));
  // One that runs away is stopped by its limits and says so.
  show((std::string(40, 'a') + "b|").c_str());
  type("findText", QStringLiteral("(a+)+$"));
  press("findText", Qt::Key_Return);
  ASSERT_TRUE(finish());
  EXPECT_FALSE(dialog().status().isEmpty());
}

TEST_F(FindDialogTest, LongOnesRunBesideAndAreCancelled) {
  std::string lines;
  for (int i = 0; i < 200000; ++i) lines += "some word here\n";
  show("|", true);
  dialog().job().limit = 0;
  text->setText(QString::fromStdString(lines));
  type("findText", QStringLiteral("word"));
  ASSERT_TRUE(finish());
  type("replaceText", QStringLiteral("thing"));
  // The one thread for searches is kept busy until the test says go.
  std::atomic<bool> go{false};
  const auto hold = [&] {
    go = false;
    dialog().job().start(1, [&go](text::SearchControl&) -> FindJob::Done {
      while (!go) QThread::msleep(1);
      return [] {};
    });
    dialog().job().drop();
  };
  hold();
  click("replaceAll");
  EXPECT_TRUE(dialog().job().running());
  EXPECT_FALSE(part<QPushButton>("replaceAll").isEnabled());
  click("cancel");
  go = true;
  ASSERT_TRUE(finish());
  EXPECT_EQ(dialog().status(), QStringLiteral("Cancelled; nothing was replaced"));
  EXPECT_EQ(text->GetLine(199999), QStringLiteral("some word here"));

  hold();
  click("replaceAll");   // the text changes under it
  text->InsertText(QStringLiteral("x"), {0, 0});
  go = true;
  ASSERT_TRUE(finish());
  EXPECT_EQ(dialog().status(), QStringLiteral("The text was changed meanwhile; nothing was replaced"));

  click("replaceAll");
  ASSERT_TRUE(finish());
  EXPECT_EQ(dialog().status(), QStringLiteral("200000 replaced"));
  EXPECT_EQ(text->GetLine(199999), QStringLiteral("some thing here"));
  text->ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(text->Text(), u'x' + QString::fromStdString(lines)) << "one undo step";
  click("markAll");   // and the window may go while it runs
}

TEST_F(FindDialogTest, WorksOnTheControlThatHasTheFocus) {
  auto* both = new QSplitter;
  both->addWidget(window.takeCentralWidget());
  auto* other = new CodeMax(both);
  window.setCentralWidget(both);
  both->setSizes({400, 400});
  show("one|");
  type("findText", QStringLiteral("one"));
  other->setText(QStringLiteral("one two one"));
  other->setFocus();
  EXPECT_TRUE(spinUntil([&] { return dialog().control() == other; }));
  EXPECT_FALSE(showsHits(*text));
  EXPECT_TRUE(showsHits(*other));
  click("count");
  EXPECT_EQ(dialog().status(), QStringLiteral("2 found"));
  delete other;
  EXPECT_EQ(dialog().control(), nullptr);
  click("count");
}

TEST_F(FindDialogTest, EscInTheTextClosesThenEndsCaretsAndSelection) {
  show("|ab");
  type("findText", QStringLiteral("ab"));
  text->setFocus();
  QWidget* pane = window.focusWidget();
  ASSERT_NE(pane, nullptr);
  show("|ab ab");
  click("selectAll");
  EXPECT_TRUE(carets::several(text->editor())) << "the button selects every match";
  QTest::keyClick(pane, Qt::Key_Escape);
  EXPECT_FALSE(dialog().isVisible());
  EXPECT_TRUE(carets::several(text->editor()));
  QTest::keyClick(pane, Qt::Key_Escape);
  EXPECT_FALSE(carets::several(text->editor()));
  EXPECT_EQ(shown(), "@ab| ab");
  QTest::keyClick(pane, Qt::Key_Escape);
  EXPECT_EQ(shown(), "ab| ab");
}

TEST_F(FindDialogTest, FloatsWhereThereIsNoMainWindow) {
  CodeMax alone;
  alone.setText(QStringLiteral("one two"));
  alone.show();
  alone.ExecuteCmd(Cmd::FIND);
  auto* floating = alone.findChild<FindDialog*>();
  ASSERT_NE(floating, nullptr);
  EXPECT_TRUE(floating->isVisible());
  EXPECT_TRUE(floating->isFloating());
  QTest::keyClicks(floating->findChild<QComboBox*>(QStringLiteral("findText"))->lineEdit(), QStringLiteral("two"));
  EXPECT_EQ(alone.SelText(), QStringLiteral("two"));
}

TEST_F(FindDialogTest, RecordsIntoAMacro) {
  show("|ab ab ab", true);
  type("findText", QStringLiteral("ab"));
  type("replaceText", QStringLiteral("c"));
  keyMacros().toggleRecording();
  click("replace");
  click("findNext");
  keyMacros().toggleRecording();
  EXPECT_EQ(keyMacros().toText().toStdString(),
            "[Macro 1]\nSETFINDTEXT \"ab\"\nSETREPLACETEXT \"c\"\nSETFINDOPTIONS \"\"\nREPLACE\nFINDNEXT");
  keyMacros().fromText({});
}
