// The settings store in its file: result codes, merging between processes, damage, faults of the disk.
#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <cerrno>
#include <random>

#include "base/Program.h"
#include "settings/RegistryFile.h"
#include "settings/RegistryText.h"
#include "settings/clsRegistry.h"
#include "settings/modRegistry.h"
#include "tests/support/EventLoop.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/files/SaveSweep.h"

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

// What the status bar shows. A box would fail the test.
struct Told {
  Told() {
    setStatusSink([this](const QString& text) { texts << text; });
  }
  ~Told() { setStatusSink({}); }
  QStringList texts;
  ScriptedDialogs dialogs;
};

QString settingsFile(const TempFolder& folder) { return QString::fromStdString(folder / "settings.conf"); }

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

}   // namespace

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
  EXPECT_EQ(QFile::permissions(path) & (QFile::ReadOther | QFile::WriteOther | QFile::ReadGroup | QFile::WriteGroup),
            QFile::Permissions());
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

// Four processes write 1,000 values each into one file; each is killed again and again at random moments and goes on behind what it
// was told to be in the file. All values are there in the end, and what the file held besides. ZELKOR_FULL=1: with many more flushes
// and kills.
TEST(SettingsFile, C1_ProcessesWritingAtOnceLoseNothing) {
  const bool full = qEnvironmentVariableIntValue("ZELKOR_FULL") != 0;
  const int count = 1000, endless = 1'000'000, every = full ? 4 : 40, mostKills = full ? 60 : 5;
  TempFolder folder(TempFolder::Where::memory);
  const QString path = settingsFile(folder);
  writeRaw(path.toStdString(), "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\Other]\r\n\"x\"=hex(b):01,02\r\n");
  const QString program = qEnvironmentVariable("ZELKOR_BIN") + u"/settings_writer"_s;
  std::mt19937 random(unsigned(qEnvironmentVariableIntValue("ZELKOR_SEED")) + 5);
  struct Writer {
    QString name;
    std::unique_ptr<QProcess> process;
    int next = 0, kills = 0;
    QElapsedTimer clock;
    qint64 lifetime = 0;

    void start(const QString& toRun, const QString& file, int last, int step, qint64 time) {
      process = std::make_unique<QProcess>();
      process->start(toRun, {file, name, QString::number(last), QString::number(step), QString::number(next)});
      EXPECT_TRUE(process->waitForStarted(kPatience));
      clock.start();
      lifetime = time;
    }
    // What it was told is in the file, and stays there whatever becomes of it.
    void hear() {
      const QList<QByteArray> told = process->readAllStandardOutput().trimmed().split('\n');
      if (!told.last().isEmpty()) next = told.last().toInt() + 1;
    }
  };
  const auto lifetime = [&] { return 30 + qint64(random() % (full ? 120 : 150)); };
  std::vector<Writer> writers;
  for (int n = 0; n < 4; ++n) {
    writers.emplace_back().name = QString(QChar(ushort('a' + n)));
    writers.back().start(program, path, endless, every, lifetime());
  }
  int kills = 0;
  for (bool busy = true; busy;) {
    busy = false;
    for (Writer& writer : writers) {
      writer.process->waitForFinished(1);
      const bool runs = writer.process->state() != QProcess::NotRunning;
      if (runs && writer.kills < mostKills && writer.clock.elapsed() > writer.lifetime) {
        writer.process->kill();
        ASSERT_TRUE(writer.process->waitForFinished(kPatience));
        writer.hear();
        ++writer.kills;
        ++kills;
        writer.start(program, path, writer.kills < mostKills ? endless : count, every, lifetime());
        busy = true;
      } else if (runs) {
        busy = true;
      } else if (writer.next < count) {
        ASSERT_EQ(writer.process->exitStatus(), QProcess::NormalExit);
        ASSERT_EQ(writer.process->exitCode(), 0) << qPrintable(writer.name);
        writer.hear();
        ASSERT_GE(writer.next, count);
      }
    }
  }
  RegistryFile store(path);
  int lost = 0;
  for (const Writer& writer : writers) {
    for (int n = 0; n < count; ++n) {
      QVariant value;
      store.read(kLocalMachine, kKey, writer.name + QString::number(n), &value);
      lost += value != n;
    }
  }
  EXPECT_EQ(lost, 0);
  std::printf("4 processes, %d keys each, %d kills, %d lost\n", count, kills, lost);
  EXPECT_EQ(kills, 4 * mostKills);
  RegistryText held;
  ASSERT_TRUE(held.parse(QByteArray::fromStdString(readRaw(path.toStdString()))));
  EXPECT_TRUE(held.hasValue(u"HKEY_CURRENT_USER\\Other"_s, u"x"_s)) << "what others keep in the file";
}

TEST(SettingsFile, S2_C2_AWriteLeavesTheOldFileOrTheNewOne) {
  const QString key = u"HKEY_LOCAL_MACHINE\\"_s + kKey;
  RegistryText old;
  old.setValue(key, u"A"_s, 1);
  std::unique_ptr<RegistryFile> store;
  QString status;
  std::string at;
  setStatusSink([&](const QString& text) { status = text; });
  SweptSave what;
  what.old = old.toBytes().toStdString();
  what.prepare = [&](const std::string& path) {
    EXPECT_TRUE(text::saveBytes(path + ".lock", "", 0600).ok());   // it stays beside the settings
    store = std::make_unique<RegistryFile>(QString::fromStdString(at = path));
    write(*store, u"A"_s, 2);
    status.clear();
  };
  what.save = [&](const std::string&) { return store->flush() == 0; };
  what.told = [&] {
    const std::string told = status.toStdString();
    EXPECT_EQ(store->flush(), 0);
    EXPECT_TRUE(what.isFresh(readRaw(at))) << "the change was not forgotten";
    return told;
  };
  what.isFresh = [&](const std::string& bytes) {
    RegistryText text;
    return text.parse(QByteArray::fromStdString(bytes)) && text.value(key, u"A"_s) == 2;
  };
  sweepSave(what);
  setStatusSink({});
}

TEST(SettingsFile, C2_ADamagedFileIsKeptAndToldOnce) {
  TempFolder folder;
  const QString path = settingsFile(folder);
  for (int round = 1; round <= 2; ++round) {
    writeRaw(path.toStdString(), "torn" + std::to_string(round));
    Told told;
    RegistryFile store(path);
    QVariant value;
    EXPECT_EQ(store.read(kLocalMachine, kKey, u"A"_s, &value), 2);
    EXPECT_EQ(store.read(kLocalMachine, kKey, u"A"_s, &value), 2);
    const QString aside = round == 1 ? u"settings.damaged.conf"_s : u"settings.damaged-2.conf"_s;
    ASSERT_EQ(told.texts.size(), 1);
    EXPECT_TRUE(told.texts[0].contains(aside)) << qPrintable(told.texts[0]);
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
  Told told;
  write(store, u"B"_s, 2);
  EXPECT_EQ(store.flush(), 0);
  EXPECT_EQ(valueIn(path, u"A"_s), 1);
  EXPECT_EQ(valueIn(path, u"B"_s), 2);
  EXPECT_EQ(readRaw(folder / "settings.damaged.conf").size(), whole.size() - 20);
}

TEST(SettingsFile, HugeAndUnreadableFilesGiveDefaults) {
  TempFolder folder;
  const QString path = settingsFile(folder);
  writeRaw(path.toStdString(), "x");
  {
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::ReadWrite) && file.resize(40LL << 20));
  }
  Told told;
  RegistryFile huge(path);
  EXPECT_EQ(huge.open(kLocalMachine, kKey), 2);
  EXPECT_FALSE(QFile::exists(path));
  QDir().mkpath(path);   // a folder in its place
  RegistryFile folderThere(path);
  EXPECT_EQ(folderThere.open(kLocalMachine, kKey), 2);
  write(folderThere, u"A"_s, 1);
  EXPECT_NE(folderThere.flush(), 0);
  EXPECT_TRUE(QFileInfo(path).isDir());
  EXPECT_EQ(told.texts.size(), 3) << "once for each, and that it could not be saved";
}

TEST(SettingsFile, ALockHeldByAnotherIsWaitedForAndThenReported) {
  TempFolder folder;
  const QString path = settingsFile(folder);
  RegistryFile store(path);
  store.setLockPatience(50);
  write(store, u"A"_s, 1);
  text::FileSystem& fs = text::fileSystem();
  const int fd =
      fs.openAt(text::FileSystem::kCwd, (path + u".lock"_s).toStdString(), text::kRead | text::kWrite | text::kCreate, 0600);
  ASSERT_EQ(fs.lock(fd, true, false), 0);
  EXPECT_EQ(store.flush(), 32);
  fs.close(fd);
  EXPECT_EQ(store.flush(), 0);
  EXPECT_EQ(valueIn(path, u"A"_s), 1);
}
