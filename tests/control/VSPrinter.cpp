// Page layout as plain data: where text stands, where lines and pages break.
#include "page/VSPrinter.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>

namespace {

struct Fixture {
  VSPrinter printer;
  std::vector<int> pages;
  int lines = 0;
  explicit Fixture(QSizeF inches = {4, 3}, double margin = 36) {
    printer.setPageLayout(QPageLayout(QPageSize(inches, QPageSize::Inch), QPageLayout::Portrait,
                                      QMarginsF(margin, margin, margin, margin), QPageLayout::Point));
    QFont font(QStringLiteral("DejaVu Sans Mono"));
    font.setPointSizeF(10);
    printer.setFont(font);
    QObject::connect(&printer, &VSPrinter::NewLineEvent, [this] { ++lines; });
    QObject::connect(&printer, &VSPrinter::NewPageEvent, [this](int page) { pages.push_back(page); });
  }
  double width(const char* text) { return printer.TextWidth(QLatin1String(text)); }
  // The text of a page line by line: runs on one baseline, in order.
  QStringList text(int page) const {
    QStringList result;
    const auto& p = *printer.document().pages.at(static_cast<std::size_t>(page));
    float baseline = -1;
    for (const auto& run : p.runs) {
      if (run.baseline != baseline) result << QString();
      baseline = run.baseline;
      result.last() += p.runText(run);
    }
    return result;
  }
};

}   // namespace

TEST(VSPrinter, BreaksAtBlanksElseAnywhere) {
  Fixture f;
  const int fits = static_cast<int>(216 / f.width("0"));   // 3 inches of text
  f.printer.StartDoc();
  f.printer.Print(QString(fits - 3, u'a') + QStringLiteral(" bbbb cc\r\n"));
  f.printer.Print(QString(fits + 2, u'x') + QStringLiteral("\n"));
  f.printer.Print(QStringLiteral("\r\nend\r\n"));
  f.printer.EndDoc();
  const QStringList expected{QString(fits - 3, u'a') + u' ', QStringLiteral("bbbb cc"), QString(fits, u'x'), QStringLiteral("xx"),
                             QStringLiteral("end")};
  EXPECT_EQ(f.text(0), expected);
  EXPECT_EQ(f.lines, 6) << "an empty paragraph is a line too";
  const auto& page = *f.printer.document().pages[0];
  for (const auto& run : page.runs) {
    EXPECT_GE(run.x, 35.9);
    EXPECT_LE(run.x + f.printer.TextWidth(page.runText(run).trimmed()), 252.1);
  }
}

TEST(VSPrinter, AWordOfSeveralStylesMovesWhole) {
  Fixture f;
  const int fits = static_cast<int>(216 / f.width("0"));
  f.printer.StartDoc();
  f.printer.Print(QString(fits - 4, u'a') + u' ');
  f.printer.Print(QStringLiteral("bb"));
  f.printer.setFontBold(true);
  f.printer.Print(QStringLiteral("cc"));
  f.printer.setFontBold(false);
  f.printer.Print(QStringLiteral("dd\r\n"));
  f.printer.EndDoc();
  EXPECT_EQ(f.text(0), (QStringList{QString(fits - 4, u'a') + u' ', QStringLiteral("bbccdd")}));
  const auto& runs = f.printer.document().pages[0]->runs;
  ASSERT_EQ(runs.size(), 4u);
  EXPECT_NEAR(runs[1].x, 36, 0.1);
  EXPECT_NEAR(runs[2].x, 36 + f.width("bb"), 0.1);
  EXPECT_NE(runs[1].style, runs[2].style);
  EXPECT_EQ(runs[1].style, runs[3].style);
}

TEST(VSPrinter, Table) {
  Fixture f({8, 6});
  f.printer.StartDoc();
  f.printer.AddTable(QStringLiteral("^+1in|<+3in|>+2in"), QStringLiteral("Line|Comment|Type;"),
                     QStringLiteral("7|bad name|style;;"));
  f.printer.EndDoc();
  const auto& page = *f.printer.document().pages[0];
  EXPECT_EQ(f.text(0), (QStringList{QStringLiteral("LineCommentType"), QStringLiteral("7bad namestyle")}));
  EXPECT_EQ(page.rules.size(), 3u * 6) << "a heading and two rows";
  EXPECT_NEAR(page.runs[3].x + f.width("7") / 2, 36 + 36, 0.5);
}

TEST(VSPrinter, ATableIsNeverWiderThanItsPaper) {
  Fixture f({3, 3});
  f.printer.StartDoc();
  f.printer.AddTable(QStringLiteral("^+1in|<+3in|>+2in"), QStringLiteral("Line|Comment|Type;"), QStringLiteral(";;"));
  f.printer.EndDoc();
  for (const auto& rule : f.printer.document().pages[0]->rules) EXPECT_LE(rule.x2, 3 * 72 - 36 + 0.1);
}

TEST(VSPrinter, TheTextGivesWayToAHeaderThatAMarginHasNoRoomFor) {
  for (const double margin : {0.0, 8.0, 36.0}) {
    Fixture f({4, 3}, margin);
    f.printer.setHeader(splitEdge(QStringLiteral("|x|")));
    f.printer.StartDoc();
    f.printer.Print(QStringLiteral("text\n"));
    f.printer.EndDoc();
    const double top = f.printer.document().pages[0]->runs[0].baseline - QFontMetricsF(printFont(f.printer.Font())).ascent() / 20;
    EXPECT_GE(top, edgeHeight(f.printer.document()) - 0.1) << margin;
  }
}
