// A file's bytes that have been read by other means: what loading them would have given.
#pragma once

#include <memory>

#include "text/file/FileIo.h"

namespace text {

// As loadFile; the text keeps the memory for as long as it needs it. There is no stamp.
LoadedFile decodeFile(std::shared_ptr<const char[]> bytes, std::size_t length, const LoadOptions& options = {});

}   // namespace text
