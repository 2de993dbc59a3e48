// What the windows of a run of the program share and none of them owns: keys, keystroke macros, the user's search, languages, the
// frame. Each floor keeps its own parts here; a part is made when it is first asked for, and the parts end in the reverse order.
//
// One workspace is in force at a time. The program makes it at its start; a test that must not see what others left makes one of its
// own. For the thread of the windows only.
#pragma once

#include <memory>
#include <vector>

class Workspace {
 public:
  Workspace();    // in force from here on
  ~Workspace();   // the one before is in force again
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  static Workspace& current();   // where none was made, one that lasts until the process ends

  template <class Part>
  Part& part() {
    static char kind;   // its address tells the kinds apart; no constant, as linkers may merge those
    if (void* const known = find(&kind)) return *static_cast<Part*>(known);
    const auto made = std::make_shared<Part>();
    parts_.push_back({&kind, made});
    return *made;
  }

 private:
  struct Kept {
    const char* kind;
    std::shared_ptr<void> part;
  };
  void* find(const char* kind) const;

  Workspace* const before_;
  std::vector<Kept> parts_;
};
