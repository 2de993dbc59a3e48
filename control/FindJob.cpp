#include "control/FindJob.h"

#include <algorithm>

#include "base/Memory.h"

void FindJob::start(std::int64_t bytes, Work work) {
  drop();
  auto run = std::make_shared<Run>();
  if (bytes < limit) {
    withMemory([&] { work(run->control)(); });
    return;
  }
  current_ = run;
  bytes_ = std::max<std::int64_t>(1, bytes);
  emit runningChanged(true);
  pool_.start([this, run, work = std::move(work)] {
    Done done = tellNoMemory;
    try {
      done = work(run->control);
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    QMetaObject::invokeMethod(this, [this, run, done = std::move(done)] {
      if (run->dropped) return;
      current_.reset();
      emit runningChanged(false);
      withMemory(done);
    }, Qt::QueuedConnection);
  });
}

void FindJob::cancel() {
  if (current_) current_->control.cancel = true;
}

void FindJob::drop() {
  if (!current_) return;
  current_->dropped = true;
  current_->control.cancel = true;
  current_.reset();
  emit runningChanged(false);
}

int FindJob::percent() const {
  return current_ ? static_cast<int>(std::clamp<std::int64_t>(current_->control.bytesDone * 100 / bytes_, 0, 100)) : 0;
}
