// What a file keeps when it goes through the edit control, and what happens to a text while it is being saved.
#include <gtest/gtest.h>

#include "control/CodeMax.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/TempFolder.h"

using namespace testing_files;

namespace {

TEST(Save, T2_T3_T4_T5_AnEditChangesItsOwnBytesOnly) {
  const std::string zero(1, '\0');
  struct Row {
    const char* name;
    std::string before;
    qint64 line, column;   // where a line break is typed
    std::string after;
  };
  const std::string mixed = "one\r\ntwo\nthr" + zero + "ee\rx\r\nlast\xFF";
  for (const Row& row : std::vector<Row>{
           {"in a line with CR LF", mixed, 0, 1, "o\r\nne\r\ntwo\nthr" + zero + "ee\rx\r\nlast\xFF"},
           {"in a line with LF", mixed, 1, 1, "one\r\nt\nwo\nthr" + zero + "ee\rx\r\nlast\xFF"},
           {"in the last line", mixed, 3, 4, "one\r\ntwo\nthr" + zero + "ee\rx\r\nlast\r\n\xFF"},
           {"behind the only break", "a\r\n", 1, 0, "a\r\n\r\n"},
       }) {
    const TempFolder folder;
    const std::string file = folder / "file";
    writeRaw(file, row.before);
    CodeMax control;
    ASSERT_EQ(control.OpenFile(toQString(file)), QString());
    control.setAutoIndentMode(0);
    control.SetSel({row.line, row.column, row.line, row.column, false});
    ASSERT_TRUE(control.editor().newLine());
    ASSERT_TRUE(control.SaveFile(toQString(file)).ok()) << row.name;
    EXPECT_EQ(readRaw(file), row.after) << row.name;
    ASSERT_TRUE(control.editor().undo());
    ASSERT_TRUE(control.SaveFile(toQString(file)).ok()) << row.name;
    EXPECT_EQ(readRaw(file), row.before) << row.name << ": undone";
  }
}

}   // namespace
