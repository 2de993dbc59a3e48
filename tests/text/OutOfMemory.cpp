// Out of memory at the first, second, third ... allocation of each operation leaves the old state whole (T10).
#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "tests/support/files/AllocationFault.h"
#include "text/store/Document.h"
#include "text/store/Tree.h"

namespace {

using namespace text;

ByteRange range(std::int64_t begin, std::int64_t end) { return {ByteOffset(begin), ByteOffset(end)}; }

// A document with some history, in tiny nodes so that every operation has to allocate at many places.
struct Scene {
  Document document;
  MarkId left, right;
  int heard = 0;
  std::shared_ptr<void> handle;

  Scene() {
    SnapshotBuilder builder(LineMode::lf, TreeShape{4, 8, 32, 4});
    builder.append("The quick brown fox\njumps over\r\nthe lazy dog.\n");
    document.reset(builder.finish());
    document.apply(Edit{range(4, 9), "slow"}, {});
    document.apply(Edit{range(0, 0), "1"}, {});
    document.markSaved();
    document.apply(Edit{range(1, 1), "2"}, {}, Join::typing);
    left = document.addMark(ByteOffset(10), Bias::left);
    right = document.addMark(ByteOffset(20));
    handle = document.subscribe([this](const Change&) { ++heard; });
  }
  std::string state() const {
    const auto& d = document;
    return d.snapshot().bytes() + "|" + std::to_string(d.revision()) + "|" + std::to_string(d.canUndo()) +
           std::to_string(d.canRedo()) + std::to_string(d.modified()) + "|" + std::to_string(d.markAt(left).value) + "," +
           std::to_string(d.markAt(right).value) + "|" + std::to_string(heard);
  }
};

std::vector<Edit> manyEdits(const Document& d) {
  std::vector<Edit> edits;
  for (std::int64_t at = 0; at + 3 < d.snapshot().size().value; at += 4) edits.push_back({range(at, at + 2), "+\n+"});
  return edits;
}

TEST(OutOfMemory, LeavesTheOldStateWhole) {
  struct Operation {
    const char* name;
    std::function<void(Document&)> prepare, run;
  };
  const auto none = [](Document&) {};
  const auto some = [](Document& d) { d.apply(Edit{range(5, 12), "some longer text that needs a block of its own"}, {}); };
  // clang-format off
  const Operation operations[] = {
      {"an edit", none, some},
      {"typing that joins", none, [](Document& d) { d.apply(Edit{range(2, 2), "x"}, {}, Join::typing); }},
      {"many edits", none, [](Document& d) { d.apply(manyEdits(d), {}); }},
      {"undo", some, [](Document& d) { d.undo(); }},
      {"redo", [&](Document& d) { some(d); d.undo(); }, [](Document& d) { d.redo(); }},
      {"undo of many edits", [](Document& d) { d.apply(manyEdits(d), {}); }, [](Document& d) { d.undo(); }},
      {"the first edit of a group", [](Document& d) { d.beginGroup(); }, some},
      {"a later edit of a group", [&](Document& d) { d.beginGroup(); some(d); d.apply(Edit{range(30, 31), ""}, {}); },
       [](Document& d) { d.apply(Edit{range(3, 9), "text"}, {}); }},
      {"an edit after many in a group", [](Document& d) { d.beginGroup(); d.apply(manyEdits(d), {}); }, some},
      {"roll back", [&](Document& d) { d.beginGroup(); some(d); d.apply(Edit{range(3, 9), "text"}, {}); d.apply(manyEdits(d), {}); },
       [](Document& d) { d.rollbackGroup(); }},
      {"exchange", none, [](Document& d) { d.exchange(Snapshot("another text"), {}); }},
      {"a mark", none, [](Document& d) { d.addMark(ByteOffset(3)); }},
  };
  // clang-format on
  for (const auto& operation : operations) {
    SCOPED_TRACE(operation.name);
    std::string done;
    {
      Scene scene;
      operation.prepare(scene.document);
      operation.run(scene.document);
      done = scene.state();
    }
    long n = 1;
    for (;; ++n) {
      SCOPED_TRACE("allocation " + std::to_string(n));
      Scene scene;
      auto& d = scene.document;
      operation.prepare(d);
      const auto before = scene.state();
      bool thrown = false, happened = false;
      {
        const testing_files::AllocationFault fail(n);
        try {
          operation.run(d);
        } catch (const std::bad_alloc&) { thrown = true; }
        happened = fail.hit();
      }
      ASSERT_EQ(thrown, happened);
      d.checkInvariants();
      if (!happened) {
        ASSERT_EQ(scene.state(), done);
        break;
      }
      ASSERT_EQ(scene.state(), before);
      operation.run(d);   // memory is there again
      d.checkInvariants();
      ASSERT_EQ(scene.state(), done);
      for (int i = 0; i < 3; ++i) d.endGroup();
      while (d.undo()) {}
      ASSERT_EQ(d.snapshot().bytes(), "The quick brown fox\njumps over\r\nthe lazy dog.\n");
    }
    EXPECT_GT(n, 1) << "the operation allocates";
  }
}

TEST(OutOfMemory, EndingAGroupNeverFails) {
  for (long n = 1; n < 40; ++n) {
    Scene scene;
    auto& d = scene.document;
    const auto before = d.snapshot().bytes();
    d.beginGroup();
    d.apply(manyEdits(d), {});
    for (int i = 0; i < 5; ++i) d.apply(Edit{range(i * 9, i * 9 + 3), "<>"}, {});
    const auto after = d.snapshot().bytes();
    {
      const testing_files::AllocationFault fail(n, true);
      d.endGroup();
    }
    d.checkInvariants();
    ASSERT_TRUE(d.undo());
    ASSERT_EQ(d.snapshot().bytes(), before);
    ASSERT_TRUE(d.redo());
    ASSERT_EQ(d.snapshot().bytes(), after);
  }
}

}   // namespace
