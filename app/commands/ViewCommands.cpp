#include <QCoreApplication>

#include "app/commands/Groups.h"
#include "app/frmMain.h"
#include "document/frmDocument.h"

std::span<const FrameCommand> viewCommands() {
  static const FrameCommand rows[] = {
      {.name = "mnuView", .place = 300, .caption = QT_TRANSLATE_NOOP("frmMain", "&View"), .isMenu = true},
      {.name = "mnuViewToolbar", .menu = "mnuView", .place = 100, .caption = QT_TRANSLATE_NOOP("frmMain", "&Toolbar"),
       .run = [](frmMain& f) { f.SetupToolStatus(); }, .checkable = true},
      {.name = "mnuViewStatusBar", .menu = "mnuView", .place = 110,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Status Bar"), .run = [](frmMain& f) { f.SetupToolStatus(); },
       .checkable = true},
      {.name = "mnuViewTabs", .menu = "mnuView", .place = 120, .caption = QT_TRANSLATE_NOOP("frmMain", "T&abs"),
       .run = [](frmMain& f) { f.SetupToolStatus(); }, .checkable = true},
      {.name = "mnuViewWhiteSpace", .menu = "mnuView", .place = 300,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&White Space"), .needs = kDocument, .command = 185, .checkable = true,
       .checked = [](frmMain& f) { return f.activeDocument() && f.activeDocument()->cmx->WhiteSpaceDisplay(); }},
      {.name = "mnuViewMatchingBrace", .menu = "mnuView", .place = 400,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Go To &Matching Brace"), .needs = kDocument, .command = 166},
  };
  return rows;
}
