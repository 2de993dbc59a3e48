// Back and forward through the places where the caret was; the bookmarks and lines of texts as lists.
#include <QCheckBox>
#include <QLineEdit>
#include <QtTest/QTest>
#include <random>

#include "app/find/FindFrame.h"
#include "app/find/ResultList.h"
#include "app/find/frmListLines.h"
#include "app/places/BookmarkFile.h"
#include "app/places/Places.h"
#include "control/commands/CommandTable.h"
#include "tests/app/FrameFixture.h"
#include "tests/support/files/FaultyFileSystem.h"

namespace {

class PlacesBackAndForward : public FrameFixture {
 protected:
  static constexpr int kLines = 2000;
  QByteArray lines() {
    QByteArray text;
    for (int i = 0; i < kLines; ++i) text += "line " + QByteArray::number(i) + '\n';
    return text;
  }
  void go(frmDocument* document, qint64 line) {
    main->activate(document);   // to the line of another document, as a message leads there: one jump
    main->goTo(document, line + 1, 1);
    settle(0);
  }
  // The file and the text of the line with the caret.
  std::string here() {
    CodeMax& text = *main->activeDocument()->cmx;
    return (main->activeDocument()->CurrentFileTitle() + u' ' + text.GetLine(text.CurrentPosition().LineNo)).toStdString();
  }
};

}   // namespace

// Lines of the texts move, appear and go; each place is known by the text of its line, which stays.
TEST_F(PlacesBackAndForward, StepsBackGiveThePlacesInReverseWhateverWasTyped) {
  std::mt19937 random(20);
  const auto below = [&](int n) { return int(random() % unsigned(n)); };
  for (int round = 0; round < 2; ++round) {
    const QByteArray name = QByteArray::number(round);
    QList<frmDocument*> texts;
    for (const char* end : {"a.txt", "b.txt", "c.txt"}) texts << open(name + end, lines());
    settle(0);
    std::vector<std::string> places;
    go(texts[0], 7);
    places.push_back(here());
    for (int i = 0; i < 40; ++i) {
      frmDocument* to = texts[below(3)];
      const int number = 20 * (i + 1) + below(2) * 900;   // never near one that was there
      for (qint64 line = 0; line < to->cmx->LineCount(); ++line)
        if (to->cmx->GetLine(line) == q("line ") + QString::number(number)) go(to, line);
      places.push_back(here());
      Editor& edited = texts[below(3)]->cmx->editor();   // another view types, so no caret moves but with its text
      const text::ByteOffset at = edited.snapshot().lineStart(text::LineNo(5 * below(5)));
      if (below(2)) edited.document().apply({{at, at}, "new\n\n"}, {});
      else if (edited.snapshot().line(text::LineNo(0)) == "new")
        edited.document().apply({{text::ByteOffset(0), edited.snapshot().lineStart(text::LineNo(2))}, ""}, {});
    }
    for (std::size_t i = places.size() - 1; i-- > 0;) {
      trigger("mnuViewBack");
      ASSERT_EQ(here(), places[i]) << "round " << round << ", place " << i;
    }
    for (std::size_t i = 1; i < places.size(); ++i) {
      trigger("mnuViewForward");
      ASSERT_EQ(here(), places[i]) << "round " << round << ", place " << i;
    }
    EXPECT_FALSE(enabled("mnuViewForward"));
  }
}

TEST_F(PlacesBackAndForward, OpensClosedFilesAndForgetsTextsWithoutOne) {
  frmDocument* a = open("a.txt", lines());
  settle(0);
  go(a, 100);
  std::weak_ptr<TextModel> untitled;
  {
    frmDocument* draft = main->LoadNewDoc();
    untitled = draft->cmx->model();
    settle(0);
  }
  frmDocument* b = open("b.txt", lines());
  settle(0);
  go(b, 500);
  for (const char* name : {"Untitled", "a.txt"})
    for (frmDocument* each : main->documents())
      if (each->CurrentFileTitle().startsWith(q(name))) {
        main->activate(each);
        settle(0);
        if (each == a) a->cmx->InsertText(q("typed\n"), {0, 0});
        if (each == a) main->saveActive();
        main->mnuFileClose_Click();
        wait(0);
        break;
      }
  EXPECT_TRUE(untitled.expired());
  ASSERT_EQ(here(), "b.txt line 500");
  std::vector<std::string> seen;
  while (enabled("mnuViewBack")) {
    trigger("mnuViewBack");
    seen.push_back(here());
    if (seen.size() == 1) main->activeDocument()->cmx->InsertText(q("new\n\n\n\n"), {0, 0});
  }
  // The file was opened again; places in it are where they were in the text that was saved, and move with it again.
  EXPECT_EQ(seen, (std::vector<std::string>{"a.txt line 100", "b.txt line 500", "b.txt line 0", "a.txt line 100", "a.txt line 0"}));
  for (frmDocument* each : main->documents())
    if (each->CurrentFileTitle() == q("b.txt")) each->parentWidget()->close();
  QFile::remove(path("b.txt"));   // the way leads past it
  wait(0);
  while (enabled("mnuViewForward")) trigger("mnuViewForward");
  EXPECT_EQ(here().substr(0, 5), "a.txt");
}

TEST_F(PlacesBackAndForward, LeadInTheWindowOfATextThatWasUsed) {
  frmDocument* first = open("a.txt", lines());
  settle(0);
  trigger("mWindowNew");
  frmDocument* second = main->activeDocument();
  frmDocument* other = open("b.txt", lines());
  settle(0);
  for (frmDocument* used : {second, first}) {
    go(used, used == first ? 500 : 900);
    go(other, used == first ? 500 : 900);
    trigger("mnuViewBack");
    EXPECT_EQ(main->activeDocument(), used);
  }
}

// A disk that does not answer at once, and a file that cannot be read: neither is asked about for each of its places.
TEST_F(PlacesBackAndForward, AFileThatIsAwayOrCannotBeOpenedIsTriedOnceForAllItsPlaces) {
  const auto closed = [&](const char* name) {
    frmDocument* document = open(name, lines());
    settle(0);
    for (int i = 1; i <= 10; ++i) go(document, 100 * i);
    document->parentWidget()->close();
    wait(0);
  };
  frmDocument* first = open("first.txt", lines());
  settle(0);
  go(first, 500);
  closed("a.txt");
  closed("b.txt");
  const std::string b = path("b.txt").toStdString();
  testing_files::FaultyFileSystem slow;
  const testing_files::UseFileSystem use(slow);
  QFile::remove(path("b.txt"));
  QFile::rename(path("a.txt"), path("kept.txt"));
  QDir(dir.path()).mkdir(q("a.txt"));
  for (const int files : {1, 2}) {   // the second time its places are taken out of the way
    boxes.answer(Answer::ok);
    trigger("mnuViewBack");
    EXPECT_EQ(boxes.boxes.size(), std::size_t(files));
    EXPECT_EQ(here(), "first.txt line 500");
  }
  EXPECT_EQ(std::ranges::count(slow.log(), b, &testing_files::Call::path), 1);
  trigger("mnuViewBack");
  EXPECT_EQ(here(), "first.txt line 0");
  EXPECT_FALSE(enabled("mnuViewBack"));
}

TEST_F(PlacesBackAndForward, KeysAndMouseMoveTheCaretWithoutMakingPlaces) {
  frmDocument* a = open("a.txt", lines());
  main->show();
  settle(0);
  for (int i = 0; i < 5; ++i) a->cmx->ExecuteCmd(Cmd::PAGEDOWN);
  for (int i = 0; i < 30; ++i) a->cmx->ExecuteCmd(Cmd::LINEDOWN);
  a->cmx->ReplaceSel(q("typed\n"));
  EXPECT_FALSE(enabled("mnuViewBack"));
  const std::string before = here();
  a->cmx->ExecuteCmd(Cmd::DOCUMENTEND);
  a->cmx->ExecuteCmd(Cmd::UNDO);   // which goes back by itself
  QTest::mousePress(a->cmx->focusProxy(), Qt::BackButton);
  QTest::mousePress(a->cmx->focusProxy(), Qt::BackButton);
  EXPECT_EQ(here(), before);

  // What was shown while a text to find was typed is no place; a new jump ends the way forward.
  const auto show = [&](qint64 line, CaretMove how) {
    a->cmx->hold();
    a->cmx->SetSel({line, 0, line, 0, false});
    noteMove(a->cmx->editor(), how);
    a->cmx->release();
  };
  EXPECT_TRUE(enabled("mnuViewForward"));
  for (const qint64 line : {500, 900}) show(line, CaretMove::preview);
  show(1500, CaretMove::jump);
  EXPECT_FALSE(enabled("mnuViewForward"));
  trigger("mnuViewBack");
  EXPECT_EQ(a->CurrentPosition().LineNo, 900);
  trigger("mnuViewBack");
  EXPECT_EQ(here(), before);
}

class PlacesOfBookmarks : public FrameFixture {
 protected:
  PlacesOfBookmarks() { qputenv("XDG_STATE_HOME", path("state").toUtf8()); }
  ~PlacesOfBookmarks() override { before.isNull() ? qunsetenv("XDG_STATE_HOME") : qputenv("XDG_STATE_HOME", before); }
  static std::string marks(const frmDocument& document) {
    std::string all;
    for (const text::LineNo line : document.cmx->model()->bookmarks()) all += std::to_string(line.value) + " ";
    return all;
  }
  static void whenAsked(std::function<void(frmListLines&)> work) {
    QTimer::singleShot(0, qApp, [work] {
      auto* box = qobject_cast<frmListLines*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr) << "it was not asked";
      work(*box);
    });
  }
  std::string shown() const { return main->activeDocument()->cmx->model()->snapshot().bytes(); }
  void startAgain() {
    main->close();
    main.reset();
    main = std::make_unique<frmMain>();
  }
  const QByteArray before = qgetenv("XDG_STATE_HOME");
};

TEST_F(PlacesOfBookmarks, ComeBackWithTheTextOfTheirLinesAndAreListed) {
  startAgain();   // with the folder of this test
  frmDocument* a = open("a.v", "one\ntwo\nend\nthree\nend\nfour\n");
  for (const int line : {1, 2, 4, 5}) a->cmx->setBookmark(line, true);
  open("b.v", "b\n")->cmx->setBookmark(0, true);
  startAgain();
  // Others put lines in, took one out, and changed one.
  write("a.v", "new\none\n2\nnew\nend\nthree\nend\nfour\n");
  EXPECT_EQ(marks(*open("a.v", read(path("a.v")))), "1 4 6 7 ") << "the changed line by its number, the others by their text";
  frmDocument* draft = main->LoadNewDoc();
  draft->setUntitled(q("Draft"), dir.path());
  draft->cmx->setText(q("x\ny\n"));
  draft->cmx->setBookmark(1, true);
  trigger("mEditBookmarkList");
  EXPECT_EQ(shown(),
            "Bookmarks: all documents\nFolder: " + dir.path().toStdString() +
                "\n6 bookmarks in 3 texts\n\na.v:2:1: one\na.v:5:1: end\na.v:7:1: end\na.v:8:1: four\nDraft:2:1: y\nb.v:1:1: b\n");
  for (const char* title : {"a.v", "a.v", "a.v", "a.v", "Draft", "b.v"}) {
    trigger("mnuViewNextMessage");
    EXPECT_EQ(main->activeDocument()->CurrentFileTitle(), q(title));
  }
  EXPECT_EQ(marks(*main->activeDocument()), "0 ") << "a file that was closed";
}

TEST_F(PlacesOfBookmarks, AFileThatIsDamagedOrOfALaterVersionCostsBookmarksOnly) {
  const std::string whole = BookmarkFile::format({{"/a%\nb", {{0, "x\ty"}, {7, ""}}}, {"/c", {{3, "\xff"}}}});
  const auto known = [](std::string_view bytes) {
    bool isForeign = false;
    std::size_t marks = 0;
    for (const auto& entry : BookmarkFile::parse(bytes, &isForeign)) {
      EXPECT_TRUE(entry.path == "/a%\nb" || entry.path == "/c");
      marks += entry.marks.size();
    }
    return marks;
  };
  EXPECT_EQ(known(whole), 3u);
  for (std::size_t cut = 0; cut < whole.size(); ++cut) EXPECT_LT(known(std::string_view(whole).substr(0, cut)), 3u);
  EXPECT_EQ(known(std::string(100, '\0')), 0u);
  // Two copies of the program keep each other's; a later version's file stays as it is.
  const std::string file = path("bookmarks").toStdString();
  BookmarkFile one(file), other(file);
  one.set("/a", {{1, "a"}});
  other.set("/b", {{2, "b"}});
  EXPECT_EQ(one.write() + other.write(), "");
  EXPECT_EQ(one.read().size(), 2u);
  write("bookmarks", "bookmarks 2\nwhatever\n");
  one.set("/a", {{3, "c"}});
  one.write();
  EXPECT_EQ(read(path("bookmarks")), "bookmarks 2\nwhatever\n");
}

TEST_F(PlacesOfBookmarks, AreThoseOfTheFileWhateverHappensToItOrToTheText) {
  startAgain();
  const QByteArray text = "one\ntwo\nthree\nfour\n";
  frmDocument* a = open("a.v", text);
  const auto reopened = [&](const QByteArray& bytes) {
    a->letGo();
    a->parentWidget()->close();
    wait(0);
    return marks(*(a = open("a.v", bytes)));
  };
  a->cmx->setBookmark(1, true);
  a->cmx->InsertText(q("new\nnew\n"), {0, 0});
  a->cmx->setBookmark(4, true);
  EXPECT_EQ(reopened(text), "1 2 ") << "what was typed was discarded";
  EXPECT_EQ(reopened({}), "");
  EXPECT_EQ(reopened(text), "1 2 ") << "the file was empty for a moment";
  write("a.v", "new\nnew\none\ntwo\nthree\n4\n");
  a->ReloadDocument();
  EXPECT_EQ(marks(*a), "3 4 ") << "lines above and the last line differ";
  a->cmx->ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(marks(*a), "1 2 ") << "the text before";
  a->cmx->ExecuteCmd(Cmd::REDO);
  EXPECT_EQ(marks(*a), "3 4 ");
  main->activate(a);
  trigger("mWindowNew");
  main->activeDocument()->parentWidget()->close();
  wait(0);
  a->cmx->setBookmark(0, true);
  EXPECT_EQ(reopened(read(path("a.v"))), "0 3 4 ") << "another window of it was closed";
  a->cmx->setBookmark(0, false);

  BookmarkFile other(path("state/zelkor/bookmarks").toStdString());   // another copy of the program
  const std::string b = path("b.v").toStdString(), c = path("c.v").toStdString();
  other.set(b, {{0, "one"}, {2, "three"}});
  other.set(c, {{1, "two"}});
  other.set(c + "h", {{0, "one"}});
  EXPECT_EQ(other.write(), "");
  frmDocument* opened = open("b.v", text);
  EXPECT_EQ(marks(*opened), "0 2 ");
  emit main->fileRenamed(path("c.v"), path("d.v"));
  write("d.v", "new\n" + text);
  trigger("mEditBookmarkList");
  EXPECT_TRUE(shown().ends_with(
      "\n6 bookmarks in 4 texts\n\na.v:4:1: two\na.v:5:1: three\nb.v:1:1: one\nb.v:3:1: three\nc.vh:1:1: one\nd.v:3:1: two\n"))
      << shown();
}

TEST_F(PlacesOfBookmarks, OfALongTextAreFoundWhileTheUserGoesOn) {
  startAgain();
  const QByteArray text = "new\nmarked\n" + QByteArray("}\n").repeated(700'000);
  const std::string file = path("a.v").toStdString();
  {
    BookmarkFile other(path("state/zelkor/bookmarks").toStdString());
    other.set(file, {{0, "marked"}, {650'000, "}"}});
    EXPECT_EQ(other.write(), "");
  }
  frmDocument* a = open("a.v", text);
  EXPECT_EQ(marks(*a), "") << "they are looked for";
  a->parentWidget()->close();
  wait(0);
  a = open("a.v", text);
  a->cmx->InsertText(q("typed\n"), {0, 0});
  trigger("mEditBookmarkList");
  EXPECT_NE(shown().find("\n2 bookmarks in 1 text\n"), std::string::npos) << shown();
  EXPECT_TRUE(spinUntil([&] { return !marks(*a).empty(); }));
  EXPECT_EQ(marks(*a), "2 650001 ");
  std::atomic<bool> cancel = true;
  EXPECT_TRUE(findMarks(a->cmx->model()->snapshot(), {{0, "marked"}}, &cancel).lines.empty());
}

TEST_F(PlacesOfBookmarks, AreFoundEachOnceNearestToWhereTheyWere) {
  const auto found = [](const std::string& text, const KeptMarks& marks) {
    std::string all;
    for (const text::LineNo line : findMarks(text::Snapshot(text), marks).lines) all += std::to_string(line.value) + " ";
    return all;
  };
  EXPECT_EQ(found("x\n}\ny\n}\n", {{0, "}"}, {1, "}"}}), "1 3 ") << "one that stands as kept stays";
  EXPECT_EQ(found("", {{0, ""}, {1, "}"}}), "0 ");
  EXPECT_EQ(found("}\nx\nx\nx\n}\n", {{1, "}"}, {2, "}"}, {3, "}"}}), "0 3 4 ") << "more marks than lines";
  std::string many;
  KeptMarks marks;
  for (int i = 0; i < 300'000; ++i) many += i == 250'000 ? "x\n" : "}\n";
  EXPECT_EQ(found(many, {{100, "x"}, {250'000, "}"}, {280'001, "}"}}), "250000 250001 280001 ");
}

TEST_F(PlacesOfBookmarks, StayWhenTheirFileCannotBeReadOrWritten) {
  const std::string file = path("bookmarks").toStdString();
  BookmarkFile marks(file);
  marks.set("/a", {{1, "a"}});
  ASSERT_EQ(marks.write(), "");
  testing_files::FaultyFileSystem disk;
  const testing_files::UseFileSystem use(disk);
  for (const auto& [call, error] : {std::pair("read", EIO), std::pair("write", ENOSPC)}) {
    marks.set("/b", {{2, call}});
    disk.failUse(call, 1, error, true);
    EXPECT_NE(marks.write(), "") << call;
    disk.clear();
    EXPECT_EQ(marks.read().size(), 2u) << call;
    EXPECT_EQ(marks.write(), "");
    EXPECT_EQ(BookmarkFile(file).read().size(), 2u) << call;
  }
}

TEST_F(PlacesOfBookmarks, LinesOfATextAreListed) {
  frmDocument* a = open("a.v", "foo\nbar\nx foo foo\n");
  a->cmx->SetSel({1, 0, 1, 3, false});
  whenAsked([](frmListLines& box) {
    auto* text = box.findChild<QLineEdit*>(q("linesText"));
    EXPECT_EQ(text->text(), q("bar"));
    box.findChild<QCheckBox*>(q("linesRegex"))->setChecked(true);
    text->setText(q("f(o"));
    box.accept();
    EXPECT_TRUE(box.isVisible()) << "no expression";
    text->setText(q("fo+"));
    box.accept();
  });
  trigger("mEditListLines");
  EXPECT_EQ(shown(), "Lines with: fo+ (regular expression)\nFolder: " + dir.path().toStdString() +
                         "\n3 hits in 2 lines\n\na.v:1:1: foo\na.v:3:3: x foo foo\n");
  for (const int column : {0, 2, 6}) {
    trigger("mnuViewNextMessage");
    EXPECT_EQ(a->cmx->GetSel(true).StartColNo, column);
  }
  // Those of a list are a list of the same places.
  main->activate(FindFrame::of(*main).list()->document());
  whenAsked([](frmListLines& box) {
    box.findChild<QLineEdit*>(q("linesText"))->setText(q("x"));
    box.accept();
  });
  trigger("mEditListLines");
  EXPECT_TRUE(shown().ends_with("\n\na.v:3:3: x foo foo\n")) << shown();
  trigger("mnuViewNextMessage");
  EXPECT_EQ(main->activeDocument(), a);
  // Without a line the list stays.
  const std::string before = shown();
  whenAsked([](frmListLines& box) {
    box.findChild<QLineEdit*>(q("linesText"))->setText(q("nowhere"));
    box.accept();
  });
  boxes.answer(Answer::ok);
  trigger("mEditListLines");
  EXPECT_TRUE(boxes.last().text.contains(q("0 hits"))) << boxes.last().text.toStdString();
  EXPECT_EQ(shown(), before);
}
