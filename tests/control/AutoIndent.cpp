// What is typed, and its indentation by block words and brackets.
#include "control/code/LanguageTable.h"
#include "tests/control/CaseFile.h"
#include "tests/control/EditorFixture.h"

namespace {

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
  CmLanguage shell;
  shell.CaseSensitive = true;
  shell.SingleLineComments = QStringLiteral("#");
  shell.StringDelims = QStringLiteral("\"");
  shell.BlockStart = QStringLiteral("if\nfor\nwhile\ncase");
  shell.BlockMid = QStringLiteral("then\ndo\nelse\nelif");
  shell.BlockEnd = QStringLiteral("fi\ndone\nesac");
  LanguageTable::registerLanguage(QStringLiteral("shell"), shell);
}

}   // namespace

TEST(AutoIndent, AsItIsTyped) {
  registerLanguages();
  for (const Case& c : casesOf("typed.txt", {"expand", "keys", "language", "overtype"})) {
    EditorFixture f(c.before);
    f.editor.overtype = c.has("overtype");
    f.options->autoIndent = c.has("language") ? AutoIndent::language : AutoIndent::same;
    f.options->expandTabs = c.has("language") || c.has("expand");
    ASSERT_TRUE(f.model->setLanguage(c.text("language"))) << c.command;
    for (const QChar key : c.text("keys")) key == u'\n' ? f.editor.newLine() : f.editor.typeText(key);
    EXPECT_EQ(f.shown(), c.after) << c.command << ": " << c.before;
    while (f.editor.undo()) {}
    EXPECT_EQ(f.shown(), c.before) << c.command << ": undone";
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
