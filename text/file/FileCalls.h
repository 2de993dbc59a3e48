// The loops around the calls of FileSystem.h that all file code needs: interrupted calls are repeated, short writes continued,
// descriptors closed. Results are those of the seam: >= 0, or -errno.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "text/file/FileSystem.h"

namespace text::files {

// Owns a descriptor. A failed open is stored as its -errno.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor() { close(); }
  int get() const { return fd_; }
  bool ok() const { return fd_ >= 0; }
  int error() const { return fd_ < 0 ? fd_ : 0; }   // -errno
  int close();                                      // never repeated: the descriptor is closed whatever the result

 private:
  int fd_ = -1;
};

Descriptor open(int dirFd, const std::string& path, unsigned flags, unsigned mode = 0);
std::int64_t readSome(int fd, char* to, std::size_t length);   // 0 only at the end of the file
int writeAll(int fd, std::string_view bytes);
int sync(int fd);
// The same for a folder; 0 on systems that cannot sync a folder.
int syncFolder(int fd);

// Two changes within one tick of the file system's clock leave the same times. Waits at most some milliseconds until this tick is
// over; a later change of the file then also changes its times.
void leaveTickOf(const FileStatus& status);

// Hashes from the current position to the end (see ContentHash.h).
int hashContent(int fd, std::uint64_t* hash);

// Whether an error means that there is no space: a full disk, a full quota, or a file that is too large.
bool noRoom(int error);

inline constexpr char kSeparators[] =   // between the parts of a path
#ifdef _WIN32
    "/\\";
#else
    "/";
#endif

// A path split at its last separator, "/". The folder is "." where the path holds none, and "/" stays.
struct PathParts {
  std::string folder, name;
};
PathParts splitPath(const std::string& path);

// Creates a new file named prefix + random letters + suffix, and returns its name.
Descriptor createUnique(int dirFd, const std::string& prefix, const std::string& suffix, unsigned mode, std::string* name);

// "a folder", "a FIFO" ... for what is not a regular file; empty for a regular file.
std::string notRegularText(const FileStatus& status);

}   // namespace text::files
