#include "text/file/FileSystem.h"

#include <cstdlib>
#include <system_error>

namespace text {

FileSystem& systemFileSystem();   // the platform's own file

namespace {
constexpr std::uint32_t kTypeMask = 0170000, kRegular = 0100000, kFolder = 0040000, kSymlink = 0120000;
FileSystem* current = nullptr;
}   // namespace

bool FileStatus::isRegular() const { return (mode & kTypeMask) == kRegular; }
bool FileStatus::isDirectory() const { return (mode & kTypeMask) == kFolder; }
bool FileStatus::isSymlink() const { return (mode & kTypeMask) == kSymlink; }

int FileSystem::listEntries(const std::string& path, std::vector<FolderEntry>* entries) {
  entries->clear();
  std::vector<std::string> names;
  const int r = listDir(path, &names);
  for (std::string& name : names) entries->push_back({std::move(name), FolderEntry::unknown});
  return r;
}

FileSystem& fileSystem() { return current ? *current : systemFileSystem(); }

FileSystem* setFileSystem(FileSystem* replacement) {
  FileSystem* old = &fileSystem();
  current = replacement;
  return old;
}

std::string errorText(int error) { return std::generic_category().message(std::abs(error)); }

}   // namespace text
