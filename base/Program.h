// What the whole program shares: its names, folders, the status text and the busy flag.
#pragma once

#include <QString>
#include <functional>

inline constexpr char kApplicationTitle[] = "Zelkor Editor";

// The folder that holds config/ and Samples/: the program's own folder when they stand there (a build tree, Windows), else
// <prefix>/share/zelkor. Tests may set it.
QString applicationFolder();
void setApplicationFolder(const QString& folder);

// Shows text in the first panel of the frame's status bar at once, also during a long operation. Without a frame (tests, batch
// mode) the text goes to the sink that was set, or is dropped.
void SetStatusText(const QString& text);
void setStatusSink(std::function<void(const QString&)> sink);

// Adds a line to the log. Before the log exists, the line is dropped.
void AppendReport(const QString& line);
void setReportSink(std::function<void(const QString&)> sink);

// True while the program itself edits a text (template, command string, columnise). Handlers of selection changes then do nothing.
bool gBusy();
class BusyGuard {   // sets the flag and restores its old value
 public:
  BusyGuard();
  ~BusyGuard();
  BusyGuard(const BusyGuard&) = delete;
  BusyGuard& operator=(const BusyGuard&) = delete;

 private:
  bool previous_;
};
