// H6: what colouring and the search for a bracket's partner cost while a window is painted does not depend on how hostile the text
// is: both have a budget, and depth is only counted.
#include "control/code/Brackets.h"

#include "control/code/LanguageTable.h"
#include "control/commands/CommandTable.h"
#include "control/edit/TextModel.h"
#include "tests/control/PaneFixture.h"
#include "tests/support/Cost.h"

namespace {

constexpr double kMost = 400;   // milliseconds of the processor: some hundred times what the budget takes

std::string repeated(const char* part, int count) {
  std::string all;
  for (int n = 0; n < count; ++n) all += part;
  return all;
}

class Brackets : public PaneFixture {
 protected:
  Brackets() {
    CmLanguage language;
    language.MultiLineComments1 = QStringLiteral("/*");
    language.MultiLineComments2 = QStringLiteral("*/");
    language.StringDelims = QStringLiteral("\"");
    LanguageTable::registerLanguage(QStringLiteral("BracketTest"), language);
  }
  ~Brackets() override { LanguageTable::unregisterLanguage(QStringLiteral("BracketTest")); }
};

}   // namespace

TEST_F(Brackets, H6_HostileTextsCostNoMoreThanTheirBudget) {
  struct Case {
    const char* name;
    std::string text;
  };
  const Case cases[] = {
      {"blank lines above", "(" + std::string(3'000'000, '\n') + ")"},
      {"nested, a line each", repeated("(\n", 300'000) + repeated(")\n", 300'000) + ")"},
      {"nested in one line", std::string(2'000'000, '(') + std::string(2'000'000, ')')},
      {"comments that open", repeated("/*\n", 1'000'000) + ")"},
      {"a string without end", "\"" + std::string(4'000'000, ')')},
      {"long lines", repeated((std::string(100'000, '(') + "\n").c_str(), 30) + ")"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    control.model()->replaceAll(text::Snapshot(c.text), {});
    const text::ByteOffset end(std::int64_t(c.text.size()));
    const auto forget = [this] {   // nothing is known of its colours then
      control.setLanguage(QString());
      control.setLanguage(QStringLiteral("BracketTest"));
    };
    forget();
    ASSERT_EQ(control.Language(), QStringLiteral("BracketTest"));
    control.editor().setSelection({end, end});
    EXPECT_LT(costMs([&] {
                forget();
                matchingBracket(*control.model(), end, 128 * 1024);
              }),
              kMost)
        << "the partner of a bracket";
    EXPECT_LT(costMs([&] {
                forget();
                viewport()->grab();
              }),
              kMost)
        << "a paint";
  }
}

TEST_F(Brackets, PairsAreFoundAcrossLinesCommentsAndStrings) {
  for (const char* text : {"a (b)", "{\n(\n}\n)", "( \")\" )", "( /* ) */ )", "/* ( */", "(\n/*\n)\n*/\n)"}) {
    const std::string bytes = text;
    control.model()->replaceAll(text::Snapshot(bytes), {});
    ASSERT_TRUE(control.setLanguage(QStringLiteral("BracketTest")));
    const auto open = bytes.find('('), close = bytes.rfind(')');
    const auto pair = matchingBracket(*control.model(), text::ByteOffset(std::int64_t(open)), 128 * 1024);
    if (close == std::string::npos) {
      EXPECT_FALSE(pair) << text;
      continue;
    }
    ASSERT_TRUE(pair) << text;
    EXPECT_EQ(pair->partner.value, std::int64_t(close)) << text;
    const auto back = matchingBracket(*control.model(), text::ByteOffset(std::int64_t(close)), 128 * 1024);
    ASSERT_TRUE(back) << text;
    EXPECT_EQ(back->partner.value, std::int64_t(open)) << text;
  }
}

// The most that is looked through at once, and the text is that long: one more would go to a thread.
TEST_F(Brackets, APairAroundAllThatIsLookedThroughAtOnceIsFound) {
  constexpr std::int64_t kNear = 1 << 20;
  for (const char* language : {"", "BracketTest"})
    for (const std::int64_t size : {kNear - 1, kNear, kNear + 1})
      for (const bool fromEnd : {false, true}) {
        std::string text = "(" + repeated("some text of a line\n", int(size / 20));
        text.resize(std::size_t(size - 1), 'x');
        text += ')';
        SCOPED_TRACE(std::string(language) + " " + std::to_string(size) + (fromEnd ? " from the end" : " from the front"));
        control.model()->replaceAll(text::Snapshot(text), {});
        control.setLanguage(QString());
        control.setLanguage(QString::fromLatin1(language));
        const text::ByteOffset from(fromEnd ? size - 1 : 0), to(fromEnd ? 0 : size - 1);
        control.editor().setSelection({from, from});
        control.ExecuteCmd(commandByName(u"GOTOMATCHBRACE")->id);
        EXPECT_EQ(control.editor().selection().caret, to);
      }
}
