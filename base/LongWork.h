// Work that a command waits for and that may take long, as only its end shows: it is done on a thread, and what takes longer than a
// moment shows how far it is and can be cancelled. No other command can begin meanwhile, so for the caller it is as if it had
// done the work itself. Timers and messages do come in: who would take a text away meanwhile asks cancelRunning() first.
//
// While a command string runs no window comes up: its Watch shows the progress and hears Esc. Where no window is shown at all
// (batch mode) the work is done before this returns.
#pragma once

#include <QCoreApplication>
#include <chrono>
#include <functional>

#include "text/find/Search.h"

class QWidget;

struct LongWork {
  using Work = std::function<void(text::SearchControl&)>;
  struct Patience {
    std::chrono::milliseconds moment{50};   // that the caller waits at once
    std::chrono::milliseconds quiet{150};   // more, in which windows are painted and keys wait, before one is shown
  };
  static Patience& patience();

  // Returns when the work is done. `bytes` is how much there is to go over, unless the work tells; it touches nothing but what it holds.
  static void run(QWidget& asker, std::int64_t bytes, const Work& work) {
    run(asker, bytes, work, QCoreApplication::translate("LongWork", "Searching..."), true);
  }
  // The same with words of its own for what goes on, and for work that has to come to its end.
  static void run(QWidget& asker, std::int64_t bytes, const Work& work, const QString& what, bool mayCancel);
  // The same for what only reads files, which may hang: cancelled, it is left to itself, and this is false. So the work holds what it
  // needs and what it makes.
  static bool runOrLeave(QWidget& asker, Work work, const QString& what);
  // The same for a loop that has to stay on this thread, every moment or so: false, where a Watch is there and ends it.
  static bool goesOn(const QString& what, int percent);
  // Cancels the work that shows how far it is. True: there is one, and its command has yet to return.
  static bool cancelRunning();

  // Hears of long work as long as it lives and the program itself edits (gBusy): how far it is (-1: unknown), often. False ends the work.
  class Watch {
   public:
    using Look = std::function<bool(const QString& what, int percent)>;
    explicit Watch(Look look);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

   private:
    Look before_;
  };
};
