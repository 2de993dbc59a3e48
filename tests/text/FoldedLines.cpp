#include "text/fold/FoldedLines.h"

#include <gtest/gtest.h>

#include <random>

#include "text/store/Document.h"

using namespace text;

namespace {

// What is shown, line by line: of each line, whether a fold hides it.
void expectHides(const FoldedLines& folds, const DisplayMap& map) {
  map.checkInvariants();
  std::vector<bool> hidden(static_cast<std::size_t>(map.lines()));
  LineNo before(-1);
  for (const Fold& fold : folds.folds()) {
    ASSERT_LT(before, fold.first);
    ASSERT_LT(fold.first, fold.last);
    ASSERT_LT(fold.last.value, map.lines());
    before = fold.first;
    for (LineNo line = fold.first + 1; line <= fold.last; ++line) hidden[static_cast<std::size_t>(line.value)] = true;
  }
  std::int64_t row = 0;
  for (LineNo line; line.value < map.lines(); ++line) {
    ASSERT_EQ(map.isHidden(line), hidden[static_cast<std::size_t>(line.value)]) << line.value;
    ASSERT_EQ(map.rowOf(line), row) << line.value;
    if (map.isHidden(line)) continue;
    row += map.rowsOf(line);
  }
  ASSERT_EQ(map.rows(), row);
}

}   // namespace

TEST(FoldedLines, HideTheirLinesUnderRandomEdits) {
  std::mt19937 random(11);
  const auto any = [&](std::int64_t most) { return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(most)); };
  std::size_t most = 0;
  for (int run = 0; run < 30; ++run) {
    Document document;
    DisplayMap map;
    FoldedLines folds;
    const auto told = document.subscribe([&](const Change& c) {
      map.onChange(c, document.snapshot().lineCount());
      folds.onChange(c, document.snapshot(), map);
    });
    std::string text;
    for (int line = 0; line < 80; ++line) text += std::string(static_cast<std::size_t>(any(4)), 'x') + '\n';
    document.reset(Snapshot(text));
    for (int step = 0; step < 150; ++step) {
      const LineNo first(any(map.lines()));
      switch (any(7)) {
        case 0:
        case 1: {
          std::vector<Fold> more{{first, first + any(15)}};
          if (any(2) == 0) more.push_back({first + 1 + any(5), first + 6 + any(9)});
          folds.add(more, map);
          break;
        }
        case 2:
          for (const Fold& fold : folds.open([&](const Fold& f) { return f.first < first && first <= f.last; }, map))
            EXPECT_FALSE(folds.at(fold.first));
          EXPECT_FALSE(map.isHidden(first));
          break;
        case 3: map.setRows(first, 1 + any(3)); break;
        default: {
          std::vector<Edit> edits;
          const std::int64_t size = document.snapshot().size().value;
          for (std::int64_t at = any(size + 1); at <= size; at += 1 + any(60)) {
            const std::int64_t to = std::min(at + any(5), size);
            edits.push_back({{ByteOffset(at), ByteOffset(to)}, any(2) ? "a" : std::string(static_cast<std::size_t>(any(4)), '\n')});
            at = to;
          }
          if (!edits.empty()) document.apply(edits, {});
          if (any(3) == 0) document.undo();
        }
      }
      most = std::max(most, folds.folds().size());
      expectHides(folds, map);
      if (HasFatalFailure()) return void(ADD_FAILURE() << "run " << run << " step " << step);
    }
  }
  EXPECT_GT(most, 5u) << "folds live through edits";
}

TEST(FoldedLines, StayOrOpenAsTheTextGoes) {
  const std::string text = "0\nhead {\n2\n  3\n}\n5\n";   // 1 to 4 are folded
  const auto at = [&](const char* what) { return static_cast<std::int64_t>(text.find(what)); };
  const struct {
    const char* why;
    Edit edit;
    std::int64_t first, last;   // -1: open
  } cases[] = {
      {"typed behind the head", {{ByteOffset(at("\n2")), ByteOffset(at("\n2"))}, "x"}, 1, 4},
      {"a new line behind the head", {{ByteOffset(at("\n2")), ByteOffset(at("\n2"))}, "\n"}, -1, -1},
      {"the head moves down", {{ByteOffset(at("head")), ByteOffset(at("head"))}, "\n\n"}, 3, 6},
      {"its brace moves down", {{ByteOffset(at("{")), ByteOffset(at("{"))}, "\n"}, 2, 5},
      {"joined with the line above", {{ByteOffset(at("\nhead")), ByteOffset(at("head"))}, " "}, 0, 3},
      {"joined with what it hides", {{ByteOffset(at("\n2")), ByteOffset(at("2"))}, ""}, -1, -1},
      {"changed within", {{ByteOffset(at("2")), ByteOffset(at("3"))}, "a\nb\nc\n"}, 1, 6},
      {"its end joined with what follows", {{ByteOffset(at("\n5")), ByteOffset(at("5"))}, ""}, -1, -1},
      {"removed as a whole", {{ByteOffset(at("head")), ByteOffset(at("5"))}, ""}, -1, -1},
      {"a line behind it", {{ByteOffset(at("5")), ByteOffset(at("5"))}, "new\n"}, 1, 4},
  };
  for (const auto& c : cases) {
    Document document;
    document.reset(Snapshot(text));
    DisplayMap map(document.snapshot().lineCount());
    FoldedLines folds;
    folds.add(std::vector<Fold>{{LineNo(1), LineNo(4)}}, map);
    const auto told = document.subscribe([&](const Change& change) {
      map.onChange(change, document.snapshot().lineCount());
      folds.onChange(change, document.snapshot(), map);
    });
    document.apply(c.edit, {});
    expectHides(folds, map);
    const Fold* fold = folds.empty() ? nullptr : &folds.folds().front();
    EXPECT_EQ(fold ? fold->first.value : -1, c.first) << c.why;
    EXPECT_EQ(fold ? fold->last.value : -1, c.last) << c.why;
  }
}
