// Walks a folder and all folders in it, and gives their files one after the other. May run on any thread. A folder that hangs blocks
// the calling thread, so the interface thread never calls this.
//
// Paths are bytes. Files come in the order of the bytes of their whole paths. Sockets, FIFOs and devices are never opened and
// never given. Files that vanish during the walk are skipped silently.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "folder/Glob.h"
#include "folder/IgnoreRules.h"
#include "text/find/Search.h"

namespace folder {

struct WalkOptions {
  bool ignored = false;    // also what version control ignores
  bool hidden = false;     // also names that begin with a point; with `ignored` also the folders of version control (.git ...)
  bool links = false;      // also what symbolic links lead to: each folder and file once, under the name that comes first
  bool textOnly = false;   // reads the beginning of each file and leaves out what isBinary()
  Masks masks;
};

struct WalkTrouble {
  std::string path, reason;   // a text for the user
};

// What was given and what was left out. A folder that is left out counts as one, with all that is in it.
struct WalkReport {
  std::int64_t files = 0, folders = 0;   // given; folders looked into
  std::int64_t ignored = 0, hidden = 0, masked = 0, links = 0, special = 0, binary = 0;
  std::int64_t unreadable = 0;
  std::vector<WalkTrouble> troubles;   // the first ones of `unreadable`
  bool stopped = false;                // cancelled, or visit returned false
  std::string error;                   // the folder itself cannot be read
};

// Gives the path of each regular file: root + "/" + its place below. root: absolute or not, without a slash at its end ("/" is all
// right); a link to a folder is followed. visit returns false to end the walk.
using Visit = std::function<bool(const std::string& path)>;
WalkReport walk(const std::string& root, const WalkOptions& options, const Visit& visit, const std::atomic<bool>* cancel = nullptr);

// The path of what stands at a place below a folder.
std::string joined(const std::string& folder, std::string_view path);

// The place of a path below its root.
std::string_view belowRoot(std::string_view root, std::string_view path);

// One folder, sorted as walk() does.
struct Listed {
  std::string name;
  bool isFolder = false, isLink = false;   // of a link: what it leads to
  bool isFile = false;                     // a regular one; neither: a socket and the like, or a link to nothing
};
// 0, or -errno. hasRules, hasGit: for IgnoreRules::inside.
int listFolder(const std::string& path, std::vector<Listed>* entries, bool* hasRules, bool* hasGit);

bool isHiddenName(std::string_view name);
bool isVersionControl(std::string_view name);   // the name of a folder in which version control keeps its own files

// Whether the beginning of a file (8 KB do) is no text: it holds NUL bytes and is no UTF-16.
inline constexpr std::size_t kBinaryHead = 8192;
bool isBinary(std::string_view head);
bool isBinaryFile(const std::string& path);   // false also for what cannot be read

}   // namespace folder
