#include "control/keys/KeyMacro.h"

#include <random>

#include "base/Program.h"

#include "control/keys/KeyCommands.h"
#include "control/keys/KeyMap.h"
#include "tests/control/EditorFixture.h"
#include "tests/support/Cost.h"

namespace {

QKeySequence keys(const char* text) { return QKeySequence(QString::fromLatin1(text), QKeySequence::PortableText); }

class KeyMacroTest : public testing::Test {
 protected:
  void TearDown() override {
    keyMacros() = {};
    keyMap().restoreDefaults();
    searchState() = {};
  }
};

}   // namespace

TEST_F(KeyMacroTest, RecordsWhatTheUserDoesAndPlaysIt) {
  EditorFixture f("|one two\nfour five\nsix seven\n");
  const auto key = [&f](const char* name) { executeAny(f.editor, anyCommandByName(QString::fromLatin1(name))->id); };
  f.run("CHARRIGHT");   // before the recording
  key("MACRORECORD");
  key("HOME");
  f.editor.typeText(QStringLiteral("<"));
  f.editor.typeText(QStringLiteral("\""));
  f.run("WORDUPPERCASE");
  f.editor.execute(Cmd::NEWLINE);
  {
    const BusyGuard busy;   // the program's own doing is no part of it
    f.run("SELECTALL");
    f.run("DOCUMENTSTART");
    f.run("LINEDOWN");
  }
  f.run("GOTOLINE", 2);
  key("MACRORECORD");
  ASSERT_EQ(keyMacros().names(), QStringList(QStringLiteral("Macro 1")));
  EXPECT_EQ(keyMacros().toText().toStdString(), "[Macro 1]\nHOME\nTYPE \"<\\\"\"\nWORDUPPERCASE\nNEWLINE\nGOTOLINE 2");

  f.show("|one two\nfour five\nsix seven\n");
  const std::string before = f.bytes();
  EXPECT_TRUE(keyMacros().play(f.editor, QStringLiteral("Macro 1"), 2));
  EXPECT_EQ(f.bytes(), "<\"ONE\n two\n<\"FOUR\n five\nsix seven\n");
  EXPECT_TRUE(f.editor.undo());
  EXPECT_EQ(f.bytes(), before) << "one undo step";
  EXPECT_FALSE(keyMacros().play(f.editor, QStringLiteral("unknown")));
}

TEST_F(KeyMacroTest, SearchesPlayWithTheSwitchesThatWereRecorded) {
  EditorFixture f("|ab Ab xab a.");
  searchState() = {QStringLiteral("a[bz]"), QStringLiteral("<$0>"), {true, true, true}};
  keyMacros().toggleRecording();
  f.run("REPLACEALLINBUFFER");
  keyMacros().toggleRecording();
  searchState() = {};
  keyMacros().fromText(keyMacros().toText());
  f.show("|ab Ab xab a.");
  keyMacros().play(f.editor, QStringLiteral("Macro 1"));
  EXPECT_EQ(f.bytes(), "<ab> Ab xab a.");
}

TEST_F(KeyMacroTest, EachCutOfAMacroPlayedInRepetitionsStandsAlone) {
  EditorFixture f("|1\n2\n3\n");
  keyMacros().fromText(QStringLiteral("[m]\nDOCUMENTSTART\nLINECUT\nDOCUMENTEND\nPASTE"));
  keyMacros().play(f.editor, QStringLiteral("m"), 0);   // it is the one played last
  f.editor.repeatCount = 2;
  executeAny(f.editor, anyCommandByName(u"MACROPLAY")->id);
  EXPECT_EQ(f.bytes(), "3\n1\n2\n");
  // The repetitions of one command go to the clipboard together, and cost no more than what they cut.
  std::string lines;
  for (int i = 0; i < 30000; ++i) lines += std::string(100, 'x') + "\n";
  f.show("|" + lines);
  f.editor.repeatCount = 30000;
  const double before = spentMs();
  f.run("LINECUT");
  EXPECT_LT(spentMs() - before, 4000);
  EXPECT_EQ(f.bytes(), "");
  EXPECT_EQ(f.host.clipboard, QString::fromStdString(lines));
}

TEST_F(KeyMacroTest, OneThatUndoesIsPlayedSeveralTimes) {
  EditorFixture f("|");
  keyMacros().set(
      {QStringLiteral("back"), {{0, QStringLiteral("x")}, {CommandNumber(Cmd::UNDO), {}}, {CommandNumber(Cmd::NEWLINE), {}}}});
  keyMacros().play(f.editor, QStringLiteral("back"), 0);   // it is the one played last
  f.run("SETREPEATCOUNT", 2);
  executeAny(f.editor, anyCommandByName(u"MACROPLAY")->id);
  EXPECT_EQ(f.bytes(), "\n\n");
}

TEST_F(KeyMacroTest, PlayedInsideARecordingBecomesPartOfIt) {
  EditorFixture f("|");
  keyMacros().set({QStringLiteral("inner"), {{0, QStringLiteral("i")}, {CommandNumber(Cmd::NEWLINE), {}}}});
  keyMacros().toggleRecording();
  f.editor.typeText(QStringLiteral("o"));
  keyMacros().play(f.editor, QStringLiteral("inner"));
  keyMacros().toggleRecording();
  EXPECT_EQ(keyMacros().find(QStringLiteral("Macro 1"))->steps,
            (std::vector<KeyMacroStep>{{0, QStringLiteral("oi")}, {CommandNumber(Cmd::NEWLINE), {}}}));
  EXPECT_TRUE(keyMacros().rename(QStringLiteral("Macro 1"), QStringLiteral("mine")));
  EXPECT_EQ(keyMacros().current(), QStringLiteral("mine")) << "the key that plays the last one plays it";
}

TEST_F(KeyMacroTest, TextRoundTrips) {
  const QString text = QStringLiteral(
      "[A = b, c] Ctrl+Alt+1; Ctrl+K, 1\nTYPE \"tab\\t line\\n quote\\\" back\\\\ bell\\u0007 bad\\udcff öß😀 [x]\"\nGOTOLINE 12\n"
      "SETFINDTEXT \"\"\nINSERTCHAR \"x\"\nCOLUMNDOWNEXTEND\n[Empty]\n[x]\nUNDO");
  EXPECT_EQ(keyMacros().fromText(text), 0);
  EXPECT_EQ(keyMacros().toText().toStdString(), text.toStdString());
  EXPECT_EQ(keyMap().actionOf(keys("Ctrl+K, 1")).macro, QStringLiteral("A = b, c"));
  EXPECT_EQ(keyMap().toText(), QString());   // keys of macros stand with the macros
  const auto& typed = keyMacros().find(QStringLiteral("A = b, c"))->steps[0].argument;
  EXPECT_EQ(fromQString(typed.toString()), "tab\t line\n quote\" back\\ bell\x07 bad\xFF öß😀 [x]");

  EXPECT_TRUE(keyMacros().rename(QStringLiteral("A = b, c"), QStringLiteral("B")));
  EXPECT_EQ(keyMap().actionOf(keys("Ctrl+Alt+1")).macro, QStringLiteral("B"));
  EXPECT_FALSE(keyMacros().rename(QStringLiteral("B"), QStringLiteral("x")));
  keyMacros().remove(QStringLiteral("B"));
  EXPECT_TRUE(keyMap().actionOf(keys("Ctrl+Alt+1")).isNone());
  for (const char* bad : {"", " ", "a]b", "a\nb", " a"}) EXPECT_FALSE(keyMacros().set({QString::fromUtf8(bad), {}})) << bad;
}

// Whatever is read, what is written from it reads back the same.
TEST_F(KeyMacroTest, AnyTextReadsToSomethingThatRoundTrips) {
  std::mt19937 random(7);
  const QStringList parts{QStringLiteral("["),           QStringLiteral("]"),         QStringLiteral("\""),
                          QStringLiteral("\\"),          QStringLiteral("u0041"),     QStringLiteral("TYPE "),
                          QStringLiteral("UNDO"),        QStringLiteral("GOTOLINE "), QStringLiteral("7"),
                          QStringLiteral("INSERTCHAR "), QStringLiteral("\n"),        QStringLiteral(" "),
                          QStringLiteral("Ctrl+"),       QStringLiteral("Z"),         QStringLiteral("="),
                          QStringLiteral(", "),          QStringLiteral("; "),        QStringLiteral("\u00e9"),
                          QString(QChar(0xD800)),        QString(QChar(0)),           QStringLiteral("\r")};
  for (int run = 0; run < 3000; ++run) {
    QString text;
    for (unsigned n = random() % 40; n > 0; --n) text += parts[static_cast<qsizetype>(random() % parts.size())];
    keyMacros().fromText(text);
    const QString written = keyMacros().toText();
    EXPECT_EQ(keyMacros().fromText(written), 0) << written.toStdString();
    EXPECT_EQ(keyMacros().toText(), written);
    KeyMap map;
    map.fromText(text);
    const QString keysWritten = map.toText();
    KeyMap again;
    EXPECT_EQ(again.fromText(keysWritten), 0) << keysWritten.toStdString();
    EXPECT_EQ(again.toText(), keysWritten);
    if (HasFailure()) break;
  }
}

TEST_F(KeyMacroTest, UnknownLinesAreSkippedAndCounted) {
  EXPECT_EQ(keyMacros().fromText(
                QStringLiteral("UNDO\n[ok] Ctrl+9\r\nundo\r\nNOSUCH\nUNDO 3\nGOTOLINE x\nTYPE x\nTYPE \"a\\q\"\n"
                               "TYPE \"a\\u12\"\nTYPE \"a\"b\"\nMACROPLAY\n[\nREDO\n[]\nREDO\n[two] Ctrl+1, 2, 3, 4\nREDO")),
            14);
  EXPECT_EQ(keyMacros().toText().toStdString(), "[ok] Ctrl+9\nUNDO\n[two]\nREDO");
}
