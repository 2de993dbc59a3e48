#include "tests/control/CommandCases.h"

// Deleting, clipboard, undo, case and putting in.
std::vector<CommandCase> editCases() {
  const auto typed = [](EditorFixture& f) {   // three undo steps: "a", a new line, "b"
    f.editor.typeText(QStringLiteral("a"));
    f.editor.newLine();
    f.editor.typeText(QStringLiteral("b"));
  };
  // clang-format on
  const auto typedAndBack = [typed](EditorFixture& f) {
    typed(f);
    while (f.editor.undo()) {}
  };
  // clang-format off
  return {
      {"DELETE", "a|bc", "a|c"}, {"DELETE", "a|\r\nb", "a|b"}, {"DELETE", "|e\xCC\x81z", "|z"}, {"DELETE", "ab|", "ab|"},
      {"DELETE", "a@bc|d", "a|d"}, {"DELETE", "|abcd", "|d", {.count = 3}}, {"DELETE", "a|\xFFz", "a|z"},
      {"DELETE", "a#bc\nd|ef", "a#c\nd|f"}, {"DELETE", "a#b\nd|", "a#\nd|"}, {"DELETE", "a#b\n\tc\na|b", "a#\n   c\na|"},
      {"DELETEBACK", "ab|c", "a|c"}, {"DELETEBACK", "a\r\n|b", "a|b"}, {"DELETEBACK", "e\xCC\x81|z", "|z"},
      {"DELETEBACK", "|ab", "|ab"}, {"DELETEBACK", "a@bc|d", "a|d"}, {"DELETEBACK", "abc|", "a|", {.count = 2}},
      {"DELETEBACK", "ab#c\nde|f", "a#c\nd|f"}, {"DELETEBACK", "世#x\nab|c", "#世x\na|c"}, {"DELETEBACK", "#ab\n|cd", "#ab\n|cd"},
      {"WORDDELETETOSTART", "foo ba|r", "foo |r"}, {"WORDDELETETOSTART", "foo  |bar", "|bar"},
      {"WORDDELETETOSTART", "a\r\n|b", "a|b"}, {"WORDDELETETOSTART", "a\n  |b", "a\n|b"}, {"WORDDELETETOSTART", "|a", "|a"},
      {"WORDDELETETOSTART", "a@bc|d", "a|d"},
      {"WORDDELETETOEND", "fo|o bar", "fo| bar"}, {"WORDDELETETOEND", "foo|  bar x", "foo| x"},
      {"WORDDELETETOEND", "foo|\r\nbar", "foo|bar"}, {"WORDDELETETOEND", "foo|  \nbar", "foo|\nbar"},
      {"WORDDELETETOEND", "a|", "a|"}, {"WORDDELETETOEND", "|a b c d", "| d", {.count = 3}},
      {"DELETEHORIZONTALSPACE", "a \t| b", "a|b"}, {"DELETEHORIZONTALSPACE", "a\n  |\nb", "a\n|\nb"},
      {"DELETEHORIZONTALSPACE", "a|b", "a|b"},
      {"CHARTRANSPOSE", "a|bc", "ba|c"}, {"CHARTRANSPOSE", "|abcd", "|abcd"}, {"CHARTRANSPOSE", "a|bcd", "bcda|", {.count = 3}},
      {"CHARTRANSPOSE", "ab|\nc", "ba|\nc"}, {"CHARTRANSPOSE", "x\na|", "x\na|"},
      {"CHARTRANSPOSE", "e\xCC\x81|z", "ze\xCC\x81|"},
      {"WORDTRANSPOSE", "fo|o(bar)", "bar(foo|)"}, {"WORDTRANSPOSE", "a| b c", "b a| c"},
      {"WORDTRANSPOSE", "a| b c", "b c a|", {.count = 2}}, {"WORDTRANSPOSE", "foo|", "foo|"}, {"WORDTRANSPOSE", "|", "|"},

      {"WORDUPPERCASE", "x fo|o y", "x FOO| y"}, {"WORDUPPERCASE", "|a (b c", "A (B| c", {.count = 2}},
      {"WORDUPPERCASE", "A| b c", "A B| c", {.count = 2}}, {"WORDUPPERCASE", "  |  straße", "    STRASSE|"},
      {"WORDUPPERCASE", "a |(", "a |("},
      {"WORDLOWERCASE", "FO|O Bar", "foo bar|", {.count = 2}},
      {"WORDCAPITALIZE", "fo|o bAR", "Foo Bar|", {.count = 2}}, {"WORDCAPITALIZE", "|éA", "Éa|"},
      {"UPPERCASESELECTION", "a@b\r\ncß|d", "a@B\r\nCSS|d"}, {"UPPERCASESELECTION", "a|b", "a|b"},
      {"UPPERCASESELECTION",
       "a@b\xFF"
       "c|",
       "a@B\xFF"
       "C|"},
      {"UPPERCASESELECTION", "a#bc\nd\ne|fg", "a#bc\nd\ne|fg"}, {"UPPERCASESELECTION", "a#bc\nd\nef|g", "a#Bc\nd\neF|g"},
      {"LOWERCASESELECTION", "@ÀB\nCD|E", "@àb\ncd|E"},

      {"COPY", "a@bc|d", "a@bc|d", {.clipboardAfter = "bc"}},
      {"COPY", "a|b", "a|b", {.clipboard = "old", .clipboardAfter = "old"}},
      {"COPY", "a#bc\nd\nef|g", "a#bc\nd\nef|g", {.clipboardAfter = "b\n\nf", .blockAfter = true}},
      {"COPY", "\t#b\n\n\tc|", "\t#b\n\n\tc|", {.clipboardAfter = "b\n\nc", .blockAfter = true}},
      {"COPY", "ab#cdef\n\tx\nab··|", "ab#cdef\n\tx\nab··|", {.clipboardAfter = "cd\n  \n", .blockAfter = true}},
      {"CUTSELECTION", "a@bc|d", "a|d", {.clipboardAfter = "bc"}},
      {"CUTSELECTION", "a|b", "a|b", {.clipboard = "old", .clipboardAfter = "old"}},
      {"CUTSELECTION", "a#bc\nd\nef|g", "a#c\nd\ne|g", {.clipboardAfter = "b\n\nf", .blockAfter = true}},
      {"CUTSELECTION", "ab#cdefgh\n\tx\nabcd|efgh", "ab#efgh\n  x\nab|efgh", {.clipboardAfter = "cd\n  \ncd", .blockAfter = true}},
      {"CUT", "a@bc|d", "a|d", {.clipboardAfter = "bc"}}, {"CUT", "a\nb|c\nd", "a\n|d", {.clipboardAfter = "bc\n"}},
      {"CUT", "a\nb|\nc\nd", "a\n|d", {.count = 2, .clipboard = "old", .clipboardAfter = "b\nc\n"}},
      {"LINECUT", "a\nb|", "a\n|", {.clipboardAfter = "b\n"}}, {"LINECUT", "a\n@b\n|c", "a\n|c", {.clipboardAfter = "b\n"}},
      {"LINECUT", "|", "|", {.clipboard = "old", .clipboardAfter = "old"}},
      {"SENTENCECUT", "One| two. Three.", "One|Three.", {.clipboardAfter = " two. "}},
      {"SENTENCECUT", "a|", "a|", {.clipboard = "old", .clipboardAfter = "old"}},
      {"APPENDNEXTCUT", "a@b|c", "a@b|c", {.check = [](EditorFixture& f) { EXPECT_TRUE(f.editor.appendNextCut); }}},
      {"CUT",
       "a@b|c",
       "a|c",
       {.clipboard = "x", .clipboardAfter = "xb", .prepare = [](EditorFixture& f) { f.run("APPENDNEXTCUT"); }}},
      {"CUT",
       "a@b|c",
       "a|c",
       {.clipboard = "x",
        .clipboardAfter = "b",
        .prepare =
            [](EditorFixture& f) {
              f.run("APPENDNEXTCUT");
              f.run("TOGGLEOVERTYPE");   // the next command used it up
            }}},
      {"CUT",
       "a\nb|\nc\nd",
       "a\n|d",
       {.clipboard = "x\n",
        .clipboardAfter = "x\nb\nc\n",
        .prepare =
            [](EditorFixture& f) {
              f.run("APPENDNEXTCUT");
              f.run("SETREPEATCOUNT", 2);
            }}},
      {"PASTE", "a|b", "ax\ny|b", {.clipboard = "x\ny"}}, {"PASTE", "a|b\r\n", "ax\r\ny|b\r\n", {.clipboard = "x\ny"}},
      {"PASTE", "a|b\nc", "ax\ny|b\nc", {.clipboard = "x\r\ny"}}, {"PASTE", "a|b\nc", "ax\ny|b\nc", {.clipboard = "x\ry"}},
      {"PASTE", "a@b|c", "ax|c", {.clipboard = "x"}}, {"PASTE", "a|", "axx|", {.count = 2, .clipboard = "x"}},
      {"PASTE", "a|", "a|", {.clipboard = ""}}, {"PASTE", "ab#\ncd|", "abx#\ncdx|", {.clipboard = "x"}},
      {"PASTE", "a|b\ncd", "aXXb\ncY |d", {.clipboard = "XX\nY", .block = true}},
      {"PASTE", "ab|\nc", "abX\nc YY|", {.clipboard = "X\nYY", .block = true}},
      {"PASTE", "ab|", "abX\n  Y|", {.clipboard = "X\nY", .block = true}},
      {"PASTE", "a#bc\nde|f", "aXc\ndY|f", {.clipboard = "X\nY", .block = true}},
      {"PASTE", "ab|cdef\n\tz", "abXXcdef\n  Y |  z", {.clipboard = "XX\nY", .block = true}},
      {"PASTE", "a|b\nc", "aXb\nc|", {.clipboard = "X\n", .block = true}},
      {"PASTE", "世|b\nxyz", "世Xb\nxyY|z", {.clipboard = "X\nY", .block = true}},

      {"UNDO", "x|", "xa\n|", {.prepare = typed}}, {"UNDO", "x|", "x|", {.count = 3, .prepare = typed}},
      {"UNDO", "x|", "x|", {.count = 99, .prepare = typed}},
      {"UNDOCHANGES", "x|", "x|", {.prepare = typed}},
      {"UNDOCHANGES",
       "x|",
       "xa|",
       {.prepare =
            [](EditorFixture& f) {
              f.editor.typeText(QStringLiteral("a"));
              f.model->setModified(false);
              f.editor.newLine();
              f.editor.typeText(QStringLiteral("b"));
            }}},
      {"REDO", "x|", "xa|", {.prepare = typedAndBack}}, {"REDO", "x|", "xa\n|", {.count = 2, .prepare = typedAndBack}},
      {"REDOCHANGES", "x|", "xa\nb|", {.prepare = typedAndBack}},

      {"INSERTCHAR", "a@b|c", "aö|c", {.argument = QStringLiteral("ö")}},
      {"INSERTCHAR", "a|", "axyxyxy|", {.count = 3, .argument = QStringLiteral("xy")}}, {"INSERTCHAR", "a@b|c", "a@b|c"},
      {"NEWLINE", "a|b", "a\n|b"}, {"NEWLINE", "a|b\r\nc", "a\r\n|b\r\nc"}, {"NEWLINE", "\t a|b", "\t a\n\t |b"},
      {"NEWLINE", "  a|", "  a\n\n  |", {.count = 2}}, {"NEWLINE", "  a|", "  a\n|", {.indent = AutoIndent::off}},
      {"NEWLINE", " |  a", " \n |  a"}, {"NEWLINE", "  a@b\nc|d", "  a\n  |d"}, {"NEWLINE", "  a\n\n|x", "  a\n\n\n|x"},
      {"NEWLINE", "  a\n\n|x", "  a\n\n\n|x", {.indent = AutoIndent::language}},
      {"NEWLINE", "  a\n|", "  a\n\n  |", {.indent = AutoIndent::language}},
      {"TOGGLEOVERTYPE", "a|", "a|", {.check = [](EditorFixture& f) { EXPECT_TRUE(f.editor.overtype); }}},
      {"TOGGLEWHITESPACEDISPLAY", "a|", "a|", {.check = [](EditorFixture& f) { EXPECT_EQ(f.host.whiteSpaceToggles, 1); }}},
      {"SETREPEATCOUNT", "a|", "a|", {.argument = 7, .check = [](EditorFixture& f) { EXPECT_EQ(f.editor.repeatCount, 7); }}},
      {"SETREPEATCOUNT",
       "a|",
       "a|",
       {.argument = QStringLiteral("many"), .check = [](EditorFixture& f) { EXPECT_EQ(f.editor.repeatCount, 1); }}},
      {"SETREPEATCOUNT",
       "a|",
       "a|",
       {.argument = QVariant::fromValue<qlonglong>(99999999999),
        .check = [](EditorFixture& f) { EXPECT_EQ(f.editor.repeatCount, 1000000); }}},
      {"CHARRIGHT",
       "|abc",
       "ab|c",
       {.prepare =
            [](EditorFixture& f) {
              f.run("SETREPEATCOUNT", 9);
              f.run("SELECTALL");   // the next command used it up
              f.run("DOCUMENTSTART");
              f.run("SETREPEATCOUNT", 2);
            }}},
  };
}

TEST(CommandCasesEdit, DoWhatTheySay) { checkCases(editCases()); }
