// Work that a command waits for and that may take long on a large text: it is done on a thread, and what takes longer than a
// moment shows how far it is and can be cancelled. No other command can begin meanwhile, so for the caller it is as if it had
// done the work itself. Timers and messages do come in: who would take a text away meanwhile asks cancelRunning() first.
#pragma once

#include <chrono>
#include <functional>

#include "text/Search.h"

class QWidget;

struct LongWork {
  static inline std::int64_t limit = 4 << 20;               // bytes; below that no thread is worth it
  static inline std::chrono::milliseconds moment{150};
  // Returns when the work is done. `bytes` is how much there is to go over; `work` touches nothing but what it holds.
  static void run(QWidget& window, std::int64_t bytes, const std::function<void(text::SearchControl&)>& work);
  // Cancels the work that shows how far it is. True: there is one, and its command has yet to return.
  static bool cancelRunning();
};
