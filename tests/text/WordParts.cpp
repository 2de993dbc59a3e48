// Words for completion: which fit what is typed, and counts that stay right change by change.
#include <gtest/gtest.h>

#include "tests/text/RandomText.h"
#include "text/store/Document.h"
#include "text/words/WordCounts.h"

using namespace text;

namespace {

// The typed letters in brackets, and the fit; empty: it does not fit.
std::string fitOf(std::string_view word, std::string_view typed) {
  const auto match = matchParts(word, typed);
  if (!match) return {};
  std::string shown(word);
  for (auto place = match->places.rbegin(); place != match->places.rend(); ++place) {
    shown.insert(static_cast<std::size_t>(place->first + place->second), "]");
    shown.insert(static_cast<std::size_t>(place->first), "[");
  }
  return std::to_string(static_cast<int>(match->fit)) + shown;
}

}   // namespace

TEST(WordParts, FitByTheBeginningsOfParts) {
  const struct {
    const char *word, *typed, *fit;
  } cases[] = {
      {"state", "sta", "0[sta]te"},
      {"State", "sta", "1[Sta]te"},
      {"state_next_word", "stw", "2[st]ate_next_[w]ord"},
      {"state_next_word", "snw", "2[s]tate_[n]ext_[w]ord"},
      {"stateNextWord", "snw", "2[s]tate[N]ext[W]ord"},
      {"HTTPServer", "hs", "2[H]TTP[S]erver"},
      {"reg32_q", "r3q", "2[r]eg[3]2_[q]"},
      {"sub_super", "susu", "2[su]b_[su]per"},
      {"a_ab_abc", "aabc", "2[a]_ab_[abc]"},   // the first way fails, a later one fits
      {"fifo_state_next", "stn", "3fifo_[st]ate_[n]ext"},
      {"prestate", "sta", "4pre[sta]te"},
      {"prestate", "st", ""},   // two letters inside a word say nothing
      {"state", "ste", ""},
      {"word", "words", ""},
      {"gr\xc3\xb6\xc3\x9f"
       "e_max",
       "grm",
       "2[gr]\xc3\xb6\xc3\x9f"
       "e_[m]ax"},
  };
  for (const auto& c : cases) EXPECT_EQ(fitOf(c.word, c.typed), c.fit) << c.word << " " << c.typed;
  // A word and a pattern made to be tried in very many ways.
  std::string word, typed(kLongestTyped - 1, 'a');
  while (word.size() + 2 <= kLongestWord) word += "a_";
  EXPECT_EQ(fitOf(word, typed + 'b'), "");
  EXPECT_FALSE(matchParts(std::string(kLongestWord + 1, 'a'), "a"));
}

TEST(WordCounts, ChangesGiveWhatCountingAfreshGives) {
  test::Random random;
  SCOPED_TRACE(random.message());
  const auto piece = [&] {
    static const std::string parts[] = {"state",    "_n",           "1", " ",    "\n",         ";",
                                        "\xc3\xb6", "\xe2\x82\xac", "x", "\xff", "next word ", std::string(100, 'y')};
    std::string out;
    for (std::int64_t i = random.upTo(8); i > 0; --i) out += parts[random.upTo(std::ssize(parts))];
    return out;
  };
  Document document;
  WordCounts kept;
  const std::atomic<bool> cancel{false};
  Snapshot old = document.snapshot();
  const auto listening = document.subscribe([&](const Change& change) {
    kept.change(old, document.snapshot(), change);
    old = document.snapshot();
  });
  for (std::int64_t step = test::steps(1500); step > 0; --step) {
    std::vector<Edit> edits;
    std::int64_t at = 0;
    for (std::int64_t n = 1 + random.upTo(4); n > 0 && at <= old.size().value; --n) {
      at += random.upTo(std::min<std::int64_t>(old.size().value - at + 1, random.oneIn(4) ? 1000 : 6));
      const std::int64_t end = at + random.upTo(std::min<std::int64_t>(old.size().value - at + 1, 12));
      edits.push_back({{ByteOffset(at), ByteOffset(end)}, piece()});
      at = end + 1;
    }
    if (random.oneIn(5)) document.undo();
    else document.apply(edits, {});
    if (step % 10 != 0) continue;
    WordCounts fresh;
    ASSERT_TRUE(fresh.count(document.snapshot(), cancel));
    ASSERT_EQ(kept.size(), fresh.size());
    eachWord(document.snapshot(), {ByteOffset(0), document.snapshot().size()},
             [&](std::string_view word, ByteOffset) { ASSERT_EQ(kept.countOf(word), fresh.countOf(word)) << word; });
  }
}

TEST(WordCounts, AreBoundedAndFoundByUse) {
  const std::atomic<bool> cancel{false};
  std::string text(3 << 20, 'a');   // no word, in several steps
  text += " stage state state 12x st state_of_" + std::string(200, 'b');
  WordCounts counts;
  ASSERT_TRUE(counts.count(Snapshot(text), cancel));
  EXPECT_EQ(counts.size(), 2u);
  const auto found = counts.find("st", 9);
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].word, "state");
  EXPECT_EQ(found[0].count, 2);
  WordCounts few(1);
  ASSERT_TRUE(few.count(Snapshot("one two one"), cancel));
  EXPECT_EQ(few.size(), 1u);
  EXPECT_EQ(few.countOf("one"), 2);
  const std::atomic<bool> cancelled{true};
  EXPECT_FALSE(few.count(Snapshot("one two"), cancelled));
  EXPECT_EQ(few.size(), 0u);
}
