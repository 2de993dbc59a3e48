// Which files of two folders differ. May run on any thread but the interface's: a folder that hangs blocks it.
//
// Files belong together by their paths below the folders. Contents are read, not dates. Links, devices and the like are left out, and
// so are files that the rules of version control leave out in one of the folders.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "folder/Walk.h"

namespace folder {

struct FileDifference {
  enum Kind : unsigned char {
    onlyLeft,
    onlyRight,
    content,
    lineEnds,    // the texts differ in the ends of lines only
    binary,      // the contents differ, and one is no text
    otherKind,   // a file in one folder, and no file in the other: `why` says what
    unreadable   // `why` says which and the reason
  };
  Kind kind;
  std::string path;        // below the folders
  std::int64_t line = 1;   // content: the first that differs, from 1
  std::string why;
};

struct FoldersCompared {
  std::string error;                         // one of the folders cannot be read, or no memory; the rest is empty
  bool stopped = false;                      // cancelled: the rest is not whole
  std::vector<FileDifference> differences;   // by path, in bytes
  std::int64_t unlisted = 0;   // what cannot be read and is no difference: of each folder the walk names the first only
  std::int64_t same = 0;       // files
  std::int64_t leftOut = 0;    // by rules, masks or as links and the like; a folder counts as one
};

// options: `links` and `textOnly` do not count. Reports bytes that were read of the bytes to read.
FoldersCompared compareFolders(const std::string& left, const std::string& right, const WalkOptions& options,
                               text::SearchControl& control);

std::string textOf(const FileDifference& difference);   // for the user: "differs", "only in the first folder" ...

}   // namespace folder
