// The messages for a file that cannot be read or written. `why` is the reason from the system.
#pragma once

#include <QString>

void tellOpenError(const QString& path, const QString& why);
void tellSaveError(const QString& path, const QString& why);
QString savingTitle(const QString& path);   // title of boxes that are shown while the file is saved
