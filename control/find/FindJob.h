// One long search at a time beside the user interface: runs on a thread over a snapshot, can be cancelled, and comes back by a
// queued call. Who asks for a small text waits a moment for it, as most are found at once.
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
  using Work = std::function<Done(text::SearchControl& control)>;   // on the other one; touches nothing but what it holds

  explicit FindJob(QObject* parent) : QObject(parent) { pool_.setMaxThreadCount(1); }
  ~FindJob() override { drop(); }

  // Drops the job that runs. `bytes` is how much there is to go over; below the limit this waits `patience` for the end.
  void start(std::int64_t bytes, Work work);
  void cancel();   // the work ends soon and says in its Done that it was cancelled
  void drop();     // the same, and nobody hears of it
  bool running() const { return current_ != nullptr; }
  int percent() const;

  std::int64_t limit = 4 << 20;
  std::chrono::milliseconds patience{30};

 signals:
  void runningChanged(bool running);

 private:
  struct Run {
    text::SearchControl control;
    bool dropped = false;   // read and written by the user-interface thread alone
    std::promise<Done> done;
  };
  void finish(Run& run, const Done& done);
  QThreadPool pool_;   // waits for the thread at its end
  std::shared_ptr<Run> current_;
  std::int64_t bytes_ = 1;
  bool shown_ = false;   // somebody was told that it runs
};
