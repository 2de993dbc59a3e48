// Texts that come back after a crash, as the user meets them.
#include "app/boxes/frmRecovered.h"

#include <QFileInfo>
#include <QLabel>
#include <QPointer>
#include <QTest>
#include <QTreeWidget>
#include <algorithm>
#include <atomic>
#include <functional>

#include "app/start/LeftoverLook.h"
#include "app/start/StandardInput.h"
#include "base/Program.h"
#include "bridge/FileNames.h"
#include "document/Recovery.h"
#include "tests/app/FrameFixture.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/TempFolder.h"

class Recovered : public FrameFixture {
 protected:
  ~Recovered() override { main.reset(); }   // the session outlives the documents

  QString journals() const { return path("recovery"); }
  QStringList inFolder(const QString& folder) const { return QDir(folder).entryList({q("*.journal")}, QDir::Files); }
  // What a kill right now would leave: copies of the journals that nobody owns.
  QString afterKill() {
    const QString folder = path("left");
    QDir().mkpath(folder);
    EXPECT_TRUE(session.flush());
    for (const QString& name : inFolder(journals())) EXPECT_TRUE(QFile::copy(journals() + u'/' + name, folder + u'/' + name));
    return folder;
  }
  static void type(frmDocument* document, const char* text) {
    document->cmx->InsertText(q(text), {0, 0});
    QCoreApplication::processEvents();
  }
  void closeAll() {
    const auto all = main->documents();
    const auto changed = std::ranges::count_if(all, &frmDocument::DocumentModified);
    if (changed == 1) boxes.answer(Answer::no);
    if (changed > 1) whenAskedAboutSeveral(discardAll);
    trigger("mnuFileCloseAll");
    wait(20);
  }

  RecoverySession session{path("recovery")};
};

// I1: what was piped in, from senders that live, that were killed, and where no journal can be written.
TEST_F(Recovered, PipedTextIsLostByNobody) {
  using namespace text;
  const auto spool = [&](const char* name) {
    const QString to = userStateFolder() + u'/' + q(name);
    EXPECT_TRUE(QFile::copy(write("spool", "from a pipe\n"), to));
    return to;
  };
  const QString left = spool("input-1"), underWay = spool("input-2"), other = write("input-3");
  {
    const files::Descriptor sender = files::open(FileSystem::kCwd, fromQString(underWay), kRead);
    ASSERT_EQ(fileSystem().lock(sender.get(), true, false), 0);
    takeInLeftInput(*main);
  }
  EXPECT_EQ(captions(), QStringList{q("Untitled 1*")}) << "it is nowhere else";
  EXPECT_EQ(main->activeDocument()->cmx->Text(), q("from a pipe\n"));
  EXPECT_EQ(inFolder(journals()).size(), 1);
  EXPECT_FALSE(QFile::exists(left));
  boxes.answer(Answer::ok);
  EXPECT_EQ(main->takeIn(other), nullptr);
  EXPECT_TRUE(QFile::exists(other)) << "only what lies in the state folder for this is removed";
  testing_files::FaultyFileSystem full;
  {
    const testing_files::UseFileSystem use(full);
    full.failUse("openAt", 2, ENOSPC, true);   // the first one reads the text
    EXPECT_NE(main->takeIn(underWay), nullptr);
  }
  EXPECT_TRUE(QFile::exists(underWay)) << "until a journal has it";
  QFile::remove(underWay);
  closeAll();
}

TEST_F(Recovered, J1_EveryTextComesBackUntitledOnesToo) {
  frmDocument* named = open("a.v", "module a;\n");
  type(named, "typed ");
  type(main->LoadNewDoc(), "only here\n");
  open("untouched.v");
  main->newWindow();
  const QString left = afterKill();
  EXPECT_EQ(inFolder(left).size(), 2) << "one for each text that was changed, none for a second window";
  closeAll();
  EXPECT_TRUE(session.flush());
  EXPECT_TRUE(inFolder(journals()).isEmpty()) << "the user wanted none of it";

  QPointer<frmRecovered> window = frmRecovered::offer(*main, frmRecovered::leftIn(left));
  ASSERT_TRUE(window);
  EXPECT_EQ(window->count(), 2);
  while (window && window->count() > 0) {
    const int before = window->count();
    window->Restore();
    wait(10);
    if (window && window->count() == before) break;
  }
  ASSERT_EQ(main->documents().size(), 2);
  EXPECT_TRUE(inFolder(left).isEmpty());
  EXPECT_EQ(inFolder(journals()).size(), 2) << "restored is not yet saved";
  for (frmDocument* document : main->documents()) {
    EXPECT_TRUE(document->DocumentModified());
    const bool isNamed = document->DocumentHasName();
    EXPECT_EQ(document->cmx->GetLine(0), isNamed ? q("typed module a;") : q("only here"));
    EXPECT_EQ(document->CurrentPosition(), isNamed ? (CmPosition{0, 6}) : (CmPosition{1, 0})) << "where it was changed last";
    if (!isNamed) continue;
    EXPECT_EQ(document->CurrentFileName(), path("a.v"));
    EXPECT_TRUE(document->SaveDocumment(path("a.v")));
  }
  EXPECT_EQ(read(path("a.v")), "typed module a;\n");
  EXPECT_TRUE(session.flush());
  EXPECT_EQ(inFolder(journals()).size(), 1) << "J5: it goes after the save";
  closeAll();
}

TEST_F(Recovered, ManyAreRestoredOrDiscardedAtOnce) {
  constexpr int kMany = 40;
  for (int i = 0; i < kMany; ++i) {
    main->LoadNewDoc();
    type(main->activeDocument(), "text\n");
  }
  const QString left = afterKill();
  closeAll();
  QPointer<frmRecovered> window = frmRecovered::offer(*main, frmRecovered::leftIn(left));
  ASSERT_TRUE(window);
  auto* list = window->findChild<QTreeWidget*>();
  for (int i = 1; i < 10; ++i) list->topLevelItem(i)->setSelected(true);
  boxes.answer(Answer::no).answer(Answer::yes);
  window->Discard();
  EXPECT_EQ(window->count(), kMany);
  window->Discard();
  EXPECT_TRUE(boxes.last().text.startsWith(q("10 recovered texts")));
  EXPECT_EQ(window->count(), kMany - 10);
  EXPECT_EQ(inFolder(left).size(), kMany - 10);
  window->RestoreAll();
  wait(20);
  EXPECT_TRUE(window.isNull());
  EXPECT_EQ(main->documents().size(), kMany - 10);
  EXPECT_TRUE(inFolder(left).isEmpty());
  EXPECT_EQ(inFolder(journals()).size(), kMany - 10);
  closeAll();
}

TEST_F(Recovered, EachTextIsListedOnceTheNewestStateFirst) {
  type(open("a.v"), "x");
  const QString left = afterKill();
  const QString first = inFolder(left).value(0);
  ASSERT_TRUE(QFile::copy(left + u'/' + first, left + q("/twin.journal")));
  type(main->activeDocument(), "y");
  EXPECT_TRUE(session.flush());
  ASSERT_TRUE(QFile::copy(journals() + u'/' + first, left + q("/newer.journal")));
  closeAll();
  QPointer<frmRecovered> window = frmRecovered::offer(*main, frmRecovered::leftIn(left));
  ASSERT_TRUE(window);
  ASSERT_EQ(window->count(), 2);
  auto* list = window->findChild<QTreeWidget*>();
  EXPECT_FALSE(list->topLevelItem(0)->text(3).contains(q("older")));
  EXPECT_TRUE(list->topLevelItem(1)->text(3).contains(q("older")));
  window->RestoreAll();
  EXPECT_EQ(main->activeDocument()->cmx->Text(), q("yxtext\n"));
  ASSERT_EQ(window->count(), 1) << "the older state stays until something is done with it";
  boxes.answer(Answer::yes);
  window->Discard();
  EXPECT_TRUE(inFolder(left).isEmpty());
  closeAll();
}

TEST_F(Recovered, J4_NothingIsDiscardedByItself) {
  type(open("a.v"), "x");
  const QString left = afterKill();
  closeAll();
  write("a.v", "by others\n");
  for (int i = 0; i < 2; ++i) {
    QPointer<frmRecovered> window = frmRecovered::offer(*main, frmRecovered::leftIn(left));
    ASSERT_TRUE(window);
    EXPECT_EQ(frmRecovered::offer(*main, frmRecovered::leftIn(left)), nullptr) << "J6: another copy sees that it is being offered";
    window->close();
    wait(10);
    EXPECT_EQ(inFolder(left).size(), 1);
  }
  frmRecovered* window = frmRecovered::offer(*main, frmRecovered::leftIn(left));
  ASSERT_TRUE(window);
  boxes.answer(Answer::no);
  window->Discard();
  EXPECT_EQ(inFolder(left).size(), 1);
  boxes.answerSave({});
  window->SaveAs();
  EXPECT_EQ(inFolder(left).size(), 1);
  boxes.answerSave(path("copy.v"));
  window->SaveAs();
  wait(10);
  EXPECT_EQ(read(path("copy.v")), "xtext\n");
  EXPECT_EQ(read(path("a.v")), "by others\n");
  EXPECT_TRUE(inFolder(left).isEmpty());
  EXPECT_EQ(frmRecovered::offer(*main, frmRecovered::leftIn(left)), nullptr);
}

TEST_F(Recovered, S12_ARestoredTextNeverOverwritesWhatOthersWroteMeanwhile) {
  type(open("a.v"), "x");
  const QString left = afterKill();
  closeAll();
  write("a.v", "by others\n");
  frmRecovered* window = frmRecovered::offer(*main, frmRecovered::leftIn(left));
  ASSERT_TRUE(window);
  window->Restore();
  boxes.answer(Answer::no);
  EXPECT_FALSE(main->activeDocument()->SaveDocumment(path("a.v")));
  EXPECT_EQ(read(path("a.v")), "by others\n");
  closeAll();
}

TEST_F(Recovered, ADamagedJournalSaysHowMuchCameBackAndAnUnreadableOneStays) {
  frmDocument* document = open("a.v");
  type(document, "first ");
  EXPECT_TRUE(session.flush());
  type(document, "second ");
  const QString left = afterKill(), name = left + u'/' + inFolder(left).value(0);
  closeAll();
  QByteArray bytes = read(name);
  bytes[bytes.size() - 3] = char(bytes[bytes.size() - 3] ^ 1);
  testing_files::writeRaw(name.toStdString(), {bytes.constData(), std::size_t(bytes.size())});
  testing_files::writeRaw((left + q("/rubbish.journal")).toStdString(), "not a journal");
  frmRecovered* window = frmRecovered::offer(*main, frmRecovered::leftIn(left));
  ASSERT_TRUE(window);
  const auto* list = window->findChild<QTreeWidget*>();
  ASSERT_EQ(list->topLevelItemCount(), 2);
  for (int i = 0; i < 2; ++i) {
    window->select(i);
    const QString state = list->topLevelItem(i)->text(3);
    if (state.startsWith(q("Nothing"))) {
      window->Restore();
      EXPECT_TRUE(main->documents().isEmpty());
    } else {
      EXPECT_TRUE(state.contains(q("damaged"))) << state.toStdString();
    }
  }
  window->select(list->topLevelItem(0)->text(3).startsWith(q("Nothing")) ? 1 : 0);
  window->Restore();
  ASSERT_EQ(main->documents().size(), 1);
  EXPECT_EQ(main->activeDocument()->cmx->GetLine(0), q("first text"));
  EXPECT_EQ(inFolder(left), QStringList{q("rubbish.journal")});
  window->close();
  closeAll();
}

TEST_F(Recovered, J8_AJournalThatCannotBeWrittenShowsALastingWarning) {
  session.onFailure([this](const QString& reason) { main->showJournalWarning(reason); });
  write("recovery", "a file where the folder should be");
  frmDocument* document = open("a.v");
  EXPECT_EQ(main->panels().warning(), QString());
  type(document, "x");
  EXPECT_FALSE(session.flush());
  wait(30);
  EXPECT_NE(main->panels().warning(), QString());
  SetStatusText(q("something else"));
  type(document, "y");
  EXPECT_NE(main->panels().warning(), QString()) << "it lasts";
  EXPECT_EQ(document->cmx->GetLine(0), q("yxtext"));
  QFile::remove(path("recovery"));
  EXPECT_TRUE(session.flush());
  wait(30);
  EXPECT_EQ(main->panels().warning(), QString());
  EXPECT_EQ(inFolder(journals()).size(), 1);
  session.onFailure({});
  closeAll();
}

TEST_F(Recovered, S6_ACopyThatAKilledSaveLeftIsOfferedWhenTheFileIsOpened) {
  const LeftoverLook look(*main);
  const auto shown = [&] { return main->findChild<frmRecovered*>(); };
  open("other.v");
  write(".a.v.zelkor-recovery-abcdefghij", "the text before\n");
  wait(200);
  EXPECT_EQ(shown(), nullptr) << "nobody has opened that file";
  frmDocument* document = open("a.v", "half a te");
  ASSERT_TRUE(spinUntil([&] { return shown() != nullptr; }));
  EXPECT_EQ(shown()->count(), 1);
  shown()->close();
  wait(20);
  EXPECT_EQ(shown(), nullptr);
  EXPECT_TRUE(QFile::exists(path(".a.v.zelkor-recovery-abcdefghij"))) << "nothing goes by itself";
  trigger("mnuFileRecovered");
  ASSERT_NE(shown(), nullptr);
  EXPECT_EQ(shown()->count(), 1);
  main->activate(document);
  shown()->Restore();
  wait(20);
  EXPECT_EQ(shown(), nullptr);
  EXPECT_EQ(main->documents().size(), 2);
  EXPECT_TRUE(document->DocumentModified());
  EXPECT_EQ(document->cmx->GetLine(0), q("the text before"));
  EXPECT_FALSE(QFile::exists(path(".a.v.zelkor-recovery-abcdefghij")));
  document->cmx->ExecuteCmd(Cmd::UNDO);   // undo
  EXPECT_EQ(document->cmx->GetLine(0), q("half a te"));
  boxes.answer(Answer::ok);
  trigger("mnuFileRecovered");
  EXPECT_EQ(boxes.last().text, q("There is nothing to recover."));
  closeAll();
}

TEST_F(Recovered, S6_ACopyInTheRecoveryFolderIsOfferedAtTheStart) {
  QDir().mkpath(path("left"));
  const QString file = write("a.v", "half a te");
  QString name = file;
  name.replace(u'/', q("%2F"));
  testing_files::writeRaw((path("left") + q("/.") + name + q(".zelkor-recovery-abcdefghij")).toStdString(), "the text before\n");
  testing_files::writeRaw((path("left") + q("/.known by name.zelkor-recovery-abcdefghij")).toStdString(), "another\n");
  frmRecovered* window = frmRecovered::offer(*main, frmRecovered::leftIn(path("left")));
  ASSERT_TRUE(window);
  const auto* list = window->findChild<QTreeWidget*>();
  ASSERT_EQ(list->topLevelItemCount(), 2);
  EXPECT_EQ(list->topLevelItem(0)->text(0), file);
  EXPECT_EQ(list->topLevelItem(1)->text(0), q("known by name"));
  window->Restore();
  ASSERT_EQ(main->documents().size(), 1);
  EXPECT_EQ(main->activeDocument()->CurrentFileName(), file);
  EXPECT_TRUE(main->activeDocument()->SaveDocumment(file)) << "the user has seen how the file is";
  EXPECT_EQ(read(file), "the text before\n");
  window->Restore();
  wait(10);
  ASSERT_EQ(main->documents().size(), 2);
  EXPECT_FALSE(main->activeDocument()->DocumentHasName());
  closeAll();
}

TEST_F(Recovered, NobodyWaitsForADiskThatHangs) {
  type(open("a.v"), "x");
  const QString left = afterKill();
  closeAll();
  const auto answers = std::make_shared<std::atomic<bool>>(false);
  frmRecovered::offerWhenRead(*main, [answers, look = frmRecovered::leftIn(left)] {
    while (!*answers) QThread::msleep(1);
    return look();
  });
  EXPECT_NE(main->LoadNewDoc(), nullptr) << "one works meanwhile";
  EXPECT_EQ(main->findChild<frmRecovered*>(), nullptr);
  *answers = true;
  EXPECT_TRUE(spinUntil([&] { return main->findChild<frmRecovered*>() != nullptr; }));
  closeAll();
}

TEST_F(Recovered, J4_TheListSaysHowTheFileOnDiskStands) {
  struct Case {
    const char* name;
    std::function<void()> meanwhile;
    const char* state;
  };
  const Case cases[] = {
      {"a.v", [] {}, "All of it"},
      {"b.v", [&] { write("b.v", "by others\n"); }, "All of it; the file on disk was changed since"},
      {"c.v", [&] { QFile::rename(path("c.v"), path("moved.v")); }, "All of it; the file does not exist any more"},
      {"d.v", [&] { write("d.v", "xtext\n"); }, ""},
      {"e.v", [&] { write("e.v"); }, "All of it"},   // the same text anew
  };
  for (const Case& c : cases) type(open(c.name), "x");
  const QString left = afterKill();
  closeAll();
  for (const Case& c : cases) c.meanwhile();
  frmRecovered* window = frmRecovered::offer(*main, frmRecovered::leftIn(left));
  ASSERT_TRUE(window);
  const auto* list = window->findChild<QTreeWidget*>();
  ASSERT_EQ(list->topLevelItemCount(), int(std::size(cases)) - 1);
  EXPECT_EQ(inFolder(left).size(), int(std::size(cases)) - 1) << "what its file holds is not lost, and its journal goes";
  for (const Case& c : cases) {
    if (!*c.state) continue;
    const auto found = list->findItems(path(c.name), Qt::MatchExactly);
    ASSERT_EQ(found.size(), 1) << c.name;
    EXPECT_EQ(found[0]->text(3), q(c.state)) << c.name;
  }
  window->close();
}
