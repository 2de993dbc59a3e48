// Comparing folders from the main frame: the dialog, the list, and what its lines open.
#include "app/compare/FolderCompare.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>

#include "app/compare/CompareFrame.h"
#include "app/find/FindFrame.h"
#include "app/find/ResultList.h"
#include "tests/app/ProcessFixture.h"

class FolderCompareTest : public FrameFixture {};

TEST_F(FolderCompareTest, TheListOpensPairs) {
  for (const char* folder : {"one", "two"}) QDir(dir.path()).mkdir(q(folder));
  write("one/a.v", "a\nb\n"), write("two/a.v", "a\nc\n");
  write("one/same.v"), write("two/same.v");
  write("one/old.v"), write("two/new.v"), write("two/skip.tmp");
  CompareFrame& compared = CompareFrame::of(*main);
  FolderCompare::of(*main);
  QTimer::singleShot(0, qApp, [&] {
    auto* box = qobject_cast<frmCompareFolders*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    box->findChild<QLineEdit*>(q("compareLeft"))->setText(path("one"));
    box->findChild<QLineEdit*>(q("compareRight"))->setText(path("gone"));
    box->findChild<QLineEdit*>(q("compareMasks"))->setText(q("!*.tmp"));
    box->accept();
    EXPECT_EQ(box->result(), 0) << "there is no such folder";
    box->findChild<QLineEdit*>(q("compareRight"))->setText(path("one/../two"));
    box->accept();
  });
  trigger("mCompareFolders");
  ResultList* list = FindFrame::of(*main).list();
  ASSERT_NE(list, nullptr);
  frmDocument* document = list->document();
  const std::string top = dir.path().toStdString();
  EXPECT_EQ(document->cmx->model()->snapshot().bytes(),
            "Compared with the second folder: " + top + "/two\nFolder: " + top + "/one\n" +
                "1 file differs, 2 files in one folder only, 1 equal; 1 left out by rules, masks or as links; masks !*.tmp\n\n" +
                "a.v:2:1: differs\nnew.v:1:1: only in the second folder\nold.v:1:1: only in the first folder\n");

  // Also when it was saved and read again.
  boxes.answerSave(path("list.txt"));
  trigger("mnuFileSaveAs");
  main->mnuFileClose_Click();
  bool ok = false;
  document = main->mainOpenFile(path("list.txt"), ok);
  list = ResultList::of(document);
  ASSERT_NE(list, nullptr);
  trigger("mnuViewNextMessage");
  ASSERT_NE(compared.current(), nullptr);
  EXPECT_EQ(compared.current()->document(compare::kLeft)->CurrentFileName(), path("one/a.v"));
  EXPECT_EQ(compared.current()->document(compare::kRight)->CurrentFileName(), path("two/a.v"));
  const QPointer<CompareWindow> first = compared.current();
  trigger("mnuViewNextMessage");
  EXPECT_EQ(main->activeDocument()->CurrentFileName(), path("two/new.v"));
  trigger("mnuViewPreviousMessage");   // one window goes through the list, also by its own menu
  EXPECT_NE(compared.current(), first);
  EXPECT_FALSE(first && first->isVisible());
  for (QAction* action : compared.current()->findChildren<QAction*>())
    if (action->shortcut() == QKeySequence(Qt::Key_F8)) action->trigger();
  EXPECT_EQ(main->activeDocument()->CurrentFileName(), path("two/new.v"));
  trigger("mnuViewNextMessage");
  EXPECT_EQ(main->activeDocument()->CurrentFileName(), path("one/old.v"));
  QString error;
  list->edited(document->cmx->model()->snapshot(), &error);
  EXPECT_NE(error, QString()) << "its lines are not those of files";
}
