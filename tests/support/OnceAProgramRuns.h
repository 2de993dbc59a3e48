// Does something in the middle of a wait: once, as soon as a program that this process has started runs.
#pragma once

#include <QTimer>
#include <functional>
#include <utility>

#include "process/Process.h"

class OnceAProgramRuns {
 public:
  explicit OnceAProgramRuns(std::function<void()> act) : act_(std::move(act)) {
    QObject::connect(&look_, &QTimer::timeout, &look_, [this] {
      if (process::Program::running().isEmpty()) return;
      look_.stop();
      act_();
    });
    look_.start(5);
  }

 private:
  std::function<void()> act_;
  QTimer look_;
};
