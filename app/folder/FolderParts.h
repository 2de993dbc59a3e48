// The commands of a frame on its work folder: Open Folder, Open File List, the dock "Files", Go to File. One object for each frame.
#pragma once

#include <QObject>
#include <QStringList>

class FilesView;
class QDockWidget;
class QMenu;
class WorkFolder;
class frmMain;

class FolderParts : public QObject {
  Q_OBJECT
 public:
  explicit FolderParts(frmMain& frame);
  WorkFolder& work() { return *work_; }

  void open(const QString& folder);   // makes it the work folder and shows the dock
  void askForFolder();
  void askForList();
  void askForWorkingFolder();   // of the list
  void fillRecent(QMenu& menu);
  void goToFile();
  void toggleFiles();
  void showFiles();
  bool filesAreShown() const;

  void restore();   // work folder and dock, from the settings
  void save();

 private:
  FilesView& files();

  frmMain& frame_;
  WorkFolder* work_;
  QDockWidget* dock_ = nullptr;
  FilesView* files_ = nullptr;
};
