// Indentation as it is typed, by block words and brackets.
#include "control/code/LanguageTable.h"
#include "tests/control/EditorFixture.h"

namespace {

struct Typed {
  const char* language;
  const char *before, *keys, *after;   // a line break among the keys is Return
};

void registerLanguages() {
  CmLanguage verilog;
  verilog.CaseSensitive = true;
  verilog.SingleLineComments = QStringLiteral("//");
  verilog.StringDelims = QStringLiteral("\"");
  verilog.BlockStart = QStringLiteral("module\nbegin\ncase\nfunction\nextern~");
  verilog.BlockEnd = QStringLiteral("end\nendcase\nendmodule\nendfunction");
  LanguageTable::registerLanguage(QStringLiteral("verilog"), verilog);
  CmLanguage vhdl;
  vhdl.SingleLineComments = QStringLiteral("--");
  vhdl.StringDelims = QStringLiteral("\"");
  vhdl.BlockStart = QStringLiteral("architecture\nprocess\nif\ncase*\nfunction\nfunction-");
  vhdl.BlockEnd = QStringLiteral("end");
  vhdl.BlockMid = QStringLiteral("begin\nelse\nwhen");
  LanguageTable::registerLanguage(QStringLiteral("vhdl"), vhdl);
  CmLanguage c;
  c.CaseSensitive = true;
  c.BlockStart = QStringLiteral("{");
  c.BlockEnd = QStringLiteral("}");
  LanguageTable::registerLanguage(QStringLiteral("c"), c);
}

}   // namespace

TEST(AutoIndent, AsItIsTyped) {
  registerLanguages();
  const Typed cases[] = {
      {"verilog", "  begin|", "\nx", "  begin\n    x|"},
      {"verilog", "a\n  b\nbegin // end|", "\nx", "a\n  b\nbegin // end\n  x|"},
      {"verilog", "x = \"begin\";|", "\ny", "x = \"begin\";\ny|"},
      {"verilog", "begin x = 1; end|", "\ny", "begin x = 1; end\ny|"},
      {"verilog", "\tbegin|", "\nx\nend\ny", "\tbegin\n\t\tx\n\tend\n\ty|"},
      {"verilog", "module m;\n  begin\n    x;\n    |", "end\nendmodule", "module m;\n  begin\n    x;\n  end\nendmodule|"},
      {"verilog", "  begin\n    |", "endless", "  begin\n    endless|"},
      {"verilog", "  begin\n    x = |", "end", "  begin\n    x = end|"},
      {"verilog", "  begin\n    |y", "end", "  begin\n    end|y"},
      {"verilog", "  f(|", "\na,\nb\n);\nx", "  f(\n    a,\n    b\n  );\n  x|"},
      {"verilog", "module m (|", "\na\n);\nx", "module m (\n    a\n);\n    x|"},
      {"verilog", "  if (a &&\n      b) begin|", "\nx", "  if (a &&\n      b) begin\n    x|"},
      {"verilog", "  x = f(a,\n        b);|", "\ny", "  x = f(a,\n        b);\n  y|"},
      {"verilog", "  f(|)", "\n", "  f(\n  |)"},
      {"verilog", "  f(|  )", "\n", "  f(\n  |)"},
      {"verilog", "  begin |x; @ end", "\n", "  begin \n  |end"},
      {"verilog", "  f(@a,|)", "\n", "  f(\n  |)"},
      {"verilog", "  begin\n    x; | end", "\ny", "  begin\n    x; \n  y|end"},
      {"verilog", "begin\n  x;\n    @  |", "end", "begin\n  x;\nend|"},
      {"verilog", "begin\n  )|", "x", "begin\n  )x|"},
      {"verilog", "  begin|", "\n\nx", "  begin\n\n    x|"},
      {"verilog", "begin\n  x;\n  En|", "d", "begin\n  x;\n  End|"},
      {"vhdl", "if a then\n  x;\n  EN|", "D", "if a then\n  x;\nEND|"},
      {"verilog", "  extern function f;|", "\nx", "  extern function f;\n  x|"},
      {"vhdl", "  if a then|", "\nx;\nelse\ny;\nend if;\nz", "  if a then\n    x;\n  else\n    y;\n  end if;\n  z|"},
      {"vhdl", "if a then\n  case b is|", "\nwhen c =>\nx;\nwhen d =>",
       "if a then\n  case b is\n    when c =>\n      x;\n    when d =>|"},
      {"vhdl", "  a <= b\n    |", "when", "  a <= b\n    when|"},
      {"vhdl", "  function f return t;|", "\nx", "  function f return t;\n  x|"},
      {"vhdl", "  function f return t is|", "\nbegin\nx", "  function f return t is\n  begin\n    x|"},
      {"c", "  f() {|", "\nx;\n}\ny", "  f() {\n    x;\n  }\n  y|"},
  };
  for (const auto& c : cases) {
    EditorFixture f(c.before);
    f.options->autoIndent = AutoIndent::language;
    f.options->expandTabs = true;
    ASSERT_TRUE(f.model->setLanguage(QLatin1String(c.language)));
    for (const char* key = c.keys; *key; ++key) *key == '\n' ? f.editor.newLine() : f.editor.typeText(QString(QLatin1Char(*key)));
    EXPECT_EQ(f.shown(), c.after) << c.before;
  }
  EditorFixture f("  begin|");
  f.options->autoIndent = AutoIndent::same;
  f.model->setLanguage(QStringLiteral("verilog"));
  f.editor.newLine();
  f.editor.typeText(QStringLiteral("x"));
  EXPECT_EQ(f.shown(), "  begin\n  x|") << "off";
  for (const char* name : {"verilog", "vhdl", "c"}) LanguageTable::unregisterLanguage(QLatin1String(name));
}

TEST(AutoIndent, BlanksThatNothingFollowsDoNotStay) {
  struct Left {
    const char* what;
    std::function<void(EditorFixture&)> leave;
    const char *after, *undone;
  };
  const auto command = [](int id) { return [id](EditorFixture& f) { f.editor.execute(id); }; };
  // clang-format off
  const Left cases[] = {
      {"up", command(149), "\t|x\n\n\ty", nullptr},
      {"down", command(157), "\tx\n\n\t|y", nullptr},
      {"elsewhere", [](EditorFixture& f) { f.editor.setRange({2, 2, 2, 2, false}); }, "\tx\n\n\ty|", nullptr},
      {"Return", [](EditorFixture& f) { f.editor.newLine(); }, "\tx\n\n\t|\n\ty", "\tx\n\t|\n\ty"},
      {"typed", [](EditorFixture& f) { f.editor.typeText(QStringLiteral("z")); f.editor.execute(Cmd::LINEUP); }, "\tx|\n\tz\n\ty", "\tx\n\t|\n\ty"},
      {"own blanks", [](EditorFixture& f) { f.editor.typeText(QStringLiteral("\t")); f.editor.execute(Cmd::DOCUMENTSTART); }, "|\tx\n\t\t\n\ty", "\tx\n\t|\n\ty"},
      {"saved", [](EditorFixture& f) { f.model->document().markSaved(); f.editor.execute(Cmd::DOCUMENTSTART); }, "|\tx\n\t\n\ty", nullptr},
      {"in the line", command(165), "\tx\n|\t\n\ty", nullptr},
  };
  // clang-format on
  for (const bool opened : {false, true})
    for (const Left& c : cases) {
      SCOPED_TRACE(c.what);
      EditorFixture f("\tx|\n\ty");
      opened ? void(f.editor.execute(Cmd::LINEOPENBELOW)) : void(f.editor.newLine());
      EXPECT_EQ(f.shown(), "\tx\n\t|\n\ty");
      c.leave(f);
      EXPECT_EQ(f.shown(), c.after);
      f.editor.undo();
      EXPECT_EQ(f.shown(), c.undone ? c.undone : "\tx|\n\ty") << "one step with the line break";
    }
  EditorFixture f("\tx|\n\ty");
  f.editor.repeatCount = 2;
  f.editor.execute(Cmd::NEWLINE);
  f.editor.execute(Cmd::DOCUMENTSTART);
  EXPECT_EQ(f.shown(), "|\tx\n\n\n\ty");
  f.editor.undo();
  f.editor.undo();
  EXPECT_EQ(f.shown(), "\tx|\n\ty");
}

TEST(AutoIndent, AStepBackIsUndoneWithItsLetter) {
  registerLanguages();
  EditorFixture f("begin\n  x;\n  en|");
  f.options->autoIndent = AutoIndent::language;
  f.model->setLanguage(QStringLiteral("verilog"));
  f.editor.typeText(QStringLiteral("d"));
  EXPECT_EQ(f.shown(), "begin\n  x;\nend|");
  f.editor.undo();
  EXPECT_EQ(f.shown(), "begin\n  x;\n  en|");
  EditorFixture g("f(a|;");
  g.options->autoIndent = AutoIndent::language;
  g.model->setLanguage(QStringLiteral("verilog"));
  for (const char key : {'1', ')', '+'}) g.editor.typeText(QString(QLatin1Char(key)));
  EXPECT_EQ(g.shown(), "f(a1)+|;");
  g.editor.undo();
  EXPECT_EQ(g.shown(), "f(a|;") << "a bracket that steps nowhere is typed like any other sign";
  for (const char* name : {"verilog", "vhdl", "c"}) LanguageTable::unregisterLanguage(QLatin1String(name));
}
