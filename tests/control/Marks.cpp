#include <chrono>
#include <set>
#include <thread>

#include "control/CodeMaxImpl.h"
#include "control/keys/KeyCommands.h"
#include "control/marks/ChangeMarks.h"
#include "control/marks/HitLines.h"
#include "control/marks/MarkedBar.h"
#include "control/marks/TextAids.h"
#include "tests/control/PaneFixture.h"

namespace {

class Marks : public PaneFixture {
 public:
  TextView& view() { return pane()->view(); }
  ChangeMarks& changes() { return ChangeMarks::of(*control.model()); }
  void run(const char* command) {
    const Command* row = anyCommandByName(QString::fromLatin1(command));
    ASSERT_TRUE(row) << command;
    control.ExecuteCmd(static_cast<CommandNumber>(row->id));
  }
  void putFile(const char* marked) {
    control.model()->stamp.emplace().exists = true;
    put(marked);
  }
  // One letter for each line: = the same, + added, ~ changed; ^ lines are missing above, _ below.
  std::string shownMarks() {
    changes().settle();
    std::string shown;
    for (text::LineNo line; line.value < control.LineCount(); ++line) {
      const ChangeMarks::Line mark = changes().at(line, line + 1);
      if (mark.removedAbove) shown += '^';
      shown += mark.kind == ChangeMarks::Line::Kind::same ? '=' : mark.kind == ChangeMarks::Line::Kind::added ? '+' : '~';
      if (mark.removedBelow) shown += '_';
    }
    return shown;
  }
};

}   // namespace

TEST_F(Marks, GuidesFollowTheIndentsAndCrossBlankLines) {
  control.setTabSize(4);
  put("a\n    b\n\n\t\tc\n\n|d\n");
  const std::vector<int> expected{0, 1, 1, 2, 0, 0, 0};   // the last line is blank: nothing stands below it
  for (std::size_t line = 0; line < expected.size(); ++line) {
    const auto guides = textAids::guidesOf(view(), text::LineNo(static_cast<std::int64_t>(line)));
    ASSERT_EQ(static_cast<int>(guides.size()), expected[line]) << line;
    for (std::size_t i = 0; i < guides.size(); ++i) EXPECT_EQ(guides[i], static_cast<double>(i * 4) * view().metrics().cell());
  }
  // What a blank line shows depends on its neighbours.
  EXPECT_EQ(textAids::withBlanksAround(view(), 3, 3), std::pair(std::int64_t(2), std::int64_t(4)));
}

TEST_F(Marks, TheWordAtTheCaretIsMarkedWhereItStandsWhole) {
  put("|abc abcd abc\nxabc abc_ ABC abc");
  const auto places = [&](std::int64_t line, std::int64_t begin, std::int64_t end) {
    std::string found;
    const Row& row = view().row(line);
    for (const text::ByteRange& place : textAids::places(view().snapshot(), row, begin, end, "abc"))
      found += std::to_string(place.begin - row.start) + " ";
    return found;
  };
  EXPECT_EQ(places(0, 0, text::LinePlace::any), "0 9 ");
  EXPECT_EQ(places(1, 0, text::LinePlace::any), "14 ");
  EXPECT_EQ(places(1, 15, 16), "14 ") << "a word that a row cuts";
  // Shown a moment after the caret came to rest, not with a selection, and not while the option is off.
  const auto picture = [&] { return control.grab({0, 0, 300, 60}).toImage(); };
  const auto rest = [] {
    for (int i = 0; i < 2 * SameWord::kRestMs; i += 10) {
      QApplication::processEvents(QEventLoop::AllEvents, 10);
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  };
  pane()->clearFocus();
  const QImage plain = picture();
  rest();
  EXPECT_NE(picture(), plain);
  TypingAids aids = control.Aids();
  aids.markWord = false;
  control.setAids(aids);
  EXPECT_EQ(picture(), plain);
}

TEST_F(Marks, ChangedLinesAreMarkedAndTakenBack) {
  putFile("|one\ntwo\nthree\nfour\nfive\nsix");
  EXPECT_EQ(shownMarks(), "======");
  control.InsertText(QStringLiteral("X"), {1, 0});
  control.InsertText(QStringLiteral("new\n"), {3, 0});
  control.ReplaceText(QString(), {4, 4, 6, 3, false});   // "five" and "six" with the break before
  EXPECT_EQ(shownMarks(), "=~=+=_") << bytes();
  run("GOTONEXTCHANGE");
  EXPECT_EQ(now(), "one\n|Xtwo\nthree\nnew\nfour");
  run("GOTONEXTCHANGE");
  run("GOTONEXTCHANGE");
  EXPECT_EQ(now(), "one\nXtwo\nthree\nnew\n|four");
  run("REVERTCHANGE");
  EXPECT_EQ(bytes(), "one\nXtwo\nthree\nnew\nfour\nfive\nsix");
  run("GOTONEXTCHANGE");   // round
  run("GOTOPREVIOUSCHANGE");
  EXPECT_EQ(now(), "one\nXtwo\nthree\n|new\nfour\nfive\nsix");
  control.SetSel({0, 0, 6, 0, false});
  run("REVERTCHANGE");
  EXPECT_EQ(bytes(), "one\ntwo\nthree\nfour\nfive\nsix");
  EXPECT_EQ(shownMarks(), "======");
  run("UNDO");   // one step
  EXPECT_EQ(bytes(), "one\nXtwo\nthree\nnew\nfour\nfive\nsix");
  EXPECT_EQ(shownMarks(), "=~=+===");
  // What is typed while a file is saved is still a change.
  changes().saving();
  const text::Snapshot saved = control.model()->snapshot();
  control.InsertText(QStringLiteral("Y"), {0, 0});
  changes().saved(saved);
  EXPECT_EQ(shownMarks(), "~======");
  control.setModified(false);
  EXPECT_EQ(shownMarks(), "=======");
  control.model()->stamp.reset();
  control.InsertText(QStringLiteral("Z"), {0, 0});
  EXPECT_EQ(shownMarks(), "=======") << "a text without a file";
}

TEST_F(Marks, MarksOfALongStretchComeLaterAndNeverStale) {
  std::string file;
  for (int i = 0; i < 20'000; ++i) file += "line " + std::to_string(i) + "\n";
  putFile(("|" + file).c_str());
  std::string other = file;
  other.replace(other.find("line 7\n"), 6, "LINE 7");
  other.replace(other.find("line 19000\n"), 10, "LINE 19000");
  changes().setFile(text::Snapshot(other));   // as of a restored text: nothing is known
  changes().settle();
  EXPECT_EQ(changes().parts().size(), 1u) << "too much to compare at once";
  control.InsertText(QStringLiteral("x\n"), {0, 0});
  for (int i = 0; i < 500 && changes().parts().size() < 3; ++i) {
    changes().settle();
    QApplication::processEvents(QEventLoop::AllEvents, 10);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ASSERT_EQ(changes().parts().size(), 3u);
  EXPECT_EQ(changes().parts()[2].lines.afterBegin, text::LineNo(19001));
}

TEST_F(Marks, ChangedLinesAreTrimmedWhereBlanksMeanNothing) {
  putFile("|old  \nsame  \nlast");
  control.ReplaceText(QStringLiteral("new\t \nkept\\  \nat caret    "), {0, 0, 0, 5, false});
  control.SetSel({2, 10, 2, 10, false});
  run("TRIMCHANGEDLINES");
  EXPECT_EQ(now(), "new\nkept\\  \nat caret  |\nsame  \nlast");
  run("UNDO");   // one step
  EXPECT_EQ(bytes(), "new\t \nkept\\  \nat caret    \nsame  \nlast");
  control.model()->stamp.emplace();   // the file is gone: the other lines are still those that it had
  control.SetSel({4, 0, 4, 0, false});
  run("TRIMCHANGEDLINES");
  EXPECT_EQ(bytes(), "new\nkept\\  \nat caret\nsame  \nlast");
  control.model()->stamp.reset();   // no file: every line is new
  run("TRIMCHANGEDLINES");
  EXPECT_EQ(bytes(), "new\nkept\\  \nat caret\nsame\nlast");
}

TEST_F(Marks, TheScrollBarShowsHitsBookmarksAndChanges) {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += i % 250 == 100 ? "a match\n" : "line\n";
  putFile(("|" + text).c_str());
  MarkedBar& bar = MarkedBar::of(*pane());
  control.setBookmark(900, true);
  control.InsertText(QStringLiteral("x"), {500, 0});
  control.showHits(QStringLiteral("match"), {});
  HitLines& hits = *pane()->view().state().hitLines;
  const auto wait = [](auto until) {
    for (int i = 0; i < 500 && !until(); ++i) {
      QApplication::processEvents(QEventLoop::AllEvents, 10);
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  };
  wait([&] { return hits.complete(); });
  EXPECT_EQ(hits.lines(), (std::vector<text::LineNo>{text::LineNo(100), text::LineNo(350), text::LineNo(600), text::LineNo(850)}));
  control.InsertText(QStringLiteral("above\n"), {0, 0});
  EXPECT_EQ(hits.lines().front(), text::LineNo(101)) << "moves with the text until it is searched again";
  control.ReplaceText(QString(), {0, 0, 1, 0, false});
  wait([&] { return hits.complete(); });
  const auto seen = [&] {
    std::set<std::int64_t> lines;
    for (int y = 0; y < bar.height(); ++y)
      if (const auto line = bar.markAt(y)) lines.insert(line->value);
    return lines;
  };
  const std::set<std::int64_t> expected{100, 350, 500, 600, 850, 900};
  wait([&] { return seen() == expected; });
  EXPECT_EQ(seen(), expected);
  for (int y = bar.height(); y-- > 0;) {
    if (bar.markAt(y) != text::LineNo(850)) continue;
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(5, y), bar.mapToGlobal(QPointF(5, y)), Qt::LeftButton, Qt::LeftButton, {});
    QApplication::sendEvent(&bar, &press);
    break;
  }
  EXPECT_EQ(control.CurrentPosition().LineNo, 850);
  control.showHits({}, {});
  TypingAids aids = control.Aids();
  aids.barMarks = false;
  control.setAids(aids);
  wait([&] { return seen().empty(); });
  EXPECT_TRUE(seen().empty());
}
