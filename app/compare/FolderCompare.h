// Comparing two folders for the main frame: asks, compares on a thread, and lists what differs. From the lines of the list the pairs
// of files open side by side. One for each frame, its child.
#pragma once

#include <QObject>
#include <QPointer>

#include "app/compare/frmCompareFolders.h"

class CompareWindow;
class frmMain;

class FolderCompare : public QObject {
  Q_OBJECT
 public:
  static FolderCompare& of(frmMain& frame);

  void open();   // asks the user
  void compare(const frmCompareFolders::Choice& choice);

 private:
  explicit FolderCompare(frmMain& frame);
  void show(const QString& left, const QString& right);
  frmMain& frame_;
  frmCompareFolders::Choice last_;
  QPointer<CompareWindow> shown_;   // the pair that was opened last: the next one takes its place
};
