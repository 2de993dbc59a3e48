#include "text/Journal.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include "text/FileCalls.h"
#include "text/PlantedFaults.h"

namespace text {

namespace {

constexpr std::size_t kMostWaiting = 4096;         // changes; more are replaced by the whole text
constexpr std::size_t kWriteBlock = 256 * 1024;

std::int64_t steadyMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::int64_t wallNs() {
  using namespace std::chrono;
  return duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
}

struct Waiting {
  std::vector<Change::Span> spans;
  Snapshot after;
};

}  // namespace

struct Journal::State {
  // Guarded by the writer's lock: what is to be.
  bool active = false, gone = false;       // gone: the Journal object is
  bool remove = false;                     // the present file goes first
  bool whole = false;                      // write base and about anew, then what waits
  bool aboutChanged = false;
  bool refer = false;                      // the base is what the file of `about` holds
  bool alone = false;                      // but it must not be
  bool durable = false;                    // what was handed over last is on the platter
  JournalAbout about;
  Snapshot base;                           // of a whole writing
  std::vector<Waiting> waiting;
  std::int64_t waitingSince = -1, retryAt = -1;
  std::string failure, name;
  std::function<void()> failed;

  // The writer's own.
  files::Descriptor file;
  journal::Encoder encoder;
  std::int64_t recordBytes = 0, unsyncedSince = -1, lookedAt = 0;
  bool folderUnsynced = false;
  std::optional<FileStamp> referred;       // what the base is, where it is a file
  std::string referredPath;
  Snapshot latest;                         // as of the last record
};

struct JournalWriter::Impl {
  std::string folder;
  Clock clock;
  JournalLimits limits;
  std::mutex mutex;
  std::condition_variable wake, idle;
  std::vector<std::shared_ptr<Journal::State>> journals;
  bool ending = false, hurry = false, working = false;
  std::thread thread;
  files::Descriptor folderFd;              // the writer's own

  using State = Journal::State;
  struct Job {
    bool remove, whole, refer, aboutChanged, alone;
    JournalAbout about;
    Snapshot base;
    std::vector<Waiting> waiting;
  };

  std::int64_t dueAt(const State& s) const {
    std::int64_t due = -1;
    const auto at = [&](std::int64_t time) { due = due < 0 ? time : std::min(due, time); };
    const bool content = s.active && (s.whole || s.aboutChanged || s.alone || !s.waiting.empty());
    if (s.remove || (s.gone && content)) at(0);
    if (content) at(s.waiting.size() >= kJournalWriteEdits ? 0 : s.waitingSince + kJournalWriteMs);
    if (s.unsyncedSince >= 0) at(s.gone ? 0 : s.unsyncedSince + kJournalSyncMs);
    if (s.referred && s.active && !s.gone) at(s.lookedAt + kJournalSyncMs);
    return due < 0 ? due : std::max(due, s.retryAt);
  }

  // ---- on the writer's thread, without the lock

  int openFolder() {
    FileStatus own, there;
    if (folderFd.ok() && fileSystem().statFd(folderFd.get(), &own) == 0 &&
        fileSystem().statAt(FileSystem::kCwd, folder, false, &there) == 0 && own.device == there.device && own.inode == there.inode)
      return 0;   // else it was moved away, or another one is in its place
    folderFd.close();
    if (!makeFolders(folder, 0700).empty()) return -EACCES;
    folderFd = files::open(FileSystem::kCwd, folder, kRead | kDirectory | kNoFollow);
    if (!folderFd.ok()) return folderFd.error();
    FileStatus status;
    if (fileSystem().statFd(folderFd.get(), &status) == 0 && (status.mode & 0777) != 0700)
      if (const int r = fileSystem().changeMode(folderFd.get(), 0700); r < 0) return folderFd.close(), r;
    return 0;
  }

  int removeFile(State& s) {
    s.referred.reset();
    s.unsyncedSince = -1;
    s.recordBytes = 0;
    s.latest = Snapshot();
    if (s.name.empty()) return 0;
    int r = openFolder();
    if (r == 0) r = fileSystem().unlinkAt(folderFd.get(), s.name, false);
    if (r < 0 && r != -ENOENT) return r;
    s.file.close();
    const std::lock_guard guard(mutex);
    s.name.clear();
    return 0;
  }

  class Out {   // records on their way to a file
   public:
    Out(journal::Encoder& encoder, int fd) : encoder_(encoder), fd_(fd) {}
    void add(journal::Kind kind, std::string_view payload) {
      if (error_ < 0) return;
      encoder_.add(&buffer_, kind, payload);
      if (buffer_.size() >= kWriteBlock) flush();
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

  // A file with about and base, under a new name or in place of the present one.
  int writeWhole(State& s, const Job& job, std::int64_t now) {
    if (const int r = openFolder(); r < 0) return r;
    files::Descriptor made;
    std::string name;
    const bool replace = !s.name.empty();
    if (replace) {
      name = s.name + std::string(journal::kAsideSuffix);
      if (const int r = fileSystem().unlinkAt(folderFd.get(), name, false); r < 0 && r != -ENOENT) return r;
      made = files::open(folderFd.get(), name, kRead | kWrite | kCreate | kExclusive | kNoFollow, 0600);
    } else {
      made = files::createUnique(folderFd.get(), "", std::string(journal::kSuffix), 0600, &name);
    }
    if (!made.ok()) return made.error();
    if constexpr (planted(PlantedFault::dropJournalEarly))
      if (replace) fileSystem().unlinkAt(folderFd.get(), s.name, false), files::syncFolder(folderFd.get());
    journal::Encoder encoder;
    int r = fileSystem().lock(made.get(), true, false);
    if (r == 0) r = writeBase(job, encoder, made.get());
    if (r == 0 && replace) r = files::sync(made.get());   // what it replaces may be on the platter already
    if (r == 0 && replace) r = fileSystem().renameAt(folderFd.get(), name, folderFd.get(), s.name, kReplace);
    if (r < 0) {
      fileSystem().unlinkAt(folderFd.get(), name, false);
      return r;
    }
    s.file = std::move(made);
    s.encoder = encoder;
    s.recordBytes = 0;
    s.latest = job.base;
    s.folderUnsynced = true;
    if (s.unsyncedSince < 0) s.unsyncedSince = now;
    s.referred = job.refer ? job.about.stamp : std::nullopt;
    s.referredPath = job.about.path;
    if (!replace) {
      const std::lock_guard guard(mutex);
      s.name = name;
    }
    return 0;
  }

  static int writeBase(const Job& job, journal::Encoder& encoder, int fd) {
    using journal::Kind;
    Out out(encoder, fd);
    out.raw(journal::kMagic);
    JournalAbout about = job.about;
    about.startedNs = wallNs();
    out.add(Kind::about, journal::encodeAbout(about));
    if (job.refer) {
      out.add(Kind::baseFile, journal::encodeNumbers({static_cast<std::uint64_t>(about.stamp->status.size), about.stamp->contentHash}));
    } else {
      const Snapshot& base = job.base;
      out.add(Kind::baseBegin, journal::encodeNumbers({static_cast<std::uint64_t>(base.lineMode())}));
      std::string part;   // the pieces of a text may be tiny
      for (ByteOffset at(0); at < base.size();) {
        const std::string_view chunk = base.chunkAt(at).substr(0, kWriteBlock);
        part += chunk;
        at += static_cast<std::int64_t>(chunk.size());
        if (part.size() < kWriteBlock && at < base.size()) continue;
        out.add(Kind::basePart, part);
        part.clear();
      }
      out.add(Kind::baseEnd, journal::encodeNumbers({static_cast<std::uint64_t>(base.size().value)}));
    }
    return out.flush();
  }

  int writeRecords(State& s, const Job& job, std::int64_t now) {
    if (!job.aboutChanged && job.waiting.empty()) return 0;
    Out out(s.encoder, s.file.get());
    if (job.aboutChanged) {
      JournalAbout about = job.about;
      about.startedNs = wallNs();
      out.add(journal::Kind::about, journal::encodeAbout(about));
    }
    for (const Waiting& change : job.waiting) {
      journal::encodeChange(change.spans, change.after, [&](const std::string& payload) { out.add(journal::Kind::edits, payload); });
      s.latest = change.after;
    }
    if (s.unsyncedSince < 0) s.unsyncedSince = now;
    const int r = out.flush();
    s.recordBytes += out.written();
    return r;
  }

  int syncNow(State& s) {
    if (const int r = files::sync(s.file.get()); r < 0) return r;
    if (s.folderUnsynced) {
      if (const int r = openFolder(); r < 0) return r;
      if (const int r = files::syncFolder(folderFd.get()); r < 0) return r;
    }
    s.folderUnsynced = false;
    s.unsyncedSince = -1;
    return 0;
  }

  bool referredChanged(const State& s) const {
    FileStatus status;
    return fileSystem().statAt(FileSystem::kCwd, s.referredPath, true, &status) < 0 || status != s.referred->status;
  }

  // Somebody removed or moved the file, or the whole folder: nobody would find what is written into it.
  bool wasCleared(const State& s) const {
    FileStatus own, there;
    if (fileSystem().statFd(s.file.get(), &own) < 0) return false;
    const int r = fileSystem().statAt(FileSystem::kCwd, folder + "/" + s.name, false, &there);
    return r == -ENOENT || r == -ENOTDIR || r == -ELOOP || (r == 0 && (there.device != own.device || there.inode != own.inode));
  }

  // Everything due for one journal. 0 or -errno; then the text is written whole at the next try.
  int serve(State& s, Job& job, std::int64_t now, bool all) {
    if (job.remove)
      if (const int r = removeFile(s); r < 0) return r;
    if (job.whole) {
      if (job.alone || (!job.remove && !s.name.empty())) job.refer = false;
      if (const int r = writeWhole(s, job, now); r < 0) return r;
      job.aboutChanged = false;
    }
    if (!s.file.ok()) return 0;
    s.lookedAt = now;
    if (!job.whole && wasCleared(s)) {
      s.file.close();
      folderFd.close();
      {
        const std::lock_guard guard(mutex);
        s.name.clear();
      }
      const Job again{false, true, false, false, true, job.about, s.latest, {}};
      if (const int r = writeWhole(s, again, now); r < 0) return r;
    }
    if (const int r = writeRecords(s, job, now); r < 0) return r;
    const bool outgrown = s.recordBytes > std::max(limits.records, s.latest.size().value) && !s.referred;
    if (outgrown || (s.referred && (job.alone || referredChanged(s)))) {
      Job again{false, true, false, false, true, job.about, s.latest, {}};
      if (const int r = writeWhole(s, again, now); r < 0) return r;
    }
    if (s.unsyncedSince >= 0 && (all || now >= s.unsyncedSince + kJournalSyncMs)) return syncNow(s);
    return 0;
  }

  // With the lock held, which is let go of meanwhile.
  void serveDue(std::unique_lock<std::mutex>& lock, bool all) {
    const std::int64_t now = clock();
    const std::vector<std::shared_ptr<State>> present = journals;
    for (const auto& s : present) {
      const std::int64_t due = dueAt(*s);
      if (due >= 0 && (all || due <= now)) serveOne(lock, *s, now, all);
    }
    // Journals whose object has gone are kept until nothing is left to do for them, or it was tried a last time.
    std::erase_if(journals, [&](const auto& s) { return s->gone && (dueAt(*s) < 0 || !s->failure.empty()); });
  }

  void serveOne(std::unique_lock<std::mutex>& lock, State& s, std::int64_t now, bool all) {
    Job job{std::exchange(s.remove, false), false, s.refer, false, false, s.about, Snapshot(), {}};
    s.durable = false;
    if (s.active) {
      job.alone = std::exchange(s.alone, false);
      job.whole = std::exchange(s.whole, false);
      job.aboutChanged = std::exchange(s.aboutChanged, false);
      job.base = job.whole ? std::exchange(s.base, Snapshot()) : Snapshot();
      job.waiting.swap(s.waiting);
    }
    s.waitingSince = -1;
    const Snapshot latest = !job.waiting.empty() ? job.waiting.back().after : job.whole ? job.base : s.latest;
    const bool removing = job.remove, last = s.gone;
    lock.unlock();
    int error = 0;
    try {
      error = serve(s, job, now, all || last);
    } catch (const std::bad_alloc&) {
      error = -ENOMEM;
    }
    if (error < 0) folderFd.close();   // it may be another one when it is tried again
    job = {};
    lock.lock();
    const std::string why = error < 0 ? errorText(error) : std::string();
    if (error < 0) {
      s.retryAt = now + kJournalRetryMs;
      s.unsyncedSince = -1;
      if (removing && !s.name.empty()) s.remove = true;
      if (s.active && !s.whole) {   // else somebody began anew meanwhile
        s.whole = true;
        s.refer = false;
        s.base = latest;
        if (s.waitingSince < 0) s.waitingSince = now;
      }
    } else {
      s.retryAt = -1;
      s.durable = s.unsyncedSince < 0;
    }
    if (why == s.failure) return;
    s.failure = why;
    if (!s.failed) return;
    const auto tell = s.failed;
    lock.unlock();
    tell();
    lock.lock();
  }

  void run() {
    std::unique_lock lock(mutex);
    for (;;) {
      const bool last = ending, all = hurry || last;
      hurry = false;
      working = true;
      serveDue(lock, all);
      working = false;
      if (all) idle.notify_all();
      if (last) return;
      if (hurry || ending) continue;
      std::int64_t next = -1;
      for (const auto& s : journals)
        if (const std::int64_t due = dueAt(*s); due >= 0) next = next < 0 ? due : std::min(next, due);
      if (next < 0) {
        wake.wait(lock);
      } else if (const std::int64_t now = clock(); next > now) {
        wake.wait_for(lock, std::chrono::milliseconds(next - now));
      }
    }
  }

  bool failing() const {
    return std::any_of(journals.begin(), journals.end(), [](const auto& s) { return !s->failure.empty(); });
  }
};

JournalWriter::JournalWriter(std::string folder) : JournalWriter(std::move(folder), steadyMs) {
  impl_->thread = std::thread([this] { impl_->run(); });
}

JournalWriter::JournalWriter(std::string folder, Clock clock) : impl_(new Impl) {
  impl_->folder = std::move(folder);
  impl_->clock = std::move(clock);
}

JournalWriter::~JournalWriter() {
  std::unique_lock lock(impl_->mutex);
  impl_->ending = true;
  if (impl_->thread.joinable()) {
    impl_->wake.notify_all();
    lock.unlock();
    impl_->thread.join();
  } else {
    impl_->serveDue(lock, true);
  }
}

const std::string& JournalWriter::folder() const { return impl_->folder; }

void JournalWriter::setLimits(const JournalLimits& limits) {
  const std::lock_guard guard(impl_->mutex);
  impl_->limits = limits;
}

std::int64_t JournalWriter::work() {
  std::unique_lock lock(impl_->mutex);
  impl_->serveDue(lock, false);
  std::int64_t next = -1;
  for (const auto& s : impl_->journals)
    if (const std::int64_t due = impl_->dueAt(*s); due >= 0) next = next < 0 ? due : std::min(next, due);
  return next;
}

bool JournalWriter::flush(std::int64_t patienceMs) {
  std::unique_lock lock(impl_->mutex);
  if (!impl_->thread.joinable()) {
    impl_->serveDue(lock, true);
    return !impl_->failing();
  }
  impl_->hurry = true;
  impl_->wake.notify_all();
  const bool done = impl_->idle.wait_for(lock, std::chrono::milliseconds(patienceMs), [&] { return !impl_->hurry && !impl_->working; });
  return done && !impl_->failing();
}

// ---- one journal

Journal::Journal(JournalWriter& writer, Document& document, std::function<void()> failed)
    : writer_(writer), document_(document), state_(std::make_shared<State>()), base_(document.snapshot()) {
  state_->failed = std::move(failed);
  {
    const std::lock_guard guard(writer_.impl_->mutex);
    writer_.impl_->journals.push_back(state_);
  }
  subscription_ = document_.subscribe([this](const Change& change) { changed(change); });
}

Journal::~Journal() {
  subscription_.reset();
  const std::lock_guard guard(writer_.impl_->mutex);
  state_->gone = true;
  state_->failed = {};
  writer_.impl_->wake.notify_all();
}

void Journal::changed(const Change& change) {
  if (change.revision <= known_) return;
  JournalWriter::Impl& writer = *writer_.impl_;
  State& s = *state_;
  Waiting waiting;
  if (!change.reset) waiting = {change.spans, document_.snapshot()};
  bool wake = false;
  {
    const std::lock_guard guard(writer.mutex);
    const bool first = !s.active;
    if (first && change.reset) {   // a text was loaded; it is no work of the person's
      base_ = document_.snapshot();
      s.refer = false;
      return;
    }
    if (first) {
      s.active = s.whole = true;
      s.base = base_;
      s.refer = s.about.stamp && s.about.stamp->exists && !s.about.path.empty() && base_.size().value > writer.limits.largeText && s.refer;
      base_ = Snapshot();
    }
    wake = s.waitingSince < 0;
    if (wake) s.waitingSince = writer.clock();
    // A text that came anew, too many changes for a slow disk, or one that will be tried again whole.
    if (change.reset || s.waiting.size() >= kMostWaiting || (s.whole && !s.failure.empty())) {
      s.waiting.clear();
      s.whole = true;
      s.refer = false;
      s.base = document_.snapshot();
    } else {
      s.waiting.push_back(std::move(waiting));
      wake = wake || s.waiting.size() == kJournalWriteEdits;
    }
  }
  if (wake) writer.wake.notify_one();
}

void Journal::begin() {
  JournalWriter::Impl& writer = *writer_.impl_;
  const std::lock_guard guard(writer.mutex);
  State& s = *state_;
  if (s.active) return;
  s.active = s.whole = true;
  s.refer = false;
  s.base = document_.snapshot();
  s.waitingSince = writer.clock();
  base_ = Snapshot();
  known_ = document_.revision();
  writer.wake.notify_one();
}

void Journal::standAlone() {
  begin();
  JournalWriter::Impl& writer = *writer_.impl_;
  const std::lock_guard guard(writer.mutex);
  state_->alone = true;
  writer.wake.notify_one();
}

void Journal::setAbout(const JournalAbout& about) {
  JournalWriter::Impl& writer = *writer_.impl_;
  const std::lock_guard guard(writer.mutex);
  State& s = *state_;
  if (s.about == about) return;
  s.about = about;
  if (!s.active) return;
  s.aboutChanged = true;
  if (s.waitingSince < 0) s.waitingSince = writer.clock();
  writer.wake.notify_one();
}

void Journal::discard() {
  JournalWriter::Impl& writer = *writer_.impl_;
  const std::lock_guard guard(writer.mutex);
  State& s = *state_;
  base_ = document_.snapshot();
  known_ = document_.revision();
  s.refer = false;
  if (!s.active) return;
  s.active = s.whole = s.aboutChanged = s.alone = false;
  s.remove = true;
  s.waiting.clear();
  s.waitingSince = s.retryAt = -1;
  s.base = Snapshot();
  writer.wake.notify_one();
}

void Journal::saved(const JournalAbout& about) {
  discard();
  const std::lock_guard guard(writer_.impl_->mutex);
  state_->about = about;
  state_->refer = true;
}

bool Journal::active() const {
  const std::lock_guard guard(writer_.impl_->mutex);
  return state_->active;
}

bool Journal::durable() const {
  const std::lock_guard guard(writer_.impl_->mutex);
  const State& s = *state_;
  return s.active && s.durable && !s.whole && !s.aboutChanged && !s.alone && s.waiting.empty();
}

std::string Journal::failure() const {
  const std::lock_guard guard(writer_.impl_->mutex);
  return state_->failure;
}

std::string Journal::fileName() const {
  const std::lock_guard guard(writer_.impl_->mutex);
  return state_->name;
}

}  // namespace text
