#include <QCoreApplication>

#include "app/commands/Groups.h"
#include "app/frame/frmMain.h"

std::span<const FrameCommand> windowCommands() {
  // clang-format off
  static const FrameCommand rows[] = {
      {.name = "mWindow", .place = 600, .caption = QT_TRANSLATE_NOOP("frmMain", "&Window"), .isMenu = true,
       .fill = [](frmMain& f, QMenu& menu) { f.fillWindowList(menu); }},
      {.name = "mWindowNew", .menu = "mWindow", .place = 100, .caption = QT_TRANSLATE_NOOP("frmMain", "New &Window"),
       .icon = "window-new", .tip = QT_TRANSLATE_NOOP("frmMain", "A further window on this document"), .needs = kDocument,
       .run = [](frmMain& f) { f.newWindow(); }},
      {.name = "mWindowCascade", .menu = "mWindow", .place = 200, .caption = QT_TRANSLATE_NOOP("frmMain", "&Cascade"),
       .needs = kDocument, .run = [](frmMain& f) { f.cascade(); }},
      {.name = "mWindowTileHorizontally", .menu = "mWindow", .place = 210,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Tile &Horizontally"), .needs = kDocument,
       .run = [](frmMain& f) { f.tile(Qt::Vertical); }},
      {.name = "mWindowTileVertically", .menu = "mWindow", .place = 220,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Tile &Vertically"), .needs = kDocument,
       .run = [](frmMain& f) { f.tile(Qt::Horizontal); }},
      {.name = "mWindowNext", .menu = "mWindow", .place = 300, .caption = QT_TRANSLATE_NOOP("frmMain", "&Next"),
       .keys = "Ctrl+Tab; Ctrl+F6; Ctrl+PgDown", .needs = kDocument | kSeveral, .run = [](frmMain& f) { f.nextWindow(1); }},
      {.name = "mWindowPrevious", .menu = "mWindow", .place = 310, .caption = QT_TRANSLATE_NOOP("frmMain", "&Previous"),
       .keys = "Ctrl+Shift+Tab; Ctrl+Shift+F6; Ctrl+PgUp", .needs = kDocument | kSeveral,
       .run = [](frmMain& f) { f.nextWindow(-1); }},
      {.name = "mWindowList", .menu = "mWindow", .place = 320, .caption = QT_TRANSLATE_NOOP("frmMain", "&All Windows..."),
       .keys = "Ctrl+Shift+E", .tip = QT_TRANSLATE_NOOP("frmMain", "Choose from all windows by a part of the name"),
       .needs = kDocument, .run = [](frmMain& f) { f.chooseWindow(); }},
  };
  // clang-format on
  return rows;
}
