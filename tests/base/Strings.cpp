#include "base/Strings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include "base/dialog/FileFilter.h"
#include "tests/support/Text.h"

TEST(Strings, ReplaceAllResumesAtTheReplacement) {
  struct Case {
    const char *text, *find, *replacement, *expected;
  };
  for (const Case& c : {Case{"1,,,2", ",,", ",", "1,2"}, Case{"1,,,,,,2", ",,", ",", "1,2"}, Case{"abab", "ab", "", ""},
                        Case{"aabb", "ab", "", "ab"},       // never looks back before the replacement
                        Case{"xxyz", "xy", "y", "xyz"},     // the same: x + "yz" is not joined
                        Case{"abcbc", "abc", "a", "a"},     // a hit that begins in the replacement
                        Case{"aXXX", "aX", "Xa", "XXXa"},   // growing out of the replacement at each step
                        Case{"abc", "", "x", "abc"}, Case{"", "a", "b", ""}, Case{"aaa", "a", "aa", "aaaaaa"},
                        Case{"a.b", ".", ".", "a.b"}, Case{"Abc", "a", "x", "Abc"}, Case{"abc", "abcd", "", "abc"}}) {
    QString text = q(c.text);
    ReplaceAll(text, q(c.find), q(c.replacement));
    EXPECT_EQ(s(text), c.expected) << c.text << " / " << c.find << " / " << c.replacement;
  }
}

TEST(Strings, PathsAreSplitAtTheirOwnSeparator) {
  struct Case {
    const char *path, *title, *dir, *ext;
  };
  for (const Case& c : {
           Case{"/home/a/top.v", "top.v", "/home/a", "v"}, Case{"C:\\src\\top.vhd", "top.vhd", "C:\\src", "vhd"},
           Case{"top.V", "top.V", "", "V"}, Case{"/a.b/Makefile", "Makefile", "/a.b", ""},
           Case{"a.b\\Makefile", "Makefile", "a.b", ""}, Case{"/x/a.tar.gz", "a.tar.gz", "/x", "gz"},
           Case{"/x/name.", "name.", "/x", ""}, Case{"/x/.profile", ".profile", "/x", "profile"},
           Case{"Untitled 1", "Untitled 1", "", ""}, Case{"", "", "", ""}, Case{"/x/", "", "/x", ""},
#ifndef Q_OS_WIN
           Case{"/x/odd\\name.v", "odd\\name.v", "/x", "v"},   // a backslash is a letter like any other here
#endif
       }) {
    EXPECT_EQ(s(GetFileTitle(q(c.path))), c.title) << c.path;
    EXPECT_EQ(s(GetFileDir(q(c.path))), c.dir) << c.path;
    EXPECT_EQ(s(GetFileExt(q(c.path))), c.ext) << c.path;
  }
}

TEST(Strings, JoinPathFindsPartsInAnotherCase) {
  const QTemporaryDir temporary;
  QDir dir(temporary.path());
  ASSERT_TRUE(dir.mkpath(q("Samples/Deep")));
  ASSERT_TRUE(dir.mkpath(q("twice")) && dir.mkpath(q("TWICE")));
  const QString top = temporary.path();
  EXPECT_EQ(joinPath(top, q("samples/deep/none.v")), top + q("/Samples/Deep/none.v"));
  EXPECT_EQ(joinPath(top, q("Samples")), top + q("/Samples"));
  EXPECT_EQ(joinPath(top, q("twice")), top + q("/twice"));   // the exact name comes first
  EXPECT_EQ(joinPath(top, q("TWICE")), top + q("/TWICE"));
  EXPECT_EQ(joinPath(top + q("/"), q("/nowhere/x")), top + q("/nowhere/x"));
  EXPECT_EQ(joinPath(QString(), q("x")), q("x"));
  EXPECT_EQ(joinPath(q("/"), q("nowhere")), q("/nowhere"));
}

TEST(Strings, LinesOfLists) {
  EXPECT_EQ(s(toCrLf(q("a\nb\rc\r\nd\n\r\ne"))), "a\r\nb\r\nc\r\nd\r\n\r\ne");
  EXPECT_EQ(splitCrLf(q("a\r\n\r\nb\r\n")), (QStringList{q("a"), q(""), q("b")}));
  EXPECT_EQ(splitCrLf(q("a\r\nb")), (QStringList{q("a"), q("b")}));
  EXPECT_EQ(splitCrLf(q("a\nb\r\n")), (QStringList{q("a\nb")}));
  EXPECT_EQ(splitCrLf(q("\r\n")), (QStringList{q("")}));
  EXPECT_TRUE(splitCrLf(QString()).isEmpty());
}

TEST(Strings, H1_NothingInvisibleIsDisplayed) {
  EXPECT_EQ(s(plainForDisplay(q("a\tb\r\nc\x1B[0m \xE2\x80\xAEgpj.\xE2\x80\x8B"))), "a\\tb\\r\\nc<U+001B>[0m <U+202E>gpj.<U+200B>");
  EXPECT_EQ(s(plainForDisplay(q("<b>%1&amp;</b> \xC3\xA4 \xF0\x9F\x98\x80"))), "<b>%1&amp;</b> \xC3\xA4 \xF0\x9F\x98\x80");
  EXPECT_EQ(s(plainForDisplay(QString(QChar(0xDC80 + 0x7F)))), "\\xff");   // a byte that is not UTF-8
  EXPECT_EQ(s(plainForDisplay(q("12345"), 5)), "12345");
  EXPECT_EQ(s(plainForDisplay(q("123456"), 5)), "1234\xE2\x80\xA6");
  EXPECT_EQ(s(plainForDisplay(q("123\xF0\x9F\x98\x80xx"), 5)), "123\xE2\x80\xA6");   // no half character
  EXPECT_EQ(s(nameForDisplay(q("a b.v"))), "a b.v");
  EXPECT_EQ(s(nameForDisplay(q("a.v "))), "\"a.v \"");
  EXPECT_LE(plainForDisplay(QString(10'000, QChar(1)), 100).size(), 100);
}

TEST(StringsFileFilter, EntriesOfTheFileDialog) {
  EXPECT_EQ(dialogFilters(q("(*.*)|*.*|Verilog (*.v;*.vh)|*.v;*.vh|VHDL (*.vhd)|*.vhd|")),
            (QStringList{q("All files (*)"), q("Verilog (*.v *.vh)"), q("VHDL (*.vhd)")}));
  EXPECT_EQ(dialogFilters(q("*.ini")), QStringList{q("Files (*.ini)")});
  EXPECT_EQ(dialogFilters(q("Plain ()||")), QStringList{q("Plain (*)")});
  // Each entry leads back to its own index, whatever the names are.
  EXPECT_EQ(dialogFilters(q("A (*.a)|*.a|A (*.a)|*.a|")), (QStringList{q("A (*.a)"), q("A - 2 (*.a)")}));
  EXPECT_EQ(dialogFilters(q("C (old) (*.c)|*.c|Odd (*.\xC3\xA4;*.(x))|*.\xC3\xA4;*.(x)|")),
            (QStringList{q("C (old) (*.c)"), q("Odd (*.? *.?x?)")}));
  EXPECT_TRUE(dialogFilters(QString()).isEmpty());
}
