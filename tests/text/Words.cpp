#include "text/line/WordNear.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/text/Pieces.h"
#include "text/line/Chars.h"

using namespace text;

namespace {

struct Marked {
  std::string bytes;
  std::int64_t from = 0, to = 0;
};

// '|' is the caret, '^' where the operation leads.
Marked parse(std::string s) {
  Marked m;
  for (const char c : s) {
    if (c == '|') m.from = static_cast<std::int64_t>(m.bytes.size());
    else if (c == '^') m.to = static_cast<std::int64_t>(m.bytes.size());
    else m.bytes += c;
  }
  return m;
}

using Move = ByteOffset (*)(const Snapshot&, ByteOffset);

}   // namespace

TEST(Words, WordAtCaret) {
  // clang-format off
  const std::pair<std::string, std::string> rows[] = {
      {"alw|..", "alw"}, {"alw..|", ".."}, {"alw.|.", ".."}, {"|alw..", "alw"}, {"..|alw", "alw"}, {"a|lw", "alw"}, {" | ", ""}, {"", ""}, {"x |", ""},
      {"x| y", "x"}, {"x |+ y", "+"}, {"x +| y", "+"}, {"a\n|b", "b"}, {"a|\nb", "a"}, {"8'h|FF", "hFF"}, {"reg_\u00E9|t", "reg_\u00E9t"},
      {"e\u0301|t\u00E9", "e\u0301t\u00E9"}, {"\u4E2D\u6587|", "\u4E2D\u6587"}, {"a\xFF|", "\xFF"}, {"x\u00A0|", ""}, {"a.|\u2764\uFE0F b", ".\u2764\uFE0F"}};
  for (const auto& [marked, word] : rows) {
    const Marked m = parse(marked);
    for (std::size_t block : {1, 2, 64}) {
      const Snapshot text = inPieces(m.bytes, block);
      const ByteRange range = wordAt(text, off(m.from));
      EXPECT_EQ(text.bytes(range), word) << marked;
      EXPECT_TRUE(!word.empty() || range.begin == off(m.from)) << marked;
    }
  }
  // clang-format on
}

TEST(Words, Moves) {
  struct Row {
    const char* name;
    Move move;
    std::string text;
  };
  // clang-format off
  const Row rows[] = {
      {"wordStartBefore", wordStartBefore, "alw ^foo|"}, {"wordStartBefore", wordStartBefore, "alw ^foo  |"},
      {"wordStartBefore", wordStartBefore, "^alw |foo"}, {"wordStartBefore", wordStartBefore, "alw^..|x"},
      {"wordStartBefore", wordStartBefore, "^fo|o"}, {"wordStartBefore", wordStartBefore, "^|"},
      {"wordStartBefore", wordStartBefore, "^  |x"}, {"wordStartBefore", wordStartBefore, "^a\r\n\t|b"},
      {"wordStartAfter", wordStartAfter, "a|lw  ^foo"}, {"wordStartAfter", wordStartAfter, "alw|..^"},
      {"wordStartAfter", wordStartAfter, "alw| ^"}, {"wordStartAfter", wordStartAfter, "x|\r\n ^y"},
      {"wordStartAfter", wordStartAfter, "x|x^"}, {"wordEndAfter", wordEndAfter, "alw|..^ x"},
      {"wordEndAfter", wordEndAfter, "a|lw^.."}, {"wordEndAfter", wordEndAfter, "alw|  ..^"},
      {"wordEndAfter", wordEndAfter, "|\n^"}, {"wordEndBefore", wordEndBefore, "foo^ bar|"},
      {"wordEndBefore", wordEndBefore, "foo^ b|ar"}, {"wordEndBefore", wordEndBefore, "foo^ |bar"},
      {"wordEndBefore", wordEndBefore, "foo^..|"}, {"wordEndBefore", wordEndBefore, "^foo|"},
      {"sentenceStartAfter", sentenceStartAfter, "On|e two.  ^Three."},
      {"sentenceStartAfter", sentenceStartAfter, "One two.|  ^Three."},
      {"sentenceStartAfter", sentenceStartAfter, "\"One?\"| ^Two"},
      {"sentenceStartAfter", sentenceStartAfter, "a|b 1.5 cd! ^ef"}, {"sentenceStartAfter", sentenceStartAfter, "a|b\n\n^cd"},
      {"sentenceStartAfter", sentenceStartAfter, "a|b\ncd^"}, {"sentenceStartAfter", sentenceStartAfter, "ab.|^"},
      {"sentenceStartBefore", sentenceStartBefore, "One two. ^Thr|ee."},
      {"sentenceStartBefore", sentenceStartBefore, "^One two. |Three."},
      {"sentenceStartBefore", sentenceStartBefore, "a.b. ^cd (x) e|"},
      {"sentenceStartBefore", sentenceStartBefore, "ab\n \n^cd\nef|"}, {"sentenceStartBefore", sentenceStartBefore, "  ^ab|"},
      {"paragraphStartBefore", paragraphStartBefore, "a\n\n^b\nc|\n"},
      {"paragraphStartBefore", paragraphStartBefore, "^a\n\n|b\nc\n"}, {"paragraphStartBefore", paragraphStartBefore, "^|a"},
      {"paragraphStartBefore", paragraphStartBefore, "^\n\n|\n"},
      {"paragraphStartBefore", paragraphStartBefore, "x\r\n \t\r\n^b|b"},
      {"paragraphStartAfter", paragraphStartAfter, "a|\nb\n \n\n^c\n"},
      {"paragraphStartAfter", paragraphStartAfter, "|\n\n^c"}, {"paragraphStartAfter", paragraphStartAfter, "a|\nb^"},
      {"paragraphStartAfter", paragraphStartAfter, "a|\r\n\r\n^b\r\n"}};
  // clang-format on
  for (const Row& row : rows) {
    const Marked m = parse(row.text);
    for (std::size_t block : {1, 3, 64})
      EXPECT_EQ(row.move(inPieces(m.bytes, block), off(m.from)).value, m.to) << row.name << " " << testing::PrintToString(row.text);
  }
}

// All moves go in their direction, end on character boundaries and reach the end of the text.
TEST(Words, MovesAlwaysArrive) {
  const std::array<std::string, 16> alphabet{"a",    "b_",     ".",      "+",          " ",    "\t", "\n",   "\r\n",
                                             "\n\n", "\u00E9", "\u0301", "\U0001F600", "\xFF", ". ", "? \"", std::string(1, '\0')};
  std::mt19937 random(3);
  for (int round = 0; round < 1500; ++round) {
    const std::string s = randomText(random, alphabet, random() % 30);
    const Snapshot text = inPieces(s, 1 + random() % 4);
    for (const Move forward : {wordStartAfter, wordEndAfter, sentenceStartAfter, paragraphStartAfter, nextChar})
      for (ByteOffset at(0); at < text.size();) {
        const ByteOffset to = forward(text, at);
        ASSERT_GT(to, at);
        ASSERT_TRUE(to == text.size() || !decode(std::string_view(s).substr(static_cast<std::size_t>(to.value))).bad ||
                    text.at(to) == '\xFF');
        at = to;
      }
    for (const Move back : {wordStartBefore, wordEndBefore, sentenceStartBefore, paragraphStartBefore, previousChar})
      for (ByteOffset at = text.size(); at > off(0);) {
        const ByteOffset to = back(text, at);
        ASSERT_LT(to, at);
        at = to;
      }
  }
}

TEST(Words, TheWordNearTheCaretHasABound) {
  const Snapshot text("ab " + std::string(20'000'000, 'x') + " cd");
  EXPECT_EQ(wordNear(text, off(1)), rng(0, 2));
  EXPECT_EQ(wordNear(text, off(3)), rng(3, 3));
  EXPECT_EQ(wordNear(text, off(10'000'000)), rng(10'000'000, 10'000'000));
  EXPECT_EQ(wordNear(text, text.size()), wordAt(text, text.size()));
  EXPECT_EQ(wordNear(Snapshot("one"), off(3)), rng(0, 3));
}
