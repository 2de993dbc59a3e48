// A folder of its own for a test, removed with all it holds; and plain file helpers that go past the seam under test.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace testing_files {

class TempFolder {
 public:
  enum class Where { disk, memory };   // memory: a file system in memory where there is one, for many syncs
  explicit TempFolder(Where where = Where::disk);
  static std::string base(Where where);   // the folder in which it is made
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  std::string path() const { return path_; }
  std::string operator/(std::string_view name) const { return path_ + "/" + std::string(name); }
  std::vector<std::string> names() const;   // of what it holds, sorted

 private:
  std::string path_;
};

void writeRaw(const std::string& path, std::string_view bytes);   // truncates or creates; aborts on failure
std::string readRaw(const std::string& path);                     // aborts when it cannot be read

}   // namespace testing_files
