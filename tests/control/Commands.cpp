// The command table, and its cases (commands.txt): text with markers before and after, undo back to the first text, and nothing
// changed where the text is read-only.
#include <set>

#include "tests/control/CaseFile.h"
#include "tests/control/EditorFixture.h"
#include "tests/support/Text.h"

namespace {

const std::set<std::string> kWords = {
    "argument", "back",    "block", "blockAfter", "bookmarks", "bookmarksAfter", "case",      "clipboard", "clipboardAfter",
    "count",    "expand",  "find",  "first",      "indent",    "left",           "leftAfter", "note",      "preserve",
    "regex",    "replace", "saved", "state",      "top",       "topAfter",       "typed",     "word"};

// Each line break and each text between is a step of its own.
void type(EditorFixture& f, QString text) {
  for (; !text.isEmpty(); text.remove(0, std::max<qsizetype>(1, text.section(u'\n', 0, 0).size())))
    text.startsWith(u'\n') ? f.editor.newLine() : f.editor.typeText(text.section(u'\n', 0, 0));
}

std::string bookmarksOf(EditorFixture& f) {
  std::string lines;
  for (const text::LineNo line : f.model->bookmarks()) lines += (lines.empty() ? "" : " ") + std::to_string(line.value);
  return lines;
}

std::string stateOf(EditorFixture& f) {
  const SearchState& search = searchState();
  const std::pair<bool, QString> words[] = {
      {f.editor.overtype, q("overtype")},
      {f.editor.appendNextCut, q("append")},
      {f.editor.repeatCount != 1, q("repeat %1").arg(f.editor.repeatCount)},
      {f.host.whiteSpaceToggles == 1, q("blanks")},
      {f.host.findDialogs == 1, q("find")},
      {f.host.replaceDialogs == 1, q("replace")},
      {search.options.matchCase, q("case")},
      {search.options.wholeWord, q("word")},
      {search.preserveCase, q("preserve")},
      {!search.findText.isEmpty(), q("find=") + search.findText},
      {!search.replaceText.isEmpty(), q("replace=") + search.replaceText},
  };
  QStringList all;
  for (const auto& [holds, word] : words)
    if (holds) all << word;
  return all.join(u' ').toStdString();
}

void setUp(EditorFixture& f, const Case& c) {
  f.options->expandTabs = c.has("expand");
  f.options->autoIndent = c.text("indent") == q("off") ? AutoIndent::off
                          : c.has("indent")            ? AutoIndent::language
                                                       : AutoIndent::same;
  f.host.top = c.number("top", 0);
  f.host.left = c.number("left", 0);
  f.host.clipboard = c.text("clipboard");
  f.host.clipboardBlock = c.has("block");
  searchState() = {c.text("find"),
                   c.text("replace"),
                   {.matchCase = c.has("case"), .wholeWord = c.has("word"), .regex = c.has("regex")},
                   c.has("preserve")};
  for (const QString& line : c.text("bookmarks").split(u' ', Qt::SkipEmptyParts))
    f.model->setBookmark(text::LineNo(line.toInt()), true);
  type(f, c.text("typed"));
  if (c.has("saved")) f.model->setModified(false);
  type(f, c.text("saved"));
  while (c.has("back") && f.editor.undo()) {}
  for (const QString& one : c.text("first").split(q("; "), Qt::SkipEmptyParts))
    f.run(s(one.section(u' ', 0, 0)).c_str(), one.section(u' ', 1));
  f.editor.repeatCount = c.number("count", f.editor.repeatCount);
}

bool run(EditorFixture& f, const Case& c) {
  bool isNumber = false;
  const qlonglong number = c.text("argument").toLongLong(&isNumber);
  return f.run(c.command.c_str(), isNumber ? QVariant(number) : c.has("argument") ? QVariant(c.text("argument")) : QVariant());
}

void checkWhatItDoes(const Case& c) {
  EditorFixture f(c.before);
  setUp(f, c);
  const std::string textBefore = f.bytes(), shownBefore = f.shown();
  ASSERT_TRUE(run(f, c));
  EXPECT_EQ(f.shown(), c.after);
  if (c.has("topAfter")) { EXPECT_EQ(f.host.top, c.number("topAfter", 0)); }
  if (c.has("leftAfter")) { EXPECT_EQ(f.host.left, c.number("leftAfter", 0)); }
  if (c.has("bookmarksAfter")) { EXPECT_EQ(bookmarksOf(f), c.more.at("bookmarksAfter")); }
  if (c.has("state")) { EXPECT_EQ(stateOf(f), c.more.at("state")); }
  if (c.has("note")) { EXPECT_EQ(s(f.host.notes.value(f.host.notes.size() - 1)), c.more.at("note")); }
  EXPECT_EQ(f.host.clipboard, c.text(c.has("clipboardAfter") ? "clipboardAfter" : "clipboard"));
  EXPECT_EQ(f.host.clipboardBlock, c.has(c.has("clipboardAfter") ? "blockAfter" : "block"));
  const bool travels = c.command.starts_with("UNDO") || c.command.starts_with("REDO");
  if (f.bytes() == textBefore || travels) return;
  const std::string shownAfter = f.shown();
  EXPECT_TRUE(f.editor.undo());
  EXPECT_EQ(f.shown(), shownBefore) << "one undo step";
  EXPECT_TRUE(f.editor.redo());
  EXPECT_EQ(f.shown(), shownAfter) << "redo";
}

void checkReadOnly(const Case& c) {
  EditorFixture f(c.before);
  setUp(f, c);
  f.editor.document().setReadOnly(true);
  const std::string before = f.bytes();
  const std::uint64_t revision = f.editor.document().revision();
  EXPECT_TRUE(run(f, c));
  EXPECT_EQ(f.bytes(), before);
  EXPECT_EQ(f.editor.document().revision(), revision);
  if (c.command.find("CUT") != std::string::npos) { EXPECT_EQ(f.host.clipboard, c.text("clipboard")); }
}

}   // namespace

TEST(Commands, DoWhatTheySay) {
  std::set<std::string> covered;
  for (const Case& c : casesOf("commands.txt", kWords)) {
    SCOPED_TRACE(c.command + ": " + c.before);
    checkWhatItDoes(c);
    checkReadOnly(c);
    covered.insert(c.command);
  }
  for (const Command& command : commands()) EXPECT_TRUE(covered.count(command.name)) << command.name << " has no case";
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

// The lines are gathered beside the window. Cancel leaves the text, its bookmarks and the clipboard.
TEST(Commands, MarkedLinesStayWhenTheWorkIsCancelled) {
  struct Window : FakeHost {
    bool cancels = true;
    int works = 0;
    void work(std::int64_t bytes, const std::function<void(text::SearchControl&)>& work) override {
      ++works;
      text::SearchControl control;
      control.cancel = cancels;
      work(control);
      EXPECT_TRUE(cancels || control.bytesDone == bytes);
    }
  } window;
  EditorFixture f("one\ntwo\nthree");
  Editor editor{f.model, f.options, &window};
  window.clipboard = q("old");
  for (const char* name : {"BOOKMARKLINESCUT", "BOOKMARKLINESDELETE", "BOOKMARKLINESCOPY"}) {
    SCOPED_TRACE(name);
    f.show("one\ntwo\nthree|");
    for (const int line : {0, 2}) f.model->setBookmark(text::LineNo(line), true);
    for (const bool cancels : {true, false}) {
      window.cancels = cancels;
      executeAny(editor, anyCommandByName(QString::fromLatin1(name))->id, {});
      if (!cancels) continue;
      EXPECT_EQ(f.bytes(), "one\ntwo\nthree");
      EXPECT_EQ(bookmarksOf(f), "0 2");
      EXPECT_EQ(window.clipboard, q("old"));
    }
    window.clipboard = q("old");
  }
  EXPECT_EQ(window.works, 6) << "none is done on the thread of the window";
}
