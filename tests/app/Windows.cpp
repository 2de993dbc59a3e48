// Document windows, tabs, and the state that the next one takes over.
#include <QDockWidget>
#include <QMenu>
#include <QMouseEvent>

#include "app/frame/DocumentTabs.h"
#include "document/frmLog.h"
#include "script/mCMXParser.h"
#include "tests/app/FrameFixture.h"
#include "tests/support/OnceAProgramRuns.h"

namespace {

class Windows : public FrameFixture {
 protected:
  Windows() {
    main->resize(800, 600);
    main->show();
    wait(5);
  }
  QMdiSubWindow* windowOf(frmDocument* document) { return qobject_cast<QMdiSubWindow*>(document->parentWidget()); }
  DocumentTabs& tabs() { return *main->findChild<DocumentTabs*>(); }
  static void click(QWidget& widget, QPoint at, Qt::MouseButton button) {
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      QMouseEvent event(type, at, widget.mapToGlobal(at), button, button, Qt::NoModifier);
      QApplication::sendEvent(&widget, &event);
    }
  }
};

TEST_F(Windows, StateIsRememberedForTheNext) {
  frmDocument* first = open("a.v");
  EXPECT_TRUE(windowOf(first)->isMaximized());
  windowOf(first)->showNormal();
  windowOf(first)->close();
  wait(1);
  EXPECT_EQ(main->cmxWindowState(), 0);
  EXPECT_FALSE(windowOf(open("b.v"))->isMaximized());
  windowOf(main->activeDocument())->showMinimized();
  windowOf(main->documents().last())->close();
  wait(1);
  EXPECT_EQ(main->cmxWindowState(), 0) << "nobody wants the next one minimised";
}

TEST_F(Windows, TilesCoverTheRoomWithoutGaps) {
  for (const char* name : {"a.v", "b.v", "c.v"}) open(name);
  for (const Qt::Orientation rows : {Qt::Vertical, Qt::Horizontal}) {
    main->tile(rows);
    const QSize room = main->mdi().viewport()->size();
    int edge = 0;
    for (frmDocument* document : main->documents()) {
      const QRect place = windowOf(document)->geometry();
      EXPECT_EQ(rows == Qt::Vertical ? place.top() : place.left(), edge);
      EXPECT_EQ(rows == Qt::Vertical ? place.width() : place.height(), rows == Qt::Vertical ? room.width() : room.height());
      edge += rows == Qt::Vertical ? place.height() : place.width();
    }
    EXPECT_EQ(edge, rows == Qt::Vertical ? room.height() : room.width());
  }
  main->activate(main->documents()[0]);
  main->cascade();
  for (int other : {1, 2})
    EXPECT_GT(windowOf(main->documents()[0])->y(), windowOf(main->documents()[other])->y()) << "all of it is seen";
}

TEST_F(Windows, ComeBackWholeFromEveryState) {
  for (int i = 0; i < 30; ++i) main->LoadNewDoc();
  const auto whole = [&](const char* when) {
    const QRect room = main->mdi().viewport()->rect();
    for (frmDocument* document : main->documents()) {
      const QMdiSubWindow* window = windowOf(document);
      if (window->isMinimized() || window->isMaximized()) continue;
      EXPECT_TRUE(room.contains(window->geometry())) << when;
      EXPECT_GE(window->width(), room.width() / 2) << when;
      EXPECT_GE(window->height(), room.height() / 2) << when;
    }
  };
  windowOf(main->activeDocument())->showNormal();
  whole("restored");
  main->cascade();
  whole("cascaded");
  EXPECT_NE(windowOf(main->documents()[0])->pos(), windowOf(main->documents()[1])->pos());
  frmDocument* last = main->documents().last();
  main->activate(last);
  windowOf(last)->showMaximized();
  main->resize(600, 450);
  wait(5);
  windowOf(last)->showNormal();
  EXPECT_TRUE(main->mdi().viewport()->rect().contains(windowOf(last)->geometry())) << "the frame is smaller now";
  windowOf(last)->showMinimized();
  click(tabs(), tabs().tabRect(tabs().tabOf(last)).center(), Qt::LeftButton);
  EXPECT_FALSE(windowOf(last)->isMinimized());
}

TEST_F(Windows, NextGoesRoundInTheOrderOfTheTabs) {
  for (const char* name : {"a.v", "b.v", "c.v"}) open(name);
  tabs().moveTab(0, 2);   // b c a
  QStringList seen;
  for (int i = 0; i < 4; ++i) {
    main->nextWindow(1);
    seen << main->activeDocument()->CurrentFileTitle();
  }
  EXPECT_EQ(seen, (QStringList{q("a.v"), q("b.v"), q("c.v"), q("a.v")}));
  main->nextWindow(-1);
  EXPECT_EQ(main->activeDocument()->CurrentFileTitle(), q("c.v"));
}

TEST_F(Windows, TabsShowAndClose) {
  frmDocument* a = open("a.v");
  frmDocument* b = open("b&<b>.v");
  EXPECT_EQ(tabs().tabText(1), q("b&&<b>.v"));
  EXPECT_TRUE(tabs().tabToolTip(0).contains(path("a.v")));
  EXPECT_EQ(tabs().currentIndex(), 1);
  a->cmx->setText(q("x"));
  EXPECT_EQ(tabs().tabText(0), q("a.v*"));
  click(tabs(), tabs().tabRect(0).center(), Qt::LeftButton);
  EXPECT_EQ(main->activeDocument(), a);
  boxes.answer(Answer::cancel);
  click(tabs(), tabs().tabRect(0).center(), Qt::MiddleButton);
  EXPECT_EQ(main->DocCount, 2);
  click(tabs(), tabs().tabRect(1).center(), Qt::MiddleButton);
  wait(1);
  EXPECT_EQ(main->DocCount, 1);
  EXPECT_EQ(tabs().count(), 1);
  EXPECT_EQ(main->activeDocument(), a);
  (void)b;
}

TEST_F(Windows, CloseOthersAsksForAllFirst) {
  frmDocument* keep = open("keep.v");
  keep->cmx->setText(q("kept"));
  open("a.v")->cmx->setText(q("a"));
  open("b.v")->cmx->setText(q("b"));
  whenAskedAboutSeveral([](frmUnsaved& box) { box.reject(); });
  main->closeOthers(keep);
  EXPECT_EQ(main->DocCount, 3);
  whenAskedAboutSeveral(discardAll);
  main->closeOthers(keep);
  wait(1);
  EXPECT_EQ(main->documents(), QList<frmDocument*>{keep});
}

TEST_F(Windows, SecondWindowOnOneText) {
  frmDocument* first = open("a.v", "one\ntwo\n");
  trigger("mWindowNew");
  frmDocument* second = main->activeDocument();
  ASSERT_NE(second, first);
  EXPECT_EQ(main->DocCount, 2);
  EXPECT_EQ(second->LanguageIndex(), 1);
  EXPECT_EQ(second->views(), 2);
  second->cmx->SetSel({1, 0, 1, 3, false});
  second->cmx->ReplaceSel(q("TWO"));
  EXPECT_EQ(first->cmx->GetLine(1), q("TWO"));
  EXPECT_EQ(captions(), (QStringList{q("a.v*"), q("a.v*")}));
  EXPECT_EQ(first->CurrentPosition(), (CmPosition{0, 0}));
  windowOf(second)->close();
  wait(1);
  EXPECT_TRUE(boxes.boxes.empty());
  EXPECT_EQ(main->DocCount, 1);
  EXPECT_TRUE(main->saveActive());
  EXPECT_EQ(read(path("a.v")), "one\nTWO\n");
  trigger("mWindowNew");
  EXPECT_TRUE(main->mainSaveDocument(*first, path("b.v")));
  for (const int tab : {0, 1}) EXPECT_EQ(tabs().tabText(tab), q("b.v"));
}

TEST_F(Windows, ListNamesThem) {
  open("a&b.v");
  frmDocument* second = open("b.v");
  QMenu menu;
  main->fillWindowList(menu);
  QStringList texts;
  for (const QAction* action : menu.actions())
    if (!action->isSeparator()) texts << action->text();
  EXPECT_EQ(texts, (QStringList{q("&1 a&&b.v"), q("&2 b.v")}));
  EXPECT_TRUE(menu.actions().last()->isChecked());
  menu.actions()[menu.actions().size() - 2]->trigger();
  EXPECT_NE(main->activeDocument(), second);
}

// Of texts with one title, tab and list say what tells them apart.
TEST_F(Windows, TextsWithOneTitleAreToldApart) {
  for (const char* folder : {"x/rtl", "y/rtl", "y/sim"}) QDir(dir.path()).mkpath(q(folder));
  const auto names = [this] {
    QStringList texts;
    for (int tab = 0; tab < tabs().count(); ++tab) texts << tabs().tabText(tab);
    return texts.join(u' ');
  };
  frmDocument* first = open("x/rtl/top.v");
  EXPECT_EQ(names(), q("top.v"));
  open("y/rtl/top.v")->cmx->InsertText(q("x"), {0, 0});
  main->newWindow();
  open("y/sim/top.v");
  EXPECT_EQ(names(), q("x/rtl/top.v y/rtl/top.v* y/rtl/top.v* sim/top.v"));
  EXPECT_EQ(first->Caption(), q("top.v"));
  QMenu menu;
  main->fillWindowList(menu);
  EXPECT_EQ(menu.actions().last()->text(), q("&4 sim/top.v"));
  EXPECT_TRUE(main->mainSaveDocument(*first, path("x/rtl/other.v")));
  EXPECT_EQ(names(), q("other.v rtl/top.v* rtl/top.v* sim/top.v"));
  windowOf(main->activeDocument())->close();
  wait(1);
  EXPECT_EQ(names(), q("other.v top.v* top.v*"));
}

TEST_F(Windows, TheLogComesBackWhereItWas) {
  const auto dock = [this] { return main->findChild<QDockWidget*>(q("logDock")); };
  const auto again = [this] {
    main->MDIForm_Unload();
    main = std::make_unique<frmMain>();
    main->resize(800, 600);
    main->restoreLog();
    main->show();
    wait(20);
  };
  frmRegistry::instance().SaveLogDock({});
  again();
  EXPECT_EQ(dock(), nullptr) << "never shown";
  main->showLog();
  main->addDockWidget(Qt::RightDockWidgetArea, dock());
  ASSERT_TRUE(spinUntil([&] { return dock()->property("placed").toBool(); }));
  wait(20);   // else its own first size came behind this one
  main->resizeDocks({dock()}, {250}, Qt::Horizontal);
  ASSERT_TRUE(spinUntil([&] { return dock()->width() == 250; }));
  again();
  ASSERT_NE(dock(), nullptr);
  EXPECT_TRUE(dock()->isVisible());
  EXPECT_EQ(main->dockWidgetArea(dock()), Qt::RightDockWidgetArea);
  EXPECT_TRUE(spinUntil([&] { return dock()->width() == 250; })) << dock()->width();
  dock()->setFloating(true);
  dock()->setGeometry(40, 50, 300, 200);
  again();
  ASSERT_NE(dock(), nullptr);
  EXPECT_TRUE(dock()->isFloating() && dock()->isVisible());
  EXPECT_EQ(dock()->geometry(), QRect(40, 50, 300, 200));
  dock()->hide();
  again();
  EXPECT_EQ(dock(), nullptr) << "it was closed";
  main->showLog();
  EXPECT_TRUE(dock()->isFloating());
}

}   // namespace
