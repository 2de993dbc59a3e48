// Commands over a million lines: the right text, and one undo step each. What is not linear here runs into the time limit of
// the test; how long each takes is measured in bench/control/Commands.cpp. The usual run is a tenth; ZELKOR_FULL=1: whole.
#include "tests/control/EditorFixture.h"

namespace {

std::string lines(int count, const char* line) {
  std::string text;
  for (int i = 0; i < count; ++i) text += line;
  return text;
}

int many() { return qEnvironmentVariableIsSet("ZELKOR_FULL") ? 1'000'000 : 100'000; }

}   // namespace

TEST(LargeTexts, AMillionLinesChangeInOneStep) {
  struct Case {
    const char *command, *line, *after;
  };
  for (const Case& c : std::vector<Case>{{"UPPERCASESELECTION", "  signal_a <= b;\n", "  SIGNAL_A <= B;\n"},
                                         {"LOWERCASESELECTION", "Prüfung A\r\n", "prüfung a\r\n"},
                                         {"TABIFYSELECTION", "        a <= b;   -- x\n", "\t\ta <= b;\t  -- x\n"},
                                         {"UNTABIFYSELECTION", "\ta <=\tb;\n", "    a <=    b;\n"},
                                         {"INDENTSELECTION", "a <= b;\n", "\ta <= b;\n"},
                                         {"UNINDENTSELECTION", "    a <= b;\n", "a <= b;\n"}}) {
    EditorFixture f;
    const std::string before = lines(many(), c.line);
    f.model->replaceAll(text::Snapshot(before), {});
    f.run("SELECTALL");
    f.run(c.command);
    EXPECT_TRUE(f.bytes() == lines(many(), c.after)) << c.command;
    EXPECT_TRUE(f.editor.undo());
    EXPECT_TRUE(f.bytes() == before) << c.command;
    EXPECT_FALSE(f.editor.document().canUndo()) << c.command;
  }
}
