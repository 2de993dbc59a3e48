// Lines read in one pass are those that the snapshot gives one by one.
#include "text/line/LineReader.h"

#include <gtest/gtest.h>

#include <random>

using namespace text;

TEST(LineReader, GivesWhatTheSnapshotGives) {
  std::mt19937 random(7);
  const std::string_view alphabet = "a\r\n\xC3\xA9";
  for (int round = 0; round < 400; ++round) {
    const LineMode mode = round % 4 == 0 ? LineMode::cr : LineMode::lf;
    SnapshotBuilder builder(mode);   // every block is a chunk of its own
    for (auto blocks = random() % 6; blocks > 0; --blocks) {
      std::string block;
      for (auto length = 1 + random() % 9; length > 0; --length) block += alphabet[random() % alphabet.size()];
      builder.append(block);
    }
    const Snapshot text = builder.finish();
    const LineNo first(static_cast<std::int64_t>(random() % static_cast<unsigned>(text.lineCount())));
    LineReader reader(text, first);
    std::string_view line;
    for (LineNo i = first; i.value < text.lineCount(); ++i) {
      ASSERT_TRUE(reader.next(&line));
      EXPECT_EQ(line, text.line(i));
      EXPECT_EQ(reader.line(), i);
      EXPECT_EQ(reader.start(), text.lineStart(i));
    }
    EXPECT_FALSE(reader.next(&line));
  }
}
