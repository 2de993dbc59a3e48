// Windows of other programs, as far as the window system shows them (X11 and Windows: by process id).
#pragma once

#include <QString>
#include <memory>

class ProgramWindow {
 public:
  ProgramWindow();   // if the window system does not show them, every title is empty
  ~ProgramWindow();
  // The title of the first top-level window that belongs to the process or its process group; empty: there is none. close() then
  // applies to this window.
  QString title(qint64 processId);
  void close();   // asks the window of the last title() to close, like its close button

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};
