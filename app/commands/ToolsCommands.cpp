#include <QCoreApplication>

#include "app/commands/Groups.h"
#include "app/frmMain.h"

std::span<const FrameCommand> toolsCommands() {
  static const FrameCommand rows[] = {
      {.name = "mTools", .place = 400, .caption = QT_TRANSLATE_NOOP("frmMain", "&Tools"), .isMenu = true},
      {.name = "mToolsLanguage", .menu = "mTools", .place = 210, .caption = QT_TRANSLATE_NOOP("frmMain", "&Language"),
       .needs = kDocument, .isMenu = true, .fill = [](frmMain& f, QMenu& menu) { f.fillLanguages(menu); }},
      {.name = "mToolsEncoding", .menu = "mTools", .place = 220, .caption = QT_TRANSLATE_NOOP("frmMain", "&Encoding"),
       .needs = kDocument, .isMenu = true, .fill = [](frmMain& f, QMenu& menu) { f.fillEncodings(menu); }},
      {.name = "mToolsLineEnds", .menu = "mTools", .place = 230, .caption = QT_TRANSLATE_NOOP("frmMain", "L&ine Ends"),
       .needs = kDocument, .isMenu = true, .fill = [](frmMain& f, QMenu& menu) { f.fillLineEnds(menu); }},
  };
  return rows;
}
