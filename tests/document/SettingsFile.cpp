// The settings store in its file: result codes, merging between processes, damage, faults of the disk.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <cerrno>
#include <random>

#include "document/RegistryFile.h"
#include "document/clsRegistry.h"
#include "document/modRegistry.h"
#include "tests/support/EventLoop.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/TempFolder.h"

using namespace Qt::StringLiterals;
using namespace testing_files;
using registry::kLocalMachine;

namespace {

const QString kKey = u"Software\\Zelkor Editor\\Global"_s;

class UseStore {
 public:
  explicit UseStore(registry::Store& store) : old_(registry::setStore(&store)) {}
  ~UseStore() { registry::setStore(old_); }

 private:
  registry::Store* old_;
};

QString settingsFile(const TempFolder& folder) { return QString::fromStdString(folder / "settings.reg"); }

QVariant valueIn(const QString& path, const QString& name) {
  RegistryFile store(path);
  QVariant value;
  store.read(kLocalMachine, kKey, name, &value);
  return value;
}

void write(RegistryFile& store, const QString& name, const QVariant& value) {
  EXPECT_EQ(store.create(kLocalMachine, kKey), 0);
  EXPECT_EQ(store.write(kLocalMachine, kKey, name, value), 0);
}

}  // namespace

TEST(SettingsFile, OperationsLeaveTheirResultCodes) {
  TempFolder folder;
  RegistryFile file(settingsFile(folder));
  const UseStore use(file);
  clsRegistry reg;
  EXPECT_FALSE(reg.isValidKey(kLocalMachine, kKey));
  EXPECT_EQ(reg.LastReturnValue(), 2);
  reg.SetKeyValue(kLocalMachine, kKey, u"A"_s, u"x"_s, registry::kText);   // the key must exist
  EXPECT_EQ(reg.LastReturnValue(), 2);
  reg.NewKey(kLocalMachine, kKey);
  EXPECT_EQ(reg.LastReturnValue(), 0);
  EXPECT_TRUE(reg.isValidKey(kLocalMachine, u"SOFTWARE\\zelkor editor"_s));
  EXPECT_FALSE(reg.GetKeyValue(kLocalMachine, kKey, u"A"_s).isValid());
  EXPECT_EQ(reg.LastReturnValue(), 2);
  reg.SetKeyValue(kLocalMachine, kKey, u"A"_s, u""_s, registry::kText);
  EXPECT_EQ(reg.GetKeyValue(kLocalMachine, kKey, u"a"_s), QVariant(u""_s));
  EXPECT_EQ(reg.LastReturnValue(), 0);
  for (const auto& [in, out] : std::vector<std::pair<QVariant, int>>{{4294967295LL, -1}, {-7, -7}, {u"12"_s, 12}}) {
    reg.SetKeyValue(kLocalMachine, kKey, u"N"_s, in, registry::kNumber);
    EXPECT_EQ(reg.GetKeyValue(kLocalMachine, kKey, u"N"_s), QVariant(out));
  }
  for (const auto& [bad, type] : std::vector<std::pair<QVariant, int>>{{u"x"_s, 4}, {4294967296LL, 4}, {1, 3}}) {
    reg.SetKeyValue(kLocalMachine, kKey, u"N"_s, bad, type);
    EXPECT_EQ(reg.LastReturnValue(), 87);
  }
  EXPECT_EQ(reg.DeleteKey(kLocalMachine, u"Software"_s), 5);
  EXPECT_EQ(reg.DeleteKey(kLocalMachine, kKey), 0);
  EXPECT_EQ(reg.DeleteKey(kLocalMachine, kKey), 2);
  EXPECT_TRUE(reg.isValidKey(kLocalMachine, u"Software\\Zelkor Editor\\"_s));
  reg.NewKey(0x1234, kKey);
  EXPECT_EQ(reg.LastReturnValue(), 6);
  for (const QString& bad : {u"a\\\\b"_s, u"\\a"_s, u"a\nb"_s, QString(300, u'k')}) {
    reg.NewKey(kLocalMachine, bad);
    EXPECT_EQ(reg.LastReturnValue(), 87) << qPrintable(bad);
  }
  reg.CheckRetVal(1234);
  EXPECT_EQ(reg.LastReturnValue(), 1234);
}

TEST(SettingsFile, ValuesAreReadTolerantly) {
  TempFolder folder;
  RegistryFile file(settingsFile(folder));
  const UseStore use(file);
  struct Case {
    QVariant stored;
    int flag, number;   // 9: the default came back
  };
  const std::vector<Case> cases{{{}, 9, 9},           {u"True"_s, 1, -1},  {u"FALSE"_s, 0, 0}, {u"-1"_s, 1, -1}, {u"0"_s, 0, 0},
                                {u"1"_s, 1, 1},       {qint32(-1), 1, -1}, {qint32(0), 0, 0},  {u""_s, 9, 9},    {u"what"_s, 9, 9},
                                {u" true "_s, 1, -1}, {qint32(4), 1, 4},   {u"4.0"_s, 9, 4},   {u"nan"_s, 9, 9}, {u"1e99"_s, 9, 9}};
  modRegistry::NewKey(kKey);
  for (const Case& c : cases) {
    const QString name = u"v"_s + QString::number(&c - cases.data());
    if (c.stored.typeId() == QMetaType::Int) modRegistry::SetNumber(kKey, name, c.stored.toInt());
    if (c.stored.typeId() == QMetaType::QString) modRegistry::SetText(kKey, name, c.stored.toString());
    const bool t = modRegistry::Flag(kKey, name, true), f = modRegistry::Flag(kKey, name, false);
    EXPECT_EQ(t == f ? int(t) : 9, c.flag) << qPrintable(c.stored.toString());
    EXPECT_EQ(modRegistry::Number(kKey, name, 9), c.number) << qPrintable(c.stored.toString());
  }
  modRegistry::SetFlag(kKey, u"f"_s, true);
  EXPECT_EQ(modRegistry::GetValue(kKey, u"f"_s), QVariant(u"True"_s));
  modRegistry::SetNumber(kKey, u"n"_s, 5);
  EXPECT_EQ(modRegistry::Text(kKey, u"n"_s), u"5"_s);
  modRegistry::SetText(kKey, u"r"_s, u"-12.5"_s);
  EXPECT_EQ(modRegistry::Real(kKey, u"r"_s, 0), -12.5);
}

TEST(SettingsFile, IsWrittenWhenItIsQuietAndOnFlush) {
  TempFolder folder;
  const QString path = settingsFile(folder);
  RegistryFile store(path);
  write(store, u"A"_s, 1);
  EXPECT_FALSE(QFile::exists(path));
  EXPECT_TRUE(spinUntil([&] { return QFile::exists(path); }));
  EXPECT_EQ(valueIn(path, u"A"_s), 1);
  write(store, u"A"_s, 2);
  EXPECT_EQ(store.flush(), 0);
  EXPECT_EQ(valueIn(path, u"A"_s), 2);
  EXPECT_EQ(QFile::permissions(path) & (QFile::ReadOther | QFile::WriteOther | QFile::ReadGroup | QFile::WriteGroup), QFile::Permissions());
  EXPECT_FALSE(store.setReadOnly(true));
  write(store, u"A"_s, 3);
  EXPECT_EQ(store.flush(), 0);
  EXPECT_EQ(valueIn(path, u"A"_s), 2);
  QVariant own;
  store.read(kLocalMachine, kKey, u"A"_s, &own);
  EXPECT_EQ(own, 3);
  EXPECT_TRUE(store.setReadOnly(false));
  EXPECT_EQ(store.flush(), 0);
  EXPECT_EQ(valueIn(path, u"A"_s), 2) << "what was set meanwhile is not written later";
}

TEST(SettingsFile, C1_ChangesOfOthersAreKept) {
  TempFolder folder;
  const QString path = settingsFile(folder);
  RegistryFile one(path), two(path);
  write(one, u"first"_s, 1);
  write(two, u"second"_s, 2);
  EXPECT_EQ(one.flush(), 0);
  EXPECT_EQ(two.flush(), 0);
  write(one, u"first"_s, 10);
  EXPECT_EQ(one.flush(), 0);
  QVariant seen;
  one.read(kLocalMachine, kKey, u"second"_s, &seen);
  EXPECT_EQ(seen, 2) << "what others wrote is seen after the merge";
  write(two, u"third"_s, 3);
  EXPECT_EQ(two.flush(), 0);
  EXPECT_EQ(valueIn(path, u"first"_s), 10);
  EXPECT_EQ(valueIn(path, u"second"_s), 2);
  EXPECT_EQ(valueIn(path, u"third"_s), 3);
  EXPECT_EQ(one.remove(kLocalMachine, kKey), 0);
  EXPECT_EQ(one.flush(), 0);
  EXPECT_FALSE(valueIn(path, u"first"_s).isValid());
}

// Four processes write 1,000 values each into one file; some are killed on the way. What a process was told to be written
// stays written, and the file is whole at any time.
TEST(SettingsFile, C1_ProcessesWritingAtOnceLoseNothing) {
  TempFolder folder;
  const QString path = settingsFile(folder);
  const QString program = qEnvironmentVariable("ZELKOR_BIN") + u"/settings_writer"_s;
  std::mt19937 random(5);
  struct Writer {
    std::unique_ptr<QProcess> process;
    QString name;
    bool killed;
  };
  std::vector<Writer> writers;
  for (int n = 0; n < 6; ++n) {
    Writer writer{std::make_unique<QProcess>(), QString(QChar(ushort('a' + n))), n >= 4};
    writer.process->start(program, {path, writer.name, u"1000"_s, u"25"_s});
    ASSERT_TRUE(writer.process->waitForStarted());
    writers.push_back(std::move(writer));
  }
  for (Writer& writer : writers) {
    if (!writer.killed) continue;
    spin(40 + int(random() % 60));
    writer.process->kill();
  }
  for (Writer& writer : writers) {
    if (writer.process->state() != QProcess::NotRunning) {
      ASSERT_TRUE(writer.process->waitForFinished(60000));
    }
    if (!writer.killed) {
      EXPECT_EQ(writer.process->exitCode(), 0) << qPrintable(writer.name);
    }
  }
  RegistryFile store(path);
  for (Writer& writer : writers) {
    const QList<QByteArray> told = writer.process->readAllStandardOutput().trimmed().split('\n');
    const int last = told.last().isEmpty() ? -1 : told.last().toInt();
    if (!writer.killed) {
      EXPECT_EQ(last, 999);
    }
    for (int n = 0; n <= last; ++n) {
      QVariant value;
      store.read(kLocalMachine, kKey, writer.name + QString::number(n), &value);
      ASSERT_EQ(value, n) << qPrintable(writer.name) << n;
    }
  }
}

TEST(SettingsFile, C2_ADamagedFileIsKeptAndToldOnce) {
  TempFolder folder;
  const QString path = settingsFile(folder);
  for (int round = 1; round <= 2; ++round) {
    writeRaw(path.toStdString(), "torn" + std::to_string(round));
    ScriptedDialogs dialogs;
    dialogs.answer(Answer::ok);
    RegistryFile store(path);
    QVariant value;
    EXPECT_EQ(store.read(kLocalMachine, kKey, u"A"_s, &value), 2);
    EXPECT_EQ(store.read(kLocalMachine, kKey, u"A"_s, &value), 2);
    const QString aside = round == 1 ? u"settings.damaged.reg"_s : u"settings.damaged-2.reg"_s;
    EXPECT_TRUE(dialogs.last().text.contains(aside)) << qPrintable(dialogs.last().text);
    EXPECT_EQ(readRaw(folder / aside.toStdString()), "torn" + std::to_string(round));
    write(store, u"A"_s, round);
    EXPECT_EQ(store.flush(), 0);
    EXPECT_EQ(valueIn(path, u"A"_s), round);
  }
}

TEST(SettingsFile, C2_DamageWhileRunningLosesNothingOfOurs) {
  TempFolder folder;
  const QString path = settingsFile(folder);
  RegistryFile store(path);
  write(store, u"A"_s, 1);
  EXPECT_EQ(store.flush(), 0);
  const std::string whole = readRaw(path.toStdString());
  writeRaw(path.toStdString(), whole.substr(0, whole.size() - 20));
  ScriptedDialogs dialogs;
  dialogs.answer(Answer::ok);
  write(store, u"B"_s, 2);
  EXPECT_EQ(store.flush(), 0);
  EXPECT_EQ(valueIn(path, u"A"_s), 1);
  EXPECT_EQ(valueIn(path, u"B"_s), 2);
  EXPECT_EQ(readRaw(folder / "settings.damaged.reg").size(), whole.size() - 20);
}

TEST(SettingsFile, HugeAndUnreadableFilesGiveDefaults) {
  TempFolder folder;
  const QString path = settingsFile(folder);
  writeRaw(path.toStdString(), "x");
  {
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::ReadWrite) && file.resize(40LL << 20));
  }
  ScriptedDialogs dialogs;
  dialogs.answer(Answer::ok).answer(Answer::ok);
  RegistryFile huge(path);
  EXPECT_EQ(huge.open(kLocalMachine, kKey), 2);
  EXPECT_FALSE(QFile::exists(path));
  QDir().mkpath(path);   // a folder in its place
  RegistryFile folderThere(path);
  EXPECT_EQ(folderThere.open(kLocalMachine, kKey), 2);
  write(folderThere, u"A"_s, 1);
  EXPECT_NE(folderThere.flush(), 0);
  EXPECT_TRUE(QFileInfo(path).isDir());
  EXPECT_EQ(dialogs.boxes.size(), 2u);
}

TEST(SettingsFile, S2_AnyFailingCallKeepsTheOldFileAndTheChange) {
  for (const int error : {EIO, ENOSPC, EROFS, EACCES}) {
    for (int call = 1; call < 200; ++call) {
      TempFolder folder;
      const QString path = settingsFile(folder);
      RegistryFile store(path);
      write(store, u"A"_s, 1);
      ASSERT_EQ(store.flush(), 0);
      const std::string before = readRaw(path.toStdString());
      write(store, u"A"_s, 2);
      int code = 0;
      std::size_t calls = 0;
      {
        FaultyFileSystem faulty;
        const UseFileSystem use(faulty);
        faulty.failCall(call, error);
        code = store.flush();
        calls = faulty.log().size();
        EXPECT_EQ(faulty.openDescriptors(), 0);
      }
      const std::string after = readRaw(path.toStdString());
      if (code != 0) {
        EXPECT_TRUE(after == before || valueIn(path, u"A"_s) == 2) << "call " << call;
        EXPECT_EQ(store.flush(), 0) << "the change was not forgotten";
      }
      EXPECT_EQ(valueIn(path, u"A"_s), 2) << "call " << call << " error " << error;
      EXPECT_EQ(folder.names(), (std::vector<std::string>{"settings.reg", "settings.reg.lock"})) << "call " << call;
      if (std::size_t(call) > calls) break;
    }
  }
}

TEST(SettingsFile, ALockHeldByAnotherIsWaitedForAndThenReported) {
  TempFolder folder;
  const QString path = settingsFile(folder);
  RegistryFile store(path);
  store.setLockPatience(50);
  write(store, u"A"_s, 1);
  text::FileSystem& fs = text::fileSystem();
  const int fd = fs.openAt(text::FileSystem::kCwd, (path + u".lock"_s).toStdString(), text::kRead | text::kWrite | text::kCreate, 0600);
  ASSERT_EQ(fs.lock(fd, true, false), 0);
  EXPECT_EQ(store.flush(), 32);
  fs.close(fd);
  EXPECT_EQ(store.flush(), 0);
  EXPECT_EQ(valueIn(path, u"A"_s), 1);
}
