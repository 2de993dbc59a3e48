// A disk of one mebibyte that a test can fill.
#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <string>

#include "tests/support/files/Child.h"
#include "tests/support/files/TempFolder.h"

namespace testing_files {

// Over that folder; a mount of our own, gone with the process: call it in a child (see inChild).
inline void mountSmall(const std::string& where) {
  const unsigned uid = ::geteuid(), gid = ::getegid();
  // Whoever may not have a mount namespace may still have one as the head of a user namespace.
  const bool own = uid == 0 && ::unshare(CLONE_NEWNS) == 0;
  if (!own && ::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) skipChild("no mount namespace allowed here");
  if (!own) {
    writeRaw("/proc/self/setgroups", "deny");
    writeRaw("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1");
    writeRaw("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1");
  }
  ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
  if (::mount("none", where.c_str(), "tmpfs", 0, "size=1m") != 0) skipChild("no mount of a small tmpfs allowed here");
}

}   // namespace testing_files
