// The definition file is saved as safely as a text (S1 to S5 over the seam), with the copy of the old one beside it.
#include <QTemporaryDir>

#include "language/ucCM.h"
#include "tests/language/Language.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/files/SaveSweep.h"

using namespace testing_files;

namespace {

const std::string kOld = "SetLanguage:Old\r\n[Keywords]\r\nalways\r\n\r\n",
                  kNew = "SetLanguage:New\r\n[Keywords]\r\nalways\r\n\r\n";

TEST(DefinitionSave, S2_S5_FaultsAndPowerCutsLeaveTheOldFileOrTheNewOne) {
  auto dialogs = std::make_unique<ScriptedDialogs>();
  std::unique_ptr<ucCM> manager;
  SweptSave what;
  what.old = kOld;
  what.prepare = [&](const std::string& path) {
    manager = std::make_unique<ucCM>();
    manager->setIniFile(QString::fromStdString(path));
    manager->Init();
    ASSERT_EQ(manager->Languages()->Count(), 1);
    manager->Languages()->Item(1)->Name = QStringLiteral("New");
  };
  what.save = [&](const std::string& path) {
    // What is asked after a failure: whether to use a file of one's own from now on.
    dialogs->boxes.clear();
    dialogs->answerAny(Answer::no);
    const bool saved = manager->SaveIniFile();
    EXPECT_EQ(dialogs->boxes.size(), saved ? 0u : 1u);
    EXPECT_EQ(manager->IniFile().toStdString(), path);
    EXPECT_EQ(manager->Languages()->Item(1)->Name, QStringLiteral("New")) << "the model is kept for another try";
    return saved;
  };
  what.told = [&] { return dialogs->last().text.toStdString(); };
  what.isFresh = [](const std::string& bytes) { return bytes == kNew; };
  sweepSave(what);
}

// The copy is one whole definition file at any moment: the one before, or the one that is being replaced.
TEST(DefinitionSave, S1_TheCopyBesideItIsNeverHalf) {
  const std::string path = "/home/user/Zelkor.ini", older = "SetLanguage:Older\r\n[Keywords]\r\n\r\n";
  CrashFileSystem disk(DiskState{{path, kOld}, {path + ".bak", older}});
  FaultyFileSystem watched(disk);
  const UseFileSystem use(watched);
  ucCM manager;
  manager.setIniFile(QString::fromStdString(path));
  manager.Init();
  manager.Languages()->Item(1)->Name = QStringLiteral("New");
  std::size_t states = 0;
  const auto look = [&] {
    for (const DiskState& state : disk.afterPowerCut(200)) {
      ++states;
      const auto it = state.find(path + ".bak");
      ASSERT_TRUE(it != state.end() && (it->second == older || it->second == kOld));
      const std::string& now = state.at(path);
      ASSERT_TRUE(now == kOld || (now == kNew && it->second == kOld)) << "the copy is safe before the file changes";
    }
  };
  watched.before([&](const Call&) { look(); });
  ASSERT_TRUE(manager.SaveIniFile());
  look();
  EXPECT_EQ(disk.now().at(path + ".bak"), kOld);
  EXPECT_GT(states, 50u);
}

TEST(DefinitionSave, S10_TheCopyIsNoWiderThanTheFile) {
  const TempFolder folder;
  writeRaw(folder / "Zelkor.ini", kOld);
  std::filesystem::permissions(folder / "Zelkor.ini", std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  ucCM manager;
  manager.setIniFile(QString::fromStdString(folder / "Zelkor.ini"));
  manager.Init();
  ASSERT_TRUE(manager.SaveIniFile());
  for (const char* name : {"Zelkor.ini", "Zelkor.ini.bak"})
    EXPECT_EQ(text::stampOf(folder / name, false).status.mode & 0777, 0600u) << name;
}

}   // namespace
