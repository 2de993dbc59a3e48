// The recovery journal when its folder or its disk fails, and whose the folder is.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tests/support/files/CrashFileSystem.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/SmallDisk.h"
#include "tests/support/files/TempFolder.h"
#include "tests/text/JournalDesk.h"

using namespace testing_files;
using namespace text;

namespace {

using namespace journal_desk;

TEST(RecoveryFolder, J8_WhateverFailsEditingGoesOnAndItIsTriedAgain) {
  struct Fault {
    int error;
    const char* call;   // the only one that fails; empty: any
    std::int64_t slowMs;
  };
  int points = 0;
  std::vector<Fault> faults{{ENOSPC, "", 0}, {EIO, "", 900}, {EIO, "sync", 150}, {EIO, "renameAt", 900}};
  if (full()) faults.insert(faults.end(), {{EIO, "", 0}, {EACCES, "", 0}, {EIO, "", 150}, {EIO, "write", 150}});
  for (const Fault& fault : faults) {
    for (const bool forEver : {false, true}) {
      for (int n = 1;; ++n) {
        SCOPED_TRACE(std::string(fault.call) + " " + std::to_string(fault.error) + " at " + std::to_string(n) +
                     (forEver ? " for ever" : ""));
        CrashFileSystem disk(DiskState{{"/home/.keep", ""}});
        FaultyFileSystem faulty(disk);
        const UseFileSystem use(faulty);
        const std::string call = fault.call;
        bool reached = false;
        std::string typed = "base";
        {
          Desk desk("/home/recovery", typed, {}, fault.slowMs);
          desk.writer.setLimits({64 << 20, 100});
          if (call.empty()) faulty.failCall(n, fault.error, forEver);
          else faulty.failUse(call, n, fault.error, forEver);
          bool failed = false;
          for (int i = 0; i < 12; ++i) {
            typed += std::string(20, char('a' + i));
            type(desk.document, std::string(20, char('a' + i)));
            desk.pass(i < 11 ? 700 : 4000 + 4 * fault.slowMs);   // at last until everything has been tried
            EXPECT_FALSE(failed && forEver && desk.journal->failure().empty()) << "the warning lasts";
            failed = failed || !desk.journal->failure().empty();
          }
          ++points;
          const auto uses = std::count_if(faulty.log().begin(), faulty.log().end(),
                                          [&](const Call& one) { return call.empty() || one.name == call; });
          reached = uses < n;
          EXPECT_TRUE(!forEver || reached || failed);
          faulty.clear();
          desk.pass(6000 + 4 * fault.slowMs);
          EXPECT_EQ(desk.journal->failure(), "");
          EXPECT_EQ(bytesOf(desk.document.snapshot()), typed);
          desk.journal.reset();
          desk.pass(100);
        }
        const auto left = leftJournals("/home/recovery");
        ASSERT_GE(left.size(), 1u);
        EXPECT_EQ(bytesOf(left[0].recover().text), typed);
        if (reached) break;
      }
    }
  }
  EXPECT_GT(points, 50);
}

// On real file systems: the folder is in trouble, and then no more.
TEST(RecoveryFolder, J8_FailsAndWorksAgainWhateverTheFolderMeetsWith) {
  namespace fs = std::filesystem;
  struct Trouble {
    const char* name;
    std::function<void(const std::string&place)> make, mend;
    bool fails = true;   // false: what is wrong can be put right by the journal
  };
  const auto away = [](const std::string& place) { fs::rename(place, place + ".away"); };
  const auto back = [](const std::string& place) {
    fs::remove(place);
    fs::rename(place + ".away", place);
  };
  const Trouble troubles[] = {
      {"full disk",
       [](const std::string& place) {
         std::string block(1 << 20, 'b');
         const int fd = ::open((place + "/../ballast").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
         for (std::size_t n = block.size(); n > 0;)
           if (::write(fd, block.data(), n) <= 0) n /= 2;
         ::close(fd);
       },
       [](const std::string& place) { fs::remove(place + "/../ballast"); }},
      {"a file in its place", [&](const std::string& place) { away(place), writeRaw(place, ""); }, back},
      {"a symbolic link in its place", [&](const std::string& place) { away(place), fs::create_directory_symlink("/", place); },
       back},
      {"a place that takes nothing",
       [&](const std::string& place) { away(place), fs::create_symlink("/proc/self/nowhere", place); }, back},
      {"removed with all that is in it", [](const std::string& place) { fs::remove_all(place); }, {}, false},
      {"emptied",
       [](const std::string& place) {
         for (const auto& entry : fs::directory_iterator(place)) fs::remove(entry);
       },
       {},
       false},
  };
  for (const Trouble& trouble : troubles) {
    for (const bool begun : {false, true}) {
      TempFolder folder(TempFolder::Where::memory);
      const int status = inChild([&] {
        SCOPED_TRACE(std::string(trouble.name) + (begun ? ", journal begun" : ""));
        if (std::string(trouble.name) == "full disk") mountSmall(folder.path());
        const std::string place = folder / "recovery";
        fs::create_directory(place);
        std::string typed;
        const auto text = [&](const std::string& more) { return typed += more, more; };
        {
          Desk desk(place);
          if (begun) {
            type(desk.document, text("before "));
            desk.pass(4000);
            EXPECT_EQ(desk.journal->failure(), "");
          }
          trouble.make(place);
          type(desk.document, text(std::string(5000, 'm')));
          desk.pass(300);
          EXPECT_EQ(desk.journal->failure().empty(), !trouble.fails) << desk.journal->failure();
          type(desk.document, text("after "));
          desk.pass(300);
          EXPECT_EQ(desk.journal->failure().empty(), !trouble.fails) << "it lasts";
          if (trouble.mend) trouble.mend(place);
          desk.pass(6000);
          EXPECT_EQ(desk.journal->failure(), "");
          type(desk.document, text("end"));
          desk.pass(300);
        }
        const auto left = leftJournals(place);   // the newest; an older one may have come back with the folder
        ASSERT_GE(left.size(), 1u);
        const RecoveredText found = left[0].recover();
        EXPECT_EQ(found.error, "");
        EXPECT_EQ(bytesOf(found.text), typed);
        struct stat s {};
        EXPECT_EQ(::stat(place.c_str(), &s), 0);
        EXPECT_EQ(s.st_mode & 07777, 0700u);
      });
      EXPECT_TRUE(status == 0 || status == kSkipped) << trouble.name;
    }
  }
}

TEST(RecoveryFolder, J9_ThePlaceIsTheUsersAlone) {
  for (const unsigned mask : {0u, 022u, 0777u}) {
    for (const bool exists : {false, true}) {
      TempFolder folder;
      const std::string place = folder / "state/recovery";
      if (exists) {
        std::filesystem::create_directories(place);
        std::filesystem::permissions(place, std::filesystem::perms(0777));
      }
      EXPECT_EQ(inChild([&] {
                  if (mask == 0777 && !exists && ::geteuid() != 0) return;   // the folder above could not be entered
                  ::umask(mask);
                  Desk desk(place);
                  type(desk.document, "x");
                  desk.pass(200);
                  EXPECT_EQ(desk.journal->failure(), "");
                  struct stat status {};
                  EXPECT_EQ(::stat(place.c_str(), &status), 0);
                  EXPECT_EQ(status.st_mode & 07777, 0700u) << mask;
                  const auto entry = *std::filesystem::directory_iterator(place);
                  EXPECT_EQ(::stat(entry.path().c_str(), &status), 0);
                  EXPECT_EQ(status.st_mode & 07777 & ~0600u, 0u) << mask;
                }),
                0);
    }
  }
}

}   // namespace
