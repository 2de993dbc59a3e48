#include <QCoreApplication>

#include "app/commands/Groups.h"
#include "app/compare/CompareFrame.h"
#include "app/compare/FolderCompare.h"
#include "app/frame/frmMain.h"

namespace {

void flip(frmMain& frame, bool Comparison::Ignore::*what) {
  CompareFrame& compare = CompareFrame::of(frame);
  Comparison::Ignore ignore = compare.ignored();
  ignore.*what = !(ignore.*what);
  compare.ignore(ignore);
}

}   // namespace

std::span<const FrameCommand> compareCommands() {
  // clang-format off
  static const FrameCommand rows[] = {
      {.name = "mToolsCompare", .menu = "mTools", .place = 250, .caption = QT_TRANSLATE_NOOP("frmMain", "Comp&are"), .isMenu = true},
      {.name = "mCompareDocument", .menu = "mToolsCompare", .place = 100,
       .caption = QT_TRANSLATE_NOOP("frmMain", "With &Open Document"), .needs = kDocument | kSeveral, .isMenu = true,
       .fill = [](frmMain& f, QMenu& menu) { CompareFrame::of(f).fillDocuments(menu); }},
      {.name = "mCompareFile", .menu = "mToolsCompare", .place = 110, .caption = QT_TRANSLATE_NOOP("frmMain", "With &File..."),
       .tip = QT_TRANSLATE_NOOP("frmMain", "Show the text beside another file, with the differences marked"), .needs = kDocument,
       .run = [](frmMain& f) { CompareFrame::of(f).withFile(); }},
      {.name = "mCompareDisk", .menu = "mToolsCompare", .place = 120,
       .caption = QT_TRANSLATE_NOOP("frmMain", "With What Is on &Disk"),
       .tip = QT_TRANSLATE_NOOP("frmMain", "What was changed since the file was saved"), .needs = kDocument | kNamed,
       .run = [](frmMain& f) { CompareFrame::of(f).withDisk(); }},
      {.name = "mCompareVersion", .menu = "mToolsCompare", .place = 130,
       .caption = QT_TRANSLATE_NOOP("frmMain", "With &Version Control..."),
       .tip = QT_TRANSLATE_NOOP("frmMain", "What git has of the file"), .needs = kDocument | kNamed,
       .run = [](frmMain& f) { CompareFrame::of(f).withVersion(); }},
      {.name = "mCompareFolders", .menu = "mToolsCompare", .place = 140,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Two Folders..."),
       .tip = QT_TRANSLATE_NOOP("frmMain", "List the files of two folders that differ"),
       .run = [](frmMain& f) { FolderCompare::of(f).open(); }},
      {.name = "mCompareNext", .menu = "mToolsCompare", .place = 200,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Next Difference"), .keys = "F7", .needs = kOthers,
       .run = [](frmMain& f) { CompareFrame::of(f).step(1); }},
      {.name = "mComparePrevious", .menu = "mToolsCompare", .place = 210,
       .caption = QT_TRANSLATE_NOOP("frmMain", "&Previous Difference"), .keys = "Shift+F7", .needs = kOthers,
       .run = [](frmMain& f) { CompareFrame::of(f).step(-1); }},
      {.name = "mCompareOther", .menu = "mToolsCompare", .place = 215,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Go to the Other S&ide"), .keys = "F4", .needs = kOthers,
       .run = [](frmMain& f) { CompareFrame::of(f).goToOtherSide(); }},
      {.name = "mCompareToLeft", .menu = "mToolsCompare", .place = 220,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Take Over to the &Left"), .keys = "Alt+,",
       .tip = QT_TRANSLATE_NOOP("frmMain", "The difference at the caret, or those in the selected lines"), .needs = kOthers,
       .run = [](frmMain& f) { CompareFrame::of(f).takeOver(compare::kRight); }},
      {.name = "mCompareToRight", .menu = "mToolsCompare", .place = 230,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Take Over to the &Right"), .keys = "Alt+.",
       .tip = QT_TRANSLATE_NOOP("frmMain", "The difference at the caret, or those in the selected lines"), .needs = kOthers,
       .run = [](frmMain& f) { CompareFrame::of(f).takeOver(compare::kLeft); }},
      {.name = "mCompareBlanks", .menu = "mToolsCompare", .place = 300,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Ignore &Blanks"), .needs = kOthers,
       .run = [](frmMain& f) { flip(f, &Comparison::Ignore::blanks); }, .checkable = true,
       .checked = [](frmMain& f) { return CompareFrame::of(f).ignored().blanks; }},
      {.name = "mCompareCase", .menu = "mToolsCompare", .place = 310,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Ignore &Case"), .needs = kOthers,
       .run = [](frmMain& f) { flip(f, &Comparison::Ignore::letterCase); }, .checkable = true,
       .checked = [](frmMain& f) { return CompareFrame::of(f).ignored().letterCase; }},
      {.name = "mCompareComments", .menu = "mToolsCompare", .place = 320,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Ignore Co&mments"),
       .tip = QT_TRANSLATE_NOOP("frmMain", "By the language of each text"), .needs = kOthers,
       .run = [](frmMain& f) { flip(f, &Comparison::Ignore::comments); }, .checkable = true,
       .checked = [](frmMain& f) { return CompareFrame::of(f).ignored().comments; }},
      {.name = "mCompareSwap", .menu = "mToolsCompare", .place = 400, .caption = QT_TRANSLATE_NOOP("frmMain", "&Swap Sides"),
       .needs = kOthers, .run = [](frmMain& f) { CompareFrame::of(f).swapSides(); }},
      {.name = "mCompareRefresh", .menu = "mToolsCompare", .place = 410, .caption = QT_TRANSLATE_NOOP("frmMain", "R&efresh"),
       .tip = QT_TRANSLATE_NOOP("frmMain", "Read again what is no open document, and compare again"), .needs = kOthers,
       .run = [](frmMain& f) { CompareFrame::of(f).refresh(); }},
  };
  // clang-format on
  return rows;
}
