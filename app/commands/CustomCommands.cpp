#include <QCoreApplication>

#include "app/commands/Groups.h"
#include "app/frame/frmMain.h"

// frmRegistry (CommandstoMenu) adds the macros and shows or hides the menu by its name.
std::span<const FrameCommand> customCommands() {
  static const FrameCommand rows[] = {
      {.name = "mCustom", .place = 500, .caption = QT_TRANSLATE_NOOP("frmMain", "C&ustom"), .isMenu = true},
      {.name = "mCustom",
       .menu = "mCustom",
       .place = 100,
       .elements = 21,
       .runElement = [](frmMain& f, int index) { f.mCustom_Click(index); }},
  };
  return rows;
}
