// The meaning of keys: sequences of one or two strokes, each bound to a command, a keystroke macro, or a named action of a floor
// above. There is one map for the program. It starts with the default keys of the command tables and named actions.
//
// The text form (setting HOTKEYS): a line "<keys>=<COMMAND>" for each difference from the defaults, in the portable spelling
// ("Ctrl+K, Ctrl+U=WORDUPPERCASE"); "<keys>=" removes a default. A named action is written by its name, "KIND name", and kept even
// if it is unknown now. The keys of macros are stored with the macros (KeyMacro.h).
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

// Another action that keys can be bound to. Whoever adds it gives the main window a QAction with these short-cuts and its name in
// the property below. A text ignores these keys, except sequences that begin like one of its own: these it passes on.
inline constexpr char kNamedActionProperty[] = "namedAction";
struct NamedAction {
  QString name;   // in the settings: a word in capitals, a blank, and a word without blanks, "=" and control characters
  QString shown, help;
  QString keys;   // default keys, portable, separated by "; "
};

class KeyMap {
 public:
  KeyMap() { restoreDefaults(); }

  // Replaces all named actions. Default keys of new ones are bound unless they are in use.
  void setNamedActions(const QList<NamedAction>& actions);
  const QList<NamedAction>& namedActions() const { return named_; }
  QStringList boundNames() const;   // of all actions with keys, also unknown ones

  enum class Match { none, partial, exact };   // partial: the start of a longer sequence
  // strokes as returned by strokeOf; second is 0 for one stroke.
  Match find(int first, int second, KeyAction* action) const;
  static int strokeOf(const QKeyEvent& event);   // without the keypad flag; 0 for a modifier alone

  KeyAction actionOf(const QKeySequence& keys) const;
  QList<QKeySequence> keysOf(const KeyAction& action) const;   // sorted by their portable text
  // Binds the keys and replaces their old binding; an empty KeyAction unbinds them. False (nothing done): not a valid sequence of
  // one or two strokes.
  bool bind(const QKeySequence& keys, const KeyAction& action);
  // Conflicts of these keys: their binding, bindings of longer sequences that begin with them, and of their first stroke.
  QList<QKeySequence> conflicts(const QKeySequence& keys) const;

  void restoreDefaults();   // macros keep their keys unless they are default keys

  QString toText() const;
  int fromText(const QString& text);   // returns the number of invalid lines

 private:
  using Strokes = quint64;                              // first stroke in the upper half
  static Strokes strokesOf(const QKeySequence& keys);   // 0: not one or two strokes
  static QKeySequence keysFrom(Strokes strokes);
  static const QHash<Strokes, KeyAction>& tableDefaults();
  const QHash<Strokes, KeyAction>& defaults() const { return defaults_; }
  void put(Strokes strokes, const KeyAction& action);

  QHash<Strokes, KeyAction> actions_, defaults_ = tableDefaults();
  QList<NamedAction> named_;
  QHash<int, int> firsts_;   // number of two-stroke sequences that begin with the stroke
};

KeyMap& keyMap();
