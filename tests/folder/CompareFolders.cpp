// Two folders compared: by table, and made trees against `diff -rq`.
#include "folder/CompareFolders.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <set>
#include <sstream>

#include "tests/support/files/AllocationFault.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/TempFolder.h"

namespace fs = std::filesystem;
using namespace testing_files;

namespace {

std::string shown(const folder::FoldersCompared& compared) {
  std::string all = compared.error;
  for (const auto& one : compared.differences) all += one.path + ":" + std::to_string(one.line) + ": " + textOf(one) + "\n";
  return all;
}

class CompareFolders : public ::testing::Test {
 protected:
  CompareFolders() {
    fs::create_directories(left + "/sub/deep");
    fs::create_directories(right + "/sub");
  }
  folder::FoldersCompared compare(const folder::WalkOptions& options = {}) {
    text::SearchControl control;
    return folder::compareFolders(left, right, options, control);
  }
  TempFolder top{TempFolder::Where::memory};
  const std::string left = top / "left", right = top / "right";
};

TEST_F(CompareFolders, SaysWhatDiffersAndWhy) {
  const std::string large(600000, 'x');
  for (const auto& [name, one, other] :
       std::vector<std::tuple<std::string, std::string, std::string>>{{"same.v", "a\n", "a\n"},
                                                                      {"sub/line.v", "a\nb\nc\n", "a\nb\nd\n"},
                                                                      {"large.v", large + "\n\nA", large + "\n\nB"},
                                                                      {"longer.v", large, large + "x"},
                                                                      {"ends.v", "a\r\nb\r\n", "a\nb\n"},
                                                                      {"cr.v", "a\rb\n", "a\nb\n"},
                                                                      {"data.bin", std::string("a\0b", 3), std::string("a\0c", 3)},
                                                                      {"n\nl\xff.v", "a", "b"},
                                                                      {"skip.tmp", "a", "b"}}) {
    writeRaw(left + "/" + name, one);
    writeRaw(right + "/" + name, other);
  }
  writeRaw(left + "/sub/deep/only.v", "");
  writeRaw(right + "/sub/zonly.v", "");
  writeRaw(left + "/build.o", "1"), writeRaw(right + "/build.o", "2"), writeRaw(right + "/.gitignore", "*.o\n");
  writeRaw(left + "/kind.v", ""), fs::create_directories(right + "/kind.v");
  writeRaw(left + "/link.v", ""), fs::create_symlink("same.v", right + "/link.v");
  ASSERT_EQ(::mkfifo((left + "/pipe.v").c_str(), 0600), 0);
  writeRaw(right + "/pipe.v", "");
  folder::WalkOptions options;
  options.masks = folder::Masks("!*.tmp");
  const auto compared = compare(options);
  EXPECT_EQ(shown(compared),
            "cr.v:1: differs\ndata.bin:1: differs (binary)\nends.v:1: differs in the ends of lines only\n"
            "kind.v:1: is a folder in the second folder\nlarge.v:3: differs\nlink.v:1: is a link in the second folder\n"
            "longer.v:1: differs\nn\nl\xff.v:1: differs\npipe.v:1: is no regular file in the first folder\n"
            "sub/deep/only.v:1: only in the first folder\nsub/line.v:3: differs\nsub/zonly.v:1: only in the second folder\n");
  EXPECT_EQ(compared.same, 1);
  EXPECT_EQ(compared.leftOut, 7);   // twice skip.tmp; build.o and where it is not ignored; .gitignore, link and FIFO
  if (::geteuid() != 0) {
    fs::permissions(left + "/same.v", fs::perms::none);
    fs::permissions(right + "/sub", fs::perms::none);
    EXPECT_NE(shown(compare()).find("same.v:1: cannot be read in the first folder: Permission denied\n"), std::string::npos);
    EXPECT_NE(shown(compare()).find(std::string("sub:1: cannot be read in the second folder: ") + std::strerror(EACCES) + "\n"),
              std::string::npos);
    fs::permissions(right + "/sub", fs::perms::all);
  }
  text::SearchControl control;
  EXPECT_EQ(shown(folder::compareFolders(left, top / "gone", {}, control)), top / "gone: " + std::strerror(ENOENT));
  control.cancel = true;
  EXPECT_TRUE(folder::compareFolders(left, right, {}, control).stopped);
}

TEST_F(CompareFolders, EndsInOrderWithoutMemory) {
  for (int i = 0; i < 8; ++i) writeRaw(left + "/" + std::to_string(i), "a"), writeRaw(right + "/" + std::to_string(i), "b");
  const std::string whole = shown(compare());
  int failed = 0;
  bool hit = true;
  for (long n = 1; hit; ++n) {
    folder::FoldersCompared compared;
    {
      const AllocationFault fault(n, true);
      compared = compare();
      hit = fault.hit();
    }
    const std::string said = shown(compared);
    EXPECT_TRUE(said == whole || (hit && said == "Out of memory")) << n << said;
    failed += said != whole;
  }
  EXPECT_GT(failed, 20);
}

TEST_F(CompareFolders, CountsWhatIsNotListed) {
  struct Unreadable : FaultyFileSystem {
    int listEntries(const std::string& path, std::vector<text::FolderEntry>* entries) override {
      return path.find("/left/d") != path.npos ? -EACCES : FaultyFileSystem::listEntries(path, entries);
    }
  } files;
  for (int i = 0; i < 1001; ++i) fs::create_directories(left + "/d" + std::to_string(i));
  const UseFileSystem use(files);
  const auto compared = compare();
  EXPECT_EQ(compared.differences.size(), 1000u);
  EXPECT_EQ(compared.unlisted, 1);
}

TEST_F(CompareFolders, FindsWhatDiffFinds) {
  std::mt19937 random(4);
  fs::remove_all(left + "/sub"), fs::remove_all(right + "/sub");
  for (int round = 0; round < 5; ++round) {
    for (const std::string& folder : {left, right}) {
      for (int i = 0; i < 200; ++i) {
        const std::string place = folder + "/d" + std::to_string(random() % 5) + "/e" + std::to_string(random() % 3);
        fs::create_directories(place);
        writeRaw(place + "/f" + std::to_string(random() % 20), "content " + std::to_string(random() % 3));
      }
    }
    const auto compared = compare();
    std::set<std::string> ours, theirs;
    for (const auto& one : compared.differences) ours.insert(one.path);
    // Like ours, diff names single files where the folder is in both.
    for (int d = 0; d < 5; ++d)
      for (int e = 0; e < 3; ++e)
        for (const std::string& folder : {left, right})
          fs::create_directories(folder + "/d" + std::to_string(d) + "/e" + std::to_string(e));
    std::system(("LC_ALL=C diff -rq '" + left + "' '" + right + "' >" + top / "out").c_str());
    std::istringstream lines(readRaw(top / "out"));
    for (std::string line; std::getline(lines, line);) {   // "Only in FOLDER: NAME", "Files A and B differ"
      std::string path = line.starts_with("Only in ") ? line.substr(8) : line.substr(6, line.find(" and ") - 6);
      if (const auto colon = path.find(": "); colon != std::string::npos) path.replace(colon, 2, "/");
      theirs.insert(path.substr(path.starts_with(left) ? left.size() + 1 : right.size() + 1));
    }
    EXPECT_EQ(ours, theirs);
    EXPECT_GT(compared.same, 10);
  }
}

}   // namespace
