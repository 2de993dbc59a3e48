#include "text/fold/Blocks.h"

#include <gtest/gtest.h>

#include "tests/text/RandomText.h"
#include "text/store/Document.h"

using namespace text;

namespace {

std::shared_ptr<const FoldRules> verilog() {
  const auto colors = std::make_shared<const Highlighter>(LanguageTables{.caseSensitive = true,
                                                                         .singleComments = {"//"},
                                                                         .multiCommentStart = {"/*"},
                                                                         .multiCommentEnd = {"*/"},
                                                                         .stringDelims = {"\""},
                                                                         .escapeChar = "\\"});
  return std::make_shared<const FoldRules>(
      FoldLists{
          true,
          {"module", "macromodule", "begin", "case", "casex", "fork", "function", "generate", "wait~", "extern~", "typedef~"},
          {"endmodule", "end", "endcase", "join", "join_any", "endfunction", "endgenerate"},
          {"pair fork join join_any", "unit module macromodule", "layer `ifdef `ifndef / `elsif `else / `endif", "region //{ //}"}},
      colors);
}

std::shared_ptr<const Blocks> blocksOf(const std::string& text, const std::shared_ptr<const FoldRules>& rules) {
  const Snapshot snapshot(text);
  BlockIndex index;
  index.setRules(rules);
  EXPECT_TRUE(index.update(snapshot));
  return index.blocks(snapshot);
}

// "1-4 2-3", from 1.
std::string foldsOf(const Blocks& blocks) {
  std::string all;
  for (const Fold& fold : blocks.foldsIn(LineNo(0), LineNo(blocks.text().lineCount())))
    all += (all.empty() ? "" : " ") + std::to_string(fold.first.value + 1) + '-' + std::to_string(fold.last.value + 1);
  return all;
}

}   // namespace

TEST(Blocks, AreTyped) {
  const struct {
    const char *why, *text, *folds;
  } cases[] = {
      {"a directive closes no begin", "begin\n`ifdef A\nx\n`endif\nend\n", "1-5 2-4"},
      {"arms split one begin", "module m;\n`ifdef A\nif (a) begin\n`else\nif (b) begin\n`endif\nx;\nend\nendmodule\n",
       "1-9 2-3 3-8 4-6"},
      {"a missing end harms its module only", "module a;\nbegin\nendmodule\nmodule b;\nbegin\nend\nendmodule\n", "1-3 4-7 5-6"},
      {"a missing endmodule too", "module a;\nbegin\nx;\nmodule b;\nbegin\nend\nendmodule\n", "4-7 5-6"},
      {"an extra closer closes nothing", "module a;\nendcase\nend\nbegin\nx\nend\nendmodule\n", "1-7 4-6"},
      {"end else begin", "if (a) begin\nx\nend else begin\ny\nend\n", "1-2 3-5"},
      {"prototypes", "module m;\nextern function f;\ntypedef function g;\nwait fork;\nfunction h;\nx\nendfunction\nendmodule\n",
       "1-8 5-7"},
      {"labels and any join", "fork : a\nbegin : b\nx\nend : b\njoin_any : a\n", "1-5 2-4"},
      {"words by their kind", "casex (a)\n1: begin\nx\nend\nendcase\nmacromodule q;\nendmodule\n", "1-5 2-4 6-7"},
      {"comments, strings and parts of words", "begin // end\n\"end\" /* end */ the_end `end $end x.end\nend\n", "1-3"},
      {"comments fold", "/* a\nb\nc */\nx\n// 1\n// 2\nx // 3\n// 4\nx\n", "1-3 5-6"},
      {"comments at the end", "x\n// 1\n// 2", "2-3"},
      {"regions cross nothing", "//{ a\nbegin\n//{\nx\n//}\nend\n//}\n//}\n", "1-7 2-6 3-5"},
      {"brackets", "m #(\n.a(1)\n) u (\n.b\n);\n(\n}\n)\n", "1-2 3-5 6-8"},
  };
  for (const auto& c : cases) EXPECT_EQ(foldsOf(*blocksOf(c.text, verilog())), c.folds) << c.why;

  // Without block words the indentation counts.
  const auto plain = std::make_shared<const FoldRules>(FoldLists{}, nullptr);
  EXPECT_EQ(foldsOf(*blocksOf("a\n  b\n    c\n\n  d\ne\n\tf\n\n", plain)), "1-5 2-3 6-8");
}

TEST(Blocks, PairsAndBlocksAround) {
  const std::string text = "module m;\nif (a) begin : x\n  y(1,\n  2);\nend\n`ifdef A\n`endif\nendmodule";
  const auto blocks = blocksOf(text, verilog());
  const auto at = [&](const char* word) { return ByteOffset(static_cast<std::int64_t>(text.find(word))); };
  const auto name = [&](ByteRange range) { return blocks->text().bytes(range); };
  const auto pair = [&](ByteOffset here) {
    const auto found = blocks->pairAt(here);
    return found ? name(found->here) + ' ' + name(found->partner) : std::string();
  };
  EXPECT_EQ(pair(at("begin")), "begin end");
  EXPECT_EQ(pair(at("begin") + 5), "begin end");
  EXPECT_EQ(pair(at("begin") + 6), "");
  EXPECT_EQ(pair(at("end\n")), "end begin");
  EXPECT_EQ(pair(at("`ifdef") + 3), "`ifdef `endif");
  EXPECT_EQ(pair(blocks->text().size()), "endmodule module");
  // Each holds the one before.
  ByteRange range{at("2)"), at("2)")};
  for (const char* expected : {"(1,\n  2)", "begin : x\n  y(1,\n  2);\nend", text.c_str()}) {
    const auto around = blocks->around(range);
    ASSERT_TRUE(around);
    EXPECT_EQ(name(range = *around), expected);
  }
  EXPECT_FALSE(blocks->around(range));
  // The first line is indented: its block begins nowhere.
  const auto plain = blocksOf("  a\n    b\n  c\n", std::make_shared<const FoldRules>(FoldLists{}, nullptr));
  EXPECT_TRUE(plain->around({ByteOffset(9), ByteOffset(9)}) == (ByteRange{ByteOffset(0), ByteOffset(9)}));
  EXPECT_EQ(plain->foldsAround(LineNo(1)).size(), 1u);
}

// What edits leave is what a reading from the beginning finds, and an edit costs its surroundings.
TEST(Blocks, EditsGiveWhatAReadingFromTheBeginningGives) {
  test::Random random;
  SCOPED_TRACE(random.message());
  static const char* const kPieces[] = {
      "begin\n",    "end\n",    "module m;\n", "endmodule\n",   "case (x)\n",   "endcase ", "`ifdef A\n",
      "`else\n",    "`endif\n", "// c\n",      "//{\n",         "//}\n",        "/* ",      "*/ ",
      "(\n",        ") ",       "{",           "}\n",           "\"",           "x;\n",     "\r\n",
      "  y = 1;\n", "fork ",    "join\n",      "function f;\n", "endfunction\n"};
  const auto pieces = [&](std::int64_t count) {
    std::string text;
    for (; count > 0; --count) text += kPieces[random.upTo(std::ssize(kPieces))];
    return text;
  };
  for (const auto& rules : {verilog(), std::make_shared<const FoldRules>(FoldLists{}, nullptr)}) {
    Document document;
    document.reset(Snapshot(pieces(30000)));
    BlockIndex index;
    index.setRules(rules);
    std::vector<Change> changes;
    const auto heard = document.subscribe([&](const Change& change) { changes.push_back(change); });
    ASSERT_TRUE(index.update(document.snapshot()));
    const std::int64_t whole = index.stretchesRead();
    ASSERT_GT(whole, 3);
    for (std::int64_t step = test::steps(60); step > 0; --step) {
      for (std::int64_t edits = random.upTo(3); edits >= 0; --edits) {
        std::vector<Edit> spans;
        std::int64_t at = 0;
        for (std::int64_t n = random.upTo(4); n >= 0; --n) {
          at = std::min(at + random.upTo(document.snapshot().size().value / 2 + 1), document.snapshot().size().value);
          const std::int64_t end =
              std::min(at + (random.oneIn(9) ? random.upTo(50000) : random.upTo(20)), document.snapshot().size().value);
          spans.push_back({{ByteOffset(at), ByteOffset(end)}, pieces(random.oneIn(9) ? random.upTo(5000) : random.upTo(3))});
          at = end + 1;
          if (at > document.snapshot().size().value) break;
        }
        document.apply(spans, {});
      }
      for (const Change& change : changes) index.edit(change);
      changes.clear();
      ASSERT_TRUE(index.update(document.snapshot()));
      ASSERT_EQ(foldsOf(*index.blocks(document.snapshot())), foldsOf(*blocksOf(document.snapshot().bytes(), rules))) << step;
    }
  }

  std::string text;
  for (int i = 0; i < 20000; ++i) text += "module m;\nalways begin\nx <= y;\nend\nendmodule\n";
  Document document;
  document.reset(Snapshot(text));
  BlockIndex index;
  index.setRules(verilog());
  Change change;
  const auto heard = document.subscribe([&](const Change& made) { change = made; });
  ASSERT_TRUE(index.update(document.snapshot()));
  const std::int64_t before = index.stretchesRead();
  document.apply(std::vector<Edit>{{{ByteOffset(500000), ByteOffset(500000)}, "begin "}}, {});
  index.edit(change);
  ASSERT_TRUE(index.update(document.snapshot()));
  EXPECT_LE(index.stretchesRead(), before + 3);
}
