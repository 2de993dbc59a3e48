// Holds every #include line of the floors against the order of the house, and the engine against Qt.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>

namespace fs = std::filesystem;

namespace {

// Calls look(line, file, "file:number: line") for each line of a floor's sources. Returns their number.
template <class Look>
int eachLine(const std::string& floor, Look look) {
  const char* source = std::getenv("ZELKOR_SOURCE");
  EXPECT_NE(source, nullptr);
  const fs::path folder = fs::path(source ? source : "") / floor;
  int lines = 0;
  if (!fs::exists(folder)) return 0;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.path().extension() != ".h" && entry.path().extension() != ".cpp") continue;
    std::ifstream in(entry.path());
    std::string line;
    for (int number = 1; std::getline(in, line); ++number, ++lines)
      look(line, entry.path().filename().string(), entry.path().string() + ":" + std::to_string(number) + ": " + line);
  }
  return lines;
}

}  // namespace

TEST(Architecture, IncludesPointDown) {
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
    eachLine(floor, [&](const std::string& line, const std::string&, const std::string& where) {
      std::smatch m;
      if (!std::regex_search(line, m, include)) return;
      ++checked;
      const bool qtInEngine = floor == "text" && m[2].matched;
      const bool upward = m[1].matched && allowed.count(m[1]) && !may.count(m[1]);
      EXPECT_FALSE(qtInEngine || upward) << where;
    });
  }
  EXPECT_GT(checked, 0);
}

// Files are opened, written, renamed and removed through FileSystem.h only: that is what the tests of saving stand on. Looking
// at files (QFileInfo) and reading the program's own resources (":/...") is all right.
TEST(Architecture, FilesGoThroughTheSeam) {
  const std::regex direct(
      R"re(\bQ(SaveFile|TemporaryFile|Settings|LockFile)\b|\bQFile\s+\w+\s*[({]|\bQFile\s*\(|\bQFile::(?!encodeName|decodeName|exists)\w)re"
      R"re(|\bstd::([io]?fstream|filesystem)\b|\bfopen\s*\(|(^|[^\w>])::(open|openat|creat|unlink|rename|truncate|ftruncate|mkdir)\s*\()re");
  int checked = 0;
  for (const char* floor : {"text", "base", "control", "language", "document", "print", "app"}) {
    checked += eachLine(floor, [&](const std::string& line, const std::string& file, const std::string& where) {
      if (file == "FileSystemPosix.cpp" || file == "FileSystemWindows.cpp") return;
      if (line.find("\":/") != std::string::npos || line.find("files::open") != std::string::npos) return;
      EXPECT_FALSE(std::regex_search(line.substr(0, line.find("//")), direct)) << where;
    });
  }
  EXPECT_GT(checked, 0);
}
