// Columnising, number series and the services on whole lines, on a real control.
#include "change/LineTools.h"

#include <gtest/gtest.h>

#include "base/Program.h"
#include "bridge/LongWork.h"
#include "change/AddIns.h"
#include "change/FormatText.h"
#include "control/edit/Carets.h"
#include "control/keys/KeyCommands.h"
#include "tests/support/ScriptedDialogs.h"

namespace {

struct Control {
  CodeMax cmx;
  explicit Control(const char* text, CmRange selection = {}) {
    cmx.setText(QString::fromUtf8(text));
    cmx.SetSel(selection);
  }
  std::string text() const { return cmx.Text().replace(QLatin1String("\r\n"), QLatin1String("\n")).toStdString(); }
};

}   // namespace

TEST(LineTools, AlignColumns) {
  struct Case {
    const char *before, *delimiter, *after;
  };
  const Case cases[] = {
      {"a,bb,c\naaa,b,c", ",", "a  ,bb,c\naaa,b ,c"},
      {"a,b\nnone\nccc,d", ",", "a  ,b\nnone\nccc,d"},
      {"a,b,c", ",", "a,b,c"},
      {"a<=b\nccc <= d", "<=", "a   <=b\nccc <= d"},
      {"a,,b\naa,b", ",", "a ,,b\naa,b"},
      {"xx\txy\nx\tx", "x", "x x\txy\nx\tx"},
      {"aA\nbbbA", "a", "aA\nbbbA"},
      {"", ",", ""},
  };
  for (const auto& c : cases) {
    Control control(c.before);
    Columnize(control.cmx, {0, control.cmx.LineCount()}, QLatin1String(c.delimiter));
    EXPECT_EQ(control.text(), c.after) << c.before;
  }
}

TEST(LineTools, ColumnizeAsksAndIsOneStep) {
  Control c("a,b\naaa,b\nx,y", {0, 1, 1, 2, false});
  c.cmx.setBookmark(1, true);
  {
    ScriptedDialogs dialogs;
    dialogs.answerInput(QStringLiteral(","));
    EXPECT_EQ(Columnize(c.cmx), QStringLiteral(","));
    EXPECT_EQ(dialogs.last().text, QStringLiteral("Please input the column delimiter"));
    EXPECT_EQ(dialogs.last().title, QStringLiteral("Zelkor Editor"));
    EXPECT_EQ(dialogs.last().initial, QString());
  }
  EXPECT_EQ(c.text(), "a  ,b\naaa,b\nx,y");
  EXPECT_TRUE(c.cmx.hasBookmark(1));
  EXPECT_EQ(c.cmx.GetSel(true).StartLineNo, 0);
  EXPECT_EQ(c.cmx.GetSel(true).EndLineNo, 1);
  c.cmx.ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(c.text(), "a,b\naaa,b\nx,y");
  ScriptedDialogs dialogs;
  dialogs.answerInput(std::nullopt).answerInput(QString());
  Columnize(c.cmx);
  Columnize(c.cmx);
  EXPECT_EQ(c.text(), "a,b\naaa,b\nx,y");
}

TEST(LineTools, WholeLines) {
  struct Case {
    const char* before;
    qint64 (*run)(CodeMax&);
    const char* after;
    qint64 changed;
  };
  const Case cases[] = {
      {"b\na\nB\n", [](CodeMax& c) { return SortLines(c, {}); }, "a\nb\nB\n", 2},
      {"b\na\nB",
       [](CodeMax& c) {
         return SortLines(c, {true, true, false, false});
       },
       "b\na\nB", 0},
      {"x10\nx9\nx -1\nx",
       [](CodeMax& c) {
         return SortLines(c, {false, false, true, false});
       },
       "x\nx -1\nx9\nx10", 4},
      {"a\nb\nA\na\n", [](CodeMax& c) { return SortLines(c, {.dropEqual = true}); }, "a\nA\nb\n", 3},
      {"net-7\n1.2.3\n -2\nx", [](CodeMax& c) { return SortLines(c, {.numeric = true}); }, "x\n -2\n1.2.3\nnet-7", 4},
      {"a\nb\na\n\nb\n", [](CodeMax& c) { return RemoveDuplicateLines(c); }, "a\nb\n\n", 2},
      {"\n \na\n\t\nb", [](CodeMax& c) { return RemoveBlankLines(c); }, "a\nb", 3},
      {"\n \n", [](CodeMax& c) { return RemoveBlankLines(c); }, "", 2},
      {"a \t\nb\n c  ", [](CodeMax& c) { return TrimLineEnds(c); }, "a\nb\n c", 2},
      {"a  \n  b\nc", [](CodeMax& c) { return JoinLines(c); }, "a b\nc", 1},
      {"", [](CodeMax& c) { return RemoveBlankLines(c); }, "", 0},
      {"", [](CodeMax& c) { return JoinLines(c); }, "", 0},
  };
  for (const auto& test : cases) {
    Control c(test.before);
    EXPECT_EQ(test.run(c.cmx), test.changed) << test.before;
    EXPECT_EQ(c.text(), test.after) << test.before;
    if (test.changed == 0) continue;
    c.cmx.ExecuteCmd(Cmd::UNDO);
    EXPECT_EQ(c.text(), test.before) << "one undo step";
  }
}

// Each command on lines takes the same lines of a selection. A row: the lines that change when the selection ends at the start of line 2,
// when it ends within line 1, when it is a column over lines 0 to 2, and without one, the caret in line 1.
TEST(LineTools, OneRuleOfSelectedLines) {
  const auto command = [](const char* name) {
    return [name](CodeMax& c) { executeAny(c.editor(), anyCommandByName(QString::fromLatin1(name))->id); };
  };
  const struct {
    const char* name;
    std::function<void(CodeMax&)> run;
    const char *atStart, *within, *column, *none;
  } rows[] = {
      {"indent", command("INDENTSELECTION"), "01", "01", "012", "1"},
      {"unindent", command("UNINDENTSELECTION"), "01", "01", "012", "1"},
      {"delete", command("LINEDELETE"), "01", "01", "012", "1"},
      {"cut", command("LINECUT"), "01", "01", "012", "1"},
      {"Tab", command("TABKEY"), "01", "01", "012", "1"},
      {"join", [](CodeMax& c) { JoinLines(c); }, "01", "01", "012", "12"},
      {"series", [](CodeMax& c) { InsertSeries(c, {}); }, "01", "01", "012", "1"},
      {"trim", [](CodeMax& c) { TrimLineEnds(c); }, "01", "01", "012", "0123"},
      {"format", [](CodeMax& c) { FormatIt(c, nullptr, {.tabs = 3, .selectionOnly = true}); }, "01", "01", "012", "0123"},
      // Takes line 2 too; the comma that stands furthest right stays.
      {"columnize", [](CodeMax& c) { Columnize(c, linesToColumnize(c), QStringLiteral(",")); }, "01", "0", "01", ""},
  };
  for (const auto& row : rows) {
    const std::pair<CmRange, const char*> shapes[] = {{{0, 0, 2, 0, false}, row.atStart},
                                                      {{0, 1, 1, 2, false}, row.within},
                                                      {{0, 1, 2, 1, true}, row.column},
                                                      {{1, 2, 1, 2, false}, row.none}};
    for (const auto& [selection, expected] : shapes) {
      Control c("\tp0,  \n\tpp1,  \n\tppp2,  \n\tpppp3,  ", selection);
      const QStringList before = c.cmx.Text().split(u'\n');
      row.run(c.cmx);
      const QStringList after = c.cmx.Text().split(u'\n');
      std::string changed;
      for (qsizetype i = 0; i < before.size(); ++i)
        if (!after.contains(before[i])) changed += std::to_string(i);
      EXPECT_EQ(changed, expected) << row.name << ", selection to line " << selection.EndLineNo;
    }
  }
}

TEST(LineTools, WhatIsCancelledChangesNothing) {
  const auto moment = std::exchange(LongWork::patience().moment, std::chrono::milliseconds(0));
  Control c("");
  QStringList lines;
  for (int i = 0; i < 50000; ++i)
    lines << QStringLiteral("x%1,\t").arg(i * 7919 % 50021) + QString(600, u'z');   // each takes longer than a look
  c.cmx.setText(lines.join(u'\n'));
  c.cmx.show();
  const text::Snapshot before = c.cmx.model()->snapshot();
  int looks = 0;
  {
    const BusyGuard busy;
    const LongWork::Watch watch([&](const QString&, int) { return ++looks, false; });
    EXPECT_EQ(SortLines(c.cmx, {}), 0);
    EXPECT_EQ(Columnize(c.cmx, {0, 50000}, QStringLiteral(",")), 0);
    FormatChoices choices;
    choices.tabs = 1;
    c.cmx.SetSel({0, 0, 49999, 1, false});
    choices.selectionOnly = true;
    EXPECT_NE(FormatIt(c.cmx, nullptr, choices).error, QString());
  }
  EXPECT_EQ(looks, 3);
  EXPECT_TRUE(c.cmx.model()->snapshot().sameAs(before));
  LongWork::patience().moment = moment;
}

TEST(LineTools, SelectedLinesOnly) {
  Control c("d\nc\nb\na\n", {1, 0, 3, 0, false});   // touches line 3 only at its start
  SortLines(c.cmx, {});
  EXPECT_EQ(c.text(), "d\nb\nc\na\n");
  Control last("x\n\n\n", {1, 0, 3, 0, false});
  RemoveBlankLines(last.cmx);
  EXPECT_EQ(last.text(), "x\n");
  Control all("a\nb\nc", {1, 0, 2, 1, false});
  JoinLines(all.cmx);
  EXPECT_EQ(all.text(), "a\nb c");
  Control blank("a\n \nb", {0, 0, 2, 1, false});
  JoinLines(blank.cmx);
  EXPECT_EQ(blank.text(), "a b");
  Control locked("b\na");
  locked.cmx.setReadOnly(true);
  EXPECT_EQ(SortLines(locked.cmx, {}), 0);
  EXPECT_EQ(locked.text(), "b\na");
}

TEST(LineTools, AtSeveralCarets) {
  Control c("d\nc\n-\nb\na\n");
  using text::ByteOffset;
  const std::vector<Caret> both{{ByteOffset(0), ByteOffset(3)}, {ByteOffset(6), ByteOffset(9)}};
  carets::set(c.cmx.editor(), both, 1);
  EXPECT_EQ(SortLines(c.cmx, {}), 4);
  EXPECT_EQ(c.text(), "c\nd\n-\na\nb\n") << "each selection by itself";
  EXPECT_EQ(carets::count(c.cmx.editor()), 2u);
  c.cmx.ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(c.text(), "d\nc\n-\nb\na\n") << "in one step";
  EXPECT_EQ(carets::all(c.cmx.editor()), both);
  carets::set(c.cmx.editor(), {{ByteOffset(0), ByteOffset(0)}, {ByteOffset(6), ByteOffset(6)}}, 0);
  JoinLines(c.cmx);
  EXPECT_EQ(c.text(), "d c\n-\nb a\n");
}

TEST(LineTools, Series) {
  NumberSeries s;
  s.start = 254;
  s.base = 16;
  s.width = 4;
  s.zeroFill = true;
  s.upperCase = true;
  s.prefix = QStringLiteral("16'h");
  EXPECT_EQ(seriesItem(s, 0), QStringLiteral("16'h00FE"));
  EXPECT_EQ(seriesItem(s, 2), QStringLiteral("16'h0100"));
  s = {};
  s.step = -3;
  s.repeat = 2;
  s.width = 3;
  EXPECT_EQ(seriesItem(s, 1), QStringLiteral("  0"));
  EXPECT_EQ(seriesItem(s, 2), QStringLiteral(" -3"));
  s.zeroFill = true;
  EXPECT_EQ(seriesItem(s, 2), QStringLiteral("-03"));
  s = {};
  s.start = std::numeric_limits<qint64>::min();
  EXPECT_EQ(seriesItem(s, 0), QStringLiteral("-9223372036854775808"));

  Control column("ab\n\nabcd", {0, 3, 2, 3, true});
  column.cmx.SetSel({0, 2, 2, 2, true});
  EXPECT_EQ(InsertSeries(column.cmx, {}), 3);
  EXPECT_EQ(column.text(), "ab0\n  1\nab2cd");
  EXPECT_EQ(column.cmx.GetSel(true), (CmRange{0, 3, 2, 3, true})) << "behind the numbers";
  Control tabs("\tx\n\ty", {0, 1, 1, 1, false});
  tabs.cmx.setTabSize(4);
  InsertSeries(tabs.cmx, {});
  EXPECT_EQ(tabs.text(), "\t0x\n\t1y");
}
