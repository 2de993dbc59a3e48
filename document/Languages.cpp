#include "document/Languages.h"

#include "document/frmRegistry.h"

namespace {
ucCM* inForce = nullptr;
}

ucCM& languages() { return inForce ? *inForce : frmRegistry::instance().ucCM1(); }

ucCM* setLanguages(ucCM* manager) {
  ucCM* before = inForce;
  inForce = manager;
  return before;
}
