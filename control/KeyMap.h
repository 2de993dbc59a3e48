// What keys do: sequences of one or two strokes, each bound to a command or to a keystroke macro. There is one for the program;
// it starts with the default keys of the command tables.
//
// As text (the setting HOTKEYS): one line "<keys>=<COMMAND>" for each difference from the defaults, in the portable spelling
// ("Ctrl+K, Ctrl+U=WORDUPPERCASE"); "<keys>=" takes a default away. The keys of macros stand with the macros (KeyMacro.h).
#pragma once

#include <QHash>
#include <QKeySequence>
#include <QString>
#include <QStringList>

class QKeyEvent;

struct KeyAction {
  int command = 0;      // of either command table; 0: none
  QString macro;        // name of a macro; empty: none
  bool isNone() const { return command == 0 && macro.isEmpty(); }
  bool operator==(const KeyAction&) const = default;
};

class KeyMap {
 public:
  KeyMap() { restoreDefaults(); }

  enum class Match { none, partial, exact };   // partial: the beginning of a longer sequence
  // strokes as strokeOf gives them; second is 0 for one stroke.
  Match find(int first, int second, KeyAction* action) const;
  static int strokeOf(const QKeyEvent& event);   // without the keypad's mark; 0 for a modifier alone

  KeyAction actionOf(const QKeySequence& keys) const;
  QList<QKeySequence> keysOf(const KeyAction& action) const;   // in the order of their portable text
  // Binds the keys, whatever they did before; a KeyAction of nothing unbinds them. False (nothing done): no such keys, or more
  // than two strokes.
  bool bind(const QKeySequence& keys, const KeyAction& action);
  // What else these keys would get in the way of: bound to them, to a longer sequence that begins with them, or to their first stroke.
  QList<QKeySequence> conflicts(const QKeySequence& keys) const;
  bool isDefault(const QKeySequence& keys) const;              // does what it does by default

  void restoreDefaults();                                      // macros keep their keys where no default has them

  QString toText() const;
  int fromText(const QString& text);                           // the number of lines that were skipped

 private:
  using Strokes = quint64;                                     // first in the upper half
  static Strokes strokesOf(const QKeySequence& keys);          // 0: not one or two strokes
  static QKeySequence keysFrom(Strokes strokes);
  static const QHash<Strokes, KeyAction>& defaults();
  void put(Strokes strokes, const KeyAction& action);

  QHash<Strokes, KeyAction> actions_;
  QHash<int, int> firsts_;                                     // how many two-stroke sequences begin with the stroke
};

KeyMap& keyMap();
