// Folders of the user that are this test program's alone: nothing of the user's own is read or written, and no file is shared
// with programs that run at the same time.
#pragma once

#include <stdlib.h>
#include <sys/stat.h>

#include "tests/support/files/TempFolder.h"

namespace testing_files {

class OwnHome {
 public:
  OwnHome() {
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
      const std::string folder = folder_ / name;
      ::mkdir(folder.c_str(), 0700);
      ::setenv(name, folder.c_str(), 1);
    }
    ::setenv("LC_ALL", "C.UTF-8", 0);   // messages of the system are compared in English
    ::unsetenv("LANGUAGE");             // would go before it
  }

 private:
  TempFolder folder_{TempFolder::Where::memory};
};

}   // namespace testing_files
