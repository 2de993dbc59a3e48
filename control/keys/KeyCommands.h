// Commands that only keys and keystroke macros have: those that the numbered table (CommandTable.h) has no row for. Their numbers
// are ours and are never stored; names are.
#pragma once

#include <functional>

#include "control/edit/CommandTable.h"

std::span<const Command> keyCommands();
// Looks in both tables; null when unknown.
const Command* anyCommandById(int id);
const Command* anyCommandByName(QStringView name);
// Runs a command of either table; false for an unknown number.
bool executeAny(Editor& editor, int id, const QVariant& argument = {});

bool columnMode(Editor& editor);   // what extends the selection of its pane makes a column selection
