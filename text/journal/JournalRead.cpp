#include "text/journal/JournalRead.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <new>

#include "text/file/Leftovers.h"
#include "text/store/CommonEnds.h"

namespace text {
namespace {

constexpr char kDamaged[] = "The journal is damaged at its beginning";

// Restores a text from records.
class Replay {
 public:
  explicit Replay(const MayRead& mayRead) : mayRead_(mayRead) {}
  RecoveredText run(int fd) {
    FileStatus status;
    if (const int r = fileSystem().statFd(fd, &status); r < 0) return fail(errorText(r));
    result_.size = status.size;
    if (const std::int64_t r = fileSystem().seek(fd, 0); r < 0) return fail(errorText(static_cast<int>(r)));
    int readError = 0;
    journal::Decoder decoder([&](char* to, std::size_t length) {
      const std::int64_t got = files::readSome(fd, to, length);
      if (got < 0) readError = static_cast<int>(got);
      return got;
    });
    if (!decoder.magic()) return fail(readError ? errorText(readError) : kDamaged);
    document_.setUndoLimit(0, 0);
    journal::Record record;
    bool meaningful = true;
    while (meaningful && decoder.next(&record)) {
      meaningful = take(record);
      if (meaningful) result_.read = decoder.good();
    }
    result_.whole = meaningful && decoder.clean() && readError == 0 && result_.baseWhole && !open_;
    if (!result_.error.empty()) return std::move(result_);
    if (!aboutSeen_) return fail(readError ? errorText(readError) : kDamaged);
    if (!result_.baseWhole) {
      if (builder_) result_.text = builder_->finish();
      if (result_.text.size().value == 0) return fail("The journal ends before the text");
    }
    return std::move(result_);
  }

 private:
  RecoveredText fail(std::string error) {
    result_.error = std::move(error);
    result_.text = Snapshot();
    result_.began.clear();
    return std::move(result_);
  }

  // False: the record makes no sense here.
  bool take(const journal::Record& record) {
    using journal::Kind;
    if (record.kind == Kind::about) {
      aboutSeen_ = true;
      JournalAbout about;
      if (!journal::decodeAbout(record.payload, &about)) return false;
      if (about.caret >= 0) result_.caret = about.caret;
      result_.about = std::move(about);
      return true;
    }
    if (!aboutSeen_) return false;
    switch (record.kind) {
      case Kind::baseFile: return !result_.baseWhole && !builder_ && baseFromFile(record.payload);
      case Kind::baseBegin: return !result_.baseWhole && !builder_ && baseBegin(record.payload);
      case Kind::basePart:
        if (!builder_) return false;
        baseSize_ += record.payload.size();
        builder_->append(std::string(record.payload));
        return true;
      case Kind::baseEnd: return builder_ && baseEnd(record.payload);
      case Kind::edits: return result_.baseWhole && edits(record.payload);
      case Kind::about: break;
    }
    return false;
  }

  bool baseBegin(std::string_view payload) {
    std::uint64_t mode = 0;
    if (!journal::decodeNumbers(payload, {&mode})) return false;
    const auto read = static_cast<LineMode>(mode);
    if (mode != static_cast<std::uint64_t>(read) || (read != LineMode::lf && read != LineMode::cr)) return false;
    builder_.emplace(read);
    return true;
  }

  bool baseEnd(std::string_view payload) {
    std::uint64_t size = 0;
    if (!journal::decodeNumbers(payload, {&size}) || size != baseSize_) return false;
    begin(builder_->finish());
    builder_.reset();
    return true;
  }

  bool baseFromFile(std::string_view payload) {
    std::uint64_t size = 0, hash = 0;
    if (!journal::decodeNumbers(payload, {&size, &hash})) return false;
    LoadOptions options;
    options.format = result_.about.format;
    if (mayRead_ && !mayRead_(result_.about.path)) {
      result_.error = "The disk of the file does not answer, and the journal holds only what was changed in it";
      return false;
    }
    LoadedFile file = loadFile(result_.about.path, options);
    if (!file.error.empty()) {
      result_.error = file.error;
      return false;
    }
    if (file.stamp.contentHash != hash || static_cast<std::uint64_t>(file.stamp.status.size) != size) {
      result_.error = "The file has been changed by others, and the journal holds only what was changed in it";
      return false;
    }
    begin(std::move(file.text));
    return true;
  }

  void begin(Snapshot base) {
    document_.reset(std::move(base));
    result_.text = document_.snapshot();
    result_.began = {result_.text};
    result_.baseWhole = true;
  }

  bool edits(std::string_view payload) {
    bool last = false;
    open_ = true;
    if (!journal::applyEdits(payload, &document_, &last)) return false;
    if (!last) return true;
    open_ = false;
    ++result_.changes;
    result_.caret = changedAt_;
    result_.text = document_.snapshot();   // a change is restored whole or not at all
    if (result_.changes == 1) result_.began.push_back(result_.text);
    return true;
  }

  const MayRead& mayRead_;
  RecoveredText result_;
  std::optional<SnapshotBuilder> builder_;   // while the base is read
  Document document_;
  std::uint64_t baseSize_ = 0;
  std::int64_t changedAt_ = -1;
  std::shared_ptr<void> watch_ = document_.subscribe([this](const Change& change) {
    if (!change.spans.empty()) changedAt_ = (change.spans.back().begin + change.spans.back().inserted).value;
  });
  bool aboutSeen_ = false, open_ = false;
};

}   // namespace

RecoveredText readJournal(int fd, const MayRead& mayRead) {
  try {
    return Replay(mayRead).run(fd);
  } catch (const std::bad_alloc&) {
    RecoveredText result;
    result.error = "Out of memory";
    return result;
  }
}

bool fileHolds(const JournalAbout& about, const Snapshot& text) {
  const bool plain = about.format == FileFormat();   // then the file and the text have the same number of bytes
  if (plain && stampOf(about.path, false).status.size != text.size().value) return false;
  LoadOptions options;
  options.format = about.format;
  const LoadedFile disk = loadFile(about.path, options);
  if (!disk.error.empty() || !sameText(disk.text, text)) return false;
  const files::Descriptor file = files::open(FileSystem::kCwd, about.path, kRead | kNonBlock);
  if (!file.ok() || files::sync(file.get()) < 0) return false;
  // Its name must last as well: others may just have renamed it.
  const std::string in = files::splitPath(savedFile(about.path)).folder;
  const files::Descriptor folder = files::open(FileSystem::kCwd, in, kRead | kDirectory);
  return folder.ok() && files::syncFolder(folder.get()) == 0;
}

std::optional<LeftText> LeftText::claim(const std::string& folder, const std::string& name) {
  auto left = own(folder, name, kRead | kWrite);
  FileStatus status;
  if (!left || fileSystem().statFd(left->file_.get(), &status) < 0 || status.size == 0) return {};
  return left;
}

std::optional<LeftText> LeftText::own(const std::string& folder, const std::string& name, unsigned flags) {
  LeftText left;
  left.folder_ = folder;
  left.name_ = name;
  left.file_ = files::open(FileSystem::kCwd, folder + "/" + name, flags | kNoFollow | kNonBlock);
  FileStatus own, there;
  if (!left.file_.ok() || fileSystem().statFd(left.file_.get(), &own) < 0 || !own.isRegular()) return {};
  if (fileSystem().lock(left.file_.get(), true, false) < 0) return {};
  // Before it released the lock, the owner may have replaced or removed the file.
  if (fileSystem().statAt(FileSystem::kCwd, folder + "/" + name, false, &there) < 0 || there.inode != own.inode) return {};
  left.changedNs_ = own.mtimeNs;
  return left;
}

int LeftText::remove() {
  const files::Descriptor folder = files::open(FileSystem::kCwd, folder_, kRead | kDirectory);
  if (!folder.ok()) return folder.error();
  if (const int r = fileSystem().unlinkAt(folder.get(), name_, false); r < 0 && r != -ENOENT) return r;
  return files::syncFolder(folder.get());
}

std::optional<LeftText> LeftText::claimCopy(const std::string& folder, const std::string& name, const std::string& path) {
  auto left = own(folder, name, kRead);   // the descriptor has the file's permissions, which may be read-only
  FileStatus copy, target;
  if (!left || fileSystem().statFd(left->file_.get(), &copy) < 0) return {};
  const bool known = fileSystem().statAt(FileSystem::kCwd, path, true, &target) == 0;
  if (copy.owner != currentUser() && (!known || target.owner != copy.owner)) return {};
  left->copyOf_ = path;
  return left;
}

RecoveredText LeftText::recover(const MayRead& mayRead) const {
  if (!copyOf_) return readJournal(file_.get(), mayRead);
  LoadedFile copy = loadFile(folder_ + "/" + name_);
  RecoveredText result;
  result.error = copy.error;
  const files::PathParts parts = files::splitPath(*copyOf_);
  if (parts.folder != ".") {
    result.about.path = *copyOf_;
    result.about.stamp = stampOf(*copyOf_, true);
  }
  result.about.title = parts.name;
  result.about.format = copy.format;
  result.text = std::move(copy.text);
  result.whole = result.baseWhole = copy.error.empty();
  result.read = result.size = copy.stamp.status.size;
  return result;
}

std::vector<LeftText> leftJournals(const std::string& folder) {
  std::vector<std::string> names;
  std::vector<LeftText> all;
  if (fileSystem().listDir(folder, &names) < 0) return all;
  for (const std::string& name : names) {
    const bool aside = name.ends_with(journal::kAsideSuffix);
    if (!aside && !name.ends_with(journal::kSuffix)) continue;
    auto left = LeftText::claim(folder, name);
    if (!left) continue;
    if (aside) {
      const std::string whole = name.substr(0, name.size() - journal::kAsideSuffix.size());
      FileStatus status;
      if (fileSystem().statAt(FileSystem::kCwd, folder + "/" + whole, false, &status) == 0) {
        left->remove();
        continue;
      }
    }
    all.push_back(std::move(*left));
  }
  std::sort(all.begin(), all.end(), [](const LeftText& a, const LeftText& b) { return a.changedNs() > b.changedNs(); });
  return all;
}

std::vector<LeftText> leftCopies(const std::vector<std::string>& paths) {
  std::map<std::string, std::vector<std::pair<std::string, std::string>>> byFolder;   // for each folder: name in it, path
  for (const std::string& path : paths) {
    const files::PathParts parts = files::splitPath(savedFile(path));
    byFolder[parts.folder].emplace_back(parts.name, path);
  }
  std::vector<LeftText> all;
  for (const auto& [folder, known] : byFolder)
    for (const CopyName& copy : lookForLeftovers(folder, false)) {
      const auto about = std::find_if(known.begin(), known.end(), [&](const auto& file) { return isCopyOf(copy, file.first); });
      if (about == known.end()) continue;
      if (auto left = LeftText::claimCopy(folder, copy.name, about->second)) all.push_back(std::move(*left));
    }
  return all;
}

std::vector<LeftText> leftCopiesElsewhere(const std::string& folder) {
  std::vector<LeftText> all;
  for (const CopyName& copy : lookForLeftovers(folder, true))
    if (auto left = LeftText::claimCopy(folder, copy.name, copy.path)) all.push_back(std::move(*left));
  return all;
}

}   // namespace text
