// Which lines differ: by table, and against the shortest possible at random.
#include "text/diff/LineDiff.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <random>

#include "text/diff/EditsBetween.h"
#include "text/diff/Match.h"
#include "text/store/ContentHash.h"

using namespace text;

namespace {

std::string lines(const Snapshot& text, LineNo begin, LineNo end) {
  std::string all;
  for (LineNo line = begin; line < end; ++line) all += text.line(line) + "|";
  return all;
}

// "1-2>1-3": lines 1 to 2 of the one became 1 to 3 of the other; half-open.
std::string shown(const std::vector<LineHunk>& hunks) {
  std::string all;
  for (const LineHunk& h : hunks)
    all += std::to_string(h.beforeBegin.value) + "-" + std::to_string(h.beforeEnd.value) + ">" +
           std::to_string(h.afterBegin.value) + "-" + std::to_string(h.afterEnd.value) + (h.nothing ? "! " : " ");
  return all;
}

TEST(LineDiff, FindsWhatAPersonWouldCallTheChange) {
  struct Case {
    const char *before, *after, *hunks;
  };
  for (const Case& c : {Case{"", "", ""},
                        {"a\nb\n", "a\nb\n", ""},
                        {"a\nb", "a\r\nb", ""},   // line ends make no difference
                        {"a\nb\nc\n", "a\nx\nc\n", "1-2>1-2 "},
                        {"a\nb\nc\n", "new\na\nb\nc\n", "0-0>0-1 "},   // all lines moved, one differs
                        {"a\nb\nc\n", "b\nc\n", "0-1>0-0 "},
                        {"a\nb\nc\nd\ne\n", "a\nc\nd\nx\ny\ne\n", "1-2>1-1 4-4>3-5 "},
                        {"", "a\n", "0-0>0-1 "},
                        {"a\nb", "", "0-2>0-1 "},
                        // what may stand at several places begins behind a blank line, and not with the end of a block
                        {"f\n  a\nend\n\nh\n", "f\n  a\nend\n\ng\n  b\nend\n\nh\n", "4-4>4-8 "},
                        {"do\n  a\nend\nx\n", "do\n  a\nend\ndo\n  a\nend\nx\n", "3-3>3-6 "},
                        // what moves next to another change becomes one with it
                        {"a\nx\nx\nb\n", "a\nc\nx\nb\n", "1-2>1-2 "}}) {
    EXPECT_EQ(shown(diffLines(Snapshot(c.before), Snapshot(c.after))), c.hunks) << c.before << " to " << c.after;
  }
}

// The hash of lines can be led astray: the words of a line that enter one lane of it are chosen so that it ends as in another line.
TEST(LineDiff, LinesWithOneHashDiffer) {
  constexpr std::uint64_t kSpread = 0xd6e8feb86659fd93, kMultiplier = 0x9e3779b97f4a7c15;
  std::uint64_t inverse = 1;   // of kSpread
  for (int i = 0; i < 63; ++i) inverse *= 2 - kSpread * inverse;
  const auto after = [](std::uint64_t word) { return std::rotl(1 + word * kSpread, 31) * kMultiplier; };
  std::string one(80, 'x'), other;
  std::uint64_t x, first;
  std::memcpy(&x, one.data(), sizeof x);
  for (first = x + 1;; ++first) {
    const std::uint64_t second = x + (after(x) - after(first)) * inverse;
    other = one;
    std::memcpy(other.data(), &first, sizeof first), std::memcpy(other.data() + 32, &second, sizeof second);
    if (other.find_first_of("\r\n") == other.npos) break;
  }
  ASSERT_EQ(ContentHash::of(one), ContentHash::of(other));
  for (const std::string& around : {std::string(), std::string(1 << 16, '\n')}) {
    const Snapshot a(around + one + "\nb\n" + around), b(around + other + "\nb\n" + around);
    const std::vector<LineHunk> hunks = diffLines(a, b);
    ASSERT_EQ(hunks.size(), 1u);
    EXPECT_EQ(a.line(hunks[0].beforeBegin), one);
    EXPECT_EQ(diffLines(a, b, {.ignoreCase = true}).size(), 1u);
    EXPECT_EQ(diffLines(Snapshot(around + one + "\r\n" + one), Snapshot(around + one + "\n" + other)).size(), 1u);
  }
}

// What the rules ignore, line by line: "!" in front of lines that hold nothing else.
TEST(LineDiff, RulesSayWhatCounts) {
  const auto bare = [](const char* text, const DiffRules& rules) {
    BareLines lines(Snapshot(text), rules, rules.commentsBefore);
    std::string all;
    for (std::string_view line; lines.next(&line);) (all += lines.nothing() ? "!" : "").append(line) += "|";
    return all;
  };
  const auto c = std::make_shared<const Highlighter>(LanguageTables{.singleComments = {"//"},
                                                                    .multiCommentStart = {"/*"},
                                                                    .multiCommentEnd = {"*/"},
                                                                    .stringDelims = {"\""},
                                                                    .escapeChar = "\\"});
  DiffRules blanks, letters, comments, all;
  blanks.ignoreBlanks = all.ignoreBlanks = true;
  letters.ignoreCase = all.ignoreCase = true;
  comments.commentsBefore = comments.commentsAfter = all.commentsBefore = all.commentsAfter = c;
  EXPECT_EQ(bare(" a \t b\n\n \t\nc\xc2\xa0\xe3\x80\x80\xff", blanks), "ab|!|!|c\xff|");
  EXPECT_EQ(bare("aB\xc3\x84 \xce\xa3\xcf\x82\n", letters), "ab\xc3\xa4 \xcf\x83\xcf\x83||");
  EXPECT_EQ(bare("a // b\n  // c\n\nd /* e */ f/**/\n/* g\n\nh */ i\n\"//\" j", comments), "a|!||d f|!|!|i|\"//\" j|");
  EXPECT_EQ(bare("A /* b */ C // d\n\t//", all), "ac|!|");

  const Snapshot before("a\nb // one\nc\n"), after("// new\na\nb // two\n\nC\n");
  EXPECT_EQ(shown(diffLines(before, after, all)), "0-0>0-1! 2-2>3-4! ");
  // A blank line does not draw the others apart, whichever text it moved in.
  const Snapshot below("end\narch\n\nbegin\n"), above("end\n\narch\nbegin\n");
  EXPECT_EQ(shown(diffLines(below, above, blanks)), "1-1>1-2! 2-3>3-3! ");
  EXPECT_EQ(shown(diffLines(above, below, blanks)), "1-2>1-1! 3-3>2-3! ");
  EXPECT_EQ(shown(diffLines(Snapshot("a\n\nb\n\n\nc\n"), Snapshot("a\n\nx\n\nc\n\n"), blanks)), "2-4>2-3 7-7>6-7! ");
}

// The fewest lines that can differ.
std::int64_t fewest(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
  std::vector<std::int64_t> above(b.size() + 1), row(b.size() + 1);   // longest common subsequences
  for (const std::uint32_t x : a) {
    for (std::size_t j = 0; j < b.size(); ++j) row[j + 1] = x == b[j] ? above[j] + 1 : std::max(above[j + 1], row[j]);
    above.swap(row);
  }
  return std::ssize(a) + std::ssize(b) - 2 * above.back();
}

TEST(LineDiff, HunksLeadFromOneTextToTheOtherByFewLines) {
  std::mt19937 random(11);
  for (int round = 0; round < 2400; ++round) {
    const bool large = round % 80 == 0;
    const unsigned kinds = large ? 2 + random() % 3000 : 3, most = large ? 3000 : round % 20 ? 12 : 256;
    std::vector<std::uint32_t> idsA, idsB;
    for (unsigned n = random() % most; n > 0; --n) idsA.push_back(random() % kinds);
    if (round % 2) {
      for (unsigned n = random() % most; n > 0; --n) idsB.push_back(random() % kinds);
    } else {
      for (const std::uint32_t id : idsA) {
        const unsigned what = random() % 30;
        if (what != 0) idsB.push_back(what == 1 ? random() % kinds : id);
        if (what == 2) idsB.push_back(random() % kinds);
      }
    }
    const auto make = [](const std::vector<std::uint32_t>& ids) {
      std::string text;
      for (const std::uint32_t id : ids) text += std::string(id % 4, ' ') + (id ? std::to_string(id) : "") + "\n";
      return Snapshot(text);
    };
    const Snapshot before = make(idsA), after = make(idsB);
    const auto hunks = diffLines(before, after);
    std::string built;
    LineNo at;
    std::int64_t differing = 0;
    for (const LineHunk& h : hunks) {
      EXPECT_TRUE(at == LineNo(0) || h.beforeBegin > at) << "equal lines lie between";
      built += lines(before, at, h.beforeBegin) + lines(after, h.afterBegin, h.afterEnd);
      at = h.beforeEnd;
      differing += h.beforeEnd - h.beforeBegin + (h.afterEnd - h.afterBegin);
    }
    built += lines(before, at, LineNo(before.lineCount()));
    ASSERT_EQ(built, lines(after, LineNo(0), LineNo(after.lineCount()))) << shown(hunks);
    const std::int64_t least = fewest(idsA, idsB);
    EXPECT_GE(differing, least);
    EXPECT_LE(differing, large ? least + least / 5 : least) << round;
  }
}

// Counted in steps: texts on which the effort could grow with the square.
TEST(LineDiff, NoTextTakesForEver) {
  constexpr std::uint32_t kMany = 100000;
  std::mt19937 random(3);
  std::vector<std::uint32_t> unique(kMany), few(kMany), twice(kMany);
  for (std::uint32_t i = 0; i < kMany; ++i) unique[i] = i, few[i] = random() % 3, twice[i] = i % (kMany / 2);
  const auto shuffled = [&](std::vector<std::uint32_t> ids) {
    std::shuffle(ids.begin(), ids.end(), random);
    return ids;
  };
  const auto reversed = [](const std::vector<std::uint32_t>& ids) { return std::vector<std::uint32_t>(ids.rbegin(), ids.rend()); };
  const auto turned = [](std::vector<std::uint32_t> ids) {
    std::rotate(ids.begin(), ids.begin() + kMany / 2, ids.end());
    return ids;
  };
  const auto other = [](std::vector<std::uint32_t> ids) {
    for (std::uint32_t& id : ids) id += kMany;
    return ids;
  };
  int number = 0;
  for (const auto* ids : {&unique, &few, &twice}) {
    for (const auto& against : {*ids, shuffled(*ids), reversed(*ids), turned(*ids), other(*ids)}) {
      const Matched matched = matchIds(*ids, against);
      EXPECT_GT(matched.steps, 0) << number;
      EXPECT_LT(matched.steps, 200 * 2 * std::int64_t(kMany)) << number;
      ++number;
    }
  }
  const std::atomic<bool> cancel{true};
  EXPECT_LT(matchIds(few, shuffled(few), &cancel).steps, 10);
}

// Whatever the texts, the edits make one of the other; lines that both have keep their marks, also through line ends and undo.
TEST(LineDiff, EditsMakeOneTextOfTheOther) {
  std::mt19937 random(11);
  const char* const parts[] = {"a\n", "b\r\n", "b\n", "\n", "cc\n", "d", "\r", "\r\n", "e\xCC\x81\n"};
  std::size_t several = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string texts[2];
    for (auto n = random() % 12; n > 0; --n) texts[0] += parts[random() % std::size(parts)];
    texts[1] = texts[0];
    for (auto n = random() % 4; n > 0; --n) texts[1].insert(random() % (texts[1].size() + 1), parts[random() % std::size(parts)]);
    if (random() % 3 == 0) texts[1].erase(random() % (texts[1].size() + 1), random() % 5);
    const LineMode modes[] = {LineMode(random() % 8 == 0), LineMode(random() % 8 == 0)};
    Document document;
    document.reset(Snapshot(texts[0], modes[0]));
    const std::vector<Edit> edits = editsBetween(document.snapshot(), Snapshot(texts[1], modes[1]));
    ASSERT_TRUE(document.apply(edits, {})) << "ascending and apart";
    ASSERT_EQ(document.snapshot().bytes(), texts[1]) << testing::PrintToString(texts[0]);
    several += edits.size() > 1;
  }
  EXPECT_GT(several, 300u);

  Document document;
  document.reset(Snapshot("a\nb\nc\nd\ne\nf\n"));
  const MarkId mark = document.addMark(ByteOffset(6));   // d
  ASSERT_TRUE(document.apply(editsBetween(document.snapshot(), Snapshot("0\r\n1\r\na\r\nb\r\nc\r\nd\r\nE\r\n")), {}));
  EXPECT_EQ(document.markAt(mark), ByteOffset(15));
  document.undo();
  EXPECT_EQ(document.markAt(mark), ByteOffset(6));
}

}   // namespace
