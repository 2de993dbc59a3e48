#include "text/journal/Journal.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include "text/journal/JournalFile.h"

namespace text {

namespace {

constexpr std::size_t kMostWaiting = 4096;   // changes; more are replaced by writing the whole text

std::int64_t steadyMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// Runs tasks one after another on its own thread.
class SlowThread {
 public:
  SlowThread() : thread_([this] { run(); }) {}
  ~SlowThread() {   // runs the queued tasks first
    post({});
    thread_.join();
  }
  void post(std::function<void()> work) {
    const std::lock_guard guard(mutex_);
    works_.push_back(std::move(work));
    wake_.notify_one();
  }

 private:
  void run() {
    for (;;) {
      std::unique_lock lock(mutex_);
      wake_.wait(lock, [&] { return !works_.empty(); });
      const std::function<void()> work = std::move(works_.front());
      works_.pop_front();
      lock.unlock();
      if (!work) return;
      work();
    }
  }
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> works_;
  std::thread thread_;   // last member: it uses the others
};

}   // namespace

struct Journal::State {
  explicit State(JournalFolder& folder) : file(folder) {}

  // Guarded by the writer's lock: the wanted state.
  bool active = false, gone = false;   // gone: the Journal object was destroyed
  bool remove = false;                 // the current file is removed first
  bool whole = false;                  // write base and about again, then the queued changes
  bool aboutChanged = false;
  bool refer = false;     // the base is the file of `about`
  bool alone = false;     // but it must not be
  bool durable = false;   // everything handed over so far is on disk
  JournalAbout about;
  Snapshot base;   // of a whole writing
  std::vector<JournalFile::Record> waiting;
  std::int64_t waitingSince = -1, retryAt = -1;
  std::string failure, name;
  std::function<void()> failed;

  // Used by the writer only.
  JournalFile file;
  std::int64_t lookedAt = 0;

  bool hasContent() const { return active && (whole || aboutChanged || alone || !waiting.empty()); }
  bool toServe() const { return remove || hasContent() || file.unsyncedSince() >= 0; }
};

struct JournalWriter::Impl {
  JournalFolder folder;
  Clock clock;
  Later later;
  JournalLimits limits;
  std::mutex mutex;
  std::condition_variable wake, idle;
  std::vector<std::shared_ptr<Journal::State>> journals;
  bool ending = false, hurry = false, working = false;
  std::thread thread;

  using State = Journal::State;
  struct Finished {
    std::shared_ptr<State> journal;
    JournalFile::Slow slow;
    int result;
  };
  std::vector<Finished> finished;   // guarded by the lock

  struct Job {
    bool remove = false, whole = false, refer = false, aboutChanged = false, alone = false;
    JournalAbout about;
    Snapshot base;
    std::vector<JournalFile::Record> waiting;
  };

  Impl(std::string path, Clock time, Later how) : folder(std::move(path)), clock(std::move(time)), later(std::move(how)) {}

  std::int64_t dueAt(const State& s) const {
    std::int64_t due = -1;
    const auto at = [&](std::int64_t time) { due = due < 0 ? time : std::min(due, time); };
    const bool content = s.hasContent();
    if (s.remove || (s.gone && content)) at(0);
    if (content) at(s.waiting.size() >= kJournalWriteEdits ? 0 : s.waitingSince + kJournalWriteMs);
    if (s.file.unsyncedSince() >= 0) at(s.gone ? 0 : s.file.unsyncedSince() + kJournalSyncMs);
    if (s.file.refers() && s.active && !s.gone) at(s.lookedAt + kJournalSyncMs);
    return due < 0 ? due : std::max(due, s.retryAt);
  }

  // The time of the next task; -1: none.
  std::int64_t next() const {
    std::int64_t next = -1;
    for (const auto& s : journals)
      if (const std::int64_t due = dueAt(*s); due >= 0) next = next < 0 ? due : std::min(next, due);
    return next;
  }

  // ---- on the writer's thread, without the lock

  // Does everything due for one journal. 0 or -errno; after an error the next try writes the whole text.
  int serve(State& s, Job& job, std::int64_t now) {
    JournalFile& file = s.file;
    if (job.remove)
      if (const int r = file.remove(); r < 0) return r;
    if (job.whole) {
      const bool there = !file.name().empty();
      const JournalFile::Base base{job.about, job.base, job.refer && !job.alone && !there};
      if (const int r = there ? file.replace(base, false, now) : file.begin(base, now); r < 0) return r;
      job.aboutChanged = false;
    }
    if (!file.isThere()) return 0;
    s.lookedAt = now;
    if (!job.whole && file.wasCleared())
      if (const int r = file.begin({job.about, file.latest()}, now); r < 0) return r;
    if (const int r = file.append(job.aboutChanged ? &job.about : nullptr, job.waiting, now); r < 0) return r;
    if (file.outgrown(limits.records) || (file.refers() && !file.replacing() && (job.alone || file.referredChanged())))
      return file.replace({job.about, file.latest()}, true, now);
    return 0;
  }

  void begin(const std::shared_ptr<State>& journal, JournalFile::Slow slow) {
    later([this, journal = journal, slow = std::move(slow)]() mutable {
      int result = 0;
      try {
        result = slow.work();
      } catch (const std::bad_alloc&) { result = -ENOMEM; }
      slow.work = {};   // and with it the text that it held
      const std::lock_guard guard(mutex);
      finished.push_back({std::move(journal), std::move(slow), result});
      wake.notify_one();
    });
  }

  // ---- with the lock held, which is let go of meanwhile

  // Does one step for a journal and hands out the slow work that results from it. 0 or -errno.
  template <class Step>
  int attempt(std::unique_lock<std::mutex>& lock, const std::shared_ptr<State>& journal, std::int64_t now, bool all, Step step) {
    JournalFile& file = journal->file;
    const bool hurried = all || journal->gone;
    lock.unlock();
    int error = 0;
    try {
      error = step();
      const std::int64_t since = file.unsyncedSince();
      for (auto& slow : file.slowWork(since >= 0 && (hurried || now >= since + kJournalSyncMs))) begin(journal, std::move(slow));
    } catch (const std::bad_alloc&) { error = -ENOMEM; }
    if (error < 0) folder.close();   // at the next try there may be another folder
    lock.lock();
    return error;
  }

  // Takes the result of a step. `latest`: the text that the journal is to hold.
  void note(std::unique_lock<std::mutex>& lock, State& s, int error, std::int64_t now, const Snapshot& latest) {
    s.name = s.file.name();
    s.durable = s.file.durable();
    std::string why = s.failure;
    if (error < 0) {
      why = errorText(error);
      s.retryAt = now + kJournalRetryMs;
      if (s.active && !s.whole) {   // else the journal was begun anew meanwhile
        s.whole = true;
        s.refer = false;
        s.base = latest;
        if (s.waitingSince < 0) s.waitingSince = now;
      }
    } else if (!s.whole && !s.file.replacing()) {
      why.clear();
      s.retryAt = -1;
    }
    if (why == s.failure) return;
    s.failure = why;
    if (!s.failed) return;
    const auto tell = s.failed;
    lock.unlock();
    tell();
    lock.lock();
  }

  void serveOne(std::unique_lock<std::mutex>& lock, const std::shared_ptr<State>& journal, std::int64_t now, bool all) {
    State& s = *journal;
    Job job;
    job.remove = std::exchange(s.remove, false);
    job.refer = s.refer;
    job.about = s.about;
    if (s.active) {
      job.alone = std::exchange(s.alone, false);
      job.whole = std::exchange(s.whole, false);
      job.aboutChanged = std::exchange(s.aboutChanged, false);
      job.base = job.whole ? std::exchange(s.base, Snapshot()) : Snapshot();
      job.waiting.swap(s.waiting);
    }
    s.waitingSince = -1;
    s.durable = false;
    const Snapshot latest = !job.waiting.empty() ? job.waiting.back().after : job.whole ? job.base : s.file.latest();
    const int error = attempt(lock, journal, now, all, [&] { return serve(s, job, now); });
    if (error < 0 && job.remove && !s.file.name().empty()) s.remove = true;
    job = {};
    note(lock, s, error, now, latest);
  }

  void takeFinished(std::unique_lock<std::mutex>& lock, bool all) {
    const std::int64_t now = clock();
    while (!finished.empty()) {
      const Finished done = std::move(finished.front());
      finished.erase(finished.begin());
      State& s = *done.journal;
      const int error = attempt(lock, done.journal, now, all, [&] { return s.file.finished(done.slow, done.result); });
      note(lock, s, error, now, s.file.latest());
    }
  }

  void serveDue(std::unique_lock<std::mutex>& lock, bool all, bool failing = true) {
    takeFinished(lock, all);
    const std::int64_t now = clock();
    const std::vector<std::shared_ptr<State>> present = journals;
    for (const auto& s : present) {
      const std::int64_t due = dueAt(*s);
      if (due >= 0 && (all || due <= now) && (failing || s->failure.empty())) serveOne(lock, s, now, all);
    }
    takeFinished(lock, all);
    // Journals of destroyed objects are kept until there is nothing left to do for them, or the last try has failed.
    std::erase_if(journals, [&](const auto& s) { return s->gone && !s->file.busy() && (dueAt(*s) < 0 || !s->failure.empty()); });
  }

  // Waits until everything is on disk or was tried.
  void settle(std::unique_lock<std::mutex>& lock) {
    for (serveDue(lock, true);; serveDue(lock, true, false)) {
      const bool more =
          std::any_of(journals.begin(), journals.end(), [](const auto& s) { return s->failure.empty() && s->toServe(); });
      if (more || !finished.empty()) continue;
      if (!thread.joinable() || !busy()) return;
      wake.wait(lock);
    }
  }

  void run() {
    std::unique_lock lock(mutex);
    for (;;) {
      const bool last = ending, all = hurry || last;
      hurry = false;
      working = true;
      if (all) settle(lock);
      else serveDue(lock, false);
      working = false;
      if (all) idle.notify_all();
      if (last) return;
      if (hurry || ending || !finished.empty()) continue;
      if (const std::int64_t at = next(); at < 0) {
        wake.wait(lock);
      } else if (const std::int64_t now = clock(); at > now) {
        wake.wait_for(lock, std::chrono::milliseconds(at - now));
      }
    }
  }

  bool busy() const {
    return std::any_of(journals.begin(), journals.end(), [](const auto& s) { return s->file.busy(); });
  }

  bool failing() const {
    return std::any_of(journals.begin(), journals.end(), [](const auto& s) { return !s->failure.empty(); });
  }

  std::optional<SlowThread> slowThread;   // last member: its tasks use the others
};

JournalWriter::JournalWriter(std::string folder) : impl_(new Impl(std::move(folder), steadyMs, {})) {
  impl_->slowThread.emplace();
  impl_->later = [this](std::function<void()> work) { impl_->slowThread->post(std::move(work)); };
  impl_->thread = std::thread([this] { impl_->run(); });
}

JournalWriter::JournalWriter(std::string folder, Clock clock, Later later)
    : impl_(new Impl(std::move(folder), std::move(clock), std::move(later))) {}

JournalWriter::~JournalWriter() {
  std::unique_lock lock(impl_->mutex);
  impl_->ending = true;
  if (impl_->thread.joinable()) {
    impl_->wake.notify_all();
    lock.unlock();
    impl_->thread.join();
  } else {
    impl_->settle(lock);
  }
}

const std::string& JournalWriter::folder() const { return impl_->folder.path(); }

void JournalWriter::setLimits(const JournalLimits& limits) {
  const std::lock_guard guard(impl_->mutex);
  impl_->limits = limits;
}

std::int64_t JournalWriter::work() {
  std::unique_lock lock(impl_->mutex);
  impl_->serveDue(lock, false);
  return impl_->next();
}

bool JournalWriter::flush(std::int64_t patienceMs) {
  std::unique_lock lock(impl_->mutex);
  if (!impl_->thread.joinable()) {
    impl_->settle(lock);
    return !impl_->failing() && !impl_->busy();
  }
  impl_->hurry = true;
  impl_->wake.notify_all();
  const bool done =
      impl_->idle.wait_for(lock, std::chrono::milliseconds(patienceMs), [&] { return !impl_->hurry && !impl_->working; });
  return done && !impl_->failing();
}

// ---- one journal

Journal::Journal(JournalWriter& writer, Document& document, std::function<void()> failed)
    : writer_(writer), document_(document), state_(std::make_shared<State>(writer.impl_->folder)), base_(document.snapshot()) {
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
  JournalFile::Record waiting;
  if (!change.reset) waiting = {change.spans, document_.snapshot()};
  bool wake = false;
  {
    const std::lock_guard guard(writer.mutex);
    const bool first = !s.active;
    if (first && change.reset) {   // a text was loaded; that is not the user's work
      base_ = document_.snapshot();
      s.refer = false;
      return;
    }
    if (first) {
      s.active = s.whole = true;
      s.base = base_;
      s.refer = s.about.stamp && s.about.stamp->exists && !s.about.path.empty() && base_.size().value > writer.limits.largeText &&
                s.refer;
      base_ = Snapshot();
    }
    wake = s.waitingSince < 0;
    if (wake) s.waitingSince = writer.clock();
    // A replaced text, too many changes for a slow disk, or a text that will be written whole again.
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

}   // namespace text
