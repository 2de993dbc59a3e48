// The recovery journal over every fault of the disk and of the process that writes it.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <set>

#include "tests/support/files/CrashFileSystem.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/MachinePace.h"
#include "tests/support/files/TempFolder.h"
#include "tests/text/JournalDesk.h"
#include "text/file/FileCalls.h"

using namespace testing_files;
using namespace text;

namespace {

using namespace journal_desk;

TEST(Journal, J1_WhatWasTypedIsThereAfterAMoment) {
  TempFolder folder(TempFolder::Where::memory);
  std::mt19937 random(7);
  for (int round = 0; round < 20; ++round) {
    const std::string place = folder / std::to_string(round);
    std::string now;
    {
      Desk desk(place, "first\r\nsecond\nthird", {"/no/such/file", "file", {Encoding::utf16le, true}, {}});
      desk.writer.setLimits({64 << 20, round % 2 ? 2000 : 4 << 20});   // written anew again and again, or never
      for (int i = 0; i < 300; ++i) {
        const std::int64_t size = desk.document.snapshot().size().value;
        std::vector<Edit> edits;
        for (std::int64_t from = 0; from < size && edits.size() < 5;) {
          const std::int64_t begin = from + std::int64_t(random() % 9), end = begin + std::int64_t(random() % 4);
          if (end > size) break;
          edits.push_back(at(begin, end, std::string(random() % 7, char('a' + i % 26))));
          from = end + 1;
        }
        const auto what = random() % 12;
        if (what == 0) desk.document.undo();
        else if (what == 1) desk.document.redo();
        else if (what == 2 && i % 50 == 0) desk.document.reset(Snapshot("a\rb\r", LineMode::cr));
        else if (size == 0) type(desk.document, "again");
        else desk.document.apply(edits, {});
        if (random() % 3 == 0) desk.pass(std::int64_t(random() % 500));
      }
      desk.pass(250);
      now = bytesOf(desk.document.snapshot());
      EXPECT_TRUE(leftJournals(place).empty()) << "its owner lives";
    }
    const RecoveredText back = onlyOne(place);
    ASSERT_EQ(back.error, "");
    EXPECT_TRUE(back.whole);
    EXPECT_EQ(back.about.title, "file");
    EXPECT_EQ(back.about.format, (FileFormat{Encoding::utf16le, true}));
    ASSERT_EQ(bytesOf(back.text), now) << round;
  }
}

// However long the disk takes for its syncs and for new bases: what a crash leaves at any moment is a text of a moment ago.
TEST(Journal, J1_ADiskThatIsSlowToSyncKeepsNothingBack) {
  std::mt19937 random(11);
  for (const std::int64_t slowMs : full() ? std::vector<std::int64_t>{0, 300, 2500, 8000} : std::vector<std::int64_t>{0, 2500}) {
    SCOPED_TRACE(slowMs);
    TempFolder folder(TempFolder::Where::memory);
    const std::string place = folder / "recovery", copy = folder / "copy";
    Desk desk(place, "base\n", {"/no/such/file", "file", {}, {}}, slowMs);
    desk.writer.setLimits({64 << 20, 300});
    std::vector<std::pair<std::int64_t, std::string>> states{{desk.now, "base\n"}};   // when the text became what
    std::set<ino_t> files;
    std::int64_t anewUntil = 0;   // a text that was loaded anew is there when its base is
    for (int i = 0; i < 1500 && !HasFatalFailure(); ++i) {
      const std::string text = std::to_string(i) + ",";
      const bool anew = i % 700 == 699;
      if (anew) desk.document.reset(Snapshot(states.back().second.substr(500) + text));
      else type(desk.document, text);
      states.emplace_back(desk.now, bytesOf(desk.document.snapshot()));
      desk.pass(std::int64_t(random() % 120));
      if (anew) anewUntil = desk.now + 5 * slowMs + 500;
      if (i < 30 || random() % 4 != 0) continue;
      std::filesystem::remove_all(copy);
      std::filesystem::copy(place, copy);
      struct stat status {};
      ASSERT_EQ(::stat((place + "/" + desk.journal->fileName()).c_str(), &status), 0);
      files.insert(status.st_ino);
      const RecoveredText back = onlyOne(copy);
      ASSERT_EQ(back.error, "");
      const auto is = [&](const auto& state) { return state.second == bytesOf(back.text); };
      const auto known = std::find_if(states.begin(), states.end(), is);
      ASSERT_NE(known, states.end()) << "a text that never was";
      ASSERT_TRUE(known + 1 == states.end() || desk.now - (known + 1)->first <= 250 || desk.now < anewUntil) << "lost more";
    }
    EXPECT_GT(files.size(), 2u) << "it is replaced from time to time";
    EXPECT_EQ(desk.journal->failure(), "");
  }
}

class JournalPower : public testing::TestWithParam<std::int64_t> {};

TEST_P(JournalPower, J2_LossTakesFiveSecondsAtMost) {
  CrashFileSystem disk(DiskState{{"/home/user/.keep", ""}});
  FaultyFileSystem calls(disk);
  const UseFileSystem use(calls);
  std::vector<std::pair<std::int64_t, std::string>> states{{0, "base"}};   // when the text became what
  int looked = 0;
  Desk desk("/home/user/recovery", "base", {"/home/user/text", "text", {}, {}}, GetParam());
  desk.writer.setLimits({64 << 20, 600});
  const std::int64_t firstEdit = desk.now;
  const auto look = [&] {
    for (const DiskState& after : disk.afterPowerCut(40)) {
      ++looked;
      CrashFileSystem next(after);
      const UseFileSystem rebooted(next);
      std::optional<std::string> best;
      for (const auto& left : leftJournals("/home/user/recovery")) {
        const RecoveredText back = left.recover();
        if (!back.error.empty() || !back.baseWhole) continue;
        const std::string text = bytesOf(back.text);
        if (!best || text.size() > best->size()) best = text;
      }
      if (!best) {
        ASSERT_LE(desk.now - firstEdit, 5000) << "no journal";
        continue;
      }
      const auto known = std::find_if(states.begin(), states.end(), [&](const auto& s) { return s.second == *best; });
      ASSERT_NE(known, states.end()) << "a text that never was: " << *best;
      ASSERT_TRUE(known + 1 == states.end() || desk.now - (known + 1)->first <= 5000) << "lost more";
    }
  };
  calls.before([&](const Call& call) {
    if (!testing::Test::HasFatalFailure() && (call.name == "write" || call.name == "sync" || call.name == "renameAt")) look();
  });
  for (int i = 0; i < 60 && !HasFatalFailure(); ++i) {
    type(desk.document, "line " + std::to_string(i) + "\n");
    states.emplace_back(desk.now, bytesOf(desk.document.snapshot()));
    for (int step = 0; step < 5; ++step) {
      desk.pass(i % 4 == 0 ? 200 : 60);
      if (step % 2 == 0) look();
    }
  }
  calls.clear();
  EXPECT_GT(looked, 1000);
}

INSTANTIATE_TEST_SUITE_P(Slow, JournalPower,
                         testing::ValuesIn(full() ? std::vector<std::int64_t>{0, 30, 50, 120, 400, 900}
                                                  : std::vector<std::int64_t>{0, 400}));

// A small journal with changes of every shape, and every text that it went through.
struct Sample {
  Sample() {
    TempFolder folder(TempFolder::Where::memory);
    {
      Desk desk(folder.path(), "one\ntwo\nthree", {"/tmp/none.txt", "none.txt", {}, FileStamp{}});
      const auto note = [&] { texts.insert(bytesOf(desk.document.snapshot())); };
      note();
      type(desk.document, "!");
      note();
      desk.pass(300);
      const std::vector<Edit> several{at(0, 1, "O"), at(4, 4, "<"), at(7, 8, "\r\n")};
      desk.document.apply(several, {});
      note();
      desk.document.undo();
      note();
      desk.pass(300);
      desk.journal->setAbout({"/tmp/other.txt", "other.txt", {Encoding::latin1, false}, {}});
      desk.document.apply(at(2, 9, std::string(40, '\0')), {});
      note();
      desk.pass(300);
      last = bytesOf(desk.document.snapshot());
    }
    name = folder.path() + "/" + folder.names().at(0);
    bytes = readRaw(name);
  }
  std::set<std::string> texts;
  std::string name, bytes, last;
};

TEST(Journal, J3_DamageAnywhereStopsTheReadingAndNeverGivesAWrongText) {
  const Sample sample;
  TempFolder folder(TempFolder::Where::memory);
  const std::string path = folder / "x.journal";
  int whole = 0, partly = 0, none = 0;
  const auto look = [&](const std::string& bytes, bool altered) {
    writeRaw(path, bytes);
    const auto left = LeftText::claim(folder.path(), "x.journal");
    ASSERT_EQ(left.has_value(), !bytes.empty());
    if (bytes.empty()) return;
    const RecoveredText back = left->recover();
    const std::string text = bytesOf(back.text);
    EXPECT_LE(back.read, back.size);
    EXPECT_EQ(back.size, std::int64_t(bytes.size()));
    if (!back.error.empty()) {
      ++none;
      EXPECT_EQ(text, "");
    } else if (!back.baseWhole) {   // a beginning of the base
      ++partly;
      EXPECT_TRUE(std::string("one\ntwo\nthree").starts_with(text));
    } else {
      ++partly;
      EXPECT_TRUE(sample.texts.count(text)) << text;
      EXPECT_FALSE(altered && back.whole);
      whole += back.whole && text == sample.last;
    }
  };
  look(sample.bytes, false);
  EXPECT_EQ(whole, 1);
  for (std::size_t n = 0; n < sample.bytes.size(); ++n) {   // cut at every byte
    look(sample.bytes.substr(0, n), false);
    if (n == 0) continue;
    // How much came back is said exactly: with so many bytes the same comes back, with one less not.
    const auto read = [&](std::size_t size) {
      writeRaw(path, sample.bytes.substr(0, size));
      return LeftText::claim(folder.path(), "x.journal")->recover();
    };
    const RecoveredText back = read(n);
    if (!back.error.empty() || !back.baseWhole) continue;
    const RecoveredText good = read(std::size_t(back.read)), less = read(std::size_t(back.read) - 1);
    EXPECT_EQ(bytesOf(good.text), bytesOf(back.text));
    EXPECT_EQ(good.changes, back.changes);
    EXPECT_LT(less.read, back.read);
  }
  EXPECT_EQ(whole, 1);
  for (std::size_t n = 0; n < sample.bytes.size(); ++n)
    for (int bit = 0; bit < 8; ++bit) {   // every bit flipped
      std::string bytes = sample.bytes;
      bytes[n] = char(bytes[n] ^ 1 << bit);
      look(bytes, true);
    }
  for (std::size_t n = 0; n + 1 < sample.bytes.size(); ++n) {   // zeroed from anywhere
    std::string bytes = sample.bytes;
    std::fill(bytes.begin() + std::ptrdiff_t(n), bytes.end(), '\0');
    look(bytes, bytes != sample.bytes);
    look(sample.bytes.substr(0, n) + sample.bytes.substr(n + 1), true);   // a byte gone
  }
  look(sample.bytes + sample.bytes, true);
  look(sample.bytes + std::string(4096, '\0'), true);
  EXPECT_EQ(whole, 1) << "an altered journal counted as whole";
  EXPECT_GT(partly, 1000);
  EXPECT_GT(none, 1000);
}

TEST(Journal, J4_GoesOnlyAfterASaveOrADiscard) {
  TempFolder folder(TempFolder::Where::memory);
  const std::string place = folder / "recovery", file = folder / "text";
  writeRaw(file, "on disk");
  Desk desk(place, "on disk", {file, "text", {}, stampOf(file, true)});
  EXPECT_FALSE(std::filesystem::exists(place)) << "nothing is written before the first change";
  type(desk.document, "1");
  desk.pass(200);
  const auto count = [&] {
    return std::filesystem::exists(place)
               ? std::distance(std::filesystem::directory_iterator(place), std::filesystem::directory_iterator())
               : 0;
  };
  EXPECT_EQ(count(), 1);
  writeRaw(file, "others");
  desk.pass(20'000);
  std::filesystem::remove(file);
  desk.pass(20'000);
  desk.document.undo();
  desk.pass(20'000);
  EXPECT_EQ(count(), 1);
  EXPECT_EQ(desk.journal->failure(), "");
  {
    SCOPED_TRACE("J5");
    desk.journal->saved({file, "text", {}, {}});
    desk.pass(200);
    EXPECT_EQ(count(), 0);
    type(desk.document, "2");
    desk.pass(200);
    EXPECT_EQ(count(), 1);
    desk.journal->discard();
    type(desk.document, "3");   // at once a new one, whose base has what went before
    desk.pass(200);
    EXPECT_EQ(count(), 1);
  }
  desk.journal.reset();
  desk.pass(200);
  EXPECT_EQ(bytesOf(onlyOne(place).text), "on disk23");
  EXPECT_EQ(count(), 1) << "reading removes nothing";
  auto left = leftJournals(place);
  ASSERT_EQ(left.size(), 1u);
  EXPECT_EQ(left[0].remove(), 0);
  EXPECT_EQ(count(), 0);
}

TEST(Journal, J2_WhatWaitsIsNotDurable) {
  TempFolder folder(TempFolder::Where::memory);
  Desk desk(folder / "recovery", "base");
  for (const char* more : {"1", "2"}) {
    type(desk.document, more);
    EXPECT_FALSE(desk.journal->durable());
    desk.pass(10'000);
    EXPECT_TRUE(desk.journal->durable());
  }
}

TEST(Journal, J6_ALivingOwnerIsKnownByItsLock) {
  TempFolder folder(TempFolder::Where::memory);
  int toChild[2], toParent[2];
  ASSERT_EQ(::pipe(toChild) + ::pipe(toParent), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    Desk desk(folder.path());
    type(desk.document, "x");
    desk.pass(200);
    char c = 0;
    if (::write(toParent[1], &c, 1) != 1 || ::read(toChild[0], &c, 1) != 1) ::_exit(1);
    ::kill(::getpid(), SIGKILL);
  }
  char c = 0;
  ASSERT_EQ(::read(toParent[0], &c, 1), 1);
  EXPECT_TRUE(leftJournals(folder.path()).empty());
  ASSERT_EQ(::write(toChild[1], &c, 1), 1);
  int status = 0;
  ::waitpid(child, &status, 0);
  for (const int end : {toChild[0], toChild[1], toParent[0], toParent[1]}) ::close(end);
  const auto first = leftJournals(folder.path());
  ASSERT_EQ(first.size(), 1u);
  EXPECT_EQ(bytesOf(first[0].recover().text), "x");
  EXPECT_TRUE(leftJournals(folder.path()).empty()) << "who found it first has it";
}

TEST(Journal, ALargeTextIsWrittenOnlyWhenItsFileIsChangedByOthers) {
  TempFolder folder(TempFolder::Where::memory);
  const std::string place = folder / "recovery", file = folder / "large";
  const std::string base(100'000, 'x');
  writeRaw(file, base);
  const auto size = [&] { return std::filesystem::file_size(*std::filesystem::directory_iterator(place)); };
  Desk desk(place, base, {file, "large", {}, stampOf(file, true)});
  desk.writer.setLimits({50'000, 4 << 20});
  type(desk.document, "1");
  desk.pass(200);
  EXPECT_LT(size(), 1000u);
  const auto recovered = [&] {   // as another program would see it, were we gone
    const std::string copy = folder / "copy";
    std::filesystem::create_directories(copy);
    writeRaw(copy + "/y.journal", readRaw(std::filesystem::directory_iterator(place)->path()));
    return onlyOne(copy);
  };
  EXPECT_EQ(bytesOf(recovered().text), base + "1");
  files::leaveTickOf(stampOf(file, false).status);
  writeRaw(file, std::string(100'000, 'y'));
  EXPECT_NE(recovered().error, "");
  desk.pass(5000);
  EXPECT_GT(size(), 100'000u);
  type(desk.document, "2");
  desk.pass(200);
  EXPECT_EQ(bytesOf(recovered().text), base + "12");
}

TEST(Journal, ManySpansAndLongOnesAreCutIntoRecords) {
  for (const std::int64_t most : {std::int64_t(64 << 20), std::int64_t(0)}) {
    TempFolder folder(TempFolder::Where::memory);
    std::string now;
    {
      Desk desk(folder.path(), std::string(600'000, '.'));
      desk.writer.setLimits({64 << 20, most});
      std::vector<Edit> edits;
      for (std::int64_t i = 0; i < 200'000; ++i) edits.push_back(at(3 * i, 3 * i + 1, "ab"));
      ASSERT_TRUE(desk.document.apply(edits, {}));
      desk.document.apply(at(5, 100, std::string(3'500'000, 'L')), {});
      now = bytesOf(desk.document.snapshot());
      desk.pass(200);
    }
    const RecoveredText back = onlyOne(folder.path());
    EXPECT_EQ(back.error, "");
    EXPECT_EQ(back.changes, most > 0 ? 2 : 0) << "written anew when the records outgrow the text";
    EXPECT_TRUE(back.size < 5'000'000 || most > 0) << back.size;
    EXPECT_TRUE(bytesOf(back.text) == now);
  }
}

}   // namespace
