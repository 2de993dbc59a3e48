#include "text/display/DisplayMap.h"

#include <gtest/gtest.h>

#include <random>

#include "text/store/Document.h"

using namespace text;

namespace {

struct Line {
  bool hidden = false;
  std::int64_t rows = 1;
};

// Each row of the display with its line, as a list.
void expectRows(const DisplayMap& map, const std::vector<Line>& model) {
  map.checkInvariants();
  ASSERT_EQ(map.lines(), static_cast<std::int64_t>(model.size()));
  std::vector<DisplayMap::Place> rows;
  std::int64_t shown = 0;
  for (std::size_t i = 0; i < model.size(); ++i) {
    const LineNo line(static_cast<std::int64_t>(i));
    const std::int64_t count = model[i].hidden ? 0 : model[i].rows;
    ASSERT_EQ(map.isHidden(line), model[i].hidden) << i;
    ASSERT_EQ(map.rowOf(line), static_cast<std::int64_t>(rows.size())) << i;
    ASSERT_EQ(map.rowsOf(line), count) << i;
    ASSERT_EQ(map.shownAbove(line), shown) << i;
    if (!model[i].hidden) { ASSERT_EQ(map.shownLine(shown++), line); }
    std::size_t next = i, before = i;
    while (next < model.size() && model[next].hidden) ++next;
    while (model[before].hidden) --before;
    ASSERT_EQ(map.shownFrom(line).value, static_cast<std::int64_t>(next));
    ASSERT_EQ(map.shownUpTo(line).value, static_cast<std::int64_t>(before));
    for (std::int64_t row = 0; row < count; ++row) rows.push_back({line, row});
  }
  ASSERT_EQ(map.shownLines(), shown);
  ASSERT_EQ(map.rows(), static_cast<std::int64_t>(rows.size()));
  for (std::size_t row = 0; row < rows.size(); ++row) ASSERT_EQ(map.at(static_cast<std::int64_t>(row)), rows[row]) << row;
}

// What DisplayMap says of the lines that a change touches.
void change(std::vector<Line>& model, const Change& change) {
  bool anyHidden = std::any_of(model.begin(), model.end(), [](const Line& l) { return l.hidden; });
  for (const Change::Span& s : change.spans) {
    if (s.linesRemoved == 0 && s.linesInserted == 0) continue;
    const auto at = model.begin() + s.firstLine.value, end = at + s.linesRemoved + 1;
    const bool hidden = std::all_of(at, end, [](const Line& l) { return l.hidden; });
    const std::int64_t rows = anyHidden ? 1 : at->rows;
    const auto behind = model.erase(at, end);
    model.insert(behind, static_cast<std::size_t>(s.linesInserted) + 1, {hidden, 1})->rows = rows;
    anyHidden = std::any_of(model.begin(), model.end(), [](const Line& l) { return l.hidden; });
  }
}

}   // namespace

TEST(DisplayMap, IsAListOfRows) {
  std::mt19937 random(7);
  const auto any = [&](std::size_t most) { return static_cast<std::int64_t>(random() % most); };
  for (int run = 0; run < 20; ++run) {
    Document document;
    std::vector<Line> model(1);
    DisplayMap map;
    const auto told = document.subscribe([&](const Change& c) {
      map.onChange(c, document.snapshot().lineCount());
      if (c.reset) model.assign(static_cast<std::size_t>(document.snapshot().lineCount()), {});
      else change(model, c);
    });
    document.reset(Snapshot(std::string(60, '\n')));
    for (int step = 0; step < 120; ++step) {
      const LineNo first(any(model.size())), end(first + any(8));
      switch (any(6)) {
        case 0:
        case 1:
          if (run % 3 != 0) map.hide(first, end);
          for (auto line = std::max<std::int64_t>(first.value, 1); run % 3 != 0 && line < std::min(end.value, map.lines()); ++line)
            model[static_cast<std::size_t>(line)].hidden = true;
          for (std::int64_t line = 1; line < map.lines(); ++line)   // lines that come to light count as one row
            if (model[static_cast<std::size_t>(line)].hidden) model[static_cast<std::size_t>(line)].rows = 1;
          break;
        case 2:
          map.show(first, end);
          for (auto line = first.value; line < std::min(end.value, map.lines()); ++line)
            model[static_cast<std::size_t>(line)].hidden = false;
          break;
        case 3:
        case 4: {
          const std::int64_t rows = 1 + any(4);
          map.setRows(first, rows);
          if (!model[static_cast<std::size_t>(first.value)].hidden) model[static_cast<std::size_t>(first.value)].rows = rows;
          break;
        }
        default: {
          std::vector<Edit> edits;
          for (std::int64_t at = any(20); at < document.snapshot().size().value; at += any(40)) {
            const std::int64_t to = std::min(at + any(6), document.snapshot().size().value);
            edits.push_back({{ByteOffset(at), ByteOffset(to)}, random() % 2 ? "a" : std::string(random() % 4, '\n')});
            at = to + 1;
          }
          if (!edits.empty()) document.apply(edits, {});
          if (any(5) == 0) document.undo();
        }
      }
      expectRows(map, model);
      if (HasFatalFailure()) return void(ADD_FAILURE() << "run " << run << " step " << step);
    }
    map.forgetRows();
    map.show(LineNo(0), LineNo(map.lines()));
    EXPECT_TRUE(map.plain());
  }
}
