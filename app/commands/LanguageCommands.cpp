// Word lists and templates at the caret, and the definitions behind them.
#include <QCoreApplication>

#include "app/commands/Groups.h"
#include "app/frame/frmMain.h"

std::span<const FrameCommand> languageCommands() {
  // clang-format off
  static const FrameCommand rows[] = {
      {.name = "mHelpWordListNext", .menu = "mHelp", .place = 300,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Next Word in List"), .keys = "F5", .icon = "zelkor-word-next",
       .tip = QT_TRANSLATE_NOOP("frmMain", "Replace the word by the next one of its list"),
       .needs = kDocument | kWritable | kWordList, .run = [](frmMain& f) { f.mHelpWordListNext_Click(); },
       .tool = "WordNext", .toolPlace = 720},
      {.name = "mHelpWordListPrevious", .menu = "mHelp", .place = 310,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Previous Word in List"), .keys = "F6", .icon = "zelkor-word-previous",
       .tip = QT_TRANSLATE_NOOP("frmMain", "Replace the word by the previous one of its list"),
       .needs = kDocument | kWritable | kWordList, .run = [](frmMain& f) { f.mHelpWordListPrevious_Click(); },
       .tool = "WordPrevious", .toolPlace = 710},
      {.name = "mHelpExpandTemplate", .menu = "mHelp", .place = 320,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Expand Template"), .keys = "Shift+F1", .icon = "zelkor-expand",
       .tip = QT_TRANSLATE_NOOP("frmMain", "Insert the template of the hot key at the caret"),
       .needs = kDocument | kWritable | kTemplate, .run = [](frmMain& f) { f.mHelpExpandTemplate_Click(); },
       .tool = "Expand", .toolPlace = 700, .popupPlace = 500},
      {.name = "mHelpNextField", .menu = "mHelp", .place = 330, .caption = QT_TRANSLATE_NOOP("frmMain", "Next &Field"),
       .keys = "Ctrl+Shift+F1", .tip = QT_TRANSLATE_NOOP("frmMain", "Select the next $$ of a template"),
       .needs = kDocument, .run = [](frmMain& f) { f.mHelpNextField_Click(); }},
      {.name = "mToolsDefinitions", .menu = "mTools", .place = 200,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Language &Definitions..."), .icon = "zelkor-languages",
       .run = [](frmMain& f) { f.mToolsDefinitions_Click(); }},
      {.name = "mCustomEdit", .menu = "mCustom", .place = 200, .caption = QT_TRANSLATE_NOOP("frmMain", "&Edit Macros..."),
       .run = [](frmMain& f) { f.mCustomEdit_Click(); }},
  };
  // clang-format on
  return rows;
}
