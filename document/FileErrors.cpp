#include "document/FileErrors.h"

#include <QCoreApplication>

#include "base/dialog/Dialogs.h"

namespace {

QString tr(const char* text) { return QCoreApplication::translate("FileErrors", text); }

}   // namespace

QString savingTitle(const QString& path) { return tr("Saving ") + path; }
void tellOpenError(const QString& path, const QString& why) { MsgBox(tr("File Open Error : ") + why, tr("Opening ") + path); }
void tellSaveError(const QString& path, const QString& why) { MsgBox(tr("File Save Error : ") + why, savingTitle(path)); }
