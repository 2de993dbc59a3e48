// The Windows registry behind the interface of the store.
#ifdef _WIN32

#include <windows.h>

#include <utility>
#include <vector>

#include "settings/RegistryStore.h"

namespace registry {

namespace {

HKEY hiveHandle(quint32 hive) { return reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG>(hive))); }
const wchar_t* wide(const QString& text) { return reinterpret_cast<const wchar_t*>(text.utf16()); }

class OpenKey {   // opened with full access (0x3F), closed by the destructor
 public:
  OpenKey(quint32 hive, const QString& key, REGSAM access = KEY_ALL_ACCESS & 0x3F) {
    error = int(RegOpenKeyExW(hiveHandle(hive), wide(key), 0, access, &handle));
  }
  ~OpenKey() {
    if (error == kSuccess) RegCloseKey(handle);
  }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;
  HKEY handle = nullptr;
  int error;
};

class SystemRegistry : public Store {
 public:
  int open(quint32 hive, const QString& key) override { return OpenKey(hive, key).error; }

  int read(quint32 hive, const QString& key, const QString& name, QVariant* value) override {
    *value = {};
    const OpenKey open(hive, key, KEY_QUERY_VALUE);
    if (open.error) return open.error;
    DWORD type = 0, size = 0;
    int error = int(RegQueryValueExW(open.handle, wide(name), nullptr, &type, nullptr, &size));
    if (error || (type != REG_SZ && type != REG_DWORD)) return error;
    std::vector<BYTE> data(size + sizeof(DWORD));
    error = int(RegQueryValueExW(open.handle, wide(name), nullptr, &type, data.data(), &size));
    if (error) return error;
    if (type == REG_DWORD) {
      *value = qint32(*reinterpret_cast<const DWORD*>(data.data()));
    } else {
      QString text(reinterpret_cast<const QChar*>(data.data()), qsizetype(size / sizeof(wchar_t)));
      if (text.endsWith(QChar(0))) text.chop(1);
      *value = text;
    }
    return kSuccess;
  }

  int write(quint32 hive, const QString& key, const QString& name, const QVariant& value) override {
    if (readOnly_) return kSuccess;
    const OpenKey open(hive, key);
    if (open.error) return open.error;
    if (value.typeId() == QMetaType::Int) {
      const DWORD number = DWORD(value.toInt());
      return int(RegSetValueExW(open.handle, wide(name), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number));
    }
    const QString text = value.toString();
    const DWORD size = DWORD((text.size() + 1) * qsizetype(sizeof(wchar_t)));
    return int(RegSetValueExW(open.handle, wide(name), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.utf16()), size));
  }

  int create(quint32 hive, const QString& key) override {
    if (readOnly_) return kSuccess;
    HKEY handle = nullptr;
    const int error = int(RegCreateKeyExW(hiveHandle(hive), wide(key), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS & 0x3F,
                                          nullptr, &handle, nullptr));
    if (error == kSuccess) RegCloseKey(handle);
    return error;
  }

  int remove(quint32 hive, const QString& key) override {
    return readOnly_ ? int(kSuccess) : int(RegDeleteKeyW(hiveHandle(hive), wide(key)));
  }

  int flush() override { return kSuccess; }
  bool setReadOnly(bool on) override { return std::exchange(readOnly_, on); }

 private:
  bool readOnly_ = false;
};

}   // namespace

Store& systemRegistry() {
  static SystemRegistry instance;
  return instance;
}

}   // namespace registry

#endif
