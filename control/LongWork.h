// Work that a command waits for and that may take long, as only its end shows: it is done on a thread, and what takes longer than a
// moment shows how far it is and can be cancelled. No other command can begin meanwhile, so for the caller it is as if it had
// done the work itself. Timers and messages do come in: who would take a text away meanwhile asks cancelRunning() first.
#pragma once

#include <QCoreApplication>
#include <chrono>
#include <functional>

#include "text/Search.h"

class QWidget;

struct LongWork {
  static inline std::chrono::milliseconds moment{150};
  // Returns when the work is done. `bytes` is how much there is to go over; `work` touches nothing but what it holds.
  static void run(QWidget& window, std::int64_t bytes, const std::function<void(text::SearchControl&)>& work) {
    run(window, bytes, work, QCoreApplication::translate("LongWork", "Searching..."), true);
  }
  // The same with words of its own for what goes on, and for work that has to come to its end.
  static void run(QWidget& window, std::int64_t bytes, const std::function<void(text::SearchControl&)>& work, const QString& what, bool mayCancel);
  // For files: only what is long goes to a thread, under a window that is shown; else it is done before this returns.
  static void forFile(QWidget& asker, std::int64_t bytes, const std::function<void(text::SearchControl&)>& work, const QString& what, bool mayCancel);
  // Cancels the work that shows how far it is. True: there is one, and its command has yet to return.
  static bool cancelRunning();
};
