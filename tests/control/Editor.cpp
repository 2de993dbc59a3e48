// Editing without commands: selection, typing, new lines, blocks, several editors on one text.
#include "control/edit/Editor.h"

#include "tests/control/EditorFixture.h"

using text::ByteOffset;

TEST(Editor, RangesAreClippedAndReadBack) {
  struct Case {
    CmRange set, got;
  };
  EditorFixture f("abc\nde\n|");
  for (const Case& c : std::vector<Case>{{{0, 1, 1, 1}, {0, 1, 1, 1}},
                                         {{1, 1, 0, 1}, {1, 1, 0, 1}},
                                         {{-5, 2, 0, 99}, {0, 0, 0, 3}},
                                         {{0, -1, 99, 0}, {0, 0, 2, 0}},
                                         {{0, 1, 1, 9, true}, {0, 1, 1, 9, true}},
                                         {{2, 7, 0, 2, true}, {2, 7, 0, 2, true}}}) {
    f.editor.setRange(c.set);
    EXPECT_EQ(f.editor.range(false), c.got) << c.set.StartLineNo << ',' << c.set.StartColNo;
  }
  f.editor.setRange({1, 1, 0, 2});
  EXPECT_EQ(f.editor.range(true), (CmRange{0, 2, 1, 1}));
}

TEST(Editor, T7_TheEndOfALimitedUndoIsSaid) {
  EditorFixture t("|");
  t.model->document().setUndoLimit(2, SIZE_MAX);
  for (const char* text : {"a", "b", "c"}) t.editor.replaceSelection(QString::fromLatin1(text));
  EXPECT_TRUE(t.editor.undo());
  EXPECT_TRUE(t.host.notes.isEmpty());
  EXPECT_TRUE(t.editor.undo());
  EXPECT_EQ(t.shown(), "a|");
  ASSERT_EQ(t.host.notes.size(), 1);
  EXPECT_TRUE(t.host.notes[0].startsWith(QStringLiteral("Earlier changes cannot be undone")));
  EXPECT_FALSE(t.editor.undo());
}
