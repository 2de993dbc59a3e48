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

struct TypeCase {
  const char *name, *before, *typed, *after;
  bool overtype = false, expand = false;
};

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

TEST(EditorTyping, PutsTextWhereItBelongs) {
  for (const TypeCase& c : std::vector<TypeCase>{
           {"plain", "a|b", "x", "ax|b"},
           {"over selection", "a@bc|d", "x", "ax|d"},
           {"overtype", "a|bc", "x", "ax|c", true},
           {"overtype whole character", "|e\xCC\x81z", "x", "x|z", true},
           {"overtype stops at line end", "ab|\nc", "xy", "abxy|\nc", true},
           {"overtype before CR LF", "a|b\r\nc", "xyz", "axyz|\r\nc", true},
           {"tab", "a|", "\t", "a\t|"},
           {"tab as blanks", "a|b", "\t", "a   |b", false, true},
           {"tab as blanks behind a tab", "\ta|b", "\t", "\ta   |b", false, true},
           {"tab as blanks behind a wide character", "世|b", "\t", "世  |b", false, true},
           {"column without width", "a#b\nc|d", "x", "ax#b\ncx|d"},
           {"column replaces", "a#bc\nd|ef", "x", "ax#bc\ndx|ef"},
           {"column with width", "a#bc\nde|f", "x", "ax#c\ndx|f"},
           {"column past line ends", "abcd#\ne···|", "x", "abcdx#\ne   x|"},
           {"column over a short line", "abc#d\n\nabc|d", "x", "abcx#d\n   x\nabcx|d"},
           {"column inside a tab", "ab#cdef\n\t\nab|cdef", "x", "abx#cdef\n  x  \nabx|cdef"},
           {"column with wide characters", "ab#c\n世|x", "y", "aby#c\n世y|x"},
           {"column keeps a wide character that it cuts", "a#bc\n世x\na|bc", "y", "ay#bc\n世yx\nay|bc"},
           {"column overtype", "a#bc\nd|ef", "x", "ax#c\ndx|f", true},
       }) {
    EditorFixture f(c.before);
    f.editor.overtype = c.overtype;
    f.options->expandTabs = c.expand;
    EXPECT_TRUE(f.editor.typeText(QString::fromUtf8(c.typed)));
    EXPECT_EQ(f.shown(), c.after) << c.name;
    EXPECT_TRUE(f.editor.undo());
    EXPECT_EQ(f.shown(), c.before) << c.name << ": undo";
  }
}
