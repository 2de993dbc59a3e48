// What keys do: sequences of one or two strokes, each bound to a command, to a keystroke macro or to a named action of a floor
// above. There is one for the program; it starts with the default keys of the command tables and of the named actions.
//
// As text (the setting HOTKEYS): one line "<keys>=<COMMAND>" for each difference from the defaults, in the portable spelling
// ("Ctrl+K, Ctrl+U=WORDUPPERCASE"); "<keys>=" takes a default away. A named action is written as its name, "KIND name", which is
// kept though nobody knows it now. The keys of macros stand with the macros (KeyMacro.h).
#pragma once

#include <QHash>
#include <QKeySequence>
#include <QString>
#include <QStringList>

class QKeyEvent;

struct KeyAction {
  int command = 0;      // of either command table; 0: none
  QString macro;        // name of a macro; empty: none
  QString named = {};   // name of a NamedAction; empty: none
  bool isNone() const { return command == 0 && macro.isEmpty() && named.isEmpty(); }
  bool operator==(const KeyAction&) const = default;
};

// Something else that keys can be bound to. Who adds it gives the window of the texts a QAction with these short-cuts and its name
// in the property below: a text leaves the keys to them, but sequences that begin as one of its own, which it passes on.
inline constexpr char kNamedActionProperty[] = "namedAction";
struct NamedAction {
  QString name;   // in the settings: a word in capitals, a blank, and a word without blanks, "=" and control characters
  QString shown, help;
  QString keys;   // by default, portable, parted by "; "
};

class KeyMap {
 public:
  KeyMap() { restoreDefaults(); }

  // The named actions in place of those that were there. Defaults of new ones are bound where nothing else is.
  void setNamedActions(const QList<NamedAction>& actions);
  const QList<NamedAction>& namedActions() const { return named_; }
  QStringList boundNames() const;   // of all actions that have keys, also unknown ones

  enum class Match { none, partial, exact };   // partial: the beginning of a longer sequence of a command or macro
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
  bool isDefault(const QKeySequence& keys) const;   // does what it does by default

  void restoreDefaults();   // macros keep their keys where no default has them

  QString toText() const;
  int fromText(const QString& text);   // the number of lines that were skipped

 private:
  using Strokes = quint64;                              // first in the upper half
  static Strokes strokesOf(const QKeySequence& keys);   // 0: not one or two strokes
  static QKeySequence keysFrom(Strokes strokes);
  static const QHash<Strokes, KeyAction>& tableDefaults();
  const QHash<Strokes, KeyAction>& defaults() const { return defaults_; }
  void put(Strokes strokes, const KeyAction& action);

  QHash<Strokes, KeyAction> actions_, defaults_ = tableDefaults();
  QList<NamedAction> named_;
  QHash<int, int> firsts_;   // how many two-stroke sequences begin with the stroke
};

KeyMap& keyMap();
