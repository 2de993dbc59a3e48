// J7: the end of the desktop's session, and closing that was agreed to before it happens.
#include "app/start/SessionEnd.h"

#include <QPushButton>
#include <QTest>
#include <thread>

#include "bridge/LongWork.h"
#include "document/Recovery.h"
#include "language/editor/frmDefinitions.h"
#include "script/mCMXParser.h"
#include "tests/app/FrameFixture.h"
#include "tests/support/files/FaultyFileSystem.h"

namespace {

class SessionEndRun : public FrameFixture {
 protected:
  ~SessionEndRun() override { main.reset(); }   // the session outlives the documents

  void type(frmDocument* document) { document->cmx->InsertText(q("x"), {0, 0}); }
  int journals() {
    session.flush();
    return int(QDir(path("recovery")).entryList({q("*.journal")}, QDir::Files).size());
  }

  RecoverySession session{path("recovery")};
  SessionEnd end{*main};
};

TEST_F(SessionEndRun, AsksWhatClosingAsksAndOnlyOnce) {
  type(open("one.v"));
  type(open("two.v"));
  int ended = 0;
  QObject::connect(main.get(), &frmMain::ended, [&] { ++ended; });
  whenAskedAboutSeveral([](frmUnsaved& box) { box.reject(); });
  EXPECT_FALSE(end.sessionEnds(true)) << "the user wants to stay";
  EXPECT_EQ(main->documents().size(), 2);
  whenAskedAboutSeveral(discardAll);
  EXPECT_TRUE(end.sessionEnds(true));
  EXPECT_EQ(journals(), 2) << "until it really ends";
  main->close();
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(journals(), 0) << "the user wanted none of it";
}

TEST_F(SessionEndRun, ATextThatIsChangedAfterTheAnswerIsAskedAboutAgain) {
  frmDocument* document = open("one.v");
  type(document);
  boxes.answer(Answer::no);
  EXPECT_TRUE(end.sessionEnds(true));
  type(document);   // another program kept the session from ending
  boxes.answer(Answer::cancel);
  trigger("mnuFileClose");
  EXPECT_EQ(main->documents().size(), 1);
  document->cmx->setModified(false);
}

TEST_F(SessionEndRun, WithoutTimeForQuestionsTheTextsStayInTheirJournals) {
  type(open("one.v"));
  type(main->LoadNewDoc());
  open("untouched.v");
  int ended = 0;
  QObject::connect(main.get(), &frmMain::ended, [&] { ++ended; });
  EXPECT_TRUE(end.sessionEnds(false));
  EXPECT_EQ(main->documents().size(), 3) << "it may go on after all";
  QEvent quit(QEvent::Quit);
  QApplication::sendEvent(qApp, &quit);
  EXPECT_EQ(ended, 1);
  EXPECT_TRUE(main->documents().isEmpty());
  EXPECT_EQ(journals(), 2);
  EXPECT_EQ(read(path("one.v")), "text\n");
}

TEST_F(SessionEndRun, OnlyWhatNoJournalHoldsIsAskedAbout) {
  type(open("one.v"));
  frmDocument* two = open("two.v");
  EXPECT_EQ(journals(), 1);
  testing_files::FaultyFileSystem full;
  const testing_files::UseFileSystem use(full);
  full.failUse("openAt", 1, ENOSPC, true);
  type(two);
  const auto asked = [&] { return boxes.last().title; };
  boxes.answer(Answer::cancel);
  EXPECT_FALSE(main->endFromOutside());
  EXPECT_EQ(asked(), q("two.v"));
  EXPECT_EQ(boxes.boxes.size(), 1u);
  EXPECT_EQ(main->documents().size(), 2);
  boxes.answer(Answer::cancel);
  trigger("mnuFileClose");
  EXPECT_EQ(asked(), q("two.v")) << "staying takes every agreement back";
  full.clear();
  EXPECT_TRUE(main->endFromOutside());
  EXPECT_EQ(boxes.boxes.size(), 2u);
  EXPECT_EQ(journals(), 2);
}

TEST_F(SessionEndRun, ASearchUnderWayReturnsBeforeItsTextGoes) {
  open("one.v");
  bool ended = false;
  QObject::connect(main.get(), &frmMain::ended, [&] { ended = true; });
  QTimer::singleShot(0, &end, [this] { end.endWanted(); });
  LongWork::run(*main, 1, [&](text::SearchControl& search) {
    for (int step = 0; !search.cancel && step < 5000; ++step) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  });
  EXPECT_EQ(main->documents().size(), 1);
  EXPECT_FALSE(ended);
  EXPECT_TRUE(QTest::qWaitFor([&] { return ended; }, 60'000));
}

TEST_F(SessionEndRun, ARunUnderWayReturnsBeforeItsTextGoes) {
  frmDocument* document = open("one.v");
  bool ended = false, told = false;
  QObject::connect(main.get(), &frmMain::ended, [&] { ended = true; });
  const auto signal = [&] {   // comes in between two statements
    end.endWanted();
    told = true;
    EXPECT_EQ(main->documents(), QList{document});
  };
  QObject::connect(document->cmx->model().get(), &TextModel::modifiedChanged, &end, signal,
                   Qt::ConnectionType(Qt::QueuedConnection | Qt::SingleShotConnection));
  EXPECT_EQ(mCMXParser::Run(0, 0, q("cmdINSERTCHAR x\n").repeated(200'000)).ending, mCMXParser::Ending::stopped);
  EXPECT_TRUE(told);
  EXPECT_TRUE(QTest::qWaitFor([&] { return ended; }, 60'000));
  EXPECT_TRUE(boxes.boxes.empty()) << (boxes.boxes.empty() ? "" : boxes.last().text.toStdString());
  EXPECT_EQ(journals(), 1);
}

TEST_F(SessionEndRun, ChangedDefinitionsAreAskedAboutAndStayingTakesAllBack) {
  type(open("one.v"));
  trigger("mToolsDefinitions");
  main->findChild<frmDefinitions*>()->findChild<QPushButton*>(q("cmdAdd"))->click();
  boxes.answer(Answer::cancel);
  EXPECT_FALSE(main->endFromOutside());
  boxes.answer(Answer::cancel);
  trigger("mnuFileClose");
  EXPECT_EQ(main->documents().size(), 1) << "the text is asked about as ever";
  boxes.answer(Answer::no);
  EXPECT_TRUE(main->endFromOutside());
  EXPECT_EQ(journals(), 1);
}

// The window that goes last does so without a question of its own; a signal comes while the other one asks.
TEST_F(SessionEndRun, ASignalDuringTheQuestionOfOneOfTwoWindowsKeepsTheJournal) {
  frmDocument* first = open("one.v");
  type(first);
  main->newWindow();
  main->activate(first);   // the active one closes last
  boxes.answer(Answer::cancel, [&] {
    const ModalGuard up;
    end.endWanted();
    EXPECT_TRUE(main->documents().isEmpty());
  });
  main->agreeToEnd();
  EXPECT_EQ(journals(), 1);
}

TEST_F(SessionEndRun, TwoWindowsOnOneTextAskOnce) {
  type(open("one.v"));
  main->newWindow();
  boxes.answer(Answer::cancel);
  EXPECT_FALSE(main->agreeToEnd());
  boxes.answer(Answer::no);
  main->close();
  EXPECT_EQ(boxes.boxes.size(), 2u);
  EXPECT_TRUE(main->documents().isEmpty());
}

}   // namespace
