// Saves by overwriting in place, with a synced copy of the old bytes during the write.
#include <algorithm>
#include <cerrno>
#include <new>

#include "text/file/Leftovers.h"
#include "text/file/PlantedFaults.h"
#include "text/file/SaveWays.h"

namespace text {
namespace {

class Overwriting {
 public:
  Overwriting(SaveTarget& target, const SaveSource& source, const std::string& recoveryFolder)
      : target_(target), source_(source), recoveryFolder_(recoveryFolder) {}
  ~Overwriting() {
    if (!touched_) dropCopy();   // else it is needed
  }

  SaveResult run() {
    auto& fs = fileSystem();
    file_ = files::open(FileSystem::kCwd, target_.path, kRead | kWrite | kNoFollow | kNonBlock);
    if (!file_.ok()) return saveFailed(file_.error());
    FileStatus before;
    if (const int r = fs.statFd(file_.get(), &before); r < 0) return saveFailed(r);
    if (before.device != target_.status.device || before.inode != target_.status.inode) return saveRefusedAsChanged();
    files::leaveTickOf(before);
    if constexpr (planted(PlantedFault::truncateFirst)) fs.truncate(file_.get(), 0);

    std::uint64_t oldHash = 0;
    std::int64_t oldSize = 0;
    if (const int r = makeCopy(&oldHash, &oldSize); r < 0) return saveFailed(r);
    // The last check before the first byte changes.
    FileStatus now;
    if (const int r = fs.statAt(FileSystem::kCwd, target_.path, false, &now); r < 0) return saveFailed(r);
    if (now != before || oldSize != before.size) return saveRefusedAsChanged();
    if (target_.expected && (oldSize != target_.expected->status.size || oldHash != target_.expected->contentHash))
      return saveRefusedAsChanged();

    SaveResult result;
    result.stamp.exists = true;
    const std::string copyPath = copyFolder_ + "/" + copyName_;
    int r = 0;
    try {
      r = overwrite(oldSize, &result.stamp);
    } catch (const std::bad_alloc&) {
      restore(oldSize, before.mode);
      throw;
    }
    if (r == 0) return result;
    const bool back = !touched_ || restore(oldSize, before.mode);
    return saveFailed(r, back ? std::string() : ". The old text is in " + copyPath);
  }

 private:
  // Makes a copy of the old bytes, synced to disk, beside the target or else in the recovery folder.
  int makeCopy(std::uint64_t* hash, std::int64_t* size) {
    copyFolder_ = target_.parts.folder;
    int r = target_.folder.ok() ? createCopy(target_.folder.get()) : -EACCES;
    if (r == -EACCES || r == -EROFS || r == -EPERM) {
      copyFolder_ = recoveryFolder_;
      if (copyFolder_.empty() || !makeFolders(copyFolder_, 0700).empty()) return r;
      ownFolder_ = files::open(FileSystem::kCwd, copyFolder_, kRead | kDirectory);
      if (!ownFolder_.ok()) return ownFolder_.error();
      r = createCopy(ownFolder_.get());
    }
    if (r < 0) return r;
    if ((r = copyBytes(file_.get(), copy_.get(), hash, size)) < 0) return r;
    if ((r = files::sync(copy_.get())) < 0) return r;
    std::string whole = copyName(copyName_, target_.path, ownFolder_.ok());
    if ((r = fileSystem().renameAt(copyFolderFd_, copyName_, copyFolderFd_, whole, kReplace)) < 0) return r;
    copyName_.swap(whole);
    return files::syncFolder(copyFolderFd_);
  }

  int createCopy(int folder) {
    copyFolderFd_ = folder;
    copy_ = createUnfinished(folder, 0600, &copyName_);
    if (!copy_.ok()) copyName_.clear();
    return copy_.error();
  }

  int copyBytes(int from, int to, std::uint64_t* hash, std::int64_t* size) {
    ContentHash content;
    for (*size = 0;;) {
      const std::int64_t n = files::readSome(from, buffer_.get(), kBuffer);
      if (n < 0) return static_cast<int>(n);
      if (n == 0) break;
      const std::string_view part(buffer_.get(), static_cast<std::size_t>(n));
      content.add(part);
      *size += n;
      if (const int r = files::writeAll(to, part); r < 0) return r;
    }
    *hash = content.value();
    return 0;
  }

  int overwrite(std::int64_t oldSize, FileStamp* stamp) {
    auto& fs = fileSystem();
    if (source_.size() > oldSize) {   // space for all of it before the first byte changes
      touched_ = true;
      const int r = fs.allocate(file_.get(), source_.size());
      if (files::noRoom(r) || r == -EIO) return r;
    }
    if (const auto r = fs.seek(file_.get(), 0); r < 0) return static_cast<int>(r);
    touched_ = true;
    if (const int r = writeSource(file_.get(), source_, &stamp->contentHash); r < 0) return r;
    if (source_.size() < oldSize)
      if (const int r = fs.truncate(file_.get(), source_.size()); r < 0) return r;
    FileStatus now;
    if (const int r = fs.statFd(file_.get(), &now); r < 0) return r;
    if (now.mode != target_.status.mode)   // writing clears the set-user-id bit; only the owner may set it again
      fs.changeMode(file_.get(), target_.status.mode & 07777);
    if (const int r = files::sync(file_.get()); r < 0) return r;
    if (const int r = fs.statFd(file_.get(), &stamp->status); r < 0) return r;
    // The new bytes are safe: removes the copy. If it cannot be removed, restores the old bytes from it.
    if (const int r = dropCopy(); r < 0) return r;
    touched_ = false;
    return 0;
  }

  // Restores the old bytes from the copy. False: that failed, and the copy is kept. Needs no memory.
  bool restore(std::int64_t oldSize, std::uint32_t mode) {
    for (int attempt = 0; touched_ && attempt < 2; ++attempt) touched_ = restoreOnce(oldSize, mode) < 0;
    return !touched_;
  }

  int restoreOnce(std::int64_t oldSize, std::uint32_t mode) {
    auto& fs = fileSystem();
    if (const auto r = fs.seek(copy_.get(), 0); r < 0) return static_cast<int>(r);
    if (const auto r = fs.seek(file_.get(), 0); r < 0) return static_cast<int>(r);
    std::uint64_t hash = 0;
    std::int64_t size = 0;
    if (const int r = copyBytes(copy_.get(), file_.get(), &hash, &size); r < 0) return r;
    if (size != oldSize) return -EIO;
    if (const int r = fs.truncate(file_.get(), oldSize); r < 0) return r;   // also releases reserved space
    FileStatus now;
    if (fs.statFd(file_.get(), &now) == 0 && now.mode != mode) fs.changeMode(file_.get(), mode & 07777);
    return files::sync(file_.get());
  }

  int dropCopy() {
    if (copyName_.empty()) return 0;
    const int r = removeOwn(copyFolderFd_, copyName_);
    if (r == 0) copyName_.clear();
    return r;
  }

  static constexpr std::size_t kBuffer = 128 * 1024;
  SaveTarget& target_;
  const SaveSource& source_;
  const std::unique_ptr<char[]> buffer_ = std::make_unique_for_overwrite<char[]>(kBuffer);   // before anything is changed
  const std::string recoveryFolder_;
  files::Descriptor file_, copy_, ownFolder_;
  std::string copyFolder_, copyName_;   // where the copy is; an empty name: there is none
  int copyFolderFd_ = -1;
  bool touched_ = false;   // the target may hold neither the old nor the new bytes
};

}   // namespace

SaveResult saveByOverwriting(SaveTarget& target, const SaveSource& source, const std::string& recoveryFolder) {
  return Overwriting(target, source, recoveryFolder).run();
}

}   // namespace text
