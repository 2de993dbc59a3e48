#include "control/find/FindJob.h"

#include <algorithm>
#include <utility>

#include "base/dialog/Memory.h"

void FindJob::start(std::int64_t bytes, Work work) {
  drop();
  auto run = std::make_shared<Run>();
  std::future<Done> soon = run->done.get_future();
  current_ = run;
  bytes_ = std::max<std::int64_t>(1, bytes);
  pool_.start([this, run, work = std::move(work)] {
    Done done = tellNoMemory;
    try {
      done = work(run->control);
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {}
    run->done.set_value(done);
    QMetaObject::invokeMethod(
        this, [this, run, done] { finish(*run, done); }, Qt::QueuedConnection);
  });
  if (bytes < limit && soon.wait_for(patience) == std::future_status::ready) return finish(*run, soon.get());
  shown_ = true;
  emit runningChanged(true);
}

// Only once, because the queued call comes too.
void FindJob::finish(Run& run, const Done& done) {
  if (std::exchange(run.dropped, true)) return;
  current_.reset();
  if (std::exchange(shown_, false)) emit runningChanged(false);
  withMemory(done);
}

void FindJob::cancel() {
  if (current_) current_->control.cancel = true;
}

void FindJob::drop() {
  if (!current_) return;
  current_->dropped = true;
  current_->control.cancel = true;
  current_.reset();
  if (std::exchange(shown_, false)) emit runningChanged(false);
}

int FindJob::percent() const {
  return current_ ? static_cast<int>(std::clamp<std::int64_t>(current_->control.bytesDone * 100 / bytes_, 0, 100)) : 0;
}
