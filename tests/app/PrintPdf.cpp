// Printing from the command line: the options, and runs of the real program.
#include "app/start/Arguments.h"
#include "app/start/PrintArguments.h"
#include "print/PrintSettings.h"
#include "tests/app/ProcessFixture.h"

using namespace Qt::StringLiterals;
using PrintPdfRun = ProcessRun;

TEST(PrintPdf, Options) {
  PrintSettings s;
  const auto parse = [&](const QString& line) { return parsePrintArguments(line.split(u' '), &s); };
  const auto given = parse(
      u"--line-numbers --print-pdf out.pdf --header L|$Title|R --no-footer --keywords bold,italic --comments plain "
      "--keyword-color navy --font-size=7.5 --paper letter --landscape --margins 10,20,30,40 --columns 2 --pages 2- --tab-size 3 --wrap-mark a.v -- -b.v"_s);
  EXPECT_EQ(given.error, QString());
  EXPECT_EQ(given.output, u"out.pdf"_s);
  EXPECT_EQ(given.files, (QStringList{u"a.v"_s, u"-b.v"_s}));
  EXPECT_TRUE(s.text.LineNumbers && s.text.Keywordsbold && s.text.KeywordsItalic);
  EXPECT_FALSE(s.text.CommentsBold || s.text.CommentsItalic || s.text.FooterEnabled);
  EXPECT_EQ(s.text.HeaderText, u"L|$Title|R"_s);
  EXPECT_EQ(s.text.keywordColor, QColor(Qt::darkBlue));
  EXPECT_EQ(s.font.pointSizeF(), 7.5);
  EXPECT_EQ(s.layout.pageSize().id(), QPageSize::Letter);
  EXPECT_EQ(s.layout.orientation(), QPageLayout::Landscape);
  EXPECT_NEAR(s.layout.margins(QPageLayout::Millimeter).bottom(), 40, 0.5);
  EXPECT_EQ(s.columns, 2);
  EXPECT_TRUE(s.firstPage == 2 && s.lastPage == 0 && s.text.TabSize == 3 && s.text.WrapMark);
  for (const char* line : {"--print-pdf", "--print-pdf a.pdf", "a.v", "--print-pdf --landscape a.pdf a.v"})
    EXPECT_NE(parse(QLatin1String(line)).error, QString()) << line;
  for (const char* wrong :
       {"--header=", "--columns 1 --columns 2", "--nonsense", "--columns 3", "--margins 1,2", "--margins 200",
        "--margins 100,20,100,20 --paper A4 --portrait", "--wrap-mark=maybe", "--paper elephant", "--keywords loud", "--pages 3-2",
        "--pages 0", "--tab-size 0", "--font-size 0", "--keyword-color nocolour", "--font NoSuchFontAnywhere"})
    EXPECT_NE(parse(u"--print-pdf a.pdf %1 a.v"_s.arg(QLatin1String(wrong))).error, QString()) << wrong;
  EXPECT_EQ(parse(u"--landscape --landscape=no --margins=100,20 --margins=1 --print-pdf a.pdf a.v"_s).error,
            u"--margins is given twice"_s);
  EXPECT_EQ(parse(u"--margins 180,9,9,9 --landscape --paper A4 --no-footer=no --line-numbers=No --print-pdf a.pdf a.v"_s).error,
            QString())
      << "the sheet is the one that the line names in the end";
  EXPECT_TRUE(s.text.FooterEnabled && !s.text.LineNumbers);
  EXPECT_TRUE(parse(u"--print-pdf --help"_s).help);
  EXPECT_TRUE(parseArguments({u"--landscape"_s, u"--print-pdf=x"_s}, {}).printPdf);
  EXPECT_FALSE(parseArguments({u"--"_s, u"--print-pdf"_s}, {}).printPdf);
}

TEST_F(PrintPdfRun, WithoutADisplay) {
  for (const char* folder : {"other", "out"}) QDir(dir_.path()).mkdir(q(folder));
  write(u"a.v"_s, "module a; // first\nendmodule\n");
  write(u"b.vhd"_s, "entity b is end;\n");
  write(u"other/a.v"_s, "module other; endmodule\n");
  for (const char* gone : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) environment_.remove(q(gone));
  const auto errors = [this] { return processes_.back()->readAllStandardError(); };
  const auto pdf = [this](const QString& name) { return read(name).startsWith("%PDF-"); };
  EXPECT_EQ(run({u"--line-numbers"_s, u"--print-pdf"_s, u"all.pdf"_s, u"a.v"_s, u"b.vhd"_s}), 0) << errors().constData();
  EXPECT_TRUE(pdf(u"all.pdf"_s));
  EXPECT_EQ(run({u"--print-pdf=out"_s, u"a.v"_s, u"b.vhd"_s}), 0) << errors().constData();
  EXPECT_TRUE(pdf(u"out/a.v.pdf"_s) && pdf(u"out/b.vhd.pdf"_s));
  EXPECT_EQ(run({u"--print-pdf=out"_s, u"a.v"_s, u"other/a.v"_s}), 2) << "two of one name";
  EXPECT_TRUE(errors().contains("a.v.pdf"));
  EXPECT_EQ(run({u"--print-pdf"_s, u"no/folder/x.pdf"_s, u"a.v"_s}), 2);
  EXPECT_TRUE(errors().contains("No such file"));
  EXPECT_EQ(run({u"--print-pdf"_s, u"part.pdf"_s, u"missing.v"_s, u"b.vhd"_s}), 2);
  EXPECT_TRUE(errors().contains("missing.v"));
  EXPECT_TRUE(pdf(u"part.pdf"_s)) << "what can be read is printed";
  EXPECT_EQ(run({u"--print-pdf"_s, u"x.pdf"_s}), 2);
  EXPECT_EQ(run({u"--print-pdf"_s, u"a.v"_s, u"b.vhd"_s}), 2) << "the name of the PDF was forgotten";
  EXPECT_TRUE(errors().contains("a.v exists and is not a PDF file"));
  EXPECT_EQ(read(u"a.v"_s), "module a; // first\nendmodule\n");
  EXPECT_EQ(run({u"--print-pdf"_s, u"all.pdf"_s, u"all.pdf"_s}), 2) << "a source is never the output";
  EXPECT_EQ(run({u"--print-pdf"_s, u"x.pdf"_s, u"--pages=2"_s, u"a.v"_s}), 2);
  EXPECT_TRUE(errors().contains("a.v has no page 2"));
  EXPECT_EQ(run({u"--print-pdf"_s, u"review.pdf"_s, u"--review-sheet"_s, u"a.v"_s}), 0) << errors().constData();
  EXPECT_EQ(read(u"review.pdf"_s).count("/Fit]"), 2);
  EXPECT_EQ(run({u"--print-pdf"_s, u"--help"_s}), 0);
}
