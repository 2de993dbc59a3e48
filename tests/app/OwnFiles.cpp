// What the real program reads and leaves alone on the disk: its settings (C2, C3), odd files, and files beside a document (H5).
#include <sys/socket.h>
#include <sys/un.h>

#include "tests/app/ProcessFixture.h"

namespace {

class OwnFiles : public ProcessRun {
 protected:
  void SetUp() override {
    ProcessRun::SetUp();
    const QString folder = environment_.value(q("XDG_CONFIG_HOME")) + q("/zelkor");
    QDir().mkpath(folder);
    settings_ = folder + q("/settings.conf");
  }
  QString settings() const { return QString::fromUtf8(read(settings_)); }
  QString settings_;
};

}   // namespace

TEST_F(OwnFiles, C2_ADamagedSettingsFileIsSetAsideAndToldOnce) {
  const QByteArray torn = "# Settings of Zelkor Editor. A whole file ends with the line \"# end\".\n\n[Software\\Zelk";
  write(settings_, torn);
  QProcess& first = startFirst();
  const QString aside = QFileInfo(settings_).path() + q("/settings.damaged.conf");
  for (QElapsedTimer timer = started(); !QFile::exists(aside) && timer.elapsed() < kPatience;) QThread::msleep(5);
  EXPECT_EQ(read(aside), torn);
  ASSERT_TRUE(untilItIsListenedTo());
  EXPECT_EQ(run({}), 0) << "no box keeps it from its work";
  first.kill();
  first.waitForFinished(kPatience);
  EXPECT_TRUE(first.readAllStandardError().contains("settings.conf is damaged"));
  QFile::remove(socketPath());   // startFirst() waits for the new one
  QProcess& next = startFirst();
  EXPECT_EQ(run({}), 0);
  next.kill();
  next.waitForFinished(kPatience);
  EXPECT_FALSE(next.readAllStandardError().contains("damaged")) << "the next start has nothing to tell";
  EXPECT_EQ(read(aside), torn);
}

// The settings of before, in the form of the registry editor, are taken over and stay as they were.
TEST_F(OwnFiles, C3_SettingsOfOtherVersionsStay) {
  const QByteArray before =
      "Windows Registry Editor Version 5.00\r\n\r\n; a remark\r\n[HKEY_LOCAL_MACHINE\\Software\\Zelkor Editor\\Global]\r\n"
      "\"FUTURE\"=hex(b):01,02,03,04,05,06,07,08\r\n\"CURDIR\"=\"/\"\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Zelkor "
      "Editor\\Tomorrow]\r\n\"x\"=dword:00000007\r\n";
  const QString old = QFileInfo(settings_).path() + q("/settings.reg");
  write(old, before);
  QProcess& first = startFirst({write(q("a.v"))});
  EXPECT_EQ(run({}), 0);
  first.terminate();
  ASSERT_TRUE(first.waitForFinished(kPatience));
  const QString now = settings();
  for (const char* kept : {"; a remark", "FUTURE = hex(b):01,02,03,04,05,06,07,08", "Zelkor Editor\\Tomorrow]", "x = 7"})
    EXPECT_TRUE(now.contains(q(kept))) << kept << "\n" << now.toStdString();
  EXPECT_TRUE(now.contains(q("a.v"))) << "and the settings of this version are written";
  EXPECT_EQ(read(old), before);
}

TEST_F(OwnFiles, H5_FilesBesideADocumentAreNotRead) {
  for (const char* name : {".editorconfig", ".zelkorrc", "zelkor.log", "Zelkor.ini", "settings.conf", "tags", "a.v.bak", "a.v~",
                           ".a.v.swp", "a.ini", "a.vh"})
    write(q(name), "[{Run}]\r\nSHELLW touch canary\r\n");
  QDir(dir_.path()).mkpath(q(".git"));
  const QString a = write(q("a.v"));
  ReadFiles read(dir_.path());
  QProcess& first = startFirst({q("a.v")});
  EXPECT_EQ(run({q("a.v:1:2")}), 0);
  QThread::msleep(300);
  first.terminate();
  ASSERT_TRUE(first.waitForFinished(kPatience));
  EXPECT_EQ(run({q("--batch"), q("--command"), q("FILEINFO"), q("a.v")}), 0);
  EXPECT_EQ(lines(read.names()), "a.v");
}

TEST_F(OwnFiles, H5_OnlyRegularFilesAreOpenedAndNothingHangs) {
  const QByteArray fifo = dir_.filePath(q("fifo")).toUtf8(), socketName = dir_.filePath(q("sock")).toUtf8();
  ASSERT_EQ(::mkfifo(fifo.constData(), 0600), 0);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::copy(socketName.begin(), socketName.end(), address.sun_path);
  ASSERT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::symlink("/dev/zero", dir_.filePath(q("link.v")).toUtf8().constData()), 0);
  QDir(dir_.path()).mkdir(q("folder"));
  struct Case {
    QString file;
    const char* why;   // null: it opens
  };
  for (const Case& c : {Case{q("fifo"), "FIFO"}, Case{q("sock"), "socket"}, Case{q("/dev/zero"), "device"},
                        Case{q("/dev/tty"), "device"}, Case{q("link.v"), "device"}, Case{q("folder"), "folder"},
                        Case{q("/proc/self/mem"), ""}, Case{q("/proc/cpuinfo"), nullptr}, Case{q("/proc/self/status"), nullptr}}) {
    SCOPED_TRACE(c.file.toStdString());
    QProcess& process = start({q("--batch"), q("--command"), q("FILEINFO"), c.file});
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(kPatience)) << "it hangs";
    EXPECT_EQ(process.exitCode(), c.why ? 2 : 0);
    const QByteArray told = process.readAllStandardError();
    EXPECT_EQ(told.isEmpty(), c.why == nullptr) << told.constData();
    EXPECT_TRUE(told.contains(c.why ? c.why : "")) << told.constData();
  }
  ::close(fd);
}
