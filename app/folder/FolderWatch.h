// Watches some folders for changes. It runs on a thread of its own, because adding a folder that hangs would block the caller.
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
  void begun(const QStringList& folders);   // the watch has begun or failed; what was read before may be out of date
  void unwatched(int folders);              // how many are not watched: too many folders, or the system refuses

 private:
  class Worker;
  QThread* thread_;
  Worker* worker_;
};
