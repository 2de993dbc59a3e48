// Windows' own way for programs to hand a command line over: WM_COPYDATA to a top-level window, its text as UTF-16. Copies of the
// program talk by Msghook.
#pragma once

#include <QString>
#include <functional>

#ifdef Q_OS_WIN
namespace copydata {
// Calls `received` for each message to a window of this process; there is one receiver, null ends it.
void receive(std::function<void(const QString& text)> received);
}   // namespace copydata
#endif
