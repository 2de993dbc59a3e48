// The content of the dock "Files": the name of the work folder, a filter, the tree of files, and notes below it.
#pragma once

#include <QStringList>
#include <QTimer>
#include <QWidget>

class FilesModel;
class FolderWatch;
class QLabel;
class QLineEdit;
class QMenu;
class QToolButton;
class QTreeView;
class WorkFolder;
class frmDocument;
class frmMain;

class FilesView : public QWidget {
  Q_OBJECT
 public:
  FilesView(frmMain& frame, WorkFolder& work, QWidget* parent);

  QString filter() const;
  void setFilter(const QString& text);
  void focusTree();
  void lookAtDisk();   // reads what is shown again

 signals:
  void closeAsked();

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void showRoot();
  void showTree();
  void showNotes();
  void markDocuments();
  void watchOpenFolders();
  void showMenu(const QPoint& at);
  void fillMenu(QMenu& menu);
  QString current() const;         // path of the current entry; empty: none
  QString currentFolder() const;   // it, or the folder that it is in
  void open(const QString& path, bool beside = false);
  void rename(const QString& path, const QString& name);
  void make(bool folder);
  void remove(const QString& path);
  void reveal(const QString& path);
  void editName();
  void follow(const QString& from, const QString& to);         // gives open documents the new name of their file
  void followRecent(const QString& from, const QString& to);   // the same for the recent files; to empty: it has gone
  QList<frmDocument*> documentsIn(const QString& path) const;

  frmMain& frame_;
  WorkFolder& work_;
  QLabel* title_;
  QToolButton* menu_;
  QLineEdit* filter_;
  QTreeView* tree_;
  QLabel* note_;
  FilesModel* model_;
  FolderWatch* watch_;
  QTimer marks_, watches_, narrowing_;
  QString shownRoot_, select_;   // select_: what was just made or renamed, until the tree has it
  bool shownAll_ = false, filtered_ = false;
  QStringList expanded_;   // while the filter shows something else
  int unwatched_ = 0;
  qsizetype notShown_ = 0;   // files that the filter lets through beyond those that are shown
};
