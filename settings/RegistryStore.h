// Where the settings are stored: on Windows in the registry, elsewhere in one file in the user's configuration folder
// (RegistryFile.h). Only clsRegistry uses it; tests replace it.
//
// Hives are the registry's own numbers. The parts of a key path are separated by "\", without a leading one; "" is the hive itself.
// Results are Windows error codes on every platform, 0 for success. Keys and value names ignore case.
#pragma once

#include <QString>
#include <QVariant>

namespace registry {

inline constexpr quint32 kClassesRoot = 0x80000000, kCurrentUser = 0x80000001, kLocalMachine = 0x80000002, kUsers = 0x80000003,
                         kCurrentConfig = 0x80000005;
inline constexpr int kText = 1, kNumber = 4;   // REG_SZ, REG_DWORD

enum Result {
  kSuccess = 0,
  kNotFound = 2,
  kAccessDenied = 5,
  kInvalidHandle = 6,
  kWriteFault = 29,
  kReadFault = 30,
  kSharingViolation = 32,
  kInvalidParameter = 87,
  kDiskFull = 112
};

class Store {
 public:
  virtual ~Store() = default;
  virtual int open(quint32 hive, const QString& key) = 0;
  // *value: QString, qint32, or invalid for a value of another type. The last case counts as success.
  virtual int read(quint32 hive, const QString& key, const QString& name, QVariant* value) = 0;
  virtual int write(quint32 hive, const QString& key, const QString& name, const QVariant& value) = 0;   // QString or qint32
  virtual int create(quint32 hive, const QString& key) = 0;   // with missing parents; an existing key is not changed
  virtual int remove(quint32 hive, const QString& key) = 0;   // kAccessDenied when it has subkeys
  virtual int flush() = 0;                                    // after it everything written is durable
  virtual bool setReadOnly(bool on) = 0;                      // on: later changes last for this process only. Returns the old state
};

Store& store();
// Replaces the store (null: the platform's own). Returns the old one, null for the platform's own.
Store* setStore(Store* replacement);

}   // namespace registry
