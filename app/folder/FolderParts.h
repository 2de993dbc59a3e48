// The frame's parts that know the folder: which one it is, the dock "Files", and going to a file. One for each frame.
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

  void open(const QString& folder);   // as the one to work in; the dock shows it
  void askForFolder();
  void askForList();
  void askForWorkingFolder();   // of the list
  void fillRecent(QMenu& menu);
  void goToFile();
  void toggleFiles();
  bool filesAreShown() const;

  void restore();   // as the last run left it
  void save();

 private:
  void showFiles();
  FilesView& files();

  frmMain& frame_;
  WorkFolder* work_;
  QDockWidget* dock_ = nullptr;
  FilesView* files_ = nullptr;
};
