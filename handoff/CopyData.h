// Receives command lines from other Windows programs: WM_COPYDATA to a top-level window, with the text as UTF-16. Copies of this
// program use Msghook between them.
#pragma once

#include <QString>
#include <functional>

#ifdef Q_OS_WIN
namespace copydata {
// Calls `received` for each message to a window of this process. There is one receiver; null removes it.
void receive(std::function<void(const QString& text)> received);
}   // namespace copydata
#endif
