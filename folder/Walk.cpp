#include "folder/Walk.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <set>
#include <utility>

#include "text/file/Encoding.h"
#include "text/file/FileCalls.h"

namespace folder {
namespace {

constexpr std::size_t kTroublesKept = 1000;

using Id = std::pair<std::uint64_t, std::uint64_t>;
Id idOf(const text::FileStatus& status) { return {status.device, status.inode}; }

int statusOf(const std::string& path, bool follow, text::FileStatus* status) {
  return text::fileSystem().statAt(text::FileSystem::kCwd, path, follow, status);
}

// As whole paths compare: a folder's name goes on with a slash.
bool before(const Listed& a, const Listed& b) {
  const std::size_t n = std::min(a.name.size(), b.name.size());
  if (const int c = a.name.compare(0, n, b.name, 0, n); c != 0) return c < 0;
  const auto next = [n](const Listed& e) {
    return e.name.size() > n ? static_cast<unsigned char>(e.name[n]) : e.isFolder ? int{'/'} : -1;
  };
  return next(a) < next(b);
}

class Walker {
 public:
  Walker(const std::string& root, const WalkOptions& options, const Visit& visit, const std::atomic<bool>* cancel)
      : root_(root), options_(options), visit_(visit), cancel_(cancel) {}

  WalkReport run() {
    text::FileStatus status;
    if (const int r = statusOf(root_, true, &status); r < 0) return failed(r);
    if (!status.isDirectory()) return failed(-ENOTDIR);
    folders_.insert(idOf(status));
    std::vector<Listed> entries;
    bool hasRules = false, hasGit = false;
    if (const int r = listFolder(root_, &entries, &hasRules, &hasGit); r < 0) return failed(r);
    const bool rulesCount = !options_.ignored;
    look(root_, entries, rulesCount ? IgnoreRules::in(root_) : IgnoreRules(), false);
    return std::move(report_);
  }

 private:
  WalkReport failed(int r) {
    report_.error = text::errorText(r);
    return std::move(report_);
  }

  bool goesOn() {
    if (cancel_ && cancel_->load(std::memory_order_relaxed)) report_.stopped = true;
    return !report_.stopped;
  }

  void trouble(const std::string& path, int r) {
    if (r == -ENOENT) return;   // gone meanwhile
    ++report_.unreadable;
    if (report_.troubles.size() < kTroublesKept) report_.troubles.push_back({path, text::errorText(r)});
  }

  // onlyTracked: the folder is ignored, but some of its files are tracked.
  void look(const std::string& folder, const std::vector<Listed>& entries, const IgnoreRules& rules, bool onlyTracked) {
    ++report_.folders;
    for (const Listed& entry : entries) {
      if (!goesOn()) return;
      if (isHiddenName(entry.name) && !options_.hidden) {
        ++report_.hidden;
      } else if (isVersionControl(entry.name) && !options_.ignored) {
        ++report_.ignored;
      } else if (entry.isLink && !options_.links) {
        ++report_.links;
      } else {
        const std::string path = joined(folder, entry.name);
        if (entry.isFolder) lookInto(path, entry, rules, onlyTracked);
        else if (entry.isFile) give(path, entry, rules, onlyTracked);
        else ++report_.special;
      }
    }
  }

  void lookInto(const std::string& path, const Listed& entry, const IgnoreRules& rules, bool onlyTracked) {
    bool justTracked = onlyTracked;
    if (!options_.ignored && (onlyTracked || rules.ignores(path, !entry.isLink))) {   // to version control a link is no folder
      if (!rules.tracksBelow(path)) {
        ++report_.ignored;
        return;
      }
      justTracked = true;
    }
    if (options_.links && !isNew(path, &folders_)) return;
    std::vector<Listed> entries;
    bool hasRules = false, hasGit = false;
    if (const int r = listFolder(path, &entries, &hasRules, &hasGit); r < 0) return trouble(path, r);
    look(path, entries, options_.ignored ? rules : rules.inside(path, hasRules, hasGit), justTracked);
  }

  void give(const std::string& path, const Listed&, const IgnoreRules& rules, bool onlyTracked) {
    if (!options_.masks.empty() && !options_.masks.fit(belowRoot(root_, path))) {
      ++report_.masked;
    } else if (!options_.ignored && (onlyTracked ? !rules.tracked(path) : rules.ignores(path, false))) {
      ++report_.ignored;
    } else if (options_.links && !isNew(path, &files_)) {
      ++report_.links;
    } else if (options_.textOnly && isBinaryFile(path)) {
      ++report_.binary;
    } else {
      ++report_.files;
      if (!visit_(path)) report_.stopped = true;
    }
  }

  bool isNew(const std::string& path, std::set<Id>* seen) {
    text::FileStatus status;
    if (const int r = statusOf(path, true, &status); r < 0) return trouble(path, r), false;
    return seen->insert(idOf(status)).second;
  }

  const std::string root_;
  const WalkOptions& options_;
  const Visit& visit_;
  const std::atomic<bool>* cancel_;
  std::set<Id> folders_, files_;   // seen, when links are followed
  WalkReport report_;
};

}   // namespace

WalkReport walk(const std::string& root, const WalkOptions& options, const Visit& visit, const std::atomic<bool>* cancel) {
  return Walker(root, options, visit, cancel).run();
}

std::string joined(const std::string& folder, std::string_view path) {
  std::string all = folder;
  if (!all.ends_with('/')) all += '/';
  return all += path;
}

std::string_view belowRoot(std::string_view root, std::string_view path) {
  return path.substr(std::min(path.size(), root.ends_with('/') ? root.size() : root.size() + 1));
}

int listFolder(const std::string& path, std::vector<Listed>* entries, bool* hasRules, bool* hasGit) {
  entries->clear();
  *hasRules = *hasGit = false;
  std::vector<text::FolderEntry> found;
  if (const int r = text::fileSystem().listEntries(path, &found); r < 0) return r;
  entries->reserve(found.size());
  for (text::FolderEntry& entry : found) {
    Listed listed;
    listed.isFile = entry.kind == text::FolderEntry::file;
    listed.isFolder = entry.kind == text::FolderEntry::folder;
    listed.isLink = entry.kind == text::FolderEntry::link;
    if (listed.isLink || entry.kind == text::FolderEntry::unknown) {
      const std::string whole = joined(path, entry.name);
      text::FileStatus status;
      if (!listed.isLink) listed.isLink = statusOf(whole, false, &status) == 0 && status.isSymlink();
      if (statusOf(whole, true, &status) == 0) {
        listed.isFile = status.isRegular();
        listed.isFolder = status.isDirectory();
      } else if (!listed.isLink) {
        continue;   // gone meanwhile
      }
    }
    if (entry.name == ".gitignore") *hasRules = true;
    if (entry.name == ".git") *hasGit = true;
    listed.name = std::move(entry.name);
    entries->push_back(std::move(listed));
  }
  std::sort(entries->begin(), entries->end(), before);
  return 0;
}

bool isHiddenName(std::string_view name) { return name.starts_with('.'); }

bool isVersionControl(std::string_view name) { return name == ".git" || name == ".hg" || name == ".svn" || name == ".bzr"; }

bool isBinary(std::string_view head) {
  if (head.find('\0') == std::string_view::npos) return false;
  const text::Encoding encoding = text::detectFormat(head).encoding;
  return encoding != text::Encoding::utf16le && encoding != text::Encoding::utf16be;
}

bool isBinaryFile(const std::string& path) {
  const text::files::Descriptor fd = text::files::open(text::FileSystem::kCwd, path, text::kRead | text::kNonBlock);
  if (!fd.ok()) return false;
  char head[kBinaryHead];
  const std::int64_t n = text::files::readSome(fd.get(), head, sizeof head);
  return n > 0 && isBinary({head, static_cast<std::size_t>(n)});
}

}   // namespace folder
