#include "tests/support/files/CrashFileSystem.h"

#include <algorithm>
#include <random>
#include <set>

namespace testing_files {

using namespace text;

namespace {

constexpr std::uint32_t kTypeMask = 0170000, kRegular = 0100000, kFolder = 0040000, kSymlink = 0120000;

// All subsets of up to eight things; beyond that beginnings, ends and all but one.
std::vector<std::vector<bool>> choices(std::size_t n) {
  std::vector<std::vector<bool>> all;
  if (n <= 8) {
    for (std::size_t bits = 0; bits < std::size_t(1) << n; ++bits) {
      all.emplace_back(n);
      for (std::size_t i = 0; i < n; ++i) all.back()[i] = (bits >> i & 1) != 0;
    }
    return all;
  }
  for (std::size_t k = 0; k <= n; ++k) {
    std::vector<bool> beginning(n), end(n), allButOne(n, true);
    for (std::size_t i = 0; i < n; ++i) beginning[i] = i < k, end[i] = i >= k;
    if (k < n) allButOne[k] = false;
    all.insert(all.end(), {beginning, end, allButOne});
  }
  return all;
}

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

}   // namespace

struct CrashFileSystem::DataChange {
  bool cut = false;   // truncate to `at`; else write `bytes` there
  std::size_t at = 0;
  std::string bytes;

  void applyTo(std::string* data) const {
    if (cut) return data->resize(at, '\0');
    if (data->size() < at + bytes.size()) data->resize(at + bytes.size(), '\0');
    data->replace(at, bytes.size(), bytes);
  }
};

struct CrashFileSystem::Node {
  std::uint64_t inode = 0;
  std::uint32_t mode = 0, owner = 0, group = 0;
  std::string data, durable;   // of a symlink: where it points
  std::vector<DataChange> pending;
  std::int64_t mtimeNs = 0, ctimeNs = 0;

  // What a power cut may leave of the bytes.
  std::set<std::string> possible() const {
    std::set<std::string> all{durable, data};
    for (const auto& chosen : choices(pending.size())) {
      std::string whole = durable;
      for (std::size_t i = 0; i < pending.size(); ++i) {
        if (!chosen[i]) continue;
        DataChange half = pending[i], zeros = pending[i];
        half.bytes.resize(half.bytes.size() / 2);
        // A file may get its new length before its new bytes: zeros behind the old end.
        const std::size_t kept = std::min(zeros.bytes.size(), whole.size() > zeros.at ? whole.size() - zeros.at : 0);
        zeros.bytes = whole.substr(std::min(zeros.at, whole.size()), kept) + std::string(zeros.bytes.size() - kept, '\0');
        for (const auto& torn : {half, zeros}) {
          std::string bytes = whole;
          torn.applyTo(&bytes);
          all.insert(bytes);
        }
        pending[i].applyTo(&whole);
      }
      all.insert(whole);
    }
    return all;
  }
};

struct CrashFileSystem::Handle {
  NodePtr node;
  std::string path;   // of a folder: what names under it begin with
  unsigned flags = 0;
  std::size_t at = 0;
  bool locked = false, exclusive = false;
};

CrashFileSystem::CrashFileSystem(const DiskState& durable) {
  entries_["/"] = make(kFolder | 0755);
  for (const auto& [path, bytes] : durable) {
    for (auto slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
      if (auto& folder = entries_[path.substr(0, slash)]; !folder) folder = make(kFolder | 0755);
    const NodePtr node = make(kRegular | 0644);
    node->data = node->durable = bytes;
    entries_[path] = node;
  }
  durable_ = entries_;
}

CrashFileSystem::~CrashFileSystem() = default;

CrashFileSystem::NodePtr CrashFileSystem::make(std::uint32_t mode) {
  auto node = std::make_shared<Node>();
  node->inode = nextInode_++;
  node->mode = mode;
  touch(*node, true);
  return node;
}

void CrashFileSystem::touch(Node& node, bool content) {
  nowNs_ += 1'000'000;
  node.ctimeNs = nowNs_;
  if (content) node.mtimeNs = nowNs_;
}

std::string CrashFileSystem::absolute(int dirFd, const std::string& path) const {
  std::string base = "/";
  if (path.starts_with('/')) base = path;
  else if (const auto it = handles_.find(dirFd); dirFd != kCwd && it != handles_.end())
    base = it->second.path + (it->second.path == "/" ? "" : "/") + path;
  else base += path;
  while (base.size() > 1 && (base.ends_with('/') || base.ends_with("/."))) base.pop_back();
  return base;
}

CrashFileSystem::NodePtr CrashFileSystem::find(const std::string& path, bool follow, std::string* where) const {
  std::string at = path;
  for (int links = 0; links < 40; ++links) {
    if (where) *where = at;
    const auto it = entries_.find(at);
    if (it == entries_.end()) return nullptr;
    if (!follow || (it->second->mode & kTypeMask) != kSymlink) return it->second;
    at = it->second->data.starts_with('/') ? it->second->data : folderOf(at) + "/" + it->second->data;
  }
  return nullptr;
}

CrashFileSystem::Node& CrashFileSystem::node(int fd) { return *handles_.at(fd).node; }

void CrashFileSystem::apply(const EntryChange& changed, Entries* to) {
  for (const auto& [path, node] : changed) {
    if (node) (*to)[path] = node;
    else to->erase(path);
  }
}

void CrashFileSystem::change(EntryChange changed) {
  apply(changed, &entries_);
  for (const auto& [path, node] : changed)
    if (node) touch(*node, false);
  pending_.push_back(std::move(changed));
}

void CrashFileSystem::change(Node& node, DataChange change) {
  change.applyTo(&node.data);
  node.pending.push_back(std::move(change));
  touch(node, true);
}

void CrashFileSystem::fill(const NodePtr& node, FileStatus* out) const {
  *out = {};
  out->device = 1;
  out->inode = node->inode;
  out->mode = node->mode;
  out->owner = node->owner;
  out->group = node->group;
  out->links = static_cast<std::uint64_t>(
      std::count_if(entries_.begin(), entries_.end(), [&](const auto& entry) { return entry.second == node; }));
  out->size = static_cast<std::int64_t>(node->data.size());
  out->mtimeNs = node->mtimeNs;
  out->ctimeNs = node->ctimeNs;
}

DiskState CrashFileSystem::now() const {
  DiskState state;
  for (const auto& [path, node] : entries_)
    if ((node->mode & kTypeMask) == kRegular) state[path] = node->data;
  return state;
}

std::vector<DiskState> CrashFileSystem::afterPowerCut(std::size_t most) const {
  std::set<DiskState> states;
  std::map<Node*, std::vector<std::string>> possible;
  std::mt19937_64 random(1);
  for (const auto& chosen : choices(pending_.size())) {
    Entries entries = durable_;
    for (std::size_t i = 0; i < pending_.size(); ++i) {
      if (chosen[i]) apply(pending_[i], &entries);
    }
    std::vector<std::pair<std::string, const std::vector<std::string>*>> files;
    double count = 1;
    for (const auto& [path, node] : entries) {
      if ((node->mode & kTypeMask) != kRegular) continue;
      auto& variants = possible[node.get()];
      if (variants.empty()) {
        const auto all = node->possible();
        variants.assign(all.begin(), all.end());
      }
      files.emplace_back(path, &variants);
      count *= static_cast<double>(variants.size());
    }
    const bool sampled = count > static_cast<double>(most);
    const auto rounds = static_cast<std::size_t>(sampled ? static_cast<double>(most) : count);
    for (std::size_t round = 0; round < rounds; ++round) {
      DiskState state;
      std::size_t number = round;
      for (const auto& [path, variants] : files) {
        state[path] = (*variants)[sampled ? random() % variants->size() : number % variants->size()];
        number /= variants->size();
      }
      states.insert(std::move(state));
    }
  }
  return {states.begin(), states.end()};
}

void CrashFileSystem::addSymlink(const std::string& path, const std::string& to) {
  const NodePtr node = make(kSymlink | 0777);
  node->data = node->durable = to;
  entries_[path] = durable_[path] = node;
}

int CrashFileSystem::openAt(int dirFd, const std::string& path, unsigned flags, unsigned mode) {
  std::string where;
  NodePtr node = find(absolute(dirFd, path), (flags & kNoFollow) == 0, &where);
  if (node && (flags & kCreate) && (flags & kExclusive)) return -EEXIST;
  if (node && (node->mode & kTypeMask) == kSymlink) return -ELOOP;
  if (!node) {
    if ((flags & kCreate) == 0) return -ENOENT;
    const NodePtr folder = find(folderOf(where), true);
    if (!folder || (folder->mode & kTypeMask) != kFolder) return -ENOENT;
    node = make(kRegular | (mode & 07777 & ~022u));
    change({{where, node}});
  }
  const bool folder = (node->mode & kTypeMask) == kFolder;
  if (folder && (flags & kWrite)) return -EISDIR;
  if (!folder && (flags & kDirectory)) return -ENOTDIR;
  int fd = 3;
  while (handles_.count(fd)) ++fd;
  handles_[fd] = {node, where, flags};
  return fd;
}

int CrashFileSystem::statAt(int dirFd, const std::string& path, bool follow, FileStatus* out) {
  const NodePtr node = path.empty() ? nullptr : find(absolute(dirFd, path), follow);
  if (!node) return -ENOENT;
  fill(node, out);
  return 0;
}

int CrashFileSystem::statFd(int fd, FileStatus* out) {
  fill(handles_.at(fd).node, out);
  return 0;
}

int CrashFileSystem::accessAt(int dirFd, const std::string& path, bool) { return find(absolute(dirFd, path), true) ? 0 : -ENOENT; }

std::int64_t CrashFileSystem::read(int fd, char* to, std::size_t length) {
  if (!handles_.count(fd)) return -EBADF;
  Handle& h = handles_.at(fd);
  if (!(h.flags & kRead)) return -EBADF;
  const std::string& data = h.node->data;
  const std::size_t n = h.at < data.size() ? std::min(length, data.size() - h.at) : 0;
  std::copy_n(data.data() + std::min(h.at, data.size()), n, to);
  h.at += n;
  return static_cast<std::int64_t>(n);
}

std::int64_t CrashFileSystem::write(int fd, const char* from, std::size_t length) {
  if (!handles_.count(fd)) return -EBADF;
  Handle& h = handles_.at(fd);
  if (!(h.flags & kWrite)) return -EBADF;
  if (h.flags & kAppend) h.at = h.node->data.size();
  change(*h.node, {false, h.at, std::string(from, length)});
  h.at += length;
  return static_cast<std::int64_t>(length);
}

std::int64_t CrashFileSystem::seek(int fd, std::int64_t offset) {
  handles_.at(fd).at = static_cast<std::size_t>(offset);
  return offset;
}

int CrashFileSystem::sync(int fd) {
  const Handle& h = handles_.at(fd);
  if ((h.node->mode & kTypeMask) != kFolder) {
    h.node->durable = h.node->data;
    h.node->pending.clear();
    return 0;
  }
  std::vector<EntryChange> left;
  for (auto& changed : pending_) {
    const bool here =
        std::any_of(changed.begin(), changed.end(), [&](const auto& entry) { return folderOf(entry.first) == h.path; });
    if (!here) {
      left.push_back(std::move(changed));
      continue;
    }
    apply(changed, &durable_);
  }
  pending_ = std::move(left);
  return 0;
}

int CrashFileSystem::truncate(int fd, std::int64_t length) {
  if (!(handles_.at(fd).flags & kWrite)) return -EBADF;
  change(node(fd), {true, static_cast<std::size_t>(length), {}});
  return 0;
}

int CrashFileSystem::renameAt(int fromDir, const std::string& from, int toDir, const std::string& to, unsigned flags) {
  const std::string a = absolute(fromDir, from), b = absolute(toDir, to);
  const NodePtr one = find(a, false), two = find(b, false);
  if (!one || !find(folderOf(b), true)) return -ENOENT;
  if (flags == kExchange) {
    if (!two) return -ENOENT;
    change({{a, two}, {b, one}});
    return 0;
  }
  if (two && flags == kNoReplace) return -EEXIST;
  if (two && (two->mode & kTypeMask) == kFolder) return -EISDIR;
  if ((one->mode & kTypeMask) == kFolder) return -EOPNOTSUPP;
  change({{a, nullptr}, {b, one}});
  return 0;
}

int CrashFileSystem::linkAt(int fromDir, const std::string& from, int toDir, const std::string& to) {
  const NodePtr node = find(absolute(fromDir, from), false);
  if (!node) return -ENOENT;
  const std::string path = absolute(toDir, to);
  if (find(path, false)) return -EEXIST;
  change({{path, node}});
  return 0;
}

int CrashFileSystem::unlinkAt(int dirFd, const std::string& path, bool folder) {
  const std::string at = absolute(dirFd, path);
  const NodePtr node = find(at, false);
  if (!node) return -ENOENT;
  if (((node->mode & kTypeMask) == kFolder) != folder) return folder ? -ENOTDIR : -EISDIR;
  if (folder) {
    std::vector<std::string> names;
    listDir(at, &names);
    if (!names.empty()) return -ENOTEMPTY;
  }
  change({{at, nullptr}});
  return 0;
}

int CrashFileSystem::makeDirAt(int dirFd, const std::string& path, unsigned mode) {
  const std::string at = absolute(dirFd, path);
  if (find(at, false)) return -EEXIST;
  if (!find(folderOf(at), true)) return -ENOENT;
  change({{at, make(kFolder | (mode & 07777))}});
  return 0;
}

int CrashFileSystem::changeMode(int fd, unsigned mode) {
  node(fd).mode = (node(fd).mode & kTypeMask) | (mode & 07777);
  touch(node(fd), false);
  return 0;
}

int CrashFileSystem::changeOwner(int fd, std::uint32_t owner, std::uint32_t group) {
  node(fd).owner = owner;
  node(fd).group = group;
  touch(node(fd), false);
  return 0;
}

int CrashFileSystem::readLinkAt(int dirFd, const std::string& path, std::string* out) {
  const NodePtr node = find(absolute(dirFd, path), false);
  if (!node) return -ENOENT;
  if ((node->mode & kTypeMask) != kSymlink) return -EINVAL;
  *out = node->data;
  return 0;
}

int CrashFileSystem::listDir(const std::string& path, std::vector<std::string>* names) {
  names->clear();
  const std::string folder = absolute(kCwd, path);
  const NodePtr node = find(folder, true);
  if (!node) return -ENOENT;
  if ((node->mode & kTypeMask) != kFolder) return -ENOTDIR;
  for (const auto& [entry, unused] : entries_)
    if (entry != "/" && folderOf(entry) == folder) names->push_back(entry.substr(entry.rfind('/') + 1));
  return 0;
}

int CrashFileSystem::lock(int fd, bool exclusive, bool) {
  Handle& h = handles_.at(fd);
  for (const auto& [other, held] : handles_)
    if (other != fd && held.node == h.node && held.locked && (exclusive || held.exclusive)) return -EWOULDBLOCK;
  h.locked = true;
  h.exclusive = exclusive;
  return 0;
}

int CrashFileSystem::close(int fd) { return handles_.erase(fd) > 0 ? 0 : -EBADF; }

}   // namespace testing_files
