// Prints docs/commands.md, made from the command tables:  commandref > docs/commands.md
#include <cstdio>

#include <QTextStream>

#include "control/keys/KeyCommands.h"

namespace {

QString cell(const char* text) { return QString::fromUtf8(text).replace(u'|', QStringLiteral("\\|")); }

QString argumentOf(const Command& command) {
  switch (command.argument) {
    case CommandArgument::number: return QStringLiteral("number");
    case CommandArgument::text: return QStringLiteral("text");
    default: return {};
  }
}

}   // namespace

int main() {
  QTextStream out(stdout);
  out << "# Edit commands\n\n"
         "<!-- Made by commandref from the command tables; do not edit. -->\n\n"
         "Every command can be bound to keys (Editor Options, page Keyboard), recorded in keystroke macros and written in the\n"
         "command language behind any three characters: `cmdUNDO`, `cmdGOTOLINE 41`. \"n times\" marks the commands that run as "
         "often\n"
         "as SETREPEATCOUNT said just before; all repetitions are one undo step. Line numbers given to commands count from 0.\n\n"
         "A key sequence of two strokes is written with a comma: Ctrl+K, Ctrl+U. The frame's own short-cuts, such as those of "
         "finding\n"
         "and of bookmarks, stand in its menus.\n\n"
         "| Number | Name | Argument | | Keys | What it does |\n| --- | --- | --- | --- | --- | --- |\n";
  for (const Command& command : commands())
    out << "| " << command.id << " | " << command.name << " | " << argumentOf(command) << " | "
        << (command.repeatable ? "n times" : "") << " | " << cell(command.keys) << " | " << cell(command.help) << " |\n";
  out << "\n## Commands without a number\n\n"
         "The command language knows them too, all but MACRORECORD and MACROPLAY.\n\n"
         "| Name | Keys | What it does |\n| --- | --- | --- |\n";
  for (const Command& command : keyCommands())
    out << "| " << command.name << " | " << cell(command.keys) << " | " << cell(command.help) << " |\n";
  out << "\n## Column selections\n\n"
         "A column selection is a rectangle of cells, made with Alt and the mouse or with Alt+Shift and the arrow keys; in column\n"
         "mode, where a desktop keeps those for itself, with the mouse or Shift and the arrow keys alone. It goes past the ends "
         "of\n"
         "lines. Typing, deleting, cutting, copying and pasting work in each of its rows, and what stands right of it keeps its\n"
         "column: missing blanks are put in, a tab that the edge cuts becomes blanks, a wide character cut by the left edge stays "
         "whole.\n"
         "A block that was copied is pasted as a block, also past the end of the text. Case and tab commands work on the block, "
         "those for\n"
         "indents and whole lines on the lines that it touches; a new line takes its place.\n\n"
         "## New lines\n\n"
         "A new line ends as its neighbour does. With the indent mode \"same\" it takes the blanks that its line begins with; with "
         "\"language\"\n"
         "those of the nearest line at or above that is not blank; with \"off\" none.\n";
  return 0;
}
