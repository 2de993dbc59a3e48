// File lists of simulators ("-f files.f"): which files a design is made of.
//
// Understood: paths; -f LIST and -F LIST, nested; +incdir+DIR+DIR, -incdir DIR, -I DIR, -IDIR; -v FILE; -y DIR with +libext+.v+.sv;
// +define+; comments "//", "/* */" and "#" that begin a word; "..." around words; $V, $(V) and ${V} of the environment. Other options
// are passed over, with their value where they are known to have one.
//
// Relative paths in a list that -F names count from that list's folder, all others from the working folder. A name that a file
// includes is looked for in the including file's folder, in the working folder, then in the include folders in their order: the first one is
// the file that counts.
#pragma once

#include <atomic>
#include <string>
#include <vector>

namespace folder {

struct FileListProblem {
  std::string list;
  int line = 0;       // from 1
  std::string text;   // for the user
};

struct FileList {
  std::vector<std::string> files;   // absolute, each once: as listed, then what they include
  std::vector<std::string> lists;   // that were read
  std::vector<std::string> includeFolders, libraryFolders, libraryExtensions, defines;
  std::vector<FileListProblem> problems;   // what they name is left out
};

// What was named stays right where something else is wrong. relativeToList: as with -F. Reads files: on a worker.
FileList readFileList(const std::string& list, const std::string& workingFolder, bool relativeToList,
                      const std::atomic<bool>* cancel = nullptr);

// The folder from which most of what the list names is found: that of the list, or one above it.
std::string likelyWorkingFolder(const std::string& list);

}   // namespace folder
