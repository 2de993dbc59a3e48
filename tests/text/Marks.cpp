// Marks by the thousand, over many blocks of them.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/text/MarkModel.h"
#include "tests/text/RandomText.h"

namespace {

using namespace text;

TEST(Marks, ThousandsEqualAModel) {
  test::Random random;
  SCOPED_TRACE(random.message());
  Document d;
  d.reset(Snapshot(std::string(20000, 'a')));
  std::vector<test::ModelMark> model;
  const auto handle = d.subscribe([&](const Change& change) {
    for (auto& mark : model) mark.move(change);
  });
  const auto place = [&] { return random.upTo(d.snapshot().size().value + 1); };
  const auto rounds = test::steps(300);
  for (std::int64_t round = 0; round < rounds; ++round) {
    for (auto i = random.upTo(40); i > 0 && model.size() < 4000; --i) {
      const auto at = random.oneIn(3) ? place() : std::min<std::int64_t>(d.snapshot().size().value, round * 60 + i);
      const auto bias = static_cast<Bias>(random.upTo(4));
      model.push_back({d.addMark(ByteOffset(at), bias), at, bias});
    }
    for (auto i = random.upTo(15); i > 0 && !model.empty(); --i) {
      const auto index = random.upTo(std::ssize(model));
      d.removeMark(model[static_cast<std::size_t>(index)].id);
      model.erase(model.begin() + index);
    }
    std::vector<Edit> edits;
    std::int64_t at = 0;
    for (auto i = random.oneIn(3) ? random.upTo(200) : 1; i > 0; --i) {
      const auto size = d.snapshot().size().value;
      const auto begin = at + (random.oneIn(3) ? 0 : random.upTo(size - at + 1) / (random.oneIn(2) ? 1 : 50));
      const auto end = std::min(size, begin + (random.oneIn(2) ? 0 : random.upTo(random.oneIn(9) ? 3000 : 30)));
      edits.push_back({{ByteOffset(begin), ByteOffset(end)}, std::string(static_cast<std::size_t>(random.upTo(20)), 'b')});
      at = end;
    }
    d.apply(edits, {});
    if (random.oneIn(4)) d.undo();
    d.checkInvariants();
    for (const auto& mark : model) ASSERT_EQ(d.markAt(mark.id).value, mark.at) << "in round " << round;
  }
  EXPECT_GT(model.size(), 1000u);
}

TEST(Change, LinesGoWithTheirText) {
  // Lines a b c d; for each where it is after the edit, "-" when it went, and what is different with Bias::left.
  struct Case {
    std::int64_t begin, end;
    const char *text, *expected, *left;
  };
  // clang-format off
  const Case cases[] = {
      {2, 2, "x\n", "0234", "0134"},         // a line put in before b
      {1, 1, "\nx", "0234", "0234"},         // the same, typed at the end of a
      {3, 3, "\n", "0134", "0134"},
      {2, 4, "", "0-12", "0-12"},            // b went as a whole
      {2, 6, "", "0--1", "0--1"},
      {1, 4, "", "0-01", "0-01"},            // c joined to a
      {1, 5, "", "0-01", "0-01"},
      {2, 6, "x\ny\nz\n", "0124", "0124"},   // line for line
      {0, 7, "x", "---0", "---0"},
  };
  // clang-format on
  for (const auto& c : cases) {
    Document d;
    d.reset(Snapshot("a\nb\nc\nd"));
    std::string right, left;
    const auto handle = d.subscribe([&](const Change& change) {
      for (const auto bias : {Bias::right, Bias::left}) {
        for (int line = 0; line < 4; ++line) {
          bool gone = false;
          const auto at = change.mapLine(LineNo(line), d.snapshot(), bias, &gone).value;
          (bias == Bias::right ? right : left) += gone ? "-" : std::to_string(at);
        }
      }
    });
    d.apply(Edit{{ByteOffset(c.begin), ByteOffset(c.end)}, c.text}, {});
    EXPECT_EQ(right, c.expected) << c.begin << " " << c.end << " " << c.text;
    EXPECT_EQ(left, c.left) << c.begin << " " << c.end << " " << c.text;
  }
}

}   // namespace
