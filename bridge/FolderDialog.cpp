#include "bridge/FolderDialog.h"

#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"

QString askForFolder(const QString& title, const QString& start) {
  FileDialogRequest request;
  request.title = title;
  request.filter = kFoldersOnly;
  request.folder = start;
  request.disk = &exactFiles();
  return dialogs().openFile(request).value(0);
}
