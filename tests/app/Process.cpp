// The real program: start, hand-over between processes, and ends from outside (promise I1).
#include "tests/app/ProcessFixture.h"

namespace {

TEST_F(ProcessRun, UsageIsAnsweredWithoutADisplay) {
  environment_.remove(q("QT_QPA_PLATFORM"));
  environment_.remove(q("DISPLAY"));
  environment_.remove(q("WAYLAND_DISPLAY"));
  struct Case {
    QStringList arguments;
    int status;
    const char *out, *error;
  };
  for (const Case& c :
       {Case{{q("--help")}, 0, "Usage: zelkor", ""}, Case{{q("--version")}, 0, "Zelkor Editor 1.", ""},
        Case{{q("--nonsense")}, 2, "", "zelkor: unknown option --nonsense"}, Case{{q("--wait")}, 2, "", "zelkor: --wait"},
        Case{{q("a.v")}, 2, "", "zelkor: no display"}, Case{{q("--batch"), q("--help")}, 0, "--command", ""},
        Case{{q("--batch"), q("x")}, 2, "", "zelkor: --batch needs"}}) {
    SCOPED_TRACE(c.arguments.join(u' ').toStdString());
    QProcess& process = start(c.arguments);
    ASSERT_TRUE(process.waitForFinished(kPatience));
    EXPECT_EQ(process.exitCode(), c.status);
    EXPECT_TRUE(process.readAllStandardOutput().contains(c.out));
    const QByteArray error = process.readAllStandardError();
    EXPECT_TRUE(error.contains(c.error)) << error.constData();
    EXPECT_EQ(error.isEmpty(), *c.error == 0) << error.constData();
  }
  environment_.insert(q("DISPLAY"), q(":987"));   // nobody is there
  QProcess& process = start({q("a.v")});
  ASSERT_TRUE(process.waitForFinished(kPatience));
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(process.exitCode(), 2);
  EXPECT_EQ(process.readAllStandardError(),
            "zelkor: the display cannot be opened (DISPLAY is \":987\", WAYLAND_DISPLAY is \"\", QT_QPA_PLATFORM is \"\")\n");
}

TEST_F(ProcessRun, FilesAreHandedOverInOrderFromWhereTheyWereTyped) {
  QDir(dir_.path()).mkpath(q("deep/er"));
  const QString a = write(q("a.v")), b = write(q("deep/er/b.v")), odd = write(q("deep/er/odd:12")), c = write(q("deep/c d.v"));
  QProcess& first = startFirst({q("a.v")});
  EXPECT_EQ(run({q("b.v"), q("odd:12"), q("../c d.v:3:4")}, dir_.filePath(q("deep/er"))), 0);
  EXPECT_EQ(run({}), 0) << "nothing to open: comes forward";
  EXPECT_EQ(endAndListFiles(first), lines({c, odd, b, a}));
  EXPECT_TRUE(socketPath().isEmpty());
}

TEST_F(ProcessRun, ASenderTakesOverFromACopyThatDiesWhileAsked) {
  const QString a = write(q("a.v"));
  QProcess& frozen = startFirst();
  ::kill(pid_t(frozen.processId()), SIGSTOP);   // accepts, but never answers
  QProcess& sender = start({q("a.v")});
  QThread::msleep(500);
  EXPECT_EQ(sender.state(), QProcess::Running) << "it waits for the answer";
  ::kill(pid_t(frozen.processId()), SIGKILL);
  frozen.waitForFinished(kPatience);
  ASSERT_TRUE(untilItIsListenedTo()) << "it is the first copy now";
  EXPECT_EQ(endAndListFiles(sender), a.toStdString());
}

TEST_F(ProcessRun, NewInstanceStandsAlone) {
  const QString a = write(q("a.v"));
  QProcess& first = startFirst();
  ReadFiles read(dir_.path());
  QProcess& alone = start({q("--new-instance"), a});
  for (QElapsedTimer timer = started(); !read.has(a) && timer.elapsed() < kPatience;) QThread::msleep(5);
  EXPECT_EQ(alone.state(), QProcess::Running);
  EXPECT_EQ(endAndListFiles(alone), a.toStdString());
  first.terminate();
  EXPECT_TRUE(first.waitForFinished(kPatience));
}

TEST_F(ProcessRun, WaitReturnsWhenTheCopyEnds) {
  const QString a = write(q("a.v"));
  QProcess& first = startFirst();
  ReadFiles read(dir_.path());
  QProcess& waiting = start({q("--wait"), a});
  for (QElapsedTimer timer = started(); !read.has(a) && timer.elapsed() < kPatience;) QThread::msleep(5);
  QThread::msleep(300);
  EXPECT_EQ(waiting.state(), QProcess::Running);
  first.terminate();   // closes the document
  EXPECT_TRUE(waiting.waitForFinished(kPatience));
  EXPECT_EQ(waiting.exitCode(), 0);
}

// Nothing was closed where the editor died; where it dies before it was there, who asked for it takes its place.
TEST_F(ProcessRun, WaitTellsThatTheEditorDied) {
  const auto childOf = [](const QProcess& process) {
    QFile list(q("/proc/%1/task/%1/children").arg(process.processId()));
    return list.open(QIODevice::ReadOnly) ? pid_t(list.readAll().trimmed().toInt()) : 0;
  };
  const QString a = write(q("a.v"));
  ReadFiles read(dir_.path());
  QProcess& waiting = start({q("--wait"), a});
  ASSERT_TRUE(spinUntil([&] { return childOf(waiting) > 0; }, kPatience));
  ::kill(childOf(waiting), SIGKILL);
  EXPECT_TRUE(spinUntil([&] { return read.has(a); }, kPatience));
  EXPECT_TRUE(waiting.readAllStandardError().contains("the editor that was started for the files has ended"));
  QProcess& second = start({q("--wait"), write(q("b.v"))});
  EXPECT_TRUE(spinUntil([&] { return read.has(q("b.v")); }, kPatience));
  QThread::msleep(300);
  waiting.kill();
  EXPECT_TRUE(second.waitForFinished(kPatience));
  EXPECT_EQ(second.exitCode(), 1);
  EXPECT_TRUE(second.readAllStandardError().contains("the editor ended before the files were closed"));
}

TEST_F(ProcessRun, StandardInputReachesTheFirstCopy) {
  QProcess& first = startFirst();
  QProcess& sender = start({q("-")});
  sender.write("from a pipe\n");
  sender.closeWriteChannel();
  ASSERT_TRUE(sender.waitForFinished(kPatience));
  EXPECT_EQ(sender.exitCode(), 0);
  QDirIterator left(environment_.value(q("XDG_STATE_HOME")), {q("input-*")}, QDir::Files, QDirIterator::Subdirectories);
  EXPECT_FALSE(left.hasNext()) << "the file that carried it is removed";
  first.kill();   // it holds a modified document and would ask
}

}   // namespace
