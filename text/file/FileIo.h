// Loads and safely saves texts, through the seam of FileSystem.h.
#pragma once

#include <functional>
#include <string>

#include "text/file/Encoding.h"
#include "text/file/FileSystem.h"
#include "text/find/Search.h"
#include "text/store/Snapshot.h"

namespace text {

// The state of a file, remembered to notice changes by others. A save asks sameContent(): new times alone (a touched file, a
// restored copy) are not a change that could be lost.
struct FileStamp {
  bool exists = false;
  FileStatus status;
  std::uint64_t contentHash = 0;   // of the file's bytes
  bool operator==(const FileStamp&) const = default;
  bool sameContent(const FileStamp& other) const {
    return exists == other.exists && (!exists || (status.size == other.status.size && contentHash == other.contentHash));
  }
};

struct LoadOptions {
  std::optional<FileFormat> format;   // forced; empty: detected
  Encoding fallback = Encoding::windows1252;
};

struct LoadedFile {
  std::string error;   // for the user; not empty: nothing was loaded
  Snapshot text;
  FileFormat format;
  FileStamp stamp;
  bool firstLineCrlf = true;   // no LF before the first CR; also true for an empty file and one without LF
  bool readOnly = false;       // see writeProtected
};

// Reads a whole regular file. Folders, FIFOs, devices, unreadable and disappearing files give an error, as does lack of memory.
LoadedFile loadFile(const std::string& path, const LoadOptions& options = {}, SearchControl* control = nullptr);

struct SaveOptions {
  FileFormat format;
  std::optional<FileStamp> expected;   // the expected state of the file; any other is SaveResult::changedOnDisk
};

struct SaveResult {
  std::string error;            // for the user; not empty: not saved, the file holds its old bytes
  bool changedOnDisk = false;   // refused because the file is not in the expected state (error is set too)
  FileStamp stamp;              // of the file as saved
  bool ok() const { return error.empty(); }
};

// Saves safely. Encodes first; then writes a new file, syncs it, copies mode, owner and attributes, renames it and syncs the
// folder. Where that would lose something (hard links, foreign owner, no permission in the folder), writes a synced recovery copy
// and then overwrites in place. At any moment the file holds the old or the new bytes, or the copy exists to repair it. control:
// only its bytesDone and bytesTotal are written; a save cannot be cancelled.
SaveResult saveFile(const std::string& path, const Snapshot& text, const SaveOptions& options, SearchControl* control = nullptr);

// The file that a save to this path writes: resolves symbolic links of the last part; the path itself if they lead nowhere.
std::string savedFile(const std::string& path);

// Where recovery copies are stored if the folder of the target does not take them. Default: "zelkor/recovery" in the user's state
// folder.
void setRecoveryFolder(const std::string& folder);

// The same for plain bytes (settings, definition file ...). mode is used for a new file.
SaveResult saveBytes(const std::string& path, std::string_view bytes, unsigned mode = 0666);

// Reads the whole file; error as in LoadedFile. More than `limit` bytes are an error (0: no limit).
std::string readBytes(const std::string& path, std::string* error, std::size_t limit = 0);

// The current stamp; hashes the content only if withContent.
FileStamp stampOf(const std::string& path, bool withContent);

bool fileExists(const std::string& path);
// The file exists, and this user may not write it or nobody has write permission (a superuser could write it all the same).
bool writeProtected(const std::string& path);
// Creates the folder and its parents. Empty: done; else an error for the user.
std::string makeFolders(const std::string& path, unsigned mode = 0777);

}   // namespace text
