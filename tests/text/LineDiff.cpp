// Which lines differ: by table, and against the shortest possible at random.
#include "text/diff/LineDiff.h"

#include <gtest/gtest.h>

#include <random>

using namespace text;

namespace {

std::string lines(const Snapshot& text, LineNo begin, LineNo end) {
  std::string all;
  for (LineNo line = begin; line < end; ++line) all += text.line(line) + "|";
  return all;
}

// "1-2>1-3": lines 1 to 2 of the one became 1 to 3 of the other; half-open.
std::string shown(const std::vector<LineHunk>& hunks) {
  std::string all;
  for (const LineHunk& h : hunks)
    all += std::to_string(h.beforeBegin.value) + "-" + std::to_string(h.beforeEnd.value) + ">" +
           std::to_string(h.afterBegin.value) + "-" + std::to_string(h.afterEnd.value) + (h.nothing ? "! " : " ");
  return all;
}

TEST(LineDiff, FindsWhatAPersonWouldCallTheChange) {
  struct Case {
    const char *before, *after, *hunks;
  };
  for (const Case& c : {Case{"", "", ""},
                        {"a\nb\n", "a\nb\n", ""},
                        {"a\nb", "a\r\nb", ""},   // line ends make no difference
                        {"a\nb\nc\n", "a\nx\nc\n", "1-2>1-2 "},
                        {"a\nb\nc\n", "new\na\nb\nc\n", "0-0>0-1 "},   // all lines moved, one differs
                        {"a\nb\nc\n", "b\nc\n", "0-1>0-0 "},
                        {"a\nb\nc\nd\ne\n", "a\nc\nd\nx\ny\ne\n", "1-2>1-1 4-4>3-5 "},
                        {"", "a\n", "0-0>0-1 "},
                        {"a\nb", "", "0-2>0-1 "}}) {
    EXPECT_EQ(shown(diffLines(Snapshot(c.before), Snapshot(c.after))), c.hunks) << c.before << " to " << c.after;
  }
}

// What the rules ignore, line by line: "!" in front of lines that hold nothing else.
TEST(LineDiff, RulesSayWhatCounts) {
  const auto bare = [](const char* text, const DiffRules& rules) {
    BareLines lines(Snapshot(text), rules, rules.commentsBefore);
    std::string all;
    for (std::string_view line; lines.next(&line);) (all += lines.nothing() ? "!" : "").append(line) += "|";
    return all;
  };
  const auto c = std::make_shared<const Highlighter>(LanguageTables{.singleComments = {"//"},
                                                                    .multiCommentStart = {"/*"},
                                                                    .multiCommentEnd = {"*/"},
                                                                    .stringDelims = {"\""},
                                                                    .escapeChar = "\\"});
  DiffRules blanks, letters, comments, all;
  blanks.ignoreBlanks = all.ignoreBlanks = true;
  letters.ignoreCase = all.ignoreCase = true;
  comments.commentsBefore = comments.commentsAfter = all.commentsBefore = all.commentsAfter = c;
  EXPECT_EQ(bare(" a \t b\n\n \t\nc\xc2\xa0\xe3\x80\x80\xff", blanks), "ab|!|!|c\xff|");
  EXPECT_EQ(bare("aB\xc3\x84 \xce\xa3\xcf\x82\n", letters), "ab\xc3\xa4 \xcf\x83\xcf\x83||");
  EXPECT_EQ(bare("a // b\n  // c\n\nd /* e */ f/**/\n/* g\n\nh */ i\n\"//\" j", comments), "a|!||d f|!|!|i|\"//\" j|");
  EXPECT_EQ(bare("A /* b */ C // d\n\t//", all), "ac|!|");

  const Snapshot before("a\nb // one\nc\n"), after("// new\na\nb // two\n\nC\n");
  EXPECT_EQ(shown(diffLines(before, after, all)), "0-0>0-1! 2-2>3-4! ");
}

TEST(LineDiff, HunksLeadFromOneTextToTheOtherByTheFewestLines) {
  std::mt19937 random(11);
  for (int round = 0; round < 2000; ++round) {
    const auto make = [&] {
      std::string text;
      for (unsigned n = random() % 12; n > 0; --n) text += std::string(1, char('a' + random() % 3)) + "\n";
      return Snapshot(text);
    };
    const Snapshot before = make(), after = make();
    const auto hunks = diffLines(before, after);
    std::string built;
    LineNo at;
    std::int64_t differing = 0;
    for (const LineHunk& h : hunks) {
      EXPECT_TRUE(at == LineNo(0) || h.beforeBegin > at) << "equal lines lie between";
      built += lines(before, at, h.beforeBegin) + lines(after, h.afterBegin, h.afterEnd);
      at = h.beforeEnd;
      differing += h.beforeEnd - h.beforeBegin + (h.afterEnd - h.afterBegin);
    }
    built += lines(before, at, LineNo(before.lineCount()));
    ASSERT_EQ(built, lines(after, LineNo(0), LineNo(after.lineCount()))) << shown(hunks);
    // The longest common subsequence says how few it can be.
    const auto n = std::size_t(before.lineCount()), m = std::size_t(after.lineCount());
    std::vector<std::vector<std::int64_t>> common(n + 1, std::vector<std::int64_t>(m + 1, 0));
    for (std::size_t i = 1; i <= n; ++i)
      for (std::size_t j = 1; j <= m; ++j)
        common[i][j] = before.line(LineNo(std::int64_t(i) - 1)) == after.line(LineNo(std::int64_t(j) - 1))
                           ? common[i - 1][j - 1] + 1
                           : std::max(common[i - 1][j], common[i][j - 1]);
    EXPECT_EQ(differing, before.lineCount() + after.lineCount() - 2 * common[n][m]) << shown(hunks);
  }
}

}   // namespace
