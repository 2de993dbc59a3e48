// The seam between the editor and the disk: about fifteen calls like those of the system. Tests can log them, fail any of them, cut
// writes short, or simulate a power cut. Documents, definition file, settings, journal, log and printing to a file all use it; no
// other code opens, writes, renames or removes a file.
//
// Every call returns 0 or a count for success and -errno for failure. Callers handle EINTR and short writes with the loops of
// FileCalls.h.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace text {

struct FileStatus {
  std::uint64_t device = 0, inode = 0;
  std::uint32_t mode = 0;   // type and permission bits as in st_mode
  std::uint32_t owner = 0, group = 0;
  std::uint64_t links = 0;
  std::int64_t size = 0;
  std::int64_t mtimeNs = 0, ctimeNs = 0;   // nanoseconds since the epoch
  bool isRegular() const;
  bool isDirectory() const;
  bool isSymlink() const;
  bool operator==(const FileStatus&) const = default;
};

struct FolderEntry {
  enum Kind : unsigned char { unknown, file, folder, link, other };
  std::string name;
  Kind kind = unknown;   // unknown: the system does not say without a look at it
};

enum OpenFlags : unsigned {
  kRead = 1,
  kWrite = 2,
  kCreate = 4,
  kExclusive = 8,
  kDirectory = 16,
  kNoFollow = 32,
  kNonBlock = 64,
  kAppend = 128
  // There is no truncate flag, on purpose: opening a file never truncates it.
};
enum RenameFlags : unsigned { kReplace = 0, kNoReplace = 1, kExchange = 2 };

class FileSystem {
 public:
  virtual ~FileSystem() = default;
  // dirFd is a descriptor of a folder or kCwd; paths are bytes as the system has them.
  static constexpr int kCwd = -100;
  virtual int openAt(int dirFd, const std::string& path, unsigned flags, unsigned mode) = 0;   // descriptor (close-on-exec)
  virtual int statAt(int dirFd, const std::string& path, bool follow, FileStatus* out) = 0;
  virtual int statFd(int fd, FileStatus* out) = 0;
  virtual int accessAt(int dirFd, const std::string& path, bool folder) = 0;   // 0: writable (in a folder: entries too)
  virtual std::int64_t read(int fd, char* to, std::size_t length) = 0;
  virtual std::int64_t write(int fd, const char* from, std::size_t length) = 0;
  virtual std::int64_t seek(int fd, std::int64_t offset) = 0;   // absolute
  virtual int sync(int fd) = 0;
  virtual int startSync(int fd) = 0;   // a hint to start writing to the disk; does not wait and guarantees nothing
  virtual int truncate(int fd, std::int64_t length) = 0;
  // Reserves space for the first `length` bytes without changing the size. -EOPNOTSUPP if not possible.
  virtual int allocate(int fd, std::int64_t length) = 0;
  virtual int renameAt(int fromDir, const std::string& from, int toDir, const std::string& to, unsigned flags) = 0;
  virtual int linkAt(int fromDir, const std::string& from, int toDir, const std::string& to) = 0;
  virtual int unlinkAt(int dirFd, const std::string& path, bool folder) = 0;
  virtual int makeDirAt(int dirFd, const std::string& path, unsigned mode) = 0;
  virtual int changeMode(int fd, unsigned mode) = 0;
  virtual int changeOwner(int fd, std::uint32_t owner, std::uint32_t group) = 0;
  virtual int readLinkAt(int dirFd, const std::string& path, std::string* out) = 0;
  virtual int listAttributes(int fd, std::vector<std::string>* names) = 0;   // extended attributes, ACLs included
  virtual int getAttribute(int fd, const std::string& name, std::string* value) = 0;
  virtual int setAttribute(int fd, const std::string& name, const std::string& value) = 0;
  virtual int removeAttribute(int fd, const std::string& name) = 0;
  virtual int listDir(const std::string& path, std::vector<std::string>* names) = 0;     // without "." and ".."
  virtual int listEntries(const std::string& path, std::vector<FolderEntry>* entries);   // the same with kinds, where known
  virtual int lock(int fd, bool exclusive, bool wait) = 0;                               // flock; -EWOULDBLOCK when held by another
  virtual int close(int fd) = 0;
};

// The file system of the platform. Never null; tests may replace it (returns the old one).
FileSystem& fileSystem();
FileSystem* setFileSystem(FileSystem* replacement);

// The owner of files that this program creates, as in FileStatus::owner.
std::uint32_t currentUser();

// Bytes of memory of this computer; 0 if unknown.
std::uint64_t physicalMemory();

// The system's message for -errno or errno ("No space left on device").
std::string errorText(int error);

}   // namespace text
