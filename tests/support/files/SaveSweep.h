// Holds a save of any kind against the promises of saving: sweepFaults() fails each of its calls, once and for ever, with each
// error that disks give, and cuts its writes short (S2); sweepPowerCuts() plays a power cut before each call and after the last
// (S5). The target is there before, with the bytes "old"; a file named like it with ".bak" behind may appear.
#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>

#include "tests/support/files/CrashFileSystem.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/TempFolder.h"
#include "text/file/FileIo.h"

namespace testing_files {

struct SweptSave {
  std::string old;                                         // what the target holds before
  std::function<void(const std::string& path)> prepare;    // the file is there; nothing fails yet
  std::function<bool(const std::string& path)> save;       // false: refused
  std::function<std::string()> told;                       // what the user was told by the last save
  std::function<bool(const std::string& bytes)> isFresh;   // the target holds the whole new bytes
};

// Counts of what was tried; a test prints them and asks for a least number.
struct SweepCount {
  int faults = 0, refused = 0;
  std::size_t states = 0;
};

inline SweepCount sweepFaults(const SweptSave& what) {
  SweepCount count;
  const auto run = [&](const std::function<void(FaultyFileSystem&)>& plant, int error, bool forEver) {
    TempFolder folder{TempFolder::Where::memory};
    const std::string path = folder / "target";
    writeRaw(path, what.old);
    what.prepare(path);
    const auto before = folder.names();
    FaultyFileSystem faulty;
    plant(faulty);
    bool saved = false;
    {
      const UseFileSystem use(faulty);
      saved = what.save(path);
    }
    const std::string bytes = readRaw(path), told = saved ? std::string() : what.told();
    EXPECT_EQ(faulty.openDescriptors(), 0);
    if (saved) {
      EXPECT_TRUE(what.isFresh(bytes));
    } else {
      EXPECT_NE(error, 0);
      EXPECT_NE(told.find(text::errorText(error)), std::string::npos) << told;
      // Where every later call fails too the new bytes may have to stay; then they are whole and it is said.
      const bool stays = forEver && told.find("new text was written") != std::string::npos && what.isFresh(bytes);
      EXPECT_TRUE(bytes == what.old || stays) << told;
    }
    auto names = folder.names();
    std::erase(names, "target.bak");
    if (!forEver) { EXPECT_EQ(names, before); }
    return std::pair(saved, static_cast<int>(faulty.log().size()));
  };
  const auto [saved, calls] = run([](FaultyFileSystem&) {}, 0, false);
  EXPECT_TRUE(saved);
  for (const std::size_t most : {1, 4096}) EXPECT_TRUE(run([&](FaultyFileSystem& f) { f.shortWrites(most); }, 0, false).first);
  for (const int error : {EIO, ENOSPC, EDQUOT, EROFS, EACCES})
    for (const bool forEver : {false, true})
      for (int n = 1; n <= calls && !::testing::Test::HasFailure(); ++n) {
        SCOPED_TRACE("call " + std::to_string(n) + (forEver ? " for ever: " : " once: ") + text::errorText(error));
        ++count.faults;
        count.refused += !run([&](FaultyFileSystem& f) { f.failCall(n, error, forEver); }, error, forEver).first;
      }
  return count;
}

inline SweepCount sweepPowerCuts(const SweptSave& what) {
  SweepCount count;
  const std::string path = "/home/user/target";
  CrashFileSystem disk(DiskState{{path, what.old}});
  FaultyFileSystem watched(disk);
  const UseFileSystem use(watched);
  what.prepare(path);
  const auto look = [&](const std::string& when, bool onlyNew) {
    for (const auto& state : disk.afterPowerCut(400)) {
      ++count.states;
      const auto it = state.find(path);
      const bool good = it != state.end() && (what.isFresh(it->second) || (!onlyNew && it->second == what.old));
      EXPECT_TRUE(good) << when << ": " << (it == state.end() ? "gone" : it->second.substr(0, 60));
      if (!good) return;
    }
  };
  watched.before([&](const Call& call) {
    if (!::testing::Test::HasFailure()) look("before call " + std::to_string(call.number) + " " + call.name, false);
  });
  EXPECT_TRUE(what.save(path));
  watched.before(nullptr);
  look("after the save", true);
  return count;
}

// Both, with the counts printed.
inline void sweepSave(const SweptSave& what) {
  const SweepCount faults = sweepFaults(what);
  const SweepCount cuts = sweepPowerCuts(what);
  std::printf("%d faults injected, %d saves refused, %zu states after power cuts\n", faults.faults, faults.refused, cuts.states);
  EXPECT_GT(faults.refused, 50);
  EXPECT_GT(cuts.states, 30u);
}

}   // namespace testing_files
