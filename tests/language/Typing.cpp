// Templates while typing: fields walked with Tab, and the list of hot keys.
#include <QApplication>
#include <QClipboard>
#include <QListWidget>
#include <QtTest>

#include "base/Strings.h"
#include "control/CodeMax.h"
#include "control/complete/Completer.h"
#include "language/CaretWords.h"
#include "language/FieldWalk.h"
#include "language/HotWords.h"
#include "language/Registration.h"
#include "language/ucCM.h"
#include "tests/language/Language.h"
#include "tests/language/Marked.h"

namespace {

class Typing : public testing::Test {
 protected:
  Typing() {
    language = manager.Languages()->Add(q("L"));
    language->SingleComments = q("//\r\n");
    language->StringDelims = q("\"\r\n");
    hotKey("alw", "always @($$)\n$$\nend", "a process");
    hotKey("alwff", "clocked", "<b>a register</b>");
    hotKey("i", "if", "");
    hotKey("inst", "instance", "");
    AddLanguages(*manager.Languages());
    cmx.setLanguage(q("L"));
    cmx.setAutoIndentMode(0);
    cmx.resize(400, 300);
    cmx.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&cmx));
    cmx.activateWindow();
    cmx.setFocus();
  }
  ~Typing() override { RemoveLanguages(); }

  void hotKey(const char* name, const char* text, const char* desc) {
    const auto item = language->cTemplate()->Add(q(name));
    item->UserString = toCrLf(q(text));
    item->Desc = q(desc);
  }
  void show(const char* marked) { showMarked(cmx, marked); }
  std::string shown() { return markedText(cmx); }
  void expand(const char* marked) {   // the hot key at the caret
    show(marked);
    ASSERT_TRUE(ExpandTemplate(cmx, manager, 1, {}));
  }
  void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    ASSERT_NE(QApplication::focusWidget(), nullptr);
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
  }
  void type(const char* text) { QTest::keyClicks(QApplication::focusWidget(), q(text)); }

  ucCM manager;
  std::shared_ptr<clsLang> language;
  CodeMax cmx;
};

class TypingHotWords : public Typing {
 protected:
  TypingHotWords() : completer(*new Completer(cmx)) {
    completer.add(std::make_unique<HotWords>(
        cmx, manager, [this] { return index; }, ExpandText()));
  }
  QStringList offered() const {   // without the words of the text
    QTest::qWait(4 * Completer::kWaitMs);
    QStringList rows;
    if (completer.list() && completer.list()->isVisible())
      for (int i = 0; i < completer.list()->count(); ++i)
        if (const QString row = completer.list()->item(i)->text(); row.contains(q("hot key"))) rows += row;
    return rows;
  }
  int index = 1;
  Completer& completer;
};

}   // namespace

TEST_F(Typing, TabWalksTheFieldsAsLongAsTheyLast) {
  expand("x $$\n  alw|\n$$");
  EXPECT_EQ(shown(), "x $$\n  always @(@$$|)\n  $$\n  end\n$$");
  EXPECT_TRUE(FieldWalk::isActive(cmx));
  type("clk");
  key(Qt::Key_Tab);
  EXPECT_EQ(shown(), "x $$\n  always @(clk)\n  @$$|\n  end\n$$");
  type("q");
  EXPECT_FALSE(FieldWalk::isActive(cmx));   // the "$$" behind the template is none of its fields
  key(Qt::Key_Tab);
  EXPECT_NE(shown().find("q\t|"), std::string::npos) << shown();
}

TEST_F(Typing, TabOutsideTheTemplateIsATab) {
  expand("$$\nalw|\nother $$");
  cmx.SetSel({4, 0, 4, 0, false});
  EXPECT_FALSE(FieldWalk::isActive(cmx));
  cmx.SetSel({1, 0, 1, 0, false});
  EXPECT_TRUE(FieldWalk::isActive(cmx));   // in front of the template's first field
  cmx.SetSel({4, 0, 4, 0, false});
  key(Qt::Key_Tab);
  EXPECT_EQ(shown(), "$$\nalways @($$)\n$$\nend\n\t|other $$");
  cmx.SetSel({1, 0, 1, 0, false});
  EXPECT_FALSE(FieldWalk::isActive(cmx));   // that ended it
}

TEST_F(Typing, ProposalsAreTakenOrTypedOver) {
  hotKey("p", "a($$clk, $$rst_n) $$ $$8", "");
  expand("p|");
  EXPECT_EQ(shown(), "a(@$$|clk, $$rst_n) $$ $$8");
  key(Qt::Key_Tab);
  EXPECT_EQ(shown(), "a(clk, @$$|rst_n) $$ $$8");
  type("r");
  EXPECT_EQ(shown(), "a(clk, r|) $$ $$8");
  key(Qt::Key_Tab);
  key(Qt::Key_Tab);
  EXPECT_EQ(shown(), "a(clk, r) $$ @$$|8");   // a field without a proposal stays when it is passed by
  key(Qt::Key_Tab);
  EXPECT_EQ(shown(), "a(clk, r) $$ 8|");
  key(Qt::Key_Tab);
  EXPECT_NE(shown().find("8\t"), std::string::npos);   // the walk is over

  QApplication::clipboard()->setText(q("pasted"));
  expand("x p|");
  key(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(shown(), "x a(pasted|, $$rst_n) $$ $$8");
  expand("p|");
  key(Qt::Key_Delete);
  EXPECT_EQ(shown(), "a(|, $$rst_n) $$ $$8");
}

TEST_F(Typing, ANameThatComesAgainIsTypedOnce) {
  hotKey("m", "m $$u($$clk, $$0)\n$$u $$up $$clk $$0", "");
  const char* const typed = "m a_1(@$$|clk, $$0)\na_1 $$up $$clk $$0";
  expand("m| $$u");
  type("a_1");
  EXPECT_EQ(shown(), "m a_1|($$clk, $$0)\n$$u $$up $$clk $$0 $$u");
  key(Qt::Key_Tab);
  EXPECT_EQ(shown(), std::string(typed) + " $$u") << "what stands behind the template is not part of it";
  key(Qt::Key_Tab);   // takes the proposal, everywhere
  EXPECT_EQ(shown(), "m a_1(clk, @$$|0)\na_1 $$up clk $$0 $$u");
  cmx.editor().undo();
  cmx.editor().undo();
  EXPECT_EQ(bytesOf(cmx), "m a_1($$clk, $$0)\n$$u $$up $$clk $$0 $$u");

  expand("m|");
  type("b");
  cmx.SetSel({1, 4, 1, 4, false});   // the caret goes elsewhere
  QApplication::processEvents();
  EXPECT_EQ(shown(), "m b($$clk, $$0)\nb |$$up $$clk $$0");
  hotKey("last", "$$a $$a", "");
  expand("last|");
  type("x");
  key(Qt::Key_Tab);
  EXPECT_EQ(shown(), "x| x") << "the key that filled the last fields is no tab";
}

TEST_F(Typing, ATemplateInsideAnotherGoesFirst) {
  hotKey("b", "begin $$ end", "");
  expand("alw|");
  type("b");
  ASSERT_TRUE(ExpandTemplate(cmx, manager, 1, {}));
  EXPECT_EQ(shown(), "always @(begin @$$| end)\n$$\nend");
  type("1");
  key(Qt::Key_Tab);
  EXPECT_EQ(shown(), "always @(begin 1 end)\n@$$|\nend");
}

TEST_F(TypingHotWords, OffersWhatBeginsLikeTheWord) {
  show("|");
  type("a");
  EXPECT_TRUE(offered().isEmpty());   // one letter is not enough
  type("l");
  EXPECT_EQ(offered(), (QStringList{q("alw   hot key: a process"), q("alwff   hot key: <b>a register</b>")}));
  type("z");
  EXPECT_TRUE(offered().isEmpty());
  type(" in");
  EXPECT_EQ(offered(), QStringList{q("inst   hot key")});
  type(" ");
  EXPECT_TRUE(offered().isEmpty());
  EXPECT_EQ(shown(), "alz in |");
}

TEST_F(TypingHotWords, EnteredRowsAndShiftF1Accept) {
  const std::vector<std::pair<Qt::Key, Qt::KeyboardModifiers>> cases[] = {
      {{Qt::Key_Down, Qt::NoModifier}, {Qt::Key_Tab, Qt::NoModifier}}, {{Qt::Key_F1, Qt::ShiftModifier}}};
  for (const auto& keys : cases) {
    show("  |;");
    type("alwf");
    ASSERT_EQ(offered().size(), 1);
    for (const auto& [code, modifiers] : keys) key(code, modifiers);
    EXPECT_EQ(shown(), "  clocked|;");
    EXPECT_TRUE(offered().isEmpty());
    cmx.editor().undo();
    EXPECT_EQ(s(cmx.Text()), "  alwf;");   // one step
  }
}

TEST_F(TypingHotWords, IsQuietWhereNoTemplateIsMeant) {
  const struct {
    const char* text;
    bool offers;
  } cases[] = {{"// |", false}, {"\"|", false}, {"\"\" |", true}, {"x|", false}, {"|x", false}, {"(|)", true}};
  for (const auto& c : cases) {
    show(c.text);
    type("al");
    EXPECT_EQ(!offered().isEmpty(), c.offers) << c.text;
  }
  show("|");
  index = 0;
  type("al");
  EXPECT_TRUE(offered().isEmpty());
  index = 9;
  type(" al");
  EXPECT_TRUE(offered().isEmpty());
  index = 1;
  expand("alw|");
  type("al");   // the fields come first
  EXPECT_TRUE(offered().isEmpty());
}
