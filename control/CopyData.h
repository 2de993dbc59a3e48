// Windows' own way for copies of the program to talk: WM_COPYDATA between top-level windows, its text as UTF-16. Elsewhere
// only the list of windows is declared, for the rules of searching it; Msghook carries the messages there.
#pragma once

#include <QList>
#include <QString>
#include <functional>

struct TopWindow {
  quint64 handle = 0, parent = 0;
  QString caption;
};

#ifdef Q_OS_WIN
namespace copydata {
QList<TopWindow> topWindows();                                 // in Z order
void bringForward(quint64 window);                             // restored when minimised
// Waits until the window has acted; false: it did not take the message (it hangs, or has gone).
bool send(quint64 to, quint64 from, const QString& text);
// Calls `received` for each message to a window of this process; there is one receiver, null ends it.
void receive(std::function<void(const QString& text)> received);
}  // namespace copydata
#endif
