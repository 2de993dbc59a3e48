// The trash of the desktop: what is put there can be brought back.
#pragma once

#include <string>

namespace folder {

// Moves a file, a link or a folder with all that is in it. Empty: done. Else why not, for the user, and it lies where it lay:
// nothing is ever removed for good. Reads and writes the disk: on a worker.
std::string moveToTrash(const std::string& path);

}   // namespace folder
