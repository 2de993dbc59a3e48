// Re-indentation: the words, the stack, the plain way and the careful one.
#include "print/Reindent.h"

#include <gtest/gtest.h>

namespace {

QString list(const char* words) {
  QString text;
  for (const QString& word : QString::fromLatin1(words).split(u' ', Qt::SkipEmptyParts)) text += word + QStringLiteral("\r\n");
  return text;
}

QStringList lines(const QString& text) { return text.split(u'\n'); }

QString plain(const QString& text, const BlockWords& words, int unit) {
  const QStringList in = lines(text);
  const auto indents = indentsByFirstWord([&](qint64 i) { return in[i]; }, in.size(), words, unit);
  QStringList out;
  for (qsizetype i = 0; i < in.size(); ++i) out << QString(indents[static_cast<std::size_t>(i)], u' ') + in[i].mid(leadingLength(in[i]));
  return out.join(u'\n');
}

text::LanguageTables verilogLike() {
  text::LanguageTables t;
  t.caseSensitive = true;
  t.singleComments = {"//"};
  t.multiCommentStart = {"/*"};
  t.multiCommentEnd = {"*/"};
  t.stringDelims = {"\""};
  return t;
}
text::LanguageTables vhdlLike() {
  text::LanguageTables t;
  t.singleComments = {"--"};
  t.stringDelims = {"\""};
  return t;
}

QString careful(const QString& text, const BlockWords& words, int unit, const text::LanguageTables& tables) {
  const QStringList in = lines(text);
  const text::Highlighter highlighter(tables);
  const auto indents = indentsByWholeLine([&](qint64 i) { return in[i]; }, in.size(), words, unit, &highlighter, 4);
  QStringList out;
  for (qsizetype i = 0; i < in.size(); ++i) out << QString(indents[static_cast<std::size_t>(i)], u' ') + in[i].mid(leadingLength(in[i]));
  return out.join(u'\n');
}

QString flat(const QString& text) {
  QStringList out;
  for (const QString& line : lines(text)) out << line.mid(leadingLength(line));
  return out.join(u'\n');
}

}  // namespace

TEST(Reindent, WordListSearch) {
  struct Case {
    const char *word, *list;
    bool found, twice, tilde;
  };
  const Case cases[] = {
      {"begin", "\r\nbegin\r\n", true, false, false},      {"BEGIN", "\r\nbegin\r\n", true, false, false},
      {"begin", "begin\r\n", false, false, false},          // no line break before the first entry
      {"begin", "\r\nbegin", true, false, false},           {"beg", "\r\nbegin\r\n", false, false, false},
      {"case", "\r\nif\r\ncase*\r\n", true, true, false},   {"CASE", "\r\ncase*\r\n", true, true, false},
      {"wait", "\r\nwait~\r\n", false, false, true},        {"fun", "\r\nfun-\r\n", false, false, false},
      {"case", "\r\ncase\r\ncase*\r\n", true, false, false},
  };
  for (const auto& c : cases) {
    BlockWordFlags flags{true, true};
    EXPECT_EQ(searchWordList(QLatin1String(c.word), QLatin1String(c.list), flags), c.found) << c.word << " in " << c.list;
    EXPECT_EQ(flags.doubleIndent, c.twice) << c.word << " in " << c.list;
    EXPECT_EQ(flags.tilde, c.tilde) << c.word << " in " << c.list;
  }
}

TEST(Reindent, Classes) {
  const BlockWords words(list("b both"), list("e both"), list("m b"));
  EXPECT_EQ(words.classify(QStringLiteral("e")).kind, BlockClass::end);
  EXPECT_EQ(words.classify(QStringLiteral("both")).kind, BlockClass::end) << "the end comes first";
  EXPECT_EQ(words.classify(QStringLiteral("b")).kind, BlockClass::start) << "the start comes before the middle";
  EXPECT_EQ(words.classify(QStringLiteral("M")).kind, BlockClass::middle);
  EXPECT_EQ(words.classify(QString()).kind, BlockClass::none);
  EXPECT_EQ(words.classify(QStringLiteral("x")).kind, BlockClass::none);
}

TEST(Reindent, StackKeepsSixtyOneWidths) {
  IndentStack stack(7);
  EXPECT_EQ(stack.pop(), 7) << "a pop of nothing gives the unit";
  for (int i = 1; i <= 70; ++i) stack.push(i);
  EXPECT_EQ(stack.pop(), 60);
  EXPECT_EQ(stack.pop(), 59);
}

TEST(Reindent, ByFirstWord) {
  const BlockWords words(list("B D*"), list("E"), list("M"));
  struct Case {
    const char *before, *after;
    int unit;
  };
  const Case cases[] = {
      {"B\nx\nE", "B\n    x\nE", 4},
      {"D\nx\nE\ny", "D\n        x\nE\ny", 4},
      {"E\nx", "E\nx", 4},
      {"  E\n\tE\nB\nx", "E\nE\nB\n  x", 2},
      {"B\nx\nM\ny\nE", "B\n  x\nM\n  y\nE", 2},
      {"M\nx", "M\n  x", 2},
      {"B\n\nx\n   \nE", "B\n  \n  x\n  \nE", 2},              // blank lines get the blanks too
      {"x B\ny", "x B\ny", 2},                                  // only the first word counts
      {"B\nB\nD\nx\nE\nE\nE", "B\n B\n  D\n    x\n  E\n E\nE", 1},
      {"B\nx\nE", "B\nx\nE", 0},
      {"", "", 4},
  };
  for (const auto& c : cases)
    EXPECT_EQ(plain(QLatin1String(c.before), words, c.unit).toStdString(), c.after) << c.before;
}

TEST(Reindent, ByFirstWordGoesOnBeyondSixtyBlocks) {
  const BlockWords words(list("B"), list("E"), QString());
  QStringList in;
  for (int i = 0; i < 1000; ++i) in << QStringLiteral("B");
  in << QStringLiteral("x");
  for (int i = 0; i < 1000; ++i) in << QStringLiteral("E");
  in << QStringLiteral("y");
  const auto indents = indentsByFirstWord([&](qint64 i) { return in[i]; }, in.size(), words, 2);
  EXPECT_EQ(indents[1000], 2000);
  EXPECT_EQ(indents[1001], 1998);
  EXPECT_EQ(indents.back(), 0);
}

// The careful way gives well-formed code back as it was, from flat lines and from itself.
TEST(Reindent, ByWholeLineVerilog) {
  const BlockWords words(list("module begin case function task fork generate wait~ disable~ typedef~"),
                         list("endmodule end endcase endfunction endtask join endgenerate"), QString());
  const QString code = QStringLiteral(R"(`timescale 1ns/1ps
// begin is no block in a comment
module m #(
  parameter W = 8
) (
  input  wire clk,
  output reg  q
);
  wire a = "begin";
  assign b = a &
    c;
  always @(posedge clk)
    if (a) begin
      q <= 1;
    end else begin
      q <= 0;
    end
  always @*
    if (a)
      x = 1;
    else
      x = 2;
  always @(posedge clk) begin : name
    case (s)
      A: q <= 0;
      B: begin
        q <= 1;
      end
      default: q <= 2;
    endcase
  end
  function f(input i); begin f = i; end endfunction
  initial begin
    wait fork;
    fork
      t;
    join
  end
  /* a block
     comment */
  genvar i;
  generate
    for (i = 0; i < 4; i = i + 1) begin : g
      sub u (.a(a),
        .b(b));
    end
  endgenerate
endmodule
module n;
endmodule)");
  EXPECT_EQ(careful(code, words, 2, verilogLike()).toStdString(), code.toStdString());
  EXPECT_EQ(careful(flat(code).replace(QLatin1String("comment */"), QLatin1String("   comment */")), words, 2, verilogLike()).toStdString(),
            code.toStdString());
}

TEST(Reindent, ByWholeLineVhdl) {
  const BlockWords words(list("entity- architecture component process if case* loop for while generate function- record wait~ attribute~ "
                              "entity architecture function use~"),
                         list("end"), list("begin else elsif when"));
  const QString code = QStringLiteral(R"(library ieee;
use ieee.std_logic_1164.all;
entity e is
  port (
    a : in  std_logic;
    b : out std_logic
  );
end entity e;
architecture rtl of e is
  attribute keep of rtl : architecture is "true";
  function f (a : bit) return bit;
  type t is record
    x : bit;
  end record;
begin
  u : entity work.sub
    port map (
      a => a
    );
  p : process (clk)
    variable v : bit;
  begin
    if rst = '1' then
      q <= '0';
    elsif rising_edge(clk) then
      case s is
        when idle =>
          q <= '1';
        when others =>
          null;
      end case;
    end if;
    wait for 10 ns;
    for i in 0 to 7 loop
      if v then x; end if;
      y;
    end loop;
  end process p;
end architecture rtl;)");
  EXPECT_EQ(careful(code, words, 2, vhdlLike()).toStdString(), code.toStdString());
}

TEST(Reindent, ByWholeLineBraces) {
  const BlockWords words(list("{"), list("}"), list("case default"));
  text::LanguageTables c = verilogLike();
  c.keywords = {"#if", "#endif", "#define"};
  const QString code = QStringLiteral(R"(#define X 1
int f(int a,
      int b) {
    if (a) {
        g();
    } else if (b) {
        h("}");
    } else
        i();
#if X
    int t[] = {1, 2};
#endif
    switch (a) {
    case 1:
        break;
    default:
        return;
    }
    while (a &&
           b) {
        x = {1,
            2};
    }
    long_call(a,
              b);
}
struct s {
    int x;
};)");
  EXPECT_EQ(careful(code, words, 4, c).toStdString(), code.toStdString());
  text::LanguageTables tcl;
  tcl.singleComments = {"#"};
  tcl.stringDelims = {"\""};
  const QString script = QStringLiteral("proc p {a} {\n  set x 1\n  if {$a} {\n    puts a\n  } else {\n    puts b\n  }\n  foo a \\\n    b\n  set y 2\n}");
  EXPECT_EQ(careful(script, words, 2, tcl).toStdString(), script.toStdString());
}

TEST(Reindent, ByWholeLineSurvivesUnbalancedText) {
  const BlockWords words(list("begin"), list("end"), QString());
  EXPECT_EQ(careful(QStringLiteral("end\nend\nbegin\nx;"), words, 2, verilogLike()).toStdString(), "end\nend\nbegin\n  x;");
  const QString brackets = QStringLiteral(")\n)]\n(((\nx\n;\nend ] begin");
  EXPECT_EQ(flat(careful(brackets, words, 2, verilogLike())).toStdString(), brackets.toStdString());
}
