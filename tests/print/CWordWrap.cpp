// Comment marks, gutter, tab stops, emphasis and clipped lines of the print layout.
#include "print/CWordWrap.h"

#include <gtest/gtest.h>

#include <QPainter>

#include "control/CodeMax.h"
#include "control/code/LanguageTable.h"
#include "page/VSPrinter.h"
#include "tests/support/Cost.h"
#include "tests/support/ScriptedDialogs.h"

namespace {

// Marks written as < and >.
QString marked(CWordWrap& wrap, const char* line) {
  QString text = QLatin1String(line);
  wrap.ProcessComments(text);
  return text.replace(QChar(15), u'<').replace(QChar(16), u'>');
}

CWordWrap hdl() {
  CWordWrap wrap;
  wrap.SetSingleComment(QStringLiteral("//"));
  wrap.SetMultiLineComment(QStringLiteral("/*"), QStringLiteral("*/"));
  return wrap;
}

struct Job {
  CodeMax cmx;
  VSPrinter printer;
  CWordWrap wrap = hdl();
  QString line;
  bool result = false;

  explicit Job(const QString& text, double widthInches = 8) {
    CmLanguage language;
    language.CaseSensitive = true;
    language.Keywords = QStringLiteral("begin\nend\n`ifdef\n$show\n");
    language.SingleLineComments = QStringLiteral("//\n");
    language.MultiLineComments1 = QStringLiteral("/*\n");
    language.MultiLineComments2 = QStringLiteral("*/\n");
    language.StringDelims = QStringLiteral("\"\n");
    LanguageTable::registerLanguage(QStringLiteral("print-test"), language);
    cmx.setLanguage(QStringLiteral("print-test"));
    cmx.setText(text);
    cmx.setTabSize(4);
    printer.setPageLayout(QPageLayout(QPageSize(QSizeF(widthInches, 6), QPageSize::Inch), QPageLayout::Portrait,
                                      QMarginsF(36, 36, 36, 36), QPageLayout::Point));
    QFont font(QStringLiteral("DejaVu Sans Mono"));
    font.setPointSizeF(10);
    printer.setFont(font);
    QObject::connect(&printer, &VSPrinter::NewLineEvent, [this] { ++wrap.NewLineCount; });
    wrap.cmx = &cmx;
  }
  void print(bool numbers = false) { wrap.cmPrintText(printer, line, QStringLiteral("title"), numbers, result); }
  const PrintPage& page(std::size_t i = 0) const { return *printer.document().pages.at(i); }
  // Each line of a page; styled runs stand in marks: b bold, i italic, B both.
  QStringList styled(std::size_t index = 0) const {
    QStringList lines;
    float baseline = -1;
    for (const auto& run : page(index).runs) {
      if (run.baseline != baseline) lines << QString();
      baseline = run.baseline;
      const QFont& font = printer.document().styles[static_cast<std::size_t>(run.style)].font;
      const QString text = page(index).runText(run);
      const QString mark = font.bold() && font.italic() ? QStringLiteral("B")
                           : font.bold()                ? QStringLiteral("b")
                           : font.italic()              ? QStringLiteral("i")
                                                        : QString();
      lines.last() += mark.isEmpty() || text.trimmed().isEmpty() ? text : mark + u'{' + text + u'}';
    }
    return lines;
  }
};

}   // namespace

TEST(CWordWrap, CommentsInOneLine) {
  struct Case {
    const char *line, *marked;
  };
  const Case cases[] = {
      {"// x", "<// x>"},
      {"a // x", "a <// x>"},
      {"a /* b */ c // d", "a </* b */> c <// d>"},
      {"a // b /* c", "a <// b /* c>"},
      {"/*/ a", "</*/> a"},   // the end may use the start's own character
      {"/* a */ b /* c */", "</* a */> b </* c */>"},
      {"/* // */ b", "</* <// */> b>"},   // a line comment inside a closed block is found all the same
      {"/*a*// b", "</*a*/>/ b"},         // a mark has come between
      {"/*a*// // b", "</*a*/>/ <// b>"},
      {"no comment", "no comment"},
      {"", ""},
  };
  for (const auto& c : cases) {
    CWordWrap wrap = hdl();
    EXPECT_EQ(marked(wrap, c.line).toStdString(), c.marked) << c.line;
  }
}

TEST(CWordWrap, ALineOfManyCommentsCostsOneCopy) {
  CWordWrap wrap = hdl();
  for (const QString& end : {QString(), QStringLiteral("// end")}) {
    const QString line = QStringLiteral("/*x*/ a ").repeated(40000) + end;
    QString text;
    EXPECT_LT(costMs([&] { wrap.ProcessComments(text = line); }), 500);
    EXPECT_EQ(text.size(), line.size() + (end.isEmpty() ? 80000 : 80002));
  }
}

TEST(CWordWrap, GutterIsRightAligned) {
  Job job(QString(119, u'\n'));   // 120 lines, the last index has three digits
  job.print(true);
  EXPECT_TRUE(job.result);
  const QStringList lines = job.styled();
  EXPECT_EQ(lines[0], QStringLiteral("   1: "));
  EXPECT_EQ(lines[4], QStringLiteral("   5: "));
  EXPECT_NEAR(job.printer.IndentLeft(), job.printer.TextWidth(QStringLiteral("      ")), 0.01);
  Job ten(QStringLiteral("a\nb\nc\nd\ne\nf\ng\nh\ni\nj"));   // line 10: more digits than the last index
  ten.print(true);
  EXPECT_EQ(ten.styled().last(), QStringLiteral(" 10: j"));
}

TEST(CWordWrap, EmphasisOfKeywordsAndComments) {
  Job job(QStringLiteral("begin x(begin) // begin\nend Begin\n/* a\nbegin b */ end"));
  job.wrap.Keywordsbold = true;
  job.wrap.CommentsBold = false;
  job.print();
  EXPECT_EQ(job.styled(), (QStringList{QStringLiteral("b{begin} x(b{begin}) i{// begin}"), QStringLiteral("b{end} Begin"),
                                       QStringLiteral("i{/* a}"), QStringLiteral("i{begin b */} b{end}")}));
  EXPECT_FALSE(job.printer.FontItalic());
  Job open(QStringLiteral("x \"begin\nbegin end"));   // a string that is not closed ends with its line
  open.wrap.Keywordsbold = true;
  open.wrap.stringColor = Qt::red;
  open.print();
  EXPECT_EQ(open.styled(), (QStringList{QStringLiteral("x \"begin"), QStringLiteral("b{begin} b{end}")}));
  Job numbered(QStringLiteral("/* a\nb */ c end"));
  numbered.wrap.CommentsBold = true;
  numbered.wrap.CommentsItalic = false;
  numbered.wrap.keywordColor = Qt::blue;
  numbered.print(true);
  EXPECT_EQ(numbered.styled(), (QStringList{QStringLiteral(" 1: b{/* a}"), QStringLiteral(" 2: b{b */} c end")}));
  EXPECT_EQ(numbered.printer.document().styles[std::size_t(numbered.page().runs.back().style)].color, QColor(Qt::blue));
}

// Behind line numbers a tab goes where it goes on the screen, a word too long for a line begins beside its number, and a line parted by
// tabs breaks at one.
TEST(CWordWrap, NarrowColumnsWithLineNumbers) {
  Job tabs(QStringLiteral("ab\tx\n") + QString(1200, u'\n'));
  tabs.print(true);
  const auto& run = tabs.page().runs[1];
  EXPECT_EQ(tabs.page().runText(run), QStringLiteral("x"));
  EXPECT_NEAR(run.x - 36 - tabs.printer.IndentLeft(), 4 * tabs.printer.TextWidth(QStringLiteral("0")), 0.01);
  Job narrow(QStringLiteral("    ") + QString(60, u'a') + QStringLiteral("\nfour\tfive5\tsix"), 2.5);
  narrow.wrap.WrapMark = true;
  narrow.printer.setWrapMark(true);
  narrow.print(true);
  const QStringList lines = narrow.styled();
  EXPECT_TRUE(lines[0].startsWith(QStringLiteral(" 1:     aaa"))) << lines[0].toStdString();
  EXPECT_EQ(lines.mid(lines.indexOf(QStringLiteral(" 2: fourfive5"))),
            (QStringList{QStringLiteral(" 2: fourfive5"), QStringLiteral("six")}));
  EXPECT_EQ(narrow.page().rules.size(), 4u * static_cast<std::size_t>(lines.size() - 2)) << "each break is marked";
}

TEST(CWordWrap, SelectionIsAskedFor) {
  Job job(QStringLiteral("one\ntwo\nthree"));
  ScriptedDialogs dialogs;
  job.wrap.PrintSelectedText();
  EXPECT_TRUE(dialogs.boxes.empty()) << "an empty selection is not asked about";
  job.cmx.SetSel({2, 0, 1, 0, false});   // made backwards; the line at whose start it ends is printed too
  dialogs.answer(Answer::yes);
  job.wrap.PrintSelectedText();
  EXPECT_EQ(dialogs.last().text, QStringLiteral("Do you just want to print the selected text only"));
  EXPECT_EQ(dialogs.last().title, QStringLiteral("Zelkor Printing"));
  job.print();
  EXPECT_EQ(job.styled(), (QStringList{QStringLiteral("two"), QStringLiteral("three")}));
  dialogs.answer(Answer::no);
  job.wrap.PrintSelectedText();
  job.print();
  EXPECT_EQ(job.styled().size(), 3);
}

TEST(CWordWrap, EmptyTextAndAStop) {
  Job empty((QString()));
  empty.print(true);
  EXPECT_EQ(empty.styled(), QStringList{QStringLiteral(" 1: ")});
  Job ended(QStringLiteral("a\n\n"));
  ended.print(true);
  EXPECT_EQ(ended.styled(), (QStringList{QStringLiteral(" 1: a"), QStringLiteral(" 2: ")}))
      << "behind the last line end stands no line";
  Job stopped(QString(1000, u'\n'));
  stopped.wrap.cmPrintText(stopped.printer, stopped.line, QString(), false, stopped.result,
                           [](qint64 done, qint64) { return done < 10; });
  EXPECT_FALSE(stopped.result);
}

// Pages stand in the order of the screen.
TEST(CWordWrap, CommentsAndStringsStandInTheirNaturalOrder) {
  const auto naturals = [](Job& job) {
    job.print(true);
    QStringList found;
    for (const PrintRun& run : job.page().runs)
      if (job.printer.document().styles[static_cast<std::size_t>(run.style)].natural) found << job.page().runText(run);
    return found.join(u'|').toStdString();
  };
  Job code(QString::fromUtf8("\u05D0\u05D1 = \"\u05D2 begin\"; // \u05D3 \u05D4\nx = \"b\"; // c"));
  EXPECT_EQ(naturals(code), "\"\u05D2 begin\"|// \u05D3 \u05D4");
  Job prose(QString::fromUtf8("\u05D0 b"));
  prose.cmx.setLanguage({});
  EXPECT_EQ(naturals(prose), "\u05D0 b");

  // Drawn, too: as the same letters the other way round in the order of code.
  const auto drawn = [](const char* text, bool natural) {
    VSPrinter printer;
    printer.setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 10));
    printer.StartDoc();
    printer.setNaturalOrder(natural);
    printer.Print(QString::fromUtf8(text));
    printer.EndDoc();
    QImage image(300, 150, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    drawPage(painter, printer.document(), 0);
    return image;
  };
  EXPECT_EQ(drawn("a (\u05D0\u05D1) 1", true), drawn("a (\u05D1\u05D0) 1", false));
  EXPECT_NE(drawn("a (\u05D0\u05D1) 1", true), drawn("a (\u05D0\u05D1) 1", false));
}

// H1: what would not be seen on paper, or would turn a line around, prints as its name; pictures made of several characters stay whole.
TEST(CWordWrap, H1_InvisibleCharactersPrintAsTheirNames) {
  for (const bool stringsInColour : {false, true}) {
    Job job(QString::fromUtf8(
        "a\xE2\x80\xAE"
        "b \"\xE2\x81\xA6+\xE2\x80\x8B\" x\xE2\x80\x8Dy \xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9 +\xF0\x9F\x98\x80+"));
    if (stringsInColour) job.wrap.stringColor = Qt::red;
    job.print();
    EXPECT_EQ(job.styled().join(u'|').toStdString(),
              "a<RLO>b \"<LRI>+<ZWSP>\" x<ZWJ>y \xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9 +\xF0\x9F\x98\x80+");
  }
}
