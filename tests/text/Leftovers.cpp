// What killed saves leave: unfinished files go, copies are found and offered, and nothing else is touched.
#include "text/file/Leftovers.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/TempFolder.h"
#include "text/journal/JournalRead.h"

using namespace testing_files;
namespace fs = std::filesystem;

namespace {

void makeOld(const std::string& path) { fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(2)); }

// A file like those of a save that was killed long ago.
std::string plant(const TempFolder& folder, const std::string& name, const std::string& bytes = "half") {
  writeRaw(folder / name, bytes);
  makeOld(folder / name);
  return folder / name;
}

TEST(Leftovers, OnlyWhatIsCertainlyAnUnfinishedFileOfOursGoes) {
  TempFolder folder(TempFolder::Where::memory);
  for (const char* name : {".zelkor-0123456789.tmp", ".zelkor-abcdefghij.tmp"}) plant(folder, name);
  // Names of others.
  for (const char* name :
       {".zelkor-.tmp", ".zelkor-abc.tmp", ".zelkor-ABCDEFGHIJ.tmp", "zelkor-abcdefghij.tmp", ".zelkor-abcdefghij.tmp.old",
        ".zelkor-abcdefghij", ".zelkor-abcde fghij.tmp", "a.tmp", ".file.zelkor-recovery-abcdefghij"})
    plant(folder, name);
  writeRaw(folder / ".zelkor-younggggggg.tmp", "being written");
  const std::string locked = plant(folder, ".zelkor-lockedlocked.tmp");
  const int fd = ::open(locked.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(fd, LOCK_EX), 0);
  fs::create_directory(folder / ".zelkor-folderfolder.tmp");
  plant(folder, "target");
  fs::create_symlink("target", folder / ".zelkor-symlinklink.tmp");
  ASSERT_EQ(::mkfifo((folder / ".zelkor-fifofifofifo.tmp").c_str(), 0600), 0);
  makeOld(folder / ".zelkor-fifofifofifo.tmp");
  if (::geteuid() == 0) { ASSERT_EQ(::chown(plant(folder, ".zelkor-ofsomebodyelse.tmp").c_str(), 12345, 12345), 0); }
  std::vector<std::string> expected = folder.names();
  std::erase(expected, ".zelkor-0123456789.tmp");
  std::erase(expected, ".zelkor-abcdefghij.tmp");
  text::lookForLeftovers(folder.path(), false);
  EXPECT_EQ(folder.names(), expected);
  ::close(fd);   // its owner has ended
  text::lookForLeftovers(folder.path(), false);
  EXPECT_FALSE(fs::exists(locked));
  EXPECT_TRUE(text::lookForLeftovers(folder / "no such folder", false).empty());
}

TEST(Leftovers, ALockThatCannotBeHadKeepsTheFile) {
  TempFolder folder(TempFolder::Where::memory);
  const std::string path = plant(folder, ".zelkor-abcdefghij.tmp");
  for (const char* call : {"lock", "statFd", "statAt", "openAt", "unlinkAt", "listDir"}) {
    FaultyFileSystem faulty;
    faulty.failUse(call, 1, ENOLCK, true);
    const UseFileSystem use(faulty);
    text::lookForLeftovers(folder.path(), false);
    EXPECT_TRUE(fs::exists(path)) << call;
    EXPECT_EQ(faulty.openDescriptors(), 0);
  }
}

TEST(Leftovers, CopiesAreFoundByTheFileTheyAreAbout) {
  TempFolder folder(TempFolder::Where::memory);
  const std::string longName = std::string(240, 'n') + ".v";
  struct Case {
    std::string path;
    bool elsewhere;
    std::string found;   // path in the answer
  };
  const Case cases[] = {
      {"/d/a.v", false, "a.v"},
      {"/d/.bashrc", false, ".bashrc"},
      {"/d/50%2F.v", false, "50%2F.v"},
      {"/d/" + longName, false, longName.substr(0, 200)},
      {"/d/a.v", true, "/d/a.v"},
      {"/d/with blank/\xC3\xA4%\n.v", true, "/d/with blank/\xC3\xA4%\n.v"},
      {"/d/" + std::string(300, 'x') + "/a.v", true, "a.v"},   // too long to be told
  };
  for (const Case& c : cases) {
    const std::string name = text::copyName(".zelkor-abcdefghij.tmp", c.path, c.elsewhere);
    SCOPED_TRACE(name);
    EXPECT_LE(name.size(), 255u);
    EXPECT_EQ(name.find('/'), std::string::npos);
    plant(folder, name);
    const auto copies = text::lookForLeftovers(folder.path(), c.elsewhere);
    ASSERT_EQ(copies.size(), 1u);
    EXPECT_EQ(copies[0].name, name);
    EXPECT_EQ(copies[0].path, c.found);
    fs::remove(folder / name);
  }
}

TEST(Leftovers, ACopyComesBackAndIsOwnedMeanwhile) {
  TempFolder folder(TempFolder::Where::memory);
  writeRaw(folder / "a.v", "mixed");
  fs::create_symlink("a.v", folder / "link");
  const std::string copy = plant(folder, ".a.v.zelkor-recovery-abcdefghij", "the old text\r\n");
  fs::permissions(copy, fs::perms::owner_read);   // as a read-only file would have been
  plant(folder, ".b.v.zelkor-recovery-abcdefghij");
  EXPECT_TRUE(text::leftCopies({folder / "c.v"}).empty());
  {
    auto left = text::leftCopies({folder / "link", folder / "c.v"});
    ASSERT_EQ(left.size(), 1u);
    EXPECT_TRUE(left[0].isCopy());
    EXPECT_TRUE(text::leftCopies({folder / "a.v"}).empty()) << "it is being offered";
    const text::RecoveredText found = left[0].recover();
    EXPECT_EQ(found.error, "");
    EXPECT_TRUE(found.whole && found.baseWhole);
    EXPECT_EQ(found.text.bytes(), "the old text\r\n");
    EXPECT_EQ(found.about.path, folder / "link") << "the file is known by the name that it was opened by";
    EXPECT_EQ(found.about.title, "link");
    ASSERT_TRUE(found.about.stamp);
    EXPECT_EQ(*found.about.stamp, text::stampOf(folder / "a.v", true)) << "a later change by others is seen";
  }
  EXPECT_TRUE(fs::exists(copy)) << "nothing goes by itself";
  auto left = text::leftCopies({folder / "a.v"});
  ASSERT_EQ(left.size(), 1u);
  EXPECT_EQ(left[0].remove(), 0);
  EXPECT_FALSE(fs::exists(copy));
  EXPECT_TRUE(fs::exists(folder / ".b.v.zelkor-recovery-abcdefghij"));
}

TEST(Leftovers, ACopyOfAStrangerIsNotOffered) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs the right to give files away";
  TempFolder folder(TempFolder::Where::memory);
  writeRaw(folder / "a.v", "text");
  const std::string copy = plant(folder, ".a.v.zelkor-recovery-abcdefghij", "what a stranger wants us to have");
  ASSERT_EQ(::chown(copy.c_str(), 12345, 12345), 0);
  EXPECT_TRUE(text::leftCopies({folder / "a.v"}).empty());
  ASSERT_EQ(::chown((folder / "a.v").c_str(), 12345, 12345), 0);   // a file of theirs, which we save for them
  EXPECT_EQ(text::leftCopies({folder / "a.v"}).size(), 1u);
  fs::remove(copy);
  fs::create_symlink("a.v", copy);
  EXPECT_TRUE(text::leftCopies({folder / "a.v"}).empty());
}

TEST(Leftovers, S6_ACopyThatCouldNotStandBesideTheFileTellsItsPath) {
  TempFolder folder(TempFolder::Where::memory);
  const std::string state = folder / "state", place = folder / "d", path = place + "/a b.v";
  fs::create_directory(place);
  writeRaw(path, "old");
  fs::create_hard_link(path, folder / "second");
  text::setRecoveryFolder(state);
  FaultyFileSystem faulty;
  int opened = 0;
  faulty.failUse("truncate", 1, EIO, true);   // neither forth nor back: the copy stays
  faulty.before([&](const Call& call) {
    if (call.name != "openAt") return;
    ++opened;
    if (call.path.starts_with(place + "/.zelkor-")) faulty.failUse("openAt", opened, EACCES);
  });
  {
    const UseFileSystem use(faulty);
    const auto result = text::saveFile(path, text::Snapshot("n"), {});
    EXPECT_NE(result.error.find("The old text is in " + state), std::string::npos) << result.error;
  }
  text::setRecoveryFolder({});
  const auto left = text::leftCopiesElsewhere(state);
  ASSERT_EQ(left.size(), 1u);
  const text::RecoveredText found = left[0].recover();
  EXPECT_EQ(found.about.path, path);
  EXPECT_EQ(found.text.bytes(), "old");
}

}   // namespace
