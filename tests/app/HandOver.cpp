// Command lines handed over between real processes: each is acted on, in order, or the user at its sender is told (promises I1, I2).
#include <random>

#include "handoff/Msghook.h"
#include "handoff/Rendezvous.h"
#include "process/ProgramWindow.h"
#include "tests/app/ProcessFixture.h"
#include "tests/support/Xvfb.h"

namespace {
using HandOver = ProcessRun;
}   // namespace

TEST_F(HandOver, I2_TwoHundredMessagesAreAllActedOnInOrder) {
  QProcess& first = startFirst();
  QStringList names, paths;
  for (int i = 0; i < 200; ++i) paths << write(names.emplaceBack(q("f%1.v").arg(i)));
  ReadFiles read(dir_.path());
  for (int i = 0; i < 200; i += 50) EXPECT_EQ(run(paths.mid(i, 50)), 0);
  EXPECT_EQ(lines(read.names()), lines(names));
  first.kill();
}

// A sender hands over while a dialog is up in the first copy: the question about a file that is not there, which nobody answers.
TEST_F(HandOver, I2_WhileADialogIsUpEachSenderIsTold) {
  QProcess& first = startFirst();
  start({dir_.filePath(q("gone.v"))});
  for (QElapsedTimer timer = started(); run({}) != 1 && timer.elapsed() < kPatience;) QThread::msleep(20);
  ReadFiles read(dir_.path());
  for (int i = 0; i < 6; ++i) {
    const QString path = write(q("b%1.v").arg(i));
    QProcess& sender = start({path, path + q("2")});
    ASSERT_TRUE(sender.waitForFinished(kPatience));
    EXPECT_EQ(sender.exitCode(), 1);
    const QByteArray told = sender.readAllStandardError();
    EXPECT_TRUE(told.contains("The target editor is currently occupied. Please close any dialogs to continue")) << told.constData();
    EXPECT_TRUE(told.contains("not opened: " + path.toUtf8() + "\n") && told.contains("not opened: " + path.toUtf8() + "2\n"))
        << told.constData();
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
  QProcess& blocker = start({dir_.filePath(q("gone.v"))});
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
  for (QElapsedTimer timer = started(); sender->state() == QProcess::Running && timer.elapsed() < kPatience;
       sender->waitForFinished(50)) {
    window.title(sender->processId());
    window.close();
  }
  EXPECT_EQ(sender->exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(sender->exitCode(), 1);
  EXPECT_EQ(blocker.state(), QProcess::Running) << "it is answered when its file's dialog is closed";
}

// Wherever copies cannot meet, each starts at once and opens what it was given.
TEST_F(HandOver, I1_WhereNobodyCanBeMetACopyStandsAlone) {
  const QString a = write(q("a.v")), runtime = environment_.value(q("XDG_RUNTIME_DIR"));
  const auto place = [](const QString& run) { return run + q("/zelkor-meet"); };
  const QString far = dir_.filePath(QString(110, u'l')), taken = dir_.filePath(q("taken"));
  QDir().mkpath(far);
  ::chmod(far.toUtf8().constData(), 0700);
  QDir().mkpath(taken);
  ::chmod(taken.toUtf8().constData(), 0700);
  QDir().mkpath(place(taken));
  ::chmod(place(taken).toUtf8().constData(), 0700);
  QDir().mkpath(place(taken) + q("/offscreen_.lock"));   // a folder where the lock should be
  struct Case {
    const char* what;
    QString runtime, state;
  };
  for (const Case& c : {Case{"a path too long for a socket", far, far}, Case{"no lock can be made", taken, runtime}}) {
    SCOPED_TRACE(c.what);
    environment_.insert(q("XDG_RUNTIME_DIR"), c.runtime);
    environment_.insert(q("XDG_STATE_HOME"), c.state);
    environment_.remove(q("DISPLAY"));
    environment_.remove(q("WAYLAND_DISPLAY"));
    for (int i = 0; i < 2; ++i) {
      ReadFiles read(dir_.path());
      const QElapsedTimer timer = started();
      QProcess& copy = start({a});
      while (!read.has(a) && timer.elapsed() < kPatience) QThread::msleep(5);
      std::printf("%s: it has the file after %lld ms\n", c.what, static_cast<long long>(timer.elapsed()));
      EXPECT_TRUE(read.has(a));
      EXPECT_EQ(copy.state(), QProcess::Running);
    }
  }
  // A first copy that never listens.
  environment_.insert(q("XDG_RUNTIME_DIR"), runtime);
  const QByteArray runtimeBefore = qgetenv("XDG_RUNTIME_DIR");
  qputenv("XDG_RUNTIME_DIR", runtime.toUtf8());
  Rendezvous deaf(q("offscreen_"));
  qputenv("XDG_RUNTIME_DIR", runtimeBefore);
  ASSERT_TRUE(deaf.becomeFirst());
  ReadFiles read(dir_.path());
  start({a});
  EXPECT_TRUE(spinUntil([&] { return read.has(a); }, kPatience));
}

// Names go byte by byte from the command line to the disk: of windows by way of another copy, and without a window.
TEST_F(HandOver, N1_NamesComeAsTheyAre) {
  const char* odd[] = {"a\"b.v", " lead.v", "trail.v ", "line\nbreak.v\n", "dash\\slash.v", "b:7", "quote'.v"};
  QStringList names;
  for (const char* name : odd) write(names.emplaceBack(q(name)));
  startFirst();
  ReadFiles read(dir_.path());
  EXPECT_EQ(run(names), 0);
  EXPECT_EQ(lines(read.names()), lines(names));
  const auto shell = [&](const char* line) {
    QProcess process;
    process.setProcessEnvironment(environment_);
    process.setWorkingDirectory(dir_.path());
    process.start(q("/bin/sh"), {q("-c"), QString::fromLatin1(line), program_});
    return process.waitForFinished(kPatience) ? process.exitCode() : -1;
  };
  ASSERT_EQ(shell("printf 'text\\n' > \"$(printf 'bad\\377.v')\"; printf 'cmdDELETE\\n' > \"$(printf 's\\376')\""), 0);
  EXPECT_EQ(shell("\"$0\" --batch --script \"$(printf 's\\376')\" --output \"$(printf 'out\\375')\" \"$(printf 'bad\\377.v')\""),
            0);
  EXPECT_EQ(shell("test \"$(cat \"$(printf 'out\\375/bad\\377.v')\")\" = ext"), 0);
  EXPECT_EQ(shell("\"$0\" --batch --command \"$(printf 'LOGSAVE bad\\377.log')\" \"$(printf 'bad\\377.v')\" && test -f \"$(printf "
                  "'bad\\377.log')\""),
            0);
  EXPECT_EQ(shell("\"$0\" \"$(printf 'bad\\377.v')\""), 0) << "the first copy has it; one that is not there would be asked about";
}

// Copies are started, killed and asked to end at random moments, senders and first copies alike. What a copy that was left alone was
// given is read by one copy, or the sender says that it is not. ZELKOR_FULL=1: 500 starts.
TEST_F(HandOver, I1_KillsAndEndsLoseNothingInSilence) {
  const int count = qEnvironmentVariableIntValue("ZELKOR_FULL") ? 500 : 16;
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
      const QProcess* victim =
          alive[random() % 2 ? 0 : qsizetype(random() % std::size_t(alive.size()))];   // the oldest is most often the first
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
  std::printf("%d starts, %d killed, %d asked to end; of the others %d handed over, %d told that it failed, %d still there\n",
              count, kills, asked, handedOver, told, first);
  EXPECT_GT(handedOver, 0);
}
