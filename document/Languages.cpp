#include "document/Languages.h"

#include "base/Strings.h"
#include "base/Workspace.h"
#include "control/CodeMax.h"
#include "document/frmRegistry.h"
#include "language/ucCM.h"

namespace {
struct LanguagesInForce {
  ucCM* manager = nullptr;
};
LanguagesInForce& inForce() { return Workspace::current().part<LanguagesInForce>(); }
}   // namespace

ucCM& languages() { return inForce().manager ? *inForce().manager : frmRegistry::instance().ucCM1(); }

int languageOfFile(const QString& name, const CodeMax& cmx) {
  constexpr std::int64_t kBeginning = 64 << 10;   // bytes
  const text::Snapshot text = cmx.model()->snapshot();
  const auto end = std::min(text.size(), text::ByteOffset(kBeginning));
  return languages().GetLangFromFile(GetFileTitle(name), toQString(text.bytes({text::ByteOffset(0), end})));
}

ucCM* setLanguages(ucCM* manager) { return std::exchange(inForce().manager, manager); }
