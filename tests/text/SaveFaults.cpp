// Saving when calls fail or others interfere: the file stays old or becomes new, and nothing is left behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/TempFolder.h"
#include "text/file/FileIo.h"

using namespace testing_files;
namespace fs = std::filesystem;

namespace {

// One situation to save in: what is there before, and which way a save must take.
struct Scene {
  const char* name;
  bool exists, symlink, hardLink, expected;
  std::size_t oldSize, newSize;
  bool inPlace() const { return hardLink; }
};
constexpr Scene kScenes[] = {
    {"new file", false, false, false, true, 0, 700'000},
    {"new, nothing expected", false, false, false, false, 0, 10},
    {"longer", true, false, false, true, 5'000, 700'000},
    {"shorter, nothing expected", true, false, false, false, 700'000, 5'000},
    {"to empty", true, false, false, true, 5'000, 0},
    {"symbolic link", true, true, false, true, 5'000, 6'000},
    {"hard link, longer", true, false, true, true, 5'000, 700'000},
    {"hard link, shorter", true, false, true, true, 700'000, 5'000},
    {"hard link, to empty", true, false, true, false, 5'000, 0},
};

class Stage {
 public:
  explicit Stage(const Scene& scene) : scene_(scene) {
    old_ = std::string(scene.oldSize, 'o');
    new_ = std::string(scene.newSize, 'n');
    real_ = folder_ / "file.txt";
    path_ = real_;
    fs::create_directory(folder_ / "state");
    text::setRecoveryFolder(folder_ / "state");
    if (scene.exists) writeRaw(real_, old_);
    if (scene.hardLink) fs::create_hard_link(real_, folder_ / "other.txt");
    if (scene.symlink) {
      fs::create_symlink("file.txt", folder_ / "middle");
      fs::create_symlink(folder_ / "middle", folder_ / "link");
      path_ = folder_ / "link";
    }
    before_ = folder_.names();
    if (scene.expected) stamp_ = text::stampOf(path_, true);
  }
  ~Stage() { text::setRecoveryFolder({}); }

  text::SaveResult save() const {
    text::SaveOptions options;
    options.expected = stamp_;
    return text::saveFile(path_, text::Snapshot(new_), options);
  }

  // The words of S2, for any outcome. deadDisk: every call failed from some point on, so that no cleaning up was possible.
  void check(const text::SaveResult& result, const FaultyFileSystem& faulty, bool deadDisk) const {
    EXPECT_EQ(faulty.openDescriptors(), 0);
    std::vector<std::string> names = folder_.names();
    if (result.ok()) {
      EXPECT_TRUE(readRaw(real_) == new_);
      if (!scene_.exists) std::erase(names, "file.txt");
    } else if (!fs::exists(real_)) {
      EXPECT_FALSE(scene_.exists) << result.error;
    } else if (!scene_.exists) {
      EXPECT_TRUE(deadDisk && result.error.find("new text was written") != std::string::npos) << result.error;
      std::erase(names, "file.txt");
    } else if (readRaw(real_) != old_) {
      // Then the message must say where the old text is.
      const auto at = result.error.find("The old text is in ");
      ASSERT_TRUE((deadDisk || scene_.inPlace()) && at != std::string::npos) << result.error;
      auto copy = result.error.substr(at + 19);
      copy = copy.substr(0, copy.find(". The new"));
      EXPECT_TRUE(readRaw(copy) == old_);
    }
    EXPECT_EQ(result.error.find("changed by another"), std::string::npos);
    if (deadDisk) return;
    if (result.error.find("The old text is in ") != std::string::npos)
      std::erase_if(names, [](const std::string& name) { return name.find("zelkor-recovery-") != std::string::npos; });
    EXPECT_EQ(names, before_);
    EXPECT_TRUE(fs::is_empty(folder_ / "state"));
    if (scene_.hardLink) { EXPECT_EQ(fs::hard_link_count(real_), 2u); }
    if (scene_.symlink) { EXPECT_TRUE(fs::is_symlink(path_)); }
  }

  const std::string& real() const { return real_; }
  const std::string& newText() const { return new_; }
  const TempFolder& folder() const { return folder_; }
  void setStamp(const text::FileStamp& stamp) { stamp_ = stamp; }

 private:
  const Scene& scene_;
  TempFolder folder_{TempFolder::Where::memory};   // thousands of syncs
  std::string path_, real_, old_, new_;
  std::vector<std::string> before_;
  std::optional<text::FileStamp> stamp_;
};

std::string trace(const std::vector<Call>& log) {
  std::string all;
  for (const auto& call : log)
    all += std::to_string(call.number) + " " + call.name + " " + call.path.substr(call.path.rfind('/') + 1) + " = " +
           std::to_string(call.result) + "\n";
  return all;
}

struct Outcome {
  text::SaveResult result;
  std::vector<Call> log;
};
using Plant = std::function<void(FaultyFileSystem&)>;

// A save in the scene with these faults planted, held against the words of S2.
Outcome checkedSave(const Scene& scene, const Plant& plant, bool deadDisk = false) {
  const Stage stage(scene);
  FaultyFileSystem faulty;
  plant(faulty);
  Outcome outcome;
  {
    const UseFileSystem use(faulty);
    outcome = {stage.save(), faulty.log()};
  }
  SCOPED_TRACE(std::string(scene.name) + ": " + outcome.result.error + "\n" + trace(outcome.log));
  stage.check(outcome.result, faulty, deadDisk);
  EXPECT_TRUE(!outcome.result.ok() || outcome.result.stamp == text::stampOf(stage.real(), true));
  return outcome;
}

// ZELKOR_FULL=1: every error that a disk may report.
TEST(SaveFaults, S2_EveryFailingCallLeavesOldOrNewAndNothingElse) {
  const std::vector<int> errors =
      std::getenv("ZELKOR_FULL") ? std::vector{EIO, ENOSPC, EDQUOT, EROFS, EACCES} : std::vector{EIO, EACCES};
  int failed = 0, injected = 0;
  for (const auto& scene : kScenes) {
    const auto whole = checkedSave(scene, [](FaultyFileSystem&) {});
    EXPECT_EQ(whole.result.error, "") << scene.name;
    for (const int error : errors) {
      for (const bool forEver : {false, true}) {
        for (int n = 1; n <= static_cast<int>(whole.log.size()); ++n) {
          SCOPED_TRACE("call " + std::to_string(n) + (forEver ? " for ever: " : " once: ") + text::errorText(error));
          const auto [result, log] = checkedSave(
              scene, [&](FaultyFileSystem& f) { f.failCall(n, error, forEver); }, forEver);
          ++injected;
          failed += !result.ok();
          EXPECT_TRUE(result.ok() || result.error.starts_with(text::errorText(error))) << scene.name << ": " << result.error;
          if (::testing::Test::HasFailure()) return;
        }
      }
    }
  }
  std::printf("%d faults injected, %d saves refused\n", injected, failed);
  EXPECT_GT(failed, injected / 2);
}

TEST(SaveFaults, S2_CallsThatOneKindFailsForEver) {
  for (const auto& scene : kScenes)
    for (const char* name :
         {"openAt", "statAt", "statFd", "accessAt", "read", "write", "seek", "sync", "truncate", "allocate", "renameAt", "linkAt",
          "changeMode", "changeOwner", "listAttributes", "getAttribute", "setAttribute", "close"})
      checkedSave(scene, [&](FaultyFileSystem& f) { f.failUse(name, 1, EIO, true); });
}

TEST(SaveFaults, S2_ShortWritesAndInterruptedCallsAreContinued) {
  for (const auto& scene : kScenes) {
    for (const std::size_t most : {1, 4'096, 99'999})
      if (scene.newSize / most <= 10'000) {
        EXPECT_EQ(checkedSave(scene, [&](FaultyFileSystem& f) { f.shortWrites(most); }).result.error, "")
            << scene.name << ": " << most;
      }
    for (const char* name : {"openAt", "read", "write", "sync"})
      EXPECT_EQ(checkedSave(scene, [&](FaultyFileSystem& f) { f.failUse(name, 1, EINTR); }).result.error, "")
          << scene.name << ": " << name;
  }
}

// The order of the calls that make a save durable, by what they are about.
TEST(SaveFaults, S4_SavedMeansSyncedRenamedAndFolderSynced) {
  for (const auto& scene : kScenes) {
    const Stage stage(scene);
    FaultyFileSystem faulty;
    const UseFileSystem use(faulty);
    ASSERT_EQ(stage.save().error, "");
    SCOPED_TRACE(std::string(scene.name) + "\n" + trace(faulty.log()));
    std::string order;
    for (const auto& call : faulty.log()) {
      const bool folder = call.path == stage.folder().path();
      const bool target = call.path == stage.real();
      if (call.name == "write" && !order.ends_with("w ") && !order.ends_with("W ")) order += target ? "W " : "w ";
      if (call.name == "sync") order += folder ? "sync-folder " : target ? "SYNC " : "sync ";
      if (call.name == "renameAt") order += "rename ";
      if (call.name == "truncate") order += "CUT ";
      if (call.name == "unlinkAt") order += "unlink ";
    }
    std::string expected = scene.newSize > 0 ? "w " : "";
    if (scene.inPlace())
      expected = std::string("w sync rename sync-folder ") + (scene.newSize > 0 ? "W " : "") +
                 (scene.newSize < scene.oldSize ? "CUT " : "") + "SYNC unlink ";
    else expected += scene.exists ? "sync rename rename sync-folder unlink " : "sync rename sync-folder ";
    EXPECT_EQ(order, expected);
  }
}

TEST(SaveFaults, S6_S7_ATargetThatIsReplacedIsNeverOpenedForWriting) {
  for (const auto& scene : kScenes) {
    if (scene.inPlace()) continue;
    for (int n = 0, calls = 0; n <= calls; ++n) {   // 0: no fault
      const Stage stage(scene);
      FaultyFileSystem faulty;
      faulty.failCall(n, EIO);
      const UseFileSystem use(faulty);
      stage.save();
      if (n == 0) calls = static_cast<int>(faulty.log().size());
      for (const auto& call : faulty.log()) {
        EXPECT_FALSE(call.name == "openAt" && call.path == stage.real() && (call.flags & text::kWrite))
            << scene.name << " after a fault in call " << n;
        EXPECT_NE(call.name, "truncate");
      }
    }
  }
}

TEST(SaveFaults, RenamesThatAFileSystemLacksAreMadeUpFor) {
  for (const auto& scene : kScenes) {
    if (scene.inPlace()) continue;
    for (const bool links : {true, false}) {
      for (int n = 0, calls = 0; n <= calls; ++n) {   // 0: no fault
        const Stage stage(scene);
        FaultyFileSystem faulty;
        faulty.failUse("renameAt", scene.exists ? 2 : 1, EINVAL);   // behind the one that names it a whole text
        if (!links) faulty.failUse("linkAt", 1, EPERM, true);
        faulty.failCall(n, EIO);
        const UseFileSystem use(faulty);
        const auto result = stage.save();
        SCOPED_TRACE(std::string(scene.name) + ", fault in call " + std::to_string(n) + ": " + result.error + "\n" +
                     trace(faulty.log()));
        if (n == 0) {
          EXPECT_EQ(result.error, "");
          calls = static_cast<int>(faulty.log().size());
        }
        // Without links the rename cannot be taken back; the message then says so.
        const bool written = result.error.find("The new text was written") != std::string::npos;
        EXPECT_FALSE(links && written);
        if (!written) stage.check(result, faulty, false);
      }
    }
  }
}

// S12: whatever another program does to the target between any two calls of ours, its work is there afterwards, either
// because the save was refused or because it came behind it.
TEST(SaveFaults, S12_AChangeByOthersIsNeverOverwritten) {
  struct Change {
    const char* name;
    std::function<void(const Stage&)> make;
    std::optional<std::string> content;   // of the target afterwards; not set: it is gone
  };
  const std::string same(5'000, 'x');
  const Change changes[] = {
      {"rewritten in place, same size", [&](const Stage& s) { writeRaw(s.real(), same); }, same},
      {"replaced by a rename",
       [&](const Stage& s) {
         writeRaw(s.folder() / "aside", same);
         fs::rename(s.folder() / "aside", s.real());
       },
       same},
      {"another size", [](const Stage& s) { writeRaw(s.real(), "other"); }, "other"},
      {"removed", [](const Stage& s) { fs::remove(s.real()); }, std::nullopt},
  };
  for (const auto& scene : kScenes) {
    if (!scene.expected || (scene.exists && scene.oldSize != same.size())) continue;
    for (const auto& change : changes) {
      if (!scene.exists && !change.content) continue;
      int refused = 0, done = 0;
      for (int n = 1, last = 1; n <= last; ++n) {
        const Stage stage(scene);
        FaultyFileSystem faulty;
        bool tooLate = false, changed = false;
        faulty.before([&](const Call& call) {
          // In place there is an unavoidable moment: between the last look and the last write.
          if (scene.inPlace() && call.path == stage.real() && (call.name == "allocate" || (call.name == "seek" && !changed)))
            tooLate = true;
          if (call.number != n || tooLate) return;
          change.make(stage);
          changed = true;
        });
        const UseFileSystem use(faulty);
        const auto result = stage.save();
        SCOPED_TRACE(std::string(scene.name) + ": " + change.name + " before call " + std::to_string(n) + "\n" + result.error +
                     "\n" + trace(faulty.log()));
        last = std::max(last, static_cast<int>(faulty.log().size()));
        if (!changed) continue;
        (result.ok() ? done : refused) += 1;
        EXPECT_EQ(fs::exists(stage.real()), change.content.has_value());
        if (change.content && fs::exists(stage.real())) { EXPECT_TRUE(readRaw(stage.real()) == *change.content); }
        for (const auto& name : stage.folder().names()) EXPECT_EQ(name.find("zelkor"), std::string::npos) << name;
        if (::testing::Test::HasFailure()) return;
      }
      EXPECT_GT(refused, 0) << scene.name << ": " << change.name;
    }
  }
}

TEST(SaveFaults, S12_TimesAloneAreNoChange) {
  const Stage stage(kScenes[2]);
  fs::last_write_time(stage.real(), fs::file_time_type::clock::now() + std::chrono::hours(1));
  EXPECT_EQ(stage.save().error, "");
}

TEST(SaveFaults, S12_TheStampOfASaveServesTheNext) {
  for (const auto& scene : kScenes) {
    Stage stage(scene);
    const auto first = stage.save();
    ASSERT_EQ(first.error, "");
    stage.setStamp(first.stamp);
    EXPECT_EQ(stage.save().error, "");
    writeRaw(stage.real(), std::string(scene.newSize, 'y'));
    const auto third = stage.save();
    EXPECT_EQ(third.changedOnDisk, scene.newSize > 0) << scene.name;
  }
}

TEST(SaveFaults, S13_TextThatDoesNotFitIsFoundBeforeAnyCall) {
  FaultyFileSystem faulty;
  const UseFileSystem use(faulty);
  struct Case {
    std::string text;
    text::Encoding encoding;
    std::string error;
  };
  const Case cases[] = {
      {"a\nb \xe2\x82\xac\n", text::Encoding::latin1, "The character U+20AC in line 2 does not fit the encoding ISO-8859-1"},
      {"\xf0\x9f\x98\x80", text::Encoding::windows1252, "The character U+1F600 in line 1 does not fit the encoding Windows-1252"},
      {"\n\n\xff", text::Encoding::utf16le, "The byte FF in line 3 does not fit the encoding UTF-16LE"},
      {std::string(700'000, 'x') + "\n\xc3", text::Encoding::cp437, "The byte C3 in line 2 does not fit the encoding CP437"},
  };
  for (const auto& c : cases) {
    const auto result = text::saveFile("/nowhere/file", text::Snapshot(c.text), {{c.encoding, false}, {}});
    EXPECT_EQ(result.error, c.error);
  }
  EXPECT_EQ(faulty.log().size(), 0u);
}

}   // namespace
