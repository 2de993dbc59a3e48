// The log, its messages, and command strings.
#include <QCoreApplication>

#include "app/commands/Groups.h"
#include "app/find/FindFrame.h"
#include "app/frame/frmMain.h"
#include "document/frmLog.h"
#include "script/mCMXParser.h"

std::span<const FrameCommand> logCommands() {
  // clang-format off
  static const FrameCommand rows[] = {
      {.name = "mnuViewLog", .menu = "mnuView", .place = 200, .caption = QT_TRANSLATE_NOOP("frmMain", "&Log Window"),
       .keys = "Ctrl+Shift+L", .icon = "zelkor-log", .tip = QT_TRANSLATE_NOOP("frmMain", "Show or hide the log"),
       .run = [](frmMain& f) { f.toggleLog(); }, .tool = "Log", .toolPlace = 800, .checkable = true,
       .checked = [](frmMain& f) { return f.logIsShown(); }},
      {.name = "mnuViewNextMessage", .menu = "mnuView", .place = 210,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Next Message"), .keys = "F8",
       .tip = QT_TRANSLATE_NOOP("frmMain", "Go to the next place in the list of results or the log"),
       .run = [](frmMain& f) { FindFrame::of(f).step(1); }},
      {.name = "mnuViewPreviousMessage", .menu = "mnuView", .place = 220,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Previous Message"), .keys = "Shift+F8",
       .tip = QT_TRANSLATE_NOOP("frmMain", "Go to the previous place in the list of results or the log"),
       .run = [](frmMain& f) { FindFrame::of(f).step(-1); }},
      {.name = "mToolsCommand", .menu = "mTools", .place = 100, .caption = QT_TRANSLATE_NOOP("frmMain", "&Command..."),
       .keys = "F9", .icon = "zelkor-command", .tip = QT_TRANSLATE_NOOP("frmMain", "Run a command string on the document"),
       .run = [](frmMain& f) { f.mToolsCommand_Click(); }},
      {.name = "mToolsFileInformation", .menu = "mTools", .place = 410,
       .caption = QT_TRANSLATE_NOOP("frmMain", "File I&nformation"), .needs = kDocument,
       .run = [](frmMain&) { mCMXParser::Run(0, 0, QStringLiteral("FILEINFO")); }},
  };
  // clang-format on
  return rows;
}
