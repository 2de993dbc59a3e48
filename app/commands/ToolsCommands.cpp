#include <QCoreApplication>

#include "app/commands/Groups.h"
#include "app/frame/KeyActions.h"
#include "app/frame/frmMain.h"
#include "control/keys/KeyMacro.h"
#include "control/keys/KeyMap.h"
#include "document/frmDocument.h"
#include "script/CommandRun.h"

std::span<const FrameCommand> toolsCommands() {
  // clang-format off
  static const FrameCommand rows[] = {
      {.name = "mTools", .place = 400, .caption = QT_TRANSLATE_NOOP("frmMain", "&Tools"), .isMenu = true},
      {.name = "mToolsLanguage", .menu = "mTools", .place = 210, .caption = QT_TRANSLATE_NOOP("frmMain", "&Language"),
       .needs = kDocument, .isMenu = true, .fill = [](frmMain& f, QMenu& menu) { f.fillLanguages(menu); }},
      {.name = "mToolsEncoding", .menu = "mTools", .place = 220, .caption = QT_TRANSLATE_NOOP("frmMain", "&Encoding"),
       .needs = kDocument, .isMenu = true, .fill = [](frmMain& f, QMenu& menu) { f.fillEncodings(menu); }},
      {.name = "mToolsLineEnds", .menu = "mTools", .place = 230, .caption = QT_TRANSLATE_NOOP("frmMain", "L&ine Ends"),
       .needs = kDocument, .isMenu = true, .fill = [](frmMain& f, QMenu& menu) { f.fillLineEnds(menu); }},
      {.name = "mToolsRecordMacro", .menu = "mTools", .place = 300,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Record Keystrokes"),
       .tip = QT_TRANSLATE_NOOP("frmMain", "Record keystrokes as a macro, or stop recording"), .needs = kDocument,
       .command = 1009, .checkable = true, .checked = [](frmMain&) { return keyMacros().recording(); }},
      {.name = "mToolsPlayMacro", .menu = "mTools", .place = 310, .caption = QT_TRANSLATE_NOOP("frmMain", "&Play Keystrokes"),
       .needs = kDocument | kWritable, .command = 1010},
      {.name = "mToolsPlayTimes", .menu = "mTools", .place = 315, .caption = QT_TRANSLATE_NOOP("frmMain", "Play Keystrokes &Times..."),
       .tip = QT_TRANSLATE_NOOP("frmMain", "Play them several times, until nothing changes any more"), .needs = kDocument | kWritable,
       .run = [](frmMain& f) { f.playKeystrokesTimes(); }},
      {.name = "mToolsMacros", .menu = "mTools", .place = 320, .caption = QT_TRANSLATE_NOOP("frmMain", "Play &Macro"),
       .needs = kDocument | kWritable, .isMenu = true, .fill = [](frmMain& f, QMenu& menu) { f.fillKeyMacros(menu); }},
      {.name = "mToolsSaveFirst", .menu = "mTools", .place = 330,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Sa&ve Before Programs Run"),
       .tip = QT_TRANSLATE_NOOP("frmMain", "Macros save every modified document before they start a program"),
       .run = [](frmMain&) { runs::setSavesBeforePrograms(!runs::savesBeforePrograms()); },
       .checkable = true, .checked = [](frmMain&) { return runs::savesBeforePrograms(); }},
      {.name = "mToolsOptions", .menu = "mTools", .place = 400,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Editor &Options..."), .icon = "configure",
       .run = [](frmMain& f) {
         keyMap().setNamedActions(keyactions::all());   // the languages may have other macros now
         f.editorOptions();
       }},
  };
  // clang-format on
  return rows;
}
