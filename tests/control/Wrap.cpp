#include <QScrollBar>
#include <random>

#include "control/CodeMaxImpl.h"
#include "control/folds/PaneFolds.h"
#include "tests/control/PaneFixture.h"
#include "tests/support/Text.h"

namespace {

class Wrap : public PaneFixture {
 public:
  Wrap() {
    control.setWrapColumn(20);
    control.setWordWrap(static_cast<int>(WordWrap::column));
  }
  TextView& view() { return pane()->view(); }
  QScrollBar* verticalBar() { return pane()->verticalScrollBar(); }

  // The row of each position that the window shows, found in the slowest way: every line is divided anew.
  void expectRows() {
    const text::Snapshot& text = control.model()->snapshot();
    view().measureDown(0, INT64_MAX / 2);
    std::int64_t row = 0;
    for (text::LineNo line; line.value < text.lineCount(); ++line) {
      text::LineMap places = control.model()->line(line, control.TabSize());
      const text::LineRows rows(places, text, 20, 1, control.TabSize(), nullptr);
      for (std::int64_t of = 0; of < rows.count(places); ++of, ++row) {
        const text::ByteOffset at = places.start() + rows.begin(places, of).byte;
        ASSERT_EQ(view().topOf(view().placeOf(at)), row * view().lineHeight()) << line.value << " " << of;
        ASSERT_EQ(view().placeAt(row * view().lineHeight()), (TextView::Place{line, of}));
      }
    }
    ASSERT_EQ(view().rows.map.rows(), row);
    view().rows.map.checkInvariants();
  }
};

QString words(int count) {
  QString text;
  for (int i = 0; i < count; ++i) text += QStringLiteral("word%1 ").arg(i);
  return text;
}

}   // namespace

TEST_F(Wrap, KeysAndMouseGoByRows) {
  const char* text = "|    one two three four five six\nshort\nlast line of all of them";
  struct Step {
    int key;
    Qt::KeyboardModifiers modifiers;
    const char* expected;
  };
  // "    one two three " / "    four five six" / "short" / "last line of all of " / "them"
  // clang-format off
  const std::vector<std::vector<Step>> cases{
      {{Qt::Key_End, {}, "    one two three| four five six\nshort\nlast line of all of them"},
       {Qt::Key_End, {}, "    one two three four five six|\nshort\nlast line of all of them"},
       {Qt::Key_Home, {}, "    one two three |four five six\nshort\nlast line of all of them"},
       {Qt::Key_Home, {}, "    |one two three four five six\nshort\nlast line of all of them"},
       {Qt::Key_Home, {}, "|    one two three four five six\nshort\nlast line of all of them"},
       {Qt::Key_End, Qt::ShiftModifier, "@    one two three| four five six\nshort\nlast line of all of them"}},
      {{Qt::Key_Right, Qt::ControlModifier, "    |one two three four five six\nshort\nlast line of all of them"},
       {Qt::Key_Right, Qt::ControlModifier, "    one |two three four five six\nshort\nlast line of all of them"},
       {Qt::Key_Down, {}, "    one two three four| five six\nshort\nlast line of all of them"},
       {Qt::Key_Down, {}, "    one two three four five six\nshort|\nlast line of all of them"},
       {Qt::Key_Down, {}, "    one two three four five six\nshort\nlast lin|e of all of them"},
       {Qt::Key_Down, {}, "    one two three four five six\nshort\nlast line of all of them|"},
       {Qt::Key_Up, Qt::ShiftModifier, "    one two three four five six\nshort\nlast lin|e of all of them@"},
       {Qt::Key_Up, {}, "    one two three four five six\nshort|\nlast line of all of them"},
       {Qt::Key_Up, {}, "    one two three four| five six\nshort\nlast line of all of them"},
       {Qt::Key_Up, {}, "    one |two three four five six\nshort\nlast line of all of them"}},
  };
  // clang-format on
  for (const auto& steps : cases) {
    put(text);
    for (const Step& step : steps) {
      key(step.key, step.modifiers);
      EXPECT_EQ(now(), step.expected);
    }
  }
  put(text);
  const QPoint four = pointOf(0, 18), last = pointOf(2, 0);
  EXPECT_EQ(four.y() / view().lineHeight(), 1);
  EXPECT_EQ(four.x(), pointOf(0, 4).x()) << "indented as its line";
  EXPECT_EQ(last.y() / view().lineHeight(), 3);
  click(four);
  EXPECT_EQ(now(), "    one two three |four five six\nshort\nlast line of all of them");
  EXPECT_EQ(pane()->caretRect().top(), view().lineHeight());
  click(pointOf(0, 0) + QPoint(600, 0));
  EXPECT_EQ(now(), "    one two three| four five six\nshort\nlast line of all of them")
      << "the end of the row, not the next one's begin";
  drag(pointOf(0, 8), last, Qt::AltModifier);
  EXPECT_EQ(now(), "    one #two three four five six\nshort\n|last line of all of them");
  key(Qt::Key_Z, Qt::AltModifier);
  EXPECT_FALSE(control.wraps());
  EXPECT_EQ(pointOf(1, 0).y() / view().lineHeight(), 1);
  key(Qt::Key_Z, Qt::AltModifier);
  EXPECT_TRUE(control.wraps());
  EXPECT_EQ(control.WordWrap(), static_cast<int>(WordWrap::column)) << "the switch is that of the view";
}

// Whatever was typed, shown, scrolled and resized: a row stands where a view that measures everything has it.
TEST_F(Wrap, RowsAreThoseOfAFreshView) {
  std::mt19937 random(3);
  const auto any = [&](std::int64_t most) { return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(most)); };
  QString text;
  for (int line = 0; line < 60; ++line) text += words(static_cast<int>(any(12))) + u'\n';
  control.setText(text);
  for (int step = 0; step < 150; ++step) {
    const std::int64_t lines = control.LineCount();
    control.SetSel({any(lines), any(60), any(lines), any(60), false}, any(2) == 0);
    switch (any(7)) {
      case 0: control.ReplaceSel(words(static_cast<int>(any(9)))); break;
      case 1: key(Qt::Key_Return, {}, q("\r")); break;
      case 2: control.ReplaceText(any(2) != 0 ? q("x\ny\n") : QString(), {any(lines), any(20), any(lines), 0, false}); break;
      case 3: control.ExecuteCmd(Cmd::UNDO); break;
      case 4: verticalBar()->setValue(static_cast<int>(any(verticalBar()->maximum() + 1))); break;
      case 5: key(any(2) != 0 ? Qt::Key_PageDown : Qt::Key_PageUp); break;
      default: control.setText(control.Text() + words(20) + u'\n');
    }
    QApplication::processEvents();
    const std::int64_t seen = view().top - view().topOf(view().placeAt(view().top));
    const auto place = view().placeAt(view().top);
    ASSERT_LE(view().top, std::max<std::int64_t>(0, view().rows.map.rows() * view().lineHeight())) << step;
    expectRows();
    if (HasFatalFailure()) return void(ADD_FAILURE() << "step " << step);
    EXPECT_EQ(view().placeAt(view().top), place) << "what is measured above does not move what is shown";
    EXPECT_EQ(view().top - view().topOf(place), seen);
  }
}

TEST_F(Wrap, HiddenLinesTakeNoRow) {
  put("|zero\none\ntwo\nthree is longer than a row is wide\nfour\nfive");
  for (const int mode : {0, 2}) {
    control.setWordWrap(mode);
    pane()->folds()->setFolds(std::vector<text::Fold>{{text::LineNo(0), text::LineNo(2)}, {text::LineNo(3), text::LineNo(4)}});
    const int more = mode == 0 ? 0 : 1;   // rows of "three"
    EXPECT_EQ(pointOf(3, 0).y() / view().lineHeight(), 1);
    EXPECT_EQ(pointOf(5, 0).y() / view().lineHeight(), 2 + more);
    control.SetSel({0, 0, 0, 0, false});
    key(Qt::Key_Down);
    EXPECT_EQ(control.CurrentPosition(), (CmPosition{3, 0}));
    for (int i = 0; i <= more; ++i) key(Qt::Key_Down);
    EXPECT_EQ(control.CurrentPosition().LineNo, 5);
    click(pointOf(3, 2));
    EXPECT_EQ(control.CurrentPosition(), (CmPosition{3, 2}));
    control.ReplaceText(q("new\nlines\n"), {0, 0, 0, 0, false});
    EXPECT_TRUE(view().rows.map.isHidden(text::LineNo(3)) && !view().rows.map.isHidden(text::LineNo(5)))
        << "they move with the text";
    control.ExecuteCmd(Cmd::UNDO);
    QApplication::processEvents();
    pane()->folds()->unfoldAll();
    EXPECT_EQ(pointOf(5, 0).y() / view().lineHeight(), 5 + more);
  }
}

// Only what is looked at is measured, and the window stays where it is.
TEST_F(Wrap, CostsWhatIsSeen) {
  QString text;
  for (int line = 0; line < 30000; ++line) text += words(10) + u'\n';
  control.setWordWrap(static_cast<int>(WordWrap::window));
  control.setText(text);
  control.ExecuteCmd(Cmd::GOTOLINE, 15000);
  QApplication::processEvents();
  const text::ByteOffset shown = view().topByte();
  for (const int width : {300, 200, 500, 250, 640}) {
    control.resize(width, 360);
    QApplication::processEvents();
    EXPECT_EQ(view().placeOf(shown), view().placeAt(view().top)) << "resizing keeps the text at the upper edge";
  }
  control.resize(300, 360);
  key(Qt::Key_End, Qt::ControlModifier);
  QApplication::processEvents();
  EXPECT_TRUE(viewport()->rect().contains(pane()->caretRect().center()));
  EXPECT_EQ(verticalBar()->value(), verticalBar()->maximum());
  EXPECT_LT(view().rows.map.rows(), 30000 + 2000) << "most lines count as one row: nobody has looked at them";
  key(Qt::Key_PageUp);
  QApplication::processEvents();
  EXPECT_LT(verticalBar()->value(), verticalBar()->maximum());
  EXPECT_TRUE(viewport()->rect().contains(pane()->caretRect().center()));
  const TextView::Place place = view().placeAt(view().top);
  view().measureDown(0, INT64_MAX / 2);
  EXPECT_GT(view().rows.map.rows(), 50000);
  EXPECT_EQ(view().placeAt(view().top), place) << "what is measured above does not move what is shown";

  control.setText(QString(3000000, u'x'));   // one line of many rows
  key(Qt::Key_End, Qt::ControlModifier);
  EXPECT_TRUE(viewport()->rect().contains(pane()->caretRect().center()));
  const qint64 end = control.CurrentPosition().ColNo;
  EXPECT_EQ(end, 3000000);
  key(Qt::Key_Up);
  EXPECT_LT(control.CurrentPosition().ColNo, end);
  EXPECT_GT(control.CurrentPosition().ColNo, end - 200);
  EXPECT_EQ(pane()->leftColumn(), 0);
}
