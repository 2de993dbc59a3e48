// The settings store on systems without a registry: one file (RegistryText.h) that several processes share.
//
// Invariants: the file is always the whole old one or the whole new one. A process writes only its own changes: it locks, reads the
// file again, applies its changes, saves and unlocks. So processes do not undo each other's changes. A damaged file is kept under
// another name, the user is told once, and the settings start from their defaults.
//
// Changes are collected and written when the event loop has been idle for a moment, when the application ends, and on flush().
#pragma once

#include <QTimer>
#include <utility>
#include <vector>

#include "settings/RegistryStore.h"
#include "settings/RegistryText.h"

class RegistryFile : public registry::Store {
 public:
  // While there is no file at `path`, settings are read from `oldPath` (if given). `oldPath` is never written.
  explicit RegistryFile(const QString& path, const QString& oldPath = {});
  ~RegistryFile() override;   // drops changes that were not flushed

  int open(quint32 hive, const QString& key) override;
  int read(quint32 hive, const QString& key, const QString& name, QVariant* value) override;
  int write(quint32 hive, const QString& key, const QString& name, const QVariant& value) override;
  int create(quint32 hive, const QString& key) override;
  int remove(quint32 hive, const QString& key) override;
  int flush() override;
  bool setReadOnly(bool on) override { return std::exchange(readOnly_, on); }

  void setLockPatience(int milliseconds) { lockPatience_ = milliseconds; }

 private:
  enum class Kind { create, write, remove };
  struct Change {
    Kind kind;
    QString key, name;
    QVariant value;
  };
  enum class Found { whole, missing, damaged, unreadable };
  class Lock;

  int locate(quint32 hive, const QString& key, QString* path);   // loads on first use
  void load();
  Found readFile(RegistryText& text);
  Found readOldFile(RegistryText& text) const;
  int setAside();        // under the lock
  void tellOfDamage();   // not under the lock
  void report(const QString& text);
  int writeOut();   // under the lock
  void record(Change change);
  static void apply(const Change& change, RegistryText& text);
  void schedule(int milliseconds);

  QString path_, oldPath_;
  RegistryText text_;             // the settings as this process sees them
  std::vector<Change> changes_;   // not yet in the file
  QString reason_;                // of the last failure, in the system's words
  QString keptAs_;                // the damaged file's new name
  QByteArray bytes_;              // of the file at the last reading
  QTimer timer_;
  int lockPatience_ = 3000;
  bool loaded_ = false, readOnly_ = false, told_ = false, complained_ = false;
};
