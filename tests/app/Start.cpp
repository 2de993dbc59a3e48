// The start of the program: arguments, command lines, the search for a window, languages and settings at start and end.
#include <QDir>
#include <QRegularExpression>
#include <QUrl>
#include <atomic>

#include "app/boxes/HandbookWindow.h"
#include "app/start/Arguments.h"
#include "app/start/Instance.h"
#include "app/start/mGlobals.h"
#include "base/Program.h"
#include "control/code/LanguageTable.h"
#include "script/mCMXParser.h"
#include "tests/app/FrameFixture.h"

namespace {

class StartArguments : public testing::Test, protected OwnFolder {
 protected:
  std::string files(const QStringList& arguments) {
    QStringList all;
    for (const FilePlace& file : parseArguments(arguments, dir.path()).files) {
      QString text = file.path;
      for (const qint64 place : {file.line, file.column})
        if (place > 0) text += u':' + QString::number(place);
      all << text.replace(dir.path() + u'/', QString());
    }
    return all.join(u'|').toStdString();
  }
};

TEST_F(StartArguments, FilesAndPlaces) {
  for (const char* name : {"a.v", "b:7", "c:1:2", "+5"}) write(name);
  struct Case {
    QStringList arguments;
    const char* files;
  };
  for (const Case& c : {
           Case{{q("a.v"), q("new.v")}, "a.v|new.v"}, Case{{q("a.v:12")}, "a.v:12"}, Case{{q("a.v:12:3")}, "a.v:12:3"},
           Case{{q("a.v:12:3:")}, "a.v:12:3"},   // as compilers write it
           Case{{q("b:7")}, "b:7"},              // the real name wins
           Case{{q("b:7:9")}, "b:7:9"},          // line 9 of b:7
           Case{{q("c:1:2"), q("c:1:2:3")}, "c:1:2|c:1:2:3"}, Case{{q("new.v:0")}, "new.v"},
           Case{{q("a.v:x"), q(":5"), q("a:99999999999999999999")}, "a.v:x|:5|a:99999999999999999999"},
           Case{{q("+30"), q("a.v"), q("new.v")}, "a.v:30|new.v"}, Case{{q("+30:4"), q("a.v")}, "a.v:30:4"},
           Case{{q("a.v"), q("+30")}, "a.v:30"}, Case{{q("+5")}, "+5"},   // there is a file of that name
           Case{{q("--"), q("--help"), q("+9"), q("-")}, "--help|+9|-"}, Case{{QString(), q("a.v")}, "a.v"},
           Case{{q("a\"b.v"), q(" c.v "), q("d.v:3\n")}, "a\"b.v| c.v |d.v:3\n"},   // the shell has taken them apart already
       })
    EXPECT_EQ(files(c.arguments), c.files) << c.arguments.join(u' ').toStdString();
  EXPECT_EQ(parseArguments({q("/x/y.v:3")}, dir.path()).files.value(0), (FilePlace{q("/x/y.v"), 3, 0}));
  // Which of "b:7:9" is the line is told by the disk.
  EXPECT_EQ(parseArguments({q("b:7:9")}, dir.path()).files.value(0).line, 9);
}

class StartFrame : public FrameFixture {};

TEST_F(StartFrame, CommandLinesOpenOneFileEach) {
  write("a b.v", "1\n2\n3\n");
  struct Case {
    QString text;
    bool opens;
    qint64 line;
  };
  for (const Case& c : {Case{QString(), false, 0}, Case{q("   "), false, 0}, Case{q("\"\""), false, 0},
                        Case{q("  \"") + path("a b.v") + q("\" "), true, 0}, Case{path("a\" b.v"), true, 0},
                        Case{path("a b.v") + q(":3"), true, 2}}) {
    const frmDocument* document = OpenCommandLine(*main, c.text);
    EXPECT_EQ(document != nullptr, c.opens) << c.text.toStdString();
    EXPECT_EQ(document ? document->CurrentPosition().LineNo : 0, c.line);
  }
  EXPECT_EQ(main->DocCount, 1);
  boxes.answer(Answer::no);
  EXPECT_EQ(OpenCommandLine(*main, path("a b.v") + q(" ") + path("a b.v")), nullptr) << "two names are one name";
  EXPECT_EQ(frmRegistry::instance().mruFile.Count(), 1);
}

TEST_F(StartFrame, ReloadBindsEveryDocumentAnew) {
  frmDocument* a = open("a.v");
  frmDocument* b = open("b.vhd");
  frmDocument* untitled = main->LoadNewDoc();
  frmDocument* chosen = open("chosen.vhd");
  chosen->chooseLanguage(2);
  main->activate(b);
  manager.Languages()->Item(1)->Name = q("Renamed");
  manager.Languages()->Item(1)->Extension = q("vhd");
  manager.Languages()->Item(2)->Extension = q("v;");
  ReloadLanguages();
  EXPECT_FALSE(LanguageTable::contains(q("Verilog"))) << "the old name went with its language";
  EXPECT_TRUE(LanguageTable::contains(q("Renamed")));
  EXPECT_EQ(a->LanguageIndex(), 2);
  EXPECT_EQ(b->LanguageIndex(), 1);
  EXPECT_EQ(b->cmx->Language().toStdString(), "Renamed");
  EXPECT_EQ(chosen->cmx->Language(), manager.Languages()->Item(2)->Name) << "by the user, who meant it";
  EXPECT_EQ(untitled->LanguageIndex(), 2) << "an empty entry takes what has no extension";
  EXPECT_EQ(manager.ListLanguage(), 1) << "the active document's, not the last one's";
  EXPECT_FALSE(LanguageTable::contains(q("PASCAL"))) << "the control's own languages are gone";
}

// A dialog that is up in the first copy: the sender is told, nothing is opened.
TEST_F(StartFrame, BusyWhileADialogIsUp) {
  const QString file = write("a.v");
  Instance first(*main);
  ASSERT_EQ(first.CheckPrevInst({}, false, false), Instance::Role::first);
  EXPECT_EQ(main->windowTitle().toStdString(), kApplicationTitle);
  const auto hand = [&] {
    HandOffAnswer answer = HandOffAnswer::gone;
    std::unique_ptr<QThread> sender(QThread::create([&] {
      qsizetype next = 0;
      answer = Instance::HandOffCommandLine(first.socketPath(), {HandOff{file, {}, true, false, false}}, &next);
    }));
    sender->start();
    while (!sender->isFinished()) FrameFixture::wait(2);
    return answer;
  };
  {
    const ModalGuard dialog;
    EXPECT_EQ(hand(), HandOffAnswer::busy);
    EXPECT_EQ(main->DocCount, 0);
  }
  EXPECT_EQ(hand(), HandOffAnswer::acted);
  ASSERT_EQ(main->DocCount, 1);
  EXPECT_TRUE(main->activeDocument()->cmx->ReadOnly());
  // Who waits does so for the text, not for one of its windows.
  QObject::connect(main.get(), &frmMain::documentClosed, [&](frmDocument* document) { first.documentClosed(document); });
  std::atomic<bool> acted = false, closed = false;
  std::unique_ptr<QThread> sender(QThread::create([&] {
    MsgSender one;
    acted = one.connectTo(first.socketPath()) && one.send({file, {}, true, true, false}) == HandOffAnswer::acted;
    closed = acted && one.waitForClosed();
  }));
  sender->start();
  ASSERT_TRUE(spinUntil([&] { return acted || sender->isFinished(); }));
  main->newWindow();
  trigger("mnuFileClose");
  EXPECT_EQ(main->DocCount, 1);
  FrameFixture::wait(100);
  EXPECT_FALSE(closed);
  trigger("mnuFileClose");
  EXPECT_TRUE(spinUntil([&] { return sender->isFinished(); }));
  EXPECT_TRUE(closed);
}

// Between two statements the text is half done: what is handed over is opened when the run has ended.
TEST_F(StartFrame, AHandOffWaitsForTheEndOfARun) {
  const QString file = write("a.v");
  frmDocument* document = open("b.v");
  Instance first(*main);
  ASSERT_EQ(first.CheckPrevInst({}, false, false), Instance::Role::first);
  std::atomic<bool> acted = false;
  std::unique_ptr<QThread> sender(QThread::create([&] {
    MsgSender one;
    acted = one.connectTo(first.socketPath()) && one.send({file, {}, false, false, false}) == HandOffAnswer::acted;
  }));
  sender->start();
  QTimer::singleShot(500, main.get(), &mCMXParser::Stop);
  EXPECT_EQ(mCMXParser::Run(0, 0, q("cmdINSERTCHAR x\n").repeated(1'000'000)).ending, mCMXParser::Ending::stopped);
  EXPECT_EQ(main->documents(), QList{document});
  EXPECT_TRUE(spinUntil([&] { return sender->isFinished(); }));
  EXPECT_TRUE(acted);
  EXPECT_EQ(main->DocCount, 2);
  document->cmx->setModified(false);
}

TEST_F(StartFrame, LanguageHelpOpens) {
  manager.Languages()->Item(1)->HelpFile = write("help.html", "<p>");
  open("a.v", "posedge\n");
  trigger("mHelpContents");
  EXPECT_EQ(QUrl(boxes.urls.last()).toLocalFile(), path("help.html"));
  trigger("mHelpWord");
  EXPECT_TRUE(boxes.urls.last().endsWith(q("help.html#posedge"))) << boxes.urls.last().toStdString();
  // H3: what a definition from elsewhere calls its help may be started by the desktop.
  manager.Languages()->Item(1)->isForeign = true;
  trigger("mHelpContents");
  EXPECT_EQ(boxes.urls.size(), 3) << "a page is only shown";
  for (const char* program : {"/bin/program", "file:///bin/program#a.html", "file:///bin/program?a.html"}) {
    manager.Languages()->Item(1)->HelpFile = q(program);
    boxes.answer(Answer::no);
    trigger("mHelpContents");
    EXPECT_TRUE(boxes.last().text.contains(q(program)));
  }
  EXPECT_EQ(boxes.urls.size(), 3);
}

TEST(StartHandbook, LinksLeadSomewhere) {
  setApplicationFolder(QString::fromLocal8Bit(qgetenv("ZELKOR_SOURCE")));
  QWidget parent;
  HandbookWindow window(&parent);
  ASSERT_TRUE(window.showPage(q("handbook.md")));
  EXPECT_FALSE(window.showPage(q("no such page.md")));
  const QDir docs(applicationFolder() + q("/docs"));
  int links = 0;
  static const QRegularExpression link(q("\\]\\(([^)\\s]+)\\)"));
  for (const QString& page : docs.entryList({q("*.md")})) {
    QFile file(docs.filePath(page));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    auto found = link.globalMatch(QString::fromUtf8(file.readAll()));
    while (found.hasNext()) {
      const QString target = found.next().captured(1);
      const QString name = target.section(u'#', 0, 0);
      if (target.contains(q("://")) || (!name.isEmpty() && !name.endsWith(q(".md")))) continue;
      ++links;
      EXPECT_TRUE(window.showPage(name.isEmpty() ? page : name, target.section(u'#', 1)))
          << page.toStdString() << ": " << target.toStdString();
    }
  }
  EXPECT_GT(links, 5);
  setApplicationFolder({});
}

}   // namespace
