// The one table of the edit commands. ExecuteCmd, the command language, the key dialog, keystroke macros and docs/commands.md
// all read it; nothing repeats it.
#pragma once

#include <QString>
#include <QVariant>
#include <span>

#include "control/edit/Cmd.h"

class Editor;

enum class CommandArgument { none, number, text };

struct Command {
  int id;             // see Cmd.h
  const char* name;   // "WORDUPPERCASE"
  CommandArgument argument;
  bool repeatable;    // runs Editor::repeatCount times
  const char* keys;   // default key sequences, "Ctrl+Up; Alt+Up", may be empty
  const char* help;   // one line
  void (*run)(Editor&, const QVariant& argument);
};

std::span<const Command> commands();
const Command* commandById(int id);               // null when unknown
const Command* commandByName(QStringView name);   // folds case; null when unknown
