#define PCRE2_CODE_UNIT_WIDTH 8
#include "text/find/Search.h"

#include <gtest/gtest.h>
#include <pcre2.h>

#include <array>

#include "tests/text/Pieces.h"
#include "text/line/CharTables.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

using namespace text;
using namespace std::string_literals;

namespace {

std::string shown(const std::vector<ByteRange>& ranges) {
  std::string out;
  for (const auto& r : ranges) out += testing::PrintToString(r) + ' ';
  return out;
}

ByteRange whole(const Snapshot& text) { return {off(0), text.size()}; }

// All matches of a literal by comparing at every place; `overlapping` for the ones a search backwards may give.
std::vector<ByteRange> plainFind(const std::string& text, const std::string& what, SearchOptions options, bool overlapping) {
  std::vector<ByteRange> out;
  const auto word = [](const Char& c) { return c.bytes > 0 && !c.bad && classOf(c.code) == CharClass::word; };
  const auto border = [&](std::size_t i) {
    return !word(decodeLast(std::string_view(text).substr(0, i))) || !word(decode(std::string_view(text).substr(i)));
  };
  for (std::size_t i = 0; i < text.size();) {
    std::size_t a = i, b = 0;
    bool same = true;
    while (same && b < what.size()) {
      const Char x = decode(std::string_view(text).substr(a)), y = decode(std::string_view(what).substr(b));
      same = x.bytes > 0 && x.bad == y.bad && (options.matchCase || x.bad ? x.code == y.code : fold(x.code) == fold(y.code));
      a += static_cast<std::size_t>(x.bytes);
      b += static_cast<std::size_t>(y.bytes);
    }
    if (same && options.wholeWord) same = border(i) && border(a);
    if (same) out.push_back(rng(static_cast<std::int64_t>(i), static_cast<std::int64_t>(a)));
    i = same && !overlapping ? a : i + static_cast<std::size_t>(decode(std::string_view(text).substr(i)).bytes);
  }
  return out;
}

// All matches by PCRE2's own loop over the whole text.
std::vector<ByteRange> plainRegex(const std::string& text, const std::string& pattern, bool matchCase) {
  int error;
  std::size_t at;
  auto* context = pcre2_compile_context_create(nullptr);
  pcre2_set_newline(context, PCRE2_NEWLINE_ANYCRLF);
  auto* code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size(),
                             PCRE2_UTF | PCRE2_UCP | PCRE2_MULTILINE | PCRE2_ALT_CIRCUMFLEX | PCRE2_MATCH_INVALID_UTF |
                                 PCRE2_NO_DOTSTAR_ANCHOR | (matchCase ? 0 : PCRE2_CASELESS),
                             &error, &at, context);
  EXPECT_EQ(pcre2_jit_compile(code, PCRE2_JIT_COMPLETE), 0) << pattern;
  auto* data = pcre2_match_data_create_from_pattern(code, nullptr);
  std::vector<ByteRange> out;
  std::uint32_t flags = 0;
  for (std::size_t from = 0;
       pcre2_match(code, reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), from, flags, data, nullptr) > 0;) {
    const auto* o = pcre2_get_ovector_pointer(data);
    out.push_back(rng(static_cast<std::int64_t>(o[0]), static_cast<std::int64_t>(o[1])));
    flags = o[0] == o[1] ? PCRE2_NOTEMPTY_ATSTART : 0;
    from = o[1];
  }
  pcre2_match_data_free(data);
  pcre2_code_free(code);
  pcre2_compile_context_free(context);
  return out;
}

// The pattern with its line ends as PCRE2 itself would take them; only for those of the tests.
std::string spelled(const std::string& pattern) {
  if (pattern == "a\\n") return "a(?>\\r\\n|\\n|\\r)";
  if (pattern == "(?<=\\n)a") return "(?<=[\\r\\n])a";
  if (pattern == "[^a]\\n") return "[^a](?:\\r\\n|\\n(?<!\\r\\n)|\\r(?!\\n))";
  if (pattern == "[^\\nb]+") return "[^b\\r\\n]+";
  if (pattern == "[\\nb]") return "\\r\\n|\\r|\\n(?<!\\r\\n)|b";
  if (pattern == "(?<!b\\n)a") return "(?<!b\\r\\n)(?<!b\\n)(?<!b\\r)a";
  return pattern;
}

// forward() and backward() from every place must give what the list of all matches says; `overlapping`: it has those that begin
// inside others too.
void expectSteps(const Searcher& searcher, const Snapshot& text, const std::vector<ByteRange>& matches, bool overlapping,
                 const std::string& about) {
  for (ByteOffset at(0); at <= text.size(); ++at) {
    const auto next = std::find_if(matches.begin(), matches.end(), [&](const ByteRange& r) { return r.begin >= at; });
    const auto before = std::find_if(matches.rbegin(), matches.rend(), [&](const ByteRange& r) { return r.end <= at; });
    // From inside a match a part of it may be right.
    const bool inside =
        !overlapping && std::any_of(matches.begin(), matches.end(), [&](const ByteRange& r) { return r.begin < at && at < r.end; });
    if (!inside) {
      const auto got = searcher.forward(text, at).match;
      ASSERT_EQ(got ? got->range : rng(-1, -1), next == matches.end() ? rng(-1, -1) : *next) << about << " from " << at.value;
    }
    const auto got = searcher.backward(text, at).match;
    ASSERT_EQ(got ? got->range : rng(-1, -1), before == matches.rend() ? rng(-1, -1) : *before)
        << about << " back from " << at.value;
  }
}

}   // namespace

TEST(Search, LiteralEqualsComparingEverywhere) {
  const std::array<std::string, 22> alphabet{"a",      "A",      "b",      "ab",     "_",       " ",      ".",      "\n",
                                             "\r\n",   "\0"s,    "\u00E9", "\u00C9", "e\u0301", "\u03C3", "\u03C2", "\u03A3",
                                             "\u023A", "\u2C65", "k",      "\u212A", "\xFF",    "\xC3"};
  std::mt19937 random(5);
  for (int round = 0; round < 6000; ++round) {
    const std::string bytes = randomText(random, alphabet, random() % 40);
    std::string what = randomText(random, alphabet, 1 + random() % 4);
    if (round % 2 && bytes.size() > 4) what = bytes.substr(random() % (bytes.size() - 3), 1 + random() % 3);
    const SearchOptions options{random() % 2 == 0, random() % 3 == 0, false, 8};
    const Snapshot text = inPieces(bytes, 1 + random() % 9);
    const Searcher searcher(what, options);
    const auto expected = plainFind(bytes, what, options, false);
    const std::string about = testing::PrintToString(what) + " in " + testing::PrintToString(bytes) +
                              (options.matchCase ? " case" : "") + (options.wholeWord ? " word" : "");
    const auto got = searcher.all(text, whole(text));
    ASSERT_EQ(shown(got.ranges), shown(expected)) << about;
    ASSERT_EQ(got.error, "");
    if (round % 10 == 0) expectSteps(searcher, text, plainFind(bytes, what, options, true), true, about);
  }
}

TEST(Search, LongTextsAndPatterns) {
  std::string bytes;
  for (int i = 0; i < 300000; ++i) bytes += "line " + std::to_string(i) + (i % 7 ? " ok\n" : " Error\n");
  const Snapshot text = inPieces(bytes, 60000);
  EXPECT_EQ(Searcher("error", {}).all(text, whole(text)).ranges.size(), 42858u);
  EXPECT_EQ(Searcher("error", {true}).all(text, whole(text)).ranges.size(), 0u);
  EXPECT_EQ(Searcher("E[r]+or$", {true, false, true}).all(text, whole(text)).ranges.size(), 42858u);
  const std::string part = bytes.substr(1'000'000, 200'000);
  for (const bool matchCase : {true, false}) {
    const Searcher searcher(part, {matchCase});
    EXPECT_EQ(shown(searcher.all(text, whole(text)).ranges), "1000000..1200000 ");
    EXPECT_EQ(searcher.backward(text, text.size()).match->range, rng(1'000'000, 1'200'000));
  }
  EXPECT_EQ(Searcher("line 1 ", {}).backward(text, text.size()).match->range, rng(13, 20));
  EXPECT_EQ(Searcher("^line 1\\b", {false, false, true}).backward(text, text.size()).match->range, rng(13, 19));
}

// A text that repeats the beginning of the pattern for ever must not cost the product of both lengths.
TEST(Search, RepetitiveTextIsLinear) {
  const std::string bytes(4'000'000, 'a');
  const Snapshot text(bytes);
  const std::string half(20'000, 'a');
  for (const std::string& what : {half + "b" + half, half + "\u00C4" + half})
    for (const bool matchCase : {true, false}) EXPECT_TRUE(Searcher(what, {matchCase}).all(text, whole(text)).ranges.empty());
  EXPECT_EQ(Searcher(half + "B" + half, {}).forward(Snapshot(bytes + "b" + bytes), off(0)).match->range, rng(3'980'000, 4'020'001));
}

TEST(Search, RegexEqualsOneLoopOverTheWholeText) {
  const char* patterns[] = {"a",         "a+",     "^",         "$",         "^$",          "^a",       "b$",        "\\s+",
                            "\\w+",      ".*",     ".+$",       "x*",        "[^a]+",       "a\\n",     "a\\r?\\nb", "(?s)a.*b",
                            "(?s)a.*?b", "\\bab?", "(?<=a)b",   "(?<=\\n)a", "(?<!a)b",     "a(?=b)",   "a(?!b)",    "\\Aa",
                            "b\\z",      "a\\Z",   "\\R",       "(a|b)\\1",  "[\\x{e9}a]",  "(?i)A",    "\\X",       "\\r",
                            "(?m)^b|a$", "a|^|b",  "\\B",       "\\Ga",      "(?:a|\\s)*b", "[\\t-a]+", "[ -b]+$",   "\\S+\\b",
                            "[]a]b?$",   "a*?$",   "(?:^|b)a?", "[^a]\\n",   "[^\\nb]+",    "[\\nb]",   "(?<!b\\n)a"};
  const std::array<std::string, 14> alphabet{"a",    "b",  "ab",   "A",      " ",          ".",    "\n",
                                             "\r\n", "\r", "\n\n", "\u00E9", "\U0001F600", "\xFF", "\xC3"};
  std::mt19937 random(9);
  for (int round = 0; round < 250; ++round) {
    const std::string bytes = randomText(random, alphabet, random() % 60);
    const Snapshot text = inPieces(bytes, 1 + random() % 20);
    for (const char* pattern : patterns) {
      const std::int64_t window = round % 4 == 0 ? 32768 : 8 + random() % 24;
      const Searcher searcher(pattern, {round % 2 == 0, false, true, window});
      ASSERT_EQ(searcher.error(), "") << pattern;
      const auto got = searcher.all(text, whole(text));
      ASSERT_EQ(shown(got.ranges), shown(plainRegex(bytes, spelled(pattern), round % 2 == 0)))
          << pattern << " in " << testing::PrintToString(bytes) << " by " << window << " " << got.error;
    }
  }
}

TEST(Search, RegexStepsThroughLines) {
  const std::string bytes = "reg a;\r\nwire [7:0] bus;\r\n\r\n  assign a = bus;\nend";
  const Snapshot text = inPieces(bytes, 5);
  for (const char* pattern : {"\\w+", "[a-z]+;", "^ *\\w+", "\\w+;$", "^$", "(?<=\\[)\\d", "x|e"}) {
    const auto all = plainRegex(bytes, pattern, true);
    ASSERT_FALSE(all.empty());
    for (const std::int64_t window : {8, 32768})
      expectSteps(Searcher(pattern, {true, false, true, window}), text, all, false, pattern);
  }
}

TEST(Search, WholeWordsOfExpressions) {
  const std::tuple<const char*, const char*, const char*> rows[] = {{"a|ab", "ab a abc", "0..2 3..4 "},
                                                                    {"\\$\\w+", "x $time $x", "2..7 8..10 "},
                                                                    {"a # note", "aa a # note", "3..11 "},
                                                                    {"(?x)a # note", "aa a", "3..4 "},
                                                                    {"(*ANYCRLF)\\d+", "1 x2 3", "0..1 5..6 "},
                                                                    {"\\Qa.b", "xa.b a.b a.bc", "5..8 "},
                                                                    {"x\\Kab", "xab ab", ""},
                                                                    {"[a-z]+", "ab1 cd", "4..6 "}};
  for (const auto& [pattern, bytes, expected] : rows) {
    const Snapshot text = inPieces(bytes, 2);
    const Searcher searcher(pattern, {true, true, true, 8});
    ASSERT_EQ(searcher.error(), "") << pattern;
    EXPECT_EQ(shown(searcher.all(text, whole(text)).ranges), expected) << pattern;
  }
}

TEST(Search, WithinARange) {
  const std::string bytes = "one two\ntwo one two\n";
  const Snapshot text = inPieces(bytes, 3);
  const Searcher literal("two", {}), end("two$", {false, false, true}), start("\\A.|^.", {false, false, true}),
      word("[a-z]+", {false, true, true});
  EXPECT_EQ(shown(literal.all(text, rng(4, 19)).ranges), "4..7 8..11 16..19 ");
  EXPECT_EQ(shown(literal.all(text, rng(5, 18)).ranges), "8..11 ");
  EXPECT_EQ(literal.backward(text, off(18), rng(0, 20)).match->range, rng(8, 11));
  EXPECT_FALSE(literal.forward(text, off(5), rng(0, 10)).match);
  EXPECT_FALSE(literal.backward(text, off(10), rng(5, 20)).match);
  EXPECT_EQ(shown(end.all(text, rng(0, 11)).ranges), "4..7 ");   // what stands behind the range counts for '$'
  EXPECT_EQ(shown(end.all(text, rng(0, 19)).ranges), "4..7 16..19 ");
  EXPECT_EQ(shown(start.all(text, rng(4, 20)).ranges), "8..9 ");   // and what stands before it for '^'
  EXPECT_EQ(shown(word.all(text, rng(4, 18)).ranges), "4..7 8..11 12..15 ");
  for (const Searcher* s : {&literal, &end, &word}) {
    EXPECT_TRUE(s->all(text, rng(30, 40)).ranges.empty());
    EXPECT_TRUE(s->all(Snapshot(), rng(0, 0)).ranges.empty());
    EXPECT_FALSE(s->backward(text, off(0)).match);
    EXPECT_FALSE(s->forward(text, off(99)).match);
  }
  EXPECT_EQ(shown(Searcher("^$", {false, false, true}).all(Snapshot(), rng(0, 0)).ranges), "0..0 ");
}

TEST(Search, FaultyExpressionsSayWhere) {
  const std::pair<const char*, const char*> rows[] = {{"a(b", "at character 4: missing closing parenthesis"},
                                                      {"\u00E9[a", "at character 4: missing terminating ]"},
                                                      {"*a", "at character 1: quantifier"},
                                                      {"(?<n>a)(?<n>b)", "two named"},
                                                      {"a)|(b", "unmatched closing parenthesis"},
                                                      {"", "no text to search"}};
  for (const auto& [pattern, message] : rows)
    for (const bool wholeWord : {false, true}) {
      const Searcher searcher(pattern, {false, wholeWord, true});
      EXPECT_NE(searcher.error().find(message), std::string::npos) << searcher.error();
      const Snapshot text("some text");
      EXPECT_EQ(searcher.forward(text, off(0)).error, searcher.error());
      EXPECT_EQ(searcher.backward(text, off(4)).error, searcher.error());
      EXPECT_EQ(searcher.all(text, whole(text)).error, searcher.error());
    }
}

// A limit that is hit is an error, never "not found".
TEST(Search, CostlyExpressionsAreGivenUp) {
  const Snapshot text(std::string(60, 'a') + "c\n" + std::string(30, 'a') + "b");
  for (const char* pattern : {"(a+)+b", "(a|a)*b", "(a*)*b", "^(([a-z])+.)+[A-Z]$"}) {
    const Searcher searcher(pattern, {true, false, true});
    for (const auto& r : {searcher.forward(text, off(0)), searcher.backward(text, text.size())}) {
      EXPECT_NE(r.error, "") << pattern;
      EXPECT_FALSE(r.match) << pattern;
    }
    const auto all = searcher.all(text, whole(text));
    EXPECT_NE(all.error, "");
    EXPECT_TRUE(all.ranges.empty());
  }
  const Snapshot deep("x" + std::string(2'000'000, '(') + "y");
  const auto nested = Searcher("x(\\((?1)*)*y", {true, false, true}).forward(deep, off(0));
  EXPECT_TRUE(nested.match || !nested.error.empty());
}

// No attempt goes far when what every match holds is nowhere ahead.
TEST(Search, ARequiredLetterThatIsMissingEndsTheSearch) {
  const Snapshot text = inPieces(std::string(3'000'000, 'x'), 100'000);
  for (const char* pattern : {"[^\"]*Zzz", "x*b", "(?s)x.*q"}) {
    const auto result = Searcher(pattern, {false, false, true}).all(text, whole(text));
    EXPECT_TRUE(result.ranges.empty() && result.error.empty()) << pattern << result.error;
  }
  const Snapshot late(std::string(200'000, 'x') + "\nZZ" + std::string(100'000, 'x'));
  EXPECT_EQ(shown(Searcher("(?s)x.*z", {false, false, true}).all(late, whole(late)).ranges), "0..200003 ");
  EXPECT_EQ(Searcher("(?s)X.*?z", {false, false, true}).backward(late, off(300'000)).match->range, rng(0, 200'002));
}

TEST(Search, ProgressAndCancel) {
  const Snapshot text(std::string(5'000'000, 'x'));
  for (const bool regex : {false, true}) {
    const Searcher searcher("y", {true, false, regex});
    SearchControl control;
    EXPECT_FALSE(searcher.all(text, whole(text), &control).cancelled);
    EXPECT_EQ(control.bytesDone.load(), text.size().value);
    control.cancel = true;
    EXPECT_TRUE(searcher.all(text, whole(text), &control).cancelled);
    EXPECT_TRUE(searcher.forward(text, off(0), whole(text), &control).cancelled);
    EXPECT_TRUE(searcher.backward(text, text.size(), whole(text), &control).cancelled);
  }
}

TEST(Search, Replacements) {
  struct Row {
    const char *pattern, *text, *replacement;
    bool regex, preserveCase;
    const char* expected;   // a text that begins with "!" is the error
  };
  const Row rows[] = {
      {"(\\w+)=(\\w+)", "key=val", "$2=$1", true, false, "val=key"},
      {"(\\w+)=(\\w+)", "key=val", "$0 $$1 $12 \\$", true, false, "key=val $1 key2 \\$"},
      {"(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)(k)", "abcdefghijk", "${12}", true, false, "!The expression has no group \"12\"."},
      {"(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)(k)", "abcdefghijk", "$11 $12 $110", true, false, "k a2 k0"},
      {"(\\w+)=(\\w+)", "key=val", "$3", true, false, "!The expression has no group 3."},
      {"(?<k>\\w+)=", "key=", "${k}${1}${0}", true, false, "keykeykey="},
      {"(?<k>\\w+)=", "key=", "${x}", true, false, "!The expression has no group \"x\"."},
      {"(?<k>\\w+)=", "key=", "${k", true, false, "!A closing brace is missing behind \"${\"."},
      {"(a)|b", "b", "[$1]", true, false, "[]"},
      {"b", "a\r\nb", "x\\ny\\t\\\\n\\q", true, false, "x\r\ny\t\\n\\q"},
      {"b", "b\n", "\\n$", true, false, "\n$"},
      {"b", "b", "$1\\n", false, false, "$1\\n"},
      {"foo", "FOO", "barBaz", false, true, "BARBAZ"},
      {"foo", "foo", "barBaz", false, true, "barbaz"},
      {"foo", "Foo", "barBaz", false, true, "Barbaz"},
      {"foo", "fOo", "barBaz", false, true, "barBaz"},
      {"x_y", "X_Y", "\u00E4\u00DF", false, true, "\u00C4\u00DF"},
      {"123", "123", "barBaz", false, true, "barBaz"},
      {"(\\w)", "Q", "_$1b", true, true, "_Qb"},
  };
  for (const Row& row : rows) {
    const Snapshot text = inPieces(row.text, 2);
    const Searcher searcher(row.pattern, {false, false, row.regex});
    const auto match = searcher.forward(text, off(0)).match;
    ASSERT_TRUE(match) << row.pattern;
    std::string error;
    const auto got = searcher.replacementFor(text, *match, row.replacement, row.preserveCase, &error);
    EXPECT_EQ(got ? *got : "!" + error, row.expected) << row.pattern << " " << row.replacement;
  }
}
