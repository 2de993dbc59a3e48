// What the folder of version control says: where it lies, which settings count for ignored files, which files are tracked.
// Nothing is run and nothing written.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace folder {

struct GitFolder {
  std::string top;      // the work tree
  std::string own;      // its folder: top/.git, or where the file .git leads to
  std::string shared;   // what all work trees of one repository share: info/exclude, config
};
std::optional<GitFolder> gitFolderIn(const std::string& folder);      // that has a .git
std::optional<GitFolder> gitFolderAbove(const std::string& folder);   // or the nearest one above

struct GitSettings {
  std::string excludesFile;   // absolute; there need be none
  bool foldCase = false;
  int hashBytes = 20;
};
// Of the system, the user and the repository, the last one counting.
GitSettings gitSettings(const GitFolder& git);

// The files of the index, by paths below the work tree.
class TrackedFiles {
 public:
  static TrackedFiles read(const GitFolder& git, int hashBytes);
  bool has(std::string_view path) const;
  bool hasBelow(std::string_view folder) const;   // any file in it or deeper

 private:
  void add(std::string_view bytes, const GitFolder& git, std::size_t hash, bool shared);
  std::vector<std::string> paths_;   // sorted
};

}   // namespace folder
