// The two ways to save, and what they share. Replacing: the new bytes are written aside, synced and renamed over the
// target, so the file is old or new at any moment. Overwriting: where a new file would lose something of the old one
// (its other hard links, its owner, a mount), a synced copy of the old bytes is made first and goes last.
//
// Save.cpp chooses the way from metadata, before a byte is written; no error switches from one to the other.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "text/file/FileCalls.h"
#include "text/file/FileIo.h"
#include "text/store/ContentHash.h"

namespace text {

// The bytes to save, handed out in parts. They have been checked: nothing here can fail but the sink.
class SaveSource {
 public:
  virtual ~SaveSource() = default;
  virtual std::int64_t size() const = 0;
  using Sink = std::function<int(std::string_view)>;   // 0 or -errno, which ends the run
  virtual int each(const Sink& sink) const = 0;
};

struct SaveTarget {
  std::string path;   // links of the last part followed
  files::PathParts parts;
  files::Descriptor folder;   // failed where the folder cannot be read
  bool exists = false;
  FileStatus status;        // when it exists
  files::Descriptor file;   // the old file, open for reading
  std::optional<FileStamp> expected;
  unsigned mode = 0666;   // for a new file
};

SaveResult saveFailed(int error, const std::string& more = {});
SaveResult saveRefusedAsChanged();

// Writes all of source, hashing on the way. 0 or -errno.
int writeSource(int fd, const SaveSource& source, std::uint64_t* hash);

// A file to be written aside (see Leftovers.h), locked for as long as it is open where that is possible.
files::Descriptor createUnfinished(int folder, unsigned mode, std::string* name);

// Removes a file of ours, trying twice.
int removeOwn(int folder, const std::string& name);

// nullopt: a new file could not carry the old one's owner or attributes; nothing has been done.
std::optional<SaveResult> saveByReplacing(SaveTarget& target, const SaveSource& source);
SaveResult saveByOverwriting(SaveTarget& target, const SaveSource& source, const std::string& recoveryFolder);

}   // namespace text
