#include "settings/RegistryStore.h"

#include <QCoreApplication>

#include "base/Program.h"
#include "base/Strings.h"
#include "base/Workspace.h"
#include "bridge/FileNames.h"
#include "settings/RegistryFile.h"

namespace registry {

namespace {
struct InForce {
  Store* replacement = nullptr;
};
InForce& inForce() { return Workspace::current().part<InForce>(); }
}   // namespace

#ifdef _WIN32
Store& systemRegistry();   // RegistryWin.cpp
static Store& platformStore() { return systemRegistry(); }
#else
static Store& platformStore() {
  // Never destroyed: the last flush runs while the application object is destroyed, before the statics of other files.
  static Store* const file = [] {
    qAddPostRoutine([] { store().flush(); });
    const QString folder = userConfigFolder();
    return new RegistryFile(joinPath(folder, QStringLiteral("settings.conf")), joinPath(folder, QStringLiteral("settings.reg")));
  }();
  return *file;
}
#endif

Store& store() { return inForce().replacement ? *inForce().replacement : platformStore(); }

Store* setStore(Store* replacement) { return std::exchange(inForce().replacement, replacement); }

}   // namespace registry
