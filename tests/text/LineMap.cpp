#include "text/line/LineMap.h"

#include <gtest/gtest.h>

#include "tests/text/Pieces.h"
#include "text/line/Chars.h"

using namespace text;

namespace {

// Letters of different widths, tabs of 13 times the unit.
struct OddWidths : Widths {
  OddWidths() {
    for (std::size_t c = 0; c < ascii.size(); ++c) ascii[c] = 1 + static_cast<double>(c % 5);
    tabUnit = 13;
  }
  double widthOf(const Segment& s, std::string_view) const override {
    return s.single && s.code < 0x7F ? ascii[s.code] : 2.5 * s.cells;
  }
};

const std::vector<std::string> pieces{"plain text ",
                                      "\t",
                                      "\u6F22",
                                      "e\u0301",
                                      "\xFF",
                                      "\u200B",
                                      std::string(1, '\0'),
                                      "abcdefgh12345678",
                                      "\U0001F1E9",
                                      "\U0001F468\u200D\U0001F469",
                                      "\u0E01\u0E33",
                                      std::string(300, 'x')};

std::string longLine(std::mt19937& random, std::size_t size) {
  std::string line;
  while (line.size() < size) line += pieces[random() % pieces.size()];
  return line;
}

}   // namespace

// Whatever was asked and changed before, a line answers as one that is walked from its start.
TEST(LineMap, AnswersAsTheWholeLineDoes) {
  const OddWidths odd;
  for (const Widths* widths : std::initializer_list<const Widths*>{nullptr, &odd}) {
    std::mt19937 random(11);
    Document d;
    LineMaps maps;
    maps.measureIn(widths);
    const auto told = d.subscribe([&](const Change& change) { maps.onChange(change, d.snapshot()); });
    std::string all = "short\n" + longLine(random, 60000) + "\n" + longLine(random, 40000) + "\nend";
    d.reset(inPieces(all, 7000));
    for (int round = 0; round < 100; ++round) {
      const Snapshot& text = d.snapshot();
      maps.checkInvariants(text);
      const int tab = round % 3 == 0 ? 8 : 3;
      for (std::int64_t n = 0; n < text.lineCount(); ++n) {
        const std::string line = text.line(LineNo(n));
        LineMap map(maps, text, LineNo(n), tab);
        for (int probe = 0; probe < 3; ++probe) {
          const auto byte = static_cast<std::int64_t>(random() % (line.size() + 1));
          const LinePlace here = walk(line, true, {}, LinePlace::atByte(byte), tab, widths);
          for (const LinePlace& most : {LinePlace::atByte(byte), LinePlace::atX(here.x), LinePlace::atX(here.x + 0.5)}) {
            const LinePlace got = map.at(most), near = map.before(most);
            ASSERT_EQ(got.byte, here.byte) << "round " << round << " line " << n;
            ASSERT_EQ(got.units, here.units);
            ASSERT_EQ(got.x, here.x);
            ASSERT_TRUE(near.within(here) && (got.byte - near.byte <= 4096 || map.length() < LineMaps::kLong));
          }
          ASSERT_EQ(map.columnOf(byte), columnOf(line, byte));
          ASSERT_EQ(map.byteOfColumn(CharColumn(here.units)), byteOfColumn(line, CharColumn(here.units)));
          if (here.byte < map.length()) {
            const auto rest = std::string_view(line).substr(static_cast<std::size_t>(here.byte));
            ASSERT_EQ(map.behind(here).byte, here.byte + segmentAt(rest, 0, 1).bytes);
          }
        }
        ASSERT_EQ(map.byteOfColumn(CharColumn(LinePlace::any)), map.length());
      }
      // One edit or two: of a piece, a break that comes or goes, a stretch that goes.
      const std::int64_t size = text.size().value;
      const auto at = [&] { return ByteOffset(static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(size + 1))); };
      ByteOffset a = at(), b = at();
      if (b < a) std::swap(a, b);
      const LineNo line = text.lineAt(a);
      const ByteOffset end = text.lineEnd(line);
      const auto piece = [&] { return pieces[random() % pieces.size()]; };
      switch (random() % 6) {
        case 0: d.apply(Edit{{a, a}, "\n"}, {}); break;
        case 1: d.apply(Edit{{end, text.lineEndWithBreak(line)}, {}}, {}); break;
        case 2: d.apply(Edit{{a, std::min(b, a + 20)}, piece()}, {}); break;
        case 3: d.apply(Edit{{a, std::min(b, a + 6000)}, longLine(random, 6000)}, {}); break;
        case 4: d.undo(); break;
        default: d.apply(std::vector<Edit>{{{a, std::min(b, a + 1)}, piece()}, {{b, b}, "new\n" + piece()}}, {});
      }
    }
  }
}

// Counting stops at its budget; the rest can be counted elsewhere; an edit costs only what is near to it.
TEST(LineMap, CountsOnce) {
  Document d;
  LineMaps maps;
  const auto told = d.subscribe([&](const Change& change) { maps.onChange(change, d.snapshot()); });
  std::string line;
  for (int i = 0; i < 1000000; ++i) line += "\u6F22a";
  d.reset(Snapshot(line));
  const std::int64_t size = d.snapshot().size().value;
  const LinePlace end = LinePlace::atByte(size);
  EXPECT_FALSE(LineMap(maps, d.snapshot(), LineNo(0), 4).reach(end, 1 << 20));
  LineSurvey rest = LineMap(maps, d.snapshot(), LineNo(0), 4).survey(size);
  EXPECT_GE(rest.from, 1 << 20);
  LineSurvey stopped = rest, stale = rest;
  stopped.run([](std::int64_t) { return false; });
  stale.run([](std::int64_t) { return true; });
  LineMap(maps, d.snapshot(), LineNo(0), 4).adopt(stopped);
  EXPECT_FALSE(LineMap(maps, d.snapshot(), LineNo(0), 4).reach(end, 1)) << "cancelled";
  rest = LineMap(maps, d.snapshot(), LineNo(0), 4).survey(size);
  rest.run([](std::int64_t) { return true; });
  LineMap(maps, d.snapshot(), LineNo(0), 4).adopt(rest);
  EXPECT_TRUE(LineMap(maps, d.snapshot(), LineNo(0), 4).reach(end, 0));
  EXPECT_EQ(LineMap(maps, d.snapshot(), LineNo(0), 4).at(end).x, 3000000);
  // Behind a character that came in at the start, and behind a break in the middle, nothing is counted anew.
  d.apply(Edit{{ByteOffset(0), ByteOffset(0)}, "x"}, {});
  LineMap(maps, d.snapshot(), LineNo(0), 4).adopt(stale);
  EXPECT_TRUE(LineMap(maps, d.snapshot(), LineNo(0), 4).reach(end, 1));
  const auto middle = ByteOffset(size / 2);
  d.apply(Edit{{middle, middle}, "\n"}, {});
  EXPECT_TRUE(LineMap(maps, d.snapshot(), LineNo(1), 4).reach(end, 1));
  EXPECT_TRUE(LineMap(maps, d.snapshot(), LineNo(0), 4).reach(end, 1));
  d.undo();
  EXPECT_TRUE(LineMap(maps, d.snapshot(), LineNo(0), 4).reach(end, 1));
  EXPECT_EQ(LineMap(maps, d.snapshot(), LineNo(0), 4).at(LinePlace::atX(1e9)).x, 3000001);
}
