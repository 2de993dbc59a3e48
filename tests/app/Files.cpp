// The frame's commands on files.
#include <QKeyEvent>
#include <QListWidget>
#include <QToolButton>
#include <atomic>

#include "bridge/LongWork.h"
#include "control/view/Pane.h"
#include "tests/app/FrameFixture.h"
#include "tests/support/Cost.h"
#include "tests/support/files/FaultyFileSystem.h"

#include "base/Program.h"

namespace {

class Files : public FrameFixture {};

TEST_F(Files, UntitledNumbersFollowTheCount) {
  main->LoadNewDoc();
  main->LoadNewDoc();
  EXPECT_EQ(captions(), (QStringList{q("Untitled 1"), q("Untitled 2")}));
  main->activate(main->documents().first());
  main->mnuFileClose_Click();
  wait(1);
  EXPECT_EQ(main->DocCount, 1);
  main->mnuFileNew_Click();
  EXPECT_EQ(captions(), (QStringList{q("Untitled 2"), q("Untitled 2")}));
}

TEST_F(Files, OpenNamesBindsAndShows) {
  const QString name = write("a.VH");
  boxes.answerOpen({name});
  trigger("mnuFileOpen");
  const frmDocument* document = main->activeDocument();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->CurrentFileName(), name);
  EXPECT_EQ(document->LanguageIndex(), 1);
  EXPECT_EQ(frmRegistry::instance().mruFile.items(), QStringList{name});
  EXPECT_EQ(main->panels().panel(Panel::language), q("Verilog"));
  EXPECT_EQ(main->panels().panel(Panel::lineEnds), q("Unix"));
  EXPECT_EQ(main->panels().panel(Panel::encoding), q("UTF-8"));
  EXPECT_EQ(main->panels().text(), name);
}

TEST_F(Files, WriteProtectedFilesOpenGuarded) {
  const auto protect = [this](const char* name, bool on) {
    QFile::setPermissions(path(name), on ? QFile::ReadOwner : QFile::ReadOwner | QFile::WriteOwner);
    main->activeDocument()->inconsistentDate();
  };
  const auto type = [](frmDocument* document) { return document->cmx->editor().typeText(q("x")); };
  write("a.v");
  QFile::setPermissions(path("a.v"), QFile::ReadOwner);
  ASSERT_TRUE(main->openFile(path("a.v")));
  frmDocument* document = main->activeDocument();
  EXPECT_EQ(main->panels().panel(Panel::overtype), q("Read only"));
  EXPECT_FALSE(type(document));
  EXPECT_EQ(main->panels().text(), q("The text is read-only"));
  main->panels().button(Panel::overtype)->click();
  EXPECT_EQ(main->panels().panel(Panel::overtype), q("INS"));
  EXPECT_TRUE(type(document)) << "the user may change it all the same";
  document->cmx->ExecuteCmd(Cmd::UNDO);
  trigger("mEditReadOnly");
  protect("a.v", false);
  EXPECT_TRUE(type(document)) << "it may be written again";
  EXPECT_EQ(main->panels().panel(Panel::overtype), q("INS"));
  protect("a.v", true);
  EXPECT_TRUE(type(document)) << "no guard while there is something to save";

  frmDocument* other = open("b.v");
  protect("b.v", true);
  EXPECT_FALSE(type(other)) << "became protected while it was open";
  EXPECT_TRUE(main->mainSaveDocument(*other, path("c.v")));
  EXPECT_TRUE(type(other)) << "under another name it may be written";
  trigger("mEditReadOnly");
  protect("c.v", true);
  protect("c.v", false);
  EXPECT_FALSE(type(other)) << "the user's own guard stays";
}

TEST_F(Files, OpenAlreadyBringsForward) {
  frmDocument* first = open("a.v");
  frmDocument* second = open("b.v");
  EXPECT_EQ(main->openFile(path("a.v")), first);
  EXPECT_EQ(main->activeDocument(), first);
  EXPECT_EQ(main->DocCount, 2);
  EXPECT_TRUE(boxes.boxes.empty());
  EXPECT_EQ(frmRegistry::instance().mruFile.Count(), 0);
  // Another way to write the same name.
  QDir(dir.path()).mkdir(q("sub"));
  EXPECT_EQ(main->openFile(q("./sub/../b.v")), second);
  ASSERT_TRUE(QFile::link(path("a.v"), path("link.v")));
  EXPECT_EQ(main->openAt(path("link.v"), 1, 1), first);
  EXPECT_EQ(first->CurrentFileName(), path("a.v"));
  EXPECT_EQ(main->DocCount, 2);
  // One that is new and then one that is open, without a key between: the panels are about the second.
  first->cmx->SetSel({0, 2, 0, 2, false});
  frmDocument* fresh = open("new.v", "1\n2\n");
  fresh->cmx->SetSel({1, 1, 1, 1, false});
  main->openFile(path("link.v"));
  EXPECT_EQ(main->panels().text(), path("a.v"));
  EXPECT_EQ(main->panels().panel(Panel::rowAndColumn), q("1,2"));
  // What happens to the other one behind it does not show.
  fresh->cmx->SetSel({0, 0, 0, 0, false});
  EXPECT_TRUE(fresh->SaveDocumment(fresh->CurrentFileName()));
  EXPECT_EQ(main->panels().text(), path("a.v"));
  EXPECT_EQ(main->panels().panel(Panel::rowAndColumn), q("1,2"));
  // The one with changes comes forward at its normal size.
  fresh->cmx->setText(q("mine\n"));
  boxes.answer(Answer::yes);
  EXPECT_EQ(main->openFile(path("new.v")), fresh);
  EXPECT_FALSE(main->mdi().activeSubWindow()->isMaximized());
}

// Who asks for a place or for a guard gets the window that the answer led to, and none after Cancel.
TEST_F(Files, AnAnswerSaysWhichWindowIsMeant) {
  frmDocument* first = open("a.v", "1\n2\n3\n");
  first->cmx->setText(q("mine\n2\n3\n"));
  boxes.answer(Answer::cancel);
  EXPECT_EQ(main->openAt(path("a.v"), 3, 1), nullptr);
  EXPECT_EQ(first->CurrentPosition().LineNo, 0);
  boxes.answer(Answer::no);
  frmDocument* second = main->openAt(path("a.v"), 3, 1);
  ASSERT_TRUE(second && second != first);
  EXPECT_EQ(second->CurrentPosition().LineNo, 2);
  EXPECT_EQ(second->cmx->GetLine(0) + first->cmx->GetLine(0), q("1mine")) << "nothing is read from the disk into the first";
  EXPECT_EQ(first->CurrentPosition().LineNo, 0);
  boxes.answer(Answer::yes);
  EXPECT_EQ(main->openAt(path("a.v"), 2, 1), first);
  EXPECT_EQ(first->CurrentPosition().LineNo, 1);
}

TEST_F(Files, SaveAsksForANameOnce) {
  frmDocument* document = main->LoadNewDoc();
  document->cmx->setText(q("entity"));
  boxes.answerSave({});
  EXPECT_FALSE(main->saveActive()) << "a cancelled dialog saves nothing";
  EXPECT_EQ(boxes.last().request.name, q("Untitled 1"));
  EXPECT_FALSE(document->DocumentHasName());
  document->SetLanguage(2);
  boxes.answerSave(path("e.vhd"));
  trigger("mnuFileSave");
  EXPECT_EQ(boxes.last().request.filterIndex, 3) << "the language's own entry";
  EXPECT_EQ(read(path("e.vhd")), "entity");
  EXPECT_EQ(document->Caption(), q("e.vhd"));
  EXPECT_FALSE(enabled("mnuFileSave"));
  document->cmx->setText(q("more"));
  trigger("mnuFileSave");
  EXPECT_EQ(read(path("e.vhd")), "more");
  EXPECT_EQ(boxes.boxes.size(), 2u);
}

TEST_F(Files, SaveAsRenamesOnlyWhenItWorked) {
  frmDocument* document = open("a.v");
  boxes.answerSave(path("no/folder/b.vhd")).answer(Answer::no);
  trigger("mnuFileSaveAs");
  EXPECT_EQ(boxes.boxes.front().request.defaultExtension, QString()) << "a name may do without";
  EXPECT_EQ(document->CurrentFileName(), path("a.v"));
  EXPECT_EQ(document->LanguageIndex(), 1);
  boxes.answerSave(path("b.vhd"));
  trigger("mnuFileSaveAs");
  EXPECT_EQ(document->CurrentFileName(), path("b.vhd"));
  EXPECT_EQ(document->LanguageIndex(), 2);
  EXPECT_EQ(document->LineComment(), q("--"));
  EXPECT_EQ(frmRegistry::instance().mruFile.Item(0), path("b.vhd"));
  EXPECT_EQ(read(path("a.v")), "text\n");
}

TEST_F(Files, SaveAllGoesOnAfterACancel) {
  frmDocument* a = open("a.v");
  frmDocument* untitled = main->LoadNewDoc();
  frmDocument* b = open("b.vhd");
  frmDocument* clean = open("clean.v");
  for (frmDocument* document : {a, untitled, b}) document->cmx->setText(q("new"));
  boxes.answerSave({});
  trigger("mnuFileSaveAll");
  EXPECT_EQ(boxes.boxes.size(), 1u);
  EXPECT_EQ(read(path("a.v")), "new");
  EXPECT_EQ(read(path("b.vhd")), "new");
  EXPECT_TRUE(untitled->DocumentModified());
  EXPECT_EQ(main->activeDocument(), clean);
  EXPECT_EQ(manager.ListLanguage(), 1) << "of the active document, not of the last one saved";
  EXPECT_TRUE(enabled("mnuFileSaveAll"));
}

TEST_F(Files, RecentlyUsed) {
  open("a.v");
  frmRegistry::instance().mruFile.setItems({path("gone.v"), write("b.v"), path("a.v")});
  trigger("mnuFileMRU", 1);
  EXPECT_EQ(main->activeDocument()->CurrentFileTitle(), q("b.v"));
  EXPECT_EQ(frmRegistry::instance().mruFile.items(), (QStringList{path("b.v"), path("gone.v"), path("a.v")}));
  trigger("mnuFileMRU", 2);
  EXPECT_EQ(main->activeDocument()->CurrentFileTitle(), q("a.v"));
  EXPECT_EQ(frmRegistry::instance().mruFile.Item(0), path("b.v")) << "only brought forward: not used";
  boxes.answer(Answer::ok).answer(Answer::no);
  trigger("mnuFileMRU", 1);
  EXPECT_EQ(frmRegistry::instance().mruFile.Count(), 3);
  boxes.answer(Answer::ok).answer(Answer::yes);
  trigger("mnuFileMRU", 1);
  EXPECT_EQ(frmRegistry::instance().mruFile.items(), (QStringList{path("b.v"), path("a.v")}));
}

TEST_F(Files, DropOpensInOrderAndGoesOn) {
  boxes.answer(Answer::ok);
  main->MDIForm_OLEDragDrop({write("a.v"), path("none.v"), write("b.v")});
  EXPECT_EQ(captions(), (QStringList{q("a.v"), q("b.v")}));
  EXPECT_EQ(frmRegistry::instance().mruFile.items(), (QStringList{path("b.v"), path("a.v")}));
}

TEST_F(Files, OpenAtGoesToThePlace) {
  write("a.v", "one\ntwo\nthree\n");
  struct Case {
    qint64 line, column, caretLine, caretColumn;
  };
  for (const Case& c : {Case{2, 3, 1, 2}, Case{3, 0, 2, 0}, Case{99, 9, 3, 0}, Case{1, 99, 0, 3}}) {
    frmDocument* document = main->openAt(path("a.v"), c.line, c.column);
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->CurrentPosition(), (CmPosition{c.caretLine, c.caretColumn})) << c.line << ':' << c.column;
  }
  EXPECT_EQ(main->DocCount, 1);
  main->show();
  wait(20);
  QByteArray many;
  for (int i = 0; i < 1000; ++i) many += "line\n";
  frmDocument* tall = main->openAt(write("tall.v", many), 500, 1);
  const qint64 first = tall->findChild<Pane*>()->topLine();
  EXPECT_GT(499 - first, 3) << "in the middle, not at the edge";
  EXPECT_LT(first, 497);
}

TEST_F(Files, ANameThatIsNotThereIsBegun) {
  boxes.answer(Answer::no).answer(Answer::yes);
  EXPECT_EQ(main->openAt(path("sub/new.vhd"), 1, 1), nullptr);
  EXPECT_EQ(main->DocCount, 0);
  frmDocument* document = main->openAt(path("sub/new.vhd"), 1, 1);
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->Caption(), q("new.vhd"));
  EXPECT_EQ(document->LanguageIndex(), 2);
  EXPECT_FALSE(document->DocumentModified());
  EXPECT_TRUE(enabled("mnuFileSave")) << "a save makes the file, though it is empty";
  EXPECT_EQ(main->openAt(path("sub/new.vhd"), 1, 1), document) << "it is begun once";
  document->inconsistentDate();   // nothing is missed that never was
  document->cmx->setText(q("entity"));
  boxes.answer(Answer::no).answer(Answer::yes);
  EXPECT_FALSE(main->saveActive());
  EXPECT_FALSE(QFile::exists(path("sub")));
  EXPECT_TRUE(main->saveActive());
  EXPECT_EQ(boxes.last().text, q("The folder %1 does not exist.\r\nDo you want to create it?").arg(path("sub")));
  EXPECT_EQ(read(path("sub/new.vhd")), "entity");
  EXPECT_TRUE(document->DocumentHasName());
  EXPECT_EQ(QDir::currentPath(), path("sub")) << "dialogs and programs start where the work is";
}

TEST_F(Files, ATextWhoseFileIsGoneIsAskedAboutBeforeItCloses) {
  frmDocument* gone = open("gone.v");
  open("b.v");
  ASSERT_TRUE(QFile::remove(path("gone.v")));
  boxes.answer(Answer::cancel);
  main->mnuFileCloseAll_Click();
  EXPECT_EQ(boxes.boxes.size(), 1u);
  ASSERT_EQ(main->documents().size(), 2);
  boxes.answer(Answer::yes);
  gone->parentWidget()->close();
  EXPECT_EQ(main->documents().size(), 1);
  EXPECT_TRUE(QFile::exists(path("gone.v")));
}

// W2: cancelled when the file has been read and is being compared.
TEST_F(Files, ACancelledReloadChangesNothing) {
  frmDocument* document = open("a.v", "one\ntwo\n");
  main->show();
  document->cmx->InsertText(q("mine\n"), {0, 0});
  const QString before = document->cmx->Text();
  write("a.v", QByteArray("other\n").repeated(50));
  testing_files::FaultyFileSystem files;
  std::atomic<bool> isRead{false}, cancelled{false};
  files.before([&](const testing_files::Call& call) {
    if (isRead || call.name != "close" || !call.path.ends_with("/a.v")) return;
    isRead = true;
    for (int ms = 0; !cancelled && ms < 5000; ++ms) QThread::msleep(1);
    QThread::msleep(50);
  });
  QTimer cancel;
  QObject::connect(&cancel, &QTimer::timeout, &cancel, [&] {
    if (isRead && LongWork::cancelRunning()) cancelled = true;
  });
  cancel.start(20);
  boxes.answer(Answer::ok);   // it was cancelled
  {
    const testing_files::UseFileSystem use(files);
    main->mnuFileReload_Click();
  }
  EXPECT_TRUE(cancelled);
  EXPECT_EQ(document->cmx->Text(), before);
  EXPECT_TRUE(document->cmx->Modified());
  document->cmx->setModified(false);
}

TEST_F(Files, ExitAsksForAllBeforeAnythingCloses) {
  bool ended = false;
  QObject::connect(main.get(), &frmMain::ended, [&] { ended = true; });
  open("a.v")->cmx->setText(q("a"));
  open("clean.v");
  open("b.v")->cmx->setText(q("b"));
  whenAskedAboutSeveral([&](frmUnsaved& box) {
    auto* list = box.findChild<QListWidget*>();
    ASSERT_EQ(list->count(), 2);
    EXPECT_EQ(main->activeDocument()->CurrentFileTitle(), q("a.v")) << "shown when it is asked about";
    list->setCurrentRow(1);
    EXPECT_EQ(main->activeDocument()->CurrentFileTitle(), q("b.v"));
    box.reject();
  });
  main->mnuFileExit_Click();
  EXPECT_FALSE(ended);
  EXPECT_EQ(main->DocCount, 3) << "a cancelled end leaves every window";
  whenAskedAboutSeveral([](frmUnsaved& box) {
    box.findChild<QListWidget*>()->item(1)->setCheckState(Qt::Unchecked);
    box.accept();
  });
  main->mnuFileExit_Click();
  EXPECT_TRUE(ended);
  EXPECT_EQ(main->DocCount, 0);
  EXPECT_EQ(read(path("a.v")), "a");
  EXPECT_EQ(read(path("b.v")), "text\n");
}

TEST_F(Files, T8_AThousandDocuments) {
  const int many = qEnvironmentVariableIntValue("ZELKOR_FULL") ? 1000 : 250;
  // 20 keys into a new document, taken back again.
  const auto typing = [this] {
    return costMs([this] {
      for (int i = 0; i < 20; ++i) {
        QKeyEvent key(QEvent::KeyPress, Qt::Key_A, {}, q("a"));
        QApplication::sendEvent(main->activeDocument()->cmx->findChild<Pane*>(), &key);
        QApplication::processEvents();
      }
      EXPECT_EQ(main->activeDocument()->cmx->Text(), QString(20, u'a'));
      main->activeDocument()->cmx->setText({});
    });
  };
  main->LoadNewDoc();
  const double alone = typing();
  const std::int64_t before = memoryUse().resident;
  while (main->DocCount < many) main->LoadNewDoc();
  main->nextWindow(1);
  EXPECT_EQ(main->activeDocument(), main->documents().first());
  const double amongMany = typing();
  const std::int64_t each = (memoryUse().resident - before) / many;
  std::printf("20 keys %.1f ms, with one document open %.1f ms, %.2f MB each\n", amongMany, alone, double(each) / 1e6);
  EXPECT_LT(amongMany, alone * 50);
  if (!kSanitized) { EXPECT_LT(each, 600'000); }
  boxes.answer(Answer::no);
  main->mnuFileCloseAll_Click();
  wait(1);
  EXPECT_EQ(main->DocCount, 0);
}

}   // namespace
