#include "text/file/FileCalls.h"

#ifdef __linux__
#include <time.h>
#endif

#include <cerrno>
#include <chrono>
#include <memory>
#include <random>
#include <thread>

#include "text/file/PlantedFaults.h"
#include "text/store/ContentHash.h"

namespace text::files {

constexpr std::size_t kCopyBuffer = 128 * 1024;

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  if (this != &other) {
    close();
    fd_ = std::exchange(other.fd_, -1);
  }
  return *this;
}

int Descriptor::close() { return fd_ < 0 ? 0 : fileSystem().close(std::exchange(fd_, -1)); }

static std::int64_t fileClockNs() {
#ifdef __linux__
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return std::int64_t(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
#else
  using namespace std::chrono;
  return duration_cast<nanoseconds>((system_clock::now() - milliseconds(16)).time_since_epoch()).count();
#endif
}

void leaveTickOf(const FileStatus& status) {
  // A time further ahead comes from another clock: do not wait for it.
  for (int tries = 0; tries < 40; ++tries) {
    const std::int64_t now = fileClockNs();
    if (now > status.ctimeNs || status.ctimeNs - now > 20'000'000) return;
    std::this_thread::sleep_for(std::chrono::microseconds(500));
  }
}

template <class Call>
static auto repeated(Call call) {
  auto r = call();
  while (r == -EINTR) r = call();
  return r;
}

Descriptor open(int dirFd, const std::string& path, unsigned flags, unsigned mode) {
  return Descriptor(repeated([&] { return fileSystem().openAt(dirFd, path, flags, mode); }));
}

std::int64_t readSome(int fd, char* to, std::size_t length) {
  return repeated([&] { return fileSystem().read(fd, to, length); });
}

int writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const std::int64_t n = repeated([&] { return fileSystem().write(fd, bytes.data(), bytes.size()); });
    if (n < 0) return static_cast<int>(n);
    if (n == 0) return -EIO;   // no progress and no reason: avoid an endless loop
    if constexpr (planted(PlantedFault::ignoreShortWrite)) return 0;
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
  return 0;
}

int sync(int fd) {
  if constexpr (planted(PlantedFault::skipSync)) return 0;
  return repeated([&] { return fileSystem().sync(fd); });
}

int syncFolder(int fd) {
  if constexpr (planted(PlantedFault::skipFolderSync)) return 0;
  const int r = repeated([&] { return fileSystem().sync(fd); });
  return r == -EINVAL || r == -EOPNOTSUPP || r == -ENOSYS || r == -EBADF ? 0 : r;
}

int hashContent(int fd, std::uint64_t* hash) {
  ContentHash content;
  const auto buffer = std::make_unique_for_overwrite<char[]>(kCopyBuffer);
  for (;;) {
    const std::int64_t n = readSome(fd, buffer.get(), kCopyBuffer);
    if (n < 0) return static_cast<int>(n);
    if (n == 0) break;
    content.add({buffer.get(), static_cast<std::size_t>(n)});
  }
  *hash = content.value();
  return 0;
}

bool noRoom(int error) {
#ifdef EDQUOT
  if (error == -EDQUOT) return true;
#endif
  return error == -ENOSPC || error == -EFBIG;
}

PathParts splitPath(const std::string& path) {
  const auto slash = path.find_last_of(kSeparators);
  if (slash == std::string::npos) return {".", path};
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

Descriptor createUnique(int dirFd, const std::string& prefix, const std::string& suffix, unsigned mode, std::string* name) {
  constexpr char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
  static thread_local std::mt19937_64 random{std::random_device{}()};
  for (int attempt = 0;; ++attempt) {
    *name = prefix;
    for (int i = 0; i < 10; ++i) *name += letters[random() % (sizeof letters - 1)];
    *name += suffix;
    Descriptor made = open(dirFd, *name, kRead | kWrite | kCreate | kExclusive | kNoFollow, mode);
    if (made.error() != -EEXIST || attempt == 100) return made;
  }
}

std::string notRegularText(const FileStatus& status) {
  if (status.isRegular()) return {};
  if (status.isDirectory()) return "Is a folder, not a file";
  switch (status.mode & 0170000) {
    case 0010000: return "Is a FIFO, not a regular file";
    case 0140000: return "Is a socket, not a regular file";
    case 0020000:
    case 0060000: return "Is a device, not a regular file";
    default: return "Is not a regular file";
  }
}

}   // namespace text::files
