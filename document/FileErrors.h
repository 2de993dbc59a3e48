// What the user is told when a file cannot be read or written, in the same words everywhere. `why` is the system's reason.
#pragma once

#include <QString>

void tellOpenError(const QString& path, const QString& why);
void tellSaveError(const QString& path, const QString& why);
QString savingTitle(const QString& path);   // of boxes that come up while it is saved
