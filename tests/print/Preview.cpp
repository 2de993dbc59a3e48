// The print options dialog, the preview and the ways out of it.
#include "print/frmPreview.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QPrinter>
#include <QPushButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include "base/Program.h"
#include "control/CodeMax.h"
#include "print/PageView.h"
#include "print/PrintJob.h"
#include "print/frmPrintOptions.h"
#include "settings/modRegistry.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/files/SaveSweep.h"

using namespace Qt::StringLiterals;

namespace {

class Preview : public testing::Test {
 protected:
  void TearDown() override { modRegistry::SetReadOnly(readOnly); }
  PrintSource source(const QString& text) {
    cmx.setText(text);
    return {nullptr, &cmx, u"some.log"_s};
  }
  static QAction* action(frmPreview& preview, const char* name) { return preview.findChild<QAction*>(QLatin1String(name)); }

  bool readOnly = modRegistry::SetReadOnly(true);   // nothing of this reaches the settings file
  CodeMax cmx;
};

QString lines(int count) {
  QString text;
  for (int i = 0; i < count; ++i) text += u"this is line %1\n"_s.arg(i + 1);
  return text;
}

PrintDocument laidOut(const QString& text) {
  CodeMax cmx;
  cmx.setText(text);
  CWordWrap wrap;
  VSPrinter printer;
  EXPECT_TRUE(layOut(cmx, u"title"_s, PrintSettings(), wrap, printer));
  return printer.document();
}

}   // namespace

TEST_F(Preview, OptionsKeepNineValuesUnderTheirNames) {
  PrintSettings settings;
  settings.layout.setMargins({10, 20, 30, 40});
  settings.columns = 2;
  frmPrintOptions dialog(settings);
  const auto toggle = [&](const char* name) {
    auto* box = dialog.findChild<QCheckBox*>(QLatin1String(name));
    ASSERT_TRUE(box) << name;
    box->click();
  };
  for (const char* name :
       {"chkHeader", "chkFooter", "chkLineNumbers", "chkKeywordBold", "chkKeywordItalic", "chkCommentBold", "chkCommentItalic"})
    toggle(name);
  dialog.findChild<QLineEdit*>(u"txtHeader"_s)->setText(u"my|header"_s);
  dialog.findChild<QLineEdit*>(u"txtFooter"_s)->setText(u"my|footer|%d"_s);
  dialog.accept();
  struct Value {
    const char *name, *text;
  };
  const Value values[] = {{"cb", "False"},     {"ci", "False"},        {"kb", "True"},  {"ki", "True"}, {"ln", "True"},
                          {"ht", "my|header"}, {"ft", "my|footer|%d"}, {"he", "False"}, {"fe", "False"}};
  for (const auto& v : values)
    EXPECT_EQ(modRegistry::Text(u"Software\\Zelkor Editor\\Printer"_s, QLatin1String(v.name)).toStdString(), v.text) << v.name;
  const PrintSettings again = PrintSettings::load();
  EXPECT_TRUE(again.text.LineNumbers);
  EXPECT_FALSE(again.text.CommentsBold);
  EXPECT_EQ(again.text.FooterText, u"my|footer|%d"_s);
  settings.save();
  EXPECT_EQ(PrintSettings::load().layout.margins(), QMarginsF(10, 20, 30, 40));
  EXPECT_EQ(PrintSettings::load().columns, 2);
}

TEST_F(Preview, SettingsThatMakeNoSenseLeaveTheDefaults) {
  const auto set = [](const char* name, const QString& value) {
    modRegistry::SetText(modRegistry::kPrinterKey, QLatin1String(name), value);
  };
  modRegistry::NewKey(modRegistry::kPrinterKey);
  for (const char* name :
       {"fontsize", "columns", "paper", "marginleft", "margintop", "marginright", "marginbottom", "landscape", "keywordcolor"})
    set(name, u"-17 nonsense"_s);
  const PrintSettings loaded = PrintSettings::load(), plain;
  EXPECT_EQ(loaded.font.pointSizeF(), plain.font.pointSizeF());
  EXPECT_EQ(loaded.columns, 1);
  EXPECT_EQ(loaded.layout.margins(), plain.layout.margins());
  EXPECT_EQ(loaded.layout.pageSize(), plain.layout.pageSize());
  EXPECT_FALSE(loaded.text.keywordColor.isValid());
}

TEST_F(Preview, PagesThumbnailsAndKeys) {
  frmPreview preview(source(lines(300)), false);
  preview.show();
  preview.layOutText();
  EXPECT_TRUE(preview.isLaidOut());
  const int pages = static_cast<int>(preview.document().pages.size());
  ASSERT_GT(pages, 3);
  auto* view = preview.findChild<PageView*>();
  auto* page = preview.findChild<QSpinBox*>(u"page"_s);
  auto* thumbnails = preview.findChild<QListView*>(u"thumbnails"_s);
  EXPECT_EQ(page->maximum(), pages);
  EXPECT_EQ(thumbnails->model()->rowCount(), pages);
  QTest::keyClick(view, Qt::Key_End);
  EXPECT_EQ(page->value(), pages);
  EXPECT_EQ(thumbnails->currentIndex().row(), pages - 1);
  QTest::keyClick(view, Qt::Key_PageUp);
  EXPECT_EQ(page->value(), pages - 1);
  thumbnails->setCurrentIndex(thumbnails->model()->index(1, 0));
  EXPECT_EQ(view->currentPage(), 1);
  page->setValue(1);
  EXPECT_EQ(view->currentPage(), 0);
  auto* zoom = preview.findChild<QComboBox*>(u"zoom"_s);
  view->goTo(2);
  for (const double factor : {4.0, 0.5, 1.5}) {
    view->setZoom(factor);
    const int there = view->verticalScrollBar()->value();
    view->goTo(2);
    EXPECT_EQ(view->verticalScrollBar()->value(), there) << factor;
  }
  zoom->setEditText(u"200 %"_s);
  QTest::keyClick(zoom->lineEdit(), Qt::Key_Return);
  EXPECT_NEAR(view->zoom(), 2, 0.001);
  action(preview, "two")->trigger();
  EXPECT_GT(view->horizontalScrollBar()->maximum(), 0);
  for (const auto& [key, expected] : {std::pair(Qt::Key_Home, 0), std::pair(Qt::Key_PageDown, 2), std::pair(Qt::Key_PageUp, 0)}) {
    QTest::keyClick(view, key);
    EXPECT_EQ(view->currentPage(), expected) << "two pages at a time";
  }
}

TEST_F(Preview, FindGoesThroughPagesAndRunsOfStyle) {
  frmPreview preview(source(lines(150) + u"a NEEDLE here\n"_s + lines(100) + u"needle"_s), false);
  preview.show();
  preview.layOutText();
  auto* view = preview.findChild<PageView*>();
  auto* find = preview.findChild<QLineEdit*>(u"find"_s);
  find->setText(u"Needle"_s);
  const int first = view->currentPage();
  EXPECT_GT(first, 0);
  QTest::keyClick(find, Qt::Key_Return);
  EXPECT_GT(view->currentPage(), first);
  QTest::keyClick(find, Qt::Key_Return);
  EXPECT_EQ(view->currentPage(), first) << "round the end";
  auto* notFound = preview.findChild<QLabel*>(u"notFound"_s);
  EXPECT_FALSE(notFound->isVisible());
  find->setText(u"line 150"_s);
  const int only = view->currentPage();
  view->goTo(0);
  QTest::keyClick(find, Qt::Key_Return);
  EXPECT_EQ(view->currentPage(), only) << "a single one is found again";
  find->setText(u"nowhere"_s);
  EXPECT_TRUE(notFound->isVisible());
  find->setFocus();
  QTest::keyClick(find, Qt::Key_Escape);
  EXPECT_TRUE(preview.isVisible() && find->text().isEmpty() && !notFound->isVisible()) << "Esc ends the search first";
  QTest::keyClick(view, Qt::Key_Escape);
  EXPECT_FALSE(preview.isVisible());
}

TEST_F(Preview, ClippedLinesLeadToTheSource) {
  frmPreview preview(source(u"short\n"_s + QString(400, u'x') + u"\nshort"_s), false);
  preview.show();
  preview.layOutText();
  auto* list = preview.findChild<QListWidget*>(u"clipped"_s);
  ASSERT_EQ(list->count(), 1);
  EXPECT_TRUE(list->item(0)->text().startsWith(u"2: xxx"_s));
  emit list->itemActivated(list->item(0));
  EXPECT_EQ(preview.lineToShow(), 1);
  EXPECT_FALSE(preview.isVisible());
}

TEST_F(Preview, LayingOutAnswersAndCanBeStopped) {
  frmPreview preview(source(lines(60000)), false);
  int answers = 0, pagesAtFirst = 0;   // those before the first page are not counted: a slow machine has some
  auto* stop = preview.findChild<QPushButton*>(u"stop"_s);
  QObject::connect(&preview, &frmPreview::answered, &preview, [&] {
    const int pages = static_cast<int>(preview.document().pages.size());
    if (pages > 0 && ++answers == 1) pagesAtFirst = pages;
    EXPECT_FALSE(action(preview, "print")->isEnabled());
    if (answers == 3) stop->click();
  });
  preview.show();
  preview.layOutText();
  EXPECT_FALSE(preview.isLaidOut());
  EXPECT_EQ(pagesAtFirst, 1) << "the first page shows at once";
  EXPECT_FALSE(action(preview, "print")->isEnabled()) << "not all pages are there";
  EXPECT_TRUE(stop->isVisible());
  const auto pages = preview.document().pages.size();
  stop->click();   // go on
  EXPECT_TRUE(preview.isLaidOut());
  EXPECT_GT(preview.document().pages.size(), pages);
  EXPECT_TRUE(action(preview, "print")->isEnabled());
  EXPECT_FALSE(stop->isVisible());
}

TEST_F(Preview, TheTextMayGoWhileItIsLaidOut) {
  auto text = std::make_unique<CodeMax>();
  text->setText(lines(60000));
  frmPreview preview({nullptr, text.get(), u"some.log"_s}, false);
  QObject::connect(&preview, &frmPreview::answered, &preview, [&] { text.reset(); });
  preview.show();
  preview.layOutText();
  EXPECT_FALSE(preview.isLaidOut());
  EXPECT_FALSE(preview.isVisible());
}

TEST_F(Preview, NoPrinterOffersAPdf) {
  const QTemporaryDir folder;
  const PrintDocument document = laidOut(u"text"_s);
  ScriptedDialogs dialogs;
  dialogs.answer(Answer::no);
  EXPECT_FALSE(printPages(document, nullptr));
  EXPECT_TRUE(dialogs.last().text.contains(u"No printer is set up"_s));
  const QString path = folder.filePath(u"a.pdf"_s);
  dialogs.answer(Answer::yes).answerSave(path);
  EXPECT_TRUE(printPages(document, nullptr));
  EXPECT_TRUE(QFile::exists(path));
  // A printer of the desktop's print dialog may be a file too, and its pages may be chosen.
  EXPECT_TRUE(savePages(laidOut(lines(200)), 2, 2, path));
  QFile pdf(path);
  ASSERT_TRUE(pdf.open(QFile::ReadOnly));
  EXPECT_TRUE(pdf.readAll().contains("/Count 1"));
}

TEST_F(Preview, S2_S5_APdfFileIsTheOldOneOrTheNewOne) {
  const PrintDocument document = laidOut(u"text"_s);
  ScriptedDialogs dialogs;
  testing_files::SweptSave what;
  what.old = "old";
  what.prepare = [&](const std::string&) { dialogs.boxes.clear(); };
  what.save = [&](const std::string& path) {
    dialogs.answerSave(QString::fromStdString(path));
    dialogs.answerAny(Answer::ok);
    return savePdf(document, u"a"_s, nullptr);
  };
  what.told = [&] { return dialogs.last().text.toStdString(); };
  what.isFresh = [](const std::string& bytes) {
    return bytes.size() > 1000 && bytes.starts_with("%PDF-") && bytes.ends_with("%%EOF\n");
  };
  testing_files::sweepSave(what);
}

TEST_F(Preview, PrinterThatFailsIsTold) {
  const PrintDocument document = laidOut(lines(200));
  QPrinter printer;
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(u"/nonexistent/folder/spool.pdf"_s);
  ScriptedDialogs dialogs;
  dialogs.answer(Answer::ok);
  EXPECT_FALSE(sendPages(printer, document, nullptr));
  EXPECT_TRUE(dialogs.last().text.contains(u"could not print"_s)) << dialogs.last().text.toStdString();
}
