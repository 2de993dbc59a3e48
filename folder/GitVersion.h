// A file as version control has it.
#pragma once

#include <string>

#include "text/file/FileIo.h"

namespace folder {

// The file's content in a version ("HEAD", "main~2", a number; empty: what is staged), decoded as opening it would; in another format
// than that of the options if the bytes are not of it. There is no stamp. error: a text for the user. Runs git, without a shell and at
// most for 30 seconds, so not on the interface thread; a link is followed first. The bytes are those that git stores:
// filters of the work tree are not run, as they are programs.
text::LoadedFile gitVersion(const std::string& path, const std::string& version, const text::LoadOptions& options,
                            text::SearchControl& control);

}   // namespace folder
