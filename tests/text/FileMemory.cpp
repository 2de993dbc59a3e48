// T10: running out of memory while loading or saving gives a message and changes nothing.
#include <gtest/gtest.h>

#include "tests/support/files/AllocationFault.h"
#include "tests/support/files/TempFolder.h"
#include "text/file/FileIo.h"

using namespace testing_files;

namespace {

// Runs `action` with its first, second, third ... allocation failing until one run needs fewer. Counts the failed runs.
template <class Action, class Check>
int eachAllocation(bool forEver, Action action, Check check) {
  for (long n = 1;; ++n) {
    bool hit = false;
    auto outcome = [&] {
      const AllocationFault fault(n, forEver);
      auto result = action();
      hit = fault.hit();
      return result;
    }();
    if (!hit) return static_cast<int>(n) - 1;
    SCOPED_TRACE("allocation " + std::to_string(n) + (forEver ? " and all behind it" : ""));
    check(outcome);
    if (::testing::Test::HasFailure()) return 0;
  }
}

TEST(FileMemory, T10_LoadingAndSavingSurviveFailedAllocations) {
  TempFolder folder{TempFolder::Where::memory};
  const std::string path = folder / "a file with a longer name than fits into a short string";
  std::string utf8, utf16 = "\xff\xfe";
  for (int i = 0; i < 150'000; ++i) utf8 += "line \xc3\xa4\n", utf16 += std::string("a\0\n\0", 4);
  const std::string cr = "one\rtwo\r";
  for (const auto& [hardLink, bytes] : {std::pair(false, utf8), {false, utf16}, {false, cr}, {true, utf8}, {true, utf16}}) {
    writeRaw(path, bytes);
    if (hardLink && folder.names().size() == 1) std::filesystem::create_hard_link(path, folder / "second");
    const auto names = folder.names();
    const auto whole = text::loadFile(path);
    ASSERT_EQ(whole.error, "");
    const text::SaveOptions options{whole.format, whole.stamp};
    const text::Snapshot fresh("other \xc3\xa4 text\n" + std::string(400'000, 'n'));
    const auto freshBytes = text::encodeText(fresh.bytes(), whole.format, nullptr);
    for (const bool forEver : {false, true}) {
      int refused = 0;
      eachAllocation(
          forEver, [&] { return text::loadFile(path); },
          [&](const text::LoadedFile& file) {
            EXPECT_TRUE(file.error == "Out of memory" || file.error.empty());
            EXPECT_EQ(file.text.size(), file.error.empty() ? whole.text.size() : text::ByteOffset(0));
            refused += !file.error.empty();
          });
      EXPECT_GT(refused, 3);
      refused = 0;
      eachAllocation(
          forEver, [&] { return text::saveFile(path, fresh, options); },
          [&](const text::SaveResult& result) {
            EXPECT_TRUE(result.error == "Out of memory" || result.ok()) << result.error;
            EXPECT_TRUE(readRaw(path) == (result.ok() ? *freshBytes : bytes));
            EXPECT_EQ(folder.names(), names);
            refused += !result.ok();
            writeRaw(path, bytes);
          });
      EXPECT_GT(refused, 3);
      writeRaw(path, bytes);
    }
  }
}

}   // namespace
