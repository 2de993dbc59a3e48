// Hears of changes in some folders. Works on a thread of its own, since a folder that hangs would hang the asking too.
#pragma once

#include <QObject>
#include <QStringList>

class QThread;

class FolderWatch : public QObject {
  Q_OBJECT
 public:
  static constexpr qsizetype kMost = 200;   // folders
  explicit FolderWatch(QObject* parent);
  ~FolderWatch() override;
  void setFolders(const QStringList& folders);   // the first kMost of them

 signals:
  void changed(const QString& folder);
  void begun(const QStringList& folders);   // to be watched, or not: what was read of them before may be old
  void unwatched(int folders);              // so many are not watched, as they are too many or the system does not; 0: all are

 private:
  class Worker;
  QThread* thread_;
  Worker* worker_;
};
