// The one table of the edit commands. ExecuteCmd, the command language, the key dialog, keystroke macros and docs/commands.md
// all read it; nothing repeats it.
#pragma once

#include <QString>
#include <QVariant>
#include <span>

#include "control/edit/Cmd.h"

class Editor;

enum class CommandArgument { none, number, text };

// How the caret comes to a place: for those who keep the places that the user left.
enum class CaretMove {
  usual,
  jump,     // to a place that was looked for, wherever it is
  page,     // by pages: the user is on the way
  preview   // while a text to find is typed: shown, but not gone to
};

// With several carets a command runs at each of them, or at the main one only: then the others stay, unless it goes elsewhere.
enum class AtCarets { main, each };

// For those who run a command.
struct CommandHow {
  constexpr CommandHow() = default;
  constexpr CommandHow(CaretMove moves, AtCarets at = AtCarets::main) : move(moves), each(at == AtCarets::each) {}
  constexpr CommandHow(AtCarets at) : each(at == AtCarets::each) {}
  CaretMove move = CaretMove::usual;
  bool each = false;
};

struct Command {
  int id;             // see Cmd.h
  const char* name;   // "WORDUPPERCASE"
  CommandArgument argument;
  bool repeatable;    // runs Editor::repeatCount times
  const char* keys;   // default key sequences, "Ctrl+Up; Alt+Up", may be empty
  const char* help;   // one line
  void (*run)(Editor&, const QVariant& argument);
  CommandHow how = {};
};

std::span<const Command> commands();
const Command* commandById(int id);               // null when unknown
const Command* commandByName(QStringView name);   // folds case; null when unknown

// How the caret came to where it is. Whoever moves it other than by a command says so while SelChange is held back.
CaretMove lastMove(Editor& editor);
void noteMove(Editor& editor, CaretMove move);
