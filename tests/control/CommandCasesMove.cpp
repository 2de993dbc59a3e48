#include "tests/control/CommandCases.h"

namespace {

auto marks(std::vector<std::int64_t> lines) {
  return [lines](EditorFixture& f) {
    for (std::int64_t line : lines) f.model->setBookmark(text::LineNo(line), true);
  };
  // clang-format on
}
auto bookmarksAre(std::vector<std::int64_t> lines) {
  return [lines](EditorFixture& f) {
    std::vector<std::int64_t> found;
    for (text::LineNo line : f.model->bookmarks()) found.push_back(line.value);
    EXPECT_EQ(found, lines);
  };
}
auto topIs(qint64 top) {
  return [top](EditorFixture& f) { EXPECT_EQ(f.host.top, top); };
}
auto leftIs(qint64 left) {
  return [left](EditorFixture& f) { EXPECT_EQ(f.host.left, left); };
}

}   // namespace

// The window of the cases shows 10 lines and 20 columns.
std::vector<CommandCase> moveCases() {
  // clang-format off
  return {
      {"CHARRIGHT", "|ab", "a|b"}, {"CHARRIGHT", "a|\r\nb", "a\r\n|b"}, {"CHARRIGHT", "|e\xCC\x81z", "e\xCC\x81|z"},
      {"CHARRIGHT", "ab|", "ab|"}, {"CHARRIGHT", "@ab|c", "ab|c"}, {"CHARRIGHT", "|abc@d", "abc|d"},
      {"CHARRIGHT", "|abcdef", "abcd|ef", {.count = 4}}, {"CHARRIGHT", "|", "|", {.count = 1000000}},
      {"CHARRIGHTEXTEND", "|ab", "@a|b"}, {"CHARRIGHTEXTEND", "|ab@", "a|b@"}, {"CHARRIGHTEXTEND", "a|\r\nb", "a@\r\n|b"},
      {"CHARLEFT", "ab|", "a|b"}, {"CHARLEFT", "a\r\n|b", "a|\r\nb"}, {"CHARLEFT", "e\xCC\x81|z", "|e\xCC\x81z"},
      {"CHARLEFT", "|ab", "|ab"}, {"CHARLEFT", "a@bc|d", "a|bcd"},
      {"CHARLEFTEXTEND", "ab|", "a|b@"}, {"CHARLEFTEXTEND", "ab|", "|ab@", {.count = 2}},

      {"WORDRIGHT", "|alw  (x", "alw  |(x"}, {"WORDRIGHT", "alw  |(x", "alw  (|x"}, {"WORDRIGHT", "al|w", "alw|"},
      {"WORDRIGHT", "x|  \r\n  y", "x  |\r\n  y"}, {"WORDRIGHT", "x|\r\n  y z", "x\r\n  |y z"},
      {"WORDRIGHT", "x|\n\n\ny", "x\n|\n\ny"}, {"WORDRIGHT", "|a b c d", "a b c |d", {.count = 3}}, {"WORDRIGHT", "a|", "a|"},
      {"WORDRIGHTEXTEND", "alw|..", "alw@..|"}, {"WORDRIGHTEXTEND", "alw|.. x", "alw@..| x"},
      {"WORDRIGHTEXTEND", "alw|  x", "alw@  |x"}, {"WORDRIGHTEXTEND", "|alw..", "@alw|.."},
      {"WORDLEFT", "alw  (x|", "alw  (|x"}, {"WORDLEFT", "alw..|", "alw|.."}, {"WORDLEFT", "alw  |x", "|alw  x"},
      {"WORDLEFT", "a\r\n  |b", "|a\r\n  b"}, {"WORDLEFT", "|a", "|a"},
      {"WORDLEFTEXTEND", "foo bar|", "foo |bar@"},
      {"WORDENDRIGHT", "|foo bar", "foo| bar"}, {"WORDENDRIGHT", "foo| bar", "foo bar|"},
      {"WORDENDRIGHT", "foo|\n\nbar(", "foo\n\nbar|("},
      {"WORDENDRIGHTEXTEND", "foo| bar", "foo@ bar|"},
      {"WORDENDLEFT", "red gr|een", "red| green"}, {"WORDENDLEFT", "red green|", "red| green"},
      {"WORDENDLEFT", "red |green", "red| green"}, {"WORDENDLEFT", "gre|en", "|green"},
      {"WORDENDLEFTEXTEND", "red gr|een", "red| gr@een"},

      {"LINEUP", "abc\nde|f", "ab|c\ndef"}, {"LINEUP", "ab|c", "ab|c"},
      {"LINEUP", "abcd\n\nabc|d", "abc|d\n\nabcd", {.count = 2}}, {"LINEUP", "\tab\nabcde|f", "\ta|b\nabcdef"},
      {"LINEUP", "世界\nab|c", "世|界\nabc"},
      {"LINEUPEXTEND", "abc\nde|f", "ab|c\nde@f"},
      {"LINEDOWN", "ab|c\r\ndef", "abc\r\nde|f"}, {"LINEDOWN", "abc\nd|", "abc\nd|"},
      {"LINEDOWN", "abc|d\na\nabcd", "abcd\na\nabc|d", {.count = 2}},
      {"LINEDOWNEXTEND", "ab|c\ndef", "ab@c\nde|f"},
      {"LINESTART", "  ab|c", "|  abc"}, {"LINESTART", "a\r\nb|c", "a\r\n|bc"},
      {"LINEEND", "a|b\r\nc", "ab|\r\nc"}, {"LINEEND", "a|b  ", "ab  |"}, {"LINEEND", "ab  |", "ab  |"},
      {"LINEENDEXTEND", "a|b\r\nc", "a@b|\r\nc"},
      {"HOME", "  ab|c", "  |abc"}, {"HOME", "  |abc", "|  abc"}, {"HOME", "|  abc", "  |abc"},
      {"HOMEEXTEND", "  ab|c", "  |ab@c"}, {"HOMEEXTEND", "  |ab@c", "|  ab@c"},
      {"END", "a|b  \r\nc", "ab  |\r\nc"}, {"END", "ab  |\r\nc", "ab|  \r\nc"}, {"END", "a\n|\n", "a\n|\n"},
      {"GOTOINDENTATION", "\t  ab|c", "\t  |abc"}, {"GOTOINDENTATION", "|\t ", "\t |"},
      {"DOCUMENTSTART", "ab\ncd|", "|ab\ncd"}, {"DOCUMENTSTART", "ab\ncd|", "|ab\ncd", {.argument = 0}},
      {"DOCUMENTSTARTEXTEND", "ab\nc|d", "|ab\nc@d"},
      {"DOCUMENTEND", "a|b\r\n", "ab\r\n|"},
      {"DOCUMENTENDEXTEND", "a|b\r\n", "a@b\r\n|"},
      {"GOTOLINE", "a|\nb\nc", "a\n|b\nc", {.argument = 1}},
      {"GOTOLINE", "a|\nb\nc", "a\nb\n|c", {.argument = QVariant::fromValue<qlonglong>(5000000000)}},
      {"GOTOLINE", "a\nb|", "|a\nb", {.argument = QStringLiteral("x")}}, {"GOTOLINE", "a\nb|", "|a\nb", {.argument = -3}},
      {"GOTOMATCHBRACE", "f|(a[1])", "f(a[1]|)"}, {"GOTOMATCHBRACE", "f(a[1])|", "f|(a[1])"},
      {"GOTOMATCHBRACE", "|{\n{}\n", "|{\n{}\n"},

      {"SENTENCERIGHT", "|One two. Three.", "One two. |Three."}, {"SENTENCERIGHT", "One. Two|.", "One. Two.|"},
      {"SENTENCELEFT", "One two. Thr|ee.", "One two. |Three."}, {"SENTENCELEFT", "One two. |Three.", "|One two. Three."},
      {"PARADOWN", "a|\nb\n\nc\n", "a\nb\n\n|c\n"}, {"PARADOWN", "a\n\nb|", "a\n\nb|"},
      {"PARAUP", "a\n\nb\nc|", "a\n\n|b\nc"}, {"PARAUP", "a\nb\n\n|c", "|a\nb\n\nc"},
      {"SELECTPARA", "a\n\nb|\nc\n\nd", "a\n\n@b\nc|\n\nd"},
      {"SELECTLINE", "a\nb|c\r\nd", "a\n@bc\r\n|d"}, {"SELECTLINE", "a\nb|c\nd\ne", "a\n@bc\nd\n|e", {.count = 2}},
      {"SELECTLINE", "a\nb|", "a\n@b|"},
      {"SELECTALL", "a\nb|c\n", "@a\nbc\n|"}, {"SELECTALL", "|", "|"},
      {"SELECTSWAPANCHOR", "a@b|c", "a|b@c"}, {"SELECTSWAPANCHOR", "a·#\nbcd|", "a·|\nbcd#"},

      {"PAGEDOWN",
       "x|\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n",
       "x\n1\n2\n3\n4\n5\n6\n7\n8\n9|\n10\n11\n12\n",
       {.check = topIs(4)}},
      {"PAGEDOWN", "x|\n1\n2", "x\n1\n2|", {.check = topIs(0)}},
      {"PAGEDOWNEXTEND", "x|\n1\n2", "x@\n1\n2|"},
      {"PAGEUP", "0\n1\n2\n3\n4\n5\n6\n7\n8\n9\na|", "0\n1|\n2\n3\n4\n5\n6\n7\n8\n9\na", {.top = 1, .check = topIs(0)}},
      {"PAGEUPEXTEND", "0\n1\n2|", "0|\n1\n2@"},
      {"WINDOWSTART", "ab\ncd\ne|f", "ab\nc|d\nef", {.top = 1}},
      {"WINDOWEND", "a|\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11", "a\n1\n2\n3\n4\n5\n6\n7\n8\n9\n1|0\n11", {.top = 1}},
      {"WINDOWEND", "a|\nb", "a\nb|"},
      {"WINDOWLEFTEDGE", "abcdefgh|ij", "abc|defghij", {.left = 3}},
      {"WINDOWRIGHTEDGE", "|0123456789012345678901234", "0123456789012345678901|234", {.left = 3}},
      {"WINDOWRIGHTEDGE", "|ab", "ab|"},
      {"WINDOWSCROLLUP", "a|\nb", "a|\nb", {.top = 1, .check = topIs(0)}},
      {"WINDOWSCROLLUP", "a|\nb", "a|\nb", {.top = 0, .check = topIs(0)}},
      {"WINDOWSCROLLDOWN", "a|\nb\nc\nd", "a|\nb\nc\nd", {.count = 2, .top = 1, .check = topIs(3)}},
      {"WINDOWSCROLLDOWN", "a|\nb", "a|\nb", {.count = 9, .check = topIs(1)}},
      {"WINDOWSCROLLTOTOP", "a\nb\nc|", "a\nb\nc|", {.check = topIs(2)}},
      {"WINDOWSCROLLTOCENTER", "0\n1\n2\n3\n4\n5\n6|", "0\n1\n2\n3\n4\n5\n6|", {.check = topIs(1)}},
      {"WINDOWSCROLLTOCENTER", "a|", "a|", {.check = topIs(0)}},
      {"WINDOWSCROLLTOBOTTOM", "0\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10|", "0\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10|", {.check = topIs(1)}},
      {"WINDOWSCROLLRIGHT", "a|", "a|", {.count = 3, .check = leftIs(3)}},
      {"WINDOWSCROLLLEFT", "a|", "a|", {.left = 2, .check = leftIs(1)}},

      {"BOOKMARKTOGGLE", "a\nb|", "a\nb|", {.check = bookmarksAre({1})}},
      {"BOOKMARKTOGGLE", "a\nb|", "a\nb|", {.prepare = marks({0, 1}), .check = bookmarksAre({0})}},
      {"BOOKMARKNEXT", "a|\nb\nc", "a\nb\n|c", {.prepare = marks({0, 2})}},
      {"BOOKMARKNEXT", "a\nb\nc|", "|a\nb\nc", {.prepare = marks({0, 2})}}, {"BOOKMARKNEXT", "a|", "a|"},
      {"BOOKMARKPREV", "a\nb|\nc", "|a\nb\nc", {.prepare = marks({0, 2})}},
      {"BOOKMARKPREV", "|a\nb\nc", "a\nb\n|c", {.prepare = marks({0, 2})}},
      {"BOOKMARKPREV", "a\nb\nc|", "|a\nb\nc", {.count = 2, .prepare = marks({0, 1, 2})}},
      {"BOOKMARKCLEARALL", "a\nb|", "a\nb|", {.prepare = marks({0, 1}), .check = bookmarksAre({})}},
      {"BOOKMARKJUMPTOFIRST", "a\nb\nc|", "a\n|b\nc", {.prepare = marks({1, 2})}},
      {"BOOKMARKJUMPTOLAST", "a|\nb\nc", "a\n|b\nc", {.prepare = marks({0, 1})}}, {"BOOKMARKJUMPTOLAST", "a|", "a|"},
  };
}

TEST(CommandCasesMove, DoWhatTheySay) { checkCases(moveCases()); }
