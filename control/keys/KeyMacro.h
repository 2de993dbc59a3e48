// Keystroke macros: commands and typed text that are recorded, stored under names and played. There is one set for the program.
//
// The text form (setting MACRO): "[name] <keys>" begins a macro (no keys, or several separated by "; "). Then one step a line: the
// name of a command with its argument, if it has one (GOTOLINE 3, SETFINDTEXT "x"), or TYPE "text". In quotes, \\ \" \t \n \r and
// \uXXXX stand for characters that are not readable.
#pragma once

#include <QKeySequence>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <functional>
#include <utility>
#include <vector>

class Editor;

struct KeyMacroStep {
  int command = 0;     // 0: typed text
  QVariant argument;   // of the command, or the text
  bool operator==(const KeyMacroStep&) const = default;
};

struct KeyMacro {
  QString name;
  std::vector<KeyMacroStep> steps;
};

class KeyMacros {
 public:
  QStringList names() const;                         // in order of creation
  const KeyMacro* find(const QString& name) const;   // null: unknown
  static bool goodName(const QString& name);         // not empty; no "]", control characters, or blanks at its ends
  // Replaces the macro of the same name. False: invalid name.
  bool set(KeyMacro macro);
  void remove(const QString& name);                      // and its keys
  bool rename(const QString& name, const QString& to);   // false: unknown, already used, or invalid
  const QString& current() const { return current_; }    // the macro recorded or played last; empty: none

  // Recording. Editors note everything that the user does; for find commands also the find text and the switches.
  bool recording() const { return recording_; }
  void toggleRecording();                                  // the recorded macro is stored as "Macro 1", "Macro 2" ...
  std::function<void(const QString& tells)> onRecording;   // it began or ended, and what became of it in the user's words
  std::function<void()> onRecorded;                        // a macro was recorded and kept
  void noteCommand(Editor& editor, int id, const QVariant& argument);
  void noteText(const QString& text);
  // Runs work that belongs to a step already noted and is not noted itself.
  template <class Run>
  void pause(Run run) {
    const bool was = std::exchange(recording_, false);
    run();
    recording_ = was;
  }

  // Plays the macro `count` times as one undo step (a macro that undoes has no step of its own). Ends early when a search fails or
  // a round changes nothing. False: unknown macro.
  bool play(Editor& editor, const QString& name, int count = 1);

  QString toText() const;
  int fromText(const QString& text);   // replaces all macros; returns the number of invalid lines

 private:
  void tell(const QString& what) const;
  std::vector<KeyMacro> macros_;
  KeyMacro recorded_;
  QString current_, noted_[3];   // the recording's current find text, replacement and switches
  bool recording_ = false;
};

KeyMacros& keyMacros();
