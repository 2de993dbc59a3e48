// Merging two changed texts: by table, and at random against what git makes of them.
#include "text/diff/Merge.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "tests/support/files/TempFolder.h"

using namespace text;
using namespace testing_files;

namespace {

MergedText merged(const std::string& base, const std::string& left, const std::string& right) {
  const auto made = [](const std::string& bytes) {
    return Snapshot(bytes, bytes.find('\r') != bytes.npos && bytes.find('\n') == bytes.npos ? LineMode::cr : LineMode::lf);
  };
  const Snapshot b = made(base), l = made(left), r = made(right);
  return mergedText(b, l, r, merge3(b, l, r), {"L", "B", "R"});
}

TEST(Merge, TakesWhatEachSideChanged) {
  struct Case {
    const char *base, *left, *right, *result;
    int conflicts, lineEnds;
  };
  for (const Case& c : {
           Case{"a\nb\nc\n", "A\nb\nc\n", "a\nb\nC\n", "A\nb\nC\n", 0, 0},
           Case{"a\nb\nc\n", "a\nx\nc\n", "a\nx\nc\n", "a\nx\nc\n", 0, 0},
           Case{"a\nb\n", "a\nx\n", "a\ny\n", "a\n<<<<<<< L\nx\n||||||| B\nb\n=======\ny\n>>>>>>> R\n", 1, 0},
           Case{"a\nb\n", "a\n", "a\ny\n", "a\n<<<<<<< L\n||||||| B\nb\n=======\ny\n>>>>>>> R\n", 1, 0},
           Case{"a\nb\nc\n", "A\nb\nc\n", "a\nB\nc\n", "<<<<<<< L\nA\nb\n||||||| B\na\nb\n=======\na\nB\n>>>>>>> R\nc\n", 1,
                0},   // they touch
           Case{"", "x\n", "", "x\n", 0, 0},
           Case{"a\nb", "a", "A2\na\nb", "A2\na", 0, 0},
           Case{"a\nb\nc", "a\nb\nc\nd", "a\nB\nc", "a\nB\nc\nd", 0, 0},
           // the ends of lines: of the side that changed them
           Case{"a\nb\nc\n", "a\r\nb\r\nc\r\n", "a\nb\nX\n", "a\r\nb\r\nX\n", 0, 0},
           Case{"a\nb\nc\n", "a\nb\nX\n", "a\r\nb\r\nc\r\n", "a\r\nb\r\nX\n", 0, 0},
           Case{"a\r\nb\r\n", "a\r\nx\r\n", "a\r\ny\r\n", "a\r\n<<<<<<< L\r\nx\r\n||||||| B\r\nb\r\n=======\r\ny\r\n>>>>>>> R\r\n",
                1, 0},
           Case{"a\rb\r", "a\nb\n", "a\r\nX\r\n", "a\nX\r\n", 0, 1},
           Case{"a\nb\nc", "a\nb", "a\r\nb\r\nc", "a\r\nb", 0, 0},
       }) {
    const MergedText result = merged(c.base, c.left, c.right);
    EXPECT_EQ(result.text.bytes(), c.result);
    EXPECT_EQ(result.conflicts, c.conflicts) << c.result;
    EXPECT_EQ(result.lineEndConflicts, c.lineEnds) << c.result;
  }
}

// Lines that occur once leave one way only to see the changes; there the result is that of git. Repeated lines can be put together in
// several ways; there it must be true to both sides.
TEST(Merge, IsWhatGitMakes) {
  const TempFolder folder(TempFolder::Where::memory);
  std::mt19937 random(7);
  const auto pick = [&](unsigned n) { return random() % n; };
  const auto join = [](const std::vector<std::string>& lines) {
    std::string all;
    for (const std::string& line : lines) all += line + "\n";
    return all;
  };
  int conflicts = 0, clean = 0;
  std::string script = "cd '" + folder.path() + "'";
  std::vector<MergedText> ours;
  for (int round = 0; round < 400; ++round) {
    const bool unique = round < 300;
    std::vector<std::string> base;
    for (unsigned i = 0, n = pick(30); i < n; ++i)
      base.push_back(unique ? "line " + std::to_string(i) : std::string(1, char('a' + pick(4))));
    int made = 0;
    const auto change = [&](const std::string& who) {
      std::vector<std::string> lines;
      const unsigned rate = 3 + pick(20);
      for (const std::string& line : base) {
        const unsigned what = pick(rate);
        if (what == 1) lines.push_back(unique ? (pick(2) ? who : "") + "new " + std::to_string(made++) : "b");
        if (what != 2) lines.push_back(line);
      }
      return lines;
    };
    const std::string b = join(base), l = join(change("left ")), r = join(change("right "));
    const MergedText result = merged(b, l, r);
    if (unique) {
      const std::string name = std::to_string(round);
      writeRaw(folder / ("b" + name), b), writeRaw(folder / ("l" + name), l), writeRaw(folder / ("r" + name), r);
      script += " && { git merge-file -p --diff3 -L L -L B -L R l" + name + " b" + name + " r" + name + " >o" + name + "; true; }";
      ours.push_back(result);
      ++(result.conflicts ? conflicts : clean);
    }
    EXPECT_EQ(merged(b, b, r).text.bytes(), r);
    EXPECT_EQ(merged(b, l, b).text.bytes(), l);
    EXPECT_EQ(merged(b, l, l).text.bytes(), l);
    const MergedText turned = merged(b, r, l);
    EXPECT_EQ(turned.conflicts, result.conflicts);
    EXPECT_TRUE(result.conflicts > 0 || turned.text.bytes() == result.text.bytes());
  }
  ASSERT_EQ(std::system(script.c_str()), 0);
  for (std::size_t i = 0; i < ours.size(); ++i) EXPECT_EQ(ours[i].text.bytes(), readRaw(folder / ("o" + std::to_string(i)))) << i;
  EXPECT_GT(conflicts, 20);
  EXPECT_GT(clean, 20);
}

}   // namespace
