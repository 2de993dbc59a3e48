#include "tests/support/files/FaultyFileSystem.h"

#include <algorithm>

namespace testing_files {

using text::FileStatus;

void FaultyFileSystem::failCall(int n, int error, bool forEver) { faults_.push_back({"", n, error, forEver}); }

void FaultyFileSystem::failUse(const std::string& name, int k, int error, bool forEver) {
  faults_.push_back({name, k, error, forEver});
}

void FaultyFileSystem::clear() {
  log_.clear();
  uses_.clear();
  faults_.clear();
  mostWritten_ = 0;
  hook_ = nullptr;
}

std::string FaultyFileSystem::pathOf(int fd) const {
  const std::lock_guard lock(mutex_);
  const auto it = paths_.find(fd);
  return it == paths_.end() ? std::string() : it->second;
}

std::string FaultyFileSystem::full(int dirFd, const std::string& path) const {
  return dirFd == kCwd || path.starts_with('/') ? path : pathOf(dirFd) + "/" + path;
}

template <class Action>
auto FaultyFileSystem::pass(Call call, Action action) -> decltype(action()) {
  using Result = decltype(action());
  std::unique_lock lock(mutex_);   // not held over what may take long
  if (inHook_) {
    lock.unlock();
    return action();
  }
  call.number = static_cast<int>(log_.size()) + 1;
  const int use = ++uses_[call.name];
  log_.push_back(call);
  const std::size_t index = log_.size() - 1;
  if (hook_) {
    inHook_ = true;
    lock.unlock();
    hook_(call);
    lock.lock();
    inHook_ = false;
  }
  Result result{};
  const auto hit = std::find_if(faults_.begin(), faults_.end(), [&](const Fault& f) {
    if (!f.name.empty() && f.name != call.name) return false;
    const int n = f.name.empty() ? call.number : use;
    return f.forEver ? n >= f.number : n == f.number;
  });
  const bool fails = hit != faults_.end();
  if (fails) result = static_cast<Result>(-hit->error);
  lock.unlock();
  if (!fails) result = action();
  else if (call.name == "close") action();   // a descriptor is gone even when close reports an error
  lock.lock();
  if (index < log_.size()) log_[index].result = result;
  return result;
}

int FaultyFileSystem::openAt(int dirFd, const std::string& path, unsigned flags, unsigned mode) {
  return pass({"openAt", full(dirFd, path), flags}, [&] {
    const int fd = below_.openAt(dirFd, path, flags, mode);
    const std::string name = full(dirFd, path);
    const std::lock_guard lock(mutex_);
    if (fd >= 0) paths_[fd] = name;
    return fd;
  });
}
int FaultyFileSystem::statAt(int dirFd, const std::string& path, bool follow, FileStatus* out) {
  return pass({"statAt", full(dirFd, path)}, [&] { return below_.statAt(dirFd, path, follow, out); });
}
int FaultyFileSystem::statFd(int fd, FileStatus* out) {
  return pass({"statFd", pathOf(fd)}, [&] { return below_.statFd(fd, out); });
}
int FaultyFileSystem::accessAt(int dirFd, const std::string& path, bool folder) {
  return pass({"accessAt", full(dirFd, path)}, [&] { return below_.accessAt(dirFd, path, folder); });
}
std::int64_t FaultyFileSystem::read(int fd, char* to, std::size_t length) {
  return pass({"read", pathOf(fd)}, [&] { return below_.read(fd, to, length); });
}
std::int64_t FaultyFileSystem::write(int fd, const char* from, std::size_t length) {
  if (mostWritten_ > 0) length = std::min(length, mostWritten_);
  return pass({"write", pathOf(fd)}, [&] { return below_.write(fd, from, length); });
}
std::int64_t FaultyFileSystem::seek(int fd, std::int64_t offset) {
  return pass({"seek", pathOf(fd)}, [&] { return below_.seek(fd, offset); });
}
int FaultyFileSystem::sync(int fd) {
  return pass({"sync", pathOf(fd)}, [&] { return below_.sync(fd); });
}
int FaultyFileSystem::startSync(int fd) {
  return pass({"startSync", pathOf(fd)}, [&] { return below_.startSync(fd); });
}
int FaultyFileSystem::truncate(int fd, std::int64_t length) {
  return pass({"truncate", pathOf(fd)}, [&] { return below_.truncate(fd, length); });
}
int FaultyFileSystem::allocate(int fd, std::int64_t length) {
  return pass({"allocate", pathOf(fd)}, [&] { return below_.allocate(fd, length); });
}
int FaultyFileSystem::renameAt(int fromDir, const std::string& from, int toDir, const std::string& to, unsigned flags) {
  return pass({"renameAt", full(fromDir, from)}, [&] { return below_.renameAt(fromDir, from, toDir, to, flags); });
}
int FaultyFileSystem::linkAt(int fromDir, const std::string& from, int toDir, const std::string& to) {
  return pass({"linkAt", full(fromDir, from)}, [&] { return below_.linkAt(fromDir, from, toDir, to); });
}
int FaultyFileSystem::unlinkAt(int dirFd, const std::string& path, bool folder) {
  return pass({"unlinkAt", full(dirFd, path)}, [&] { return below_.unlinkAt(dirFd, path, folder); });
}
int FaultyFileSystem::makeDirAt(int dirFd, const std::string& path, unsigned mode) {
  return pass({"makeDirAt", full(dirFd, path)}, [&] { return below_.makeDirAt(dirFd, path, mode); });
}
int FaultyFileSystem::changeMode(int fd, unsigned mode) {
  return pass({"changeMode", pathOf(fd)}, [&] { return below_.changeMode(fd, mode); });
}
int FaultyFileSystem::changeOwner(int fd, std::uint32_t owner, std::uint32_t group) {
  return pass({"changeOwner", pathOf(fd)}, [&] { return below_.changeOwner(fd, owner, group); });
}
int FaultyFileSystem::readLinkAt(int dirFd, const std::string& path, std::string* out) {
  return pass({"readLinkAt", full(dirFd, path)}, [&] { return below_.readLinkAt(dirFd, path, out); });
}
int FaultyFileSystem::listAttributes(int fd, std::vector<std::string>* names) {
  return pass({"listAttributes", pathOf(fd)}, [&] { return below_.listAttributes(fd, names); });
}
int FaultyFileSystem::getAttribute(int fd, const std::string& name, std::string* value) {
  return pass({"getAttribute", pathOf(fd)}, [&] { return below_.getAttribute(fd, name, value); });
}
int FaultyFileSystem::setAttribute(int fd, const std::string& name, const std::string& value) {
  return pass({"setAttribute", pathOf(fd)}, [&] { return below_.setAttribute(fd, name, value); });
}
int FaultyFileSystem::removeAttribute(int fd, const std::string& name) {
  return pass({"removeAttribute", pathOf(fd)}, [&] { return below_.removeAttribute(fd, name); });
}
int FaultyFileSystem::listDir(const std::string& path, std::vector<std::string>* names) {
  return pass({"listDir", path}, [&] { return below_.listDir(path, names); });
}
int FaultyFileSystem::lock(int fd, bool exclusive, bool wait) {
  return pass({"lock", pathOf(fd)}, [&] { return below_.lock(fd, exclusive, wait); });
}
int FaultyFileSystem::close(int fd) {
  return pass({"close", pathOf(fd)}, [&] {
    {
      const std::lock_guard lock(mutex_);
      paths_.erase(fd);
    }
    return below_.close(fd);
  });
}

}   // namespace testing_files
