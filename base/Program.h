// What the whole program shares: its names, folders, the status text and the busy flag.
#pragma once

#include <QString>
#include <functional>

inline constexpr char kApplicationTitle[] = "Zelkor Editor";

// The folder that holds config/ and Samples/: the program's own folder when they stand there (a build tree, Windows), else
// <prefix>/share/zelkor. Tests may set it.
QString applicationFolder();
void setApplicationFolder(const QString& folder);

// Shows text in the first panel of the frame's status bar at once, so that a message shows during a long operation.
// Without a frame (tests, batch mode) it goes to the sink that was set, or nowhere.
void SetStatusText(const QString& text);
void setStatusSink(std::function<void(const QString&)> sink);

// Adds a line to the log: what has to be told, wherever it was found. Before there is a log it goes nowhere.
void AppendReport(const QString& line);
void setReportSink(std::function<void(const QString&)> sink);

// True while the program itself edits a text (template, command string, columnise); selection handlers then keep still.
bool gBusy();
class BusyGuard {   // raises the flag and restores what it was
 public:
  BusyGuard();
  ~BusyGuard();
  BusyGuard(const BusyGuard&) = delete;
  BusyGuard& operator=(const BusyGuard&) = delete;

 private:
  bool previous_;
};
