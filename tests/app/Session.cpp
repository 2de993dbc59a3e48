// The session: its file, and what comes back at the next start.
#include "app/session/Session.h"

#include <atomic>
#include <random>

#include <QComboBox>
#include <QMenu>

#include "app/boxes/frmRecovered.h"
#include "app/compare/CompareFrame.h"
#include "app/find/FindFrame.h"
#include "app/find/ResultList.h"
#include "app/find/frmFindInFiles.h"
#include "app/folder/FolderParts.h"
#include "app/folder/WorkFolder.h"
#include "app/frame/DocumentTabs.h"
#include "app/frame/LateDocument.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "bridge/QStringBytes.h"
#include "control/find/UsersSearch.h"
#include "control/folds/PaneFolds.h"
#include "control/view/PaneGrid.h"
#include "document/Recovery.h"
#include "document/frmLog.h"
#include "tests/app/FrameFixture.h"
#include "tests/support/Cost.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/TempFolder.h"

namespace {

SessionState randomState(std::mt19937& random) {
  const auto below = [&](int end) { return int(random() % unsigned(end)); };
  const auto name = [&] {
    std::string text = "/";
    for (int i = below(12); i >= 0; --i) text += "a/ %\n\r\t\x01\x7f\xff\xc3\xa9\"["[std::size_t(below(14))];
    return text;
  };
  SessionState state;
  for (int i = below(6); i > 0; --i) {
    KeptDocument one;
    if (below(4)) one.path = name();
    one.title = name();
    one.modified = below(2);
    if (one.modified) one.journal = "x" + std::to_string(below(1000)) + ".journal";
    if (below(2)) one.language = below(2) ? name() : std::string();
    if (below(3) == 0) one.encoding = "UTF-16LE";
    one.bom = below(2);
    for (std::int64_t& number : one.selection) number = below(1 << 30);
    one.top = below(1000);
    one.zoom = 30 + below(400);
    for (int number = below(5); number > 0; --number) one.folds.push_back(below(99));
    one.wrapSwitched = below(2);
    one.place = {below(100) - 50, below(9), below(900), below(700)};
    one.text = below(3);
    for (int mark = below(4); mark > 0; --mark) one.bookmarks.push_back(below(99));
    state.documents.push_back(std::move(one));
  }
  state.active = below(int(state.documents.size()) + 1) - 1;
  state.folder = below(2) ? name() : std::string();
  state.find = name();
  state.regex = below(2);
  state.docks.push_back({"logDock", bool(below(2)), bool(below(2)), below(9), {1, 2, 3, 4}});
  return state;
}

}   // namespace

TEST(SessionFile, OnlyAWholeFileIsTaken) {
  std::mt19937 random(7);
  SessionState back;
  bool isPartial = false;
  for (int round = 0; round < 300; ++round) {
    const SessionState state = randomState(random);
    const std::string bytes = SessionFile::format(state);
    ASSERT_EQ(SessionFile::parse(bytes, &back, &isPartial), SessionFile::Parsed::good) << bytes;
    ASSERT_TRUE(back == state) << bytes;
    const std::size_t at = random() % bytes.size();
    ASSERT_EQ(SessionFile::parse(bytes.substr(0, at), &back, &isPartial), SessionFile::Parsed::damaged) << at;
    std::string flipped = bytes;
    flipped[at] = char(random());
    SessionFile::parse(flipped, &back, &isPartial);   // whatever it gives is a state
    ASSERT_LT(back.active, std::int64_t(back.documents.size()));
  }
  using Parsed = SessionFile::Parsed;
  for (const auto& [bytes, expected] : {std::pair<std::string, Parsed>{"", Parsed::damaged},
                                        {std::string(5000, '\0'), Parsed::damaged},
                                        {"session 2\nanything", Parsed::later},
                                        {"session 1\nfuture value\ndocument\npath /a\nend 1\n", Parsed::good},
                                        {"session 1\ndocument\npath /a\nend 2\n", Parsed::damaged}})
    EXPECT_EQ(SessionFile::parse(bytes, &back, &isPartial), expected) << bytes.substr(0, 30);
  // What is no document is left out; the active one stays the same.
  ASSERT_EQ(SessionFile::parse("session 1\nactive 2\ndocument\npath not/whole\ndocument\npath /a%00b\ndocument\npath /c\n"
                               "journal ../x\nend 3\n",
                               &back, &isPartial),
            Parsed::good);
  ASSERT_EQ(back.documents.size(), 1u);
  EXPECT_EQ(back.documents[0].path + back.documents[0].journal, "/c");
  EXPECT_EQ(back.active, 0);
  SessionState many;
  many.documents.resize(SessionFile::kMostDocuments + 1);
  for (KeptDocument& one : many.documents) one.path = "/a";
  EXPECT_EQ(SessionFile::parse(SessionFile::format(many), &back, &isPartial), Parsed::good);
  EXPECT_TRUE(isPartial);
  EXPECT_EQ(back.documents.size(), SessionFile::kMostDocuments);
  for (const char* name : {"a", "..", "a/b.c", "%", "Ä ö", " "})
    EXPECT_EQ(SessionFile::nameOf(SessionFile::fileNameOf(name)).value_or("(none)"), name);
}

// K1: the disk fails from each call on, as when the program is killed there.
TEST(SessionFile, HoldsTheOldOrTheNewStateAtAnyMoment) {
  using testing_files::FaultyFileSystem;
  const testing_files::TempFolder folder(testing_files::TempFolder::Where::memory);
  const std::string path = folder.path() + "/session";
  std::mt19937 random(3);
  int calls = 0;
  bool whole = false;
  for (int n = 1; !whole; ++n) {
    SessionState before = randomState(random), now = randomState(random);
    before.find = "before", now.find = "now";
    for (const char* ending : {"", ".old", ".new"}) ::unlink((path + ending).c_str());
    ASSERT_EQ(SessionFile(path).write(before, 1), "");
    if (n % 2 == 0) {
      ASSERT_EQ(SessionFile(path).write(before, 1), "");   // with an older generation
    }
    {
      FaultyFileSystem faulty;
      const testing_files::UseFileSystem use(faulty);
      faulty.failCall(n, EIO, true);
      whole = SessionFile(path).write(now, 1).empty() && int(faulty.log().size()) < n;
      calls = n;
    }
    const SessionFile::Read read = SessionFile(path).read();
    EXPECT_EQ(read.trouble, "") << n;
    EXPECT_TRUE(read.state == now || (!whole && read.state == before)) << n;
  }
  EXPECT_GT(calls, 10);
  // A damaged one is kept aside, and its older generation stays.
  const auto put = [&](const std::string& bytes) { ASSERT_TRUE(text::saveBytes(path, bytes).ok()); };
  SessionFile file(path);
  put(std::string(100, '\0'));
  const SessionFile::Read older = file.read();
  EXPECT_FALSE(older.trouble.empty());
  EXPECT_FALSE(older.state.find.empty());
  EXPECT_EQ(file.write({}, 1), "");
  EXPECT_TRUE(text::fileExists(path + ".damaged"));
  EXPECT_EQ(SessionFile(path + ".old").read().state.find, older.state.find);
  put("session 9\n");
  EXPECT_FALSE(SessionFile(path).read().mayWrite);
}

class SessionFrame : public FrameFixture {
 protected:
  SessionFrame() { qputenv("XDG_STATE_HOME", path("state").toUtf8()); }
  ~SessionFrame() override {
    main.reset();   // the recovery outlives the documents
    before.isNull() ? qunsetenv("XDG_STATE_HOME") : qputenv("XDG_STATE_HOME", before);
  }
  Session& session() { return Session::of(*main); }
  DocumentTabs& tabs() { return main->tabs(); }
  void begin() {
    main->resize(1000, 700);
    session().beginLast();
    main->show();
    session().show();
    session().restoreTexts();
    wait(100);
  }
  void end() {
    EXPECT_TRUE(main->close());
    main.reset();
  }
  void startAgain() {
    if (main) end();
    main = std::make_unique<frmMain>();
    frmRegistry::instance().GetProfile(*main, q("mnuFileMRU"));
    usersSearch() = {};
    begin();
  }
  static SessionState kept(const QString& name = {}) {
    const QString folder = userStateFolder();
    return SessionFile(fromQString(name.isEmpty() ? folder + q("/session") : folder + q("/sessions/") + name)).read().state;
  }
  std::string shown() {
    QStringList all;
    for (const QObject* entry : tabs().entries()) {
      const auto names = DocumentTabs::namesOf(entry);
      all << (qobject_cast<const LateDocument*>(entry) ? u'(' + names.caption + u')' : names.caption);
    }
    return all.join(u' ').toStdString();
  }

  QByteArray before = qgetenv("XDG_STATE_HOME");
  RecoverySession recovery{path("recovery")};
};

// K2
TEST_F(SessionFrame, ComesBackAsItWasLeft) {
  begin();
  session().setKeepsUnsaved(true);
  QByteArray lines;
  for (int i = 0; i < 200; ++i) lines += "line " + QByteArray::number(i) + "\n";
  open("a.v", lines)->cmx->SetSel({150, 2, 151, 4, false});
  frmDocument* b = open("b.txt", "na\xefve\n" + lines);
  ASSERT_TRUE(b->ReopenAs({text::Encoding::iso8859_15, false}));
  b->chooseLanguage(2);
  b->cmx->splitPanes(0.5, 0);
  b->cmx->setZoom(150);
  b->cmx->editor().host().folds()->setFolds(std::vector<text::Fold>{{text::LineNo(2), text::LineNo(9)}});
  b->cmx->editor().host().toggleWordWrap();
  main->newWindow();
  main->activeDocument()->cmx->SetSel({9, 0, 9, 0, false});
  open("c.v", "module c;\n")->cmx->InsertText(q("not saved\n"), {0, 0});
  main->LoadNewDoc()->cmx->InsertText(q("nor named\nsecond\n"), {0, 0});
  main->activeDocument()->cmx->setBookmark(1, true);
  main->LoadNewDoc();
  main->folders().open(dir.path());
  usersSearch().findText = q("needle");
  tabs().moveTab(0, 1);
  main->activate(b);
  main->tile(Qt::Vertical);
  wait(0);
  end();
  const SessionState first = kept();
  ASSERT_EQ(first.documents.size(), 6u);

  startAgain();
  ASSERT_TRUE(spinUntil([&] { return shown().find('(') == std::string::npos; })) << shown();   // all windows are in view
  wait(0);
  EXPECT_EQ(shown(), "b.txt a.v b.txt c.v* Untitled 5* Untitled 6");
  frmDocument* back = main->activeDocument();
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->CurrentFileTitle(), q("b.txt"));
  EXPECT_EQ(back->views(), 2);
  EXPECT_EQ(back->cmx->GetLine(0), q("naïve"));
  EXPECT_FALSE(back->cmx->CanUndo());
  EXPECT_EQ(back->cmx->Language(), q("VHDL"));
  EXPECT_EQ(back->cmx->Zoom(), 150);
  EXPECT_EQ(back->cmx->editor().host().folds()->hiddenBehind(text::LineNo(2)), 7);
  EXPECT_TRUE(back->cmx->wraps());
  EXPECT_GT(back->cmx->findChild<PaneGrid*>()->place(Qt::Horizontal), 0.3);
  EXPECT_EQ(tabs().documentAt(1)->cmx->GetSel(false), (CmRange{150, 2, 151, 4, false}));
  EXPECT_EQ(tabs().documentAt(2)->CurrentPosition().LineNo, 9);
  EXPECT_EQ(tabs().documentAt(3)->cmx->GetLine(0), q("not saved"));
  EXPECT_EQ(read(path("c.v")), "module c;\n");
  EXPECT_EQ(tabs().documentAt(4)->cmx->GetLine(0), q("nor named"));
  EXPECT_TRUE(tabs().documentAt(4)->cmx->hasBookmark(1));
  EXPECT_EQ(main->folders().work().root(), dir.path());
  EXPECT_EQ(usersSearch().findText, q("needle"));
  end();
  SessionState second = kept();
  for (std::size_t i = 0; i < second.documents.size(); ++i) second.documents[i].journal = first.documents[i].journal;
  EXPECT_EQ(SessionFile::format(second), SessionFile::format(first));
  EXPECT_TRUE(boxes.boxes.empty()) << "it was asked";
  // Each text has one journal: the older ones went.
  EXPECT_EQ(QDir(path("recovery")).entryList({q("*.journal")}).size(), 2);
}

// K3
TEST_F(SessionFrame, ADocumentIsLookedAtWhenItIsShown) {
  begin();
  for (const char* name : {"a.v", "b.v", "gone.v", "d.v"}) open(name, QByteArray("needle in ") + name + "\n\n");
  main->activeDocument()->cmx->SetSel({1, 0, 1, 0, false});
  main->activate(tabs().documentAt(0));
  end();
  const std::string first = SessionFile::format(kept());
  QFile::remove(path("gone.v"));

  testing_files::FaultyFileSystem files;
  const testing_files::UseFileSystem use(files);
  const auto asked = [&](const char* name) {
    return std::ranges::any_of(files.log(), [&](const auto& call) { return call.path.ends_with(std::string("/") + name); });
  };
  startAgain();
  EXPECT_EQ(shown(), "a.v (b.v) (gone.v) (d.v)");
  for (const char* name : {"b.v", "gone.v", "d.v"}) EXPECT_FALSE(asked(name)) << name;
  EXPECT_TRUE(asked("a.v"));
  main->mnuFileSaveAll_Click();
  EXPECT_FALSE(asked("b.v"));
  end();   // at once, and nothing is lost
  EXPECT_EQ(SessionFile::format(kept()), first);

  startAgain();
  // Finding in the open documents reads it from the disk, and does not open it.
  trigger("mEditFindInFiles");
  frmFindInFiles& finder = FindFrame::of(*main).window();
  finder.findChild<QComboBox*>(q("filesWhere"))->setCurrentIndex(1);
  finder.findChild<QComboBox*>(q("filesFindText"))->setEditText(q("needle"));
  finder.findChild<QPushButton*>(q("filesFindAll"))->click();
  ASSERT_TRUE(spinUntil([&] { return !FindFrame::of(*main).running(); }));
  const QString found = FindFrame::of(*main).list()->document()->cmx->Text();
  EXPECT_TRUE(found.contains(q("b.v:1:1: needle in b.v")) && found.contains(q("d.v:1:1"))) << found.toStdString();
  main->mnuFileClose_Click();
  EXPECT_EQ(shown(), "a.v (b.v) (gone.v) (d.v)");
  main->openAt(path("d.v"), 0, 0);   // as when it is handed over: its tab, with its caret
  EXPECT_EQ(shown(), "a.v (b.v) (gone.v) d.v");
  EXPECT_EQ(main->activeDocument()->CurrentPosition().LineNo, 1);
  main->nextWindow(-1);   // what is gone is said in the log, and does not stand in the way
  EXPECT_EQ(main->activeDocument()->CurrentFileTitle(), q("b.v"));
  EXPECT_EQ(shown(), "a.v b.v (gone.v) d.v");
  wait(200);
  EXPECT_NE(main->log()->cmx->Text().indexOf(q("gone.v is not there any more")), -1);
  EXPECT_TRUE(boxes.boxes.empty());
  tabs().documentAt(3)->parentWidget()->close();
  tabs().documentAt(1)->parentWidget()->close();
  tabs().documentAt(0)->parentWidget()->close();   // nothing is left that could be shown
  wait(20);
  EXPECT_EQ(shown(), "(gone.v)");
  write("gone.v");
  main->nextWindow(1);
  EXPECT_EQ(shown(), "gone.v");
  main->mnuFileCloseAll_Click();
  EXPECT_EQ(shown(), "");
  startAgain();
  EXPECT_EQ(shown(), "");
}

TEST_F(SessionFrame, ADiskThatHangsDelaysNobody) {
  begin();
  open("hangs.v");
  end();
  testing_files::FaultyFileSystem files;
  const testing_files::UseFileSystem use(files);
  std::atomic<bool> hangs{true};
  files.before([&](const auto& call) {
    while (hangs && call.path.ends_with("/hangs.v")) QThread::msleep(1);
  });
  QTimer cancel;
  QObject::connect(&cancel, &QTimer::timeout, &cancel, [] { LongWork::cancelRunning(); });
  cancel.start(50);
  startAgain();
  EXPECT_EQ(shown(), "(hangs.v)");
  main->LoadNewDoc();   // and it can be worked in
  EXPECT_EQ(shown(), "(hangs.v) Untitled 1");
  hangs = false;
  wait(50);
  cancel.stop();
  main->nextWindow(1);
  EXPECT_EQ(shown(), "hangs.v Untitled 1");
}

// All of them have the same title: the slowest case for captions.
TEST_F(SessionFrame, TwoThousandTabsAreRenamedAndClosedAtOnce) {
  SessionState many;
  for (std::size_t i = 0; i < SessionFile::kMostDocuments; ++i)
    many.documents.emplace_back().path = fromQString(path("dir/") + QString::number(i) + q("/a.v"));
  ASSERT_EQ(SessionFile(fromQString(userStateFolder() + q("/session"))).write(many, 1), "");
  main->resize(1000, 700);
  session().beginLast();
  main->show();
  ASSERT_EQ(tabs().count(), 2000);
  const double before = spentMs();
  emit main->fileRenamed(path("dir"), path("other"));
  const double renamed = spentMs();
  EXPECT_EQ(DocumentTabs::namesOf(tabs().entryAt(1999)).path, path("other/1999/a.v"));
  EXPECT_EQ(tabs().tabText(7), q("7/a.v"));
  main->mnuFileCloseAll_Click();
  const double closed = spentMs();
  EXPECT_EQ(tabs().count(), 0);
  EXPECT_TRUE(tabs().isVisible());
  EXPECT_LT(closed - before, 1500) << renamed - before << ' ' << closed - renamed;
}

TEST_F(SessionFrame, AWindowThatIsCoveredWaits) {
  SessionState state;
  for (const char* name : {"top.v", "covered.v", "wide.v", "under.v"}) {
    KeptDocument& one = state.documents.emplace_back();
    one.path = fromQString(write(name));
    one.level = 4 - std::int64_t(state.documents.size());
    one.place = {0, 0, 500, 300};
  }
  state.documents[2].place[2] = 600;
  state.active = 0;
  ASSERT_EQ(SessionFile(fromQString(userStateFolder() + q("/session"))).write(state, 1), "");
  begin();
  EXPECT_EQ(shown(), "top.v (covered.v) wide.v (under.v)");
  EXPECT_EQ(main->activeDocument()->CurrentFileTitle(), q("top.v"));
}

// J4: a start without the session leaves its journals alone. A session whose journal is not there says so.
TEST_F(SessionFrame, TextsComeBackFromTheirOwnJournals) {
  begin();
  session().setKeepsUnsaved(true);
  open("a.v")->cmx->InsertText(q("of the last session\n"), {0, 0});
  open("b.v");
  end();
  const QStringList journals = QDir(path("recovery")).entryList({q("*.journal")});
  ASSERT_EQ(journals.size(), 1);
  main = std::make_unique<frmMain>();   // a start with a file: no session
  main->openAt(write("other.v"), 0, 0);
  session().restoreTexts();
  wait(300);
  EXPECT_EQ(shown(), "other.v");
  EXPECT_EQ(main->findChild<frmRecovered*>(), nullptr);
  end();
  EXPECT_EQ(QDir(path("recovery")).entryList({q("*.journal")}), journals);
  EXPECT_EQ(kept().documents.size(), 2u);

  // Another copy of the program reads it just now, and a second one has the same time.
  const QString own = path("recovery/") + journals[0], second = path("recovery/second.journal");
  ASSERT_TRUE(QFile::copy(own, second));
  for (const QString& name : {own, second}) {
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.setFileTime(QDateTime({2001, 2, 3}, {4, 5}), QFile::FileModificationTime));
  }
  std::optional<text::LeftText> reading = text::LeftText::claim(fromQString(path("recovery")), fromQString(journals[0]));
  ASSERT_TRUE(reading);
  startAgain();
  wait(200);
  EXPECT_EQ(shown(), "(a.v*) b.v");
  boxes.answer(Answer::ok);
  session().open(q("another"));   // the texts would be left behind
  EXPECT_EQ(boxes.boxes.size(), 1);
  EXPECT_EQ(shown(), "(a.v*) b.v");
  reading.reset();
  ASSERT_TRUE(spinUntil([&] { return shown() == "a.v* b.v"; })) << shown();
  EXPECT_EQ(tabs().documentAt(0)->cmx->GetLine(0), q("of the last session"));
  EXPECT_TRUE(spinUntil([&] { return main->activeDocument() == tabs().documentAt(1); })) << "as it was";
  EXPECT_EQ(main->findChild<frmRecovered*>(), nullptr);

  end();
  for (const QString& name : QDir(path("recovery")).entryList({q("*.journal")})) QFile::remove(path("recovery/") + name);
  startAgain();
  ASSERT_TRUE(spinUntil([&] { return main->log()->cmx->Text().contains(q("No unsaved text was found of: ") + path("a.v")); }));
  EXPECT_EQ(shown(), "(a.v) b.v");
  EXPECT_EQ(read(path("a.v")), "text\n");
}

TEST_F(SessionFrame, NamedOnesAreKeptApart) {
  begin();
  session().setKeepsUnsaved(false);
  open("a.v");
  open("b.v");
  boxes.answerInput(q("A/b.c"));
  session().askForName();
  EXPECT_EQ(session().name(), q("A/b.c"));
  EXPECT_EQ(Session::names(), QStringList{q("A/b.c")});
  open("c.v")->cmx->InsertText(q("x"), {0, 0});
  wait(0);
  boxes.answer(Answer::no);
  session().close();
  EXPECT_EQ(shown(), "");
  EXPECT_EQ(read(path("c.v")), "text\n");
  open("d.v");
  session().setKeepsUnsaved(true);
  frmDocument* untitled = main->LoadNewDoc();
  untitled->cmx->InsertText(q("mine"), {0, 0});
  wait(0);
  session().open(q("A/b.c"));
  wait(100);
  EXPECT_EQ(shown(), "(a.v) (b.v) c.v");
  boxes.boxes.clear();
  boxes.answer(Answer::ok);
  session().offerTexts();   // what waits for its session is not offered
  ASSERT_EQ(boxes.boxes.size(), 1u);
  EXPECT_EQ(boxes.boxes[0].text, q("There is nothing to recover."));
  boxes.boxes.clear();
  startAgain();   // goes on with it
  EXPECT_EQ(session().name(), q("A/b.c"));
  EXPECT_EQ(shown(), "(a.v) (b.v) c.v");
  QMenu offered;
  CompareFrame::of(*main).fillDocuments(offered);   // also what no tab has shown yet
  ASSERT_EQ(offered.actions().size(), 2);
  EXPECT_EQ(offered.actions()[1]->text(), path("b.v"));
  // Another copy of the program takes neither.
  const SessionState mine = kept(toQString(SessionFile::fileNameOf("A/b.c")));
  auto other = std::make_unique<frmMain>();
  Session::of(*other).beginLast();
  EXPECT_FALSE(Session::of(*other).isInForce());
  Session::of(*other).begin(q("A/b.c"));
  EXPECT_FALSE(Session::of(*other).isInForce());
  other.reset();
  setFrame(main.get());
  EXPECT_TRUE(kept(toQString(SessionFile::fileNameOf("A/b.c"))) == mine);
  // Its unsaved texts stay with it.
  main->activeDocument()->cmx->InsertText(q("kept"), {0, 0});
  session().close();   // what was open without a name comes back
  ASSERT_TRUE(spinUntil([&] { return main->documents().size() == 1; })) << shown();
  EXPECT_EQ(main->activeDocument()->cmx->GetLine(0), q("mine"));
  EXPECT_EQ(tabs().count(), 2);
  session().open(q("A/b.c"));
  ASSERT_TRUE(spinUntil([&] { return shown() == "(a.v) (b.v) c.v*"; })) << shown();
  EXPECT_EQ(main->activeDocument()->cmx->GetLine(0), q("kepttext"));
  EXPECT_TRUE(boxes.boxes.empty());
  EXPECT_EQ(main->findChild<frmRecovered*>(), nullptr);
  main->activeDocument()->cmx->setModified(false);
  session().setComesBack(false);
  session().close();
  EXPECT_FALSE(session().isInForce());
  const QString file = userStateFolder() + q("/sessions/") + toQString(SessionFile::fileNameOf("A/b.c"));
  ASSERT_TRUE(QFile::remove(file + q(".old")));
  ASSERT_TRUE(QFile::rename(file, file + q(".old")));   // killed while it was written
  EXPECT_EQ(Session::names(), QStringList{q("A/b.c")});
  boxes.answer(Answer::yes);
  session().askToRemove(q("A/b.c"));
  EXPECT_TRUE(Session::names().isEmpty());
  open("a.v");
  startAgain();
  EXPECT_EQ(shown(), "");
  session().setComesBack(true);
}

// S12, K2
TEST_F(SessionFrame, AnOldTextDoesNotCoverANewerFile) {
  begin();
  open("a.v", "base\n");
  end();
  main = std::make_unique<frmMain>();   // one that ends without warning
  main->openAt(path("a.v"), 0, 0);
  main->activeDocument()->cmx->InsertText(q("not saved\n"), {0, 0});
  recovery.flush();
  main.reset();
  write("a.v", "newer\n");
  startAgain();
  ASSERT_TRUE(spinUntil([&] { return shown() == "a.v*"; })) << shown();
  boxes.answer(Answer::no);   // the file was changed
  main->mnuFileSave_Click();
  EXPECT_EQ(read(path("a.v")), "newer\n");
  EXPECT_EQ(boxes.boxes.size(), 1);
  main->activeDocument()->cmx->setModified(false);
}

// K1, K2: killed at every moment that the journals and the file of a session can be left in.
TEST_F(SessionFrame, EachTextComesBackOnceAndAsItWasLast) {
  const auto journals = [&] { return QDir(path("recovery")).entryList({q("*.journal")}); };
  const QString file = userStateFolder() + q("/session");
  const auto put = [&](const QByteArray& bytes) { ASSERT_TRUE(text::saveBytes(fromQString(file), bytes.toStdString()).ok()); };
  const auto kill = [&] {
    recovery.flush();
    wait(50);
    setFrame(nullptr);
    main.reset();
  };
  const auto said = [&](const char* text) {
    return main->findChild<QDockWidget*>(q("logDock")) && main->log()->cmx->Text().contains(q(text));
  };
  begin();
  open("a.v", "file\n")->cmx->InsertText(q("named\n"), {0, 0});
  main->newWindow();
  main->LoadNewDoc()->cmx->InsertText(q("untitled\n"), {0, 0});
  main->newWindow();
  ASSERT_TRUE(spinUntil([&] { return kept().documents.size() == 4 && !kept().documents[3].journal.empty(); }));
  kill();
  const QByteArray first = read(file);
  for (int round = 0; round < 3; ++round) {   // the session goes on naming the first journals
    put(first);
    startAgain();
    ASSERT_TRUE(spinUntil([&] { return shown() == "a.v* a.v* Untitled 3* Untitled 3*"; })) << round << shown();
    EXPECT_EQ(tabs().documentAt(0)->views(), 2);
    EXPECT_EQ(tabs().documentAt(2)->views(), 2);
    EXPECT_EQ(tabs().documentAt(0)->cmx->LineCount(), 3 + round);
    EXPECT_EQ(tabs().documentAt(2)->cmx->LineCount(), 2 + round);
    tabs().documentAt(0)->cmx->InsertText(q("more\n"), {0, 0});
    tabs().documentAt(2)->cmx->InsertText(q("more\n"), {0, 0});
    wait(100);
    EXPECT_EQ(main->findChild<frmRecovered*>(), nullptr) << round;
    EXPECT_FALSE(said("No unsaved text"));
    if (round == 2) EXPECT_TRUE(spinUntil([&] { return journals().size() == 2; })) << journals().join(u' ').toStdString();
    else kill();
  }
  // Saved, and killed before the journal was gone; the file of the session is damaged.
  const QByteArray text = tabs().documentAt(0)->cmx->Text().toUtf8();
  ASSERT_TRUE(
      spinUntil([&] { return kept().documents[0].journal != "" && journals().contains(toQString(kept().documents[0].journal)); }));
  kill();
  write("a.v", text);
  QFile::remove(file + q(".old"));
  ASSERT_TRUE(QFile::copy(file, file + q(".old")));
  put(QByteArray(100, '\0'));
  startAgain();
  ASSERT_TRUE(spinUntil([&] { return shown().find("Untitled 3* Untitled 3*") != std::string::npos; })) << shown();
  EXPECT_TRUE(shown().find("a.v*") == std::string::npos) << shown();
  EXPECT_TRUE(said("could not be read"));
  EXPECT_FALSE(said("No unsaved text"));
  EXPECT_TRUE(spinUntil([&] { return journals().size() == 1; })) << journals().join(u' ').toStdString();
  main->activate(tabs().documentAt(2));
  tabs().documentAt(2)->cmx->setModified(false);
}

// K2: the file of a session that is switched off names texts that it will not bring back.
TEST_F(SessionFrame, ASessionThatIsSwitchedOffHidesNoText) {
  begin();
  open("a.v")->cmx->InsertText(q("not saved\n"), {0, 0});
  ASSERT_TRUE(spinUntil([&] { return !kept().documents.empty() && !kept().documents[0].journal.empty(); }));
  session().setComesBack(false);
  recovery.flush();
  main.reset();
  startAgain();
  EXPECT_TRUE(spinUntil([&] { return main->findChild<frmRecovered*>() != nullptr; })) << "it is not offered";
  session().setComesBack(true);
}

TEST_F(SessionFrame, AnEncodingThatWasGivenUpIsNotKept) {
  begin();
  session().setKeepsUnsaved(false);
  open("a.v", "module a;\n")->cmx->setFileFormat({text::Encoding::utf16le, false});
  boxes.answer(Answer::no);
  startAgain();
  ASSERT_NE(main->activeDocument(), nullptr);
  EXPECT_EQ(main->activeDocument()->cmx->GetLine(0), q("module a;"));
}

// J7
TEST_F(SessionFrame, ATextWhoseFileWasRemovedOutlivesASignal) {
  begin();
  open("a.v", "only here\n");
  open("b.v");
  QFile::remove(path("a.v"));
  EXPECT_TRUE(main->endFromOutside(1000));
  EXPECT_TRUE(main->log()->cmx->Text().contains(path("a.v") + q(" is not there any more")));
  main.reset();
  startAgain();
  ASSERT_TRUE(spinUntil([&] { return shown() == "a.v* b.v"; })) << shown();
  EXPECT_EQ(tabs().documentAt(0)->cmx->GetLine(0), q("only here"));
  EXPECT_TRUE(boxes.boxes.empty()) << "it was asked";
}

TEST_F(SessionFrame, ALookThatIsCancelledMakesNoFileLost) {
  begin();
  open("a.v");
  open("b.v");
  testing_files::FaultyFileSystem files;
  const testing_files::UseFileSystem use(files);
  std::atomic<bool> hangs{true};
  files.before([&](const auto& call) {
    while (hangs && call.path.ends_with("/a.v")) QThread::msleep(1);
  });
  QTimer cancel;
  QObject::connect(&cancel, &QTimer::timeout, &cancel, [&] { hangs = !LongWork::cancelRunning() && hangs; });
  cancel.start(50);
  main->mnuFileCloseAll_Click();
  EXPECT_FALSE(hangs);
  EXPECT_EQ(shown(), "");
  EXPECT_TRUE(boxes.boxes.empty());
}
