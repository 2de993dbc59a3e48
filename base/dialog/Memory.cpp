#include "base/dialog/Memory.h"

#include <QCoreApplication>

#include "base/dialog/Dialogs.h"

void tellNoMemory() { MsgBox(QCoreApplication::translate("Memory", "There is not enough memory for this. Nothing was changed.")); }
