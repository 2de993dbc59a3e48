// Formatting, columnising and services on lines.
#include <QCoreApplication>

#include "app/commands/Groups.h"
#include "app/frame/frmMain.h"
#include "base/Counted.h"
#include "base/Program.h"
#include "change/LineDialogs.h"
#include "change/frmFormat.h"
#include "document/frmDocument.h"

namespace {

CodeMax& cmx(frmMain& f) { return *f.activeDocument()->cmx; }

void mToolsFormat_Click(frmMain& f) {
  auto* dialog = f.findChild<frmFormat*>();
  if (!dialog) {
    dialog = new frmFormat(&f);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
  }
  dialog->show();
  dialog->raise();
  dialog->activateWindow();
}

// Shows how many lines a service changed.
void tell(qint64 changed) { SetStatusText(counted(changed, frmMain::tr("line changed"), frmMain::tr("lines changed"))); }

}   // namespace

std::span<const FrameCommand> formatCommands() {
  constexpr unsigned kText = kDocument | kWritable;
  // clang-format off
  static const FrameCommand rows[] = {
      {.name = "mEditColumnize", .menu = "mEdit", .place = 700, .caption = QT_TRANSLATE_NOOP("frmMain", "Columni&ze..."),
       .tip = QT_TRANSLATE_NOOP("frmMain", "Align a delimiter in the selected lines"), .needs = kText | kSelection,
       .run = [](frmMain& f) { f.lineDialogs().keepDelimiter(Columnize(cmx(f))); }},
      {.name = "mEditColumnizeOptions", .menu = "mEdit", .place = 710,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Columnize With..."),
       .tip = QT_TRANSLATE_NOOP("frmMain", "Align with groups, code only, or within a block"), .needs = kText | kSelection,
       .run = [](frmMain& f) { f.lineDialogs().columnize(cmx(f), &f); }},
      {.name = "mEditLines", .menu = "mEdit", .place = 720, .caption = QT_TRANSLATE_NOOP("frmMain", "&Lines"), .needs = kText, .isMenu = true},
      {.name = "mEditSortLines", .menu = "mEditLines", .place = 100, .caption = QT_TRANSLATE_NOOP("frmMain", "&Sort..."), .needs = kText,
       .run = [](frmMain& f) { f.lineDialogs().sortLines(cmx(f), &f); }},
      {.name = "mEditRemoveDuplicates", .menu = "mEditLines", .place = 110,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Remove &Duplicates"), .needs = kText, .run = [](frmMain& f) { tell(RemoveDuplicateLines(cmx(f))); }},
      {.name = "mEditRemoveBlankLines", .menu = "mEditLines", .place = 120,
       .caption = QT_TRANSLATE_NOOP("frmMain", "Remove &Blank Lines"), .needs = kText, .run = [](frmMain& f) { tell(RemoveBlankLines(cmx(f))); }},
      {.name = "mEditTrimLineEnds", .menu = "mEditLines", .place = 130, .caption = QT_TRANSLATE_NOOP("frmMain", "&Trim Line Ends"),
       .needs = kText, .run = [](frmMain& f) { tell(TrimLineEnds(cmx(f))); }},
      {.name = "mEditJoinLines", .menu = "mEditLines", .place = 140, .caption = QT_TRANSLATE_NOOP("frmMain", "&Join"), .needs = kText,
       .run = [](frmMain& f) { tell(JoinLines(cmx(f))); }},
      {.name = "mEditInsertSeries", .menu = "mEditLines", .place = 200, .caption = QT_TRANSLATE_NOOP("frmMain", "Insert &Number Series..."),
       .needs = kText, .run = [](frmMain& f) { f.lineDialogs().insertSeries(cmx(f), &f); }},
      {.name = "mToolsFormat", .menu = "mTools", .place = 110, .caption = QT_TRANSLATE_NOOP("frmMain", "&Format..."),
       .icon = "zelkor-format", .tip = QT_TRANSLATE_NOOP("frmMain", "Tabs, letter case, indentation and line ends"), .needs = kText,
       .run = mToolsFormat_Click},
  };
  // clang-format on
  return rows;
}
