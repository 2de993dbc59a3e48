// Which words differ in a pair of lines, and which lines make pairs.
#include "text/diff/WordDiff.h"

#include <gtest/gtest.h>

#include <random>

#include "text/line/Chars.h"

using namespace text;

namespace {

// "[old>new]" in what is equal.
std::string shown(std::string_view before, std::string_view after, const DiffRules& rules = {}) {
  std::string all;
  std::int64_t at = 0;
  const auto part = [](std::string_view line, std::int64_t begin, std::int64_t end) {
    return std::string(line.substr(std::size_t(begin), std::size_t(end - begin)));
  };
  for (const WordHunk& h : diffWords(before, after, rules)) {
    all += part(before, at, h.beforeBegin) + "[" + part(before, h.beforeBegin, h.beforeEnd) + ">" +
           part(after, h.afterBegin, h.afterEnd) + "]";
    at = h.beforeEnd;
  }
  return all + part(before, at, std::ssize(before));
}

TEST(WordDiff, MarksWordsThatDiffer) {
  DiffRules loose;
  loose.ignoreBlanks = loose.ignoreCase = true;
  EXPECT_EQ(shown("a", "a"), "a");
  EXPECT_EQ(shown("", "a"), "[>a]");
  EXPECT_EQ(shown("wire [3:0] data_in;", "wire [7:0] data_out;"), "wire [[3>7]:0] [data_in>data_out];");
  EXPECT_EQ(shown("f(a, b)", "f(a, c, b)"), "f(a, [>c, ]b)");
  EXPECT_EQ(shown("one two three four", "one 2 3 four"), "one [two three>2 3] four");
  EXPECT_EQ(shown("a=b", "a = b"), "a[> ]=[> ]b");
  EXPECT_EQ(shown("a=B", "A = b", loose), "a=B");
  EXPECT_EQ(shown("x \xc3\xa4\xc3\xb6 y", "x \xc3\xa4\xc3\xbc y"), "x [\xc3\xa4\xc3\xb6>\xc3\xa4\xc3\xbc] y");
  EXPECT_EQ(shown("a e b", "a e\xcc\x81 b"), "a [e>e\xcc\x81] b");
  EXPECT_EQ(shown("(", "(\xcc\x81"), "[(>(\xcc\x81]");
  EXPECT_EQ(shown("x\xff y", "x\xfe y"), "x[\xff>\xfe] y");
  // Long: what is equal at both ends is found, the rest is one hunk.
  std::string filler;
  while (filler.size() < 200000) filler += "\xc3\xa4 x";
  EXPECT_EQ(diffWords("a " + filler, "a y " + filler), (std::vector<WordHunk>{{2, 2, 2, 4}}));
  EXPECT_EQ(diffWords("a b " + filler + " c d", "a e " + filler + " f d"), (std::vector<WordHunk>{{2, 200006, 2, 200006}}));
  const std::string word(200000, 'x');   // within a word of any length characters stay whole
  EXPECT_EQ(diffWords(word + "\xc3\xa4" + word, word + "\xc3\xa5" + word).size(), 1u);
}

TEST(WordDiff, HunksLeadFromOneLineToTheOther) {
  std::mt19937 random(5);
  for (int round = 0; round < 3000; ++round) {
    const auto make = [&] {
      std::string line;
      for (unsigned n = random() % 14; n > 0; --n)
        line += std::vector{"a", "b", " ", "  ", "(", "\xc3\xa4", "\xcc\x81", "\xff", "\xc3"}[random() % 9];
      return line;
    };
    const std::string before = make(), after = make();
    std::string built;
    std::int64_t at = 0;
    for (const WordHunk& h : diffWords(before, after)) {
      ASSERT_LE(at, h.beforeBegin);
      built += before.substr(std::size_t(at), std::size_t(h.beforeBegin - at));
      ASSERT_EQ(std::int64_t(built.size()), h.afterBegin);
      built += after.substr(std::size_t(h.afterBegin), std::size_t(h.afterEnd - h.afterBegin));
      at = h.beforeEnd;
    }
    ASSERT_EQ(built + before.substr(std::size_t(at)), after);
  }
}

TEST(WordDiff, PairsLinesThatAreAlike) {
  const auto pairs = [](const std::string& before, const std::string& after) {
    const Snapshot a(before), b(after);
    std::string all;
    for (const LinePair& pair : pairLines(a, b, {LineNo(0), LineNo(a.lineCount()), LineNo(0), LineNo(b.lineCount())}))
      all += std::to_string(pair.before.value) + "=" + std::to_string(pair.after.value) + " ";
    return all;
  };
  EXPECT_EQ(pairs("input clk;\noutput done;", "// ports\ninput wire clk;\n\noutput reg done;"), "0=1 1=3 ");
  EXPECT_EQ(pairs("a b c\nd e f", "x y z"), "");
  EXPECT_EQ(pairs("same(1)\nsame(2)", "same(2)"), "1=0 ");
  // Many lines: as good where they are alike but for digits.
  std::string before, after = "first\n", expected;
  for (int i = 0; i < 3000; ++i) {
    before += "signal_" + std::string(1, char('a' + i % 26)) + " <= value(" + std::to_string(i) + ");\n";
    after += "signal_" + std::string(1, char('a' + i % 26)) + " <= value(" + std::to_string(i + 7) + ");\n";
    expected += std::to_string(i) + "=" + std::to_string(i + 1) + " ";
  }
  EXPECT_EQ(pairs(before, after), expected + "3000=3001 ");
}

}   // namespace
