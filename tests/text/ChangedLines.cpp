#include "text/diff/ChangedLines.h"

#include <gtest/gtest.h>

#include "tests/text/RandomText.h"
#include "text/line/SameLines.h"

using namespace text;

namespace {

// Outside the parts both texts are equal line by line, and between two of them at least one line is.
void expectParts(const ChangedLines& changed, const Snapshot& file, const Snapshot& now) {
  LineNo before, after;
  bool first = true;
  const auto equalUpTo = [&](LineNo b, LineNo a) { ASSERT_TRUE(sameLines(file, before, b, now, after, a)); };
  for (const ChangedLines::Part& part : changed.parts()) {
    const LineHunk& h = part.lines;
    ASSERT_TRUE(h.beforeBegin < h.beforeEnd || h.afterBegin < h.afterEnd);
    ASSERT_TRUE(first || h.afterBegin > after);
    equalUpTo(h.beforeBegin, h.afterBegin);
    before = h.beforeEnd;
    after = h.afterEnd;
    first = false;
  }
  equalUpTo(LineNo(file.lineCount()), LineNo(now.lineCount()));
}

void refine(ChangedLines& changed, const Snapshot& file, const Snapshot& now) {
  std::vector<ChangedLines::Found> found;
  for (const ChangedLines::Part& part : changed.parts())
    if (!part.exact) found.push_back({part.lines, hunksIn(file, now, part.lines, 1 << 20)});
  changed.refine(found);
}

}   // namespace

TEST(ChangedLines, RandomEditsKeepWhatIsOutsideEqual) {
  test::Random random;
  SCOPED_TRACE(random.message());
  for (int run = 0; run < 12; ++run) {
    Document document;
    std::string text;   // many equal lines
    for (int i = 0; i < 60; ++i) text += random.text(random.upTo(4)) + "\n";
    document.reset(Snapshot(text));
    const Snapshot file = document.snapshot();
    ChangedLines changed(run == 0 ? 3 : 50'000);
    const auto heard = document.subscribe([&](const Change& change) { changed.edit(change); });
    for (std::int64_t step = 0, steps = test::steps(150); step < steps; ++step) {
      const std::int64_t size = document.snapshot().size().value;
      std::vector<Edit> edits;
      std::int64_t from = 0;
      for (std::int64_t i = 0, count = random.oneIn(3) ? 1 + random.upTo(8) : 1; i < count && from < size; ++i) {
        const std::int64_t begin = from + random.upTo(size - from), end = std::min(size, begin + random.upTo(6));
        edits.push_back({{ByteOffset(begin), ByteOffset(end)}, random.oneIn(3) ? "" : random.text(random.upTo(5))});
        from = end + 1;
      }
      if (random.oneIn(4)) document.undo();
      else document.apply(edits, {});
      ASSERT_NO_FATAL_FAILURE(expectParts(changed, file, document.snapshot()));
      if (!random.oneIn(3)) continue;
      refine(changed, file, document.snapshot());
      ASSERT_NO_FATAL_FAILURE(expectParts(changed, file, document.snapshot()));
      for (std::size_t i = 0; i < changed.parts().size(); ++i) {
        ASSERT_TRUE(changed.parts()[i].exact);
        ASSERT_EQ(changed.partFrom(changed.parts()[i].lines.afterBegin), i);
      }
    }
    // All hunks taken back give the file's lines, with their ends.
    refine(changed, file, document.snapshot());
    const Snapshot now = document.snapshot();
    std::vector<Edit> edits;
    for (const ChangedLines::Part& part : changed.parts()) edits.push_back(revertHunk(file, now, part.lines, "\n"));
    ASSERT_TRUE(document.apply(edits, {}));
    ASSERT_TRUE(sameLines(file, LineNo(), LineNo(file.lineCount()), document.snapshot(), LineNo(),
                          LineNo(document.snapshot().lineCount())));
    refine(changed, file, document.snapshot());
    EXPECT_TRUE(changed.parts().empty());
  }
}

TEST(ChangedLines, JoinedPartsAreToldApartForWork) {
  std::string text;
  for (int i = 0; i < 60; ++i) text += std::to_string(i) + '\n';
  Document document;
  document.reset(Snapshot(text));
  const Snapshot file = document.snapshot();
  ChangedLines changed(5);
  const auto heard = document.subscribe([&](const Change& change) { changed.edit(change); });
  for (std::int64_t line = 0; line < 60; line += 6)
    document.apply(Edit{{document.snapshot().lineStart(LineNo(line)), document.snapshot().lineStart(LineNo(line))}, "x"}, {});
  EXPECT_LE(changed.parts().size(), 5u);
  std::vector<ChangedLines::Found> found;
  for (const ChangedLines::Part& part : changed.parts())
    found.push_back({part.lines, hunksIn(file, document.snapshot(), part.lines, 1 << 20)});
  std::int64_t lines = 0;
  for (const ChangedLines::Part& part : changed.refined(found)) lines += part.lines.afterEnd - part.lines.afterBegin;
  EXPECT_EQ(lines, 10);
}

TEST(ChangedLines, HunksAreRevertedByteByByte) {
  const auto reverted = [](const char* before, const char* after, LineHunk hunk, LineMode mode = LineMode::lf) {
    Document document;
    document.reset(Snapshot(after));
    document.apply(revertHunk(Snapshot(before, mode), document.snapshot(), hunk, "\n"), {});
    return document.snapshot().bytes();
  };
  const auto hunk = [](int a, int b, int c, int d) { return LineHunk{LineNo(a), LineNo(b), LineNo(c), LineNo(d)}; };
  EXPECT_EQ(reverted("a\r\nb\nc", "a\r\nx\ny\nc", hunk(1, 2, 1, 3)), "a\r\nb\nc");
  EXPECT_EQ(reverted("a\r\nb\nc", "a\r\nc", hunk(1, 2, 1, 1)), "a\r\nb\nc") << "removed";
  EXPECT_EQ(reverted("a\r\nb", "a\r\nb\nc\n", hunk(2, 2, 2, 4)), "a\r\nb") << "added at the end";
  EXPECT_EQ(reverted("a\r\nb\nc", "a", hunk(1, 3, 1, 1)), "a\r\nb\nc") << "removed at the end";
  EXPECT_EQ(reverted("", "a\nb", hunk(0, 1, 0, 2)), "");
  EXPECT_EQ(reverted("a\rb\rc", "a\nx\nc", hunk(1, 2, 1, 2), LineMode::cr), "a\nb\nc");
}
