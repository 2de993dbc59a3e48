// Finding and replacing in files from the main frame: the list of results, the preview, and the way back.
#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QLabel>
#include <QTest>
#include <QTreeView>
#include <cerrno>
#include <cstring>

#include "app/find/ChangeDelegate.h"
#include "app/find/FindFrame.h"
#include "app/find/ResultList.h"
#include "app/find/frmFindInFiles.h"
#include "app/find/frmReplacePreview.h"
#include "app/folder/FolderParts.h"
#include "app/folder/WorkFolder.h"
#include "control/commands/CommandTable.h"
#include "script/ReplaceWork.h"
#include "tests/app/ProcessFixture.h"
#include "tests/support/files/TempFolder.h"

namespace {

class FindInFiles : public FrameFixture {
 protected:
  FindInFiles() { qputenv("XDG_STATE_HOME", state.path().toUtf8()); }
  ~FindInFiles() override { stateBefore.isNull() ? qunsetenv("XDG_STATE_HOME") : qputenv("XDG_STATE_HOME", stateBefore); }

  FindFrame& finder() { return FindFrame::of(*main); }
  template <class Widget>
  Widget* part(const char* name) {
    return finder().window().findChild<Widget*>(q(name));
  }
  void fields(const char* find, const char* replace = "") {
    trigger("mEditFindInFiles");
    part<QComboBox>("filesFolder")->setEditText(dir.path());
    part<QComboBox>("filesFindText")->setEditText(q(find));
    part<QComboBox>("filesReplaceText")->setEditText(q(replace));
  }
  void findAll() {
    part<QPushButton>("filesFindAll")->click();
    ASSERT_TRUE(spinUntil([this] { return !finder().running(); }));
  }
  std::string list() { return text(*finder().list()->document()); }
  static std::string text(const frmDocument& document) { return document.cmx->model()->snapshot().bytes(); }
  // Where the active document's selection begins, as "name:line:column", lines and columns from 0.
  std::string place() {
    const CmRange at = main->activeDocument()->cmx->GetSel(true);
    return fromQString(main->activeDocument()->CurrentFileTitle()) + ":" + std::to_string(at.StartLineNo) + ":" +
           std::to_string(at.StartColNo);
  }
  // What is done in the preview, which then closes.
  static void inPreview(std::function<void(frmReplacePreview&)> work) {
    QTimer::singleShot(0, qApp, [work] {
      auto* box = qobject_cast<frmReplacePreview*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr) << "there was no preview";
      work(*box);
    });
  }
  static void accept(frmReplacePreview& box) { box.findChild<QPushButton*>(q("replace"))->click(); }
  void untick(frmReplacePreview& box, int file, int change) {
    QAbstractItemModel* model = box.findChild<QTreeView*>()->model();
    model->setData(model->index(change, 0, model->index(file, 0)), int(Qt::Unchecked), Qt::CheckStateRole);
  }

  QByteArray stateBefore = qgetenv("XDG_STATE_HOME");
  QTemporaryDir state = memoryFolder();
};

}   // namespace

TEST_F(FindInFiles, TheListLeadsToPlacesThatMoveWithTheText) {
  write("b.v", "wire foo; // foo\n\nfoo\n");
  frmDocument* open = this->open("a.v", "on disk: nothing\n");
  open->cmx->setText(q("in the window: Foo\n"));
  fields("foo");
  findAll();
  frmDocument* const results = finder().list()->document();
  EXPECT_EQ(main->activeDocument(), results);
  EXPECT_FALSE(results->DocumentModified());
  EXPECT_EQ(list(), "Find in files: foo\nFolder: " + dir.path().toStdString() +
                        "\nFiles: all of the folder; without ignored, hidden, binary ones\n4 hits in 2 files; 2 "
                        "searched\n\na.v:1:16: in the window: Foo\nb.v:1:6: wire foo; // foo\nb.v:3:1: foo\n");
  results->cmx->SetSel({5, 0, 5, 0, false});   // the row at the caret comes first
  for (const char* expected : {"a.v:0:15", "b.v:0:5", "b.v:0:13", "b.v:2:0"}) {
    trigger("mnuViewNextMessage");
    EXPECT_EQ(place(), expected);
    EXPECT_EQ(main->activeDocument()->cmx->SelText().toLower(), q("foo"));
  }
  main->activeDocument()->cmx->InsertText(q("new\nlines\n"), {0, 0});
  trigger("mnuViewPreviousMessage");
  EXPECT_EQ(place(), "b.v:2:13");
  trigger("mnuViewNextMessage");
  EXPECT_EQ(place(), "b.v:4:0");

  // Saved and opened again it is a list still; Return goes to the place of its line.
  boxes.answerSave(path("found.txt"));
  main->activate(results);
  trigger("mnuFileSaveAs");
  main->mnuFileClose_Click();
  frmDocument* again = nullptr;
  bool ok = false;
  again = main->mainOpenFile(path("found.txt"), ok);
  ASSERT_NE(ResultList::of(again), nullptr);
  again->cmx->SetSel({5, 3, 5, 3, false});
  EXPECT_TRUE(ResultList::of(again)->jump());
  EXPECT_EQ(place(), "a.v:0:15");
}

// M1, M2
TEST_F(FindInFiles, WhatIsTickedIsReplacedAndComesBack) {
  const QString b = write("b.v", "foo foo\r\n"), c = write("c.v", "foo\n");
  frmDocument* open = this->open("a.v", "foo\n");
  fields("foo", "bar");
  inPreview([&](frmReplacePreview& box) {
    untick(box, 1, 0);
    EXPECT_EQ(box.findChild<QLabel*>(q("count"))->text(), q("Ticked: 3 changes in 3 files"));
    write("c.v", "foo!\n");   // by another hand, meanwhile
    accept(box);
  });
  boxes.answer(Answer::ok);
  part<QPushButton>("filesReplace")->click();
  EXPECT_TRUE(boxes.last().text.contains(c + q(": It has been changed since the search"))) << boxes.last().text.toStdString();
  EXPECT_EQ(text(*open), "bar\n");
  EXPECT_TRUE(open->DocumentModified());
  EXPECT_EQ(read(path("a.v")), "foo\n");
  EXPECT_EQ(read(b), "foo bar\r\n");
  EXPECT_EQ(read(c), "foo!\n");
  boxes.answer(Answer::ok);
  trigger("mEditUndoReplaceInFiles");
  EXPECT_EQ(text(*open), "foo\n");
  EXPECT_EQ(read(b), "foo foo\r\n");

  // The newest replacing alone is taken back, here one of an open text, which a second name leads to.
  const auto replaceAll = [&](const char* what, const char* by) {
    fields(what, by);
    inPreview(accept);
    part<QPushButton>("filesReplace")->click();
  };
  ASSERT_EQ(::link(path("a.v").toUtf8().constData(), path("z.v").toUtf8().constData()), 0);
  replaceAll("foo foo", "bar");
  open->cmx->setText(q("mine\n"));
  replaceAll("mine", "mine_mine");
  EXPECT_EQ(text(*open), "mine_mine\n");
  boxes.answer(Answer::ok);
  trigger("mEditUndoReplaceInFiles");
  EXPECT_EQ(text(*open), "mine\n");
  EXPECT_EQ(read(b), "bar\r\n");
  boxes.answer(Answer::ok);
  trigger("mEditUndoReplaceInFiles");
  EXPECT_EQ(boxes.last().text, q("Nothing was replaced in files, or it has been brought back."));
  write("b.v", "foo foo\r\n");

  // Lines that were changed in the list go back to their files.
  fields("foo");
  findAll();
  frmDocument* const results = finder().list()->document();
  const std::string was = list();
  results->cmx->setText(QString::fromStdString(was).replace(q("b.v:1:1: foo foo"), q("b.v:1:1: foo, foo")));
  main->activate(results);
  inPreview(accept);
  trigger("mEditApplyEdited");
  EXPECT_EQ(read(b), "foo, foo\r\n");
  EXPECT_EQ(read(c), "foo!\n");

  // Also lines that were changed while the rows came.
  FindTask task;
  task.what = std::make_shared<const folder::FindText>("foo", text::SearchOptions());
  ResultList* const rows = ResultList::make(main->LoadNewDoc(), task);
  rows->append("b.v:1:1: foo\n");
  rows->document()->cmx->setText(QString::fromStdString(text(*rows->document())).replace(q(": foo\n"), q(": mine\n")));
  rows->append("c.v:1:1: foo\n");
  rows->end(q("2 hits"));
  QString error;
  const auto edited = rows->edited(rows->document()->cmx->model()->snapshot(), &error);
  ASSERT_EQ(edited.size(), 1u);
  EXPECT_EQ(edited[0].lines[0].second.first, "foo");
}

// M2: what was replaced in a window comes back when its window saved it, is closed, or has followed; else it is named.
TEST_F(FindInFiles, WhatWindowsSavedComesBackToo) {
  const auto save = [](frmDocument* document) { EXPECT_TRUE(document->SaveDocumment(document->CurrentFileName())); };
  const auto close = [this](frmDocument* document) {
    main->activate(document);
    main->mnuFileClose_Click();
    wait(1);
  };
  write("disk.v", "foo\n");
  std::map<std::string, frmDocument*> windows;
  for (const char* name : {"closed.v", "shown.v", "typed.v", "dropped.v", "unsaved.v", "mine.v"})
    windows[name] = open(name, "foo \xE4\r\n");
  for (const char* name : {"dropped.v", "mine.v"}) windows[name]->cmx->InsertText(q("my "), {0, 0});
  fields("foo", "bar");
  inPreview(accept);
  part<QPushButton>("filesReplace")->click();
  for (const char* name : {"closed.v", "shown.v", "typed.v", "mine.v"}) save(windows[name]);
  EXPECT_EQ(read(path("mine.v")), "my bar \xE4\r\n");
  windows["typed.v"]->cmx->InsertText(q("more "), {0, 0});
  close(windows["closed.v"]);
  close(windows["mine.v"]);
  windows["dropped.v"]->letGo();
  close(windows["dropped.v"]);
  newestReplaced() = {};   // as after a start: only the record knows

  boxes.answer(Answer::ok).answer(Answer::ok);
  trigger("mEditUndoReplaceInFiles");
  ASSERT_GE(boxes.boxes.size(), 2u);
  const QString question = boxes.boxes[boxes.boxes.size() - 2].text, left = boxes.last().text;
  EXPECT_TRUE(question.contains(q("4 files get the old text back."))) << question.toStdString();
  for (const QString& said : {question, left}) {
    for (const char* name : {"typed.v", "unsaved.v"})
      EXPECT_TRUE(said.contains(path(name) + q(": Its window has changes that are not saved"))) << said.toStdString();
    EXPECT_EQ(said.count(dir.path()), 2) << said.toStdString();
  }
  for (const char* name : {"closed.v", "shown.v", "dropped.v", "unsaved.v"}) EXPECT_EQ(read(path(name)), "foo \xE4\r\n") << name;
  EXPECT_EQ(read(path("disk.v")), "foo\n");
  EXPECT_EQ(read(path("mine.v")), "my foo \xE4\r\n");
  EXPECT_EQ(read(path("typed.v")), "bar \xE4\r\n");
  EXPECT_EQ(windows["shown.v"]->cmx->Text(), q("foo \u00E4\r\n"));
  EXPECT_FALSE(windows["shown.v"]->DocumentModified());
  windows["shown.v"]->inconsistentDate();   // asks nothing
  // Named, it can be brought back later.
  windows["typed.v"]->cmx->ExecuteCmd(Cmd::UNDO);
  save(windows["unsaved.v"]);
  boxes.answer(Answer::ok);
  trigger("mEditUndoReplaceInFiles");
  for (const char* name : {"typed.v", "unsaved.v"}) {
    EXPECT_EQ(read(path(name)), "foo \xE4\r\n") << name;
    EXPECT_EQ(windows[name]->cmx->Text(), q("foo \u00E4\r\n"));
    EXPECT_FALSE(windows[name]->DocumentModified());
  }
}

TEST_F(FindInFiles, TheWindowAsksAsTheUserWorks) {
  main->show();
  main->activateWindow();
  write("a.v", "foo\n");
  write("b.vhd", "foo\n");
  write("c.v", QByteArray("foo\0\n", 5));
  write("not_listed.v", "foo\n");
  write("all.f", "a.v\nb.vhd\nc.v\n");
  const auto lastLines = [this] { return QString::fromStdString(list()).section(q("\n\n"), 1).toStdString(); };
  main->resize(900, 700);
  trigger("mnuViewLog");
  settle(50);
  const auto* log = main->findChild<QDockWidget*>(q("logDock"));
  const int height = log->height();
  ASSERT_GT(height, 100);
  trigger("mEditFindInFiles");
  settle(50);
  EXPECT_EQ(log->height(), height);

  // A file list that is open is where the search begins, though nothing has shown it; masks count in it.
  main->folders().work().openList(path("all.f"), false);
  fields("foo");
  EXPECT_EQ(part<QComboBox>("filesWhere")->currentText(), q("File list all.f"));
  findAll();
  EXPECT_EQ(lastLines(), "a.v:1:1: foo\nb.vhd:1:1: foo\n");
  EXPECT_TRUE(QString::fromStdString(list()).contains(
      q("\nFiles: those of the file list ") + path("all.f") +
      q("; without binary ones\n2 hits in 2 files; 2 searched; 1 file skipped: 1 binary\n")))
      << list();
  part<QComboBox>("filesMasks")->setEditText(q("*.v"));
  part<QCheckBox>("filesBinary")->click();
  findAll();
  EXPECT_EQ(lastLines(), std::string("a.v:1:1: foo\nc.v:1:1: foo\0\n", 27));
  // Its switches are not those of the find bar.
  part<QCheckBox>("filesRegex")->click();
  EXPECT_FALSE(searchState().options.regex);
  // Without a hit the next text is typed; the first hit takes the keys to the list, where Esc ends a search.
  fields("none");
  findAll();
  EXPECT_EQ(part<QLabel>("filesStatus")->text(), q("0 hits; 2 files searched"));
  EXPECT_TRUE(finder().window().hasKeys());
  fields("foo");
  findAll();
  EXPECT_TRUE(finder().list()->document()->isAncestorOf(QApplication::focusWidget()));
  // Not all that could not be searched is named; how many more there are is said.
  FindTask task;
  task.what = std::make_shared<const folder::FindText>("foo", text::SearchOptions());
  task.where = FindTask::Where::files;
  for (int i = 0; i < 25; ++i) task.files.push_back("/gone/" + std::to_string(i));
  finder().start(task);
  ASSERT_TRUE(spinUntil([this] { return !finder().running(); }));
  EXPECT_TRUE(list().ends_with(std::string("\n  /gone/19: ") + std::strerror(ENOENT) + "\n  and 5 more\n\n")) << list();
  ResultList* const rows = ResultList::make(main->LoadNewDoc(), task);
  int cancelled = 0;
  QObject::connect(rows, &ResultList::cancelAsked, [&] { ++cancelled; });
  const auto escape = [&] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape); };
  escape();
  // What the user writes above stays, and the head is one still.
  rows->document()->cmx->InsertText(q("my note\n"), {0, 0});
  rows->end(q("0 hits"));
  EXPECT_EQ(text(*rows->document()).substr(0, 39), "my note\nFind in files: foo (no limit)\nF");
  EXPECT_TRUE(text(*rows->document()).ends_with("\n0 hits\n\n"));
  const auto& slot = rows->document()->cmx->model()->plainSlot;
  EXPECT_EQ(slot(text::LineNo(4)), int(ColorSlot::Comment));
  EXPECT_EQ(slot(text::LineNo(5)), int(ColorSlot::Text));
  escape();
  EXPECT_EQ(cancelled, 1);
}

// The change is in sight, however much stands before it and however narrow its column is.
TEST(ChangeDelegate, ShowsTheChange) {
  const QFontMetrics metrics{QFont()};
  const QString much(300, u'x');
  for (const int width : {90, 200, 400}) {
    const QStringList all = ChangeDelegate::fitted({much, q("foo"), much}, metrics, width);
    EXPECT_EQ(all[1], q("foo"));
    EXPECT_TRUE(all[0].startsWith(QChar(0x2026)) && all[2].endsWith(QChar(0x2026)));
    EXPECT_LE(metrics.horizontalAdvance(all.join(QString())), width);
    EXPECT_EQ(ChangeDelegate::fitted({much, q("foo"), {}}, metrics, width)[1], q("foo"));
    EXPECT_TRUE(much.startsWith(ChangeDelegate::fitted({{}, much, {}}, metrics, width)[1].first(3)));
  }
  EXPECT_EQ(ChangeDelegate::fitted({q("a "), q("foo"), q(" b")}, metrics, 200), QStringList({q("a "), q("foo"), q(" b")}));
}

class FindInFilesFromTheCommandLine : public ProcessRun {};

TEST_F(FindInFilesFromTheCommandLine, PrintsSortedLinesAndEndsAsGrepDoes) {
  for (const char* folder : {"d", "d-e"}) QDir(dir_.path()).mkdir(q(folder));
  write(q("d-e/x.v"), "a\xff foo\n");
  write(q("d/a.v"), "no\r\n\xc3\xa9 foo Foo\r\n");
  write(q("d/b.txt"), "foo\n");
  write(q("d/.gitignore"), "b.txt\n");
  QDir(dir_.path()).mkpath(q("r/.git"));   // a repository whose rules stand above the folder that is searched
  QDir(dir_.path()).mkpath(q("r/s/t"));
  write(q("r/.git/HEAD"), "ref: refs/heads/main\n");
  write(q("r/.gitignore"), "/s/t/left_out\n");
  write(q("r/s/t/left_out"), "above\n");
  write(q("r/s/t/a.v"), "above\n");
  struct Case {
    QStringList arguments;
    const char *output, *error;
    int status;
  };
  for (const Case& c : {Case{{q("foo"), q("d"), q("d-e")}, "d-e/x.v:1:4: a\xc3\xbf foo\nd/a.v:2:3: \xc3\xa9 foo Foo\n", "", 0},
                        Case{{q("Foo"), q("--case"), q("--mask=*.v")}, "d/a.v:2:7: \xc3\xa9 foo Foo\n", "", 0},
                        Case{{q("o\\b\\s+F|^f"), q("--regex"), q("--case"), q("--ignored"), q("d/")},
                             "d/a.v:2:5: \xc3\xa9 foo Foo\nd/b.txt:1:1: foo\n",
                             "",
                             0},
                        Case{{q("fo"), q("--word"), q("d")}, "", "", 1},
                        Case{{q("foo"), q("none"), q("d/b.txt")}, "d/b.txt:1:1: foo\n", "none: No such file or directory", 2},
                        Case{{q("above"), q("r/s/t")}, "r/s/t/a.v:1:1: above\n", "", 0},
                        Case{{q("("), q("--regex")}, "", "Error in the expression", 2},
                        Case{{q("foo"), q("--limit=0")}, "", "--limit needs a number above 0", 2}}) {
    SCOPED_TRACE(c.arguments.join(u' ').toStdString());
    QProcess& process = start(QStringList{q("--find")} + c.arguments);
    ASSERT_TRUE(process.waitForFinished(kPatience));
    EXPECT_EQ(process.readAllStandardOutput(), QByteArray(c.output));
    const QByteArray error = process.readAllStandardError();
    EXPECT_TRUE(*c.error ? error.contains(c.error) : error.isEmpty()) << error.toStdString();
    EXPECT_EQ(process.exitCode(), c.status);
  }
}
