// Saving by a new file that is renamed over the old one.
#include <algorithm>
#include <cerrno>
#include <new>

#include "text/file/Leftovers.h"
#include "text/file/PlantedFaults.h"
#include "text/file/SaveWays.h"

namespace text {
namespace {

// The error codes of file systems that do not support a kind of rename.
bool unsupported(int r) { return r == -EINVAL || r == -ENOSYS || r == -EOPNOTSUPP; }
// The error codes when an owner or attribute cannot be set or is not supported.
bool notOurs(int r) { return r == -EPERM || r == -EACCES || r == -EOPNOTSUPP || r == -EINVAL; }

enum class Carried { all, impossible, failed };

// Gives the new, still empty file the owner, group, attributes (with access lists) and mode of the old one. The mode comes last:
// before that only this user can read the file.
Carried carryMetadata(const SaveTarget& target, int to, int* error) {
  auto& fs = fileSystem();
  const auto bad = [&](int r) {
    *error = r;
    return notOurs(r) ? Carried::impossible : Carried::failed;
  };
  FileStatus own;
  if (const int r = fs.statFd(to, &own); r < 0) return *error = r, Carried::failed;
  const FileStatus& old = target.status;
  if (own.owner != old.owner || own.group != old.group)
    if (const int r = fs.changeOwner(to, old.owner, old.group); r < 0) return bad(r);

  std::vector<std::string> names, ownNames;
  const int listed = fs.listAttributes(target.file.get(), &names);
  if (listed < 0 && listed != -EOPNOTSUPP && listed != -ENOSYS) return *error = listed, Carried::failed;
  const int ownListed = fs.listAttributes(to, &ownNames);
  if (ownListed < 0 && ownListed != -EOPNOTSUPP && ownListed != -ENOSYS) return *error = ownListed, Carried::failed;
  for (const auto& name : ownNames)   // inherited from the folder; they could let more people read the file
    if (std::find(names.begin(), names.end(), name) == names.end())
      if (const int r = fs.removeAttribute(to, name); r < 0 && r != -ENODATA) return bad(r);
  for (const auto& name : names) {
    std::string value, ownValue;
    if (const int r = fs.getAttribute(target.file.get(), name, &value); r < 0) return *error = r, Carried::failed;
    const bool has = std::find(ownNames.begin(), ownNames.end(), name) != ownNames.end();
    if (has && fs.getAttribute(to, name, &ownValue) == 0 && ownValue == value) continue;
    if (const int r = fs.setAttribute(to, name, value); r < 0) return bad(r);
  }

  if (const int r = fs.changeMode(to, old.mode & 07777); r < 0) return bad(r);
  if (const int r = fs.statFd(to, &own); r < 0) return *error = r, Carried::failed;
  const bool same = own.owner == old.owner && own.group == old.group && own.mode == old.mode;
  return same ? Carried::all : Carried::impossible;
}

class Replacing {
 public:
  Replacing(SaveTarget& target, const SaveSource& source) : target_(target), source_(source), folder_(target.folder.get()) {}
  ~Replacing() {
    if (!ownName_.empty()) removeOwn(folder_, ownName_);
  }

  std::optional<SaveResult> run() {
    unsigned mode = target_.exists ? target_.status.mode & 0600 : target_.mode;
    if constexpr (planted(PlantedFault::wideTemporary)) mode = 0644;
    file_ = createUnfinished(folder_, mode, &ownName_);
    if (!file_.ok()) {
      ownName_.clear();
      return saveFailed(file_.error());
    }
    if (target_.exists) {
      int error = 0;
      switch (carryMetadata(target_, file_.get(), &error)) {
        case Carried::all: break;
        case Carried::impossible: return std::nullopt;
        case Carried::failed: return saveFailed(error);
      }
    }
    if (const int r = write(); r < 0) {
      if constexpr (planted(PlantedFault::switchToInPlace)) return std::nullopt;
      return saveFailed(r);
    }
    if (auto refused = compare()) return refused;
    if (const int r = files::sync(file_.get()); r < 0) return saveFailed(r);
    // From here on, steps that cannot be reverted must not allocate memory. The file written aside is complete and will soon
    // replace the old text.
    std::string whole = copyName(ownName_, target_.parts.name, false), oldName = whole + "0";
    if (target_.exists) {
      if (const int r = fileSystem().renameAt(folder_, ownName_, folder_, whole, kReplace); r < 0) return saveFailed(r);
      ownName_.swap(whole);
    }
    if (auto refused = lookAgain()) return refused;
    if (const int r = swap(oldName); r < 0) return r == -EEXIST ? saveRefusedAsChanged() : saveFailed(r);
    try {
      return settle();
    } catch (const std::bad_alloc&) {
      undo();
      throw;
    }
  }

 private:
  int write() {
    auto& fs = fileSystem();
    const int reserved = fs.allocate(file_.get(), source_.size());
    if (files::noRoom(reserved) || reserved == -EIO) return reserved;
    if (const int r = writeSource(file_.get(), source_, &hash_); r < 0) return r;
    // Writing clears the set-user-id and set-group-id bits.
    if (target_.exists && (target_.status.mode & 06000) != 0)
      if (const int r = fs.changeMode(file_.get(), target_.status.mode & 07777); r < 0) return r;
    return fs.startSync(file_.get()), 0;
  }

  bool compares() const { return !planted(PlantedFault::skipCompare) && target_.exists && target_.expected; }

  // Whether the old file has the expected content. Remembers its status: while that is unchanged, the content is unchanged too. The
  // disk writes the new file meanwhile.
  std::optional<SaveResult> compare() {
    if (!compares()) return std::nullopt;
    if (const int r = fileSystem().statFd(target_.file.get(), &seen_); r < 0) return saveFailed(r);
    files::leaveTickOf(seen_);
    return compareContent();
  }

  // The last check, directly before the rename: the file at the path is the compared one, and its status is unchanged.
  std::optional<SaveResult> lookAgain() {
    if (!compares()) return std::nullopt;
    FileStatus now;
    const int r = fileSystem().statAt(folder_, target_.parts.name, false, &now);
    if (r < 0 && r != -ENOENT) return saveFailed(r);
    if (r < 0 || now != seen_) return saveRefusedAsChanged();
    return std::nullopt;
  }

  std::optional<SaveResult> compareContent() {
    std::uint64_t hash = 0;
    if (seen_.size != target_.expected->status.size) return saveRefusedAsChanged();
    if (const auto r = fileSystem().seek(target_.file.get(), 0); r < 0) return saveFailed(static_cast<int>(r));
    if (const int r = files::hashContent(target_.file.get(), &hash); r < 0) return saveFailed(r);
    if (hash != target_.expected->contentHash) return saveRefusedAsChanged();
    return std::nullopt;
  }

  // Puts the new file in place so that the old one can still be restored, as ownName_ or oldName_.
  int swap(std::string& oldName) {
    auto& fs = fileSystem();
    const std::string& name = target_.parts.name;
    if (!target_.exists) {
      int r = fs.renameAt(folder_, ownName_, folder_, name, kNoReplace);
      if (r == 0) {
        ownName_.clear();
        undo_ = Undo::removeNew;
        return 0;
      }
      if (!unsupported(r)) return r;
      r = fs.linkAt(folder_, ownName_, folder_, name);
      if (r == 0) {
        undo_ = Undo::removeNew;
        return 0;
      }
      if (r == -EEXIST || !(unsupported(r) || r == -EPERM)) return r;
      return replaceOutright();
    }
    int r = fs.renameAt(folder_, ownName_, folder_, name, kExchange);
    if (r == 0) {
      undo_ = Undo::restoreOld;
      fs.lock(target_.file.get(), false, false);   // no other program may take it for a leftover
      return 0;
    }
    if (!unsupported(r)) return r;
    r = fs.linkAt(folder_, name, folder_, oldName);
    if (r < 0) return unsupported(r) || r == -EPERM || r == -EMLINK ? replaceOutright() : r;
    if ((r = fs.renameAt(folder_, ownName_, folder_, name, kReplace)) < 0) {
      removeOwn(folder_, oldName);
      return r;
    }
    ownName_.swap(oldName);
    undo_ = Undo::restoreOld;
    return 0;
  }

  // File systems without links: the rename is still atomic but cannot be reverted.
  int replaceOutright() {
    const int r = fileSystem().renameAt(folder_, ownName_, folder_, target_.parts.name, kReplace);
    if (r == 0) ownName_.clear();
    return r;
  }

  // The new file is in place. Checks the displaced file and syncs the folder; on an error restores the old file.
  SaveResult settle() {
    auto& fs = fileSystem();
    SaveResult result;
    result.stamp.exists = true;
    result.stamp.contentHash = hash_;
    int r = fs.statFd(file_.get(), &result.stamp.status);
    if (r < 0) return putBack(saveFailed(r));
    if (auto refused = checkDisplaced(result.stamp.status)) return putBack(*refused);
    if ((r = files::syncFolder(folder_)) < 0) return putBack(saveFailed(r));
    if (!ownName_.empty() && (r = removeOwn(folder_, ownName_)) < 0 && undo_ == Undo::restoreOld) return putBack(saveFailed(r));
    ownName_.clear();
    undo_ = Undo::none;
    return result;
  }

  // Another program may have written between the last check and the rename. The times show that, unless they are so recent that two
  // changes may have the same time; then the content is compared.
  std::optional<SaveResult> checkDisplaced(const FileStatus& ours) {
    constexpr std::int64_t kYoungNs = 2'000'000'000;
    if (!compares() || undo_ != Undo::restoreOld) return std::nullopt;
    FileStatus old;
    if (const int r = fileSystem().statAt(folder_, ownName_, false, &old); r < 0) return saveFailed(r);
    if (old.device != seen_.device || old.inode != seen_.inode || old.size != seen_.size || old.mtimeNs != seen_.mtimeNs)
      return saveRefusedAsChanged();
    if (old.mtimeNs < ours.mtimeNs - kYoungNs) return std::nullopt;
    return compareContent();
  }

  SaveResult putBack(SaveResult why) {
    const std::string oldPath = target_.parts.folder + "/" + ownName_;
    const bool hadOld = undo_ == Undo::restoreOld;
    if (undo()) return why;
    if (hadOld) why.error += ". The old text is in " + oldPath;
    why.error += ". The new text was written, but may not survive a power failure";
    return why;
  }

  // Restores the old state; false if that was impossible. Needs no memory.
  bool undo() {
    auto& fs = fileSystem();
    const std::string& name = target_.parts.name;
    int r = -ENOTSUP;
    if (undo_ == Undo::removeNew) r = removeOwn(folder_, name);
    if (undo_ == Undo::restoreOld) {
      r = fs.renameAt(folder_, ownName_, folder_, name, kReplace);
      if (r < 0) r = fs.renameAt(folder_, ownName_, folder_, name, kReplace);
      ownName_.clear();   // it is the target again, or the only remaining copy of the old text
    }
    undo_ = Undo::none;
    files::syncFolder(folder_);
    return r == 0;
  }

  enum class Undo { none, removeNew, restoreOld };
  SaveTarget& target_;
  const SaveSource& source_;
  const int folder_;
  files::Descriptor file_;
  std::string ownName_;   // a file in the folder that must be removed; empty: there is none
  std::uint64_t hash_ = 0;
  FileStatus seen_;   // status of the old file when its content was compared
  Undo undo_ = Undo::none;
};

}   // namespace

std::optional<SaveResult> saveByReplacing(SaveTarget& target, const SaveSource& source) { return Replacing(target, source).run(); }

}   // namespace text
