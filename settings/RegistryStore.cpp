#include "settings/RegistryStore.h"

#include <QCoreApplication>

#include "base/FileNames.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "settings/RegistryFile.h"

namespace registry {

namespace {
Store* replaced = nullptr;
}

#ifdef _WIN32
Store& systemRegistry();   // RegistryWin.cpp
static Store& platformStore() { return systemRegistry(); }
#else
static Store& platformStore() {
  // Never destroyed: its last flush runs while the application object goes, before the statics of other files do.
  static Store* const file = [] {
    qAddPostRoutine([] { store().flush(); });
    const QString folder = userConfigFolder();
    return new RegistryFile(joinPath(folder, QStringLiteral("settings.conf")), joinPath(folder, QStringLiteral("settings.reg")));
  }();
  return *file;
}
#endif

Store& store() { return replaced ? *replaced : platformStore(); }

Store* setStore(Store* replacement) {
  Store* const old = replaced;
  replaced = replacement;
  return old;
}

}   // namespace registry
