// The folder that the frame works in: its tree, its file list, going to a file.
#include <QDockWidget>
#include <QLineEdit>
#include <QListView>
#include <QTreeView>
#include <QtTest/QTest>

#include "app/folder/FilesModel.h"
#include "app/folder/FolderParts.h"
#include "app/folder/GoToFile.h"
#include "app/folder/WorkFolder.h"
#include "base/Strings.h"
#include "tests/app/FrameFixture.h"

namespace {

class Folder : public FrameFixture {
 protected:
  Folder() {
    for (const char* name : {"top/.git", "top/rtl", "top/tb", "top/build", "two"}) QDir(dir.path()).mkpath(q(name));
    write("top/.git/HEAD", "ref: x\n");
    write("top/.gitignore", "build/\n");
    for (const char* name : {"top/rtl/alu.v", "top/rtl/core.v", "top/tb/alu_tb.v", "top/build/out.v", "two/other.v"}) write(name);
    write("top/rtl/picture.png", QByteArray("\x89PNG\0\0", 6));
  }
  WorkFolder& work() { return main->folders().work(); }
  bool known(std::size_t files) {
    return spinUntil([&] { return !work().isReading() && work().names()->size() == files; });
  }
  // What the tree shows of a folder, in order.
  static QStringList shown(const QAbstractItemModel& model, const QModelIndex& in = {}) {
    QStringList names;
    for (int row = 0; row < model.rowCount(in); ++row) names << model.index(row, 0, in).data().toString();
    return names;
  }
};

TEST_F(Folder, FollowsTheDocumentUntilOneIsOpened) {
  open("top/rtl/alu.v");
  work().use();
  ASSERT_TRUE(spinUntil([&] { return work().root() == path("top"); }));
  ASSERT_TRUE(known(3));   // nothing that is ignored, hidden or binary
  EXPECT_EQ(work().kind(), WorkFolder::Kind::document);
  main->MDIForm_OLEDragDrop({path("two")});
  EXPECT_EQ(work().root(), path("two"));
  ASSERT_TRUE(known(1));
  open("top/tb/alu_tb.v");
  settle(100);
  EXPECT_EQ(work().root(), path("two"));
  work().close();
  EXPECT_TRUE(spinUntil([&] { return work().root() == path("top"); }));
  write("list.f", "top/rtl/alu.v\n+incdir+top/tb\nmissing.v\n");
  work().openList(path("list.f"), false);
  ASSERT_TRUE(known(1));
  EXPECT_EQ(work().root(), dir.path());
  EXPECT_TRUE(work().trouble().contains(q("list.f:3: "))) << work().trouble().toStdString();
  WorkFolder again(*main);   // the next start
  again.restore();
  EXPECT_EQ(again.list(), path("list.f"));
}

TEST_F(Folder, TreeShowsAndChangesTheDisk) {
  main->resize(900, 600);
  main->show();
  frmDocument* document = open("top/rtl/alu.v");
  ucMRULst& recent = frmRegistry::instance().mruFile;
  recent.setItems({path("top/rtl/core.v"), path("top/rtl/alu.v")});
  main->folders().open(path("top"));
  auto* tree = main->findChild<QTreeView*>();
  ASSERT_NE(tree, nullptr);
  auto* model = qobject_cast<FilesModel*>(tree->model());
  ASSERT_TRUE(spinUntil([&] { return shown(*model) == QStringList{q("rtl"), q("tb")}; }));
  const QPersistentModelIndex rtl = model->index(0, 0);
  tree->expand(rtl);
  ASSERT_TRUE(spinUntil([&] { return shown(*model, rtl) == QStringList{q("alu.v"), q("core.v")}; }));
  document->cmx->ExecuteCmd(Cmd::SELECTALL);
  document->cmx->ReplaceSel(q("changed"));
  ASSERT_TRUE(spinUntil([&] { return shown(*model, rtl).first() == q("alu.v*"); }));

  write(q("top/rtl/odd\nname.v"));   // another program makes and removes files
  QFile::remove(path("top/rtl/core.v"));
  ASSERT_TRUE(spinUntil([&] { return shown(*model, rtl) == QStringList{q("alu.v*"), nameForDisplay(q("odd\nname.v"))}; }));

  // F2 renames, and the document goes along with what is not saved in it; not over another file.
  model->setData(model->index(0, 0, rtl), q("unit.v"), Qt::EditRole);
  ASSERT_TRUE(spinUntil([&] { return document->CurrentFileName() == path("top/rtl/unit.v"); }));
  EXPECT_TRUE(document->DocumentModified());
  EXPECT_EQ(read(path("top/rtl/unit.v")), "text\n");
  write("top/rtl/unit.v", "others\n");   // under its new name, too, nothing of others is overwritten without a question
  {
    ScriptedDialogs guarded;
    guarded.answer(Answer::no);
    EXPECT_FALSE(document->SaveDocumment(path("top/rtl/unit.v")));
  }
  EXPECT_EQ(read(path("top/rtl/unit.v")), "others\n");
  write("top/rtl/unit.v", "text\n");
  ASSERT_TRUE(spinUntil([&] { return shown(*model, rtl) == QStringList{nameForDisplay(q("odd\nname.v")), q("unit.v*")}; }));
  {
    ScriptedDialogs refused;
    refused.answer(Answer::ok);
    model->setData(model->index(1, 0, rtl), q("odd\nname.v"), Qt::EditRole);
    EXPECT_TRUE(spinUntil([&] { return !refused.boxes.empty(); }));
  }
  EXPECT_EQ(document->CurrentFileName(), path("top/rtl/unit.v"));

  // Del asks, and puts it where the desktop finds it again.
  tree->setCurrentIndex(model->index(0, 0, rtl));
  const QByteArray usual = qgetenv("XDG_DATA_HOME");
  qputenv("XDG_DATA_HOME", QFile::encodeName(path("data")));
  ScriptedDialogs sure;
  sure.answer(Answer::no).answer(Answer::yes);
  QTest::keyClick(tree, Qt::Key_Delete);
  EXPECT_TRUE(QFile::exists(path(q("top/rtl/odd\nname.v"))));
  QTest::keyClick(tree, Qt::Key_Delete);
  qputenv("XDG_DATA_HOME", usual);
  EXPECT_FALSE(QFile::exists(path(q("top/rtl/odd\nname.v"))));
  EXPECT_EQ(read(path(q("data/Trash/files/odd\nname.v"))), "text\n");
  EXPECT_TRUE(read(path(q("data/Trash/info/odd\nname.v.trashinfo"))).contains("/top/rtl/odd%0Aname.v\n"));
  ASSERT_TRUE(spinUntil([&] { return shown(*model, rtl) == QStringList{q("unit.v*")}; }));

  // A file that is open and goes into the trash: its text stays, as an unsaved one, and the box says so. Recent files follow.
  EXPECT_EQ(recent.items(), QStringList({path("top/rtl/core.v"), path("top/rtl/unit.v")}));
  frmDocument* core = open("top/rtl/core.v");
  ASSERT_TRUE(spinUntil([&] { return model->indexOf(path("top/rtl/core.v")).isValid(); }));
  tree->setCurrentIndex(model->indexOf(path("top/rtl/core.v")));
  qputenv("XDG_DATA_HOME", QFile::encodeName(path("data")));
  sure.answer(Answer::yes);
  QTest::keyClick(tree, Qt::Key_Delete);
  qputenv("XDG_DATA_HOME", usual);
  EXPECT_TRUE(sure.last().text.contains(q("It is open."))) << sure.last().text.toStdString();
  EXPECT_TRUE(core->DocumentModified());
  EXPECT_EQ(recent.items(), QStringList{path("top/rtl/unit.v")});
  core->inconsistentDate();   // which tells it no second time
  EXPECT_EQ(sure.boxes.size(), 3u);
  EXPECT_TRUE(core->SaveDocumment(path("top/rtl/core.v")));
  QFile::remove(path("top/rtl/core.v"));

  // The filter finds in folders that are closed, and gives the tree back as it was.
  auto* filter = main->findChild<QWidget*>(q("files"))->findChild<QLineEdit*>();
  filter->setText(q("tb"));
  ASSERT_TRUE(spinUntil([&] { return shown(*model) == QStringList{q("tb")}; }));
  EXPECT_EQ(shown(*model, model->index(0, 0)), QStringList{q("alu_tb.v")});
  filter->clear();
  ASSERT_TRUE(spinUntil([&] { return shown(*model) == QStringList{q("rtl"), q("tb")} && tree->isExpanded(model->index(0, 0)); }));
  work().setShowsAll(true);
  ASSERT_TRUE(spinUntil([&] { return shown(*model).contains(q("build")) && shown(*model).contains(q(".gitignore")); }));
  const auto grey = [&](const char* name) { return model->indexOf(path(name)).data(Qt::ForegroundRole).isValid(); };
  EXPECT_TRUE(grey("top/build") && !grey("top/rtl"));
  write("top/.gitignore", "rtl/\n");
  QTest::keyClick(tree, Qt::Key_F5);
  EXPECT_TRUE(spinUntil([&] { return !grey("top/build") && grey("top/rtl"); }));
}

TEST_F(Folder, KeysGoIntoADockAndHideItThere) {
  main->show();
  main->activateWindow();
  main->LoadNewDoc();
  frmDocument* document = open("top/rtl/alu.v");
  main->LoadNewDoc();
  main->activate(document);   // neither the first nor the last one
  document->cmx->setFocus();
  ASSERT_TRUE(spinUntil([] { return QApplication::focusWidget() != nullptr; }));
  const auto press = [&](int key) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), Qt::ControlModifier | Qt::ShiftModifier);
  };
  struct Case {
    const char *command, *dock;
    int key;
  };
  for (const Case& c : {Case{"mnuViewFiles", "filesDock", Qt::Key_B}, Case{"mnuViewLog", "logDock", Qt::Key_L}}) {
    SCOPED_TRACE(c.command);
    press(c.key);
    auto* dock = main->findChild<QDockWidget*>(q(c.dock));
    ASSERT_NE(dock, nullptr);
    const auto inDock = [&] { return dock->isAncestorOf(QApplication::focusWidget()); };
    EXPECT_TRUE(inDock());
    document->cmx->setFocus();
    settle(10);
    press(c.key);
    EXPECT_TRUE(inDock() && dock->isVisible());
    settle(10);
    press(c.key);
    EXPECT_FALSE(dock->isVisible());
    EXPECT_TRUE(document->isAncestorOf(QApplication::focusWidget()));
    EXPECT_EQ(main->activeDocument(), document);
    settle(10);
    trigger(c.command);
    document->cmx->setFocus();
    trigger(c.command);   // a click
    EXPECT_FALSE(dock->isVisible());
  }
}

TEST_F(Folder, GoesToAFileByPartsOfItsName) {
  open("two/other.v");
  frmDocument* unnamed = main->LoadNewDoc();
  main->folders().work().openFolder(path("top"));
  const auto choose = [&](const char* typed, const char* first) {
    GoToFile box(*main, work());
    auto* list = box.findChild<QListView*>();
    ASSERT_TRUE(known(3));
    box.show();
    box.findChild<QLineEdit*>()->setText(q(typed));
    QTest::keyClick(box.findChild<QLineEdit*>(), Qt::Key_Return);   // before the list is there
    ASSERT_TRUE(spinUntil([&] { return !box.isVisible(); })) << typed;
    EXPECT_TRUE(list->model()->index(0, 0).data().toString().startsWith(q(first))) << typed;
    settle(20);
  };
  write("top/tb/alu_tb.v", "one\ntwo\nthree\n");
  choose("tb alu:2:3", "alu_tb.v");
  ASSERT_EQ(main->activeDocument()->CurrentFileName(), path("top/tb/alu_tb.v"));
  EXPECT_EQ(main->activeDocument()->CurrentPosition().LineNo, 1);
  EXPECT_EQ(main->activeDocument()->CurrentPosition().ColNo, 2);
  choose("untit", "Untitled");
  EXPECT_EQ(main->activeDocument(), unnamed);
  choose("othe", "other.v");   // open, though it lies elsewhere
  EXPECT_EQ(main->activeDocument()->CurrentFileName(), path("two/other.v"));
  choose("", "Untitled");   // the one before comes first
  EXPECT_EQ(main->activeDocument(), unnamed);
}

}   // namespace
