// One long search at a time: runs on a thread in a snapshot, can be cancelled, and returns by a queued call. For a small text the
// caller waits a moment, because most searches end at once.
#pragma once

#include <QObject>
#include <QThreadPool>
#include <chrono>
#include <functional>
#include <future>
#include <memory>

#include "text/find/Search.h"

class FindJob : public QObject {
  Q_OBJECT
 public:
  using Done = std::function<void()>;                               // on the user-interface thread
  using Work = std::function<Done(text::SearchControl& control)>;   // on the thread; may only use what it holds

  explicit FindJob(QObject* parent) : QObject(parent) { pool_.setMaxThreadCount(1); }
  ~FindJob() override { drop(); }

  // Drops the running job. `bytes` is the size of the text; below the limit this call waits up to `patience` for the end.
  void start(std::int64_t bytes, Work work);
  void cancel();   // the work ends soon, and its Done reports that it was cancelled
  void drop();     // the same without a report
  bool running() const { return current_ != nullptr; }
  int percent() const;

  std::int64_t limit = 4 << 20;
  std::chrono::milliseconds patience{30};

 signals:
  void runningChanged(bool running);

 private:
  struct Run {
    text::SearchControl control;
    bool dropped = false;   // used on the user-interface thread only
    std::promise<Done> done;
  };
  void finish(Run& run, const Done& done);
  QThreadPool pool_;   // the destructor waits for the thread
  std::shared_ptr<Run> current_;
  std::int64_t bytes_ = 1;
  bool shown_ = false;   // onShown was called
};
