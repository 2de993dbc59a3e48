#include <QCoreApplication>

#include "app/commands/Groups.h"
#include "app/folder/FolderParts.h"
#include "app/frame/frmMain.h"
#include "app/places/Places.h"
#include "document/frmDocument.h"

namespace {

// Zooms by so many percent; 0: back to the font's own size.
void zoom(frmMain& frame, int by) {
  CodeMax& text = *frame.activeDocument()->cmx;
  text.setZoom(by == 0 ? 100 : text.Zoom() + by);
}

}   // namespace

std::span<const FrameCommand> viewCommands() {
  // clang-format off
  static const FrameCommand rows[] = {
      {.name = "mnuView", .place = 300, .caption = QT_TRANSLATE_NOOP("frmMain", "&View"), .isMenu = true},
      {.name = "mnuViewToolbar", .menu = "mnuView", .place = 100, .caption = QT_TRANSLATE_NOOP("frmMain", "&Toolbar"),
       .run = [](frmMain& f) { f.SetupToolStatus(); }, .checkable = true},
      {.name = "mnuViewStatusBar", .menu = "mnuView", .place = 110,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Status Bar"), .run = [](frmMain& f) { f.SetupToolStatus(); },
       .checkable = true},
      {.name = "mnuViewTabs", .menu = "mnuView", .place = 120, .caption = QT_TRANSLATE_NOOP("frmMain", "T&abs"),
       .run = [](frmMain& f) { f.SetupToolStatus(); }, .checkable = true},
      {.name = "mnuViewFiles", .menu = "mnuView", .place = 130, .caption = QT_TRANSLATE_NOOP("frmMain", "Fil&es"),
       .keys = "Ctrl+Shift+B", .tip = QT_TRANSLATE_NOOP("frmMain", "The files of the folder"),
       .run = [](frmMain& f) { f.folders().toggleFiles(); }, .checkable = true,
       .checked = [](frmMain& f) { return f.folders().filesAreShown(); }},
      {.name = "mnuViewWhiteSpace", .menu = "mnuView", .place = 300,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&White Space"), .needs = kDocument, .command = Cmd::TOGGLEWHITESPACEDISPLAY, .checkable = true,
       .checked = [](frmMain& f) { return f.activeDocument() && f.activeDocument()->cmx->WhiteSpaceDisplay(); }},
      {.name = "mnuViewWordWrap", .menu = "mnuView", .place = 310,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Word Wrap"), .needs = kDocument, .command = 1020, .checkable = true,
       .checked = [](frmMain& f) { return f.activeDocument() && f.activeDocument()->cmx->wraps(); }},
      {.name = "mnuViewStickyLine", .menu = "mnuView", .place = 315,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Block at Top"), .needs = kDocument, .command = 1039, .checkable = true,
       .checked = [](frmMain& f) { return f.activeDocument() && f.activeDocument()->cmx->StickyLine(); }},
      {.name = "mnuViewFolding", .menu = "mnuView", .place = 320, .caption = QT_TRANSLATE_NOOP("frmMain", "Foldin&g"),
       .needs = kDocument, .isMenu = true},
      {.name = "mnuViewFoldToggle", .menu = "mnuViewFolding", .place = 100,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Toggle Fold"), .needs = kDocument, .command = 1032},
      {.name = "mnuViewFold", .menu = "mnuViewFolding", .place = 110, .caption = QT_TRANSLATE_NOOP("frmMain", "&Fold"),
       .needs = kDocument, .command = 1033},
      {.name = "mnuViewUnfold", .menu = "mnuViewFolding", .place = 120, .caption = QT_TRANSLATE_NOOP("frmMain", "&Unfold"),
       .needs = kDocument, .command = 1034},
      {.name = "mnuViewFoldSelection", .menu = "mnuViewFolding", .place = 130,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Fold &Selection"), .needs = kDocument, .command = 1037},
      {.name = "mnuViewFoldAll", .menu = "mnuViewFolding", .place = 200, .caption = QT_TRANSLATE_NOOP("frmMain", "Fold &All"),
       .needs = kDocument, .command = 1035},
      {.name = "mnuViewUnfoldAll", .menu = "mnuViewFolding", .place = 210,
       .caption = QT_TRANSLATE_NOOP("frmMain", "U&nfold All"), .needs = kDocument, .command = 1036},
      {.name = "mnuViewFoldLevel1", .menu = "mnuViewFolding", .place = 300,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Fold Level &1"), .needs = kDocument, .command = 1140},
      {.name = "mnuViewFoldLevel2", .menu = "mnuViewFolding", .place = 310,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Fold Level &2"), .needs = kDocument, .command = 1141},
      {.name = "mnuViewFoldLevel3", .menu = "mnuViewFolding", .place = 320,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Fold Level &3"), .needs = kDocument, .command = 1142},
      {.name = "mnuViewFoldLevel4", .menu = "mnuViewFolding", .place = 330,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Fold Level &4"), .needs = kDocument, .command = 1143},
      {.name = "mnuViewMatchingBrace", .menu = "mnuView", .place = 400,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Go To &Matching Brace"), .needs = kDocument, .command = Cmd::GOTOMATCHBRACE},
      {.name = "mnuViewBack", .menu = "mnuView", .place = 410, .caption = QT_TRANSLATE_NOOP("frmMain", "Go &Back"),
       .keys = "Alt+Left", .icon = "go-previous", .tip = QT_TRANSLATE_NOOP("frmMain", "Go to where the caret was before it jumped"), .needs = kOthers,
       .run = [](frmMain& f) { f.places().back(); }},
      {.name = "mnuViewForward", .menu = "mnuView", .place = 420, .caption = QT_TRANSLATE_NOOP("frmMain", "Go Forwar&d"),
       .keys = "Alt+Right", .icon = "go-next", .tip = QT_TRANSLATE_NOOP("frmMain", "Go where the caret was before Go Back"), .needs = kOthers,
       .run = [](frmMain& f) { f.places().forward(); }},
      {.name = "mnuViewZoomIn", .menu = "mnuView", .place = 500, .caption = QT_TRANSLATE_NOOP("frmMain", "Zoom &In"),
       .keys = "Ctrl++; Ctrl+=", .needs = kDocument, .run = [](frmMain& f) { zoom(f, 10); }},
      {.name = "mnuViewZoomOut", .menu = "mnuView", .place = 510, .caption = QT_TRANSLATE_NOOP("frmMain", "Zoom &Out"),
       .keys = "Ctrl+-", .needs = kDocument, .run = [](frmMain& f) { zoom(f, -10); }},
      {.name = "mnuViewZoomNormal", .menu = "mnuView", .place = 520, .caption = QT_TRANSLATE_NOOP("frmMain", "No&rmal Size"),
       .keys = "Ctrl+0", .needs = kDocument, .run = [](frmMain& f) { zoom(f, 0); }},
      {.name = "mnuViewFullScreen", .menu = "mnuView", .place = 600,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Full Screen"), .keys = "F11",
       .run = [](frmMain& f) { f.setWindowState(f.windowState() ^ Qt::WindowFullScreen); }, .checkable = true,
       .checked = [](frmMain& f) { return f.isFullScreen(); }},
  };
  // clang-format on
  return rows;
}
