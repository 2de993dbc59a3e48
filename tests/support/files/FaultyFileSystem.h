// A file system for tests that passes each call on to another one (the real one, or CrashFileSystem) and on the way logs it,
// fails chosen calls, cuts writes short, and calls a hook first. Free of Qt; any threads. Install it with UseFileSystem.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "text/file/FileSystem.h"

namespace testing_files {

struct Call {
  std::string name{};   // as in FileSystem: "openAt", "sync" ...
  std::string path{};   // what it was about: the path given, or that of the descriptor; folders end without "/"
  unsigned flags = 0;   // openAt: OpenFlags
  int number = 0;       // from 1, over all calls
  std::int64_t result = 0;
};

class FaultyFileSystem : public text::FileSystem {
 public:
  explicit FaultyFileSystem(text::FileSystem& below = text::fileSystem()) : below_(below) {}

  // Call number n answers -error and does nothing; with forEver every later one too.
  void failCall(int n, int error, bool forEver = false);
  // The same for the k-th use (from 1) of the call of that name.
  void failUse(const std::string& name, int k, int error, bool forEver = false);
  // Each write takes at most this many bytes.
  void shortWrites(std::size_t most) { mostWritten_ = most; }
  // Called before each call. Calls that the hook itself makes go straight to the file system below.
  void before(std::function<void(const Call&)> hook) { hook_ = std::move(hook); }
  void clear();   // forgets log, faults, limits and hook

  const std::vector<Call>& log() const { return log_; }
  int openDescriptors() const { return static_cast<int>(paths_.size()); }

  int openAt(int dirFd, const std::string& path, unsigned flags, unsigned mode) override;
  int statAt(int dirFd, const std::string& path, bool follow, text::FileStatus* out) override;
  int statFd(int fd, text::FileStatus* out) override;
  int accessAt(int dirFd, const std::string& path, bool folder) override;
  std::int64_t read(int fd, char* to, std::size_t length) override;
  std::int64_t write(int fd, const char* from, std::size_t length) override;
  std::int64_t seek(int fd, std::int64_t offset) override;
  int sync(int fd) override;
  int startSync(int fd) override;
  int truncate(int fd, std::int64_t length) override;
  int allocate(int fd, std::int64_t length) override;
  int renameAt(int fromDir, const std::string& from, int toDir, const std::string& to, unsigned flags) override;
  int linkAt(int fromDir, const std::string& from, int toDir, const std::string& to) override;
  int unlinkAt(int dirFd, const std::string& path, bool folder) override;
  int makeDirAt(int dirFd, const std::string& path, unsigned mode) override;
  int changeMode(int fd, unsigned mode) override;
  int changeOwner(int fd, std::uint32_t owner, std::uint32_t group) override;
  int readLinkAt(int dirFd, const std::string& path, std::string* out) override;
  int listAttributes(int fd, std::vector<std::string>* names) override;
  int getAttribute(int fd, const std::string& name, std::string* value) override;
  int setAttribute(int fd, const std::string& name, const std::string& value) override;
  int removeAttribute(int fd, const std::string& name) override;
  int listDir(const std::string& path, std::vector<std::string>* names) override;
  int lock(int fd, bool exclusive, bool wait) override;
  int close(int fd) override;

 private:
  struct Fault {
    std::string name;   // empty: any call
    int number;         // of the call, or of the use of that name
    int error;
    bool forEver;
  };
  template <class Action>
  auto pass(Call call, Action action) -> decltype(action());
  std::string full(int dirFd, const std::string& path) const;
  std::string pathOf(int fd) const;

  text::FileSystem& below_;
  std::vector<Call> log_;
  std::map<std::string, int> uses_;
  std::vector<Fault> faults_;
  std::size_t mostWritten_ = 0;
  std::function<void(const Call&)> hook_;
  bool inHook_ = false;
  std::map<int, std::string> paths_;
  mutable std::mutex mutex_;   // calls come from several threads
};

// Makes a file system the one in use, for a scope.
class UseFileSystem {
 public:
  explicit UseFileSystem(text::FileSystem& use) : old_(text::setFileSystem(&use)) {}
  ~UseFileSystem() { text::setFileSystem(old_); }
  UseFileSystem(const UseFileSystem&) = delete;
  UseFileSystem& operator=(const UseFileSystem&) = delete;

 private:
  text::FileSystem* old_;
};

}   // namespace testing_files
