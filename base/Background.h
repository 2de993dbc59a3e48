// Runs work on a thread that nobody waits for, because a disk may hang. The result is handed to the thread of `asker`, if `asker` still
// exists. The work owns everything that it uses. It must not throw.
#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <utility>

// work() runs on the new thread, done(result) on the thread of `asker`, which needs an event loop.
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
    auto finish = std::move(done);   // it may delete `asker`, and this closure with it
    finish(result->get());
  });
  look->start(kLookMs);
}
