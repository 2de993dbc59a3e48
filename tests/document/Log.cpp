// The log window: what is written there, what stays, and the ways back to the texts.
#include <gtest/gtest.h>

#include <QAction>
#include <QElapsedTimer>
#include <QFile>

#include "control/edit/TextModel.h"
#include "document/Messages.h"
#include "process/Process.h"
#include "tests/document/RunFixture.h"
#include "tests/support/files/SaveSweep.h"

using namespace Qt::StringLiterals;
using Stream = frmLog::Stream;

namespace {

void doubleClick(frmLog& log, qint64 line, qint64 column) {
  log.cmx->SetSel({line, column, line, column, false});
  log.cmx_DblClick();
}

}   // namespace

TEST(Log, StreamsBeginTheirOwnLines) {
  frmLog log;
  log.AppendLog(u"a"_s);
  log.AppendLog(u"b\n"_s);
  log.AppendLog(u"out"_s, Stream::output);
  log.AppendLog(u"err\n"_s, Stream::errors);
  log.AppendLog(u"end"_s);
  EXPECT_EQ(log.Text(), u"ab\r\nout\r\nerr\r\nend"_s);
  EXPECT_EQ(log.streamOf(0), Stream::text);
  EXPECT_EQ(log.streamOf(1), Stream::output);
  EXPECT_EQ(log.streamOf(2), Stream::errors);
  EXPECT_EQ(log.streamOf(3), Stream::text);
  for (const int line : {1, 2}) EXPECT_EQ(log.cmx->model()->plainSlot(text::LineNo(line)) == int(ColorSlot::String), line == 2);
  log.cmx->InsertText(u"new\r\nlines\r\n"_s, {1, 0});   // lines of later hand have none, the others keep theirs
  EXPECT_EQ(log.streamOf(0), Stream::text);
  EXPECT_EQ(log.streamOf(4), Stream::errors);
  log.cmx->ReplaceText({}, {0, 0, 1, 0, false});
  EXPECT_EQ(log.streamOf(3), Stream::errors);
  log.Clear();
  EXPECT_EQ(log.streamOf(0), std::nullopt);
  EXPECT_EQ(log.streamOf(99), std::nullopt);
}

TEST(Log, WhatCameWhileItWasHiddenIsInSightUnlessTheUserReadsElsewhere) {
  frmLog log;
  log.resize(400, 120);
  const EditorHost& host = log.cmx->editor().host();
  const auto isInSight = [&](qint64 line) { return host.topLine() <= line && line < host.topLine() + host.visibleLines(); };
  log.show();
  log.hide();
  for (int n = 0; n < 200; ++n) log.AppendLog(u"line %1\n"_s.arg(n));
  log.AppendLog(u"Error: no such file\n"_s, Stream::errors);
  log.show();
  EXPECT_TRUE(isInSight(200)) << host.topLine();
  log.hide();
  log.cmx->SetSel({3, 0, 3, 0, false});
  log.AppendLog(u"more\n"_s);
  log.show();
  EXPECT_TRUE(isInSight(3)) << host.topLine();
}

TEST(Log, L1_SizeIsLimitedAndSaysSo) {
  frmLog log;
  log.setSizeLimit(2000);
  for (int n = 0; n < 500; ++n) log.AppendLog(u"line %1\n"_s.arg(n));
  EXPECT_LE(log.Text().size(), 2300);
  EXPECT_TRUE(log.Text().endsWith(u"line 499\r\n"_s));
  const QString notice = log.cmx->GetLine(0);
  const qint64 kept = log.cmx->LineCount() - 2;   // without the notice and the empty end
  EXPECT_EQ(notice, u"[%1 earlier lines dropped]"_s.arg(500 - kept));
  EXPECT_EQ(log.cmx->GetLine(1), u"line %1"_s.arg(500 - kept));
}

TEST(Log, L1_AProgramThatNeverEndsItsLineIsLimitedToo) {
  frmLog log;
  log.setSizeLimit(200'000);
  int error = 0;
  auto* const program = process::Program::start({"/bin/sh", "-c", "head -c 800000 /dev/zero"}, 1, &error);
  ASSERT_NE(program, nullptr);
  qint64 most = 0;
  QObject::connect(&log, &frmLog::appended, [&] { most = std::max<qint64>(most, log.cmx->model()->snapshot().size().value); });
  log.watch(*program);
  EXPECT_TRUE(spinUntil([&] { return !log.programRuns(); }));
  EXPECT_LT(most, 230'000);
  EXPECT_EQ(log.cmx->GetLine(0), u"[1 earlier line dropped]"_s);
  EXPECT_TRUE(log.Text().endsWith(u"<U+0000>\r\n[sh: exit code 0]\r\n"_s)) << qPrintable(log.Text().right(100));
}

// Whatever is written, by the command language or by a program, a line of the log shows what it holds.
TEST(Log, L1_ControlCharactersAreEscapedAndTextStaysOut) {
  RunFrame frame;
  testing_files::TempFolder folder;
  const std::string name = "two\nlines\xE2\x80\xAE.v";
  testing_files::writeRaw(folder / name, "secret of the document\n");
  bool loaded = false;
  const QString path = toQString(folder / name);
  frame.active->LoadDocument(path, loaded);
  ASSERT_TRUE(loaded);
  frame.active->setFile(path);
  frame.cmx().InsertText(u"typed and never saved"_s, {0, 0});
  frame.run(u"ECHO a\x1B[2Jb\nFILEINFO\ncmdSELECTALL\ncmdUPPERCASESELECTION\nSHELLW %1 out \"c\a\u200Bd\" err \"e\u202Ef\"\n"_s.arg(
      startee()));
  const QString log = frame.logWindow->Text();
  for (const QString& part : {u"a<U+001B>[2Jb"_s, u"two\\nlines<U+202E>.v"_s, u"c<U+0007><U+200B>d"_s, u"e<U+202E>f"_s})
    EXPECT_TRUE(log.contains(part)) << qPrintable(part) << "\n" << qPrintable(log);
  for (const QChar c : log) EXPECT_TRUE(c.isPrint() || c == u'\r' || c == u'\n' || c == u'\t') << int(c.unicode());
  for (const QString& part : {u"secret"_s, u"SECRET"_s, u"typed"_s, u"TYPED"_s})
    EXPECT_FALSE(log.contains(part)) << qPrintable(log);
}

TEST(Log, ProgramOutputComesByLinesAndWithItsEnd) {
  frmLog log;
  int error = 0;
  auto* const program =
      process::Program::start({startee().toStdString(), "out", "\xC3\xA9 one", "err", "two", "exit", "4"}, 1, &error);
  ASSERT_NE(program, nullptr);
  log.watch(*program);
  EXPECT_TRUE(log.stopAction->isEnabled());
  EXPECT_TRUE(spinUntil([&] { return !log.programRuns(); }));
  EXPECT_TRUE(log.Text().contains(u"\u00e9 one\r\n"_s) && log.Text().contains(u"two\r\n"_s));
  EXPECT_TRUE(log.Text().endsWith(u"[startee: exit code 4]\r\n"_s));
  EXPECT_FALSE(log.stopAction->isEnabled());
  log.Clear();
  auto* const open =
      process::Program::start({"/bin/sh", "-c", "printf '\\303'; sleep 0.6; printf '\\251 tail'; sleep 300"}, 1, &error);
  log.watch(*open);
  EXPECT_TRUE(spinUntil([&] { return log.Text() == u"\u00e9 tail"_s; })) << "an open line is shown, a character never in halves";
  log.stopAction->trigger();
  EXPECT_TRUE(spinUntil([&] { return !log.programRuns(); }));
  EXPECT_TRUE(log.Text().endsWith(u"[sh: exit code 143]\r\n"_s)) << qPrintable(log.Text());
}

TEST(Log, DigitsLeadToTheLineOfTheDocument) {
  RunFrame frame;
  frame.cmx().setText(u"a\nb\nc"_s);
  frame.logWindow->AppendLog(u"2: b\n0 4 x2 9999999999999999999999\n\n"_s);
  const auto selected = [&] { return frame.cmx().GetSel(true).StartLineNo; };
  frame.cmx().SetSel({0, 0, 0, 0, false});
  for (const int column : {0, 2, 4, 6}) {   // 0, too large, mixed, out of range
    doubleClick(*frame.logWindow, 1, column);
    EXPECT_EQ(frame.cmx().GetSel(true).IsEmpty(), true) << column;
  }
  doubleClick(*frame.logWindow, 2, 0);   // no word
  EXPECT_TRUE(frame.cmx().GetSel(true).IsEmpty());
  doubleClick(*frame.logWindow, 0, 0);
  EXPECT_EQ(selected(), 1);
  EXPECT_EQ(frame.cmx().SelText().left(1), u"b"_s);
}

TEST(Log, MessagesOfToolsAreUnderstood) {
  testing_files::TempFolder folder;
  for (const char* name : {"top.v", "my file.v", "a(1).v", "10"}) testing_files::writeRaw(folder / name, "x\n");
  testing_files::writeRaw(folder / "C:x.v", "x\n");
  const QStringList folders{QString::fromStdString(folder.path())};
  struct Case {
    QString line, file;
    qint64 at, column;
  };
  const std::vector<Case> cases{
      {u"top.v:12: syntax error"_s, u"top.v"_s, 12, 0},
      {u"top.v:12:7: error: x"_s, u"top.v"_s, 12, 7},
      {u"./top.v:3: warning"_s, u"top.v"_s, 3, 0},
      {u"%Error: top.v:4:2: Unsupported"_s, u"top.v"_s, 4, 2},
      {u"** Error: top.v(15): near \"end\""_s, u"top.v"_s, 15, 0},
      {u"** Error: (vlog-13069) top.v(15): near"_s, u"top.v"_s, 15, 0},
      {u"top.v(3,9): error C2065"_s, u"top.v"_s, 3, 9},
      {u"  File \"top.v\", line 8, in x"_s, u"top.v"_s, 8, 0},
      {u"ERROR: [Synth 8-2715] syntax error near ) [top.v:23]"_s, u"top.v"_s, 23, 0},
      {u"In file included from top.v:3,"_s, u"top.v"_s, 3, 0},
      {u"top.v:2:77:@0ms:(assertion failure): boom"_s, u"top.v"_s, 2, 77},
      {u"my file.v:5: error"_s, u"my file.v"_s, 5, 0},
      {u"Error: my file.v:5: x"_s, u"my file.v"_s, 5, 0},
      {u"at \"my file.v\":5"_s, u"my file.v"_s, 5, 0},
      {u"a(1).v:6: x"_s, u"a(1).v"_s, 6, 0},
      {u"C:x.v:7: x"_s, u"C:x.v"_s, 7, 0},
      {u"missing.v:12: x"_s, {}, 0, 0},
      {u"12:30:45 done"_s, {}, 0, 0},
      {u"http://localhost:8080/"_s, {}, 0, 0},
      {u"top.v:0: x"_s, {}, 0, 0},
      {u"top.v:99999999999999999999: x"_s, {}, 0, 0},
      {u"no place"_s, {}, 0, 0},
      {QString(100000, u'(') + u"1)"_s, {}, 0, 0},
  };
  QElapsedTimer time;
  time.start();
  EXPECT_FALSE(MessageFinder(folders).find(u"a:1 "_s.repeated(100'000)));
  EXPECT_LT(time.elapsed(), 500) << "numbers without end";
  for (const Case& c : cases) {
    const auto place = MessageFinder(folders).find(c.line);
    ASSERT_EQ(place.has_value(), !c.file.isEmpty()) << qPrintable(c.line.left(100));
    if (!place) continue;
    EXPECT_EQ(place->file, folders[0] + u'/' + c.file) << qPrintable(c.line);
    EXPECT_EQ(place->line, c.at) << qPrintable(c.line);
    EXPECT_EQ(place->column, c.column) << qPrintable(c.line);
  }
}

TEST(Log, ErrorsAreMarkedInTheWordsOfEachTool) {
  for (const auto& [line, isError] :
       std::initializer_list<std::pair<const char16_t*, bool>>{{u"a.vhd:3:2: no declaration for \"x\"", true},
                                                               {u"rtl/a b.VHDL:3:2:error: x", true},
                                                               {u"a.vhd:3:2:warning: x [-Wno-wait]", false},
                                                               {u"t.vhd:2:77:@0ms:(assertion failure): boom", true},
                                                               {u"t.vhd:2:77:@0ms:(report note): fine", false},
                                                               {u"a.v:3:2: x", false},
                                                               {u"a.v:2: Error: x", true},
                                                               {u"0 error", false},
                                                               {u"UVM_ERROR tb/env.sv(5) @ 1000: x", true},
                                                               {u"UVM_FATAL :    0", false},
                                                               {u"UVM_ERROR :   10", true},
                                                               {u"xmvlog: *E,EXPLPA (a.v,23|14): x", true},
                                                               {u"@E: CG285 :\"a.sv\":48:4:48:9|x", true},
                                                               {u"terror", false}}) {
    frmLog log;
    log.AppendLog(QString::fromUtf16(line) + u'\n', Stream::output);
    EXPECT_EQ(log.streamOf(0), isError ? Stream::errors : Stream::output) << qPrintable(QString::fromUtf16(line));
  }
}

TEST(Log, WalksFromMessageToMessage) {
  RunFrame frame;
  testing_files::TempFolder folder;
  testing_files::writeRaw(folder / "top.v", "one\ntwo\nthree\n");
  const QString path = QString::fromStdString(folder / "top.v");
  frame.logWindow->AppendLog(u"start\n%1:3: first\nnothing\n%1:1: second\nmissing.v:1: x\n"_s.arg(path));
  frame.logWindow->cmx->ExecuteCmd(Cmd::DOCUMENTSTART);
  const auto line = [&] { return frame.cmx().GetSel(true).StartLineNo; };
  EXPECT_TRUE(frame.logWindow->nextMessage());
  EXPECT_EQ(frame.opened.last(), path);
  EXPECT_EQ(line(), 2);
  EXPECT_TRUE(frame.logWindow->nextMessage());
  EXPECT_EQ(line(), 0);
  EXPECT_FALSE(frame.logWindow->nextMessage());
  EXPECT_TRUE(frame.logWindow->previousMessage());
  EXPECT_EQ(line(), 2);
  EXPECT_FALSE(frame.logWindow->previousMessage());
  doubleClick(*frame.logWindow, 3, path.size() + 1);   // on the number behind the file: that file, not the active document
  EXPECT_EQ(line(), 0);
  frame.cmx().InsertText(u"changed"_s, {1, 0});
  EXPECT_TRUE(frame.logWindow->previousMessage());
  EXPECT_EQ(line(), 2);
  EXPECT_EQ(frame.opened.size(), 1) << "a text that is open is only brought forward, modified or not";
}

TEST(Log, WhatAProgramPrintedIsWalkedFromItsBeginning) {
  RunFrame frame;
  testing_files::TempFolder folder;
  testing_files::writeRaw(folder / "top.v", "one\ntwo\nthree\n");
  const QString path = QString::fromStdString(folder / "top.v");
  frame.logWindow->AppendLog(u"%1:1: of an earlier program\n"_s.arg(path));
  frame.logWindow->cmx->ExecuteCmd(Cmd::DOCUMENTEND);
  frame.run(u"SHELLW %1 err %2:2:x out %2:3:x"_s.arg(startee(), path));
  EXPECT_TRUE(frame.logWindow->nextMessage());
  EXPECT_NE(frame.cmx().GetSel(true).StartLineNo, 0);
}

TEST(Log, HitsOfUsageAreWalkedAndNothingIsSelected) {
  RunFrame frame;
  frame.cmx().setText(u"one\ntwo\n  two two\n"_s);
  frame.run(u"USAGE two -v"_s);
  frame.logWindow->cmx->ExecuteCmd(Cmd::DOCUMENTSTART);
  QStringList places;
  while (frame.logWindow->nextMessage()) {
    const CmRange at = frame.cmx().GetSel(true);
    EXPECT_TRUE(at.IsEmpty()) << "the next letter must not replace the line";
    places << u"%1,%2"_s.arg(at.StartLineNo).arg(at.StartColNo);
  }
  EXPECT_EQ(places, (QStringList{u"1,0"_s, u"2,2"_s, u"2,6"_s}));
}

TEST(Log, S2_S5_ASaveLeavesTheOldFileOrTheNewOne) {
  ScriptedDialogs dialogs;
  dialogs.answerAny(Answer::ok);
  frmLog log;
  log.AppendLog(u"a new line\n"_s);
  testing_files::SweptSave what;
  what.old = "the old log\r\n";
  what.prepare = [&](const std::string&) { dialogs.boxes.clear(); };
  what.save = [&](const std::string& path) { return log.SaveDocumment(QString::fromStdString(path)); };
  what.told = [&] {
    EXPECT_TRUE(dialogs.last().title.startsWith(u"Saving /"_s) && dialogs.last().text.startsWith(u"File Save Error : "_s));
    return dialogs.last().text.toStdString();
  };
  what.isFresh = [](const std::string& bytes) { return bytes == "a new line\r\n"; };
  testing_files::sweepSave(what);
}

TEST(Log, SavesAndInsertsFiles) {
  ScriptedDialogs dialogs;
  testing_files::TempFolder folder;
  frmLog log;
  log.AppendLog(u"a\nb\n"_s);
  EXPECT_TRUE(log.SaveDocumment(QString::fromStdString(folder / "x.log")));
  EXPECT_EQ(testing_files::readRaw(folder / "x.log"), "a\r\nb\r\n");
  testing_files::writeRaw(folder / "in", "1\n\x02\n");
  log.cmx->ExecuteCmd(Cmd::DOCUMENTEND);
  dialogs.answerOpen({QString::fromStdString(folder / "in")});
  EXPECT_TRUE(log.InsertFile());
  EXPECT_EQ(log.Text(), u"a\r\nb\r\n1\r\n<U+0002>\r\n"_s);
  dialogs.answerOpen({}).answerOpen({QString::fromStdString(folder / "no/x.log")}).answer(Answer::ok);
  EXPECT_FALSE(log.InsertFile());
  EXPECT_FALSE(log.InsertFile());
  EXPECT_TRUE(dialogs.last().text.startsWith(u"File Open Error : "_s)) << qPrintable(dialogs.last().text);
}
