// Windows of other programs, as far as the window system shows them (X11 by process id; Windows by process id).
#pragma once

#include <QString>
#include <memory>

class ProgramWindow {
 public:
  ProgramWindow();   // without a window system that shows them every title is empty
  ~ProgramWindow();
  // The title of the first top-level window that belongs to the process or to its process group; empty: none.
  // The window is remembered for close().
  QString title(qint64 processId);
  void close();   // asks the window of the last title() to close, as its close button does

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};
