// Runs of command strings: what folders under tests/e2e cannot show - undo, stopping, waiting, what a run leaves alone.
#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QKeyEvent>

#include "base/Program.h"
#include "document/Languages.h"
#include "language/ucCM.h"
#include "process/Process.h"
#include "script/CommandRun.h"
#include "script/Statements.h"
#include "tests/document/RunFixture.h"
#include "tests/support/OnceAProgramRuns.h"

using namespace Qt::StringLiterals;
using mCMXParser::Ending;

namespace {

// The started program waits until the test lets it go on.
struct Gate {
  QString wait() const { return startee() + u" await "_s + QString::fromStdString(folder / "go"); }
  void open() const { testing_files::writeRaw(folder / "go", {}); }
  testing_files::TempFolder folder;
};

void press(QWidget* widget, int key, const QString& text = {}) {
  QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
  QApplication::sendEvent(widget, &event);
}

}   // namespace

TEST(CommandRuns, IsOneUndoStepInEachText) {
  RunFrame frame;
  frame.cmx().setText(u"one\ntwo"_s);
  frame.logWindow->AppendLog(u"log\r\n"_s);
  EXPECT_EQ(frame.run(u"cmdSELECTALL\ncmdUPPERCASESELECTION\ncmdDOCUMENTEND\ncmdINSERTCHAR !\nECHO a\nECHO b"_s).ending,
            Ending::done);
  EXPECT_EQ(frame.cmx().GetLine(1), u"TWO!"_s);
  EXPECT_EQ(frame.logWindow->Text(), u"log\r\na\r\nb\r\n"_s);
  EXPECT_EQ(frame.shown, 1);
  frame.cmx().ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(frame.cmx().Text(), frame.cmx().EnableCRLF() ? u"one\r\ntwo"_s : u"one\ntwo"_s);
  frame.logWindow->cmx->ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(frame.logWindow->Text(), u"log\r\n"_s);
  frame.run(u"cmdDOCUMENTEND"_s);
  EXPECT_EQ(frame.shown, 1) << "a run that wrote nothing shows no log";
}

TEST(CommandRuns, UndoInsideARunReachesBehindItAndLeavesOneStep) {
  RunFrame frame;
  frame.cmx().ReplaceSel(u"typed"_s);
  EXPECT_EQ(frame.run(u"cmdINSERTCHAR 1\ncmdUNDO\ncmdUNDO\ncmdINSERTCHAR a\ncmdINSERTCHAR b"_s).ending, Ending::done);
  EXPECT_EQ(frame.cmx().Text(), u"ab"_s);
  frame.cmx().ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(frame.cmx().Text(), u""_s) << "what is left of the run is one step";
  EXPECT_FALSE(frame.cmx().CanUndo());
  frame.cmx().ExecuteCmd(Cmd::REDO);
  EXPECT_EQ(frame.cmx().Text(), u"ab"_s);

  frame.cmx().setModified(false);
  frame.run(u"cmdINSERTCHAR c\ncmdDELETEBACK"_s);
  EXPECT_FALSE(frame.document->DocumentModified()) << "what cancelled itself is told to those who show the state";
  {
    const text::UndoGroup group(frame.cmx().model()->document());   // as a recorded macro makes it
    frame.run(u"cmdINSERTCHAR c\ncmdDELETEBACK"_s);
    EXPECT_TRUE(frame.document->DocumentModified());
  }
  EXPECT_FALSE(frame.document->DocumentModified());
}

TEST(CommandRuns, FailureReportsInOrderAndClearsEveryFlag) {
  RunFrame frame;
  ScriptedDialogs dialogs;
  frame.cmx().setText(u"text"_s);
  QStringList order;
  frame.whenMacroIsShown = [&] { order << u"editor"_s + (gBusy() ? u" busy"_s : QString()); };
  dialogs.answer(Answer::ok, [&] { order << u"box"_s + (gBusy() ? u" busy"_s : QString()); });
  const auto outcome = mCMXParser::Run(2, 3, u"cmdINSERTCHAR x\r\n\r\nBAD $Title\r\ncmdINSERTCHAR y"_s);
  EXPECT_EQ(outcome.ending, Ending::invalid);
  EXPECT_EQ(outcome.line, 3);
  EXPECT_EQ(outcome.text, u"BAD "_s);
  EXPECT_EQ(order, (QStringList{u"editor busy"_s, u"box busy"_s}));
  EXPECT_EQ(frame.macros, QStringList{u"2/3 Invalid Command : BAD "_s});
  EXPECT_EQ(dialogs.last().text, u"Invalid Command : BAD "_s);
  EXPECT_EQ(dialogs.last().icon, Icon::exclamation);
  EXPECT_EQ(frame.logWindow->Text(), u"\r\nInvalid Command BAD "_s);
  EXPECT_EQ(frame.cmx().GetLine(0), u"xtext"_s) << "lines before it have taken effect";
  EXPECT_FALSE(gBusy());
  EXPECT_FALSE(mCMXParser::isRunning());
  EXPECT_TRUE(frame.cmx().Visible());
  EXPECT_EQ(frame.shown, 0);
  dialogs.answer(Answer::ok);
  mCMXParser::Run(0, 0, u"BAD"_s);
  EXPECT_EQ(frame.macros.size(), 1) << "text that is no macro opens no editor";
}

TEST(CommandRuns, VerbsWithoutAnArgumentRefuseOne) {
  RunFrame frame;
  ScriptedDialogs dialogs;
  int count = 0;
  for (const statements::Verb& verb : statements::verbs()) {
    if (*verb.argument) continue;
    dialogs.answer(Answer::ok);
    EXPECT_EQ(frame.run(QLatin1String(verb.name) + u" foo"_s).ending, Ending::invalid) << verb.name;
    ++count;
  }
  EXPECT_GT(count, 8);
  EXPECT_EQ(frame.run(u"LOGCLEAR "_s).ending, Ending::done) << "a blank is no argument";
}

TEST(CommandRuns, ASecondRunIsRefusedWhileOneWaits) {
  RunFrame frame;
  Ending second = Ending::done;
  bool busy = true;
  const Gate gate;
  const OnceAProgramRuns meanwhile([&] {
    second = frame.run(u"ECHO no"_s).ending;
    busy = gBusy();
    gate.open();
  });
  EXPECT_EQ(frame.run(u"SHELL "_s + gate.wait() + u"\nECHO after"_s).ending, Ending::done);
  EXPECT_EQ(second, Ending::refused);
  EXPECT_FALSE(busy) << "the editor is usable meanwhile";
  EXPECT_EQ(frame.logWindow->Text(), u"[startee: exit code 0]\r\nafter\r\n"_s);
}

TEST(CommandRuns, TheStepStaysWholeOverAWaitUnlessThePersonWorks) {
  for (const bool works : {false, true}) {
    RunFrame frame;
    frame.document->show();
    frame.cmx().setText(u"text"_s);
    const Gate gate;
    const OnceAProgramRuns meanwhile([&] {
      if (works) press(QApplication::focusWidget() ? QApplication::focusWidget() : frame.document.get(), Qt::Key_Shift);
      gate.open();
    });
    EXPECT_EQ(frame.run(u"cmdINSERTCHAR 1\nSHELLW "_s + gate.wait() + u"\ncmdINSERTCHAR 2"_s).ending, Ending::done);
    EXPECT_EQ(frame.cmx().GetLine(0), u"12text"_s);
    frame.cmx().ExecuteCmd(Cmd::UNDO);
    EXPECT_EQ(frame.cmx().GetLine(0), works ? u"1text"_s : u"text"_s);
    EXPECT_EQ(frame.panels[1], u"Normal completion."_s);
  }
}

TEST(CommandRuns, EscapeEndsTheWaitAndTheProgram) {
  RunFrame frame;
  frame.document->show();
  const Gate gate;   // stays closed
  const OnceAProgramRuns meanwhile([&] { press(frame.document.get(), Qt::Key_Escape); });
  const auto outcome = frame.run(u"SHELLW "_s + gate.wait() + u"\nECHO never"_s);
  EXPECT_EQ(outcome.ending, Ending::stopped);
  EXPECT_EQ(outcome.line, 1);
  EXPECT_TRUE(spinUntil([] { return process::Program::running().isEmpty(); }));
  EXPECT_EQ(frame.logWindow->Text(), u"[startee: exit code 143]\r\n"_s);
  EXPECT_TRUE(frame.cmx().Visible());
  EXPECT_FALSE(mCMXParser::isRunning());
}

TEST(CommandRuns, EscapeEndsALongRun) {
  for (const QString& commands :
       {u"cmdINSERTCHAR some text\n"_s.repeated(200000), u"cmdSETREPEATCOUNT 1000000\ncmdINSERTCHAR some text\n"_s}) {
    RunFrame frame;
    frame.document->show();
    bool typed = false;
    QObject timer;
    // What is typed while a run works is not let through; Esc is.
    QMetaObject::invokeMethod(
        &timer,
        [&] {
          press(frame.document.get(), Qt::Key_A, u"a"_s);
          press(frame.document.get(), Qt::Key_Escape);
          typed = true;
        },
        Qt::QueuedConnection);
    const auto outcome = frame.run(commands);
    EXPECT_TRUE(typed);
    EXPECT_EQ(outcome.ending, Ending::stopped);
    EXPECT_LT(frame.cmx().TextLength(), 9 * 200000);
    EXPECT_EQ(frame.cmx().Text().remove(u"some text"_s), u""_s);
  }
}

// A search and a report over a long text: the window lives on, the status bar says how far it is.
TEST(CommandRuns, EscapeEndsAStatementThatTakesLong) {
  RunFrame frame;
  frame.document->show();
  const QByteArray text = QByteArray("ab ").repeated(4 << 20);
  frame.cmx().model()->replaceAll(text::Snapshot(text.toStdString()), {});
  for (const QString& statement : {u"cmdREPLACEALLINBUFFER"_s, u"USAGE a -v"_s}) {
    SCOPED_TRACE(statement.toStdString());
    QObject later;
    QMetaObject::invokeMethod(
        &later, [&] { press(frame.document.get(), Qt::Key_Escape); }, Qt::QueuedConnection);
    QStringList told;
    setStatusSink([&](const QString& words) { told << words; });
    const auto outcome = frame.run(u"cmdSETFINDTEXT a\ncmdSETREPLACETEXT b\n"_s + statement + u"\nECHO never"_s);
    setStatusSink({});
    EXPECT_EQ(outcome.ending, Ending::stopped);
    EXPECT_EQ(outcome.line, 3);
    EXPECT_TRUE(!told.isEmpty() && told.first().startsWith(u"Searching..."_s) && told.first().contains(u"Esc"_s))
        << told.join(u'|').toStdString();
    EXPECT_FALSE(told.last().contains(u"Searching"_s)) << "it does not search any more";
    EXPECT_EQ(frame.cmx().TextLength(), text.size());
    EXPECT_FALSE(frame.cmx().Modified());
  }
  EXPECT_FALSE(frame.logWindow->Text().contains(u"never"_s));
}

TEST(CommandRuns, ClosingTheDocumentEndsTheRun) {
  RunFrame frame;
  const Gate gate;
  const OnceAProgramRuns meanwhile([&] {
    frame.active = nullptr;
    frame.document.reset();
    gate.open();
  });
  const auto outcome = frame.run(u"cmdINSERTCHAR x\nSHELL "_s + gate.wait() + u"\ncmdINSERTCHAR y"_s);
  EXPECT_EQ(outcome.ending, Ending::stopped);
  EXPECT_EQ(outcome.line, 2);
  EXPECT_FALSE(gBusy());
}

TEST(CommandRuns, StateDoesNotOutliveARun) {
  RunFrame frame;
  ScriptedDialogs dialogs;
  frame.cmx().setText(u"one two"_s);
  dialogs.answerInput(u"answer"_s).answerInput(std::nullopt);
  frame.run(u"ECHO $Input(What is it?)\nECHO <$Input(Again)>\ncmdWORDRIGHTEXTEND\ncmdSELGET\nLOGEDIT"_s);
  EXPECT_EQ(dialogs.boxes[0].text, u"What is it?"_s);
  EXPECT_EQ(dialogs.boxes[0].title, u"Input Data"_s);
  EXPECT_EQ(frame.logWindow->Text(), u"answer\r\n<>\r\n"_s) << "cancelling is an empty answer";
  frame.run(u"ECHO $Output0\ncmdDOCUMENTEND\ncmdSELSET\ncmdINSERTCHAR !"_s);
  EXPECT_TRUE(frame.logWindow->Text().endsWith(u"$Output0\r\n"_s));
  EXPECT_EQ(frame.cmx().GetLine(0), u"one two!"_s);
}

TEST(CommandRuns, UntitledDocumentsHaveNoPathAndReadOnlyFilesSaySo) {
  RunFrame frame;
  frame.document->setUntitled(u"Untitled 3.x.y"_s, u"/some/folder"_s);
  QString text = u"$Name|$Path|$Title|$Stem"_s;
  mCMXParser::SubstituteVariables(text);
  EXPECT_EQ(text, u"||Untitled 3.x.y|Untitled 3"_s);
  const QStringList lines = mCMXParser::FileInformation().split(u"\r\n"_s);
  EXPECT_EQ(lines[0], u"Path          : /some/folder/Untitled 3.x.y"_s);
  EXPECT_EQ(lines[1], u"Last Modified : "_s);
  EXPECT_FALSE(lines.contains(u"Read Only"_s));
  testing_files::TempFolder folder;
  testing_files::writeRaw(folder / "f.txt", "text");
  const QString path = QString::fromStdString(folder / "f.txt");
  QFile::setPermissions(path, QFile::ReadOwner);
  frame.openFile(path);
  EXPECT_TRUE(mCMXParser::FileInformation().endsWith(u"\r\nRead Only"_s));
}

TEST(CommandRuns, TheUsersSearchAndARunLeaveEachOtherAlone) {
  RunFrame frame;
  frame.cmx().setText(u"Foo foo"_s);
  searchState() = {};
  searchState().findText = u"mine"_s;
  searchState().options.matchCase = searchState().options.wholeWord = true;
  frame.run(u"USAGE fo -c\ncmdSETFINDTEXT FO\ncmdSETREPLACETEXT x\ncmdREPLACEALLINBUFFER"_s);
  EXPECT_EQ(frame.logWindow->Text(), u"2 occurrence(s) of 'fo'\r\n"_s);
  EXPECT_EQ(frame.cmx().GetLine(0), u"xo xo"_s);
  EXPECT_EQ(searchState().findText, u"mine"_s);
  EXPECT_TRUE(searchState().options.matchCase && searchState().options.wholeWord);
  searchState() = {};
}

TEST(CommandRuns, UsageOfALongLineListsWhatStandsAroundEachHit) {
  RunFrame frame;
  frame.cmx().setText(u"// \u00E4\n"_s + QString(40000, u'x') + u" end"_s);
  frame.run(u"USAGE x -v -sc"_s);
  EXPECT_LT(frame.logWindow->Text().size(), 16 << 20);
  EXPECT_EQ(frame.logWindow->cmx->LineCount(), 40002);
  EXPECT_TRUE(frame.logWindow->cmx->GetLine(39999).startsWith(u"2,39999: \u2026xxx"_s));
  EXPECT_TRUE(frame.logWindow->cmx->GetLine(39999).endsWith(u"x end"_s));
}

TEST(CommandRuns, SaveAllOutlivesADocumentThatGoesWhileABoxAsks) {
  RunFrame frame;
  testing_files::TempFolder folder;
  auto second = std::make_unique<frmDocument>(), third = std::make_unique<frmDocument>();
  frame.open << second.get() << third.get();
  for (const char* name : {"a", "b", "c"}) {
    testing_files::writeRaw(folder / name, "text\n");
    frame.active = frame.open[name[0] - 'a'];
    frame.openFile(QString::fromStdString(folder / name));
    frame.cmx().ReplaceSel(u"x"_s);
  }
  frame.active = frame.document.get();
  testing_files::writeRaw(folder / "b", "changed by others\n");
  ScriptedDialogs boxes;
  boxes.answer(Answer::no, [&] {
    second.reset();
    third.reset();
    frame.open = {frame.document.get()};
  });
  EXPECT_EQ(frame.run(u"SAVEALL"_s).text, u"b was not saved"_s);
  EXPECT_EQ(testing_files::readRaw(folder / "a") + testing_files::readRaw(folder / "c"), "xtext\ntext\n");
}

TEST(CommandRuns, SaveAllTakesAFileThatWasBegun) {
  RunFrame frame;
  testing_files::TempFolder folder;
  testing_files::writeRaw(folder / "a", "text\n");
  frame.openFile(QString::fromStdString(folder / "a"));
  frmDocument begun, untitled;
  frame.open << &untitled << &begun;
  begun.beginFile(QString::fromStdString(folder / "new"));
  for (frmDocument* document : {&begun, &untitled}) document->cmx->ReplaceSel(u"x"_s);
  EXPECT_EQ(frame.run(u"SAVEALL"_s).ending, Ending::done);
  EXPECT_EQ(testing_files::readRaw(folder / "new"), "x");
  EXPECT_EQ(frame.active, frame.document.get()) << "the run goes on where it was";
}

TEST(CommandRuns, AMacroSavesBeforeItStartsAProgram) {
  ucCM manager;
  manager.Languages()->Add(u"L"_s);
  ucCM* const before = &languages();
  setLanguages(&manager);
  RunFrame frame;
  testing_files::TempFolder folder;
  testing_files::writeRaw(folder / "a.v", "text\n");
  frame.openFile(QString::fromStdString(folder / "a.v"));
  const QString commands = u"SHELLW cat $Name"_s;
  frame.cmx().ReplaceSel(u"1"_s);
  frame.run(commands);
  EXPECT_TRUE(frame.logWindow->Text().startsWith(u"text"_s)) << "what the user types as a command says SAVE itself";
  const auto macroSees = [&] {
    frame.logWindow->Clear();
    mCMXParser::Run(1, 1, commands);
    return frame.logWindow->Text().section(u'\r', 0, 0);
  };
  EXPECT_EQ(macroSees(), u"1text"_s);
  frame.cmx().ReplaceSel(u"2"_s);
  frame.saves = false;
  EXPECT_EQ(macroSees(), u""_s) << "what was not saved starts nothing";
  EXPECT_EQ(frame.panels[1], u"The command string was stopped: the document was not saved"_s);
  runs::setSavesBeforePrograms(false);
  EXPECT_EQ(macroSees(), u"1text"_s);
  runs::setSavesBeforePrograms(true);
  setLanguages(before);
}
