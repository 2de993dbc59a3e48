// Runs the long work of a command on a thread. If the work takes longer than a moment, a window shows its progress and a Cancel
// button. No other command can start meanwhile, so the caller may treat the call as synchronous. Timers and messages are still
// delivered: code that would delete the text meanwhile calls cancelRunning() first.
//
// While a command string runs, no window is shown; its Watch shows the progress and handles Esc. In batch mode, without windows,
// the work simply runs before the call returns.
#pragma once

#include <QCoreApplication>
#include <chrono>
#include <functional>
#include <memory>

#include "text/find/Search.h"

class QWidget;

struct LongWork {
  using Work = std::function<void(text::SearchControl&)>;
  struct Patience {
    std::chrono::milliseconds moment{50};   // that the caller waits at once
    std::chrono::milliseconds quiet{150};   // more, in which windows are painted and keys wait, before one is shown
  };
  static Patience& patience();

  // Returns when the work is done. `bytes` is the size of the input, unless the work reports it. The work may only touch data that
  // it owns.
  static void run(QWidget& asker, std::int64_t bytes, const Work& work) {
    run(asker, bytes, work, QCoreApplication::translate("LongWork", "Searching..."), true);
  }
  // The same with a text for the progress window; optionally without a Cancel button.
  static void run(QWidget& asker, std::int64_t bytes, const Work& work, const QString& what, bool mayCancel);
  // The same for work that only reads files and may hang. If it is cancelled, it is abandoned and the result is false. The work
  // must therefore own all its input and output.
  static bool runOrLeave(QWidget& asker, Work work, const QString& what);
  // For a loop that has to stay on this thread, because it paints or edits. It calls goesOn() often, between two of its steps.
  class Loop {
   public:
    Loop(QWidget* asker, const QString& what);   // null: the dialog that is up, else the main window
    ~Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;
    bool goesOn(int percent);   // false: cancelled, from then on

   private:
    struct State;
    const std::unique_ptr<State> state_;
  };
  // Cancels the work whose progress is shown. True: there was such work, and its command has not returned yet.
  static bool cancelRunning();

  // While it lives and the program itself edits (gBusy), it is called often with the progress in percent (-1: unknown). When it
  // returns false, the work is cancelled.
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
