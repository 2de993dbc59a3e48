// Lines whose letters join or are read from right to left: their order, and that caret, mouse and selection follow it.
#include <QAccessible>
#include <QTextLayout>
#include <algorithm>
#include <map>
#include <random>

#include "control/code/LanguageTable.h"
#include "control/shape/Bidi.h"
#include "tests/control/PaneFixture.h"
#include "tests/support/Text.h"

namespace {

// The characters from left to right, as the tool kit's own layout puts them.
QString orderOfToolKit(const QString& text) {
  QTextLayout layout(text, QFont(q("DejaVu Sans")));
  QTextOption option;
  option.setTextDirection(Qt::LeftToRight);
  option.setWrapMode(QTextOption::NoWrap);
  layout.setTextOption(option);
  layout.beginLayout();
  layout.createLine().setLineWidth(1e6);
  layout.endLayout();
  std::map<double, QChar> places;
  for (int i = 0; i < text.size(); ++i)
    for (const QGlyphRun& run : layout.glyphRuns(i, 1))
      if (!run.positions().isEmpty()) places[run.positions()[0].x()] = text[i];
  QString order;
  for (const auto& place : places) order += place.second;
  return order;
}

}   // namespace

TEST(Shaping, TheOrderIsThatOfTheBidirectionalAlgorithm) {
  const QString alphabet = QString::fromUtf8("ab\u05D0\u05D1\u05D2\u062F\u0631 12\u0661,.:+-$%()[]!/");
  std::mt19937 random(7);
  for (int round = 0; round < 3000; ++round) {
    QString text;
    for (int length = 1 + static_cast<int>(random() % 12); length > 0; --length)
      text += alphabet[static_cast<qsizetype>(random() % static_cast<unsigned>(alphabet.size()))];
    std::vector<shape::Sign> signs;
    for (const QChar c : text) signs.push_back({c.unicode(), c == u' ' ? shape::Sign::blank : shape::Sign::plain});
    auto levels = shape::levels(signs);
    QString order;
    for (const std::size_t at : shape::visualOrder(signs, levels)) order += text[static_cast<qsizetype>(at)];
    ASSERT_EQ(order, orderOfToolKit(text)) << text.toStdString();
  }
}

class ShapedLines : public PaneFixture {
 protected:
  ShapedLines() {
    CmLanguage language;
    language.SingleLineComments = q("//");
    language.MultiLineComments1 = q("/*");
    language.MultiLineComments2 = q("*/");
    language.StringDelims = q("\"");
    LanguageTable::registerLanguage(q("ShapingTest"), language);
  }
  const LineLayout& layout(qint64 line = 0) { return pane()->view().row(line).layout; }
  // The characters from left to right, row by row.
  std::string shown(std::string_view line) {
    std::vector<LayoutItem> items = layout().items();
    std::ranges::sort(items, {}, &LayoutItem::x);
    std::string all;
    for (const LayoutItem& item : items)
      all += line.substr(static_cast<std::size_t>(item.byte), static_cast<std::size_t>(item.bytes));
    return all;
  }
  // Caret, mouse and selection agree on what is painted.
  void expectAgreement() {
    const LineLayout& all = layout();
    double sum = 0;
    for (std::size_t i = 0; i < all.items().size(); ++i) {
      const LayoutItem& item = all.items()[i];
      SCOPED_TRACE("byte " + std::to_string(item.byte));
      EXPECT_GE(item.width, 1);
      const double inner = item.rightToLeft ? -item.width / 4 : item.width / 4, begin = item.beginX();
      const std::int64_t hit = all.byteAt(begin + inner);
      EXPECT_TRUE(hit == item.byte || all.xOf(hit) == begin) << hit;
      EXPECT_EQ(all.byteAt(begin + 3 * inner), item.byte + item.bytes);
      EXPECT_EQ(all.byteAt(begin + 3 * inner, true), item.byte);
      for (const double x : {all.xOf(item.byte), all.xOf(item.byte + item.bytes)})
        EXPECT_EQ(all.xOf(all.byteAt(std::min(x, all.end().x - 0.5))), x) << "a click on a caret leaves it there";
      const bool endsRow = i + 1 < all.items().size() && all.items()[i + 1].opens;
      EXPECT_EQ(all.xOf(item.byte + item.bytes), endsRow ? all.items()[i + 1].beginX() : item.endX());
      const auto pieces = all.pieces(item.byte, item.byte + item.bytes);
      ASSERT_EQ(pieces.size(), 1u);
      EXPECT_EQ(pieces[0].from, item.x);
      EXPECT_EQ(pieces[0].to, item.x + item.width);
      sum += item.width;
      double covered = 0;
      for (const LayoutPiece& piece : all.pieces(0, item.byte + item.bytes)) covered += piece.to - piece.from;
      EXPECT_NEAR(covered, sum, 0.01);
    }
    EXPECT_NEAR(all.end().x, sum, 0.01) << "what is arranged takes the room of its characters";
  }
};

TEST_F(ShapedLines, H1_CommentsAndStringsTurnAndCodeDoesNot) {
  struct Case {
    const char* what;
    bool code;
    std::string line, order;
  };
  // clang-format off
  const Case cases[] = {
      {"code", true, "\u05D0\u05D1 = \u0633\u0644\u0627\u0645;", "\u05D0\u05D1 = \u0633\u0644\u0627\u0645;"},
      {"a comment", true, "\u05D0\u05D1 // \u05D0\u05D1\u05D2 12", "\u05D0\u05D1 // 12 \u05D2\u05D1\u05D0"},
      {"a string, with the quotes outside", true, "f(\"\u05D0\u05D1\", \"\u05D2\u05D3\");", "f(\"\u05D1\u05D0\", \"\u05D3\u05D2\");"},
      {"brackets are mirrored, in place", true, "// \u05D0(\u05D1)\u05D2 a", "// \u05D2)\u05D1(\u05D0 a"},
      {"blanks and a tab at the end stay", true, "// \u05D0\u05D1 \t", "// \u05D1\u05D0 \t"},
      {"an override turns nothing", true, "// a\u202Eb \u05D0\u05D1", "// a\u202Eb \u05D1\u05D0"},
      {"a mark holds a sign", true, "// \u05D0!\u200Fa", "// \u200F!\u05D0a"},
      {"joined letters", true, "/* \u0633\u0644\u0627\u0645 */", "/* \u0645\u0627\u0644\u0633 */"},
      {"marks belong to their letter", true, "// \u0628\u064E\u062F", "// \u062F\u0628\u064E"},
      {"a text without a language", false, "\u05D0\u05D1 c", "\u05D1\u05D0 c"},
      {"conjuncts and signs before their letter", true, "x = \u0915\u094D\u0937\u093F\u0939\u093F\u0928\u094D\u0926\u0940;",
       "x = \u0915\u094D\u0937\u093F\u0939\u093F\u0928\u094D\u0926\u0940;"},
      {"Thai, a flag, a family", false, "\u0E2A\u0E27\u0E31\u0E2A\u0E14\u0E35 \U0001F1E9\U0001F1EA\U0001F468\u200D\U0001F469\u200D\U0001F467 \u05D0\u05D1",
       "\u0E2A\u0E27\u0E31\u0E2A\u0E14\u0E35 \U0001F1E9\U0001F1EA\U0001F468\u200D\U0001F469\u200D\U0001F467 \u05D1\u05D0"},
  };
  // clang-format on
  for (const char* family : {"DejaVu Sans Mono", "DejaVu Sans"}) {
    QFont font(QString::fromLatin1(family));
    font.setPixelSize(14);
    control.setFontOf(font);
    for (const Case& c : cases) {
      SCOPED_TRACE(std::string(family) + ": " + c.what);
      put((c.line + "|").c_str());
      ASSERT_TRUE(control.setLanguage(c.code ? q("ShapingTest") : QString()));
      QApplication::processEvents();
      EXPECT_EQ(shown(c.line), c.order);
      expectAgreement();
    }
  }
}

TEST_F(ShapedLines, RowsMouseAndColumnsFollowTheOrder) {
  // Each row is turned by itself.
  const std::string words = "// \u05D0\u05D1\u05D2 \u05D3\u05D4\u05D5 \u05D6\u05D7\u05D8 \u05D9\u05DB\u05DC";
  ASSERT_TRUE(control.setLanguage(q("ShapingTest")));
  control.setWrapColumn(11);
  control.setWordWrap(static_cast<int>(WordWrap::column));
  put((words + "|").c_str());
  EXPECT_EQ(shown(words), "// \u05D5\u05D4\u05D3 \u05D2\u05D1\u05D0 \u05DC\u05DB\u05D9 \u05D8\u05D7\u05D6");
  expectAgreement();
  const TextView& view = pane()->view();
  EXPECT_EQ(pane()->caretRect().y(), view.lineHeight()) << "at the end of the second row";
  put("// \u05D0\u05D1|\u05D2 \u05D3\u05D4\u05D5 \u05D6\u05D7\u05D8 \u05D9\u05DB\u05DC");
  key(Qt::Key_Down);
  EXPECT_EQ(now(), "// \u05D0\u05D1\u05D2 \u05D3\u05D4\u05D5 \u05D6\u05D7\u05D8 \u05D9|\u05DB\u05DC");
  key(Qt::Key_Up);
  EXPECT_EQ(now(), "// \u05D0\u05D1|\u05D2 \u05D3\u05D4\u05D5 \u05D6\u05D7\u05D8 \u05D9\u05DB\u05DC")
      << "by the columns of the text";
  control.setWordWrap(static_cast<int>(WordWrap::off));

  // Columns 3 to 5 of both lines, by the mouse: they are the letters that stand there in the text.
  put("// \u05D0\u05D1\u05D2\u05D3|\n// abcd");
  const auto rectOf = [&](qint64 column) { return pane()->view().rectOf(pane()->editor().offsetOf({0, column})); };
  const QPoint begin = rectOf(3).center() + QPoint(2, 0), end = pointOf(1, 5);
  drag(begin, end, Qt::AltModifier);
  EXPECT_EQ(control.SelText(), q("\u05D0\u05D1\nab"));
  const QImage image = viewport()->grab().toImage();
  const QColor back = control.GetColor(static_cast<int>(ColorSlot::SelectionBack));
  for (qint64 column = 3; column < 7; ++column) {
    const QRect rect = rectOf(column);
    EXPECT_EQ(image.pixelColor(QPoint(rect.center().x(), rect.y() + 1)) == back, column < 5) << column;
  }
  // What reads the screen hears the same.
  QAccessibleTextInterface* const reader = QAccessible::queryAccessibleInterface(pane())->textInterface();
  for (int letter = 0; letter < 7; ++letter) EXPECT_EQ(reader->offsetAtPoint(reader->characterRect(letter).center()), letter);
  EXPECT_GT(reader->characterRect(3).left(), reader->characterRect(6).left());
  // A click beside the last letter, in a text that is read there: behind it. Typed text stands there.
  put("// \u05D0\u05D1\u05D2|");
  click({rectOf(5).left() + 1, rectOf(5).center().y()});
  EXPECT_EQ(now(), "// \u05D0\u05D1\u05D2|");
  EXPECT_EQ(pane()->caretRect().left(), rectOf(5).left());
  typeText(q("\u05D3"));
  EXPECT_EQ(now(), "// \u05D0\u05D1\u05D2\u05D3|");
  EXPECT_EQ(pane()->caretRect().left(), rectOf(6).left());
  ime(q("\u05D4"), {});   // not yet in the text, and in the way of nothing
  viewport()->grab();
  key(Qt::Key_Left);
  EXPECT_EQ(now(), "// \u05D0\u05D1\u05D2|\u05D3") << "keys go along the text";
}
