#include "control/edit/TextModel.h"

#include <gtest/gtest.h>

#include <random>

#include "control/code/LanguageTable.h"
#include "text/line/Chars.h"

using text::ByteOffset;
using text::LineNo;

namespace {

void replace(TextModel& model, std::int64_t begin, std::int64_t end, std::string with) {
  model.document().apply(text::Edit{{ByteOffset(begin), ByteOffset(end)}, std::move(with)}, {});
}

std::string marked(const TextModel& model) {   // bookmarks as "1 3"
  std::string result;
  for (const LineNo line : model.bookmarks()) result += (result.empty() ? "" : " ") + std::to_string(line.value);
  return result;
}

}   // namespace

TEST(TextModelStrings, BorderIsExactBothWays) {
  std::mt19937 random(7);
  const std::string_view trouble("a\0\x80\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80\xED\xFF\n\xEF\xBB\xBF\xBD\xA0\xC0", 21);
  for (int round = 0; round < 3000; ++round) {
    std::string bytes;
    for (auto n = random() % 12; n > 0; --n) bytes += trouble[random() % trouble.size()];
    const QString text = toQString(bytes);
    ASSERT_EQ(fromQString(text), bytes);
    ASSERT_EQ(text.size(), text::columnOf(bytes, static_cast<std::int64_t>(bytes.size())).value);
  }
  EXPECT_EQ(toQString("a\xFFz"), QString::fromUtf16(u"a\xDCFFz"));
  EXPECT_EQ(fromQString(QString(QChar(0xD800))), "\xEF\xBF\xBD") << "a lone high surrogate has no bytes";
  EXPECT_EQ(fromQString(QString(QChar(0xDC41))), "\xEF\xBF\xBD") << "nor has a low one of an ASCII byte";
}

TEST(TextModelBookmarks, StayWithTheirLines) {
  struct Case {
    const char* what;
    std::int64_t begin, end;
    const char* with;
    const char* after;
  };
  // Lines "0" to "5", two bytes each; bookmarks on 1, 3 and 4.
  const Case cases[] = {{"typing in a line", 6, 7, "xyz", "1 3 4"},
                        {"break before a marked line", 2, 2, "\n", "2 4 5"},
                        {"break in a marked line keeps its head", 3, 3, "\n", "1 4 5"},
                        {"deleting a marked line", 6, 8, "", "1 3"},
                        {"deleting a line above", 0, 2, "", "0 2 3"},
                        {"joining with the line above", 5, 6, "", "1 2 3"},
                        {"deleting over several", 3, 9, "", "1"},
                        {"exchanging lines for as many", 2, 8, "a\nb\nc\n", "1 3 4"},
                        {"deleting all", 0, 11, "", ""}};
  for (const auto& c : cases) {
    TextModel model;
    model.replaceAll(text::Snapshot("0\n1\n2\n3\n4\n5"), {});
    for (int line : {4, 1, 3}) model.setBookmark(LineNo(line), true);
    replace(model, c.begin, c.end, c.with);
    EXPECT_EQ(marked(model), c.after) << c.what << ": " << model.snapshot().bytes();
  }
}

TEST(TextModelLineEnds, NewLineFollowsItsNeighbourUntilOneIsChosen) {
  struct Case {
    const char* bytes;
    int line;
    const char* expected;
    const char* chosen;
    bool crlf;
  };
  const Case cases[] = {{"a\r\nb\nc", 0, "\r\n", "\n", true}, {"a\r\nb\nc", 1, "\n", "\n", true},
                        {"a\r\nb\nc", 2, "\n", "\n", true},   {"a\nb\r\nc", 2, "\r\n", "\r\n", false},
                        {"no break", 0, "\n", "\r\n", false}, {"a\rb\nc", 0, "\n", "\n", true}};
  for (const auto& c : cases) {
    TextModel model;
    model.replaceAll(text::Snapshot(c.bytes), {});
    EXPECT_EQ(model.enableCrlf(), c.crlf) << c.bytes;
    EXPECT_EQ(model.newLineFor(LineNo(c.line)), c.expected) << c.bytes;
    model.setEnableCrlf(c.crlf);
    EXPECT_EQ(model.newLineFor(LineNo(c.line)), c.expected) << "the value it had chooses nothing";
    model.setEnableCrlf(!c.crlf);
    EXPECT_EQ(model.newLineFor(LineNo(c.line)), c.crlf ? "\n" : "\r\n") << c.bytes;
  }
  TextModel old;
  old.replaceAll(text::Snapshot("a\rb", text::LineMode::cr), {});
  EXPECT_EQ(old.newLineFor(LineNo(1)), "\r");
}

TEST(TextModelLineEnds, ConversionIsOneUndoStep) {
  TextModel model;
  model.replaceAll(text::Snapshot("a\r\nb\nc\r\n"), {});
  model.convertLineEnds(true);
  EXPECT_EQ(model.snapshot().bytes(), "a\r\nb\r\nc\r\n");
  model.convertLineEnds(false);
  EXPECT_EQ(model.snapshot().bytes(), "a\nb\nc\n");
  model.document().undo();
  model.document().undo();
  EXPECT_EQ(model.snapshot().bytes(), "a\r\nb\nc\r\n");
  EXPECT_FALSE(model.document().canUndo());

  EXPECT_EQ(model.newLineFor(LineNo(1)), "\n") << "as loaded: each line as its neighbour";

  model.replaceAll(text::Snapshot("a\rb", text::LineMode::cr), {});
  std::string told;
  QObject::connect(&model, &TextModel::lineEndsChanged, &model, [&] { told += model.enableCrlf() ? 'W' : 'U'; });
  const auto both = [&] {
    const text::UndoGroup step(model.document());   // with other work it is one step all the same
    replace(model, 0, 1, "x");
    model.convertLineEnds(false);
  };
  both();
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(model.snapshot().bytes(), "x\nb");
    EXPECT_EQ(model.snapshot().lineCount(), 2);
    EXPECT_TRUE(model.document().modified());
    EXPECT_FALSE(model.enableCrlf());
    model.document().undo();
    EXPECT_EQ(model.snapshot().bytes(), "a\rb");
    EXPECT_EQ(model.snapshot().lineCount(), 2);
    EXPECT_FALSE(model.document().modified());
    EXPECT_TRUE(model.enableCrlf());
    model.document().redo();
  }
  EXPECT_EQ(told, "UWUWU");
}

TEST(TextModelLanguage, FollowsTheTableAndRefusesUnequalPairs) {
  const QString name = QStringLiteral("TestLanguage");
  CmLanguage language;
  language.Keywords = QStringLiteral("begin\nend\n");
  language.MultiLineComments1 = QStringLiteral("/*\n");
  LanguageTable::registerLanguage(name, language);
  EXPECT_TRUE(LanguageTable::contains(name));
  TextModel model;
  EXPECT_FALSE(model.setLanguage(name)) << "an opener without a closer";
  EXPECT_EQ(model.language(), QString());
  language.MultiLineComments2 = QStringLiteral("*/\r\n");
  LanguageTable::registerLanguage(name, language);
  EXPECT_TRUE(model.setLanguage(name));
  ASSERT_NE(model.highlighter(), nullptr);
  EXPECT_TRUE(model.highlighter()->isKeyword("end"));
  model.replaceAll(text::Snapshot("x /* y\nz\n*/ w"), {});
  EXPECT_EQ(model.stateAt(LineNo(1)), 1);
  EXPECT_EQ(model.stateAt(LineNo(2)), 1);
  replace(model, 2, 4, "");
  EXPECT_EQ(model.stateAt(LineNo(2)), 0) << "the states behind an edit are found anew";
  language.Keywords = QStringLiteral("other");
  LanguageTable::registerLanguage(name, language);
  EXPECT_TRUE(model.highlighter()->isKeyword("other")) << "registered again: the later replaces";
  LanguageTable::unregisterLanguage(name);
  EXPECT_EQ(model.highlighter(), nullptr);
  EXPECT_FALSE(model.setLanguage(QStringLiteral("no such language")));
  EXPECT_TRUE(model.setLanguage(QString()));
}
