// The two ways to save, and their common parts. Replacing: the new bytes are written to a new file, synced and renamed over the
// target, so that the file is old or new at any moment. Overwriting: if a new file would lose something of the old one (other hard
// links, owner, a mount), first a synced copy of the old bytes is made, and it is removed last.
//
// Save.cpp chooses the way from metadata before a byte is written; an error never switches from one way to the other.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "text/file/FileCalls.h"
#include "text/file/FileIo.h"
#include "text/store/ContentHash.h"

namespace text {

// The bytes to save, delivered in parts. They have been checked: only the sink can fail.
class SaveSource {
 public:
  virtual ~SaveSource() = default;
  virtual std::int64_t size() const = 0;
  using Sink = std::function<int(std::string_view)>;   // 0 or -errno, which ends the run
  virtual int each(const Sink& sink) const = 0;
};

struct SaveTarget {
  std::string path;   // links of the last part are resolved
  files::PathParts parts;
  files::Descriptor folder;   // failed if the folder cannot be read
  bool exists = false;
  FileStatus status;        // when it exists
  files::Descriptor file;   // the old file, open for reading
  std::optional<FileStamp> expected;
  unsigned mode = 0666;   // for a new file
};

SaveResult saveFailed(int error, const std::string& more = {});
SaveResult saveRefusedAsChanged();

// Writes all of source and hashes it. 0 or -errno.
int writeSource(int fd, const SaveSource& source, std::uint64_t* hash);

// A file for writing aside (see Leftovers.h), locked while it is open if that is possible.
files::Descriptor createUnfinished(int folder, unsigned mode, std::string* name);

// Removes a file of this program, with a second try.
int removeOwn(int folder, const std::string& name);

// nullopt: a new file could not have the old one's owner or attributes; nothing was done.
std::optional<SaveResult> saveByReplacing(SaveTarget& target, const SaveSource& source);
SaveResult saveByOverwriting(SaveTarget& target, const SaveSource& source, const std::string& recoveryFolder);

}   // namespace text
