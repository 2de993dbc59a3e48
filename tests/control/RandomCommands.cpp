// Random sequences of commands, typing and undo on texts full of trouble: the engine's invariants hold, the caret stays on
// characters, and undoing everything brings the first text back. ZELKOR_SEED and ZELKOR_STEPS choose another run.
#include <random>

#include "control/keys/KeyCommands.h"
#include "tests/control/EditorFixture.h"

namespace {

const std::string kPieces[] = {"\n", "\r\n", "\t", " ",        "  ", "a", "Word", "x_1",  "(",
                               "}",  ".",    ". ", "\xCC\x81", "世", "😀", "\xFF", "\xC3", std::string(1, '\0'),
                               "\r", "\n\n"};

std::string randomText(std::mt19937& random, int pieces) {
  std::string text;
  while (pieces-- > 0) text += kPieces[random() % std::size(kPieces)];
  return text;
}

void checkSelection(EditorFixture& f) {
  const text::Snapshot& now = f.editor.snapshot();
  for (const text::ByteOffset at : {f.editor.selection().anchor, f.editor.selection().caret}) {
    ASSERT_GE(at, text::ByteOffset(0));
    ASSERT_LE(at, now.size());
    if (at.value == 0 || at == now.size()) continue;
    ASSERT_FALSE(now.at(at - 1) == '\r' && now.at(at) == '\n') << "inside CR LF";
    const CmPosition position = f.editor.positionOf(at);
    ASSERT_EQ(f.editor.offsetOf(position), at) << "inside a character";
  }
}

void oneRun(unsigned seed, int steps) {
  SCOPED_TRACE("ZELKOR_SEED=" + std::to_string(seed));
  std::mt19937 random(seed);
  EditorFixture f;
  const std::string first = randomText(random, 60);
  f.model->replaceAll(text::Snapshot(first), {});
  f.options->tabSize = 1 + static_cast<int>(random() % 8);
  f.options->expandTabs = random() % 2;
  f.options->autoIndent = static_cast<AutoIndent>(random() % 3);
  searchState() = {QStringLiteral("a"), QStringLiteral("aa\n"), {}, false};
  std::vector<const Command*> all;
  for (std::span<const Command> table : {commands(), keyCommands()})
    for (const Command& command : table)
      if (!QByteArray(command.name).startsWith("MACRO")) all.push_back(&command);

  for (int i = 0; i < steps; ++i) {
    const Command* command = all[random() % all.size()];
    const std::string name = command->name;
    if (random() % 4 == 0) f.editor.typeText(toQString(randomText(random, 1 + random() % 3)));
    if (random() % 3 == 0) f.editor.repeatCount = 1 + static_cast<int>(random() % 3);
    if (f.editor.snapshot().size() < text::ByteOffset(30)) f.editor.replaceSelection(toQString(randomText(random, 60)));
    // The text stays small: searching and pasting over and over makes it grow without end.
    if (f.editor.snapshot().size() > text::ByteOffset(4000)) {
      f.run("SELECTALL");
      f.run("DELETE");
    }
    QVariant argument;
    if (command->argument == CommandArgument::number) argument = static_cast<int>(random() % 5);
    if (command->argument == CommandArgument::text) argument = toQString(randomText(random, 2));
    ASSERT_TRUE(executeAny(f.editor, command->id, argument)) << name;
    ASSERT_NO_FATAL_FAILURE(checkSelection(f)) << name << " at step " << i;
    f.editor.document().checkInvariants();
  }
  while (f.editor.redo()) {}   // some of the last commands may have been undo
  const std::string last = f.bytes();
  while (f.editor.undo()) checkSelection(f);
  EXPECT_EQ(f.bytes(), first);
  while (f.editor.redo()) checkSelection(f);
  EXPECT_EQ(f.bytes(), last);
  f.editor.document().checkInvariants();
  searchState() = {};
}

}   // namespace

TEST(RandomCommands, KeepTheTextWholeAndUndo) {
  const int steps = qEnvironmentVariableIsSet("ZELKOR_STEPS") ? qEnvironmentVariableIntValue("ZELKOR_STEPS") : 300;
  if (qEnvironmentVariableIsSet("ZELKOR_SEED")) {
    oneRun(static_cast<unsigned>(qEnvironmentVariableIntValue("ZELKOR_SEED")), steps);
    return;
  }
  for (unsigned seed = 1; seed <= 40 && !testing::Test::HasFailure(); ++seed) oneRun(seed, steps);
}
