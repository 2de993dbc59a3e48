// Letter case of words, and the check that a run only touched white space and letter case.
#include "change/CaseFilter.h"

#include <gtest/gtest.h>

namespace {
text::Highlighter hdl() {
  text::LanguageTables t;
  t.keywords = {"begin", "end", "signal"};
  t.operators = {"<=", "+"};
  t.singleComments = {"--"};
  t.stringDelims = {"\""};
  t.multiCommentStart = {"/*"};
  t.multiCommentEnd = {"*/"};
  return text::Highlighter(t);
}
}   // namespace

TEST(CaseFilter, WordsByTargetAndMode) {
  const text::Highlighter highlighter = hdl();
  struct Case {
    const char* before;
    CaseTarget target;
    CaseMode mode;
    const char* after;
  };
  using enum CaseMode;
  const auto text = CaseTarget::mainText, keys = CaseTarget::keywords;
  const Case cases[] = {
      {"Begin aB <= cD;", text, upper, "Begin AB <= CD;"},
      {"Begin aB <= cD;", keys, upper, "BEGIN aB <= cD;"},
      {"BEGIN aB", keys, capitalize, "Begin aB"},
      {"aB_cD x1", text, capitalize, "Ab_cd X1"},
      {"x \"Begin aB\" -- Begin aB", text, upper, "X \"Begin aB\" -- Begin aB"},
      {"x \"Begin aB\" -- Begin aB", keys, lower, "x \"Begin aB\" -- Begin aB"},
      {"\\Esc.aped/a next", text, upper, "\\Esc.aped/a NEXT"},
      {"8'hFf 16#aB# 0xAb abc", text, upper, "8'hFf 16#aB# 0xAb ABC"},
      {"stra\xC3\x9F"
       "e x",
       text, upper,
       "stra\xC3\x9F"
       "e X"},
      {"", text, upper, ""},
  };
  for (const auto& c : cases) {
    text::LineState state = 0;
    EXPECT_EQ(filterCase(QString::fromUtf8(c.before), c.target, c.mode, highlighter, &state).toStdString(), c.after) << c.before;
  }
}

TEST(CaseFilter, SameInk) {
  EXPECT_TRUE(sameInk(u"a  B\tc", u"AbC"));
  EXPECT_TRUE(sameInk(u"", u" \t"));
  EXPECT_FALSE(sameInk(u"ab", u"abc"));
  EXPECT_FALSE(sameInk(u"abd", u"abc"));
}
