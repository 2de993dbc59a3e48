#include "text/line/Chars.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <tuple>
#include <vector>

#include "tests/text/Pieces.h"
#include "text/line/CharTables.h"
#include "text/line/Segments.h"
#include "text/line/Words.h"

using namespace text;
using namespace std::string_literals;

namespace {

// clang-format off
const std::array<std::string, 24> trouble{
    "a", "b", " ", "\t", "\r", "\n", "\r\n", "\0"s, "\x80", "\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xFF", "\u00E9", "e\u0301",
    "\u4E2D", "\U0001F600", "\U0001F468\u200D\U0001F469", "\U0001F1E9\U0001F1EA", "\uAC00\u11A8", "\u0301", "\u200D", "\uFE0F",
    "\xED\xA0\x80"};
// clang-format on

}   // namespace

TEST(Chars, EveryCodePointDecodesBothWays) {
  for (char32_t c = 0; c < 0x110000; ++c) {
    if (c >= 0xD800 && c < 0xE000) continue;
    const std::string s = encode(c);
    for (const Char got : {decode(s + "x"), decodeLast("\x80" + s)})
      ASSERT_TRUE(got.code == c && got.bytes == static_cast<int>(s.size()) && !got.bad) << std::hex << static_cast<unsigned>(c);
    ASSERT_TRUE(validUtf8(s) && isAscii(s) == (c < 0x80));
  }
}

TEST(Chars, WhatIsNotUtf8IsOneByteEach) {
  // Surrogates, overlong forms, beyond U+10FFFF, cut sequences, lone continuations.
  for (const std::string s : {"\xED\xA0\x80", "\xED\xBF\xBF", "\xC0\xAF", "\xC1\xBF", "\xE0\x80\xAF", "\xE0\x9F\xBF",
                              "\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xFE",
                              "\xE2\x82", "\xF0\x9F\x98", "\x80", "\xC3", "\xE2(\xA1"}) {
    const Char first = decode(s), last = decodeLast(s);
    EXPECT_TRUE(first.bad && first.bytes == 1 && first.code == static_cast<unsigned char>(s[0])) << testing::PrintToString(s);
    EXPECT_TRUE(last.bad && last.bytes == 1 && last.code == static_cast<unsigned char>(s.back())) << testing::PrintToString(s);
    EXPECT_FALSE(validUtf8("some words in front, more than one block of them " + s));
  }
  EXPECT_EQ(decode("").bytes, 0);
  EXPECT_EQ(decodeLast("").bytes, 0);
}

TEST(Chars, CharactersAndClustersAreTheSameFromBothEnds) {
  std::mt19937 random(7);
  for (int round = 0; round < 4000; ++round) {
    const std::string s = randomText(random, trouble, random() % 14);
    std::vector<std::size_t> forward{0}, backward{s.size()};
    for (std::size_t i = 0; i < s.size();)
      forward.push_back(i += static_cast<std::size_t>(decode(std::string_view(s).substr(i)).bytes));
    for (std::size_t i = s.size(); i > 0;)
      backward.push_back(i -= static_cast<std::size_t>(decodeLast(std::string_view(s).substr(0, i)).bytes));
    ASSERT_EQ(forward, std::vector(backward.rbegin(), backward.rend())) << testing::PrintToString(s);
    forward = {0}, backward = {s.size()};
    for (std::size_t i = 0; i < s.size();)
      forward.push_back(i += static_cast<std::size_t>(clusterLength(std::string_view(s).substr(i))));
    for (std::size_t i = s.size(); i > 0;)
      backward.push_back(i -= static_cast<std::size_t>(clusterLengthBefore(std::string_view(s).substr(0, i))));
    ASSERT_EQ(forward, std::vector(backward.rbegin(), backward.rend())) << testing::PrintToString(s);
    const Snapshot text = inPieces(s, 1 + random() % 3);
    for (std::size_t i = 0; i + 1 < forward.size(); ++i) {
      const auto here = off(static_cast<std::int64_t>(forward[i])), there = off(static_cast<std::int64_t>(forward[i + 1]));
      ASSERT_EQ(nextChar(text, here), there);
      ASSERT_EQ(previousChar(text, there), here);
    }
  }
}

TEST(Chars, Clusters) {
  // clang-format off
  const std::pair<std::string, int> rows[] = {
      {"ab", 1}, {"\r\n", 2}, {"\n\r", 1}, {"\rx", 1}, {"e\u0301x", 3}, {"e\u0301\u0302x", 5}, {"\u0301", 2}, {"\u2764\uFE0Fx", 6},
      {"a\uFE0F", 1}, {"\u0915\u093F\u0902x", 9}, {"\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7", 8}, {"\U0001F468\u200D\U0001F469\u200D\U0001F467x", 18},
      {"\U0001F44D\U0001F3FDx", 8}, {"a\u200Db", 1}, {"\u1100\u1161\u11A8x", 9}, {"\uAC00\u11A8x", 6}, {"\xFFx", 1}, {"\xFF\u0301", 1}, {"\n\u0301", 1}};
  for (const auto& [s, length] : rows) EXPECT_EQ(clusterLength(s), length) << s;
  std::string pile = "e";
  for (int i = 0; i < 100000; ++i) pile += "\u0301";
  EXPECT_LE(clusterLength(pile), maxClusterBytes);
  EXPECT_LE(clusterLengthBefore(pile), maxClusterBytes);
  EXPECT_GT(clusterLengthBefore(pile), 0);
}

// The official cases. Where a character could hide it stands alone here, whatever it would join.
TEST(Chars, ClustersAreThoseOfTheStandard) {
  std::ifstream file(std::string(std::getenv("ZELKOR_SOURCE")) + "/tests/text/GraphemeBreakTest.txt");
  int cases = 0;
  for (std::string row; std::getline(file, row);) {
    if (row.starts_with('#')) continue;
    std::string bytes;
    std::vector<std::pair<std::size_t, bool>> borders;   // and whether a break is right there
    char32_t before = 'a';
    std::istringstream words(row);
    for (std::string sign, hex; words >> sign >> hex;) {
      const auto code = static_cast<char32_t>(std::stoul(hex, nullptr, 16));
      const bool hides = !hiddenLabel(before).empty() || !hiddenLabel(code).empty();
      borders.emplace_back(bytes.size(), sign == "\u00F7" || (hides && !(before == '\r' && code == '\n')));
      bytes += encode(code);
      before = code;
    }
    std::size_t next = 0;
    for (const auto& [at, breaks] : borders) {
      const bool picture = at > 0 && bytes.find("\u200D") != std::string::npos;   // which a joiner may continue
      ASSERT_TRUE(at == next ? breaks : picture || !breaks) << row << " at byte " << at;
      if (at == next) next += static_cast<std::size_t>(clusterLength(std::string_view(bytes).substr(at)));
    }
    ++cases;
  }
  EXPECT_EQ(cases, 602);
}

TEST(Chars, Cells) {
  const std::pair<char32_t, int> rows[] = {{'a', 1}, {0xE9, 1}, {0xAD, 1}, {0x301, 0}, {0x4E2D, 2}, {0xFF21, 2}, {0xFF71, 1}, {0x200B, 0}, {0x202E, 0},
                                           {0x1F600, 2}, {0x20000, 2}, {0x2500, 1}, {0x11A8, 0}, {0x1100, 2}, {0x3000, 2}, {0xFE0F, 0}, {0x10FFFF, 1}};
  for (const auto& [c, width] : rows) EXPECT_EQ(cells(c), width) << std::hex << static_cast<unsigned>(c);
}

TEST(Chars, SegmentsTakeTheCellsTheyNeed) {
  const std::tuple<std::string, int, int> rows[] = {   // bytes and cells of the first segment
      {"\u0915", 3, 1}, {"\u0915\u093F", 6, 2}, {"\u0B95\u0BCC", 6, 3},      // vowel signs of one and of two parts
      {"\u0E01\u0E33", 6, 2}, {"\uFF76\uFF9E", 6, 2}, {"\u1100\u1161\u11A8", 9, 2}, {"e\u0301", 3, 1},
      {"\U0001F468\u200D\U0001F469\u200D\U0001F467", 18, 2}, {"\U0001F1E9\U0001F1EA", 8, 2}, {"\u2764\uFE0F", 6, 2},
      {"\u200B", 3, 4}, {"\0"s, 1, 3}, {"\r", 1, 2}, {"\U000E0041", 4, 6}, {"\xFF", 1, 2}, {"\t", 1, 5}};
  for (const auto& [s, bytes, cells] : rows) {
    const Segment got = segmentAt(s + "x", 3, 8);
    EXPECT_EQ(got.bytes, bytes) << testing::PrintToString(s);
    EXPECT_EQ(got.cells, cells) << testing::PrintToString(s);
  }
  // clang-format on
}

TEST(Chars, CaseMappings) {
  struct Row {
    char32_t c, upper, lower, folded;
  };
  // clang-format off
  const Row rows[] = {
      {'a', 'A', 'a', 'a'}, {'Z', 'Z', 'z', 'z'}, {'[', '[', '[', '['}, {0xE4, 0xC4, 0xE4, 0xE4}, {0xD7, 0xD7, 0xD7, 0xD7},
      {0x3A3, 0x3A3, 0x3C3, 0x3C3}, {0x3C2, 0x3A3, 0x3C2, 0x3C3}, {0x416, 0x416, 0x436, 0x436}, {0x1E9E, 0x1E9E, 0xDF, 0xDF},
      {0xFF, 0x178, 0xFF, 0xFF}, {0x101, 0x100, 0x101, 0x101}, {0x1C5, 0x1C4, 0x1C6, 0x1C6},
      {0x10428, 0x10400, 0x10428, 0x10428}, {0x23A, 0x23A, 0x2C65, 0x2C65}, {0x212A, 0x212A, 0x212A, 0x212A},
      {0x17F, 0x17F, 0x17F, 0x17F}, {0x131, 0x131, 0x131, 0x131}};
  // clang-format on
  for (const auto& r : rows) {
    EXPECT_EQ(toUpper(r.c), r.upper) << std::hex << static_cast<unsigned>(r.c);
    EXPECT_EQ(toLower(r.c), r.lower) << std::hex << static_cast<unsigned>(r.c);
    EXPECT_EQ(fold(r.c), r.folded) << std::hex << static_cast<unsigned>(r.c);
  }
}

TEST(Chars, ColumnsAgreeWithCountingOneByOne) {
  std::mt19937 random(11);
  for (int round = 0; round < 3000; ++round) {
    std::string line = randomText(random, trouble, random() % 12);
    if (round % 3 == 0) line.insert(random() % (line.size() + 1), 40, 'x');
    if (round % 3 == 1)
      for (int i = 0; i < 9; ++i) line.insert(round % 2 ? line.size() : 0, round % 4 ? "\u6F22" : "\u0434");
    const int tab = 1 + static_cast<int>(random() % 9);
    std::int64_t units = 0, width = 0;
    for (std::size_t i = 0; i <= line.size();) {
      const auto byte = static_cast<std::int64_t>(i);
      const Segment s = segmentAt(std::string_view(line).substr(i), width, tab);
      ASSERT_EQ(columnOf(line, byte).value, units);
      ASSERT_EQ(byteOfColumn(line, CharColumn(units)), byte);
      ASSERT_EQ(displayColumn(line, byte, tab).value, width);
      ASSERT_EQ(byteOfDisplay(line, DisplayColumn(width), tab), byte);
      if (s.bytes == 0) break;
      ASSERT_GE(s.cells, 1) << "nothing hides";
      for (std::int64_t inside = 1; inside < s.bytes; ++inside) ASSERT_EQ(displayColumn(line, byte + inside, tab).value, width);
      for (std::int64_t inside = 1; inside < s.cells; ++inside)
        ASSERT_EQ(byteOfDisplay(line, DisplayColumn(width + inside), tab), byte);
      units += s.units;
      width += s.cells;
      i += static_cast<std::size_t>(s.bytes);
    }
    ASSERT_EQ(byteOfColumn(line, CharColumn(units + 5)), static_cast<std::int64_t>(line.size()));
    ASSERT_EQ(byteOfDisplay(line, DisplayColumn(width + 5), tab), static_cast<std::int64_t>(line.size()));
  }
  EXPECT_EQ(byteOfColumn("\U0001F600x", CharColumn(1)), 0);   // between the two halves
  EXPECT_EQ(columnOf("\U0001F600x", 2).value, 0);             // inside the character
}
