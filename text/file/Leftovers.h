// What a killed save leaves, recognised by its name.
//
// Unfinished files are the beginning of a file that was being written. Nobody needs them; they are removed when it is certain that
// nobody is writing them any more. Copies are complete: the bytes of a file before a save, or the new ones. They may be the only
// remaining version of a text, so they are never removed here but offered to the user (LeftText in JournalRead.h).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace text {

inline constexpr std::string_view kUnfinishedPrefix = ".zelkor-", kUnfinishedSuffix = ".tmp";

// The name of the copy that a finished file becomes: beside the file at `path`, or `elsewhere`, where the name must encode the
// path. Hidden in ordinary listings, like the name of an unfinished file.
std::string copyName(const std::string& unfinished, const std::string& path, bool elsewhere);

struct CopyName {
  std::string name;   // in its folder
  std::string path;   // path of the original; only its name, possibly cut, if no more is known
};
bool isCopyOf(const CopyName& copy, const std::string& name);   // beside the file of that name

// The copies in a folder, sorted by name, whoever owns them. Also removes unfinished files that are the user's, regular, not locked
// and not recent. A folder that cannot be listed holds none.
std::vector<CopyName> lookForLeftovers(const std::string& folder, bool elsewhere);

}   // namespace text
