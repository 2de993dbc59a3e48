#include <QCoreApplication>

#include "app/boxes/frmRecovered.h"
#include "app/commands/Groups.h"
#include "app/folder/FolderParts.h"
#include "app/folder/WorkFolder.h"
#include "app/frame/frmMain.h"

std::span<const FrameCommand> fileCommands() {
  // clang-format off
  static const FrameCommand rows[] = {
      {.name = "mnuFile", .place = 100, .caption = QT_TRANSLATE_NOOP("frmMain", "&File"), .isMenu = true},
      {.name = "mnuFileNew", .menu = "mnuFile", .place = 100, .caption = QT_TRANSLATE_NOOP("frmMain", "&New"),
       .keys = "Ctrl+N", .icon = "document-new", .tip = QT_TRANSLATE_NOOP("frmMain", "New document"),
       .run = [](frmMain& f) { f.mnuFileNew_Click(); }, .tool = "New", .toolPlace = 100},
      {.name = "mnuFileOpen", .menu = "mnuFile", .place = 110, .caption = QT_TRANSLATE_NOOP("frmMain", "&Open..."),
       .keys = "Ctrl+O", .icon = "document-open", .tip = QT_TRANSLATE_NOOP("frmMain", "Open files"),
       .run = [](frmMain& f) { f.mnuFileOpen_Click(); }, .tool = "Open", .toolPlace = 110},
      {.name = "mnuFileGoTo", .menu = "mnuFile", .place = 112, .caption = QT_TRANSLATE_NOOP("frmMain", "Go to F&ile..."),
       .keys = "Ctrl+E", .icon = "go-jump", .tip = QT_TRANSLATE_NOOP("frmMain", "Open a file of the folder by parts of its name"),
       .run = [](frmMain& f) { f.folders().goToFile(); }},
      {.name = "mnuFileOpenFolder", .menu = "mnuFile", .place = 114,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Open &Folder..."), .keys = "Ctrl+Shift+O", .icon = "folder",
       .tip = QT_TRANSLATE_NOOP("frmMain", "The folder whose files are shown, found and searched"),
       .run = [](frmMain& f) { f.folders().askForFolder(); }},
      {.name = "mnuFileOpenList", .menu = "mnuFile", .place = 116,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Open File List..."),
       .tip = QT_TRANSLATE_NOOP("frmMain", "The files of a simulator's file list (-f) instead of a folder"),
       .run = [](frmMain& f) { f.folders().askForList(); }},
      {.name = "mnuFileFolders", .menu = "mnuFile", .place = 118, .caption = QT_TRANSLATE_NOOP("frmMain", "Recent Folders"), .isMenu = true,
       .fill = [](frmMain& f, QMenu& menu) { f.folders().fillRecent(menu); }},
      {.name = "mnuFileCloseFolder", .menu = "mnuFileFolders", .place = 100,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Close Folder"),
       .tip = QT_TRANSLATE_NOOP("frmMain", "Back to the folder of the active document"),
       .run = [](frmMain& f) { f.folders().work().close(); }},
      {.name = "mnuFileReload", .menu = "mnuFile", .place = 120, .caption = QT_TRANSLATE_NOOP("frmMain", "Reloa&d"),
       .icon = "view-refresh", .tip = QT_TRANSLATE_NOOP("frmMain", "Read the file again; Undo brings the old text back"),
       .needs = kDocument | kNamed, .run = [](frmMain& f) { f.mnuFileReload_Click(); }},
      {.name = "mnuFileClose", .menu = "mnuFile", .place = 130, .caption = QT_TRANSLATE_NOOP("frmMain", "&Close"),
       .keys = "Ctrl+W; Ctrl+F4", .icon = "document-close", .needs = kDocument,
       .run = [](frmMain& f) { f.mnuFileClose_Click(); }},
      {.name = "mnuFileCloseAll", .menu = "mnuFile", .place = 140, .caption = QT_TRANSLATE_NOOP("frmMain", "Clos&e All"),
       .keys = "Ctrl+Shift+W", .needs = kDocument, .run = [](frmMain& f) { f.mnuFileCloseAll_Click(); }},
      {.name = "mnuFileRecovered", .menu = "mnuFile", .place = 150, .caption = QT_TRANSLATE_NOOP("frmMain", "&Recovered Texts..."),
       .tip = QT_TRANSLATE_NOOP("frmMain", "Texts that were not saved when the editor ended"),
       .run = [](frmMain& f) { frmRecovered::offerAgain(f); }},
      {.name = "mnuFileSave", .menu = "mnuFile", .place = 200, .caption = QT_TRANSLATE_NOOP("frmMain", "&Save"),
       .keys = "Ctrl+S", .icon = "document-save", .tip = QT_TRANSLATE_NOOP("frmMain", "Save the document"),
       .needs = kDocument | kUnsaved, .run = [](frmMain& f) { f.mnuFileSave_Click(); }, .tool = "Save", .toolPlace = 120},
      {.name = "mnuFileSaveAs", .menu = "mnuFile", .place = 210, .caption = QT_TRANSLATE_NOOP("frmMain", "Save &As..."),
       .keys = "Ctrl+Shift+S", .icon = "document-save-as", .needs = kDocument,
       .run = [](frmMain& f) { f.mnuFileSaveAs_Click(); }},
      {.name = "mnuFileSaveAll", .menu = "mnuFile", .place = 220, .caption = QT_TRANSLATE_NOOP("frmMain", "Save A&ll"),
       .icon = "document-save-all", .tip = QT_TRANSLATE_NOOP("frmMain", "Save all modified documents"),
       .needs = kAnyModified, .run = [](frmMain& f) { f.mnuFileSaveAll_Click(); }, .tool = "SaveAll", .toolPlace = 130},
      {.name = "mnuFileMRU", .menu = "mnuFile", .place = 850, .elements = 11,
       .runElement = [](frmMain& f, int index) { f.mnuFileMRU_Click(index); }},
      // No separator before it: the recently-used entries end with one.
      {.name = "mnuFileExit", .menu = "mnuFile", .place = 890, .caption = QT_TRANSLATE_NOOP("frmMain", "E&xit"),
       .keys = "Ctrl+Q", .icon = "application-exit", .run = [](frmMain& f) { f.mnuFileExit_Click(); }},
  };
  // clang-format on
  return rows;
}
