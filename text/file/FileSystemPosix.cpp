// The file system of POSIX systems, without logic of its own: each call is one system call.
#ifndef _WIN32

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>

#include "text/file/FileSystem.h"

#ifdef __linux__
#include <sys/xattr.h>
#endif

namespace text {
namespace {

template <class Result>
Result orError(Result r) {
  return r < 0 ? static_cast<Result>(-errno) : r;
}

int at(int dirFd) { return dirFd == FileSystem::kCwd ? AT_FDCWD : dirFd; }

#ifdef __APPLE__
const timespec& modified(const struct stat& s) { return s.st_mtimespec; }
const timespec& changed(const struct stat& s) { return s.st_ctimespec; }
#else
const timespec& modified(const struct stat& s) { return s.st_mtim; }
const timespec& changed(const struct stat& s) { return s.st_ctim; }
#endif

std::int64_t nanoseconds(const timespec& t) { return static_cast<std::int64_t>(t.tv_sec) * 1'000'000'000 + t.tv_nsec; }

int filled(int r, const struct stat& s, FileStatus* out) {
  if (r < 0) return -errno;
  out->device = s.st_dev;
  out->inode = s.st_ino;
  out->mode = s.st_mode;
  out->owner = s.st_uid;
  out->group = s.st_gid;
  out->links = s.st_nlink;
  out->size = s.st_size;
  out->mtimeNs = nanoseconds(modified(s));
  out->ctimeNs = nanoseconds(changed(s));
  return 0;
}

class Posix final : public FileSystem {
 public:
  int openAt(int dirFd, const std::string& path, unsigned flags, unsigned mode) override {
    int f = O_CLOEXEC | O_NOCTTY;
    f |= flags & kWrite ? (flags & kRead ? O_RDWR : O_WRONLY) : O_RDONLY;
    if (flags & kCreate) f |= O_CREAT;
    if (flags & kExclusive) f |= O_EXCL;
    if (flags & kDirectory) f |= O_DIRECTORY;
    if (flags & kNoFollow) f |= O_NOFOLLOW;
    if (flags & kNonBlock) f |= O_NONBLOCK;
    if (flags & kAppend) f |= O_APPEND;
    return orError(::openat(at(dirFd), path.c_str(), f, static_cast<mode_t>(mode)));
  }
  int statAt(int dirFd, const std::string& path, bool follow, FileStatus* out) override {
    struct stat s;
    return filled(::fstatat(at(dirFd), path.c_str(), &s, follow ? 0 : AT_SYMLINK_NOFOLLOW), s, out);
  }
  int statFd(int fd, FileStatus* out) override {
    struct stat s;
    return filled(::fstat(fd, &s), s, out);
  }
  int accessAt(int dirFd, const std::string& path, bool folder) override {
    return orError(::faccessat(at(dirFd), path.c_str(), folder ? W_OK | X_OK : W_OK, AT_EACCESS));
  }
  std::int64_t read(int fd, char* to, std::size_t length) override { return orError<std::int64_t>(::read(fd, to, length)); }
  std::int64_t write(int fd, const char* from, std::size_t length) override {
    return orError<std::int64_t>(::write(fd, from, length));
  }
  std::int64_t seek(int fd, std::int64_t offset) override { return orError<std::int64_t>(::lseek(fd, offset, SEEK_SET)); }
  int sync(int fd) override {
#ifdef __APPLE__
    if (::fcntl(fd, F_FULLFSYNC) == 0) return 0;   // on this system fsync alone does not flush the drive's cache
#endif
    return orError(::fsync(fd));
  }
  int startSync(int fd) override {
#ifdef __linux__
    return orError(::sync_file_range(fd, 0, 0, SYNC_FILE_RANGE_WRITE));
#else
    return (void)fd, 0;
#endif
  }
  int truncate(int fd, std::int64_t length) override { return orError(::ftruncate(fd, length)); }
  int allocate(int fd, std::int64_t length) override {
#ifdef __linux__
    return length > 0 ? orError(::fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, length)) : 0;
#else
    (void)fd, (void)length;
    return -EOPNOTSUPP;
#endif
  }
  int renameAt(int fromDir, const std::string& from, int toDir, const std::string& to, unsigned flags) override {
    if (flags == kReplace) return orError(::renameat(at(fromDir), from.c_str(), at(toDir), to.c_str()));
#ifdef __linux__
    const unsigned how = flags == kExchange ? RENAME_EXCHANGE : RENAME_NOREPLACE;
    return orError(::renameat2(at(fromDir), from.c_str(), at(toDir), to.c_str(), how));
#else
    return -EINVAL;
#endif
  }
  int linkAt(int fromDir, const std::string& from, int toDir, const std::string& to) override {
    return orError(::linkat(at(fromDir), from.c_str(), at(toDir), to.c_str(), 0));
  }
  int unlinkAt(int dirFd, const std::string& path, bool folder) override {
    return orError(::unlinkat(at(dirFd), path.c_str(), folder ? AT_REMOVEDIR : 0));
  }
  int makeDirAt(int dirFd, const std::string& path, unsigned mode) override {
    return orError(::mkdirat(at(dirFd), path.c_str(), static_cast<mode_t>(mode)));
  }
  int changeMode(int fd, unsigned mode) override { return orError(::fchmod(fd, static_cast<mode_t>(mode))); }
  int changeOwner(int fd, std::uint32_t owner, std::uint32_t group) override { return orError(::fchown(fd, owner, group)); }
  int readLinkAt(int dirFd, const std::string& path, std::string* out) override {
    out->resize(4096);
    const ssize_t n = ::readlinkat(at(dirFd), path.c_str(), out->data(), out->size());
    if (n < 0) return -errno;
    if (static_cast<std::size_t>(n) == out->size()) return -ENAMETOOLONG;
    out->resize(static_cast<std::size_t>(n));
    return 0;
  }
#ifdef __linux__
  int listAttributes(int fd, std::vector<std::string>* names) override {
    names->clear();
    std::string all;
    if (const int r = sized(&all, [&](char* to, std::size_t n) { return ::flistxattr(fd, to, n); }); r < 0) return r;
    for (std::size_t at = 0; at < all.size();) {
      names->emplace_back(all.c_str() + at);
      at += names->back().size() + 1;
    }
    return 0;
  }
  int getAttribute(int fd, const std::string& name, std::string* value) override {
    return sized(value, [&](char* to, std::size_t n) { return ::fgetxattr(fd, name.c_str(), to, n); });
  }
  int setAttribute(int fd, const std::string& name, const std::string& value) override {
    return orError(::fsetxattr(fd, name.c_str(), value.data(), value.size(), 0));
  }
  int removeAttribute(int fd, const std::string& name) override { return orError(::fremovexattr(fd, name.c_str())); }
#else
  int listAttributes(int, std::vector<std::string>* names) override { return names->clear(), 0; }
  int getAttribute(int, const std::string&, std::string*) override { return -EOPNOTSUPP; }
  int setAttribute(int, const std::string&, const std::string&) override { return -EOPNOTSUPP; }
  int removeAttribute(int, const std::string&) override { return -EOPNOTSUPP; }
#endif
  int listDir(const std::string& path, std::vector<std::string>* names) override {
    names->clear();
    return eachEntry(path, [names](const dirent& entry) { names->emplace_back(entry.d_name); });
  }
  int listEntries(const std::string& path, std::vector<FolderEntry>* entries) override {
    entries->clear();
    return eachEntry(path, [entries](const dirent& entry) { entries->push_back({entry.d_name, kindOf(entry)}); });
  }
  int lock(int fd, bool exclusive, bool wait) override {
    return orError(::flock(fd, (exclusive ? LOCK_EX : LOCK_SH) | (wait ? 0 : LOCK_NB)));
  }
  int close(int fd) override { return orError(::close(fd)); }

 private:
  static FolderEntry::Kind kindOf(const dirent& entry) {
#ifdef DT_UNKNOWN
    switch (entry.d_type) {
      case DT_UNKNOWN: return FolderEntry::unknown;
      case DT_REG: return FolderEntry::file;
      case DT_DIR: return FolderEntry::folder;
      case DT_LNK: return FolderEntry::link;
      default: return FolderEntry::other;
    }
#else
    return (void)entry, FolderEntry::unknown;
#endif
  }

  template <class Take>
  int eachEntry(const std::string& path, Take take) {
    const int fd = openAt(kCwd, path, kRead | kDirectory, 0);
    if (fd < 0) return fd;
    // Closed too when taking an entry throws for lack of memory.
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(::fdopendir(fd), ::closedir);
    if (!dir) {
      const int error = errno;
      ::close(fd);
      return -error;
    }
    errno = 0;
    while (const dirent* entry = ::readdir(dir.get())) {
      const std::string_view name = entry->d_name;
      if (name != "." && name != "..") take(*entry);
    }
    return -errno;
  }

  // Asks for the size, then for the value; again when it grew between.
  template <class Ask>
  static int sized(std::string* out, Ask ask) {
    for (;;) {
      const ssize_t n = ask(nullptr, 0);
      if (n < 0) return -errno;
      out->resize(static_cast<std::size_t>(n));
      if (n == 0) return 0;
      const ssize_t got = ask(out->data(), out->size());
      if (got < 0 && errno == ERANGE) continue;
      if (got < 0) return -errno;
      out->resize(static_cast<std::size_t>(got));
      return 0;
    }
  }
};

}   // namespace

FileSystem& systemFileSystem() {
  static Posix posix;
  return posix;
}

std::uint32_t currentUser() { return ::geteuid(); }

std::uint64_t physicalMemory() {
  const long pages = ::sysconf(_SC_PHYS_PAGES), size = ::sysconf(_SC_PAGESIZE);
  return pages > 0 && size > 0 ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(size) : 0;
}

}   // namespace text
#endif
