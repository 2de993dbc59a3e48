// Where the settings live: on Windows the registry, elsewhere one file in the user's configuration folder (RegistryFile.h).
// clsRegistry is the only user; tests exchange the store.
//
// Hives are the registry's own numbers. Key paths are parted by "\", without a leading one; "" is the hive itself. Results are
// Windows error codes, 0 for success, on every platform. Keys and value names fold case.
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
  // *value: QString, qint32, or invalid for a value of another type (which is a success).
  virtual int read(quint32 hive, const QString& key, const QString& name, QVariant* value) = 0;
  virtual int write(quint32 hive, const QString& key, const QString& name, const QVariant& value) = 0;   // QString or qint32
  virtual int create(quint32 hive, const QString& key) = 0;   // with missing parents; an existing key is left alone
  virtual int remove(quint32 hive, const QString& key) = 0;   // kAccessDenied when it has subkeys
  virtual int flush() = 0;                                    // after it everything written is durable
  virtual bool setReadOnly(bool on) = 0;                      // on: changes made now last for this process only; the old state
};

Store& store();
// Exchanges the store (null: the platform's own again) and returns the old one, or null when that was the platform's own.
Store* setStore(Store* replacement);

}   // namespace registry
