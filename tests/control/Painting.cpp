// What a pane paints, and when.
#include <QBackingStore>
#include <QScrollBar>
#include <QStyleHints>
#include <random>

#include "control/code/LanguageTable.h"
#include "tests/control/PaneFixture.h"
#include "tests/support/EventLoop.h"
#include "tests/support/Text.h"

class Painting : public PaneFixture {
 protected:
  // The slot of text that the letters of these cells are drawn in: that of the pixel farthest from the ground.
  ColorSlot inkOf(qint64 line, qint64 column, int cells) {
    const QImage image = viewport()->grab().toImage();
    const QPoint corner = pane()->view().pointOf(pane()->editor().offsetOf({line, column}));
    const QColor ground = pixel(image, corner.x(), corner.y());
    QColor ink = ground;
    for (int y = corner.y(); y < corner.y() + pane()->view().lineHeight(); ++y)
      for (int x = corner.x(); x < corner.x() + cells * static_cast<int>(pane()->view().metrics().cell()); ++x)
        if (distance(pixel(image, x, y), ground) > distance(ink, ground)) ink = pixel(image, x, y);
    ColorSlot best = ColorSlot::Text;
    for (const ColorSlot each : {ColorSlot::Keyword, ColorSlot::Comment, ColorSlot::String, ColorSlot::Number, ColorSlot::Operator})
      if (distance(ink, slot(each)) < distance(ink, slot(best))) best = each;
    return best;
  }
  // How many pixels of that colour they show.
  int count(qint64 line, qint64 column, const QColor& color, int cells = 1) {
    const QImage image = viewport()->grab().toImage();
    const QPoint corner = pane()->view().pointOf(pane()->editor().offsetOf({line, column}));
    int found = 0;
    for (int y = corner.y(); y < corner.y() + pane()->view().lineHeight(); ++y)
      for (int x = corner.x(); x < corner.x() + cells * static_cast<int>(pane()->view().metrics().cell()); ++x)
        if (viewport()->rect().contains(x, y) && pixel(image, x, y) == color) ++found;
    return found;
  }
  static QColor pixel(const QImage& image, int x, int y) {   // of the screen's finer ones the first
    return image.pixelColor(static_cast<int>(x * image.devicePixelRatio()), static_cast<int>(y * image.devicePixelRatio()));
  }
  static int distance(const QColor& a, const QColor& b) {
    return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue());
  }
  QColor slot(ColorSlot which) { return control.GetColor(static_cast<int>(which)); }
};

TEST_F(Painting, TokensHaveTheirColors) {
  CmLanguage language;
  language.CaseSensitive = true;
  language.Keywords = q("module");
  language.SingleLineComments = q("//");
  language.MultiLineComments1 = q("/*");
  language.MultiLineComments2 = q("*/");
  LanguageTable::registerLanguage(q("PaintTest"), language);
  put("|\nmodule x // c\nplain\nmodule");
  ASSERT_TRUE(control.setLanguage(q("PaintTest")));
  EXPECT_EQ(inkOf(1, 0, 6), ColorSlot::Keyword);
  EXPECT_EQ(inkOf(1, 7, 1), ColorSlot::Text);
  EXPECT_EQ(inkOf(1, 9, 4), ColorSlot::Comment);
  EXPECT_EQ(inkOf(2, 0, 5), ColorSlot::Text);
  EXPECT_EQ(inkOf(3, 0, 6), ColorSlot::Keyword);
  // A comment that is opened above takes the lines below with it.
  control.InsertText(q("/*"), {0, 0});
  QApplication::processEvents();
  EXPECT_EQ(inkOf(3, 0, 6), ColorSlot::Comment);
  control.setColorSyntax(false);
  EXPECT_EQ(inkOf(3, 0, 6), ColorSlot::Text);
  control.setColorSyntax(true);
  // The end of a line that no budget reaches at once.
  std::string line;
  while (line.size() < 3'000'000) line += "x=y; ";
  put((line + "/* c */ module|").c_str());
  key(Qt::Key_Home);
  key(Qt::Key_End);
  for (int i = 0; i < 1000 && (i == 0 || !pane()->view().statesExact()); ++i) QApplication::processEvents();
  const auto end = static_cast<qint64>(line.size());
  EXPECT_EQ(inkOf(0, end + 8, 6), ColorSlot::Keyword);
  EXPECT_EQ(inkOf(0, end + 1, 6), ColorSlot::Comment);
  control.InsertText(q("/*"), {0, 0});
  for (int i = 0; i < 1000 && (i == 0 || !pane()->view().statesExact()); ++i) QApplication::processEvents();
  EXPECT_EQ(inkOf(0, end + 10, 6), ColorSlot::Keyword) << "behind the first end of the comment";
  EXPECT_EQ(inkOf(0, end - 3, 6), ColorSlot::Comment);
  LanguageTable::unregisterLanguage(q("PaintTest"));
}

// Found beside the interface, also behind edits; keys go where the marks are.
TEST_F(Painting, WordsOfABlock) {
  CmLanguage language;
  language.BlockStart = q("begin\ncase");
  language.BlockEnd = q("end\nendcase");
  LanguageTable::registerLanguage(q("BlockTest"), language);
  put("begin\n case\n endcase\n|end\n");
  ASSERT_TRUE(control.setLanguage(q("BlockTest")));
  const auto marked = [&](qint64 line, qint64 column, int cells) {
    return count(line, column, slot(ColorSlot::MatchingBrace), cells) > 60;
  };
  EXPECT_TRUE(spinUntil([&] { return marked(0, 0, 5) && marked(3, 0, 3); }));
  EXPECT_FALSE(marked(1, 1, 4));
  control.InsertText(q("begin\nend\n"), {0, 0});
  EXPECT_TRUE(spinUntil([&] { return marked(2, 0, 5) && marked(5, 0, 3) && !marked(0, 0, 5); }));
  const auto keys = [&](int second) {
    key(Qt::Key_K, Qt::ControlModifier);
    key(second, Qt::ControlModifier);
  };
  keys(Qt::Key_J);
  EXPECT_EQ(now(), "begin\nend\n|begin\n case\n endcase\nend\n");
  keys(Qt::Key_S);
  EXPECT_EQ(now(), "begin\nend\n@begin\n case\n endcase\nend|\n");
  LanguageTable::unregisterLanguage(q("BlockTest"));
}

TEST_F(Painting, SelectionBracketsAndSymbols) {
  put("a(b) @word| \xFF\xE2\x80\xAE end");
  EXPECT_GT(count(0, 6, slot(ColorSlot::SelectionBack)), 20);
  EXPECT_EQ(count(0, 2, slot(ColorSlot::SelectionBack)), 0);
  EXPECT_GT(count(0, 10, slot(ColorSlot::TagText), 2), 20) << "the box of a bad byte";
  EXPECT_GT(count(0, 11, slot(ColorSlot::TagText), 3), 20) << "the box of an override";
  put("a|(b) word");
  EXPECT_GT(count(0, 1, slot(ColorSlot::MatchingBrace)), 20);
  EXPECT_GT(count(0, 3, slot(ColorSlot::MatchingBrace)), 20);
  EXPECT_GT(count(0, 7, slot(ColorSlot::HighlightedLine)), 20) << "the line of the caret";
  put("a\tb |");
  EXPECT_EQ(count(0, 1, slot(ColorSlot::TagText), 3), 0);
  control.setWhiteSpaceDisplay(true);
  EXPECT_GT(count(0, 1, slot(ColorSlot::TagText), 3), 5);
  put("a\r\n|");
  const int besideCrlf = count(0, 1, slot(ColorSlot::Window), 6);
  control.model()->replaceAll(text::Snapshot("a\rb", text::LineMode::cr), {});
  control.SetSel({1, 0, 1, 0, false});
  EXPECT_GT(count(0, 1, slot(ColorSlot::Window), 6), besideCrlf) << "the shorter name";
  control.setWhiteSpaceDisplay(false);
  control.SetColor(static_cast<int>(ColorSlot::SelectionText), Qt::red);
  put("@\u2588|\u2588");
  EXPECT_TRUE(count(0, 0, Qt::red) > 20 && count(0, 1, Qt::red) == 0) << "selected text has an ink of its own";
  control.SetColor(static_cast<int>(ColorSlot::SelectionText), QColor());
  put("@a\n\nb|");
  EXPECT_GT(count(1, 0, slot(ColorSlot::SelectionBack)), 20) << "an empty line of the selection";
  pane()->clearFocus();
  EXPECT_EQ(count(0, 0, slot(ColorSlot::SelectionBack)), 0) << "keys go elsewhere";
  EXPECT_GT(count(0, 0, slot(ColorSlot::InactiveSelectionBack)), 20);
  pane()->setFocus();
  put("ab\nc|d");
  control.showHits(q("b"), {});
  const QColor window = slot(ColorSlot::Window);
  EXPECT_LE(count(0, 1, window), pane()->view().lineHeight()) << "a hit has a ground of its own, but for a part of a pixel";
  EXPECT_GT(count(0, 0, window), 20);
  control.showHits(QString(), {});
  EXPECT_GT(count(0, 1, window), 20);
}

TEST_F(Painting, LineNumbersCountFrom1) {
  put("|\n\n\n\n\n\n\n\n\n\n\n");
  const QImage image = viewport()->grab().toImage();
  const auto tens = [&](qint64 line) {   // whether a second digit stands beside the line
    const TextView& view = pane()->view();
    const int right = view.margin - view.foldMargin - 6 - static_cast<int>(view.metrics().cell()), top = view.yOf(line);
    for (int y = top; y < top + pane()->view().lineHeight(); ++y)
      for (int x = right - static_cast<int>(pane()->view().metrics().cell()); x < right; ++x)
        if (pixel(image, x, y) != slot(ColorSlot::LeftMargin)) return true;
    return false;
  };
  EXPECT_TRUE(!tens(8) && tens(9));
}

TEST_F(Painting, OnlyChangedLinesArePainted) {
  QString lines;
  for (int i = 0; i < 100; ++i) lines += q("some line\n");
  control.setText(lines);
  control.SetSel({5, 3, 5, 3, false});
  QApplication::processEvents();
  struct Spy : QObject {
    QRegion painted;
    bool eventFilter(QObject*, QEvent* event) override {
      if (event->type() == QEvent::Paint) painted += static_cast<QPaintEvent*>(event)->region();
      return false;
    }
  } spy;
  viewport()->installEventFilter(&spy);
  typeText(q("x"));
  QApplication::processEvents();
  const int height = pane()->view().lineHeight();
  EXPECT_EQ(spy.painted.boundingRect().top(), pane()->view().yOf(5));
  EXPECT_LE(spy.painted.boundingRect().height(), 2 * height);
  EXPECT_FALSE(spy.painted.isEmpty());
  spy.painted = {};
  key(Qt::Key_Return, {}, q("\r"));
  QApplication::processEvents();
  EXPECT_GT(spy.painted.boundingRect().bottom(), viewport()->height() - height) << "what stands below moved";
  spy.painted = {};
  control.setBookmark(3, true);
  QApplication::processEvents();
  EXPECT_TRUE(spy.painted.contains(QPoint(5, pane()->view().yOf(3) + height / 2)));
  viewport()->removeEventFilter(&spy);
}

// After whatever is done, each view shows what it would if all of it were painted anew.
TEST_F(Painting, WhatIsShownIsWhatAFullRepaintShows) {
  CmLanguage language;
  language.Keywords = q("if");
  language.MultiLineComments1 = q("/*");
  language.MultiLineComments2 = q("*/");
  LanguageTable::registerLanguage(q("PaintTest"), language);
  put("|");
  control.setLanguage(q("PaintTest"));
  control.splitPanes(0.5, 0);
  CodeMax second(control, nullptr);
  second.resize(300, 200);
  second.show();
  const int flash = QGuiApplication::styleHints()->cursorFlashTime();
  QGuiApplication::styleHints()->setCursorFlashTime(4);
  Pane* const panes[] = {pane(0), pane(1), second.findChild<Pane*>()};
  std::mt19937 random(5);
  const auto any = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
  const QStringList pieces{q("("), q(")"), q("{"), q("}\r"), q("/*"), q("*/"), q("\r"), q("if "), q("ab "), q("\t")};
  // clang-format off
  const int keys[] = {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End, Qt::Key_PageDown, Qt::Key_Delete, Qt::Key_Insert};
  const std::function<void()> actions[] = {
      [&] { typeText(pieces[any(10)]); },
      [&] { pane(1)->type(any(2) ? q("b(\n") : q("*/")); },
      [&] { key(keys[any(9)], any(3) == 0 ? Qt::ShiftModifier : Qt::NoModifier); },
      [&] { key(any(2) ? Qt::Key_Z : Qt::Key_Y, Qt::ControlModifier); },
      [&] { second.SetSel({any(30), any(9), any(30), any(9), any(3) == 0}); },
      [&] { click(pointOf(any(20), any(9)), any(2) ? Qt::ShiftModifier : Qt::NoModifier); },
      [&] { control.setBookmark(any(20), any(3) > 0); },
      [&] { control.model()->clearBookmarks(); },
      [&] { control.showHits(any(2) ? q("a") : QString(), {}); },
      [&] { panes[any(3)]->setTopLine(any(40)); },
      [&] { panes[any(3)]->scrollColumns(any(9) - 4); },
      [&] { pane()->verticalScrollBar()->setValue(any(300)); },
      [&] { control.setSmoothScrolling(any(2)); },
      [&] { panes[any(3)]->setFocus(); },
      [&] { pane()->clearFocus(); },
      [&] { control.setWhiteSpaceDisplay(any(2)); },
      [&] { control.setColorSyntax(any(2)); },
      [&] { control.setLanguage(any(2) ? q("PaintTest") : QString()); },
      [&] { control.setLeftMargin(any(2)); },
      [&] { panes[any(3)]->runCommand(1032 + any(6), {}); },   // folding
      [&] { control.setStickyLine(any(2)); },
      [&] { control.setZoom(80 + 10 * any(5)); },
      [&] { control.SetColor(static_cast<int>(ColorSlot::Window), QColor(255, 255, 200 + any(55))); },
      [&] { control.setLineBacks([on = any(2)](text::LineNo) { LineBack back; if (on) back.line = Qt::cyan; return back; }); },
      [&] { ime(any(2) ? q("\u304B") : QString(), QString()); },
  };
  // clang-format on
  for (int step = 0; step < 1000 && !HasFailure(); ++step) {
    const int what = any(3) ? any(6) : any(static_cast<int>(std::size(actions)));
    actions[what]();
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents();   // what a timer asked to be painted
    for (const Pane* each : panes) {
      QWidget *view = each->viewport(), *window = view->window();
      const auto* store = dynamic_cast<const QImage*>(window->backingStore()->paintDevice());
      ASSERT_NE(store, nullptr);
      const qreal scale = view->devicePixelRatioF();
      const QRect place((QPointF(view->mapTo(window, QPoint())) * scale).toPoint(), (QSizeF(view->size()) * scale).toSize());
      const QPixmap shown = QPixmap::fromImage(store->copy(place));
      const auto image = [](const QPixmap& of) { return of.toImage().convertToFormat(QImage::Format_RGB32); };
      EXPECT_TRUE(image(shown) == image(view->grab())) << "step " << step << ", action " << what;
    }
  }
  QGuiApplication::styleHints()->setCursorFlashTime(flash);
  control.setWhiteSpaceDisplay(false);
  LanguageTable::unregisterLanguage(q("PaintTest"));
}

// Whatever the text is and wherever the caret goes, it is painted, and the caret is seen.
TEST_F(Painting, H1_HostileTextsArePainted) {
  std::mt19937 random(3);
  // clang-format off
  const std::vector<std::string> pieces{std::string(1, '\0'), "\x1B[31m", "\xFF", "\xC3", "\xE2\x80\xAE", "\xE2\x81\xA6", "\xEF\xB7\xBA",
                                        "\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9", "\xCC\x81\xCC\x82\xCC\x83", "\t", "\r", "\n",
                                        "(((((", "/*", "\xD7\x90\xD8\xA7", "\xE6\xBC\xA2", "\xEF\xBB\xBF", "word "};
  // clang-format on
  control.setLanguage(q("C/C++"));
  for (int round = 0; round < 6; ++round) {
    std::string text;
    for (int i = 0; i < 3000; ++i) text += pieces[random() % pieces.size()];
    control.model()->replaceAll(text::Snapshot(text), {});
    control.setWhiteSpaceDisplay(round % 2 == 0);
    for (int step = 0; step < 25; ++step) {
      const CmPosition a{qint64(random() % 300), qint64(random() % 40)}, b{qint64(random() % 300), qint64(random() % 40)};
      control.SetSel({a.LineNo, a.ColNo, b.LineNo, b.ColNo, random() % 3 == 0});
      if (random() % 2) typeText(q("z"));
      viewport()->grab();
      EXPECT_TRUE(viewport()->rect().contains(pane()->caretRect().center()));
    }
  }
  control.setWhiteSpaceDisplay(false);
}
