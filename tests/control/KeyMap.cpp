#include "control/keys/KeyMap.h"

#include <gtest/gtest.h>

#include <QKeyEvent>

#include "control/keys/KeyCommands.h"

namespace {

QKeySequence keys(const char* text) { return QKeySequence(QString::fromLatin1(text), QKeySequence::PortableText); }
int idOf(const char* name) { return anyCommandByName(QString::fromLatin1(name))->id; }
int stroke(int key, Qt::KeyboardModifiers modifiers = {}) { return KeyMap::strokeOf(QKeyEvent(QEvent::KeyPress, key, modifiers)); }

}   // namespace

TEST(KeyMap, EveryDefaultKeyRunsItsCommand) {
  const KeyMap map;
  QHash<QString, QString> seen;
  for (std::span<const Command> table : {commands(), keyCommands()})
    for (const Command& command : table)
      for (const QString& text : QString::fromLatin1(command.keys).split(QStringLiteral("; "), Qt::SkipEmptyParts)) {
        const QKeySequence sequence(text, QKeySequence::PortableText);
        EXPECT_EQ(sequence.toString(QKeySequence::PortableText), text) << command.name;
        EXPECT_EQ(map.actionOf(sequence).command, command.id) << command.name << ' ' << text.toStdString();
        EXPECT_FALSE(seen.contains(text)) << text.toStdString() << " stands twice";
        EXPECT_TRUE(map.conflicts(sequence) == QList{sequence}) << text.toStdString() << " is in the way of another";
        seen.insert(text, text);
      }
  EXPECT_GT(seen.size(), 90);
  // Keys that the frame has for itself.
  for (const char* frames :
       {"Ctrl+N", "Ctrl+O", "Ctrl+S", "Ctrl+P",  "Ctrl+W",   "Ctrl+F",   "Ctrl+H",   "Ctrl+G",        "F1",      "F2",
        "F3",     "F5",     "F6",     "Ctrl+F2", "Shift+F1", "Shift+F2", "Shift+F3", "Ctrl+Shift+F1", "Ctrl+F4", "Ctrl+Shift+S"})
    EXPECT_TRUE(map.actionOf(keys(frames)).isNone()) << frames;
}

TEST(KeyMap, BindsUnbindsAndTellsConflicts) {
  KeyMap map;
  const KeyAction undo{idOf("UNDO"), {}};
  EXPECT_TRUE(map.bind(keys("Ctrl+Q"), undo));
  EXPECT_TRUE(map.keysOf(undo).contains(keys("Ctrl+Q")));
  EXPECT_FALSE(map.bind({}, undo));
  EXPECT_FALSE(map.bind(keys("Ctrl+A, B, C"), undo));
  EXPECT_EQ(map.conflicts(keys("Ctrl+Q, A")), QList{keys("Ctrl+Q")});
  EXPECT_TRUE(map.conflicts(keys("Ctrl+K")).contains(keys("Ctrl+K, Ctrl+U")));
  EXPECT_TRUE(map.conflicts(keys("Ctrl+K, 9")).isEmpty());

  map.bind(keys("Ctrl+Q"), {});
  EXPECT_TRUE(map.actionOf(keys("Ctrl+Q")).isNone());
  // A prefix whose last sequence goes is a key like any other.
  map.bind(keys("Ctrl+J, A"), undo);
  map.bind(keys("Ctrl+J, A"), {});
  KeyAction action;
  EXPECT_EQ(map.find(stroke(Qt::Key_J, Qt::ControlModifier), 0, &action), KeyMap::Match::none);
  map.bind(keys("Ctrl+Z"), {});
  map.restoreDefaults();
  EXPECT_EQ(map.actionOf(keys("Ctrl+Z")), undo);
  EXPECT_EQ(map.toText(), QString());
}

TEST(KeyMap, NamedActionsHaveDefaultsAndKeysOfTheirOwn) {
  KeyMap map;
  map.bind(keys("Ctrl+2"), {idOf("REDO"), {}, {}});
  map.setNamedActions({{QStringLiteral("MENU save"), {}, {}, QStringLiteral("Ctrl+1; Ctrl+2; Ctrl+Z")}});
  const KeyAction save{0, {}, QStringLiteral("MENU save")};
  EXPECT_EQ(map.keysOf(save), QList{keys("Ctrl+1")}) << "a default takes nothing away from others";
  map.bind(keys("Ctrl+J, S"), save);
  KeyAction action;
  EXPECT_EQ(map.find(stroke(Qt::Key_J, Qt::ControlModifier), 0, &action), KeyMap::Match::none)
      << "the text leaves it to short-cuts";
  map.bind(keys("Ctrl+K, S"), save);
  EXPECT_EQ(map.find(stroke(Qt::Key_K, Qt::ControlModifier), stroke(Qt::Key_S), &action), KeyMap::Match::exact);
  EXPECT_EQ(action, save);
  map.bind(keys("Ctrl+1"), {});
  map.bind(keys("Ctrl+9"), {0, {}, QStringLiteral("CUSTOM gone%20now")});

  KeyMap other;
  EXPECT_EQ(other.fromText(map.toText() + QStringLiteral("\nCtrl+3=CUSTOM two words\nCtrl+4=custom x")), 2);
  EXPECT_EQ(other.toText(), map.toText().remove(QStringLiteral("Ctrl+1=\n"))) << "kept where nobody knows the names";
  other.setNamedActions(map.namedActions());
  EXPECT_EQ(other.fromText(map.toText()), 0);
  EXPECT_EQ(other.keysOf(save), map.keysOf(save));
  EXPECT_EQ(other.boundNames(), map.boundNames());
}

TEST(KeyMap, TextRoundTripsAndSkipsWhatItDoesNotKnow) {
  KeyMap map;
  map.bind(keys("Ctrl+Z"), {});
  map.bind(keys("Ctrl+="), {idOf("REDO"), {}});
  map.bind(keys("Ctrl+J, Alt+X"), {idOf("WORDCAPITALIZE"), {}});
  map.bind(keys("Left"), {idOf("WORDLEFT"), {}});
  map.bind(keys("Ctrl+M"), {0, QStringLiteral("mine")});
  const QString text = map.toText();
  EXPECT_EQ(text, QStringLiteral("Ctrl+==REDO\nCtrl+J, Alt+X=WORDCAPITALIZE\nCtrl+Z=\nLeft=WORDLEFT"));
  KeyMap other;
  other.bind(keys("Ctrl+M"), {0, QStringLiteral("mine")});
  other.bind(keys("Ctrl+9"), {idOf("REDO"), {}});   // goes: the text says all
  EXPECT_EQ(other.fromText(text), 0);
  EXPECT_EQ(other.toText(), text);
  EXPECT_EQ(other.actionOf(keys("Ctrl+M")).macro, QStringLiteral("mine"));
  EXPECT_TRUE(other.actionOf(keys("Ctrl+9")).isNone());

  EXPECT_EQ(other.fromText(
                QStringLiteral("\r\nCtrl+1=undo\r\nnonsense\n=UNDO\nCtrl+2=NOSUCH\nCtrl+A, B, C, D=UNDO\nHyper+=UNDO\n\x01=\n")),
            6);
  EXPECT_EQ(other.actionOf(keys("Ctrl+1")).command, idOf("UNDO"));
  EXPECT_TRUE(other.actionOf(keys("Ctrl+2")).isNone());
  EXPECT_EQ(other.actionOf(keys("Ctrl+Z")).command, idOf("UNDO"));
}
