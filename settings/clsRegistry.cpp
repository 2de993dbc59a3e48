#include "settings/clsRegistry.h"

#include "settings/RegistryStore.h"

using namespace registry;

bool clsRegistry::isValidKey(quint32 hive, const QString& key) {
  CheckRetVal(store().open(hive, key));
  return last_ == kSuccess;
}

QVariant clsRegistry::GetKeyValue(quint32 hive, const QString& key, const QString& name) {
  QVariant value;
  CheckRetVal(store().read(hive, key, name, &value));
  return value;
}

void clsRegistry::SetKeyValue(quint32 hive, const QString& key, const QString& name, const QVariant& value, int type) {
  QVariant stored;
  if (type == kText) {
    stored = value.toString();
  } else if (type == kNumber) {
    bool good = false;
    const qlonglong number = value.toLongLong(&good);
    if (good && number >= -0x80000000LL && number <= 0xFFFFFFFFLL) stored = qint32(quint32(number));
  }
  CheckRetVal(stored.isValid() ? store().write(hive, key, name, stored) : int(kInvalidParameter));
}

void clsRegistry::NewKey(quint32 hive, const QString& key) { CheckRetVal(store().create(hive, key)); }

int clsRegistry::DeleteKey(quint32 hive, const QString& key) {
  CheckRetVal(store().remove(hive, key));
  return last_;
}
