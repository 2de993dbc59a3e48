// Keystroke macros: commands and typed text, recorded, kept under names and played. There is one set for the program.
//
// As text (the setting MACRO): "[name] <keys>" begins a macro (none, or some parted by "; "), then one step a line: a command's name, with
// its argument where it has one (GOTOLINE 3, SETFINDTEXT "x"), or TYPE "text". Inside quotes \\ \" \t \n \r and \uXXXX stand for
// what would not be readable.
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
  QStringList names() const;                         // in the order they were made
  const KeyMacro* find(const QString& name) const;   // null: unknown
  static bool goodName(const QString& name);         // not empty, no "]", no control characters, no blanks around it
  // Replaces the one of the same name. False: not a good name.
  bool set(KeyMacro macro);
  void remove(const QString& name);                      // and its keys
  bool rename(const QString& name, const QString& to);   // false: unknown, taken, or no name
  const QString& current() const { return current_; }    // the one recorded or played last; empty: none

  // Recording. Everything that the user does is noted by the editors; finding notes find text and switches too.
  bool recording() const { return recording_; }
  void toggleRecording();   // at its end the macro is kept as "Macro 1", "Macro 2" ...
  void cancelRecording();
  std::function<void(const QString& tells)> onRecording;   // it began or ended, and what became of it in the user's words
  std::function<void()> onRecorded;                        // a macro was recorded and kept
  void noteCommand(Editor& editor, int id, const QVariant& argument);
  void noteText(const QString& text);
  // Runs what is no step of its own, as it is part of one already noted.
  template <class Run>
  void pause(Run run) {
    const bool was = std::exchange(recording_, false);
    run();
    recording_ = was;
  }

  // Plays it `count` times as one undo step (a macro that undoes has none of its own). Ends early when a search fails or a round
  // changes nothing. False: unknown.
  bool play(Editor& editor, const QString& name, int count = 1);

  QString toText() const;
  int fromText(const QString& text);   // replaces all; the number of lines that were skipped

 private:
  void tell(const QString& what) const;
  std::vector<KeyMacro> macros_;
  KeyMacro recorded_;
  QString current_, noted_[3];   // find text, replacement and switches as the recording has them
  bool recording_ = false;
};

KeyMacros& keyMacros();
