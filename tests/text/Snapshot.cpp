// Building texts from blocks, and reading them.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/text/RandomText.h"
#include "text/store/CountBytes.h"
#include "text/store/Snapshot.h"
#include "text/store/Tree.h"

namespace {

using namespace text;

TEST(Snapshot, PlacesOutsideTheTextDoNoHarm) {
  const Snapshot s("0123456789");
  const auto range = [](std::int64_t b, std::int64_t e) { return ByteRange{ByteOffset(b), ByteOffset(e)}; };
  EXPECT_EQ(s.bytes(range(-3, 2)), "01");
  EXPECT_EQ(s.bytes(range(8, 99)), "89");
  EXPECT_EQ(s.bytes(range(20, 30)), "");
  for (const auto& text : {Snapshot(), Snapshot("ab\n")}) {
    EXPECT_EQ(text.lineAt(ByteOffset(99)).value, text.lineCount() - 1);
    EXPECT_TRUE(text.chunkAt(ByteOffset(99)).empty());
    EXPECT_TRUE(text.chunkBefore(ByteOffset(-1)).empty());
    EXPECT_EQ(text.chunkAt(ByteOffset(-1)), text.chunkBefore(ByteOffset(99)));
    // A release goes on, a debug build stops at the caller's bug.
    EXPECT_DEBUG_DEATH(EXPECT_EQ(text.lineStart(LineNo(9)), text.size()), "lineCount");
    EXPECT_DEBUG_DEATH(EXPECT_EQ(text.line(LineNo(-1)), ""), "lineCount");
    EXPECT_DEBUG_DEATH(EXPECT_EQ(text.at(text.size()), '\0'), "size");
    EXPECT_DEBUG_DEATH(EXPECT_EQ(text.at(ByteOffset(-1)), '\0'), "size");
  }
  EXPECT_TRUE(s.sameAs(Snapshot(s)));
  EXPECT_FALSE(s.sameAs(Snapshot("0123456789")));
}

TEST(Snapshot, CountingBytesAtAnyPlaceAndLength) {
  test::Random random;
  SCOPED_TRACE(random.message());
  std::string bytes(9000, 'a');
  for (auto& c : bytes)
    if (random.oneIn(7)) c = '\n';
  std::fill_n(bytes.begin() + 100, 4600, '\n');   // more than a narrow lane can count
  for (int i = 0; i < 300; ++i) {
    const auto begin = random.upTo(50), length = random.upTo(std::ssize(bytes) - begin);
    const auto part = bytes.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(length));
    const auto count = std::ranges::count(part, '\n');
    ASSERT_EQ(engine::countByte(part.data(), part.size(), '\n'), count);
    if (count == 0) continue;
    const auto nth = 1 + random.upTo(count);
    const auto behind = engine::behindNthByte(part.data(), part.size(), '\n', nth);
    ASSERT_EQ(part[behind - 1], '\n');
    ASSERT_EQ(std::count(part.begin(), part.begin() + static_cast<std::ptrdiff_t>(behind), '\n'), nth);
  }
}

}   // namespace
