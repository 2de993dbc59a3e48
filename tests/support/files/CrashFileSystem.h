// A file system in memory that keeps what is on the platter apart from what is only written, and lists every state that a
// power cut may leave: any part of the unsynced changes of folders, and any part, torn or as zeros, of the unsynced writes of
// files. sync() of a file makes its bytes durable but not its name; sync() of a folder its entries.
//
// Paths are absolute or, under kCwd, taken from "/". Links are followed in the last part only. Time moves one
// millisecond with each change, unless it is set. One user, who may do everything; no attributes. The standard streams are none of
// it: read() and write() refuse a descriptor that is not open, all others throw.
#pragma once

#include <cerrno>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "text/file/FileSystem.h"

namespace testing_files {

// Contents by path, of regular files.
using DiskState = std::map<std::string, std::string>;

class CrashFileSystem : public text::FileSystem {
 public:
  // A disk with these files, all durable; their folders are made.
  explicit CrashFileSystem(const DiskState& durable = {});
  ~CrashFileSystem() override;

  DiskState now() const;   // what a running program sees
  // All distinct states after a power cut now; when there are more than `most`, the extremes and a fixed sample of them.
  std::vector<DiskState> afterPowerCut(std::size_t most = 3000) const;
  void addSymlink(const std::string& path, const std::string& to);
  void setTime(std::int64_t nowNs) { nowNs_ = nowNs; }

  int openAt(int dirFd, const std::string& path, unsigned flags, unsigned mode) override;
  int statAt(int dirFd, const std::string& path, bool follow, text::FileStatus* out) override;
  int statFd(int fd, text::FileStatus* out) override;
  int accessAt(int dirFd, const std::string& path, bool folder) override;
  std::int64_t read(int fd, char* to, std::size_t length) override;
  std::int64_t write(int fd, const char* from, std::size_t length) override;
  std::int64_t seek(int fd, std::int64_t offset) override;
  int sync(int fd) override;
  int startSync(int) override { return 0; }
  int truncate(int fd, std::int64_t length) override;
  int allocate(int, std::int64_t) override { return 0; }
  int renameAt(int fromDir, const std::string& from, int toDir, const std::string& to, unsigned flags) override;
  int linkAt(int fromDir, const std::string& from, int toDir, const std::string& to) override;
  int unlinkAt(int dirFd, const std::string& path, bool folder) override;
  int makeDirAt(int dirFd, const std::string& path, unsigned mode) override;
  int changeMode(int fd, unsigned mode) override;
  int changeOwner(int fd, std::uint32_t owner, std::uint32_t group) override;
  int readLinkAt(int dirFd, const std::string& path, std::string* out) override;
  int listAttributes(int, std::vector<std::string>* names) override { return names->clear(), 0; }
  int getAttribute(int, const std::string&, std::string*) override { return -ENODATA; }
  int setAttribute(int, const std::string&, const std::string&) override { return -EOPNOTSUPP; }
  int removeAttribute(int, const std::string&) override { return -ENODATA; }
  int listDir(const std::string& path, std::vector<std::string>* names) override;
  int lock(int fd, bool exclusive, bool wait) override;
  int close(int fd) override;

 private:
  struct DataChange;
  struct Node;
  using NodePtr = std::shared_ptr<Node>;
  using Entries = std::map<std::string, NodePtr>;
  using EntryChange = Entries;   // one atomic change: null removes
  struct Handle;

  std::string absolute(int dirFd, const std::string& path) const;
  NodePtr find(const std::string& path, bool follow, std::string* where = nullptr) const;
  Node& node(int fd);
  static void apply(const EntryChange& changed, Entries* to);
  void change(EntryChange entries);
  void change(Node& node, DataChange change);
  NodePtr make(std::uint32_t mode);
  void touch(Node& node, bool content);
  void fill(const NodePtr& node, text::FileStatus* out) const;

  Entries entries_, durable_;
  std::vector<EntryChange> pending_;   // of folders, in order
  std::map<int, Handle> handles_;
  std::uint64_t nextInode_ = 1;
  std::int64_t nowNs_ = 1'700'000'000'000'000'000;
};

}   // namespace testing_files
