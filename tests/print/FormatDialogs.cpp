// The dialogs of formatting, comparing, columnising, number series and sorting, used by keys and clicks.
#include <gtest/gtest.h>

#include <QAbstractScrollArea>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "change/LineDialogs.h"
#include "change/compare/frmCompare.h"
#include "change/frmFormat.h"
#include "tests/document/DocumentFixture.h"

using namespace Qt::StringLiterals;

namespace {

class FormatDialogs : public DocumentFixture {
 protected:
  FormatDialogs() {
    const auto verilog = manager.Languages()->Item(1);
    verilog->BlockStart = u"begin\r\n"_s;
    verilog->BlockEnd = u"end\r\n"_s;
  }
  std::unique_ptr<frmDocument> text(const char* name, const QByteArray& bytes, int language) {
    return opened(write(name, bytes), language);
  }
  static std::string textOf(const frmDocument& document) { return document.cmx->Text().toStdString(); }
  template <class Widget>
  static Widget& in(QDialog& dialog, const char* name) {
    return *dialog.findChild<Widget*>(QLatin1String(name));
  }
  // Runs `work` in the modal dialog that comes up next; it has to end the dialog.
  template <class Work>
  static void whenUp(Work work) {
    QTimer::singleShot(0, qApp, [work] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(dialog);
      work(*dialog);
      if (dialog->isVisible()) dialog->reject();
    });
  }
  static QPushButton& button(QDialog& dialog, const char* text) {
    for (auto* one : dialog.findChildren<QPushButton*>())
      if (one->text().remove(u'&') == QLatin1String(text)) return *one;
    ADD_FAILURE() << text;
    return *dialog.findChild<QPushButton*>();
  }
};

}   // namespace

TEST_F(FormatDialogs, ApplyFormatsAndKeepsTheDialogOpen) {
  const auto document = text("a.v", "begin\nx\nend", 1);
  frmFormat dialog;
  dialog.show();
  auto& apply = in<QPushButton>(dialog, "cmdApply");
  EXPECT_FALSE(apply.isEnabled()) << "nothing is chosen";
  EXPECT_EQ(in<QComboBox>(dialog, "cmbIndent").itemText(0), u"<Ignore>"_s);
  EXPECT_EQ(in<QComboBox>(dialog, "cmbText").itemText(3), u"Capitalize"_s);
  in<QComboBox>(dialog, "cmbIndent").setCurrentIndex(5);
  EXPECT_TRUE(apply.isEnabled());
  QTest::mouseClick(&apply, Qt::LeftButton);
  EXPECT_EQ(textOf(*document), "begin\n    x\nend") << "index less one";
  EXPECT_TRUE(dialog.isVisible());
  QTest::mouseClick(&in<QPushButton>(dialog, "cmdCancel"), Qt::LeftButton);
  EXPECT_FALSE(dialog.isVisible());
}

TEST_F(FormatDialogs, PreviewShowsTheChangeAndCanBeLeft) {
  const auto document = text("a.v", "begin\nx\nend", 1);
  frmFormat dialog;
  dialog.show();
  in<QComboBox>(dialog, "cmbIndent").setCurrentIndex(3);
  const std::string before = textOf(*document);
  whenUp([](QDialog& up) {
    auto* compare = qobject_cast<frmCompare*>(&up);
    ASSERT_TRUE(compare);
    EXPECT_EQ(compare->after().GetLine(1), u"  x"_s);
    compare->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(compare));
    auto* pane = compare->after().findChild<QAbstractScrollArea*>();
    pane->setFocus();
    EXPECT_TRUE(QTest::qWaitFor([compare] { return compare->view().count() == 1; }));
    compare->after().SetSel({2, 0, 2, 1, false});
    QTest::keyClick(pane, Qt::Key_F7);
    EXPECT_EQ(compare->after().GetSel(true).StartLineNo, 1);
    compare->after().SetSel({2, 0, 2, 1, false});
    QTest::keyClick(pane, Qt::Key_Escape);
    EXPECT_TRUE(compare->isVisible()) << "it ends the selection first";
    QTest::keyClick(pane, Qt::Key_Escape);
    EXPECT_FALSE(compare->isVisible());
  });
  QTest::mouseClick(&in<QPushButton>(dialog, "cmdPreview"), Qt::LeftButton);
  EXPECT_EQ(textOf(*document), before);
  whenUp([](QDialog& up) { up.accept(); });
  QTest::mouseClick(&in<QPushButton>(dialog, "cmdPreview"), Qt::LeftButton);
  EXPECT_EQ(document->cmx->GetLine(1), u"  x"_s);
}

TEST_F(FormatDialogs, ColumnizeSeriesAndSort) {
  const auto document = text("a.txt", "bb,1\na,2\n\nccc,3", 0);
  CodeMax& cmx = *document->cmx;
  LineDialogs asks;
  select(*document, 0, 0, 3, 5);
  whenUp([](QDialog& up) {
    QTest::keyClicks(up.findChild<QLineEdit*>(), u","_s);
    for (auto* box : up.findChildren<QCheckBox*>())
      if (box->text().contains(u"blank lines"_s)) box->click();
    QTest::keyClick(&up, Qt::Key_Return);
  });
  EXPECT_TRUE(asks.columnize(cmx, nullptr));
  EXPECT_EQ(cmx.GetLine(1), u"a ,2"_s);
  EXPECT_EQ(cmx.GetLine(3), u"ccc,3"_s) << "a group of its own";

  select(*document, 0, 0, 1, 4);
  whenUp([](QDialog& up) {
    auto* start = up.findChildren<QLineEdit*>().value(0);
    start->selectAll();
    QTest::keyClicks(start, u"nonsense"_s);
    EXPECT_FALSE(button(up, "OK").isEnabled());
    start->selectAll();
    QTest::keyClicks(start, u"0x10"_s);
    bool shown = false;
    for (auto* label : up.findChildren<QLabel*>()) shown = shown || label->text().startsWith(u"16  17  18"_s);
    EXPECT_TRUE(shown);
    QTest::mouseClick(&button(up, "OK"), Qt::LeftButton);
  });
  EXPECT_TRUE(asks.insertSeries(cmx, nullptr));
  EXPECT_EQ(cmx.GetLine(0), u"16bb,1"_s);
  EXPECT_EQ(cmx.GetLine(1), u"17a ,2"_s);

  select(*document, 0, 0, 1, 4);
  whenUp([](QDialog& up) {
    up.findChildren<QCheckBox*>().value(0)->click();
    QTest::keyClick(&up, Qt::Key_Return);
  });
  EXPECT_TRUE(asks.sortLines(cmx, nullptr));
  EXPECT_EQ(cmx.GetLine(0), u"17a ,2"_s);
  whenUp([](QDialog& up) { QTest::keyClick(&up, Qt::Key_Escape); });
  EXPECT_FALSE(asks.sortLines(cmx, nullptr));
  EXPECT_EQ(cmx.GetLine(0), u"17a ,2"_s);
}
