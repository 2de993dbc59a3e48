#include "app/folder/FolderWatch.h"

#include <QCoreApplication>
#include <QFileSystemWatcher>
#include <QPointer>
#include <QThread>
#include <memory>

namespace {
constexpr int kEndMs = 200;   // that the end of the thread is waited for
}

class FolderWatch::Worker : public QObject {
 public:
  explicit Worker(FolderWatch* of) : of_(of) {}

  void set(const QStringList& folders) {   // on the thread
    if (!watcher_) {
      watcher_ = std::make_unique<QFileSystemWatcher>();
      connect(watcher_.get(), &QFileSystemWatcher::directoryChanged, of_, &FolderWatch::changed);
    }
    QStringList gone = watcher_->directories(), fresh;
    for (const QString& folder : folders.mid(0, kMost))
      if (!gone.removeOne(folder) && !tried_.contains(folder)) fresh << folder;
    tried_ = folders;
    if (!gone.isEmpty()) watcher_->removePaths(gone);
    if (!fresh.isEmpty()) watcher_->addPaths(fresh);
    const qsizetype less = folders.size() - watcher_->directories().size();
    QMetaObject::invokeMethod(qApp, [of = of_, less, fresh] {   // which may have gone while a folder hung
      if (of && !fresh.isEmpty()) emit of->begun(fresh);
      if (of) emit of->unwatched(int(less));
    });
  }

 private:
  const QPointer<FolderWatch> of_;
  QStringList tried_;   // what the last call was about: what cannot be watched is not asked for each time
  std::unique_ptr<QFileSystemWatcher> watcher_;
};

FolderWatch::FolderWatch(QObject* parent) : QObject(parent), thread_(new QThread), worker_(new Worker(this)) {
  worker_->moveToThread(thread_);
  connect(thread_, &QThread::finished, worker_, &QObject::deleteLater);
}

FolderWatch::~FolderWatch() {
  if (!thread_->isRunning()) {
    delete worker_;
    delete thread_;
    return;
  }
  thread_->quit();
  if (thread_->wait(kEndMs)) delete thread_;   // one that hangs goes with the program
}

void FolderWatch::setFolders(const QStringList& folders) {
  if (!thread_->isRunning()) thread_->start(QThread::LowPriority);
  QMetaObject::invokeMethod(worker_, [worker = worker_, folders] { worker->set(folders); });
}
