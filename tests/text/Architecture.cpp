// Holds every #include line of the floors against the order of the house, and the engine against Qt.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>

namespace fs = std::filesystem;

TEST(Architecture, IncludesPointDown) {
  const char* source = std::getenv("ZELKOR_SOURCE");
  ASSERT_NE(source, nullptr);
  const std::vector<std::string> upwards{"control", "language", "document", "print", "app"};
  std::map<std::string, std::set<std::string>> allowed{{"text", {"text"}}, {"base", {"base"}}};
  std::set<std::string> below{"text", "base"};
  for (const auto& floor : upwards) {
    below.insert(floor);
    allowed[floor] = below;
  }
  const std::regex include(R"re(^\s*#\s*include\s+[<"](?:([a-z]+)/|(Q)))re");
  int checked = 0;
  for (const auto& [floor, may] : allowed) {
    if (!fs::exists(fs::path(source) / floor)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(source) / floor)) {
      if (entry.path().extension() != ".h" && entry.path().extension() != ".cpp") continue;
      std::ifstream in(entry.path());
      std::string line;
      for (int number = 1; std::getline(in, line); ++number) {
        std::smatch m;
        if (!std::regex_search(line, m, include)) continue;
        ++checked;
        const bool qtInEngine = floor == "text" && m[2].matched;
        const bool upward = m[1].matched && allowed.count(m[1]) && !may.count(m[1]);
        EXPECT_FALSE(qtInEngine || upward) << entry.path() << ":" << number << ": " << line;
      }
    }
  }
  EXPECT_GT(checked, 0);
}

// Files are opened, written, renamed and removed through FileSystem.h only: that is what the tests of saving stand on. Looking
// at files (QFileInfo) and reading the program's own resources (":/...") is all right.
TEST(Architecture, FilesGoThroughTheSeam) {
  const char* source = std::getenv("ZELKOR_SOURCE");
  ASSERT_NE(source, nullptr);
  const std::regex direct(
      R"re(\bQ(SaveFile|TemporaryFile|Settings|LockFile)\b|\bQFile\s+\w+\s*[({]|\bQFile\s*\(|\bQFile::(?!encodeName|decodeName|exists)\w)re"
      R"re(|\bstd::([io]?fstream|filesystem)\b|\bfopen\s*\(|(^|[^\w>])::(open|openat|creat|unlink|rename|truncate|ftruncate|mkdir)\s*\()re");
  int checked = 0;
  for (const char* floor : {"text", "base", "control", "language", "document", "print", "app"}) {
    if (!fs::exists(fs::path(source) / floor)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(source) / floor)) {
      const auto name = entry.path().filename().string();
      if (entry.path().extension() != ".h" && entry.path().extension() != ".cpp") continue;
      if (name == "FileSystemPosix.cpp" || name == "FileSystemWindows.cpp") continue;
      std::ifstream in(entry.path());
      std::string line;
      for (int number = 1; std::getline(in, line); ++number) {
        ++checked;
        if (line.find("\":/") != std::string::npos || line.find("files::open") != std::string::npos) continue;
        EXPECT_FALSE(std::regex_search(line.substr(0, line.find("//")), direct)) << entry.path() << ":" << number << ": " << line;
      }
    }
  }
  EXPECT_GT(checked, 0);
}
