// Batch mode and printing from the command line as processes: what is refused is told, ends with its status and changes nothing.
#include "tests/app/ProcessFixture.h"

namespace {

class BatchRuns : public ProcessRun {
 protected:
  // Status and what stood on standard error of a batch run in the test's folder.
  int batch(const QStringList& arguments, QString* error) {
    QProcess& process = start(QStringList{q("--batch")} + arguments);
    process.closeWriteChannel();
    const bool ended = process.waitForFinished(kPatience);
    *error = QString::fromUtf8(process.readAllStandardError());
    return ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
  }
};

TEST_F(BatchRuns, WhatIsMissingIsToldAndNothingRuns) {
  write(q("a.v"), "text\n");
  write(q("empty.ini"), "");
  QDir(dir_.path()).mkdir(q("folder"));
  struct Case {
    QStringList arguments;
    const char* error;
  };
  const QString upper = q("cmdSELECTALL\ncmdUPPERCASESELECTION");
  for (const Case& c : {Case{{q("--definitions"), q("none.ini"), q("--command"), upper},
                             "zelkor: the definitions none.ini cannot be read: No such file"},
                        Case{{q("--definitions=folder"), q("--command"), upper}, "zelkor: the definitions folder cannot be read: "},
                        Case{{q("--macro"), q("Verilog/None")}, "zelkor: There is no macro Verilog/None (give LANGUAGE/NAME)"},
                        Case{{q("--macro"), q("None")}, "zelkor: There is no macro None"},
                        Case{{q("--definitions"), q("empty.ini"), q("--macro"), q("Verilog/Any")}, "zelkor: There is no macro"},
                        Case{{q("--script"), q("none.txt")}, "zelkor: none.txt: No such file"},
                        Case{{q("--script"), q("folder")}, "zelkor: folder: "},
                        Case{{q("--output"), q("a.v/sub"), q("--command"), upper}, "a.v/sub: Not a directory"}}) {
    SCOPED_TRACE(c.arguments.join(u' ').toStdString());
    const bool into = c.arguments.first() == q("--output");
    QString error;
    EXPECT_EQ(batch(c.arguments + (into ? QStringList{} : QStringList{q("--save")}) + QStringList{q("a.v")}, &error), 2);
    EXPECT_TRUE(error.contains(q(c.error))) << error.toStdString();
    EXPECT_EQ(read(q("a.v")), "text\n");
  }
  QProcess& printing = start({q("--print-pdf"), q("out.pdf"), q("--definitions"), q("none.ini"), q("a.v")});
  ASSERT_TRUE(printing.waitForFinished(kPatience));
  EXPECT_EQ(printing.exitCode(), 2);
  EXPECT_TRUE(printing.readAllStandardError().contains("the definitions none.ini cannot be read"));
  EXPECT_EQ(read(q("out.pdf")), "(none)");
}

TEST_F(BatchRuns, ScriptsAndMacrosRun) {
  write(q("a.v"), "text\n");
  write(q("b.v"), "text\n");
  write(q("up.txt"), "cmdSELECTALL\ncmdUPPERCASESELECTION\n");
  QString error;
  EXPECT_EQ(batch({q("--save"), q("--script"), q("up.txt"), q("a.v"), q("none.v"), q("b.v")}, &error), 2) << "the worst of all";
  EXPECT_TRUE(error.contains(q("none.v"))) << error.toStdString();
  EXPECT_EQ(read(q("a.v")) + read(q("b.v")), "TEXT\nTEXT\n") << "one that cannot be read keeps no other back";
}

TEST_F(BatchRuns, TheOutputFolderLosesNothing) {
  QDir(dir_.path()).mkpath(q("out"));
  write(q("a.v"), "text\n");
  write(q("out/a.v"), "older\n");
  const QStringList upper{q("--command"), q("cmdSELECTALL\ncmdUPPERCASESELECTION\nSAVE")};
  QString error;
  EXPECT_EQ(batch(QStringList{q("--output"), q("out")} + upper + QStringList{q("a.v")}, &error), 2);
  EXPECT_EQ(read(q("out/a.v")), "older\n") << error.toStdString();
  EXPECT_EQ(batch(QStringList{q("--output"), q("out"), q("--replace")} + upper + QStringList{q("a.v")}, &error), 0)
      << error.toStdString();
  EXPECT_EQ(read(q("out/a.v")), "TEXT\n");
  EXPECT_EQ(batch(QStringList{q("--output"), q("."), q("--replace")} + upper + QStringList{q("a.v")}, &error), 2);
  EXPECT_EQ(read(q("a.v")), "text\n") << "SAVE writes where the output goes; a source is never replaced";
}

TEST_F(BatchRuns, NeedsNoDisplayAndGivesItsOwnToNobody) {
  write(q("a.v"), "text\n");
  environment_.insert(q("DISPLAY"), q(":987"));
  for (const char* platform : {"", "xcb"}) {
    environment_.remove(q("QT_QPA_PLATFORM"));
    if (*platform) environment_.insert(q("QT_QPA_PLATFORM"), q(platform));
    QProcess& process = start({q("--command"), q("LOGCLEAR\nSHELLW sh -c \"echo [$QT_QPA_PLATFORM]\""), q("--batch"), q("a.v")});
    ASSERT_TRUE(process.waitForFinished(kPatience));
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
    EXPECT_EQ(process.readAllStandardOutput(), QByteArray("[") + platform + "]\n[sh: exit code 0]\n");
  }
}

TEST_F(BatchRuns, ReportsOverSeveralFilesNameThem) {
  write(q("a.v"), "wire w;\n");
  write(q("b.v"), "x\nw w\n");
  environment_.remove(q("XDG_RUNTIME_DIR"));   // of which the library would tell
  QProcess& process =
      start({q("--batch"), q("--command"), q("USAGE w -v -b\nSHELLW no-such-program\nNONSENSE"), q("a.v"), q("b.v")});
  ASSERT_TRUE(process.waitForFinished(kPatience));
  EXPECT_EQ(process.readAllStandardOutput(),
            "a.v:1,5: wire w;\na.v: 1 occurrence(s) of 'w'\na.v: no-such-program: No such file or directory\n"
            "b.v:2,0: w w\nb.v:2,2: w w\nb.v: 2 occurrence(s) of 'w'\nb.v: no-such-program: No such file or directory\n");
  EXPECT_EQ(process.readAllStandardError(),
            "a.v: Command Failure\na.v: Invalid Command : NONSENSE\nb.v: Command Failure\nb.v: Invalid Command : NONSENSE\n")
      << "nothing else, and nothing twice";
}

TEST_F(BatchRuns, NothingPassesFromFileToFile) {
  write(q("a.v"), "A\n");
  write(q("b.v"), "B\n");
  QString error;
  EXPECT_EQ(
      batch({q("--save"), q("--command"),
             q("cmdTOGGLECASESENSITIVE\ncmdSETREPLACETEXT x\ncmdSETFINDTEXT b\ncmdREPLACEALLINBUFFER\nECHO $Title\nLOGTOTEXT"),
             q("a.v"), q("b.v")},
            &error),
      0)
      << error.toStdString();
  EXPECT_EQ(read(q("a.v")) + read(q("b.v")), "a.v\nA\nb.v\nB\n");
}

TEST_F(BatchRuns, TwoTextsOfOneNameDoNotMeetInTheFolder) {
  QDir(dir_.path()).mkpath(q("one"));
  QDir(dir_.path()).mkpath(q("two"));
  write(q("one/a.v"), "first\n");
  write(q("two/a.v"), "second\n");
  write(q("two/b.v"), "third\n");
  QString error;
  EXPECT_EQ(
      batch({q("--output"), q("out"), q("--command"), q("cmdINSERTCHAR x"), q("one/a.v"), q("two/a.v"), q("two/b.v")}, &error), 2);
  EXPECT_TRUE(error.contains(q("two/a.v: Another file of this name was written to the output folder already")))
      << error.toStdString();
  EXPECT_EQ(read(q("out/a.v")) + read(q("out/b.v")), "xfirst\nxthird\n");
  EXPECT_EQ(read(q("one/a.v")) + read(q("two/a.v")) + read(q("two/b.v")), "first\nsecond\nthird\n");
}

}   // namespace
