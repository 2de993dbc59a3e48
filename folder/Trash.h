// The trash of the desktop: what is put there can be brought back.
#pragma once

#include <string>

namespace folder {

// Moves a file, a link or a folder with its content into the trash. Returns an empty text, or an error for the user; after an error
// the file is where it was. Nothing is ever deleted for good. Call it on a worker thread.
std::string moveToTrash(const std::string& path);

}   // namespace folder
