// Formatting runs on a real control: steps, one undo step, nothing lost.
#include "change/FormatText.h"

#include <gtest/gtest.h>

#include <random>

#include "base/Program.h"
#include "change/CaseFilter.h"
#include "language/Registration.h"
#include "language/clsLang.h"
#include "tests/support/Cost.h"

namespace {

struct Hdl {
  colLangs all;
  std::shared_ptr<clsLang> language;
  Hdl() {
    language = all.Add(QStringLiteral("format-test"));
    language->Keywords = QStringLiteral("begin\r\nend\r\nif\r\n");
    language->BlockStart = QStringLiteral("begin\r\n");
    language->BlockEnd = QStringLiteral("end\r\n");
    language->SingleComments = QStringLiteral("--\r\n");
    language->MultiCommentStart = QStringLiteral("/*\r\n");
    language->MultiCommentEnd = QStringLiteral("*/\r\n");
    language->StringDelims = QStringLiteral("\"\r\n");
    AddLanguages(all);
  }
  ~Hdl() { RemoveLanguages(); }
};

std::string textOf(const CodeMax& cmx) { return cmx.Text().toStdString(); }

}   // namespace

TEST(FormatText, EachStep) {
  Hdl hdl;
  struct Case {
    FormatChoices choices;
    const char *before, *after;
    int lines;   // that changed
  };
  FormatChoices tabs, none, main, keys, indent, ends, all, byTabs;
  tabs.tabs = 4;   // 3 blanks for a tab, whatever its column
  none.tabs = 1;   // but what was apart stays apart
  main.mainCase = 1;
  keys.keywordCase = 3;
  indent.indent = 3;
  ends.lineEnds = 2;
  byTabs = indent;
  byTabs.wholeLine = byTabs.indentTabs = true;   // one a level, not two blanks
  all = indent;
  all.lineEnds = 2;
  all.tabs = 2;
  all.mainCase = 2;
  all.keywordCase = 1;
  const Case cases[] = {
      {{}, "Begin\n\tX\nend", "Begin\n\tX\nend", 0},
      {tabs, "a\tb\n\tc", "a   b\n   c", 2},
      {main, "begin aB \"aB\" -- aB\nend", "begin AB \"aB\" -- aB\nend", 1},
      {keys, "BEGIN aB\nend", "Begin aB\nEnd", 2},
      {none, "a\t\tb\t+\t=\t-\n\tc \td\t", "a b+ = -\nc d", 2},
      {indent, "begin\nx\n  end", "begin\n  x\nend", 2},
      {byTabs, "begin\nbegin\n  x;\nend\nend", "begin\n\tbegin\n\t\tx;\n\tend\nend", 3},
      {byTabs, "begin\n  \tx;\nend", "begin\n  \tx;\nend", 0},   // blanks before a tab take no room of their own
      {ends, "begin\nx\nend", "begin\r\nx\r\nend", 2},
      {all, "begin\nX\ty\nend", "BEGIN\r\n  x y\r\nEND", 3},
  };
  for (const auto& c : cases) {
    CodeMax cmx;
    cmx.setLanguage(QStringLiteral("format-test"));
    cmx.setEnableCRLF(false);
    cmx.setText(QLatin1String(c.before));
    cmx.setModified(false);
    const auto result = FormatIt(cmx, hdl.language.get(), c.choices);
    EXPECT_EQ(result.error, QString());
    EXPECT_EQ(textOf(cmx), c.after);
    EXPECT_EQ(result.linesChanged, c.lines);
    EXPECT_EQ(cmx.Modified(), std::string(c.before) != c.after);
    if (std::string(c.before) == c.after) continue;
    cmx.ExecuteCmd(Cmd::UNDO);
    EXPECT_EQ(textOf(cmx), c.before) << "one undo step, line ends with it";
    EXPECT_FALSE(cmx.Modified());
  }
}

TEST(FormatText, AppliedAgainItLeavesNoTrace) {
  QString shown;
  setStatusSink([&](const QString& text) { shown = text; });
  CodeMax cmx;
  cmx.setEnableCRLF(true);
  cmx.setText(QStringLiteral("a\r\nb"));
  cmx.setModified(false);
  FormatChoices unix, nothing;
  unix.lineEnds = 1;
  nothing.indent = 3;
  for (const auto& choices : {unix, unix, nothing}) FormatIt(cmx, nullptr, choices);
  EXPECT_EQ(shown, QString()) << "no step is at work any more";
  cmx.ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(textOf(cmx), "a\r\nb");
  EXPECT_FALSE(cmx.Modified()) << "the text of the file, whatever was applied without effect";
  setStatusSink({});
}

TEST(FormatText, TheStyleOfALongLineIsSeenInItsBeginning) {
  CodeMax cmx;
  cmx.setText(QStringLiteral("a\n\tb\n\tc") + QString(20'000'000, u'x'));
  EXPECT_TRUE(indentStyleOf(cmx).tabs);
  EXPECT_LT(costMs([&] { indentStyleOf(cmx); }), 5);
}

TEST(FormatText, ASelectionIsFormattedAsPartOfTheText) {
  Hdl hdl;
  CodeMax cmx;
  cmx.setLanguage(QStringLiteral("format-test"));
  cmx.setText(QStringLiteral("/* aB\naB\naB */ aB\naB"));
  cmx.SetSel({1, 0, 2, 3, false});
  FormatChoices choices;
  choices.mainCase = 1;
  choices.selectionOnly = true;
  EXPECT_EQ(FormatIt(cmx, hdl.language.get(), choices).linesChanged, 1);
  EXPECT_EQ(cmx.GetLine(1), QStringLiteral("aB")) << "within a comment";
  EXPECT_EQ(cmx.GetLine(2), QStringLiteral("aB */ AB"));
}

TEST(FormatText, RandomTextsLoseNothing) {
  Hdl hdl;
  std::mt19937 random(20260412);
  // clang-format off
  const QStringList parts{
      QStringLiteral("begin"), QStringLiteral("End"), QStringLiteral("aB"), QStringLiteral("\t"), QStringLiteral(" "),
      QStringLiteral("\n"), QStringLiteral("\n"), QStringLiteral("\""), QStringLiteral("--"), QStringLiteral("/*"),
      QStringLiteral("*/"), QStringLiteral("("), QStringLiteral(")"), QStringLiteral(";"), QString(QChar(0xDC81)),
      QString(QChar(0)), QStringLiteral("\u00e9\u0301"), QStringLiteral("\u00df"), QStringLiteral("\\x y"),
      QStringLiteral("8'hAf")};
  // clang-format on
  const auto pick = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
  for (int round = 0; round < 300; ++round) {
    QString text;
    for (int i = pick(60); i > 0; --i) text += parts[pick(static_cast<int>(parts.size()))];
    FormatChoices choices;
    choices.tabs = pick(4);
    choices.mainCase = pick(4);
    choices.keywordCase = pick(4);
    choices.indent = pick(6);
    choices.wholeLine = pick(2);
    CodeMax cmx;
    cmx.setLanguage(QStringLiteral("format-test"));
    cmx.setText(text);
    const QString before = cmx.Text();
    const auto result = FormatIt(cmx, hdl.language.get(), choices);
    EXPECT_EQ(result.error, QString()) << round;
    EXPECT_TRUE(sameInk(cmx.Text(), before)) << "round " << round << ": " << before.toStdString();
    const auto once = cmx.Text();
    choices.tabs = 0;
    FormatIt(cmx, hdl.language.get(), choices);
    if (choices.indent > 0 && !choices.wholeLine) {
      EXPECT_EQ(cmx.Text().toStdString(), once.toStdString()) << "a second run changes nothing, round " << round;
    }
  }
}
