#include "base/dialog/FolderDialog.h"

#include "base/FileNames.h"
#include "base/dialog/Dialogs.h"

QString askForFolder(const QString& title, const QString& start) {
  FileDialogRequest request;
  request.title = title;
  request.filter = kFoldersOnly;
  request.folder = start;
  request.disk = &exactFiles();
  return dialogs().openFile(request).value(0);
}
