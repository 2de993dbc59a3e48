// Comparing two folders for the main frame: asks, compares on a thread, and lists what differs. From the lines of the list the pairs
// of files open side by side. One for each frame, its child.
#pragma once

#include <QObject>

#include "app/compare/frmCompareFolders.h"

class frmMain;

class FolderCompare : public QObject {
  Q_OBJECT
 public:
  static FolderCompare& of(frmMain& frame);

  void open();   // asks the user
  void compare(const frmCompareFolders::Choice& choice);

 private:
  explicit FolderCompare(frmMain& frame);
  frmMain& frame_;
  frmCompareFolders::Choice last_;
};
