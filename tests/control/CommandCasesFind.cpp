#include "tests/control/CommandCases.h"

namespace {

constexpr text::SearchOptions kCase{.matchCase = true}, kWhole{.wholeWord = true}, kRegex{.regex = true},
    kWholeRegex{.wholeWord = true, .regex = true};

}   // namespace

std::vector<CommandCase> findCases() {
  const auto stateIs = [](auto member, bool on) { return [member, on](EditorFixture&) { EXPECT_EQ(member(searchState()), on); }; };
  const auto matchCase = [](const SearchState& s) { return s.options.matchCase; };
  const auto wholeWord = [](const SearchState& s) { return s.options.wholeWord; };
  const auto preserve = [](const SearchState& s) { return s.preserveCase; };
  // clang-format off
  return {
      {"FIND", "a|", "a|", {.check = [](EditorFixture& f) { EXPECT_EQ(f.host.findDialogs, 1); }}},
      {"FINDREPLACE", "a|", "a|", {.check = [](EditorFixture& f) { EXPECT_EQ(f.host.replaceDialogs, 1); }}},
      {"SETFINDTEXT",
       "a|",
       "a|",
       {.argument = QStringLiteral("ö x"),
        .check = [](EditorFixture&) { EXPECT_EQ(searchState().findText, QStringLiteral("ö x")); }}},
      {"SETREPLACETEXT",
       "a|",
       "a|",
       {.argument = QStringLiteral("r"),
        .check = [](EditorFixture&) { EXPECT_EQ(searchState().replaceText, QStringLiteral("r")); }}},
      {"TOGGLECASESENSITIVE", "a|", "a|", {.check = stateIs(matchCase, true)}},
      {"TOGGLECASESENSITIVE", "a|", "a|", {.search = kCase, .check = stateIs(matchCase, false)}},
      {"TOGGLEWHOLEWORD", "a|", "a|", {.check = stateIs(wholeWord, true)}},
      {"TOGGLEPRESERVECASE", "a|", "a|", {.check = stateIs(preserve, true)}},
      {"TOGGLEPRESERVECASE", "a|", "a|", {.preserveCase = true, .check = stateIs(preserve, false)}},

      {"FINDNEXT", "|ab Ab ab", "@ab| Ab ab", {.find = "ab"}}, {"FINDNEXT", "@ab| Ab ab", "ab @Ab| ab", {.find = "ab"}},
      {"FINDNEXT", "@ab| Ab ab", "ab Ab @ab|", {.find = "ab", .search = kCase}},
      {"FINDNEXT", "|xab ab", "xab @ab|", {.find = "ab", .search = kWhole}},
      {"FINDNEXT", "|ab ab ab", "ab @ab| ab", {.count = 2, .find = "ab"}},
      {"FINDNEXT", "ab x|", "@ab| x", {.find = "ab", .note = "Went on from the start of the text"}},
      {"FINDNEXT", "a@b|", "a@b|", {.find = "zz", .note = "\"zz\" was not found"}},
      {"FINDNEXT", "a|b", "a|b", {.note = "There is no find text"}}, {"FINDNEXT", "|x\r\ny", "@x\r\ny|", {.find = "x\ny"}},
      {"FINDNEXT", "|a12b3", "a@12|b3", {.find = "\\d+", .search = kRegex}},
      {"FINDNEXT", "|a\nb\nc", "a\nb\n|c", {.count = 2, .find = "^", .search = kRegex}},
      {"FINDPREV", "ab Ab @ab|", "ab @Ab| ab", {.find = "ab"}}, {"FINDPREV", "ab| x ab", "@ab| x ab", {.find = "ab"}},
      {"FINDPREV", "|ab x ab", "ab x @ab|", {.find = "ab", .note = "Went on from the end of the text"}},
      {"FINDNEXTWORD", "a|b abc ab", "ab abc @ab|"},
      {"FINDNEXTWORD", "ab abc a|b", "@ab| abc ab", {.note = "Went on from the start of the text"}},
      {"FINDNEXTWORD", " | ", " | "}, {"FINDNEXTWORD", "@a.c| abc a.c", "a.c abc @a.c|", {.search = kRegex}},
      {"FINDPREVWORD", "ab abc a|b", "@ab| abc ab"},
      {"FINDMARKALL",
       "|ab\nx\nab ab\n",
       "|ab\nx\nab ab\n",
       {.find = "ab",
        .note = "3 found",
        .check =
            [](EditorFixture& f) {
              EXPECT_EQ(f.model->bookmarks(), (std::vector{text::LineNo(0), text::LineNo(2)}));
            }}},
      {"REPLACE", "@ab| ab", "x @ab|", {.find = "ab", .replace = "x"}},
      {"REPLACE", "|ab ab", "@ab| ab", {.find = "ab", .replace = "x"}},
      {"REPLACE", "@ab|", "x|", {.find = "ab", .replace = "x"}},
      {"REPLACE", "@ab| ab ab", "x x @ab|", {.count = 2, .find = "ab", .replace = "x"}},
      {"REPLACE", "@k=v| k=w", "v:k @k=w|", {.find = "(\\w)=(\\w)", .replace = "$2:$1", .search = kRegex}},
      {"REPLACEALLINBUFFER", "ab| AB abc", "x| x xc", {.find = "ab", .replace = "x", .note = "3 replaced"}},
      {"REPLACEALLINBUFFER", "ab| AB Abc", "xy| XY Xyc", {.find = "ab", .replace = "xy", .preserveCase = true}},
      {"REPLACEALLINBUFFER", "|\ta\tb", "|  a  b", {.find = "\t", .replace = "  "}},
      {"REPLACEALLINBUFFER", "a1|b22", "a<1>|b<22>", {.find = "(\\d+)", .replace = "<$1>", .search = kRegex}},
      {"REPLACEALLINBUFFER", "a,b|\r\n", "a\r\nb|\r\n", {.find = ",", .replace = "\\n", .search = kRegex}},
      {"REPLACEALLINBUFFER", "a|(", "a|(", {.find = "(", .replace = "x", .search = kRegex}},
      {"REPLACEALLINBUFFER", "a|", "a|", {.find = "zz", .note = "0 replaced"}},
      // What decides about a find may stand around it, and it has its groups.
      {"REPLACE", "@foo|(1) foo(2)", "X(1) @foo|(2)", {.find = "foo(?=\\()", .replace = "X", .search = kRegex}},
      {"REPLACE", "foo@bar| foobar", "foo<bar> foo@bar|", {.find = "(foo)\\K(bar)", .replace = "<$2>", .search = kRegex}},
      {"REPLACE", "@foo| foo(2)", "foo @foo|(2)", {.find = "foo(?=\\()", .replace = "X", .search = kRegex}},
      {"REPLACEALLINBUFFER",
       "foobar| bar",
       "foo<bar>| bar",
       {.find = "(foo)\\K(bar)", .replace = "<$2>", .search = kRegex, .note = "1 replaced"}},
      {"FINDNEXT", "|xa.b a.b", "xa.b @a.b|", {.find = "\\Qa.b", .search = kWholeRegex}},
      // Line ends: any kind is "\n"; a new one is like its neighbours, one that a group took stays.
      {"REPLACEALLINBUFFER", "a\r\nb\nc|", "a;b;c|", {.find = "\\n", .replace = ";", .search = kRegex, .note = "2 replaced"}},
      {"REPLACEALLINBUFFER",
       "x\r\nbegin\nend|",
       "x\r\n[begin\nend]|",
       {.find = "(begin\\nend)", .replace = "[$1]", .search = kRegex}},
      {"REPLACEALLINBUFFER", "a\r\nb a\nb|", "x x|", {.find = "a\nb", .replace = "x", .search = kRegex, .note = "2 replaced"}},
      {"REPLACEALLINBUFFER", "a.\r\nb.|", "x|", {.find = "\\Qa.\r\nb.", .replace = "x", .search = kRegex}},
      {"REPLACEALLINBUFFER", "ab\r\n|", "x\r\n|", {.find = "(?x)a\nb", .replace = "x", .search = kRegex}},
      {"REPLACEALLINBUFFER", "a,\r\nb,\n|", "a\r\n\r\nb\n\n|", {.find = ",", .replace = "\\n", .search = kRegex}},
      {"REPLACEALLINBUFFER", "a,\nb,\r\n|", "a\n\nb\r\n\r\n|", {.find = ",", .replace = "\n"}},
      {"REPLACEALLINSELECTION", "ab @ab ab| ab", "ab @x x| ab", {.find = "ab", .replace = "x", .note = "2 replaced"}},
      {"REPLACEALLINSELECTION", "ab|", "ab|", {.find = "ab", .replace = "x", .note = "0 replaced"}},
      {"REPLACEALLINSELECTION", "a#aa\na\naa|a", "a#xa\na\nax|a", {.find = "a", .replace = "x", .note = "2 replaced"}},
  };
  // clang-format on
}

TEST(CommandCasesFind, DoWhatTheySay) { checkCases(findCases()); }
