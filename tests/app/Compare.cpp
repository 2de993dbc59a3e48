// The window that compares, its commands, and comparing and merging from the command line.
#include <QLabel>
#include <QToolButton>

#include "app/compare/CompareFrame.h"
#include "app/start/DiffArguments.h"
#include "tests/app/ProcessFixture.h"

using namespace Qt::StringLiterals;
using compare::kLeft;
using compare::kRight;
using CompareRun = ProcessRun;

namespace {

class Compare : public FrameFixture {
 protected:
  CompareFrame& frame() { return CompareFrame::of(*main); }
  static bool compared(CompareWindow* window) {
    if (!window || !spinUntil([&] { return window->view().comparison().compared(); })) return false;
    QCoreApplication::processEvents();   // the window and the menu show it a moment later
    return true;
  }
  // Runs what is done in the window that --diff shows, then closes it. Returns the exit status.
  int diff(const QStringList& words, const std::function<void(CompareWindow&)>& work) {
    const DiffTask task = parseDiffArguments(words, dir.path());
    EXPECT_EQ(task.error, QString());
    EXPECT_EQ(diffTrouble(task), QString());
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
      CompareWindow* window = frame().current();
      if (!window || !window->view().comparison().compared()) return;
      poll.stop();
      work(*window);
      window->close();
    });
    poll.start(5);
    return runDiff(*main, task);
  }
};

}   // namespace

TEST_F(Compare, SidesAreTheDocuments) {
  frmDocument* one = open("a.v", "one\ntwo\n");
  frmDocument* two = open("b.v", "one\r\n2\r\n");
  EXPECT_FALSE(enabled("mCompareNext"));
  CompareWindow* window = frame().compare(CompareFrame::sourceOf(one), CompareFrame::sourceOf(two));
  ASSERT_TRUE(compared(window));
  EXPECT_TRUE(enabled("mCompareNext") && enabled("mCompareToLeft") && enabled("mCompareSwap"));
  trigger("mCompareToLeft");
  EXPECT_EQ(one->cmx->Text(), u"one\n2\n"_s);
  EXPECT_TRUE(one->DocumentModified());
  EXPECT_EQ(window->view().name(kLeft), path("a.v") + u'*');
  window->view().text(kLeft).setTabSize(7);   // in its properties
  int told = 0;
  QObject::connect(two->cmx, &CodeMax::PropsChange, [&] { ++told; });
  QObject::connect(one->cmx, &CodeMax::PropsChange, [&] { ++told; });
  emit window->view().text(kLeft).PropsChange();
  EXPECT_TRUE(one->cmx->TabSize() == 7 && two->cmx->TabSize() == 7 && window->view().text(kRight).TabSize() == 7);
  EXPECT_EQ(told, 1) << "the main window follows a document";
  EXPECT_TRUE(one->cmx->HSplitter());
  trigger("mCompareSwap");
  window->view().activate(kRight);   // a.v now
  window->save();
  EXPECT_FALSE(one->DocumentModified());
  EXPECT_EQ(read(path("a.v")), "one\n2\n");

  one->cmx->setText(u"changed\n"_s);
  main->activate(one);
  trigger("mCompareDisk");
  CompareWindow* withDisk = frame().current();
  ASSERT_NE(withDisk, window);
  ASSERT_TRUE(compared(withDisk));
  EXPECT_TRUE(withDisk->view().text(kLeft).ReadOnly());
  EXPECT_EQ(withDisk->view().name(kLeft), u"On disk: a.v (read only)"_s);
  EXPECT_EQ(withDisk->view().text(kLeft).Text(), u"one\n2\n"_s);
  EXPECT_FALSE(enabled("mCompareToLeft"));
  trigger("mCompareToRight");
  EXPECT_EQ(one->cmx->Text(), u"one\n2\n"_s);
  write("a.v", "one\n2\nby another\n");
  trigger("mCompareRefresh");
  EXPECT_EQ(withDisk->view().text(kLeft).Text(), u"one\n2\nby another\n"_s);
  ASSERT_TRUE(spinUntil([&] { return withDisk->view().count() == 1; }));
  EXPECT_TRUE(withDisk->close());
  EXPECT_EQ(frame().current(), window);
  EXPECT_EQ(main->documents().size(), 2) << "the documents stay";
  main->activate(two);
  trigger("mnuFileClose");
  wait(1);
  EXPECT_FALSE(frame().current()) << "a document that is closed is compared no more";
  EXPECT_FALSE(enabled("mCompareNext"));
}

TEST_F(Compare, DiffEndsWithItsWindow) {
  write("a.v", "one\ntwo\n");
  write("b.v", "one\n2\n");
  EXPECT_EQ(diff({u"--diff"_s, u"a.v"_s, u"b.v"_s}, [](CompareWindow& window) { EXPECT_EQ(window.view().count(), 1); }), 0);
  EXPECT_EQ(diff({u"--diff"_s, u"/dev/null"_s, u"b.v"_s},
                 [](CompareWindow& window) {
                   EXPECT_TRUE(window.view().text(kLeft).ReadOnly());
                   EXPECT_EQ(window.view().count(), 1);
                 }),
            0);
  EXPECT_TRUE(main->documents().isEmpty());
}

TEST_F(Compare, MergingEndsInOrderOnlyWhenItIsSavedWithoutConflicts) {
  write("base", "a\nb\nc\nd\ne\n");
  write("left", "a\nleft\nc\nd\ne\nmore\n");
  write("right", "a\nright\nc\nD\ne\n");
  const QStringList words{u"--diff"_s, u"left"_s, u"right"_s, u"base"_s, u"--output=out"_s};
  const auto merge = [](CompareWindow& window) { return window.findChild<MergeView*>(); };
  const auto answerNo = [&] { boxes.answer(Answer::no); };

  answerNo();
  EXPECT_EQ(diff(words, [](CompareWindow&) {}), 1) << "not saved";
  EXPECT_FALSE(QFile::exists(path("out")));
  EXPECT_EQ(diff(words,
                 [&](CompareWindow& window) {
                   EXPECT_EQ(merge(window)->left(), 1);
                   window.save();
                 }),
            1)
      << "saved with a conflict";
  EXPECT_TRUE(read(path("out")).contains("<<<<<<< left\nleft\n"));
  const struct {
    MergeView::Take take;
    const char* text;
  } cases[] = {{MergeView::Take::left, "a\nleft\nc\nD\ne\nmore\n"},
               {MergeView::Take::right, "a\nright\nc\nD\ne\nmore\n"},
               {MergeView::Take::both, "a\nleft\nright\nc\nD\ne\nmore\n"}};
  for (const auto& c : cases) {
    EXPECT_EQ(diff(words,
                   [&](CompareWindow& window) {
                     MergeView& view = *merge(window);
                     EXPECT_TRUE(view.step(1));
                     const std::string before = view.result().model()->snapshot().bytes();
                     EXPECT_TRUE(view.take(c.take));
                     EXPECT_EQ(view.left(), 0);
                     view.result().ExecuteCmd(Cmd::UNDO);
                     EXPECT_EQ(view.left(), 1);
                     EXPECT_EQ(view.result().model()->snapshot().bytes(), before);
                     view.result().ExecuteCmd(Cmd::REDO);
                     window.save();
                   }),
              0);
    EXPECT_EQ(read(path("out")), c.text);
  }
}

TEST_F(Compare, AMarkLeftInTheResultIsAConflict) {
  write("base", "a\nb\nc\n");
  write("left", "a\nleft\n=======\nc\n");
  write("right", "a\nright \xe9\nc\n");
  const QStringList words{u"--diff"_s, u"left"_s, u"right"_s, u"base"_s, u"--output=out"_s};
  for (const bool taken : {false, true}) {
    QFile::remove(path("out"));
    EXPECT_EQ(diff(words,
                   [&](CompareWindow& window) {
                     MergeView& view = *window.findChild<MergeView*>();
                     CodeMax& text = view.result();
                     EXPECT_TRUE(!taken || view.take(MergeView::Take::both));
                     for (int line = text.LineCount() - 1; line >= 0 && !taken; --line) {
                       const QString mark = text.GetLine(line).left(3);
                       if (mark != u"<<<" && mark != u"|||" && mark != u">>>") continue;
                       text.SetSel({line, 0, line + 1, 0, false});
                       text.ExecuteCmd(Cmd::DELETE);
                     }
                     EXPECT_EQ(view.left(), 0);
                     window.save();
                   }),
              taken ? 0 : 1);
    EXPECT_EQ(read(path("out")), taken ? "a\nleft\n=======\nright \xe9\nc\n" : "a\nleft\n=======\nb\n=======\nright \xe9\nc\n")
        << "in the encoding of the side that tells one";
  }
}

TEST_F(Compare, DecidingAConflictTakesItsLinesOnly) {
  write("base", "a\n1\nz\nt\n");
  write("left", "left\n1\nLEFT\nt\n");
  write("right", "right\n1\nRIGHT\nt\n");
  write("out", "<<<<<<< ours\nleft\n");
  QFile::setPermissions(path("out"), QFile::ReadOwner);   // so the document begins read-only
  const QStringList words{u"--diff"_s, u"left"_s, u"right"_s, u"base"_s, u"--output=out"_s};
  const auto work = [&](CompareWindow& window) {
    MergeView& view = *window.findChild<MergeView*>();
    CodeMax& text = view.result();
    EXPECT_EQ(view.left(), 2);
    const auto* take = view.findChild<QToolButton*>(u"Alt+3"_s);
    text.SetSel({0, 0, 0, 0, false});
    EXPECT_FALSE(take->isEnabled());
    text.setReadOnly(false);
    EXPECT_TRUE(take->isEnabled());
    text.ExecuteCmd(Cmd::UNDO);
    text.ExecuteCmd(Cmd::REDO);
    ASSERT_EQ(text.LineCount(), 17);
    text.SetSel({0, 0, 16, 0, false});   // deleted and brought back: all marks are at one place then
    text.ExecuteCmd(Cmd::DELETE);
    text.ExecuteCmd(Cmd::UNDO);
    text.SetSel({0, 0, 0, 0, false});
    EXPECT_TRUE(view.take(MergeView::Take::left));
    EXPECT_TRUE(text.Text().startsWith(u"left\n1\n<<<<<<< left\nLEFT\n"_s)) << qPrintable(text.Text());
  };
  boxes.answer(Answer::no);
  EXPECT_EQ(diff(words, work), 1);
  boxes.answer(Answer::no);
  EXPECT_EQ(diff(words,
                 [&](CompareWindow& window) {
                   MergeView& view = *window.findChild<MergeView*>();
                   CodeMax& text = view.result();
                   text.setReadOnly(false);
                   text.SetSel({7, 0, 7, 0, false});
                   text.ReplaceSel(u"behind\n"_s);
                   text.SetSel({0, 0, 0, 0, false});
                   text.ReplaceSel(u"above\n"_s);
                   EXPECT_EQ(view.left(), 2);
                   text.SetSel({1, 0, 1, 0, false});
                   EXPECT_TRUE(view.take(MergeView::Take::right));
                   EXPECT_TRUE(text.Text().startsWith(u"above\nright\nbehind\n1\n<<<<<<<"_s)) << qPrintable(text.Text());
                   text.SetSel({5, 0, 5, 0, false});
                   text.ReplaceSel(u">>>>>>>no mark\n"_s);   // edited by hand
                   EXPECT_TRUE(view.take(MergeView::Take::left));
                   EXPECT_EQ(text.Text(), u"above\nright\nbehind\n1\nLEFT\nt\n"_s);
                 }),
            1);
}

TEST_F(Compare, LineEndsThatBothChangedAreAgreedTo) {
  write("base", "a\rb\r");
  write("left", "a\nb\n");
  write("right", "a\r\nb\r\n");
  for (const bool agreed : {false, true}) {
    const auto work = [&](CompareWindow& window) {
      auto& view = *window.findChild<MergeView*>();
      EXPECT_TRUE(view.findChild<QLabel*>(u"conflicts"_s)->text().contains(u"2 line ends in conflict"_s));
      if (agreed) view.findChild<QToolButton*>(u"lineEnds"_s)->click();
      window.save();
    };
    EXPECT_EQ(diff({u"--diff"_s, u"left"_s, u"right"_s, u"base"_s, u"--output=out"_s}, work), agreed ? 0 : 1);
    EXPECT_EQ(read(path("out")), "a\nb\n");
  }
}

TEST_F(CompareRun, TroubleIsStatus2AndSaysWhy) {
  write(u"a.v"_s, "one\n");
  QDir(dir_.path()).mkdir(u"folder"_s);
  const struct {
    QStringList words;
    const char* says;
  } cases[] = {{{u"a.v"_s, u"missing.v"_s}, "missing.v cannot be read: "},
               {{u"a.v"_s, u"folder"_s}, "folder is a folder"},
               {{u"a.v"_s}, "two files"},
               {{u"a.v"_s, u"a.v"_s, u"a.v"_s}, "--output"},
               {{u"a.v"_s, u"a.v"_s, u"--output"_s, u"x"_s}, "three files"},
               {{u"a.v"_s, u"a.v"_s, u"a.v"_s, u"--output"_s, u"folder"_s}, "folder is a folder"},
               {{u"a.v"_s, u"a.v"_s, u"a.v"_s, u"--output=/dev/null"_s}, "/dev/null is not a regular file"},
               {{u"a.v"_s, u"a.v"_s, u"--batch"_s}, "excludes"}};
  for (const auto& c : cases) {
    EXPECT_EQ(run(QStringList{u"--diff"_s} + c.words), 2) << c.says;
    EXPECT_TRUE(processes_.back()->readAllStandardError().contains(c.says)) << c.says;
  }
  EXPECT_EQ(run({u"--diff"_s, u"--help"_s}), 0);
}
