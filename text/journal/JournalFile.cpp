#include "text/journal/JournalFile.h"

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "text/file/PlantedFaults.h"

namespace text {

namespace {

constexpr std::size_t kWriteBlock = 256 * 1024;

std::int64_t wallNs() {
  using namespace std::chrono;
  return duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
}

class Out {   // collects records for a file
 public:
  Out(journal::Encoder& encoder, int fd) : encoder_(encoder), fd_(fd) {}
  void add(journal::Kind kind, std::string_view payload) {
    if (error_ < 0) return;
    encoder_.add(&buffer_, kind, payload);
    if (buffer_.size() >= kWriteBlock) flush();
  }
  void add(JournalAbout about) {
    about.startedNs = wallNs();
    add(journal::Kind::about, journal::encodeAbout(about));
  }
  void add(const std::vector<JournalFile::Record>& records) {
    for (const auto& record : records)
      journal::encodeChange(record.spans, record.after, [&](const std::string& payload) { add(journal::Kind::edits, payload); });
  }
  void raw(std::string_view bytes) { buffer_ += bytes; }
  int flush() {
    if (error_ == 0 && !buffer_.empty()) {
      error_ = files::writeAll(fd_, buffer_);
      written_ += static_cast<std::int64_t>(buffer_.size());
      buffer_.clear();
    }
    return error_;
  }
  std::int64_t written() const { return written_; }

 private:
  journal::Encoder& encoder_;
  int fd_;
  std::string buffer_;
  std::int64_t written_ = 0;
  int error_ = 0;
};

int writeBase(const JournalFile::Base& base, journal::Encoder& encoder, int fd) {
  using journal::Kind;
  Out out(encoder, fd);
  out.raw(journal::kMagic);
  out.add(base.about);
  const Snapshot& text = base.text;
  if (base.refer) {
    const FileStamp& stamp = *base.about.stamp;
    out.add(Kind::baseFile, journal::encodeNumbers({static_cast<std::uint64_t>(stamp.status.size), stamp.contentHash}));
    return out.flush();
  }
  out.add(Kind::baseBegin, journal::encodeNumbers({static_cast<std::uint64_t>(text.lineMode())}));
  std::string part;   // the pieces of a text may be very small
  for (ByteOffset at(0); at < text.size();) {
    const std::string_view chunk = text.chunkAt(at).substr(0, kWriteBlock);
    part += chunk;
    at += static_cast<std::int64_t>(chunk.size());
    if (part.size() < kWriteBlock && at < text.size()) continue;
    out.add(Kind::basePart, part);
    part.clear();
  }
  out.add(Kind::baseEnd, journal::encodeNumbers({static_cast<std::uint64_t>(text.size().value)}));
  return out.flush();
}

}   // namespace

int JournalFolder::open() {
  FileStatus own, there;
  if (handle_ && fileSystem().statFd(fd(), &own) == 0 && fileSystem().statAt(FileSystem::kCwd, path_, false, &there) == 0 &&
      own.device == there.device && own.inode == there.inode)
    return 0;   // else the file was moved away, or replaced
  close();
  if (!makeFolders(path_, 0700).empty()) return -EACCES;
  auto opened = std::make_shared<const files::Descriptor>(files::open(FileSystem::kCwd, path_, kRead | kDirectory | kNoFollow));
  if (!opened->ok()) return opened->error();
  FileStatus status;
  if (fileSystem().statFd(opened->get(), &status) == 0 && (status.mode & 0777) != 0700)
    if (const int r = fileSystem().changeMode(opened->get(), 0700); r < 0) return r;
  handle_ = std::move(opened);
  return 0;
}

bool JournalFile::referredChanged() const {
  FileStatus status;
  return fileSystem().statAt(FileSystem::kCwd, referredPath_, true, &status) < 0 || status != referred_->status;
}

bool JournalFile::outgrown(std::int64_t most) const {
  return !referred_ && !replacement_ && recordBytes_ > std::max(most, latest_.size().value);
}

bool JournalFile::wasCleared() const {
  FileStatus own, there;
  if (fileSystem().statFd(file_->get(), &own) < 0) return false;
  const int r = fileSystem().statAt(FileSystem::kCwd, folder_.path() + "/" + name_, false, &there);
  return r == -ENOENT || r == -ENOTDIR || r == -ELOOP || (r == 0 && (there.device != own.device || there.inode != own.inode));
}

int JournalFile::begin(const Base& base, std::int64_t now) {
  giveUpReplacement();
  file_.reset();
  name_.clear();
  unsyncedSince_ = syncingSince_ = -1;
  if (const int r = folder_.open(); r < 0) return r;
  Replacement made;
  std::string name;
  made.file =
      std::make_shared<files::Descriptor>(files::createUnique(folder_.fd(), "", std::string(journal::kSuffix), 0600, &name));
  if (!made.file->ok()) return made.file->error();
  made.encoder = std::make_shared<journal::Encoder>();
  int r = fileSystem().lock(made.file->get(), true, false);
  if (r == 0) r = writeBase(base, *made.encoder, made.file->get());
  if (r < 0) {
    fileSystem().unlinkAt(folder_.fd(), name, false);
    return r;
  }
  name_ = name;
  made.base = base;
  made.begun = now;
  latest_ = base.text;
  takeOver(made);
  return 0;
}

int JournalFile::replace(const Base& base, bool goesOn, std::int64_t now) {
  giveUpReplacement();
  if (const int r = folder_.open(); r < 0) return r;
  if (const int r = fileSystem().unlinkAt(folder_.fd(), asideName(), false); r < 0 && r != -ENOENT) return r;
  const auto made = std::make_shared<files::Descriptor>(
      files::open(folder_.fd(), asideName(), kRead | kWrite | kCreate | kExclusive | kNoFollow, 0600));
  if (!made->ok()) return made->error();
  if constexpr (planted(PlantedFault::dropJournalEarly))
    fileSystem().unlinkAt(folder_.fd(), name_, false), files::syncFolder(folder_.fd());
  if (const int r = fileSystem().lock(made->get(), true, false); r < 0) {
    fileSystem().unlinkAt(folder_.fd(), asideName(), false);
    return r;
  }
  replacement_ = std::make_unique<Replacement>();
  replacement_->file = made;
  replacement_->encoder = std::make_shared<journal::Encoder>();
  replacement_->base = base;
  replacement_->base.refer = false;
  replacement_->begun = now;
  latest_ = base.text;
  ended_ = ended_ || !goesOn;
  return 0;
}

int JournalFile::append(const JournalAbout* about, const std::vector<Record>& records, std::int64_t now) {
  if (!about && records.empty()) return 0;
  if (!records.empty()) latest_ = records.back().after;
  if (replacement_) {
    if (about) replacement_->about = *about;
    replacement_->records.insert(replacement_->records.end(), records.begin(), records.end());
  }
  if (ended_) return 0;
  Out out(encoder_, file_->get());
  if (about) out.add(*about);
  out.add(records);
  if (unsyncedSince_ < 0) unsyncedSince_ = now;
  const int r = out.flush();
  recordBytes_ += out.written();
  ended_ = r < 0;
  return r;
}

int JournalFile::remove() {
  giveUpReplacement();
  referred_.reset();
  unsyncedSince_ = syncingSince_ = -1;
  recordBytes_ = 0;
  latest_ = Snapshot();
  if (name_.empty()) return 0;
  int r = folder_.open();
  if (r == 0) r = fileSystem().unlinkAt(folder_.fd(), name_, false);
  if (r < 0 && r != -ENOENT) return r;
  file_.reset();
  name_.clear();
  return 0;
}

void JournalFile::giveUpReplacement() {
  if (!replacement_) return;
  if (folder_.open() == 0) fileSystem().unlinkAt(folder_.fd(), asideName(), false);
  replacement_.reset();
}

std::vector<JournalFile::Slow> JournalFile::slowWork(bool sync) {
  std::vector<Slow> all;
  if (replacement_ && replacement_->wanted) {
    replacement_->wanted = false;
    std::function<int()> work;
    if (replacement_->whole) {
      work = [file = replacement_->file] { return files::sync(file->get()); };
    } else {
      work = [file = replacement_->file, encoder = replacement_->encoder, base = replacement_->base] {
        const int r = writeBase(base, *encoder, file->get());
        return r < 0 ? r : files::sync(file->get());   // the file that it replaces may be on disk already
      };
    }
    all.push_back({std::move(work), replacement_->file});
  }
  if (sync && unsyncedSince() >= 0) {
    syncingSince_ = std::exchange(unsyncedSince_, -1);
    all.push_back({[file = file_, folder = std::exchange(folderUnsynced_, false) ? folder_.handle() : nullptr] {
                     const int r = files::sync(file->get());
                     return r < 0 || !folder ? r : files::syncFolder(folder->get());
                   },
                   file_});
  }
  return all;
}

int JournalFile::finished(const Slow& slow, int result) {
  if (replacement_ && slow.on == replacement_->file) {
    if (result == 0) result = putInPlace();
    if (result < 0) giveUpReplacement();
    return result;
  }
  if (slow.on != file_) return 0;
  syncingSince_ = -1;
  ended_ = ended_ || result < 0;
  return result;
}

// Appends the changes made while the base was written. Some of them may be on disk in the current file, so the new file must also
// be synced before it replaces that one.
int JournalFile::putInPlace() {
  Replacement& made = *replacement_;
  const bool synced = std::exchange(made.whole, true);
  const bool more = made.about || !made.records.empty();
  Out out(*made.encoder, made.file->get());
  if (made.about) out.add(*made.about);
  out.add(made.records);
  if (const int r = out.flush(); r < 0) return r;
  made.recordBytes += out.written();
  made.about.reset();
  made.records.clear();
  if (more && !synced) {
    made.wanted = true;
    return 0;
  }
  if (const int r = folder_.open(); r < 0) return r;
  if (const int r = fileSystem().renameAt(folder_.fd(), asideName(), folder_.fd(), name_, kReplace); r < 0) return r;
  Replacement done = std::move(made);
  replacement_.reset();
  takeOver(done);
  return 0;
}

void JournalFile::takeOver(Replacement& made) {
  file_ = std::move(made.file);
  encoder_ = *made.encoder;
  recordBytes_ = made.recordBytes;
  // After a power cut the folder may still name the previous file, which is not synced any more.
  const std::int64_t before = syncing() ? syncingSince_ : unsyncedSince_;
  unsyncedSince_ = before < 0 ? made.begun : std::min(before, made.begun);
  syncingSince_ = -1;
  ended_ = false;
  folderUnsynced_ = true;
  referred_ = made.base.refer ? made.base.about.stamp : std::nullopt;
  referredPath_ = made.base.about.path;
}

}   // namespace text
