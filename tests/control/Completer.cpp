// The list of words beside the caret: what it offers in which order, and whose keys are whose.
#include "control/complete/Completer.h"

#include <QListWidget>
#include <QtTest>

#include "control/complete/TextWords.h"
#include "control/complete/WordIndex.h"
#include "control/edit/Carets.h"
#include "control/keys/KeyCommands.h"
#include "control/keys/KeyMacro.h"
#include "tests/control/PaneFixture.h"

namespace {

class CompleterTest : public PaneFixture {
 public:
  CompleterTest() {
    TypingAids aids;
    aids.completeTyped = true;
    control.setAids(aids);
    control.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&control));
    pane()->setFocus();
  }
  using Rows = std::vector<std::string>;
  Rows shown() {
    Rows rows;
    if (completer.list() && completer.list()->isVisible())
      for (int i = 0; i < completer.list()->count(); ++i)
        rows.push_back(completer.list()->item(i)->text().simplified().toStdString());
    return rows;
  }
  // Answers come from threads: waits until the rows are these, and a little longer where none are expected.
  void expectOffered(const Rows& rows) {
    if (rows.empty()) QTest::qWait(4 * Completer::kWaitMs);
    EXPECT_TRUE(QTest::qWaitFor([&] { return shown() == rows; }, 5000));
    EXPECT_EQ(shown(), rows);
  }
  int row() { return completer.list() && completer.list()->isVisible() ? completer.list()->currentRow() : -2; }
  void takes(CompletionKeys keys) { control.setCompletionKeyMode(static_cast<int>(keys)); }
  // The filter of the list hears what the system would send to the pane.
  void press(int code, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(pane(), static_cast<Qt::Key>(code), modifiers); }
  void type(const char* text) { QTest::keyClicks(pane(), QString::fromUtf8(text)); }

  Completer& completer = *new Completer(control);
};

}   // namespace

TEST_F(CompleterTest, OffersByFitThenNearnessAndUse) {
  control.setLanguage(QStringLiteral("C/C++"));
  put("int state_far;\n\n\n\n/*                                                                              */\nint statement, "
      "sub_task_all;\n|");
  type("s");
  expectOffered({});
  type("ta");
  expectOffered(
      {"statement word", "state_far word", "static keyword", "static_cast keyword", "static_assert keyword", "sub_task_all word"});
  press(Qt::Key_Backspace);
  EXPECT_TRUE(QTest::qWaitFor([&] { return shown().size() > 6 && shown()[0] == "statement word"; }, 5000)) << "two letters again";
  type("ate_");
  expectOffered({"state_far word"});
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(bytes().substr(bytes().rfind('\n')), "\nstate_far");
  type("; sta");
  EXPECT_TRUE(QTest::qWaitFor([&] { return !shown().empty() && shown()[0] == "state_far word"; }, 5000))
      << "what was taken comes first";
  press(Qt::Key_Escape);
  type("; // sta");
  expectOffered({});   // not by itself in a comment
  press(Qt::Key_Space, Qt::ControlModifier);
  expectOffered({"state_far word", "statement word", "sub_task_all word"});   // but when asked for
}

TEST_F(CompleterTest, LeavesTheKeysOfTheTextToIt) {
  const struct {
    CompletionKeys keys;
    std::vector<int> pressed;
    const char* text;
  } cases[] = {
      {CompletionKeys::entered, {Qt::Key_Return}, "sta\n|"},
      {CompletionKeys::entered, {Qt::Key_Tab}, "sta\t|"},
      {CompletionKeys::entered, {Qt::Key_Period}, "sta.|"},
      {CompletionKeys::entered, {Qt::Key_Space}, "sta |"},
      {CompletionKeys::entered, {Qt::Key_PageDown}, "sta"},
      {CompletionKeys::entered, {Qt::Key_Down, Qt::Key_Return}, "state|"},
      {CompletionKeys::entered, {Qt::Key_Down, Qt::Key_Down, Qt::Key_Tab}, "stalled|"},
      {CompletionKeys::entered, {Qt::Key_Up, Qt::Key_Return}, "state|"},   // "stalled" was taken last
      {CompletionKeys::entered, {Qt::Key_Down, Qt::Key_Space}, "sta |"},
      {CompletionKeys::entered, {Qt::Key_Down, Qt::Key_ParenLeft}, "sta(|"},
      {CompletionKeys::entered, {Qt::Key_Down, Qt::Key_Escape, Qt::Key_Return}, "sta\n|"},
      {CompletionKeys::entered, {Qt::Key_Down, Qt::Key_L, Qt::Key_Return}, "stal\n|"},   // typing leaves the list
      {CompletionKeys::tab, {Qt::Key_Tab}, "state|"},
      {CompletionKeys::tab, {Qt::Key_Return}, "sta\n|"},
      {CompletionKeys::both, {Qt::Key_Return}, "state|"},
      {CompletionKeys::both, {Qt::Key_T, Qt::Key_E, Qt::Key_Return}, "state\n|"},   // fully typed
  };
  for (const auto& c : cases) {
    takes(c.keys);
    put("|\nstate stalled");
    completer.hide();
    type("sta");
    ASSERT_TRUE(QTest::qWaitFor([&] { return shown().size() == 2; }, 5000));
    for (const int key : c.pressed) {
      if (key >= Qt::Key_A && key <= Qt::Key_Z) type(std::string(1, static_cast<char>(key + 32)).c_str());
      else if (key == Qt::Key_ParenLeft || key == Qt::Key_Period) type(key == Qt::Key_Period ? "." : "(");
      else press(key);
      QTest::qWait(2 * Completer::kWaitMs);
    }
    const bool inText = c.pressed[0] == Qt::Key_PageDown;   // which moved the caret
    EXPECT_EQ(now(), c.text + std::string(inText ? "\nsta|te stalled" : "\nstate stalled")) << &c - cases;
  }
}

TEST_F(CompleterTest, LateAnswersNeverMoveTheChosenRow) {
  struct Late : CompletionSource {
    Answer answer;
    void ask(const CompletionQuestion&, const Answer& to) override { answer = to; }
  };
  auto source = std::make_unique<Late>();
  Late& late = *source;
  completer.add(std::move(source));
  for (const int chosen : {0, 1}) {
    put("|\nstate stalled");
    type("sta");
    expectOffered({"state word", "stalled word"});
    for (int i = 0; i <= chosen; ++i) press(Qt::Key_Down);
    late.answer({{.text = QStringLiteral("star"), .match = {.places = {{0, 3}}}, .distance = 0}});
    expectOffered({"state word", "stalled word", "star word"});
    EXPECT_EQ(row(), chosen);
  }
  const auto old = late.answer;
  type("l");
  old({{.text = QStringLiteral("stall")}});   // to the last question
  expectOffered({"stalled word"});
  control.clearFocus();
  EXPECT_EQ(row(), -2);
}

TEST_F(CompleterTest, InsertsTheRowThatIsShown) {
  put("count_a count_be count_cee\nco|");
  press(Qt::Key_Space, Qt::ControlModifier);
  EXPECT_TRUE(QTest::qWaitFor([&] { return shown().size() == 3; }, 5000));
  press(Qt::Key_Down);
  press(Qt::Key_Down);
  type("u");   // as many rows as before, in another order
  QTest::qWait(4 * Completer::kWaitMs);
  const Rows rows = shown();
  ASSERT_EQ(rows.size(), 3u);
  const std::string chosen = rows[static_cast<std::size_t>(row())];
  press(Qt::Key_Return);
  EXPECT_EQ(bytes() + " word", "count_a count_be count_cee\n" + chosen);

  put("ab\nCounter\ncou|");
  carets::add(control.editor(), {text::ByteOffset(2), text::ByteOffset(2)});
  carets::add(control.editor(), {text::ByteOffset(14), text::ByteOffset(14)});
  press(Qt::Key_Space, Qt::ControlModifier);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !shown().empty() && shown()[0] == "Counter word"; }, 5000));
  press(Qt::Key_Return);
  EXPECT_EQ(bytes(), "ab\nCounter\nCounter") << "other carets stand behind other text";
}

TEST_F(CompleterTest, TakesOneUndoStepAndIsRecordedAsTyped) {
  put("state_next_word |");
  keyMacros().toggleRecording();
  type("stw");
  expectOffered({"state_next_word word"});
  press(Qt::Key_Down);
  press(Qt::Key_Tab);
  keyMacros().toggleRecording();
  EXPECT_EQ(now(), "state_next_word state_next_word|");
  control.editor().undo();
  EXPECT_EQ(now(), "state_next_word stw|");
  put("state_next_word;|");
  control.ExecuteCmd(anyCommandByName(u"MACROPLAY")->id);
  EXPECT_EQ(now(), "state_next_word;state_next_word|");
  keyMacros().fromText({});
}

TEST_F(CompleterTest, FindsTheWordsOfOtherTextsAndOfFarPlaces) {
  CodeMax other;
  other.setText(QStringLiteral("strobe strange"));
  completer.add(std::make_unique<OtherWords>([&] { return std::vector{control.model().get(), other.model().get()}; }));
  std::string text = "|\n";
  text.append(300'000, '.');
  text += " street street";
  put(text.c_str());
  type("str");
  expectOffered({"street word", "strobe other text", "strange other text"});
  other.setText(QStringLiteral("stray"));
  press(Qt::Key_Escape);
  control.ReplaceSel(QStringLiteral(" "));
  type("str");
  expectOffered({"street word", "stray other text"});
}
