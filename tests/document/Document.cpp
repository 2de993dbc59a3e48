// The document window: loading, saving, languages, comments, words and what it tells the frame.
#include <sys/stat.h>
#include <unistd.h>

#include <QKeyEvent>
#include <QThread>

#include "control/edit/Carets.h"
#include "control/view/Pane.h"
#include "settings/modRegistry.h"
#include "tests/document/DocumentFixture.h"
#include "tests/support/files/FaultyFileSystem.h"

namespace {

class Document : public DocumentFixture {};
class DocumentLanguage : public DocumentFixture {};
class DocumentClose : public DocumentFixture {};

TEST_F(Document, FirstLineDecidesLineEnds) {
#ifdef Q_OS_WIN
  constexpr bool kWindows = true;
#else
  constexpr bool kWindows = false;   // what has no line end gets those of the platform
#endif
  struct Case {
    const char* name;
    QByteArray bytes;
    bool win;
  };
  for (const Case& c : {Case{"LF", "a\nb\r\n", false}, Case{"CR LF", "a\r\nb\n", true}, Case{"empty", "", kWindows},
                        Case{"no line end", "abc", kWindows}, Case{"LF first", "\n", false}, Case{"CR LF first", "\r\n", true},
                        Case{"LF behind a long line", QByteArray(40000, 'x') + "\n", false},
                        Case{"CR LF across a block", QByteArray(16383, 'x') + "\r\n", true}}) {
    SCOPED_TRACE(c.name);
    const auto document = opened(write("f.txt", c.bytes));
    EXPECT_EQ(document->SetCRLF(path("f.txt")), c.win);
    EXPECT_EQ(document->cmx->EnableCRLF(), c.win);
    main.activate(document.get());
    document->focusWork();
    EXPECT_EQ(main.unixFile, !c.win);
    EXPECT_TRUE(document->SaveDocumment(path("f.txt")));
    EXPECT_EQ(read(path("f.txt")), c.bytes) << "looking at line ends must not change them";
    main.open.clear();
    main.active = nullptr;
  }
  frmDocument document;
  EXPECT_FALSE(document.SetCRLF(path("not there")));
  // In a 16-bit encoding the byte of a line feed is half of other characters.
  const auto wide = opened(write("wide.txt", QByteArray("\xFF\xFE\x0A\x01\x0D\x00\x0A\x00", 8)));
  EXPECT_TRUE(wide->cmx->EnableCRLF());
}

TEST_F(Document, SaveKeepsBytesAndLeavesNothingBehind) {
  const QByteArray bytes("a\r\nb\nc\0d\xFF\xC3\xA4", 12);
  const auto document = opened(write("mixed.txt", bytes));
  document->cmx->InsertText(q("x"), {0, 0});
  EXPECT_TRUE(document->DocumentModified());
  EXPECT_EQ(document->Caption(), q("mixed.txt*"));
  document->DocumentChanged(true);
  EXPECT_EQ(document->windowTitle(), q("mixed.txt*")) << "one star, however often it is told";
  main.panels[1].clear();
  EXPECT_TRUE(document->SaveDocumment(document->CurrentFileName()));
  EXPECT_EQ(read(path("mixed.txt")), "x" + bytes);
  EXPECT_FALSE(document->cmx->Modified());
  EXPECT_FALSE(document->DocumentModified());
  EXPECT_EQ(document->windowTitle(), q("mixed.txt"));
  EXPECT_EQ(main.panels[1], path("mixed.txt"));
  EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{q("mixed.txt")});
  document->cmx->ExecuteCmd(Cmd::UNDO);
  EXPECT_TRUE(document->DocumentModified());
  document->cmx->ExecuteCmd(Cmd::REDO);
  EXPECT_FALSE(document->DocumentModified()) << "back at what was saved";
}

// S14: a disk that takes its time, and the user who types on. Keys that were pressed meanwhile come when the save is over; what
// changes the text while it is written (a program's output, another window) is not lost either.
TEST_F(Document, S14_WhatIsTypedDuringASlowSaveStaysModified) {
  const auto document = opened(write("a.v", "text\n"));
  Pane* const pane = document->cmx->findChild<Pane*>();
  ASSERT_TRUE(pane);
  for (const bool meanwhile : {false, true}) {
    SCOPED_TRACE(meanwhile);
    document->cmx->setText(q("first\n"));
    testing_files::FaultyFileSystem slow;
    int syncs = 0;
    slow.before([&](const testing_files::Call& call) {
      if (call.name != "sync" || syncs++ > 0) return;
      QThread::msleep(50);
      if (meanwhile) document->cmx->InsertText(q("x"), {0, 0});
      else QCoreApplication::postEvent(pane, new QKeyEvent(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, q("x")));
    });
    {
      const testing_files::UseFileSystem use(slow);
      EXPECT_TRUE(document->SaveDocumment(document->CurrentFileName()));
    }
    EXPECT_GT(syncs, 0);
    EXPECT_EQ(document->DocumentModified(), meanwhile);
    QCoreApplication::processEvents();
    EXPECT_EQ(document->cmx->Text(), q("xfirst\n"));
    EXPECT_TRUE(document->DocumentModified());
    EXPECT_EQ(read(path("a.v")), "first\n");
    EXPECT_TRUE(document->SaveDocumment(document->CurrentFileName()));
    EXPECT_EQ(read(path("a.v")), "xfirst\n");
    EXPECT_FALSE(document->DocumentModified());
  }
}

TEST_F(Document, EventsOfTheText) {
  const auto document = opened(write("e.v", "text\n"), 1);
  main.templateQuestions.clear();
  select(*document, 0, 2, 0, 2);
  EXPECT_EQ(main.templateQuestions.last(), false) << "moving the caret expands nothing";
  emit document->cmx->Return();
  EXPECT_EQ(main.templateQuestions.last(), true);
  emit document->cmx->Typed();
  EXPECT_EQ(main.templateQuestions.last(), true);
  main.templateThere = true;
  emit document->cmx->Return();
  EXPECT_TRUE(main.templatePanel);
  document->SetLanguage(0);
  const auto asked = main.templateQuestions.size();
  emit document->cmx->Return();
  EXPECT_FALSE(main.templatePanel);
  EXPECT_EQ(main.templateQuestions.size(), asked) << "without a language nobody is asked";
  {
    const BusyGuard busy;
    main.panels[2].clear();
    select(*document, 0, 1, 0, 1);
    EXPECT_EQ(main.panels[2], QString()) << "while a command string runs the panel keeps still";
    manager.setListLanguage(2);
    emit document->cmx->GotFocus();
    EXPECT_EQ(manager.ListLanguage(), 2);
  }
  bool handled = false;
  emit document->cmx->RClick({1, 1}, &handled);
  EXPECT_TRUE(handled);
  EXPECT_TRUE(main.calls.contains(q("popup")));
}

TEST_F(Document, FocusShowsItsState) {
  const auto unix = opened(write("u.v", "a\n"), 1);
  const auto win = opened(write("w.vhd", "a\r\n"), 2);
  win->cmx->setText(q("changed"));
  frmRegistry::instance().GetProfile(main, q("mnuFileMRU"));
  main.active = win.get();
  emit win->cmx->GotFocus();
  EXPECT_FALSE(main.unixFile);
  EXPECT_EQ(manager.ListLanguage(), 2);
  EXPECT_EQ(main.panels[1], path("w.vhd"));
  EXPECT_TRUE(main.activeModified);
  EXPECT_TRUE(main.undoRedo.first);
  EXPECT_TRUE(win->Timer1->isActive());
  emit win->cmx->LostFocus();
  EXPECT_FALSE(win->Timer1->isActive());
  main.active = unix.get();
  emit unix->cmx->GotFocus();
  EXPECT_TRUE(main.unixFile);
  EXPECT_EQ(manager.ListLanguage(), 1);
  EXPECT_FALSE(main.activeModified);
  EXPECT_TRUE(main.anyModified);
}

TEST_F(Document, OptionsAreStoredByTheControlThatChangedThem) {
  const auto document = opened(write("p.v", ""), 1);
  const auto other = opened(write("o.v", ""), 1);
  document->cmx->setTabSize(7);
  emit document->cmx->PropsChange();
  EXPECT_EQ(document->LanguageIndex(), 1);
  EXPECT_EQ(other->cmx->TabSize(), 7) << "open ones take them over";
  frmDocument fresh;
  EXPECT_EQ(fresh.cmx->TabSize(), 7);
}

// ---- languages and comments

TEST_F(DocumentLanguage, RefusedDefinitionIsReported) {
  frmDocument document;
  document.cmx->setText(q("text"));
  boxes.answer(Answer::ok);
  document.SetLanguage(3);
  EXPECT_EQ(document.cmx->Language(), QString());
  EXPECT_EQ(document.cmx->Text(), q("text"));
  EXPECT_EQ(document.LineComment(), q("!"));
}

TEST_F(DocumentLanguage, CommentAndUncomment) {
  struct Case {
    const char* name;
    const char* text;
    CmRange selection;
    bool comment;
    const char* expected;
  };
  for (const Case& c : {
           Case{"ending at column 0 of the fourth", "a\nb\nc\nd\n", {0, 0, 3, 0}, true, "//a\n//b\n//c\n//d\n"},
           Case{"selected backwards", "a\nb\nc\nd\n", {3, 0, 0, 0}, true, "//a\n//b\n//c\n//d\n"},
           Case{"blank lines too", "a\n\n  b", {0, 1, 2, 0}, true, "//a\n//\n//  b"},
           Case{"the caret's line", "a\nb\n", {1, 1, 1, 1}, true, "a\n//b\n"},
           Case{"mixed line ends stay", "a\r\nb\nc", {0, 0, 2, 1}, true, "//a\r\n//b\n//c"},
           Case{"blank behind the mark stays", "// a", {0, 0, 0, 0}, false, " a"},
           Case{"indentation stays", "  //a\n\t //b", {0, 0, 1, 0}, false, "  a\n\t b"},
           Case{"code before it", "a //b\n//c", {0, 0, 1, 1}, false, "a //b\nc"},
           Case{"one mark each", "////a", {0, 0, 0, 0}, false, "//a"},
           Case{"first mark decides", "x // //", {0, 0, 0, 0}, false, "x // //"},
           Case{"nothing there", "a\n\nb", {0, 0, 2, 0}, false, "a\n\nb"},
       }) {
    SCOPED_TRACE(c.name);
    const auto document = opened(write("c.v", c.text), 1);
    document->cmx->SetSel(c.selection);
    if (c.comment) document->CommentBlock();
    else document->UnCommentBlock();
    EXPECT_TRUE(document->SaveDocumment(path("c.v")));
    EXPECT_EQ(read(path("c.v")), c.expected);
    if (read(path("c.v")) != c.text) {
      document->cmx->ExecuteCmd(Cmd::UNDO);
      EXPECT_TRUE(document->SaveDocumment(path("c.v")));
      EXPECT_EQ(read(path("c.v")), c.text) << "one step back";
    }
    EXPECT_FALSE(document->cmx->CanUndo());
    main.open.clear();
  }
  frmDocument plain;
  plain.cmx->setText(q("a"));
  plain.CommentBlock();
  plain.UnCommentBlock();
  EXPECT_EQ(plain.cmx->Text(), q("a")) << "no mark, nothing to do";
  plain.SetLanguage(1);
  plain.cmx->setReadOnly(true);
  plain.CommentBlock();
  EXPECT_EQ(plain.cmx->Text(), q("a"));
}

TEST_F(DocumentLanguage, CommentingAgainTakesTheSameLines) {
  const auto document = opened(write("t.v", "a\nbc\nd\n"), 1);
  select(*document, 0, 0, 1, 1);
  const CmRange before = document->cmx->GetSel(false);
  document->CommentBlock();
  EXPECT_EQ(document->cmx->GetSel(false), (CmRange{0, 0, 1, 3, false}));
  document->UnCommentBlock();
  EXPECT_EQ(document->cmx->GetSel(false), before);
  EXPECT_EQ(document->cmx->Text(), q("a\nbc\nd\n"));
  carets::set(document->cmx->editor(), {{text::ByteOffset(1), text::ByteOffset(1)}, {text::ByteOffset(3), text::ByteOffset(5)}}, 0);
  document->CommentBlock();
  EXPECT_EQ(document->cmx->Text(), q("//a\n//bc\n//d\n")) << "of several carets, each line once";
  document->cmx->ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(carets::count(document->cmx->editor()), 2u);
}

// ---- closing

TEST_F(DocumentClose, AsksOnlyAboutChanges) {
  const auto document = opened(write("a.v", "x\n"));
  EXPECT_FALSE(document->CancelSaveFile());
  EXPECT_TRUE(boxes.boxes.empty());
  document->cmx->setText(q("y"));
  main.active = nullptr;

  boxes.answer(Answer::cancel);
  EXPECT_TRUE(document->CancelSaveFile());

  boxes.answer(Answer::no);
  EXPECT_FALSE(document->CancelSaveFile());
  EXPECT_EQ(read(path("a.v")), "x\n");

  main.saves = false;
  boxes.answer(Answer::yes);
  EXPECT_TRUE(document->CancelSaveFile()) << "saving failed, so the text would be lost";

  main.saves = true;
  main.calls.clear();
  boxes.answer(Answer::yes);
  EXPECT_FALSE(document->CancelSaveFile());
  EXPECT_EQ(main.calls, (QStringList{q("activate"), q("save")})) << "the save command works on the active document";
  EXPECT_EQ(read(path("a.v")), "y");
}

}   // namespace
