#include "control/folds/PaneFolds.h"

#include <QHelpEvent>
#include <QThread>
#include <QToolTip>

#include "control/code/LanguageTable.h"
#include "control/edit/Carets.h"
#include "control/folds/FoldMarks.h"
#include "control/folds/StickyLine.h"
#include "control/keys/KeyCommands.h"
#include "tests/control/PaneFixture.h"
#include "tests/support/Text.h"

namespace {

// Blocks by indentation.
class Folds : public PaneFixture {
 public:
  PaneFolds& folds() { return *pane()->folds(); }
  void run(const char* name) { control.ExecuteCmd(anyCommandByName(q(name))->id); }
  // The shown lines, with the number of lines that each hides: "a+2 b".
  std::string shown() {
    const text::DisplayMap& map = pane()->view().rows.map;
    map.checkInvariants();
    std::string all;
    for (text::LineNo line; line.value < map.lines(); line = map.shownFrom(line + 1)) {
      std::string words = control.model()->snapshot().line(line);
      words.erase(0, words.find_first_not_of(' ') == std::string::npos ? words.size() : words.find_first_not_of(' '));
      const auto hidden = folds().hiddenBehind(line);
      all += (line.value == 0 ? "" : " ") + words + (hidden ? "+" + std::to_string(hidden) : "");
    }
    return all;
  }
  // Waits until the blocks are known.
  bool handlesCome(qint64 line) {
    for (int i = 0; i < 500 && folds().handleAt(text::LineNo(line)) == PaneFolds::Handle::none; ++i) {
      QThread::msleep(2);
      QApplication::processEvents();
    }
    return folds().handleAt(text::LineNo(line)) == PaneFolds::Handle::open;
  }
  QPoint handle(qint64 line) {
    const TextView& view = pane()->view();
    return {view.margin - 1 - view.foldMargin / 2, view.yOf(line) + view.lineHeight() / 2};
  }
};

constexpr const char* kNested = "a\n  b\n    c\n  d\ne\n  f\ng";

}   // namespace

TEST_F(Folds, CommandsFoldAndUnfold) {
  const struct {
    const char *text, *commands, *shown, *after;
  } cases[] = {
      {"a\n  b\n    |c\n  d\ne\n  f\ng", "FOLD", "a b+1 d e f g", "a\n  b|\n    c\n  d\ne\n  f\ng"},
      {"a\n  b\n    |c\n  d\ne\n  f\ng", "FOLD FOLD", "a+3 e f g", "a|\n  b\n    c\n  d\ne\n  f\ng"},
      {"a\n  b\n    |c\n  d\ne\n  f\ng", "FOLD FOLD UNFOLD", "a b+1 d e f g", nullptr},
      {"a\n  b\n    |c\n  d\ne\n  f\ng", "FOLDTOGGLE FOLDTOGGLE", "a b c d e f g", nullptr},
      {"a\n  b\n    c\n  d\ne\n  |f\ng", "FOLDALL", "a+3 e+1 g", "a\n  b\n    c\n  d\ne|\n  f\ng"},
      {"|a\n  b\n    c\n  d\ne\n  f\ng", "FOLDALL UNFOLD", "a b+1 d e+1 g", nullptr},
      {"|a\n  b\n    c\n  d\ne\n  f\ng", "FOLDALL UNFOLDALL", "a b c d e f g", nullptr},
      {"|a\n  b\n    c\n  d\ne\n  f\ng", "FOLDLEVEL1 UNFOLD", "a b c d e+1 g", nullptr},
      {"|a\n  b\n    c\n  d\ne\n  f\ng", "FOLDALL FOLDLEVEL2", "a b+1 d e f g", nullptr},
      {"a\n  b\n    c\n  d\n@e\n  f\n|g", "FOLD", "a b c d e+1 g", "a\n  b\n    c\n  d\n@e\n  f\n|g"},
      {"a\n  b\n    c\n@  d\ne\n  f\n|g", "FOLDSELECTION", "a b c d+2 g", nullptr},
      {"@a\n  b\n    c\n  d\ne\n  f\ng|", "FOLD UNFOLD", "a b c d e f g", "@a\n  b\n    c\n  d\ne\n  f\ng|"},
      {"a\n  b\n    c\n  d\ne\n  f\n|g", "FOLD", "a b c d e f g", nullptr},
  };
  for (const auto& c : cases) {
    put(c.text);
    for (const QString& name : q(c.commands).split(u' ')) run(name.toLatin1());
    EXPECT_EQ(shown(), c.shown) << c.text << " " << c.commands;
    if (c.after) { EXPECT_EQ(now(), c.after) << c.commands; }
    run("UNFOLDALL");
  }
}

TEST_F(Folds, KeysKeepWhatIsHiddenWhole) {
  const struct {
    const char* text;   // with everything folded
    int key;
    Qt::KeyboardModifiers modifiers;
    const char *shown, *after;
  } cases[] = {
      {"a|\n  b\n  c\nd", Qt::Key_Right, {}, "a+2 d", "a\n  b\n  c\n|d"},
      {"a\n  b\n  c\n|d", Qt::Key_Left, {}, "a+2 d", "a|\n  b\n  c\nd"},
      {"a|\n  b\n  c\nd", Qt::Key_Right, Qt::ShiftModifier, "a+2 d", "a@\n  b\n  c\n|d"},
      {"|a\n  b\n  c\nd", Qt::Key_Down, Qt::ShiftModifier, "a+2 d", "@a\n  b\n  c\n|d"},
      {"a\n  b\n  c\n|d", Qt::Key_Left, Qt::ControlModifier, "a+2 d", "a|\n  b\n  c\nd"},
      {"a|\n  b\n  c", Qt::Key_End, Qt::ControlModifier, "a+2", "a|\n  b\n  c"},
      {"a|\n  b\n  c\nd", Qt::Key_Delete, {}, "a b c d", "a|\n  b\n  c\nd"},
      {"a\n  b\n  c\n|d", Qt::Key_Backspace, {}, "a b c d", "a\n  b\n  c\n|d"},
      {"@a|\n  b\n  c\nd", Qt::Key_Delete, {}, "+2 d", "|\n  b\n  c\nd"},
      {"|a\n  b\n  c\nd", Qt::Key_Return, {}, " a+2 d", "\n|a\n  b\n  c\nd"},
      {"a|\n  b\n  c\nd", Qt::Key_Return, {}, "a  b c d", "a\n|\n  b\n  c\nd"},
      {"|a\n  b\n  c\nd", Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier, "d", "|d"},
  };
  for (const auto& c : cases) {
    put(c.text);
    run("FOLDALL");
    key(c.key, c.modifiers);
    EXPECT_EQ(now(), c.after) << c.text;
    EXPECT_EQ(shown(), c.shown) << c.text;
    run("UNFOLDALL");
  }
}

TEST_F(Folds, WhatIsGoneToIsShown) {
  put(kNested);
  run("FOLDALL");
  control.SetSel({5, 2, 5, 3, false});
  EXPECT_EQ(shown(), "a+3 e f g");
  run("FOLDALL");
  // What a search opens closes when it goes on, and stays when the user does something there.
  control.editor().moveCaret(text::ByteOffset(0), false);
  EXPECT_TRUE(control.FindText(q("c")));
  EXPECT_EQ(shown(), "a b c d e+1 g");
  EXPECT_TRUE(control.FindText(q("f")));
  EXPECT_EQ(shown(), "a+3 e f g");
  key(Qt::Key_Left);
  EXPECT_TRUE(control.FindText(q("g")));
  EXPECT_EQ(shown(), "a+3 e f g");
  // Undo shows what it changes; a column of carets, all its rows.
  run("UNFOLDALL");
  control.SetSel({2, 5, 2, 5, false});
  typeText(q("x"));
  run("FOLDALL");
  run("UNDO");
  EXPECT_EQ(shown(), "a b c d e+1 g");
  run("FOLDALL");
  control.SetSel({0, 0, 4, 1, true});
  EXPECT_EQ(shown(), "a b c d e+1 g");
  run("FOLDALL");
  carets::set(control.editor(), {{text::ByteOffset(4), text::ByteOffset(4)}, {text::ByteOffset(19), text::ByteOffset(19)}}, 0);
  EXPECT_EQ(shown(), "a b+1 d e f g");
}

TEST_F(Folds, TheBlockAtTheTop) {
  put(("|head\n" + std::string(3, '\n') + std::string("  inner\n") + std::string(50, '\n') + "    deep\n  x\nout\n" +
       std::string(60, '\n'))
          .c_str());
  control.setStickyLine(true);
  ASSERT_TRUE(handlesCome(0));
  const auto* sticky = pane()->findChild<StickyLine*>();
  ASSERT_NE(sticky, nullptr);
  EXPECT_EQ(sticky->geometry().bottom() + 1, viewport()->y()) << "it covers nothing";
  const auto lineAt = [&](qint64 top) {
    pane()->setTopLine(top);
    return sticky->line();
  };
  EXPECT_EQ(lineAt(0), -1);
  EXPECT_EQ(lineAt(2), 0);
  EXPECT_EQ(lineAt(30), 4);
  EXPECT_EQ(lineAt(56), 0);
  EXPECT_EQ(lineAt(70), -1);
  lineAt(30);
  control.InsertText(q("new\n"), {0, 0});
  EXPECT_EQ(sticky->line(), 5) << "with its text, until the blocks are known again";
  QMouseEvent press(QEvent::MouseButtonPress, QPointF(90, 3), sticky->mapToGlobal(QPointF(90, 3)), Qt::LeftButton, Qt::LeftButton,
                    {});
  QApplication::sendEvent(pane()->findChild<StickyLine*>(), &press);
  EXPECT_EQ(control.CurrentPosition().LineNo, 5);
  control.setStickyLine(false);
  EXPECT_EQ(pane()->findChild<StickyLine*>(), nullptr);
  EXPECT_EQ(viewport()->y(), 0);
}

TEST_F(Folds, WhatOpensShowsAllThatCameIntoIt) {
  put("|head {\n  one\n}\nrest\n");
  control.editor().setSelection({text::ByteOffset(0), text::ByteOffset(15), 0, 0, false});
  run("FOLDSELECTION");
  EXPECT_EQ(shown(), "head {+2 rest ");
  const std::vector<text::Edit> breaks{{{text::ByteOffset(6), text::ByteOffset(6)}, "\n"},
                                       {{text::ByteOffset(14), text::ByteOffset(14)}, "\n"}};
  control.model()->document().apply(breaks, {});
  EXPECT_EQ(shown(), "head {  one }  rest ");
  // The first line of a folded stretch may be the one at the top.
  put(("|f {\n" + std::string("  a;\n") + "  b;\n" + std::string(300, '\n') + "}\n").c_str());
  control.setStickyLine(true);
  ASSERT_TRUE(handlesCome(0));
  control.editor().setSelection({text::ByteOffset(0), text::ByteOffset(8), 0, 0, false});
  run("FOLDSELECTION");
  pane()->setTopLine(100);
  EXPECT_EQ(pane()->findChild<StickyLine*>()->line(), 0);
  EXPECT_FALSE(control.grab().isNull());
}

TEST_F(Folds, MarginAndBox) {
  put(kNested);
  ASSERT_TRUE(handlesCome(0));
  EXPECT_EQ(folds().handleAt(text::LineNo(2)), PaneFolds::Handle::none);
  click(handle(1));
  EXPECT_EQ(shown(), "a b+1 d e f g");
  click(handle(0), Qt::ShiftModifier);
  EXPECT_EQ(shown(), "a+3 e f g");
  const QPoint box = foldMarks::boxOf(pane()->view(), 0).center().toPoint();
  QHelpEvent help(QEvent::ToolTip, box, viewport()->mapToGlobal(box));
  QApplication::sendEvent(viewport(), &help);
  EXPECT_TRUE(QToolTip::text().contains(q("    c\n"))) << s(QToolTip::text());
  click(box);
  EXPECT_EQ(shown(), "a b+1 d e f g") << "what is folded within stays";
  // Typing keeps the handles while the blocks are read anew.
  control.InsertText(q("\n"), {0, 0});
  EXPECT_EQ(folds().handleAt(text::LineNo(1)), PaneFolds::Handle::open);
  click({pane()->view().margin - pane()->view().foldMargin - 6, handle(2).y()});
  EXPECT_EQ(s(control.SelText()), "  b\n    c\n") << "a folded row is selected with what it hides";
  // A pane of its own folds for itself.
  control.setHSplitter(true);
  control.splitPanes(0.5, 0);
  QApplication::processEvents();
  pane(0)->folds()->unfoldAll();
  EXPECT_EQ(pane(0)->folds()->folds().size() + pane(1)->folds()->folds().size(), 1u);
}
