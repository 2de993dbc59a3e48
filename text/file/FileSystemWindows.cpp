// The file system of Windows behind the same calls. Paths are UTF-8. Descriptors of folders are made here and hold the path. The
// access list of a file appears as its only extended attribute. Owners and groups are the system's defaults. A mode is 0666, or
// 0444 for a read-only file.
#ifdef _WIN32

#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "text/file/FileSystem.h"

namespace text {
namespace {

constexpr int kFirstFolder = 1 << 20;
constexpr char kAccessList[] = "windows.dacl";

int lastError() {
  switch (GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME: return -ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT: return -EACCES;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS: return -EEXIST;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL: return -ENOSPC;
    case ERROR_DIR_NOT_EMPTY: return -ENOTEMPTY;
    case ERROR_DIRECTORY: return -ENOTDIR;
    case ERROR_INVALID_HANDLE: return -EBADF;
    case ERROR_INVALID_PARAMETER:
    case ERROR_INVALID_FUNCTION:
    case ERROR_NOT_SUPPORTED: return -EINVAL;
    case ERROR_NOT_ENOUGH_MEMORY: return -ENOMEM;
    default: return -EIO;
  }
}

std::wstring wide(const std::string& path) {
  const int n = MultiByteToWideChar(CP_UTF8, 0, path.data(), static_cast<int>(path.size()), nullptr, 0);
  std::wstring out(static_cast<std::size_t>(n), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, path.data(), static_cast<int>(path.size()), out.data(), n);
  return out;
}

std::string narrow(const wchar_t* name) {
  const int n = WideCharToMultiByte(CP_UTF8, 0, name, -1, nullptr, 0, nullptr, nullptr);
  std::string out(static_cast<std::size_t>(n), '\0');
  WideCharToMultiByte(CP_UTF8, 0, name, -1, out.data(), n, nullptr, nullptr);
  out.resize(static_cast<std::size_t>(n) - 1);
  return out;
}

// 100 nanoseconds since 1601 to nanoseconds since 1970.
std::int64_t nanoseconds(std::int64_t ticks) { return (ticks - 116444736000000000) * 100; }

int ok(BOOL done) { return done ? 0 : lastError(); }

class Handle {
 public:
  Handle(const std::string& path, DWORD access, DWORD disposition = OPEN_EXISTING, DWORD flags = 0)
      : handle_(CreateFileW(wide(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            disposition, flags, nullptr)) {}
  ~Handle() {
    if (good()) CloseHandle(handle_);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  bool good() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return handle_; }
  HANDLE release() { return std::exchange(handle_, INVALID_HANDLE_VALUE); }

 private:
  HANDLE handle_;
};

int filled(HANDLE handle, FileStatus* out) {
  BY_HANDLE_FILE_INFORMATION info;
  FILE_BASIC_INFO times;
  if (!GetFileInformationByHandle(handle, &info) || !GetFileInformationByHandleEx(handle, FileBasicInfo, &times, sizeof times))
    return lastError();
  *out = {};
  out->device = info.dwVolumeSerialNumber;
  out->inode = static_cast<std::uint64_t>(info.nFileIndexHigh) << 32 | info.nFileIndexLow;
  const bool folder = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  out->mode = (folder                                  ? 0040000u
               : GetFileType(handle) == FILE_TYPE_DISK ? 0100000u
                                                       : 0020000u) |
              (folder                                            ? 0777u
               : info.dwFileAttributes & FILE_ATTRIBUTE_READONLY ? 0444u
                                                                 : 0666u);
  out->links = info.nNumberOfLinks;
  out->size = static_cast<std::int64_t>(info.nFileSizeHigh) << 32 | info.nFileSizeLow;
  out->mtimeNs = nanoseconds(times.LastWriteTime.QuadPart);
  out->ctimeNs = nanoseconds(times.ChangeTime.QuadPart);
  return 0;
}

class WindowsFiles final : public FileSystem {
 public:
  int openAt(int dirFd, const std::string& path, unsigned flags, unsigned) override {
    const std::string whole = full(dirFd, path);
    if (flags & kDirectory) {
      FileStatus status;
      if (const int r = statAt(kCwd, whole, true, &status); r < 0) return r;
      if (!status.isDirectory()) return -ENOTDIR;
      const std::lock_guard lock(mutex_);
      int fd = kFirstFolder;
      while (folders_.count(fd)) ++fd;
      folders_[fd] = whole;
      return fd;
    }
    DWORD access = flags & kRead ? GENERIC_READ : 0;
    if (flags & kWrite) access |= flags & kAppend ? FILE_APPEND_DATA | FILE_WRITE_ATTRIBUTES | SYNCHRONIZE : GENERIC_WRITE;
    if (flags & kExclusive) access |= WRITE_DAC | DELETE;
    const DWORD disposition = flags & kExclusive ? CREATE_NEW : flags & kCreate ? OPEN_ALWAYS : OPEN_EXISTING;
    Handle handle(whole, access, disposition, FILE_ATTRIBUTE_NORMAL);
    if (!handle.good()) return lastError();
    const int fd = _open_osfhandle(reinterpret_cast<intptr_t>(handle.get()), _O_BINARY | _O_NOINHERIT);
    if (fd < 0) return -EMFILE;
    handle.release();
    return fd;
  }
  int statAt(int dirFd, const std::string& path, bool, FileStatus* out) override {
    const Handle handle(full(dirFd, path), FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    return handle.good() ? filled(handle.get(), out) : lastError();
  }
  int statFd(int fd, FileStatus* out) override {
    return fd >= kFirstFolder ? statAt(kCwd, folderPath(fd), true, out) : filled(of(fd), out);
  }
  int accessAt(int dirFd, const std::string& path, bool folder) override {
    FileStatus status;
    if (const int r = statAt(dirFd, path, true, &status); r < 0) return r;
    return folder || (status.mode & 0222) != 0 ? 0 : -EACCES;
  }
  std::int64_t read(int fd, char* to, std::size_t length) override {
    DWORD n = 0;
    if (ReadFile(of(fd), to, static_cast<DWORD>(length < kMostAtOnce ? length : kMostAtOnce), &n, nullptr)) return n;
    return GetLastError() == ERROR_HANDLE_EOF ? 0 : lastError();
  }
  std::int64_t write(int fd, const char* from, std::size_t length) override {
    DWORD n = 0;
    const auto most = static_cast<DWORD>(length < kMostAtOnce ? length : kMostAtOnce);
    return WriteFile(of(fd), from, most, &n, nullptr) ? static_cast<std::int64_t>(n) : lastError();
  }
  std::int64_t seek(int fd, std::int64_t offset) override {
    LARGE_INTEGER to;
    to.QuadPart = offset;
    return SetFilePointerEx(of(fd), to, nullptr, FILE_BEGIN) ? offset : lastError();
  }
  int sync(int fd) override { return fd >= kFirstFolder ? 0 : ok(FlushFileBuffers(of(fd))); }
  int startSync(int) override { return 0; }
  int truncate(int fd, std::int64_t length) override {
    FILE_END_OF_FILE_INFO end;
    end.EndOfFile.QuadPart = length;
    return ok(SetFileInformationByHandle(of(fd), FileEndOfFileInfo, &end, sizeof end));
  }
  int allocate(int fd, std::int64_t length) override {
    FILE_ALLOCATION_INFO room;
    room.AllocationSize.QuadPart = length;
    return ok(SetFileInformationByHandle(of(fd), FileAllocationInfo, &room, sizeof room));
  }
  int renameAt(int fromDir, const std::string& from, int toDir, const std::string& to, unsigned flags) override {
    if (flags == kExchange) return -EINVAL;
    // This rename also replaces a file that another program has open.
    const std::wstring target = wide(full(toDir, to));
    std::vector<char> buffer(sizeof(FILE_RENAME_INFO) + target.size() * sizeof(wchar_t));
    auto* info = reinterpret_cast<FILE_RENAME_INFO*>(buffer.data());
    constexpr DWORD kReplaceIfExists = 1, kPosixSemantics = 2;
    info->Flags = kPosixSemantics | (flags == kReplace ? kReplaceIfExists : 0);
    info->FileNameLength = static_cast<DWORD>(target.size() * sizeof(wchar_t));
    std::memcpy(info->FileName, target.data(), info->FileNameLength);
    const Handle handle(full(fromDir, from), DELETE | SYNCHRONIZE, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    if (!handle.good()) return lastError();
    constexpr auto kRenameEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
    return ok(SetFileInformationByHandle(handle.get(), kRenameEx, info, static_cast<DWORD>(buffer.size())));
  }
  int linkAt(int fromDir, const std::string& from, int toDir, const std::string& to) override {
    return ok(CreateHardLinkW(wide(full(toDir, to)).c_str(), wide(full(fromDir, from)).c_str(), nullptr));
  }
  int unlinkAt(int dirFd, const std::string& path, bool folder) override {
    const std::wstring whole = wide(full(dirFd, path));
    return ok(folder ? RemoveDirectoryW(whole.c_str()) : DeleteFileW(whole.c_str()));
  }
  int makeDirAt(int dirFd, const std::string& path, unsigned) override {
    return ok(CreateDirectoryW(wide(full(dirFd, path)).c_str(), nullptr));
  }
  int changeMode(int fd, unsigned mode) override {
    FILE_BASIC_INFO info;
    if (!GetFileInformationByHandleEx(of(fd), FileBasicInfo, &info, sizeof info)) return lastError();
    const DWORD wanted =
        mode & 0222 ? info.FileAttributes & ~DWORD(FILE_ATTRIBUTE_READONLY) : info.FileAttributes | FILE_ATTRIBUTE_READONLY;
    if (wanted == info.FileAttributes) return 0;
    info.FileAttributes = wanted ? wanted : FILE_ATTRIBUTE_NORMAL;
    return ok(SetFileInformationByHandle(of(fd), FileBasicInfo, &info, sizeof info));
  }
  int changeOwner(int, std::uint32_t, std::uint32_t) override { return 0; }
  int readLinkAt(int, const std::string&, std::string*) override { return -EINVAL; }   // the system resolves links itself
  int listAttributes(int, std::vector<std::string>* names) override {
    names->assign(1, kAccessList);
    return 0;
  }
  int getAttribute(int fd, const std::string& name, std::string* value) override {
    if (name != kAccessList) return -EINVAL;
    DWORD size = 0;
    GetKernelObjectSecurity(of(fd), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    value->resize(size);
    return ok(GetKernelObjectSecurity(of(fd), DACL_SECURITY_INFORMATION, value->data(), size, &size));
  }
  int setAttribute(int fd, const std::string& name, const std::string& value) override {
    if (name != kAccessList) return -EINVAL;
    std::string copy = value;
    return ok(SetKernelObjectSecurity(of(fd), DACL_SECURITY_INFORMATION, copy.data()));
  }
  int removeAttribute(int, const std::string&) override { return -EINVAL; }
  int listDir(const std::string& path, std::vector<std::string>* names) override {
    names->clear();
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW(wide(path + "\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) return lastError();
    do {
      const std::string name = narrow(entry.cFileName);
      if (name != "." && name != "..") names->push_back(name);
    } while (FindNextFileW(search, &entry));
    const DWORD end = GetLastError();
    FindClose(search);
    return end == ERROR_NO_MORE_FILES ? 0 : -EIO;
  }
  int lock(int fd, bool exclusive, bool wait) override {
    OVERLAPPED at{};
    at.OffsetHigh = 0x7fffffff;   // behind the end of any text: a lock on the text would keep others from reading
    const DWORD how = (exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0) | (wait ? 0 : LOCKFILE_FAIL_IMMEDIATELY);
    if (LockFileEx(of(fd), how, 0, 1, 0, &at)) return 0;
    const DWORD error = GetLastError();
    return error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING ? -EWOULDBLOCK : lastError();
  }
  int close(int fd) override {
    if (fd < kFirstFolder) return _close(fd) == 0 ? 0 : -errno;
    const std::lock_guard lock(mutex_);
    return folders_.erase(fd) > 0 ? 0 : -EBADF;
  }

 private:
  static constexpr std::size_t kMostAtOnce = 1 << 30;
  static HANDLE of(int fd) { return reinterpret_cast<HANDLE>(_get_osfhandle(fd)); }
  std::string folderPath(int fd) {
    const std::lock_guard lock(mutex_);
    const auto it = folders_.find(fd);
    return it == folders_.end() ? std::string() : it->second;
  }
  std::string full(int dirFd, const std::string& path) {
    const bool absolute = path.starts_with('/') || path.starts_with('\\') || (path.size() > 1 && path[1] == ':');
    return dirFd == kCwd || absolute ? path : folderPath(dirFd) + "\\" + path;
  }

  std::mutex mutex_;
  std::map<int, std::string> folders_;
};

}   // namespace

FileSystem& systemFileSystem() {
  static WindowsFiles files;
  return files;
}

std::uint32_t currentUser() { return 0; }

std::uint64_t physicalMemory() {
  MEMORYSTATUSEX status{};
  status.dwLength = sizeof status;
  return GlobalMemoryStatusEx(&status) ? status.ullTotalPhys : 0;
}

}   // namespace text
#endif
