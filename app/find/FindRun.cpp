#include "app/find/FindRun.h"

#include <QPointer>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {
constexpr std::size_t kMostWaiting = 8 << 20;   // bytes of rows that nobody took yet: then the search waits
}   // namespace

struct FindRun::Shared {
  explicit Shared(FindTask t) : task(std::move(t)) {}
  const FindTask task;
  text::SearchControl control;
  folder::FindProgress progress;
  folder::FindSummary summary;
  folder::WalkReport walked;

  mutable std::mutex mutex;
  std::condition_variable taken;
  std::string rows;
  std::size_t begin = 0;   // of what was not taken yet
  bool done = false;
  std::function<void()> wake;   // empty once nobody listens

  void add(folder::FileFinds file) {
    if (file.rows.empty()) return;
    file.path = task.shown(file.path);
    std::string text;
    folder::appendRows(file, &text);
    std::unique_lock lock(mutex);
    const bool first = begin == rows.size();
    rows += text;
    if (first && wake) wake();
    while (rows.size() - begin > kMostWaiting && !control.cancel) taken.wait_for(lock, std::chrono::milliseconds(50));
  }

  void work() {
    try {
      const folder::FindRules rules = task.rules();
      summary = folder::findInFiles(
          *task.what, rules, [this](const auto& give) { task.each(give, control, &walked); },
          [this](folder::FileFinds file) { add(std::move(file)); }, control, &progress);
    } catch (const std::bad_alloc&) { summary.error = "Out of memory"; }
    const std::lock_guard lock(mutex);
    done = true;
    if (wake) wake();
  }
};

FindRun::FindRun(FindTask task, QObject* parent) : QObject(parent), shared_(std::make_shared<Shared>(std::move(task))) {
  shared_->wake = [this] { QMetaObject::invokeMethod(this, &FindRun::came, Qt::QueuedConnection); };
  std::thread([shared = shared_] { shared->work(); }).detach();
}

FindRun::~FindRun() {
  cancel();
  const std::lock_guard lock(shared_->mutex);
  shared_->wake = {};
}

void FindRun::cancel() {
  shared_->control.cancel = true;
  shared_->taken.notify_all();
}

bool FindRun::done() const {
  const std::lock_guard lock(shared_->mutex);
  return shared_->done;
}

bool FindRun::empty() const {
  const std::lock_guard lock(shared_->mutex);
  return shared_->begin == shared_->rows.size();
}

std::string FindRun::take(std::size_t most) {
  const std::lock_guard lock(shared_->mutex);
  std::string& rows = shared_->rows;
  std::size_t end = rows.size();
  if (end - shared_->begin > most) {
    end = rows.find('\n', shared_->begin + most - 1);
    end = end == std::string::npos ? rows.size() : end + 1;
  }
  std::string part = rows.substr(shared_->begin, end - shared_->begin);
  shared_->begin = end;
  if (end > rows.size() / 2) {   // what was taken goes, also when the search never pauses
    rows.erase(0, end);
    shared_->begin = 0;
  }
  shared_->taken.notify_all();
  return part;
}

std::int64_t FindRun::files() const { return shared_->progress.files; }
std::int64_t FindRun::hits() const { return shared_->progress.hits; }
const folder::FindSummary& FindRun::summary() const { return shared_->summary; }
const folder::WalkReport& FindRun::walked() const { return shared_->walked; }
const FindTask& FindRun::task() const { return shared_->task; }
