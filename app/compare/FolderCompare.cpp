#include "app/compare/FolderCompare.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include "app/compare/CompareFrame.h"
#include "app/find/FindFrame.h"
#include "app/find/ResultList.h"
#include "app/frame/FrameMenus.h"
#include "app/frame/frmMain.h"
#include "base/Counted.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "bridge/QStringBytes.h"
#include "folder/CompareFolders.h"

using namespace Qt::StringLiterals;

namespace {

std::string rowsOf(const folder::FoldersCompared& compared) {
  std::string rows;
  for (const folder::FileDifference& one : compared.differences) {
    folder::FileFinds file;
    file.path = one.path;
    file.rows.push_back({.line = one.line, .column = 1, .lines = folder::textOf(one)});
    folder::appendRows(file, &rows);
  }
  return rows;
}

QString resultOf(const folder::FoldersCompared& compared, const frmCompareFolders::Choice& choice) {
  std::int64_t differing = 0, single = 0, unreadable = compared.unlisted;
  for (const folder::FileDifference& one : compared.differences) {
    const bool isSingle = one.kind == folder::FileDifference::onlyLeft || one.kind == folder::FileDifference::onlyRight;
    ++(isSingle ? single : one.kind == folder::FileDifference::unreadable ? unreadable : differing);
  }
  const auto tr = [](const char* text) { return QCoreApplication::translate("FolderCompare", text); };
  QString text = tr("%1, %2 in one folder only, %L3 equal")
                     .arg(counted(differing, tr("file differs"), tr("files differ")), counted(single, tr("file"), tr("files")))
                     .arg(compared.same);
  if (unreadable > 0) text += tr("; %L1 could not be read").arg(unreadable);
  if (compared.unlisted > 0) text += tr(", %L1 of them are not in the list").arg(compared.unlisted);
  if (compared.leftOut > 0) text += tr("; %L1 left out by rules, masks or as links").arg(compared.leftOut);
  if (!choice.masks.isEmpty()) text += tr("; masks %1").arg(toQString(folder::shownPath(fromQString(choice.masks))));
  return text;
}

}   // namespace

FolderCompare& FolderCompare::of(frmMain& frame) {
  auto* found = frame.findChild<FolderCompare*>(QString(), Qt::FindDirectChildrenOnly);
  return found ? *found : *new FolderCompare(frame);
}

FolderCompare::FolderCompare(frmMain& frame) : QObject(&frame), frame_(frame) {
  connect(&FindFrame::of(frame), &FindFrame::pairAsked, this, &FolderCompare::show);
}

// The window can go on through the list, so that a tree is looked through by one key.
void FolderCompare::show(const QString& left, const QString& right) {
  const QPointer<CompareWindow> before = shown_;
  shown_ = CompareFrame::of(frame_).compareFiles(left, right);
  if (!shown_) {
    shown_ = before;
    return;
  }
  QMenu* const menu = shown_->menuBar()->actions().last()->menu();
  menu->addSeparator();
  for (const auto& [name, caption] : {std::pair(u"mnuViewNextMessage"_s, tr("Ne&xt Pair of Files")),
                                      std::pair(u"mnuViewPreviousMessage"_s, tr("Pre&vious Pair of Files"))}) {
    QAction* const original = frame_.menus().action(name);
    QAction* const action = menu->addAction(caption);
    action->setShortcuts(original->shortcuts());
    connect(action, &QAction::triggered, original, &QAction::trigger);
  }
  if (!before || before == shown_) return;
  shown_->setGeometry(before->geometry());
  before->close();
}

void FolderCompare::open() {
  if (last_.left.isEmpty()) last_.left = FindFrame::of(frame_).usualRoot();
  frmCompareFolders box(frame_, last_);
  {
    const ModalGuard guard;
    if (box.exec() != QDialog::Accepted) return;
  }
  compare(box.choice());
}

void FolderCompare::compare(const frmCompareFolders::Choice& choice) {
  last_ = choice;
  const auto compared = std::make_shared<folder::FoldersCompared>();
  const auto work = [compared, left = fromQString(choice.left), right = fromQString(choice.right), options = choice.options()](
                        text::SearchControl& control) { *compared = folder::compareFolders(left, right, options, control); };
  if (!LongWork::runOrLeave(frame_, work, tr("Comparing folders...")) || compared->stopped) return SetStatusText(tr("Cancelled"));
  if (!compared->error.empty()) {
    MsgBox(plainForDisplay(toQString(compared->error)), tr("Compare Folders"));
    return;
  }
  FindFrame::ListAbout about{tr("Compared: %1").arg(plainForDisplay(GetFileTitle(choice.right), 40)),
                             QLatin1String(ResultList::kFirsts[ResultList::kPairs]),
                             toQString(folder::shownPath(fromQString(choice.right))), nullptr};
  about.root = fromQString(choice.left);
  FindFrame::of(frame_).showList(about, [&](const FindFrame::Named&, text::SearchControl&, QString* result) {
    *result = resultOf(*compared, choice);
    return rowsOf(*compared);
  });
}

#include "moc_FolderCompare.cpp"
