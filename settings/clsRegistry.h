// The registry operations of the editor, over the platform's settings store (RegistryStore.h).
//
// No operation raises an error or shows a message: each leaves its Windows error code (0: success) in LastReturnValue.
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
  // type: registry::kText or kNumber; a number may be signed or unsigned, 32 bits. The key must exist.
  void SetKeyValue(quint32 hive, const QString& key, const QString& name, const QVariant& value, int type);
  void NewKey(quint32 hive, const QString& key);     // with its parents; an existing key stays as it is
  int DeleteKey(quint32 hive, const QString& key);   // access denied (5) when it has subkeys
  void CheckRetVal(int code) { last_ = code; }

 private:
  int last_ = 0;
};
