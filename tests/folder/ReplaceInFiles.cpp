// Replacing in many files: against sed, under kills, power cuts and failing calls, and the way back.
#include "folder/ReplaceInFiles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "folder/Walk.h"
#include "tests/support/files/CrashFileSystem.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/TempFolder.h"

namespace {

namespace fs = std::filesystem;
using namespace folder;
using namespace testing_files;

const text::SearchOptions kCase{.matchCase = true}, kRegex{.matchCase = true, .regex = true};

ReplacePlanned plan(const FindSource& source, const std::string& what, const std::string& by, const text::SearchOptions& options) {
  text::SearchControl control;
  FindRules rules;
  rules.threads = 1;   // the file systems of the sweeps know one at a time
  return planReplacing(FindText(what, options), {by, false}, rules, source, control);
}
ReplacePlanned plan(const std::string& root, const std::string& what, const std::string& by, const text::SearchOptions& options) {
  return plan(
      [&](const auto& give) {
        WalkOptions all;
        all.ignored = all.hidden = true;
        walk(root, all, [&](const std::string& path) { return give({path, {}}); });
      },
      what, by, options);
}

std::vector<Outcome> replaceAll(const ReplacePlanned& planned, const std::string& records) {
  std::string error;
  const auto record = ReplaceRecord::begin(records, "a by b", &error);
  std::vector<Outcome> outcomes;
  if (!record) return outcomes;
  for (const auto& file : planned.files) outcomes.push_back(replaceInFile(file, *record));
  record->finish();
  return outcomes;
}

void put(const fs::path& path, const std::string& bytes) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}
std::string get(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

}   // namespace

// M1
TEST(ReplaceInFiles, AgreesWithSedAndComesBack) {
  const TempFolder folder;
  std::mt19937 random(3);
  const auto pick = [&](const std::vector<std::string>& of) { return of[random() % of.size()]; };
  for (int i = 0; i < 80; ++i) {
    std::string text;
    for (int n = int(random() % 60); n > 0; --n)
      text += pick({"foo", "fo", "o", "bar_12", "bar_", " ", "\xc3\xa9", "\xff", "\r\n", "\n", "\n", "\t"});
    put(fs::path(folder.path()) / "here" / pick({"a b", "-x", "'q\"", "n\nl", "x\xfe", ".git"}) / std::to_string(i), text);
  }
  fs::copy(fs::path(folder.path()) / "here", fs::path(folder.path()) / "old", fs::copy_options::recursive);
  fs::copy(fs::path(folder.path()) / "here", fs::path(folder.path()) / "sed", fs::copy_options::recursive);
  const std::string at = "cd '" + folder.path() + "' && ";
  ASSERT_EQ(
      std::system((at + "find sed -type f -print0 | LC_ALL=C xargs -0 sed -i -E 's/foo/x_y/g; s/bar_([0-9])/\\1$/g'").c_str()), 0);
  const std::string records = folder / "state";
  for (const auto& [what, by] : {std::pair{"foo", "x_y"}, std::pair{"bar_(\\d)", "$1$$"}}) {
    const ReplacePlanned planned = plan(folder / "here", what, by, kRegex);
    EXPECT_EQ(planned.error, "");
    EXPECT_GT(planned.changes(), 20);
    for (const auto& one : replaceAll(planned, records)) EXPECT_EQ(one.trouble, "") << one.path;
    if (std::string(what) == "foo") {   // and all the way back
      const auto last = lastReplace(records);
      ASSERT_TRUE(last.has_value());
      EXPECT_FALSE(last->interrupted || interruptedReplace(records));
      EXPECT_EQ(last->about, "a by b");
      for (const auto& one : undoReplace(*last)) EXPECT_EQ(one.trouble, "");
      EXPECT_FALSE(lastReplace(records).has_value());
      EXPECT_EQ(std::system((at + "diff -r here old").c_str()), 0);
      replaceAll(plan(folder / "here", what, by, kRegex), records);
    }
  }
  EXPECT_EQ(std::system((at + "diff -r here sed").c_str()), 0);
}

TEST(ReplaceInFiles, WhatChangedSinceOrDoesNotFitStaysAndIsNamed) {
  const TempFolder folder;
  const text::FileFormat wide{text::Encoding::utf16le, false}, old{text::Encoding::windows1252, false};
  const std::string sentence = "a text of words with \xc3\xa9 in it, foo and foo\r\n";
  put(fs::path(folder.path()) / "f/1changed", "foo\n");
  put(fs::path(folder.path()) / "f/2wide", *text::encodeText(sentence, wide, nullptr));
  put(fs::path(folder.path()) / "f/3misfit", *text::encodeText(sentence, old, nullptr));
  put(fs::path(folder.path()) / "f/4moved", "foo foo\n");
  ReplacePlanned planned = plan(folder / "f", "foo", "\xe2\x82\xac\xd0\x96", kCase);
  ASSERT_EQ(planned.files.size(), 4u);
  EXPECT_EQ(planned.files[1].exchanges[1].column, 39);
  EXPECT_EQ(planned.files[1].exchanges[1].before + "|" + planned.files[1].exchanges[1].after,
            "a text of words with \xc3\xa9 in it, foo and |");
  planned.files[1].exchanges[0].ticked = false;
  put(fs::path(folder.path()) / "f/1changed", "foo.\n");
  put(fs::path(folder.path()) / "f/4moved", "oof foo\n");   // the same length
  const auto outcomes = replaceAll(planned, folder / "state");
  const std::string changed = "It has been changed since the search";
  EXPECT_EQ(outcomes[0].trouble, changed);
  EXPECT_EQ(outcomes[1].trouble, "");
  EXPECT_EQ(outcomes[2].trouble, "The character U+0416 does not fit into its encoding, Windows-1252");
  EXPECT_EQ(outcomes[3].trouble, changed);
  EXPECT_EQ(get(fs::path(folder.path()) / "f/2wide"),
            *text::encodeText("a text of words with \xc3\xa9 in it, foo and \xe2\x82\xac\xd0\x96\r\n", wide, nullptr));
  EXPECT_EQ(get(fs::path(folder.path()) / "f/3misfit"), *text::encodeText(sentence, old, nullptr));

  auto last = lastReplace(folder / "state");
  ASSERT_TRUE(last && last->files.size() == 1);
  EXPECT_EQ(last->files[0].side, Side::new_);
  put(fs::path(folder.path()) / "f/2wide", "of another hand");
  EXPECT_EQ(undoReplace(*last)[0].trouble, "It has been changed since the replacing");
  EXPECT_EQ(get(fs::path(folder.path()) / "f/2wide"), "of another hand");
  EXPECT_NE(planReplacing(
                FindText("(", kRegex), {}, {}, [](const auto&) {}, *std::make_unique<text::SearchControl>())
                .error,
            "");
  EXPECT_NE(plan(folder / "f", "foo", "$7", kRegex).error, "");
}

TEST(ReplaceInFiles, PlansWhatTheSearchFinds) {
  const TempFolder folder;
  put(fs::path(folder.path()) / "ends", "a\nb\n");
  EXPECT_EQ(plan(folder.path(), "$", ";", kRegex).changes(), 2);
  put(fs::path(folder.path()) / "ends", "a\nb\r\na\r\nb");
  const ReplacePlanned literal = plan(folder.path(), "a\nb", "$0\n.", kCase);   // over line ends of both kinds
  ASSERT_EQ(literal.changes(), 2);
  EXPECT_EQ(literal.files[0].exchanges[0].then, "$0\n.");
  EXPECT_EQ(literal.files[0].exchanges[1].then, "$0\r\n.");
  std::string line;
  for (int i = 0; i < 20000; ++i) line += "\xc3\xa9" + std::string(47, ' ') + "x";
  put(fs::path(folder.path()) / "ends", line);
  const auto began = std::chrono::steady_clock::now();
  const ReplacePlanned many = plan(folder.path(), "x", "y", kCase);
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(5));   // each column from the line's beginning: minutes
  ASSERT_EQ(many.changes(), 20000);
  EXPECT_EQ(many.files[0].exchanges.back().column, 20000 * 49);
}

// M1: no failing call, and nobody who looks meanwhile, loses an old text.
TEST(ReplaceInFiles, OldTextsOutlastFailingCallsLooksFromOutsideAndTheClock) {
  const FindSource files = [](const auto& give) {
    for (const char* path : {"/f/a", "/f/b"}) give({path, {}});
  };
  DiskState before, after;
  {
    CrashFileSystem disk(DiskState{{"/f/a", "foo"}, {"/f/b", "foo foo"}});
    const UseFileSystem use(disk);
    replaceAll(plan(files, "foo", "first", kCase), "/state/replaced");
    const std::string made = lastReplace("/state/replaced")->folder;
    for (const auto& [path, bytes] : disk.now())   // as if the clock had been years ahead
      before[path.starts_with(made) ? "/state/replaced/04000000000000000000-0" + path.substr(made.size()) : path] = bytes;
  }
  {
    CrashFileSystem disk(before);
    FaultyFileSystem watched(disk);
    const UseFileSystem use(watched);
    const ReplacePlanned planned = plan(files, "first", "second", kCase);
    watched.before([](const Call&) { lastReplace("/state/replaced"); });
    for (const auto& one : replaceAll(planned, "/state/replaced")) EXPECT_EQ(one.trouble, "");
    watched.clear();
    EXPECT_EQ(lastReplace("/state/replaced")->files.size(), 2u);   // and the older record is gone
    after = disk.now();
    EXPECT_EQ(after.at("/f/b"), "second second");
  }
  for (int n = 1, calls = 1; n <= calls; ++n) {
    SCOPED_TRACE(n);
    CrashFileSystem again(after);
    FaultyFileSystem faulty(again);
    const UseFileSystem use(faulty);
    if (n > 1) faulty.failCall(n - 1, n % 2 == 0 ? EIO : EMFILE);   // at first none
    if (const auto last = lastReplace("/state/replaced")) undoReplace(*last);
    if (n == 1) calls = 1 + int(faulty.log().size());
    faulty.clear();
    if (const auto last = lastReplace("/state/replaced")) {
      for (const auto& one : undoReplace(*last)) EXPECT_EQ(one.trouble, "");
    }
    EXPECT_EQ(again.now().at("/f/a"), "first");
    EXPECT_EQ(again.now().at("/f/b"), "first first");
    EXPECT_FALSE(lastReplace("/state/replaced").has_value());
  }
}

// M1, M2: killed before each call, each call failing, and the power cut there.
TEST(ReplaceInFiles, KilledOrFailingAnywhereEachFileIsOldOrNewAndItCanBeTold) {
  const DiskState before{{"/f/a", "one foo\n"}, {"/f/b", "foo\r\nfoo"}, {"/f/c", "\xff\xfe" + std::string("f\0o\0o\0", 6)}};
  const DiskState after{
      {"/f/a", "one longer\n"}, {"/f/b", "longer\r\nlonger"}, {"/f/c", "\xff\xfe" + std::string("l\0o\0n\0g\0e\0r\0", 12)}};
  text::setRecoveryFolder("/state/recovery");
  struct Reset {
    ~Reset() { text::setRecoveryFolder({}); }
  } reset;
  const FindSource files = [](const auto& give) {
    for (const char* path : {"/f/a", "/f/b", "/f/c"}) give({path, {}});
  };
  int olds = 0, news = 0;
  const auto check = [&](const DiskState& state, bool brought, const char* where) {
    SCOPED_TRACE(where);
    CrashFileSystem disk(state);
    const UseFileSystem use(disk);
    const auto last = lastReplace("/state/replaced");
    EXPECT_EQ(interruptedReplace("/state/replaced").has_value(), last && last->interrupted);
    for (const auto& [path, bytes] : before) {
      const bool isNew = state.at(path) == after.at(path);
      EXPECT_TRUE(isNew || state.at(path) == bytes) << path;
      (isNew ? news : olds) += 1;
      bool told = false;
      for (std::size_t i = 0; last && i < last->files.size(); ++i)
        if (last->files[i].path == path) told = last->files[i].side == (isNew ? Side::new_ : Side::old);
      EXPECT_TRUE(told || !isNew) << path;
    }
    if (!last || !brought) return;
    for (const auto& one : undoReplace(*last)) EXPECT_EQ(one.trouble, "");
    for (const auto& [path, bytes] : before) EXPECT_EQ(disk.now().at(path), bytes);
  };
  int calls = 0;
  {
    CrashFileSystem disk(before);
    FaultyFileSystem faulty(disk);
    const UseFileSystem use(faulty);
    const ReplacePlanned planned = plan(files, "foo", "longer", kCase);
    ASSERT_EQ(planned.files.size(), 3u);
    std::vector<DiskState> kills, cuts;
    calls = int(faulty.log().size());
    faulty.before([&](const Call&) {
      kills.push_back(disk.now());
      const auto states = disk.afterPowerCut(12);
      cuts.insert(cuts.end(), states.begin(), states.end());
    });
    for (const auto& one : replaceAll(planned, "/state/replaced")) EXPECT_EQ(one.trouble, "");
    faulty.clear();
    for (const auto& state : kills) check(state, true, "killed");
    for (const auto& state : cuts) check(state, true, "power cut");
    EXPECT_GT(kills.size(), 60u);
    EXPECT_TRUE(olds > 50 && news > 50);
    calls = int(kills.size());
  }
  for (int n = 1; n <= calls; ++n) {
    SCOPED_TRACE(n);
    CrashFileSystem disk(before);
    std::vector<Outcome> outcomes;
    {
      FaultyFileSystem faulty(disk);
      const UseFileSystem use(faulty);
      const ReplacePlanned planned = plan(files, "foo", "longer", kCase);
      faulty.clear();
      faulty.failCall(int(faulty.log().size()) + n, EIO, n % 2 == 0);
      outcomes = replaceAll(planned, "/state/replaced");
    }
    for (const auto& one : outcomes) {
      const bool isNew = disk.now().at(one.path) == after.at(one.path);
      EXPECT_TRUE(isNew || !one.trouble.empty()) << one.path;
    }
    check(disk.now(), true, "a call failed");
  }
}
