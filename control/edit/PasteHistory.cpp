#include "control/edit/PasteHistory.h"

#include "base/Workspace.h"

void PasteHistory::add(const CopiedText& copied) {
  if (copied.text.isEmpty() || copied.text.size() > kLargest) return;
  std::erase(texts_, copied);
  texts_.insert(texts_.begin(), copied);
  if (texts_.size() > kMost) texts_.pop_back();
}

PasteHistory& pasteHistory() { return Workspace::current().part<PasteHistory>(); }
