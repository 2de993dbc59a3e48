// Work on a thread that nobody waits for, as a disk may hang: its result comes back to the thread that asked, if who asked is still
// there. What the work holds and makes goes with whoever looks at it last. The work must not throw.
#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <utility>

// work() is run on the thread, done(result) on that of `asker`, which has an event loop.
template <class Work, class Done>
void inBackground(QObject* asker, Work work, Done done) {
  constexpr int kLookMs = 10;
  using Result = decltype(work());
  std::packaged_task<Result()> task(std::move(work));
  const auto result = std::make_shared<std::future<Result>>(task.get_future());
  std::thread(std::move(task)).detach();
  auto* look = new QTimer(asker);
  QObject::connect(look, &QTimer::timeout, asker, [look, result, done = std::move(done)]() mutable {
    if (result->wait_for(std::chrono::seconds(0)) != std::future_status::ready) return;
    look->stop();
    look->deleteLater();
    auto finish = std::move(done);   // may delete who asked
    finish(result->get());
  });
  look->start(kLookMs);
}
