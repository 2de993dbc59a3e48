#include "settings/modRegistry.h"

#include <cmath>

#include "base/Workspace.h"
#include "settings/RegistryStore.h"
#include "settings/clsRegistry.h"

using namespace Qt::StringLiterals;

namespace modRegistry {

constexpr quint32 kHive = registry::kLocalMachine;

clsRegistry& Registry() { return Workspace::current().part<clsRegistry>(); }

bool KeyValid(const QString& key) { return Registry().isValidKey(kHive, key); }
QVariant GetValue(const QString& key, const QString& name) { return Registry().GetKeyValue(kHive, key, name); }
void NewKey(const QString& key) { Registry().NewKey(kHive, key); }

void SetNumber(const QString& key, const QString& name, qint32 value) {
  Registry().SetKeyValue(kHive, key, name, value, registry::kNumber);
}

void SetText(const QString& key, const QString& name, const QString& value) {
  Registry().SetKeyValue(kHive, key, name, value, registry::kText);
}

int LastResult() { return Registry().LastReturnValue(); }

bool Flag(const QString& key, const QString& name, bool otherwise) {
  const QVariant value = GetValue(key, name);
  if (value.typeId() == QMetaType::QString) {
    const QString text = value.toString().trimmed();
    if (text.compare("True"_L1, Qt::CaseInsensitive) == 0) return true;
    if (text.compare("False"_L1, Qt::CaseInsensitive) == 0) return false;
  }
  bool good = false;
  const int number = value.toInt(&good);
  return good ? number != 0 : otherwise;
}

double Real(const QString& key, const QString& name, double otherwise) {
  const QVariant value = GetValue(key, name);
  if (value.typeId() == QMetaType::QString) {
    const QString text = value.toString().trimmed();
    if (text.compare("True"_L1, Qt::CaseInsensitive) == 0) return -1;
    if (text.compare("False"_L1, Qt::CaseInsensitive) == 0) return 0;
    bool good = false;
    const double number = text.toDouble(&good);
    return good && std::isfinite(number) ? number : otherwise;
  }
  return value.isValid() ? value.toInt() : otherwise;
}

int Number(const QString& key, const QString& name, int otherwise) {
  const double number = Real(key, name, otherwise);
  return std::abs(number) <= 2147483647.0 ? int(number) : otherwise;
}

QString Text(const QString& key, const QString& name, const QString& otherwise) {
  const QVariant value = GetValue(key, name);
  return value.isValid() ? value.toString() : otherwise;
}

void SetFlag(const QString& key, const QString& name, bool value) { SetText(key, name, value ? u"True"_s : u"False"_s); }

int Flush() {
  Registry().CheckRetVal(registry::store().flush());
  return LastResult();
}

bool SetReadOnly(bool on) { return registry::store().setReadOnly(on); }

}   // namespace modRegistry
