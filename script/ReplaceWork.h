// The changes of a replacing in files, made: open texts in their windows as one undo step each, files on disk by the safe save with their
// old bytes kept first (folder/ReplaceRecord.h).
#pragma once

#include <QPointer>
#include <QStringList>
#include <string>
#include <vector>

#include "folder/ReplaceInFiles.h"

class QWidget;
class frmDocument;

struct Replaced {
  std::int64_t changes = 0, files = 0;
  QStringList troubles;   // what was left alone and why, for the user
  struct Open {
    QPointer<frmDocument> document;
    std::uint64_t revision = 0;   // behind the change
  };
  std::vector<Open> open;
  std::string record;   // the folder with the old texts of files; empty: no file was changed
};
// The newest replacing of this run of the program that changed anything: what undo takes back as one.
Replaced& newestReplaced();

// The ticked changes of the plans. The user waits, and may cancel between two files.
Replaced makeChanges(QWidget& asker, std::vector<folder::FilePlan> plans, const QString& about);

std::string replaceRecords();   // the folder of the records
// The open text that a plan's path stands for; null: none.
frmDocument* openTextOf(const std::string& path);
// "path: why", as it is shown.
QString namedTrouble(const std::string& path, const QString& why);
