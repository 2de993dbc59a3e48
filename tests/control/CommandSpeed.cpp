// Commands over a million lines, in processor time (other programs do not count), each one undo step.
#include <ctime>

#include "tests/control/EditorFixture.h"

namespace {

template <class Run>
double secondsOf(Run run) {
  const std::clock_t start = std::clock();
  run();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

std::string lines(int count, const char* line) {
  std::string text;
  for (int i = 0; i < count; ++i) text += line;
  return text;
}

}  // namespace

TEST(CommandSpeed, AMillionLinesTakeBelowTwoSeconds) {
  struct Case { const char *command, *line, *after; };
  for (const Case& c : std::vector<Case>{{"UPPERCASESELECTION", "  signal_a <= b;\n", "  SIGNAL_A <= B;\n"},
                                         {"LOWERCASESELECTION", "Prüfung A\r\n", "prüfung a\r\n"},
                                         {"TABIFYSELECTION", "        a <= b;   -- x\n", "\t\ta <= b;\t  -- x\n"},
                                         {"UNTABIFYSELECTION", "\ta <=\tb;\n", "    a <=    b;\n"},
                                         {"INDENTSELECTION", "a <= b;\n", "\ta <= b;\n"},
                                         {"UNINDENTSELECTION", "    a <= b;\n", "a <= b;\n"}}) {
    EditorFixture f;
    const std::string before = lines(1000000, c.line);
    f.model->replaceAll(text::Snapshot(before), {});
    f.run("SELECTALL");
    const double seconds = secondsOf([&] { f.run(c.command); });
    RecordProperty(c.command, std::to_string(seconds));
    std::printf("%s: %.3f s\n", c.command, seconds);
    EXPECT_LT(seconds, 2.0) << c.command;
    EXPECT_TRUE(f.bytes() == lines(1000000, c.after)) << c.command;
    const double undo = secondsOf([&] { EXPECT_TRUE(f.editor.undo()); });
    std::printf("  undo: %.3f s\n", undo);
    EXPECT_LT(undo, 2.0) << c.command;
    EXPECT_TRUE(f.bytes() == before) << c.command;
    EXPECT_FALSE(f.editor.document().canUndo()) << c.command;
  }
}

TEST(CommandSpeed, ABlockOfAHundredThousandLinesTakesBelowASecond) {
  EditorFixture f;
  f.model->replaceAll(text::Snapshot(lines(50000, "\tabcdef\n")), {});
  f.host.clipboard = QString::fromStdString(lines(99999, "xy\n") + "xy");
  f.host.clipboardBlock = true;
  f.editor.setRange({0, 2, 0, 2});
  const double paste = secondsOf([&] { f.run("PASTE"); });
  EXPECT_LT(paste, 1.0);
  EXPECT_EQ(f.editor.snapshot().lineCount(), 100000);
  EXPECT_EQ(f.editor.snapshot().line(text::LineNo(49999)), "\taxybcdef");
  EXPECT_EQ(f.editor.snapshot().line(text::LineNo(99999)), "     xy");
  // The same block as a selection: typing into it, copying and cutting it.
  f.editor.setRange({0, 2, 99999, 7, true});
  const double typing = secondsOf([&] { f.editor.typeText(QStringLiteral("z")); });
  EXPECT_LT(typing, 1.0);
  EXPECT_EQ(f.editor.snapshot().line(text::LineNo(99999)), "     z");
  EXPECT_TRUE(f.editor.undo());
  const double cut = secondsOf([&] { f.run("CUT"); });
  EXPECT_LT(cut, 1.0);
  EXPECT_EQ(f.editor.snapshot().line(text::LineNo(0)), "\tabcdef");
  std::printf("block: paste %.3f s, typing %.3f s, cut %.3f s\n", paste, typing, cut);
}
