// Commands without a row in the numbered table (CommandTable.h). Their numbers are internal and never stored; their names are.
#pragma once

#include <functional>

#include "control/commands/CommandTable.h"

std::span<const Command> keyCommands();
// Searches both tables; null for an unknown command.
const Command* anyCommandById(int id);
const Command* anyCommandByName(QStringView name);
const Command* scriptCommandByName(QStringView name);   // those of the command language: all but those of keystroke macros
// Runs a command of either table; false for an unknown number.
bool executeAny(Editor& editor, int id, const QVariant& argument = {});

bool columnMode(Editor& editor);   // extending the selection of its pane makes a column selection
