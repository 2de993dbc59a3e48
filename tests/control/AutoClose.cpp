// Closers that the editor puts in, typed over or removed; older copies.
#include "control/edit/AutoClose.h"

#include <QClipboard>
#include <QMenu>
#include <QtTest>

#include "control/code/LanguageTable.h"
#include "control/edit/Carets.h"
#include "control/edit/PasteHistory.h"
#include "control/keys/KeyCommands.h"
#include "control/keys/KeyMacro.h"
#include "tests/control/PaneFixture.h"

namespace {

class AutoCloseTest : public PaneFixture {
 public:
  // Return, Backspace, Right and Delete are \n, \b, > and <.
  void types(const char* keys) {
    for (const char* c = keys; *c != 0; ++c) {
      if (*c == '\n') key(Qt::Key_Return, {}, QStringLiteral("\r"));
      else if (*c == '\b') key(Qt::Key_Backspace);
      else if (*c == '>') key(Qt::Key_Right);
      else if (*c == '<') key(Qt::Key_Delete);
      else typeText(QString(QLatin1Char(*c)));
    }
  }
};

}   // namespace

TEST_F(AutoCloseTest, ClosesTypesOverAndSurrounds) {
  const struct {
    const char *language, *before, *keys, *after;
  } cases[] = {
      {"", "|", "(", "(|)"},
      {"", "|", "(a)", "(a)|"},
      {"", "|", "([{x}])", "([{x}])|"},
      {"", "|", "\"a\"b", "\"a\"b|"},
      {"", "f|)", "(", "f(|)"},   // the closer waits for its opener
      {"", "|)", ")", ")|)"},     // only what the editor put in is typed over
      {"", "|", "(>)", "())|"},   // the caret left the pair
      {"", "|", "(\b", "|"},
      {"", "(|)", "\b", "|)"},
      {"", "f(|)", "(<\b", "f(|)"},   // the closer that moved beside the opener is the user's
      {"", "|word", "(", "(|word"},
      {"", "|(a)", "(", "(|(a)"},
      {"", "a|", "\"", "a\"|"},
      {"", "|", "\"\"\"", "\"\"\"|"},
      {"", "@word|", "(", "(@word|)"},
      {"", "|a\nb@", "[", "[|a\nb@]"},
      {"", "@word|", "\"", "\"@word|\""},
      {"", "@word|", ")", ")|"},
      {"C/C++", "  f|", "(\na\n);", "  f(\n  a\n  );|"},
      {"C/C++", "  f|", "(\n", "  f(\n  |\n  )"},
      {"C/C++", "|", "'a'", "'a'|"},
      {"C/C++", "// a |", "(", "// a (|"},
      {"C/C++", "\"a |\"", "(", "\"a (|\""},
      {"C/C++", "\"a|", "\"", "\"a\"|"},
      {"C/C++", "\"a\" |", "(", "\"a\" (|)"},
      {"C/C++", "/* a */|", "(", "/* a */(|)"},
      {"C/C++", "it|", "'", "it'|"},
      {"ticks", "4|", "'b0", "4'b0|"},
      {"ticks", "|", "'{", "'{|"},
      {"ticks", "t|", "'(", "t'(|"},
      {"ticks", "@a|", "'", "'@a|'"},
      {"ticks", "@a|", "`", "`|"},
      {"", "a#bc\nx\n\tz|", "(", "a(#bc)\nx\n\t(z|)"},
  };
  CmLanguage ticks;
  ticks.CaseSensitive = true;
  ticks.StringDelims = QStringLiteral("\"");
  LanguageTable::registerLanguage(QStringLiteral("ticks"), ticks);
  for (const auto& c : cases) {
    control.setLanguage(QString::fromLatin1(c.language));
    put(c.before);
    types(c.keys);
    EXPECT_EQ(now(), c.after) << c.before << " " << c.keys;
  }
  LanguageTable::unregisterLanguage(QStringLiteral("ticks"));

  put("foo foo |");
  using text::ByteOffset;
  const std::vector<Caret> words{{ByteOffset(0), ByteOffset(3)}, {ByteOffset(7), ByteOffset(4)}, {ByteOffset(8), ByteOffset(8)}};
  carets::set(control.editor(), words, 0);
  types("(");
  EXPECT_EQ(now(), "(@foo|) (foo) (") << "at each caret";
  EXPECT_EQ(carets::count(control.editor()), 3u);
  types("x");
  EXPECT_EQ(now(), "(x|) (x) (x");
  control.ExecuteCmd(Cmd::UNDO);
  control.ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(now().substr(0, 8), "@foo| fo");
  carets::drop(control.editor());
}

TEST_F(AutoCloseTest, IsOneUndoStepAndNeverInMacrosOrPastedText) {
  put("|");
  types("(");
  control.editor().undo();
  EXPECT_EQ(now(), "|");
  QApplication::clipboard()->setText(QStringLiteral("("));
  control.ExecuteCmd(Cmd::PASTE);
  EXPECT_EQ(now(), "(|");
  put("|");
  keyMacros().toggleRecording();
  types("f(a)");
  keyMacros().toggleRecording();
  EXPECT_EQ(now(), "f(a)|");
  put("|");
  control.ExecuteCmd(anyCommandByName(u"MACROPLAY")->id);
  EXPECT_EQ(now(), "f(a)|");
  keyMacros().fromText({});
  put("|");
  types("(");
  control.editor().overtype = true;
  types(")");
  EXPECT_EQ(bytes(), "()");
  control.editor().overtype = false;
  TypingAids none;
  control.setAids(none);
  put("@a|");
  types("(\"");
  EXPECT_EQ(now(), "(\"|");
}

TEST_F(AutoCloseTest, TheReturnBetweenTwoAndTheirMovesKeepThePair) {
  put("|");
  types("(ab");
  control.InsertText(QStringLiteral("xx"), {0, 0});   // another caret, or another window
  types(")");
  EXPECT_EQ(now(), "xx(ab)|");
  put("\n|");
  types("(a");
  key(Qt::Key_Up);   // leaves the pair
  key(Qt::Key_Down);
  control.SetSel({1, 2, 1, 2});
  types(")");
  EXPECT_EQ(now(), "\n(a)|)");
}

TEST_F(AutoCloseTest, OlderCopiesCanBePasted) {
  pasteHistory() = {};
  control.setText(QStringLiteral("one two"));
  for (const int column : {0, 4, 0}) {
    control.SetSel({0, column, 0, column + 3});
    control.ExecuteCmd(Cmd::COPY);
  }
  ASSERT_EQ(pasteHistory().texts().size(), 2u);   // each once
  EXPECT_EQ(pasteHistory().texts()[0].text, QStringLiteral("one"));
  put("|");
  key(Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
  auto* menu = control.findChild<QMenu*>();
  ASSERT_NE(menu, nullptr);
  ASSERT_EQ(menu->actions().size(), 2);
  menu->actions()[1]->trigger();
  EXPECT_EQ(now(), "two|");
  menu->close();
  for (int i = 0; i < 30; ++i) pasteHistory().add({QString::number(i)});
  pasteHistory().add({QString(PasteHistory::kLargest + 1, u'x')});
  EXPECT_EQ(pasteHistory().texts().size(), PasteHistory::kMost);
  EXPECT_EQ(pasteHistory().texts()[0].text, QStringLiteral("29"));
}
