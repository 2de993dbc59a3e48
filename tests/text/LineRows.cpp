#include "text/display/LineRows.h"

#include <gtest/gtest.h>

#include <random>

using namespace text;

namespace {

// The rows of a text of one line at a width in cells.
std::vector<std::string> rowsOf(const std::string& line, double width, int tabSize = 4) {
  const Snapshot text(line);
  LineMaps maps;
  LineMap map(maps, text, LineNo(0), tabSize);
  const LineRows rows(map, text, width, 1, tabSize, nullptr);
  std::vector<std::string> result;
  for (std::int64_t row = 0; row < rows.count(map); ++row) {
    const std::int64_t from = rows.begin(map, row).byte, to = rows.begin(map, row + 1).byte;
    result.push_back(line.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from)));
    EXPECT_EQ(rows.rowAt(map, from), row);
    EXPECT_EQ(rows.rowAt(map, std::max(from, to - 1)), row);
  }
  return result;
}

}   // namespace

TEST(LineRows, BeginWithWords) {
  struct Case {
    const char* line;
    double width;
    std::vector<std::string> rows;
  };
  // clang-format off
  const Case cases[] = {
      {"", 10, {""}},
      {"as wide as", 10, {"as wide as"}},
      {"as wide as it", 10, {"as wide as ", "it"}},
      {"one two three", 7, {"one two ", "three"}},
      {"one  two", 4, {"one  ", "two"}},
      {"a          b", 5, {"a     ", "     ", "b"}},
      {"    four more words", 12, {"    four ", "more ", "words"}},
      {"  abcdefghijklmnopq", 10, {"  abcdefgh", "ijklmnop", "q"}},
      {"        deep text", 10, {"        ", "deep text"}},
      {"f(alpha,beta,gamma)", 8, {"f(alpha,", "beta,", "gamma)"}},
      {"\tx y z", 6, {"\tx ", "y z"}},
      {"\u6F22\u5B57\u6F22\u5B57", 5, {"\u6F22\u5B57", "\u6F22\u5B57"}},
      {"\u6F22\u5B57\u3002x", 5, {"\u6F22", "\u5B57\u3002x"}},
      {"ab\xFF\xFE", 5, {"ab\xFF", "\xFE"}},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(rowsOf(c.line, c.width), c.rows) << c.line;
}

// Of a line of any length the rows hold all of it in order, and none is wider than it may be.
TEST(LineRows, HoldTheWholeLine) {
  std::mt19937 random(5);
  const std::vector<std::string> pieces{
      "word ", "\t", "\u6F22", "e\u0301", "\xFF", "\u200B", "abcdefgh12345678", "  ", std::string(300, 'x')};
  for (const std::size_t size : {200, 3000, 20000, 60000}) {
    for (const double width : {10.0, 37.0, 120.0}) {
      std::string line;
      while (line.size() < size) line += pieces[random() % pieces.size()];
      const Snapshot text(line);
      LineMaps maps;
      LineMap map(maps, text, LineNo(0), 4);
      const LineRows rows(map, text, width, 1, 4, nullptr);
      std::string all;
      for (const std::string& row : rowsOf(line, width)) all += row;
      EXPECT_EQ(all, line);
      map.at(LinePlace::atByte(map.length()));   // counted to its end
      const std::int64_t count = rows.count(map);
      EXPECT_EQ(rows.rowAt(map, map.length()), count - 1);
      for (std::int64_t row = 0; row < count; ++row) {
        const LinePlace from = rows.begin(map, row), to = rows.begin(map, row + 1);
        ASSERT_LT(from.byte, to.byte) << row;
        ASSERT_LE(to.x - from.x + (row > 0 ? rows.indent() : 0), width + 4) << row;   // what hangs: a blank or tab
      }
    }
  }
}

TEST(LineRows, OfLongLinesBeginWithWordsToo) {
  std::mt19937 random(7);
  std::string line = "  ";
  while (line.size() < 50000) line += std::string(1 + random() % 12, 'x') + (random() % 9 ? " " : "  ");
  for (const double width : {60.0, 119.0})
    for (const std::string& row : rowsOf(line, width)) {
      EXPECT_LE(row.size(), static_cast<std::size_t>(width));
      EXPECT_TRUE(row.starts_with('x') || row.starts_with("  x")) << row;
      EXPECT_EQ(row.back(), ' ');
    }
}
