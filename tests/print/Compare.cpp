// Two texts side by side: which places stand beside each other, what taking over changes, and differences that follow edits.
#include <gtest/gtest.h>

#include <QTest>

#include "change/compare/CompareView.h"
#include "control/CodeMax.h"
#include "tests/support/Cost.h"
#include "tests/support/EventLoop.h"
#include "tests/support/Text.h"
#include "tests/text/RandomText.h"

using namespace compare;
using text::LineNo;
using text::Snapshot;

namespace {

// Lines that are often equal, with line ends of one kind; sometimes without one at the end.
std::string randomLines(test::Random& random, const char* lineBreak) {
  static const char* const kLines[] = {"a", "b", "end", "", " x", "y\tz", "\xff", "\xc3\xa9t\xc3\xa9"};
  std::string all;
  for (auto left = random.upTo(12); left > 0; --left) all += kLines[random.upTo(std::ssize(kLines))] + std::string(lineBreak);
  return random.oneIn(2) ? all : all + "last";
}

std::vector<std::string> linesOfText(const Snapshot& text) {
  std::vector<std::string> lines;
  for (std::int64_t i = 0; i < text.lineCount(); ++i) lines.push_back(text.line(LineNo(i)));
  return lines;
}

std::string joined(const std::vector<std::string>& lines, const std::string& lineBreak) {
  std::string all;
  for (std::size_t i = 0; i < lines.size(); ++i) all += (i ? lineBreak : "") + lines[i];
  return all;
}

// What stands between two hunks has as many lines on both sides, and (untouched) the same.
void checkBetween(const Hunks& hunks, const std::array<Snapshot, 2>& texts) {
  std::array<std::int64_t, 2> at{0, 0};
  for (std::size_t i = 0; i <= hunks.size(); ++i) {
    const auto begin = [&](Side side) { return i < hunks.size() ? linesOf(hunks[i], side).begin : texts[side].lineCount(); };
    ASSERT_EQ(begin(kLeft) - at[kLeft], begin(kRight) - at[kRight]) << "before hunk " << i;
    for (; at[kLeft] < begin(kLeft); ++at[kLeft], ++at[kRight])
      EXPECT_EQ(texts[kLeft].line(LineNo(at[kLeft])), texts[kRight].line(LineNo(at[kRight])));
    if (i < hunks.size()) at = {linesOf(hunks[i], kLeft).end, linesOf(hunks[i], kRight).end};
  }
}

bool compared(Comparison& comparison) {
  return spinUntil([&] { return comparison.compared(); });
}

}   // namespace

TEST(CompareHunks, TakingOverGivesTheLinesOfTheOtherSide) {
  test::Random random;
  SCOPED_TRACE(random.message());
  for (auto step = test::steps(400); step > 0; --step) {
    const std::array<const char*, 2> ends{random.oneIn(2) ? "\n" : "\r\n", random.oneIn(2) ? "\n" : "\r\n"};
    const std::array<Snapshot, 2> texts{Snapshot(randomLines(random, ends[0])), Snapshot(randomLines(random, ends[1]))};
    const Hunks hunks = text::diffLines(texts[kLeft], texts[kRight]);
    checkBetween(hunks, texts);
    for (const Side from : {kLeft, kRight}) {
      const Side to = other(from);
      SCOPED_TRACE(texts[kLeft].bytes() + "|" + texts[kRight].bytes());
      const text::NewLines newLines{ends[to][0] == '\r' ? text::LineBreak::crlf : text::LineBreak::lf, false};
      text::Document document;
      document.reset(texts[to]);
      const auto apply = [&](const TakeOver& what) {
        document.apply(
            takeOver(hunks,
                     {from == kLeft ? texts[kLeft] : document.snapshot(), from == kLeft ? document.snapshot() : texts[kRight]},
                     newLines, what),
            {});
      };
      apply({from});
      const std::string whole = joined(linesOfText(texts[from]), ends[to]);
      EXPECT_EQ(document.snapshot().bytes(), whole) << "with the line ends of its own text";
      document.undo();
      EXPECT_EQ(document.snapshot().bytes(), texts[to].bytes()) << "one step";
      for (std::size_t i = hunks.size(); i > 0; --i) apply({from, i - 1});
      EXPECT_EQ(document.snapshot().bytes(), whole) << "one by one";
      // Some lines chosen on either side, and then the others: the same in the end.
      const Side on = random.oneIn(2) ? from : to;
      const std::int64_t cut = random.upTo(texts[on].lineCount() + 1);
      document.reset(texts[to]);
      apply({from, {}, Lines{cut, texts[on].lineCount() + 1}, on});
      apply({from, {}, Lines{-1, cut}, on});
      const bool betweenGaps = std::ranges::none_of(hunks, [&](const auto& h) { return linesOf(h, on).begin == cut; });
      if (betweenGaps &&
          std::ranges::none_of(hunks, [&](const auto& h) { return linesOf(h, on).begin < cut && cut < linesOf(h, on).end; })) {
        EXPECT_EQ(document.snapshot().bytes(), whole) << "cut " << cut << " on " << on;
      }
    }
  }
}

TEST(CompareHunks, EqualLinesAreLevelAndBothEndsAreReached) {
  test::Random random;
  SCOPED_TRACE(random.message());
  for (auto step = test::steps(300); step > 0; --step) {
    const std::array<Snapshot, 2> texts{Snapshot(randomLines(random, "\n")), Snapshot(randomLines(random, "\n"))};
    const Hunks hunks = text::diffLines(texts[kLeft], texts[kRight]);
    for (const Side side : {kLeft, kRight}) {
      std::int64_t line = 0, beside = 0;
      for (const auto& hunk : hunks) {
        for (; line < linesOf(hunk, side).begin; ++line, ++beside) {
          EXPECT_EQ(placeBeside(hunks, side, double(line) + 0.25), double(beside) + 0.25);
        }
        line = linesOf(hunk, side).end;
        beside = linesOf(hunk, other(side)).end;
      }
      double last = 0;
      for (double at = 0; at <= double(texts[side].lineCount()); at += 0.25) {
        EXPECT_GE(placeBeside(hunks, side, at), last);
        last = placeBeside(hunks, side, at);
      }
      const auto most = [](const ScrollState& s) {
        return std::max<std::int64_t>(0, s.lines - s.height / s.lineHeight) * s.lineHeight;
      };
      ScrollState here{0, 10 * int(1 + random.upTo(8)), 10, texts[side].lineCount()},
          there{0, here.height, 10, texts[other(side)].lineCount()};
      if (most(here) == 0) continue;
      if (hunks.empty() || linesOf(hunks[0], side).begin > 0) { EXPECT_EQ(topBeside(hunks, side, here, there), 0); }
      here.top = most(here);
      EXPECT_EQ(std::max<std::int64_t>(0, topBeside(hunks, side, here, there)), most(there)) << "the end of both";
    }
  }
}

TEST(CompareHunks, DifferencesFollowEdits) {
  test::Random random;
  SCOPED_TRACE(random.message());
  for (int round = 0; round < 12; ++round) {
    std::array<std::shared_ptr<TextModel>, 2> models{std::make_shared<TextModel>(), std::make_shared<TextModel>()};
    for (auto& model : models) model->document().reset(Snapshot(randomLines(random, "\n") + "x\ny\n" + randomLines(random, "\n")));
    Comparison comparison(models[0], models[1]);
    ASSERT_TRUE(compared(comparison));
    for (int edit = 0; edit < 6 && !comparison.hunks().empty(); ++edit) {   // within a difference: the others keep their lines
      const auto& hunk = comparison.hunks()[std::size_t(random.upTo(std::ssize(comparison.hunks())))];
      const Side side = linesOf(hunk, kLeft).empty() ? kRight : kLeft;
      text::Document& document = models[side]->document();
      const Snapshot& now = document.snapshot();
      const LineNo line(linesOf(hunk, side).begin + random.upTo(linesOf(hunk, side).count()));
      const bool removes = random.oneIn(3) && line.value + 1 < now.lineCount();
      const text::ByteOffset at = now.lineStart(line);
      document.apply(removes ? text::Edit{{at, now.lineStart(line + 1)}, {}} : text::Edit{{at, at}, random.oneIn(2) ? "\n" : "new"},
                     {});
      EXPECT_FALSE(comparison.compared());
      checkBetween(comparison.hunks(), {models[0]->snapshot(), models[1]->snapshot()});
    }
    comparison.refresh();
    ASSERT_TRUE(spinUntil([&] { return comparison.hunks() == text::diffLines(models[0]->snapshot(), models[1]->snapshot()); }));
    EXPECT_EQ(comparison.count(), comparison.hunks().size());
  }
}

TEST(CompareView, UndoConcernsWhatWasTakenOver) {
  auto* left = new CodeMax;
  auto* right = new CodeMax;
  left->model()->replaceAll(Snapshot("one\ntwo\n"), {});
  right->model()->replaceAll(Snapshot("1\n2\n3\n"), {});
  CompareView view(left, right);
  view.show();
  view.activate(kLeft);
  const auto press = [&](Qt::Key key) { QTest::keyClick(view.text(view.active()).focusProxy(), key, Qt::ControlModifier); };
  const auto bytes = [](CodeMax* text) { return text->model()->snapshot().bytes(); };
  left->ReplaceSel(QStringLiteral("my "));
  ASSERT_TRUE(compared(view.comparison()));
  EXPECT_TRUE(view.takeOver(kLeft));
  EXPECT_EQ(bytes(right), "my one\ntwo\n");
  press(Qt::Key_Z);
  EXPECT_EQ(bytes(right), "1\n2\n3\n");
  EXPECT_EQ(bytes(left), "my one\ntwo\n");
  press(Qt::Key_Y);
  EXPECT_EQ(bytes(right), "my one\ntwo\n");
  left->SetSel({0, 0, 0, 0, false});
  press(Qt::Key_Z);
  EXPECT_EQ(bytes(right), "my one\ntwo\n");
  EXPECT_EQ(bytes(left), "one\ntwo\n");
}

TEST(CompareView, StepsCountsAndTakesOver) {
  auto* left = new CodeMax;
  auto* right = new CodeMax;
  left->model()->replaceAll(Snapshot("one\r\ntwo\r\nthree\r\nfour\r\nfive"), {});
  right->model()->replaceAll(Snapshot("one\n2\nthree\nfive\n"), {});
  CompareView view(left, right);
  view.resize(700, 300);
  view.show();
  view.activate(kLeft);
  ASSERT_TRUE(compared(view.comparison()));
  ASSERT_EQ(view.count(), 3);
  EXPECT_TRUE(view.summary().startsWith(QStringLiteral("3 differences; line ends differ (Win, Unix)")))
      << view.summary().toStdString();
  EXPECT_FALSE(view.canTakeOver(kLeft)) << "the caret is at no difference";
  QStringList seen;
  for (int i = 0; i < 4; ++i) {
    EXPECT_TRUE(view.step(1));
    seen << view.summary().section(u';', 0, 0) + QStringLiteral(" line %1").arg(left->CurrentPosition().LineNo);
  }
  EXPECT_EQ(seen.join(u'|'),
            QStringLiteral("Difference 1 of 3 line 1|Difference 2 of 3 line 3|Difference 3 of 3 line 4|Difference 1 of 3 line 1"));
  const Comparison::Line two = view.comparison().lineAt(kLeft, 1);
  EXPECT_EQ(two.kind, Comparison::Line::Kind::changed);
  EXPECT_EQ(two.parts, (std::vector{text::ByteRange{text::ByteOffset(5), text::ByteOffset(8)}}));
  EXPECT_TRUE(view.comparison().lineAt(kRight, 3).missingAbove);
  EXPECT_TRUE(view.comparison().lineAt(kLeft, 4).missingBelow);

  EXPECT_TRUE(view.takeOver(kRight));
  EXPECT_EQ(left->model()->snapshot().bytes(), "one\r\n2\r\nthree\r\nfour\r\nfive") << "its own line ends";
  left->ExecuteCmd(Cmd::UNDO);
  ASSERT_TRUE(compared(view.comparison()));
  left->SetSel({1, 0, 4, 2, false});   // several at once
  EXPECT_TRUE(view.takeOver(kLeft));
  EXPECT_EQ(right->model()->snapshot().bytes(), "one\ntwo\nthree\nfour\nfive");
  ASSERT_TRUE(compared(view.comparison()));
  EXPECT_EQ(view.summary(), QStringLiteral("The texts are equal; line ends differ (Win, Unix)"));
  right->ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(right->model()->snapshot().bytes(), "one\n2\nthree\nfive\n") << "one step";
  right->setReadOnly(true);
  left->SetSel({1, 0, 1, 0, false});
  ASSERT_TRUE(compared(view.comparison()));
  EXPECT_FALSE(view.canTakeOver(kLeft));
  EXPECT_TRUE(view.canTakeOver(kRight));

  left->setReadOnly(false);
  left->setText(QStringLiteral("ONE \n2\nthree\nfive\n"));
  view.comparison().setIgnored({true, true, false});
  ASSERT_TRUE(spinUntil([&] { return view.comparison().compared() && view.count() == 0; }));
  EXPECT_TRUE(view.summary().startsWith(QStringLiteral("The texts are equal but for what is ignored")));
  view.comparison().setIgnored({});
  ASSERT_TRUE(spinUntil([&] { return view.count() == 1; }));
  view.swapSides();
  EXPECT_EQ(&view.text(kLeft), right);
  ASSERT_TRUE(compared(view.comparison()));
  EXPECT_EQ(view.count(), 1);
}

// 40 visible pairs of long lines: a look at them takes a short time, finds the rest when it is asked again, and knows them after an edit.
TEST(CompareView, LongLinesAreComparedInShortTurns) {
  std::array<std::string, 2> texts;
  for (int line = 0; line < 40; ++line) {
    for (int word = 0; word < 3000; ++word)
      for (std::string& text : texts) text += std::to_string(line + 7 * word) + (&text == &texts[0] || word % 3 ? " " : "x ");
    for (std::string& text : texts) text += "\nsame " + std::to_string(line) + "\n";
  }
  std::array<std::shared_ptr<TextModel>, 2> models{std::make_shared<TextModel>(), std::make_shared<TextModel>()};
  for (const Side side : {kLeft, kRight}) models[side]->document().reset(Snapshot(texts[side]));
  Comparison comparison(models[0], models[1]);
  ASSERT_TRUE(compared(comparison));
  double most = 0;
  const auto look = [&] {
    int found = 0;
    const double before = spentMs();
    for (const Side side : {kLeft, kRight})
      for (int line = 0; line < 80; line += 2) found += !comparison.lineAt(side, line).parts.empty();
    most = std::max(most, spentMs() - before);
    return found;
  };
  int found = look();
  QObject::connect(&comparison, &Comparison::moreFound, [&] { found = look(); });
  EXPECT_TRUE(spinUntil([&] { return found == 80; })) << found;
  models[kRight]->document().apply(text::Edit{{text::ByteOffset(0), text::ByteOffset(0)}, "above\n"}, {});
  models[kLeft]->document().apply(
      text::Edit{{models[kLeft]->snapshot().lineStart(LineNo(40)), models[kLeft]->snapshot().lineStart(LineNo(40))}, "new "}, {});
  QObject::disconnect(&comparison, &Comparison::moreFound, nullptr, nullptr);
  found = 0;
  for (int line = 2; line < 80; line += 2) found += line != 40 && !comparison.lineAt(kRight, line + 1).parts.empty();
  EXPECT_EQ(found, 38) << "at once: neither edit touched them";
  if (!kSanitized) { EXPECT_LT(most, 80); }
}
