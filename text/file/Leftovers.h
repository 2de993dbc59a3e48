// What a save that was killed leaves behind, by its name alone.
//
// Unfinished files are the beginning of something that was being written aside: nobody needs them, and they are taken away once it is
// certain that nobody is writing them any more. Copies are whole: the bytes that a file had before a save, or those that it was to
// have. They may be all that is left of a text, so nothing here removes one; they are offered (LeftText in JournalRead.h).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace text {

inline constexpr std::string_view kUnfinishedPrefix = ".zelkor-", kUnfinishedSuffix = ".tmp";

// Of the copy that an unfinished file becomes once it is whole: beside the file at `path`, or `elsewhere`, where the name has to
// tell the path. Hidden from ordinary lists of the folder, as the other is.
std::string copyName(const std::string& unfinished, const std::string& path, bool elsewhere);

struct CopyName {
  std::string name;   // in its folder
  std::string path;   // of the file that it is a copy of; where only the file's name is known, that, and it may be cut
};
bool isCopyOf(const CopyName& copy, const std::string& name);   // beside the file of that name

// The copies in a folder, in the order of their names, whoever owns them. Takes unfinished files away that are ours, regular, locked
// by nobody and were not written for a while. A folder that cannot be listed holds none.
std::vector<CopyName> lookForLeftovers(const std::string& folder, bool elsewhere);

}   // namespace text
