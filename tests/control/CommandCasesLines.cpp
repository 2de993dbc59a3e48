#include "tests/control/CommandCases.h"

// Whole lines, indents and tabs.
std::vector<CommandCase> lineCases() {
  // clang-format off
  return {
      {"LINEDELETE", "a\nb|c\nd", "a\n|d"}, {"LINEDELETE", "a\nb|c\nd\ne", "a\n|e", {.count = 2}},
      {"LINEDELETE", "a\r\nb|", "a|"}, {"LINEDELETE", "a\n|", "a|"}, {"LINEDELETE", "a|", "|"}, {"LINEDELETE", "|", "|"},
      {"LINEDELETE", "a\nb@b\nc|c\nd", "a\n|d"}, {"LINEDELETE", "a\n@b\n|c", "a\n|c"}, {"LINEDELETE", "a#b\nc|d\ne", "|e"},
      {"LINEDELETETOSTART", "x\nab|c", "x\n|c"}, {"LINEDELETETOSTART", "x\n|ab", "x\n|ab"},
      {"LINEDELETETOEND", "ab|c\r\nd", "ab|\r\nd"}, {"LINEDELETETOEND", "ab|\r\nd", "ab|\r\nd"},
      {"LINETRANSPOSE", "a|b\ncde\nf", "cde\na|b\nf"}, {"LINETRANSPOSE", "a|b\r\nc", "c\r\na|b"},
      {"LINETRANSPOSE", "a|\nb\nc", "b\nc\na|", {.count = 2}}, {"LINETRANSPOSE", "a\nb|", "a\nb|"},
      {"LINEOPENBELOW", "  a|b\nc", "  ab\n  |\nc"}, {"LINEOPENBELOW", "a|b", "ab\n|"},
      {"LINEOPENBELOW", "  a|b", "  ab\n|", {.indent = AutoIndent::off}},
      {"LINEOPENABOVE", "x\r\n\ta|b", "x\r\n\t|\r\n\tab"}, {"LINEOPENABOVE", "|a", "|\n\na", {.count = 2}},
      {"DELETEBLANKLINES", "a\n\n|\n \t\nb", "a\n|b"}, {"DELETEBLANKLINES", "a|\n\n\nb", "a|\nb"},
      {"DELETEBLANKLINES", "a|\nb\n\n", "a|\nb\n\n"}, {"DELETEBLANKLINES", "@a\n\nb\n  \nc\n\n|d", "@a\nb\nc\n|d"},
      {"DELETEBLANKLINES", "a\n\n\n|", "a\n|"}, {"DELETEBLANKLINES", "|", "|"},

      {"INDENTSELECTION", "@a\n\nb\n|c", "@\ta\n\n\tb\n|c"}, {"INDENTSELECTION", "a@\nb|c", "\ta@\n\tb|c"},
      {"INDENTSELECTION", "|a", "\t|a"}, {"INDENTSELECTION", "a|b", "    a|b", {.expand = true}},
      {"INDENTSELECTION", "|", "\t|"}, {"INDENTSELECTION", "@a\nb|", "@\t\ta\n\t\tb|", {.count = 2}},
      {"INDENTSELECTION", "a#b\r\nc|d\r\n", "\ta#b\r\n\tc|d\r\n"},
      {"UNINDENTSELECTION", "@\ta\n  b\n     c|\n\td", "@a\nb\n c|\n\td"}, {"UNINDENTSELECTION", "  \ta|", "a|"},
      {"UNINDENTSELECTION", " |   a", "|a"}, {"UNINDENTSELECTION", "a|\n", "a|\n"},
      {"UNINDENTSELECTION", "\t\t\ta|", "\ta|", {.count = 2}},
      {"INDENTTOPREV", "\t a\n\n    b|", "\t a\n\n\t b|"}, {"INDENTTOPREV", "  a\n@b\n    c|", "  a\n@  b\n  c|"},
      {"INDENTTOPREV", "a\n   |b", "a\n|b"}, {"INDENTTOPREV", "  |a", "  |a"},
      {"TABIFYSELECTION", "@        a   b c|", "@\t\ta\tb c|"}, {"TABIFYSELECTION", "ab@   x|", "ab@\t x|"},
      {"TABIFYSELECTION", "@世  x|", "@世\tx|"}, {"TABIFYSELECTION", "@   x|", "@   x|"},
      {"TABIFYSELECTION", "@  \tx\r\n     y|", "@\tx\r\n\t y|"}, {"TABIFYSELECTION", "    a|", "    a|"},
      {"UNTABIFYSELECTION", "@\ta\tb\n\t\tc|", "@    a   b\n        c|"}, {"UNTABIFYSELECTION", "ab@\tx|", "ab@  x|"},
      {"UNTABIFYSELECTION", "@世\tx|", "@世  x|"}, {"UNTABIFYSELECTION", "\ta|", "\ta|"},
      {"UNTABIFYSELECTION", "a#\tb\tc\na\tb|\tc", "a#   b\tc\na   b|\tc"},
  };
  // clang-format on
}

TEST(CommandCasesLines, DoWhatTheySay) { checkCases(lineCases()); }
