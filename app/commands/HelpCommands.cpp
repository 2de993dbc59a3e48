#include <QCoreApplication>

#include "app/boxes/AboutBox.h"
#include "app/commands/Groups.h"
#include "app/frame/frmMain.h"
#include "app/start/mGlobals.h"

std::span<const FrameCommand> helpCommands() {
  // clang-format off
  static const FrameCommand rows[] = {
      {.name = "mHelp", .place = 700, .caption = QT_TRANSLATE_NOOP("frmMain", "&Help"), .isMenu = true},
      {.name = "mHelpHandbook", .menu = "mHelp", .place = 100, .caption = QT_TRANSLATE_NOOP("frmMain", "&Handbook"),
       .keys = "F1", .icon = "help-contents", .run = [](frmMain& f) { openHandbook(f); }},
      {.name = "mHelpContents", .menu = "mHelp", .place = 200,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Language Help"), .needs = kOthers,
       .run = [](frmMain&) { openLanguageHelp({}); }},
      {.name = "mHelpWord", .menu = "mHelp", .place = 210,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Language Help on &Word"), .keys = "Ctrl+F1", .needs = kOthers,
       .run = [](frmMain& f) { openLanguageHelp(f.activeDocument()); }},
      {.name = "mHelpWeb", .menu = "mHelp", .place = 800, .caption = QT_TRANSLATE_NOOP("frmMain", "Web &Site"),
       .needs = kWeb, .run = [](frmMain&) { openWebPage({}); }},
      {.name = "mHelpWebDownload", .menu = "mHelp", .place = 810,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Download a Language"), .needs = kWeb,
       .run = [](frmMain&) { openWebPage(QStringLiteral("Download_Language.html")); }},
      {.name = "mHelpWebSubmit", .menu = "mHelp", .place = 820,
       .caption = QT_TRANSLATE_NOOP("frmMain", "S&ubmit a Language"), .needs = kWeb,
       .run = [](frmMain&) { openWebPage(QStringLiteral("Submit_Language.html")); }},
      {.name = "mHelpAbout", .menu = "mHelp", .place = 900, .caption = QT_TRANSLATE_NOOP("frmMain", "&About"),
       .icon = "help-about", .run = [](frmMain& f) { showAboutBox(f); }},
  };
  // clang-format on
  return rows;
}
