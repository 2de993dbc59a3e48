// The command table, and its cases (CommandCases*.cpp): text with markers before and after, undo back to the first text, and
// nothing changed where the text is read-only.
#include <set>

#include "tests/control/CommandCases.h"

namespace {

std::vector<CommandCase> allCases() {
  std::vector<CommandCase> all;
  for (auto part : {moveCases(), editCases(), lineCases(), findCases()}) all.insert(all.end(), part.begin(), part.end());
  return all;
}

void setUp(EditorFixture& f, const CommandCase& c) {
  f.options->expandTabs = c.more.expand;
  f.options->autoIndent = c.more.indent;
  f.host.top = c.more.top;
  f.host.left = c.more.left;
  f.host.clipboard = QString::fromUtf8(c.more.clipboard);
  f.host.clipboardBlock = c.more.block;
  searchState() = {QString::fromUtf8(c.more.find), QString::fromUtf8(c.more.replace), c.more.search, c.more.preserveCase};
  if (c.more.prepare) c.more.prepare(f);
}

void checkWhatItDoes(const CommandCase& c) {
  EditorFixture f(c.before);
  setUp(f, c);
  const std::string textBefore = f.bytes(), shownBefore = f.shown();
  if (c.more.count != 1) f.editor.repeatCount = c.more.count;
  ASSERT_TRUE(f.run(c.command, c.more.argument));
  EXPECT_EQ(f.shown(), c.after);
  if (c.more.check) c.more.check(f);
  if (c.more.note) { EXPECT_EQ(f.host.notes.value(f.host.notes.size() - 1).toStdString(), c.more.note); }
  EXPECT_EQ(f.host.clipboard, QString::fromUtf8(c.more.clipboardAfter ? c.more.clipboardAfter : c.more.clipboard));
  EXPECT_EQ(f.host.clipboardBlock, c.more.clipboardAfter ? c.more.blockAfter : c.more.block);
  const bool travels = std::string(c.command).find("UNDO") == 0 || std::string(c.command).find("REDO") == 0;
  if (f.bytes() == textBefore || travels) return;
  const std::string shownAfter = f.shown();
  EXPECT_TRUE(f.editor.undo());
  EXPECT_EQ(f.shown(), shownBefore) << "one undo step";
  EXPECT_TRUE(f.editor.redo());
  EXPECT_EQ(f.shown(), shownAfter) << "redo";
}

void checkReadOnly(const CommandCase& c) {
  EditorFixture f(c.before);
  setUp(f, c);
  f.editor.document().setReadOnly(true);
  const std::string before = f.bytes();
  const std::uint64_t revision = f.editor.document().revision();
  f.editor.repeatCount = c.more.count;
  EXPECT_TRUE(f.run(c.command, c.more.argument));
  EXPECT_EQ(f.bytes(), before);
  EXPECT_EQ(f.editor.document().revision(), revision);
  if (std::string(c.command).find("CUT") != std::string::npos) { EXPECT_EQ(f.host.clipboard, QString::fromUtf8(c.more.clipboard)); }
}

}   // namespace

void checkCases(const std::vector<CommandCase>& cases) {
  for (const CommandCase& c : cases) {
    SCOPED_TRACE(std::string(c.command) + ": " + c.before);
    checkWhatItDoes(c);
    checkReadOnly(c);
  }
}

TEST(Commands, TableIsWhole) {
  ASSERT_EQ(commands().size(), 113u);
  std::set<std::string> names;
  int id = 100;
  for (const Command& command : commands()) {
    EXPECT_EQ(command.id, id++);
    EXPECT_TRUE(names.insert(command.name).second) << command.name;
    EXPECT_NE(command.run, nullptr);
    EXPECT_TRUE(QString::fromUtf8(command.help).endsWith(u'.')) << command.name;
    EXPECT_EQ(commandById(command.id), &command);
    EXPECT_EQ(commandByName(QString::fromUtf8(command.name).toLower()), &command);
  }
  for (int unknown : {-1, 0, 99, 213, 1 << 30}) EXPECT_EQ(commandById(unknown), nullptr);
  for (const char16_t* unknown : {u"", u"WORD", u"WORDRIGHT ", u"ＵＮＤＯ"}) EXPECT_EQ(commandByName(unknown), nullptr);
  EditorFixture f("a|");
  EXPECT_FALSE(f.editor.execute(99));
  EXPECT_TRUE(f.editor.execute(Cmd::NEWLINE));
}

// The numbers are stored in settings and used from outside: pinned by a few of them all along the table.
TEST(Commands, NumbersAreKept) {
  // clang-format off
  const std::pair<const char*, int> numbers[] = {
      {"WORDUPPERCASE", 100}, {"WORDRIGHTEXTEND", 102}, {"WORDLEFT", 108}, {"WINDOWSTART", 114}, {"UPPERCASESELECTION", 125}, {"UNDO", 129},
      {"PASTE", 140}, {"PAGEUP", 144}, {"LINEUP", 149}, {"LINECUT", 161}, {"GOTOLINE", 168}, {"REPLACEALLINBUFFER", 171}, {"FINDNEXT", 176},
      {"SETFINDTEXT", 179}, {"TOGGLEPRESERVECASE", 181}, {"TOGGLEWHOLEWORD", 182}, {"SETREPEATCOUNT", 187}, {"DELETE", 195},
      {"CHARLEFT", 203}, {"BOOKMARKJUMPTOLAST", 209}, {"INSERTCHAR", 211}, {"NEWLINE", 212}};
  // clang-format on
  for (const auto& [name, id] : numbers) {
    ASSERT_NE(commandByName(QString::fromUtf8(name)), nullptr) << name;
    EXPECT_EQ(commandByName(QString::fromUtf8(name))->id, id);
  }
}

TEST(Commands, EveryRowHasACase) {
  std::set<std::string> covered;
  for (const CommandCase& c : allCases()) covered.insert(c.command);
  for (const Command& command : commands()) EXPECT_TRUE(covered.count(command.name)) << command.name;
}
