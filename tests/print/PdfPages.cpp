// Printed pages read back by other programs: pdftotext and pdfinfo of poppler-utils, as a reader of the file meets them.
#include <gtest/gtest.h>

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QPrinter>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "control/CodeMax.h"
#include "control/code/LanguageTable.h"
#include "page/PdfFile.h"
#include "page/VSPrinter.h"
#include "print/PrintJob.h"
#include "print/PrintSettings.h"
#include "tests/support/EventLoop.h"

using namespace Qt::StringLiterals;

namespace {

class PdfPages : public testing::Test {
 protected:
  void SetUp() override {
    if (QStandardPaths::findExecutable(u"pdftotext"_s).isEmpty() || QStandardPaths::findExecutable(u"pdfinfo"_s).isEmpty())
      GTEST_SKIP() << "pdftotext and pdfinfo are missing: install poppler-utils";
    CmLanguage language;
    language.CaseSensitive = true;
    language.Keywords = u"begin\nend\nmodule\nendmodule\n"_s;
    language.SingleLineComments = u"//\n"_s;
    language.MultiLineComments1 = u"/*\n"_s;
    language.MultiLineComments2 = u"*/\n"_s;
    language.StringDelims = u"\"\n"_s;
    LanguageTable::registerLanguage(u"pdf-test"_s, language);
    settings.font = QFont(u"DejaVu Sans Mono"_s);
    settings.font.setPointSizeF(9);
    settings.text.HeaderText = u"office file|middle|right part"_s;
    settings.text.FooterText = u"||Page %d"_s;
  }

  PrintDocument lay(const QString& text, const QString& title) {
    CodeMax cmx;
    cmx.setLanguage(u"pdf-test"_s);
    cmx.setText(text);
    cmx.setTabSize(tabSize);
    CWordWrap wrap;
    wrap.SetSingleComment(u"//"_s);
    wrap.SetMultiLineComment(u"/*"_s, u"*/"_s);
    VSPrinter printer;
    EXPECT_TRUE(layOut(cmx, title, settings, wrap, printer));
    clipped = wrap.ClippedLines();
    return printer.document();
  }
  void write(const std::vector<const PrintDocument*>& documents, const QString& title = u"A title"_s) {
    QFile file(path());
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    const QByteArray pdf = makePdf(documents, title);
    ASSERT_EQ(file.write(pdf), pdf.size());
  }
  void print(const QString& text) {
    const PrintDocument document = lay(text, u"one.v"_s);
    write({&document});
  }
  QString path() const { return folder.filePath(u"out.pdf"_s); }
  QString run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(kPatience) && process.exitCode() == 0)
        << program.toStdString() << process.readAllStandardError().toStdString();
    return QString::fromUtf8(process.readAllStandardOutput());
  }
  QString info() { return run(u"pdfinfo"_s, {path()}); }
  // The lines of a page that hold something, runs of blanks as one.
  QStringList page(int number) {
    const QString n = QString::number(number);
    QStringList lines;
    for (const QString& line :
         run(u"pdftotext"_s, {u"-layout"_s, u"-f"_s, n, u"-l"_s, n, path(), u"-"_s}).remove(u'\f').split(u'\n'))
      if (!line.trimmed().isEmpty()) lines << line.simplified();
    return lines;
  }

  QTemporaryDir folder;
  PrintSettings settings;
  int tabSize = 4;
  std::vector<qint64> clipped;
};

QString numbered(int count) {
  QStringList lines;
  for (int i = 1; i <= count; ++i) lines << u"line number %1 of the text"_s.arg(i);
  return lines.join(u'\n');
}

}   // namespace

TEST_F(PdfPages, TextOrderHeaderFooterAndCount) {
  for (const auto orientation : {QPageLayout::Portrait, QPageLayout::Landscape}) {
    SCOPED_TRACE(orientation);
    settings.layout.setPageSize(QPageSize(QPageSize::A4));
    settings.layout.setOrientation(orientation);
    for (const bool numbers : {false, true}) {
      SCOPED_TRACE(numbers);
      settings.text.LineNumbers = numbers;
      const PrintDocument document = lay(numbered(200), u"one.v"_s);
      write({&document});
      const int pages = static_cast<int>(document.pages.size());
      EXPECT_EQ(pages, orientation == QPageLayout::Portrait ? 3 : 5);
      EXPECT_TRUE(info().contains(QRegularExpression(u"Pages: +%1\n"_s.arg(pages))));
      EXPECT_TRUE(info().contains(orientation == QPageLayout::Portrait ? u"595 x 842"_s : u"842 x 595"_s)) << info().toStdString();
      QStringList body;
      for (int i = 1; i <= pages; ++i) {
        QStringList lines = page(i);
        ASSERT_GE(lines.size(), 3);
        EXPECT_EQ(lines.takeFirst(), u"office file middle right part"_s);
        EXPECT_EQ(lines.takeLast(), u"Page %1"_s.arg(i));
        body += lines;
      }
      ASSERT_EQ(body.size(), 200);
      for (int i = 1; i <= 200; ++i)
        EXPECT_EQ(body[i - 1], (numbers ? u"%1: line number %1 of the text"_s : u"line number %1 of the text"_s).arg(i));
    }
  }
}

TEST_F(PdfPages, APrinterGetsThePagesInItsOrderAndAsOftenAsAsked) {
  const PrintDocument document = lay(numbered(200), u"one.v"_s);
  const int pages = static_cast<int>(document.pages.size());
  for (const auto order : {QPrinter::FirstPageFirst, QPrinter::LastPageFirst}) {
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(path());
    printer.setPageOrder(order);
    printer.setCopyCount(2);
    ASSERT_TRUE(sendPages(printer, document, nullptr));
    EXPECT_TRUE(info().contains(QRegularExpression(u"Pages: +%1\n"_s.arg(2 * pages)))) << info().toStdString();
    const bool first = order == QPrinter::FirstPageFirst;
    EXPECT_EQ(page(1).contains(u"line number 1 of the text"_s), first);
    EXPECT_EQ(page(pages).contains(u"line number 1 of the text"_s), !first);
  }
}

TEST_F(PdfPages, WrappedLinesHangBehindTheirNumber) {
  settings.text.LineNumbers = true;
  settings.layout.setPageSize(QPageSize(QPageSize::A5));
  QStringList words;
  for (int i = 0; i < 30; ++i) words << u"word%1"_s.arg(i);
  print(u"first\n"_s + words.join(u' ') + u"\nlast"_s);
  EXPECT_EQ(clipped, std::vector<qint64>{1});
  QStringList lines = page(1);
  EXPECT_EQ(lines[1], u"1: first"_s);
  EXPECT_TRUE(lines[2].startsWith(u"2: word0 word1"_s));
  EXPECT_TRUE(lines[3].startsWith(u"word"_s)) << "no number before what goes on";
  EXPECT_EQ(lines[lines.size() - 2], u"3: last"_s);
  const QString text = lines.mid(2, lines.size() - 4).join(u' ').remove(u"2: "_s);
  EXPECT_EQ(text, words.join(u' '));
}

TEST_F(PdfPages, EmphasisUsesFontsOfItsOwnAllEmbedded) {
  settings.text.Keywordsbold = true;
  settings.text.CommentsBold = false;
  settings.text.keywordColor = Qt::darkBlue;
  print(u"module m; // note\nbegin \"text\" end\nendmodule"_s);
  EXPECT_EQ(page(1).mid(1, 3), (QStringList{u"module m; // note"_s, u"begin \"text\" end"_s, u"endmodule"_s}));
  const QStringList fonts = run(u"pdffonts"_s, {path()}).split(u'\n', Qt::SkipEmptyParts).mid(2);
  EXPECT_GE(fonts.size(), 3) << "plain, bold, header";
  for (const QString& font : fonts) EXPECT_TRUE(font.contains(QRegularExpression(u" yes +(yes|no) +yes "_s))) << font.toStdString();
}

TEST_F(PdfPages, TitleAndOneBookmarkForEachDocument) {
  const PrintDocument one = lay(numbered(100), u"first.v"_s), two = lay(u"second text"_s, u"zweites – \u00e4.v"_s);
  write({&one, &two}, u"Both of them"_s);
  EXPECT_TRUE(info().contains(QRegularExpression(u"Title: +Both of them\n"_s)));
  EXPECT_TRUE(info().contains(QRegularExpression(u"Pages: +%1\n"_s.arg(one.pages.size() + 1))));
  EXPECT_TRUE(page(static_cast<int>(one.pages.size()) + 1).contains(u"second text"_s));
  const QString seen = run(u"pdftohtml"_s, {u"-xml"_s, u"-stdout"_s, u"-i"_s, path()});
  EXPECT_TRUE(seen.contains(u"page=\"1\">first.v<"_s)) << seen.right(600).toStdString();
  EXPECT_TRUE(seen.contains(u"page=\"%1\">zweites – \u00e4.v<"_s.arg(one.pages.size() + 1)));
}

TEST_F(PdfPages, TwoColumnsReadOneBehindTheOther) {
  settings.columns = 2;
  const PrintDocument document = lay(numbered(100), u"one.v"_s);
  write({&document});
  EXPECT_EQ(document.pages.size(), 1u);
  const QString text = run(u"pdftotext"_s, {path(), u"-"_s});
  int last = -1;
  for (int i = 1; i <= 100; ++i) {
    const int at = static_cast<int>(text.indexOf(u"line number %1 of"_s.arg(i)));
    EXPECT_GT(at, last) << i;
    last = at;
  }
}

TEST_F(PdfPages, HostileTextAndSettings) {
  struct Case {
    const char* what;
    QString text, expected;   // a line of the first page
  };
  const Case cases[] = {
      {"empty document", QString(), u"office file middle right part"_s},
      {"100,000 characters in a line", QString(100000, u'x'), QString()},
      {"bytes that are no text", u"a"_s + QChar(0xDC85) + u"b"_s, u"a<85>b"_s},
      {"NUL and control characters", u"a"_s + QChar(0) + QChar(7) + u"b"_s, u"ab"_s},
      {"only blanks and tabs", u" \t \t"_s, QString()},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    print(c.text);
    EXPECT_TRUE(c.expected.isEmpty() || page(1).contains(c.expected)) << page(1).join(u'\n').toStdString();
  }
  print(QString(100000, u'x'));
  EXPECT_EQ(run(u"pdftotext"_s, {path(), u"-"_s}).count(u'x'), 100000);

  print(u"\u05e9\u05dc\u05d5\u05dd = 1"_s);   // right to left
  const QString hebrew = page(1)[1];
  EXPECT_TRUE(hebrew.contains(u"\u05e9\u05dc\u05d5\u05dd"_s) || hebrew.contains(u"\u05dd\u05d5\u05dc\u05e9"_s))
      << hebrew.toStdString();

  tabSize = 0;
  print(u"a\tb"_s);
  EXPECT_EQ(page(1)[1], u"a b"_s);

  settings.layout.setMinimumMargins({});
  settings.layout.setMargins({2000, 2000, 2000, 2000});
  print(numbered(3));
  EXPECT_FALSE(page(1).isEmpty());

  settings = PrintSettings();
  settings.text.HeaderText = QString(10000, u'h');
  print(u"body"_s);
  const QStringList lines = page(1);
  EXPECT_EQ(lines[1], u"body"_s) << "a long header is cut, not wrapped";
  EXPECT_TRUE(lines[0].startsWith(u"hhhh"_s));
}

// Long parts are cut, not printed over each other; fields count pages, and a file's name holds none.
TEST_F(PdfPages, HeadersOfLongNamesAndFields) {
  settings.text.HeaderText = u"%1|middle|%1 of it"_s.arg(u"a long name "_s.repeated(20));
  settings.text.FooterText = u"$Clip|page %d of %n|100%"_s;
  QGuiApplication::clipboard()->setText(u"a%d%n.v"_s);
  const PrintDocument document = lay(numbered(200), u"one.v"_s);
  const PrintDocument last = pagesOf(document, 2, 0);
  write({&last});
  const QString total = QString::number(document.pages.size());
  const QStringList lines = page(1);
  EXPECT_TRUE(lines.first().startsWith(u"a long"_s) && lines.first().contains(u" middle "_s) && lines.first().endsWith(u"of it"_s))
      << lines.first().toStdString();
  EXPECT_EQ(lines.last(), u"a%d%n.v page 2 of %1 100%"_s.arg(total));
}
