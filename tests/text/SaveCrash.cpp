// S5: after a power cut at any point of a save every legal state of the disk holds the old text or the new one, and the
// new one once the save was reported as done.
#include <gtest/gtest.h>

#include <optional>

#include "tests/support/files/CrashFileSystem.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "text/file/FileIo.h"

using namespace testing_files;

namespace {

struct Scene {
  const char* name;
  std::optional<std::string> old;
  std::string fresh;
  bool hardLink = false, symlink = false;
};

std::string big(char letter) { return std::string(300'000, letter); }

TEST(SaveCrash, S5_EveryStateAfterAPowerCutIsOldOrNew) {
  const Scene scenes[] = {
      {"new", std::nullopt, "new text"},
      {"new, large", std::nullopt, big('n')},
      {"longer", "old", "a longer new text"},
      {"shorter", "the old text", "new"},
      {"empty", "the old text", ""},
      {"large", big('o'), big('n')},
      {"link", "the old text", "new", false, true},
      {"hard link, longer", "old", "a longer new text", true},
      {"hard link, shorter", "the old text", "new", true},
      {"hard link, to empty", "the old text", "", true},
      {"hard link, large", big('o'), big('n'), true},
  };
  std::size_t states = 0;
  for (const auto& scene : scenes) {
    DiskState start{{"/home/user/other.txt", "untouched"}};
    if (scene.old) start["/home/user/file.txt"] = *scene.old;
    CrashFileSystem disk(start);
    if (scene.hardLink) {
      disk.linkAt(CrashFileSystem::kCwd, "/home/user/file.txt", CrashFileSystem::kCwd, "/home/user/second.txt");
      const int folder = disk.openAt(CrashFileSystem::kCwd, "/home/user", text::kRead | text::kDirectory, 0);
      disk.sync(folder);
      disk.close(folder);
    }
    if (scene.symlink) disk.addSymlink("/home/user/link", "file.txt");
    FaultyFileSystem faulty(disk);
    const UseFileSystem use(faulty);

    const auto holdsOldOrNew = [&](const DiskState& state, bool onlyNew) {
      const auto it = state.find("/home/user/file.txt");
      if (it == state.end()) return !onlyNew && !scene.old;
      if (it->second == scene.fresh) return true;
      if (onlyNew) return false;
      if (scene.old && it->second == *scene.old) return true;
      if (!scene.hardLink) return false;
      // Being overwritten: then a whole copy of the old text stands beside it.
      for (const auto& [path, bytes] : state)
        if (path.starts_with("/home/user/.file.txt.zelkor-recovery-") && bytes == *scene.old) return true;
      return false;
    };
    const auto checkAll = [&](const std::string& when, bool onlyNew) {
      for (const auto& state : disk.afterPowerCut(400)) {
        ++states;
        if (holdsOldOrNew(state, onlyNew)) continue;
        std::string listing;
        for (const auto& [path, bytes] : state) listing += path + ": " + bytes.substr(0, 40) + "\n";
        ADD_FAILURE() << scene.name << ", " << when << "\n" << listing;
        return;
      }
    };
    text::SaveOptions options;
    if (scene.old) options.expected = text::stampOf("/home/user/file.txt", true);
    faulty.before([&](const Call& call) {
      if (!::testing::Test::HasFailure()) checkAll("before call " + std::to_string(call.number) + " " + call.name, false);
    });
    const auto result =
        text::saveFile(scene.symlink ? "/home/user/link" : "/home/user/file.txt", text::Snapshot(scene.fresh), options);
    ASSERT_EQ(result.error, "");
    faulty.before(nullptr);
    checkAll("after the save", true);
  }
  std::printf("%zu states looked at\n", states);
  EXPECT_GT(states, 200u);
}

}   // namespace
