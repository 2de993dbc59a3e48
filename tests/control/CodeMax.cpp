#include "control/CodeMax.h"

#include "control/code/LanguageTable.h"
#include "tests/control/PaneFixture.h"
#include "tests/support/Text.h"
#include "tests/support/files/TempFolder.h"
#include "tests/text/Pieces.h"

class CodeMaxMembers : public PaneFixture {};

TEST_F(CodeMaxMembers, TextLengthIsThatOfTheText) {
  std::mt19937 random(3);
  const std::array<std::string, 11> alphabet{"a",    "\r",     "\n",           "\r\n", "\u00E9", "\U0001F600", "\xF0\x9F\x98",
                                             "\xFF", "\uFEFF", "\xED\xA0\x80", "\t"};
  for (int round = 0; round < 300; ++round) {
    const std::string bytes = randomText(random, alphabet, 20);
    control.model()->replaceAll(inPieces(bytes, 3, random() % 4 ? text::LineMode::lf : text::LineMode::cr), {});
    control.setEnableCRLF(round % 2 == 0);
    ASSERT_EQ(control.TextLength(), control.Text().size()) << testing::PrintToString(bytes);
  }
}

TEST_F(CodeMaxMembers, EachChangeIsOneUndoStep) {
  struct Case {
    const char* what;
    std::function<void(CodeMax&)> change;
    const char* expected;
  };
  const char* before = "alpha\nbe@ta|\r\ngamma";
  // clang-format off
  const Case cases[] = {
      {"InsertText before", [](CodeMax& c) { c.InsertText(q("X"), {0, 2}); }, "alXpha\nbe@ta|\r\ngamma"},
      {"InsertText with breaks takes those of the line", [](CodeMax& c) { c.InsertText(q("X\nY"), {1, 0}); }, "alpha\nX\r\nYbe@ta|\r\ngamma"},
      {"InsertText past the end", [](CodeMax& c) { c.InsertText(q("!"), {99, 0}); }, "alpha\nbe@ta|\r\ngamma!"},
      {"ReplaceLines keeps break and selection", [](CodeMax& c) { c.ReplaceLines(1, {q("xxbeta")}); }, "alpha\nxxbe@ta|\r\ngamma"},
      {"ReplaceLines with two lines", [](CodeMax& c) { c.ReplaceLines(0, {q("a\nb")}); }, "a\nb\nbe@ta|\r\ngamma"},
      {"ReplaceLines", [](CodeMax& c) { c.ReplaceLines(0, {q("alpha!"), q("beta"), q("Gamma"), q("none")}); }, "alpha!\nbe@ta|\r\nGamma"},
      {"ReplaceText", [](CodeMax& c) { c.ReplaceText(q("Z"), {0, 1, 1, 1, false}); }, "aZ|eta\r\ngamma"},
      {"ReplaceSel", [](CodeMax& c) { c.ReplaceSel(q("Z")); }, "alpha\nbeZ|\r\ngamma"},
      {"AppendText", [](CodeMax& c) { c.AppendText(q("\nmore")); }, "alpha\nbe@ta|\r\ngamma\r\nmore"},
      {"setText", [](CodeMax& c) { c.setText(q("other")); }, "|other"},
  };
  // clang-format on
  for (const auto& c : cases) {
    put(before);
    c.change(control);
    EXPECT_EQ(now(), c.expected) << c.what;
    const bool changed = bytes() != parseCaret(before).bytes;
    EXPECT_EQ(control.CanUndo(), changed) << c.what;
    if (!changed) continue;
    control.ExecuteCmd(Cmd::UNDO);
    EXPECT_EQ(now(), before) << "undo of " << c.what;
    EXPECT_FALSE(control.CanUndo()) << c.what << " was more than one step";
    EXPECT_FALSE(control.Modified());
  }
}

TEST_F(CodeMaxMembers, ReplaceLinesTouchesOnlyWhatDiffers) {
  put("|same\nold\xC3\xA9 x\nsame");
  std::vector<text::Change::Span> spans;
  QObject::connect(control.model().get(), &TextModel::changed, &control, [&](const text::Change& change) { spans = change.spans; });
  control.setBookmark(1, true);
  control.ReplaceLines(0, {q("same"), q("old\xC3\xA8 x"), q("same")});
  ASSERT_EQ(spans.size(), 1u);
  EXPECT_EQ(spans[0].begin.value, 8);
  EXPECT_EQ(spans[0].removed, 2) << "a whole character";
  EXPECT_TRUE(control.hasBookmark(1));
}

TEST_F(CodeMaxMembers, EditBlockIsOneStepAndTellsOnce) {
  put("|a\nb\nc");
  int moved = 0;
  QObject::connect(&control, &CodeMax::SelChange, &control, [&] { ++moved; });
  {
    const EditBlock outer(control);
    for (int i = 0; i < 3; ++i) {
      const EditBlock inner(control);
      control.SetSel({i, 0, i, 0, false});
      control.ReplaceSel(q("> "));
    }
    EXPECT_EQ(moved, 0);
  }
  EXPECT_EQ(moved, 1);
  EXPECT_EQ(now(), "> a\n> b\n> |c");
  control.ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(now(), "|a\nb\nc");
  control.ExecuteCmd(Cmd::REDO);
  EXPECT_EQ(now(), "> a\n> b\n> |c");
  EXPECT_FALSE(control.ExecuteCmd(99));
  EXPECT_FALSE(control.ExecuteCmd(213));
}

TEST(CodeMaxColors, StoredDefaultsStillFollowTheDesktop) {
  ColorScheme scheme;
  const QPalette light = desktopPalette(false), dark = desktopPalette(true);
  scheme.follow(light);
  for (int slot = 0; slot < kColorSlots; ++slot) scheme.setColor(slot, scheme.color(static_cast<ColorSlot>(slot)));
  scheme.setColor(static_cast<int>(ColorSlot::String), Qt::red);
  EXPECT_TRUE(scheme.follow(dark));
  EXPECT_FALSE(scheme.follow(dark));
  for (int slot = 0; slot < kColorSlots; ++slot) {
    const bool chosen = slot == static_cast<int>(ColorSlot::String);
    EXPECT_EQ(scheme.color(static_cast<ColorSlot>(slot)), chosen ? QColor(Qt::red) : ColorScheme::schemeColor(slot, true)) << slot;
  }
}
