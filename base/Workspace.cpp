#include "base/Workspace.h"

namespace {
Workspace* inForce = nullptr;
}

Workspace& Workspace::current() {
  if (inForce) return *inForce;
  static Workspace usual;
  return usual;
}

Workspace::Workspace() : before_(inForce) { inForce = this; }

Workspace::~Workspace() {
  while (!parts_.empty()) {
    const Kept last = std::move(parts_.back());   // what its end asks for is there, but for itself
    parts_.pop_back();
  }
  inForce = before_;
}

void* Workspace::find(const char* kind) const {
  for (const Kept& one : parts_)
    if (one.kind == kind) return one.part.get();
  return nullptr;
}
