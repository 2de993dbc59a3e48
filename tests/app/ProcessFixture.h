// The real program in processes of its own, with folders of the user that are the test's.
#pragma once

#include <signal.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>

#include "handoff/Msghook.h"
#include "tests/app/FrameFixture.h"
#include "tests/support/EventLoop.h"

class ProcessRun : public testing::Test {
 protected:
  void SetUp() override {
    program_ = QString::fromLocal8Bit(qgetenv("ZELKOR_BIN")) + QLatin1Char('/') + q(programName());
    ASSERT_TRUE(QFile::exists(program_)) << "set ZELKOR_BIN to the folder of the program";
    environment_ = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR", "HOME"}) {
      const QString folder = dir_.filePath(q(name).toLower());
      QDir().mkpath(folder);
      ::chmod(folder.toUtf8().constData(), 0700);
      environment_.insert(q(name), folder);
    }
    environment_.insert(q("QT_QPA_PLATFORM"), q("offscreen"));
    environment_.insert(q("LC_ALL"), q("C.UTF-8"));   // messages of the system are compared
  }
  void TearDown() override {
    for (const auto& process : processes_) {
      if (process->state() == QProcess::NotRunning) continue;
      process->kill();
      process->waitForFinished(kPatience);
    }
  }

  virtual const char* programName() const { return "zelkor"; }
  QProcess& start(const QStringList& arguments, const QString& folder = {}) {
    processes_.push_back(std::make_unique<QProcess>());
    QProcess& process = *processes_.back();
    process.setProcessEnvironment(environment_);
    process.setWorkingDirectory(folder.isEmpty() ? dir_.path() : folder);
    process.start(program_, arguments);
    EXPECT_TRUE(process.waitForStarted(kPatience));
    return process;
  }
  // Exit status of a run to its end; -1: it did not end in time.
  int run(const QStringList& arguments, const QString& folder = {}) {
    QProcess& process = start(arguments, folder);
    process.closeWriteChannel();
    return process.waitForFinished(kPatience) && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
  }
  QString socketPath() const {
    QDirIterator it(environment_.value(q("XDG_RUNTIME_DIR")), {q("*.sock")}, QDir::System, QDirIterator::Subdirectories);
    return it.hasNext() ? it.next() : QString();
  }
  QProcess& startFirst(const QStringList& arguments = {}) {
    QProcess& first = start(arguments);
    for (QElapsedTimer timer = started(); socketPath().isEmpty() && timer.elapsed() < kPatience;) QThread::msleep(5);
    EXPECT_FALSE(socketPath().isEmpty());
    return first;
  }
  // Until somebody listens at the socket, be it of an earlier copy that has died.
  bool untilItIsListenedTo() const {
    for (QElapsedTimer timer = started(); timer.elapsed() < kPatience; QThread::msleep(5))
      if (MsgSender().connectTo(socketPath())) return true;
    return false;
  }
  // An end that is asked for before is no end in good order.
  static bool untilItCatchesSignals(const QProcess& process) {
    for (QElapsedTimer timer = started(); timer.elapsed() < kPatience; QThread::msleep(5)) {
      QFile status(q("/proc/%1/status").arg(process.processId()));
      if (!status.open(QIODevice::ReadOnly)) return false;
      const QByteArray text = status.readAll();
      const qsizetype at = text.indexOf("SigCgt:");
      if (at >= 0 && text.mid(at + 7).trimmed().left(16).toULongLong(nullptr, 16) >> (SIGTERM - 1) & 1) return true;
    }
    return false;
  }
  static QElapsedTimer started() {
    QElapsedTimer timer;
    timer.start();
    return timer;
  }
  // Asks the copy to end and gives what it left in the settings: the recently-used files, latest first.
  std::string endAndListFiles(QProcess& first, bool sorted = false) {
    EXPECT_TRUE(untilItCatchesSignals(first));
    first.terminate();
    EXPECT_TRUE(first.waitForFinished(kPatience));
    EXPECT_EQ(first.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(first.exitCode(), 0);
    QStringList names;
    QDirIterator it(environment_.value(q("XDG_CONFIG_HOME")), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
      QFile file(it.next());
      if (!file.open(QIODevice::ReadOnly)) continue;
      const QString text = QString::fromUtf8(file.readAll());
      for (int i = 0; i < 10; ++i) {
        const QRegularExpression entry(q("^MRU%1 = \"(.*)\"$").arg(i), QRegularExpression::MultilineOption);
        const QString name = entry.match(text).captured(1);
        if (name.startsWith(dir_.path())) names << name;   // not the samples of a first run
      }
    }
    if (sorted) names.sort();
    return lines(names);
  }
  static std::string lines(const QStringList& names) { return names.join(u'\n').toStdString(); }
  QString write(const QString& name, const QByteArray& bytes = "text\n") {
    QFile file(QDir(dir_.path()).filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return file.fileName();
  }
  QByteArray read(const QString& name) const {
    QFile file(QDir(dir_.path()).filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
  }

  QTemporaryDir dir_ = memoryFolder();
  QString program_;
  QProcessEnvironment environment_;
  std::vector<std::unique_ptr<QProcess>> processes_;
};

// Which files of a folder have been read, in the order of their first reading. Whoever only asks whether they exist reads nothing.
class ReadFiles {
 public:
  explicit ReadFiles(const QString& folder) : fd_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    EXPECT_GE(::inotify_add_watch(fd_, folder.toUtf8().constData(), IN_ACCESS), 0);
  }
  ~ReadFiles() { ::close(fd_); }
  const QStringList& names() {
    alignas(inotify_event) char bytes[65536];
    for (ssize_t got; (got = ::read(fd_, bytes, sizeof bytes)) > 0;)
      for (ssize_t at = 0; at < got;) {
        const auto* event = reinterpret_cast<const inotify_event*>(bytes + at);
        EXPECT_FALSE(event->mask & IN_Q_OVERFLOW);
        const QString name = event->len > 0 ? QString::fromUtf8(event->name) : QString();
        if (!known_.contains(name) && !(event->mask & IN_ISDIR)) names_ << name;
        known_ << name;
        at += ssize_t(sizeof *event) + event->len;
      }
    return names_;
  }
  bool has(const QString& path) {
    names();
    return known_.contains(path.section(u'/', -1));
  }

 private:
  int fd_;
  QStringList names_;
  QSet<QString> known_;
};
