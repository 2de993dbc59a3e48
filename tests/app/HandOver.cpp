// Command lines handed over between real processes: each is acted on, in order, or its sender's person is told (promises I1, I2).
#include <random>

#include "control/Msghook.h"
#include "control/Rendezvous.h"
#include "document/ProgramWindow.h"
#include "tests/app/ProcessFixture.h"
#include "tests/support/Xvfb.h"

namespace {
using HandOver = ProcessRun;
}  // namespace

TEST_F(HandOver, I2_TwoHundredMessagesAreAllActedOnInOrder) {
  QProcess& first = startFirst();
  QStringList names, paths;
  for (int i = 0; i < 200; ++i) paths << write(names.emplaceBack(q("f%1.v").arg(i)));
  ReadFiles read(dir_.path());
  for (int i = 0; i < 200; i += 50) EXPECT_EQ(run(paths.mid(i, 50)), 0);
  EXPECT_EQ(lines(read.names()), lines(names));
  first.kill();
}

// A sender hands over while a dialog is up in the first copy: the open error of a folder, which nobody closes.
TEST_F(HandOver, I2_WhileADialogIsUpEachSenderIsTold) {
  QProcess& first = startFirst();
  QDir(dir_.path()).mkdir(q("folder"));
  start({dir_.filePath(q("folder"))});
  for (QElapsedTimer timer = started(); run({}) != 1 && timer.elapsed() < kPatience;) QThread::msleep(20);
  ReadFiles read(dir_.path());
  for (int i = 0; i < 20; ++i) {
    const QString path = write(q("b%1.v").arg(i));
    QProcess& sender = start({path, path + q("2")});
    ASSERT_TRUE(sender.waitForFinished(kPatience));
    EXPECT_EQ(sender.exitCode(), 1);
    const QByteArray told = sender.readAllStandardError();
    EXPECT_TRUE(told.contains("The target editor is currently occupied. Please close any dialogs to continue")) << told.constData();
    EXPECT_TRUE(told.contains("not opened: " + path.toUtf8() + "\n") && told.contains("not opened: " + path.toUtf8() + "2\n")) << told.constData();
  }
  QProcess& pipe = start({q("-")});
  pipe.write("from a pipe\n");
  pipe.closeWriteChannel();
  ASSERT_TRUE(pipe.waitForFinished(kPatience));
  const QString told = QString::fromUtf8(pipe.readAllStandardError());
  QFile kept(told.section(q("was kept in "), 1).trimmed());
  EXPECT_TRUE(kept.open(QIODevice::ReadOnly) && kept.readAll() == "from a pipe\n") << told.toStdString();
  EXPECT_EQ(read.names().size(), 0);
  EXPECT_EQ(first.state(), QProcess::Running);
  TearDown();   // who waits for the box would be the next one
  start({});
  EXPECT_TRUE(spinUntil([&] { return !kept.exists(); }, kPatience)) << "the next start opens it";
}

// Who started it from the desktop has no terminal: a box says the same.
TEST_F(HandOver, I2_ASenderWithADisplayShowsABox) {
  const Xvfb server;
  if (!server.runs()) GTEST_SKIP() << "no Xvfb";
  environment_.insert(q("QT_QPA_PLATFORM"), q("xcb"));
  environment_.insert(q("DISPLAY"), server.display());
  startFirst();
  QDir(dir_.path()).mkdir(q("folder"));
  QProcess& blocker = start({dir_.filePath(q("folder"))});
  ProgramWindow window;
  QProcess* sender = nullptr;
  QString title;
  for (QElapsedTimer timer = started(); title.isEmpty() && timer.elapsed() < kPatience;) {
    if (!sender || sender->state() == QProcess::NotRunning) sender = &start({write(q("b.v"))});   // the first ones may be in time
    sender->waitForFinished(100);
    title = window.title(sender->processId());
  }
  EXPECT_EQ(title.toStdString(), "Zelkor Editor");
  EXPECT_EQ(sender->state(), QProcess::Running) << "the box stays until it is closed";
  for (QElapsedTimer timer = started(); sender->state() == QProcess::Running && timer.elapsed() < kPatience; sender->waitForFinished(50)) {
    window.title(sender->processId());
    window.close();
  }
  EXPECT_EQ(sender->exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(sender->exitCode(), 1);
  EXPECT_EQ(blocker.state(), QProcess::Running) << "it is answered when its file's dialog is closed";
}

TEST_F(HandOver, I1_AFirstCopyThatIsStillStartingIsWaitedFor) {
  const QByteArray runtimeBefore = qgetenv("XDG_RUNTIME_DIR");
  qputenv("XDG_RUNTIME_DIR", environment_.value(q("XDG_RUNTIME_DIR")).toUtf8());
  Rendezvous place(q("offscreen_") + qEnvironmentVariable("DISPLAY"));   // this test is the first copy
  qputenv("XDG_RUNTIME_DIR", runtimeBefore);
  ASSERT_TRUE(place.becomeFirst());
  const QString a = write(q("a.v"));
  QProcess& sender = start({a});
  EXPECT_FALSE(sender.waitForFinished(1000)) << "the lock is held, but nobody listens yet";
  QStringList got;
  Msghook hook([&](quint64, const HandOff& handOff) {
    got << handOff.text;
    return HandOffReply{};
  });
  ASSERT_TRUE(hook.listen(place.socketPath()));
  EXPECT_TRUE(spinUntil([&] { return sender.state() == QProcess::NotRunning; }));
  EXPECT_EQ(sender.exitCode(), 0);
  EXPECT_EQ(got, QStringList{a});
}

// Copies are started, killed and asked to end at random moments, senders and first copies alike. What a copy that was left alone was
// given is read by one copy, or the sender says that it is not. ZELKOR_FULL=1: 500 starts.
TEST_F(HandOver, I1_KillsAndEndsLoseNothingInSilence) {
  const int count = qEnvironmentVariableIntValue("ZELKOR_FULL") ? 500 : 40;
  std::mt19937 random(unsigned(qEnvironmentVariableIntValue("ZELKOR_SEED")) + 9);
  QStringList paths;
  for (int i = 0; i < count; ++i) paths << write(q("k%1.v").arg(i));
  ReadFiles read(dir_.path());
  QSet<const QProcess*> ended;
  const auto running = [&] {
    QList<QProcess*> list;
    for (const auto& process : processes_)
      if (process->state() != QProcess::NotRunning && !process->waitForFinished(1)) list << process.get();
    return list;
  };
  int kills = 0, asked = 0;
  for (const QString& path : paths) {
    start({path});
    QThread::msleep(random() % 60);
    auto alive = running();
    if (random() % 4 == 0 && !alive.isEmpty()) {
      const QProcess* victim = alive[random() % 2 ? 0 : qsizetype(random() % std::size_t(alive.size()))];   // the oldest is most often the first
      const bool polite = random() % 2;
      ++(polite ? asked : kills);
      ended << victim;
      ::kill(pid_t(victim->processId()), polite ? SIGTERM : SIGKILL);
    }
    for (QElapsedTimer timer = started(); alive.size() > 6 && timer.elapsed() < kPatience; alive = running()) QThread::msleep(5);
  }
  for (QElapsedTimer timer = started(); running().size() > 1 && timer.elapsed() < kPatience;) QThread::msleep(20);
  ASSERT_LE(running().size(), 1) << "at the end there is one copy at the most";
  int handedOver = 0, told = 0, first = 0;
  for (int i = 0; i < count; ++i) {
    QProcess& process = *processes_[std::size_t(i)];
    if (ended.contains(&process)) continue;
    SCOPED_TRACE(i);
    if (process.state() != QProcess::NotRunning || process.exitCode() == 0) {
      ++(process.state() == QProcess::NotRunning ? handedOver : first);
      EXPECT_TRUE(spinUntil([&] { return read.has(paths[i]); })) << "lost in silence";
    } else {
      ++told;
      EXPECT_EQ(process.exitCode(), 1);
      EXPECT_TRUE(process.readAllStandardError().contains("zelkor: "));
    }
  }
  std::printf("%d starts, %d killed, %d asked to end; of the others %d handed over, %d told that it failed, %d still there\n", count, kills, asked,
              handedOver, told, first);
  EXPECT_GT(handedOver, 0);
}
