// S3: a full disk never costs the old text. On a file system of one mebibyte in memory, mounted for the test only.
#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <filesystem>

#include "tests/support/files/SmallDisk.h"
#include "tests/support/files/TempFolder.h"
#include "text/file/FileIo.h"

using namespace testing_files;
namespace fs = std::filesystem;

namespace {

std::int64_t freeBytes(const std::string& where) {
  struct statvfs s {};
  EXPECT_EQ(::statvfs(where.c_str(), &s), 0);
  return static_cast<std::int64_t>(s.f_bavail) * static_cast<std::int64_t>(s.f_bsize);
}

TEST(SaveFullDisk, S3_TheOldTextIsWholeWhenTheDiskIsFull) {
  TempFolder folder;
  const int status = inChild([&] {
    mountSmall(folder.path());
    const std::string file = folder / "file", ballast = folder / "ballast", second = folder / "second";
    text::setRecoveryFolder(folder.path());
    int saved = 0, refused = 0;
    for (const bool hardLink : {false, true}) {
      for (const std::int64_t oldSize : {0, 4'096, 16'385, 300'000}) {
        for (const std::int64_t room : {0, 4'096, 16'384, 20'000, 310'000, 600'000}) {
          for (const std::int64_t size : {1, 4'095, 4'096, 4'097, 16'384, 16'385, 299'999, 305'000, 900'000}) {
            std::error_code none;
            for (const auto& path : {file, ballast, second}) fs::remove(path, none);
            const std::string old(static_cast<std::size_t>(oldSize), 'o'), fresh(static_cast<std::size_t>(size), 'n');
            writeRaw(file, old);
            if (hardLink) fs::create_hard_link(file, second);
            if (const auto fill = freeBytes(folder.path()) - room; fill > 0)
              writeRaw(ballast, std::string(static_cast<std::size_t>(fill), 'b'));
            const auto before = folder.names();
            const auto result = text::saveFile(file, text::Snapshot(fresh), {{}, text::stampOf(file, true)});
            const std::string what = (hardLink ? "hard link, old " : "old ") + std::to_string(oldSize) + ", new " +
                                     std::to_string(size) + ", room " + std::to_string(room) + ": " + result.error;
            EXPECT_TRUE(readRaw(file) == (result.ok() ? fresh : old)) << what;
            EXPECT_TRUE(result.ok() || result.error == "No space left on device") << what;
            EXPECT_EQ(folder.names(), before) << what;
            ++(result.ok() ? saved : refused);
            if (::testing::Test::HasFailure()) return;
          }
        }
      }
    }
    std::printf("%d saves done, %d refused\n", saved, refused);
    EXPECT_GT(saved, 50);
    EXPECT_GT(refused, 50);
  });
  if (status == kSkipped) GTEST_SKIP() << "a small tmpfs cannot be mounted here";
  EXPECT_EQ(status, 0);
}

}   // namespace
