// Loading and safe saving of texts, over the seam of FileSystem.h.
#pragma once

#include <functional>
#include <string>

#include "text/file/Encoding.h"
#include "text/file/FileSystem.h"
#include "text/find/Search.h"
#include "text/store/Snapshot.h"

namespace text {

// What the editor remembers of a file to notice changes made by others. sameContent() is what a save asks: times alone (a
// touched file, a copy put back) are no change that could be lost.
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
  std::optional<FileFormat> format;   // forced; not set: detected
  Encoding fallback = Encoding::windows1252;
};

struct LoadedFile {
  std::string error;   // for the user; not empty = nothing loaded
  Snapshot text;
  FileFormat format;
  FileStamp stamp;
  bool firstLineCrlf = true;   // no LF in the bytes before the first CR (an empty file and one without LF too)
  bool readOnly = false;       // see writeProtected
};

// Reads a regular file whole. Folders, FIFOs, devices, unreadable and vanishing files give an error; out of memory too.
LoadedFile loadFile(const std::string& path, const LoadOptions& options = {}, SearchControl* control = nullptr);

struct SaveOptions {
  FileFormat format;
  std::optional<FileStamp> expected;   // the file must still be this one, else SaveResult::changedOnDisk
};

struct SaveResult {
  std::string error;            // for the user; not empty = not saved, the file holds its old bytes
  bool changedOnDisk = false;   // refused because the file is not the expected one (error is set too)
  FileStamp stamp;              // of the file as saved
  bool ok() const { return error.empty(); }
};

// Saves safely: encodes first, then writes aside, syncs, carries mode, owner and attributes over, renames and syncs the
// folder; where that would lose something (hard links, foreign owner, no right in the folder) writes a synced recovery copy and
// overwrites in place. At any moment the file holds the old bytes or the new ones (or the copy is there to mend it).
// control: only its bytesDone and bytesTotal are written, a save is not cancelled.
SaveResult saveFile(const std::string& path, const Snapshot& text, const SaveOptions& options, SearchControl* control = nullptr);

// The file that a save to this path writes: symbolic links of its last part are followed. The path itself where they lead nowhere.
std::string savedFile(const std::string& path);

// Where recovery copies go when the target's own folder takes no new file. Not set: "zelkor/recovery" in the user's state folder.
void setRecoveryFolder(const std::string& folder);

// The same for plain bytes (settings, definition file ...). mode is for a file that does not exist yet.
SaveResult saveBytes(const std::string& path, std::string_view bytes, unsigned mode = 0666);

// The whole file; error as in LoadedFile. At most `limit` bytes (0: no limit), beyond that an error.
std::string readBytes(const std::string& path, std::string* error, std::size_t limit = 0);

// Present stamp; the content is hashed only when withContent.
FileStamp stampOf(const std::string& path, bool withContent);

bool fileExists(const std::string& path);
// There is a file that this user may not write, or that nobody has the right to write (a superuser could all the same).
bool writeProtected(const std::string& path);
// Creates the folder and its parents. Empty = done, else an error for the user.
std::string makeFolders(const std::string& path, unsigned mode = 0777);

}   // namespace text
