#include "tests/support/files/TempFolder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>

namespace testing_files {
namespace fs = std::filesystem;

std::string TempFolder::base(Where where) {
  const fs::path memory = "/dev/shm";
  std::error_code none;
  return (where == Where::memory && fs::is_directory(memory, none) ? memory : fs::temp_directory_path()).string();
}

TempFolder::TempFolder(Where where) {
  std::random_device random;
  do path_ = base(where) + "/zelkor-test-" + std::to_string(random());
  while (!fs::create_directory(path_));
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::vector<std::string> TempFolder::names() const {
  std::vector<std::string> all;
  for (const auto& entry : fs::directory_iterator(path_)) all.push_back(entry.path().filename().string());
  std::sort(all.begin(), all.end());
  return all;
}

static void require(bool good, const char* what, const std::string& path) {
  if (good) return;
  std::fprintf(stderr, "cannot %s %s\n", what, path.c_str());
  std::abort();
}

void writeRaw(const std::string& path, std::string_view bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.close();
  require(out.good(), "write", path);
}

std::string readRaw(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  require(in.good(), "read", path);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}   // namespace testing_files
