// The editor's registry operations on the settings store of the platform (RegistryStore.h).
//
// No operation throws or shows a message. Each leaves its Windows error code (0: success) in LastReturnValue.
#pragma once

#include <QString>
#include <QVariant>

class clsRegistry {
 public:
  int LastReturnValue() const { return last_; }
  void setLastReturnValue(int code) { last_ = code; }

  bool isValidKey(quint32 hive, const QString& key);
  // QString for REG_SZ, qint32 for REG_DWORD; invalid when key or value is missing or of another type.
  QVariant GetKeyValue(quint32 hive, const QString& key, const QString& name);
  // type: registry::kText or kNumber; a number is signed or unsigned, 32 bits. The key must exist.
  void SetKeyValue(quint32 hive, const QString& key, const QString& name, const QVariant& value, int type);
  void NewKey(quint32 hive, const QString& key);     // with its parents; an existing key is not changed
  int DeleteKey(quint32 hive, const QString& key);   // access denied (5) when it has subkeys
  void CheckRetVal(int code) { last_ = code; }

 private:
  int last_ = 0;
};
