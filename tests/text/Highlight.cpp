#include "text/color/Highlight.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/text/Pieces.h"
#include "text/color/EntryMarks.h"
#include "text/color/LongColors.h"

using namespace text;

namespace {

LanguageTables verilog() {
  return {.caseSensitive = true,
          .keywords = {"module", "endmodule", "begin", "end", "end-if", "time", "$display", "$time", "`define", "74ls00", "=>x"},
          .operators = {"=", "==", "===", "<=", "<", "+", "/", "-", "&&", "and", "#", "'"},
          .singleComments = {"//"},
          .multiCommentStart = {"/*", "(*"},
          .multiCommentEnd = {"*/", "*)"},
          .stringDelims = {"\""},
          .escapeChar = "\\"};
}

LanguageTables vhdl() {
  return {.caseSensitive = false,
          .keywords = {"entity", "is", "end", "R\u00C9SUM\u00C9"},
          .operators = {"<=", "-", "&", "mod", "/="},
          .singleComments = {"--", "REM"},
          .multiCommentStart = {"comment", "/*"},
          .multiCommentEnd = {"endcomment", "*/"},
          .stringDelims = {"\"", "\"\"\"", "%"},
          .escapeChar = ""};
}

LanguageTables tcl() {
  return {.caseSensitive = true,
          .keywords = {"set", "-clock", "-clock_fall", "#pragma", "create_clock"},
          .operators = {"$"},
          .singleComments = {"#"},
          .multiCommentStart = {},
          .multiCommentEnd = {},
          .stringDelims = {"\"", "'"},
          .escapeChar = "\""};
}

// One letter for each byte: k keyword, o operator, c comment, s string, n number, '.' plain.
std::string drawn(std::string_view line, const std::vector<Token>& tokens) {
  std::string out(line.size(), '.');
  std::int64_t last = 0;
  for (const Token& t : tokens) {
    EXPECT_GE(t.begin, last);
    EXPECT_GT(t.length, 0);
    last = t.begin + t.length;
    EXPECT_LE(last, static_cast<std::int64_t>(line.size()));
    for (std::int64_t i = t.begin; i < last; ++i) out[static_cast<std::size_t>(i)] = ".kocsn"[static_cast<std::size_t>(t.kind)];
  }
  return out;
}

struct Row {
  std::string line, kinds;
  LineState from = 0, to = 0;
};

void expectRows(const LanguageTables& tables, const std::vector<Row>& rows) {
  const Highlighter highlighter(tables);
  ASSERT_TRUE(highlighter.valid());
  std::vector<Token> tokens;
  for (const Row& row : rows) {
    EXPECT_EQ(highlighter.scanLine(row.line, row.from, &tokens), row.to) << row.line;
    EXPECT_EQ(drawn(row.line, tokens), row.kinds) << row.line;
    EXPECT_EQ(highlighter.scanLine(row.line, row.from, nullptr), row.to) << row.line;
  }
}

}   // namespace

TEST(Highlight, CaseCountsAndSignsInKeywords) {
  expectRows(verilog(), {
                            {"module m; endmodule", "kkkkkk....kkkkkkkkk"},
                            {"Module xmodule module1 modul", "............................"},
                            {"$display $displayb $time time", "kkkkkkkk...........kkkkk.kkkk"},
                            {"$foo $end a$time `define `time", ".................kkkkkkk......"},
                            {"end-if end-iff end", "kkkkkk.kkko....kkk"},
                            {"74ls00 74ls01", "kkkkkk.nnnnnn"},
                            {"a<=b==c===d", ".oo.oo.ooo."},
                            {"x and y andy", "..ooo......."},
                            {"a=>x", ".o.."},
                        });
}

TEST(Highlight, CommentsAndStrings) {
  expectRows(verilog(), {
                            {"a // b \"c\" /* end", "..ccccccccccccccc"},
                            {"a /* end */ end /*/ x", "..ccccccccc.kkk.ccccc", 0, 1},
                            {"end */ end", "cccccc.kkk", 1, 0},
                            {"end *) end", "cccccccccc", 1, 1},
                            {"end *) end", "cccccc.kkk", 2, 0},
                            {"", "", 2, 2},
                            {"(* // *) end (* \"", "cccccccc.kkk.cccc", 0, 2},
                            {"\"a\\\"b\" end", "ssssss.kkk"},
                            {"\"a\\\\\" end", "sssss.kkk"},
                            {"\"// end", "sssssss"},
                            {"\"a\\", "sss", 0, 4},
                            {"</*c*/b", "occccc."},
                        });
  expectRows(vhdl(), {
                         {"ENTITY Is end\\\"x\\\" IS", "kkkkkk.kk.kkk.ssss.kk"},
                         {"a <= b--c", "..oo..ccc"},
                         {"a - b REM end", "..o...ccccccc"},
                         {"rem", "ccc"},
                         {"remark xrem REM_ rem1 rem", "......................ccc"},
                         {"comment end endcomment is", "cccccccccccccccccccccc.kk"},
                         {"comments end", ".........kkk"},
                         {"x endcommentx endComment is", "cccccccccccccccccccccccc.kk", 1, 0},
                         {"\"\"\"a\"b\"\"\" %x% is", "sssssssss.sss.kk"},
                         {"x\"AB\" \"a\"\"b\" is", ".ssss.ssssss.kk"},
                         {"r\u00E9sum\u00E9 r\u00E9sum", "kkkkkkkk......."},
                         {"a MOD b /= c", "..ooo...oo.."},
                     });
  expectRows(tcl(), {
                        {"create_clock -clock x -clock_fall #a", "kkkkkkkkkkkk.kkkkkk...kkkkkkkkkkk.cc"},
                        {"a-clock -clocks", "..............."},
                        {"#pragma set #pragmas", "kkkkkkk.kkk.cccccccc"},
                        {"$set set", "okkk.kkk"},
                        {"\"a\"\"b\" set 'it", "ssssss.kkk.sss"},
                        {"'a\"'b' set", "ssssss.kkk"},
                        {"16#FF 3", "nnccccc"},
                    });
}

TEST(Highlight, PlacesNamesAndWhatGoesOn) {
  LanguageTables shell = tcl();
  shell.escapeChar = "\\";
  shell.singleComments = {marked(EntryMark::atWord, "#")};
  expectRows(shell, {{"set $# ${#a} #c", "kkk.o..o.....cc"}, {"(#c", ".cc"}});
  shell.singleComments = {marked(EntryMark::atCommand, "#")};
  expectRows(shell, {{"  # c", "..ccc"},
                     {"set #c", "kkk..."},
                     {"set;#c", "kkk.cc"},
                     {"{ # c", "..ccc"},
                     {"{#ff}", "....."},
                     {"set a \\", "kkk....", 0, 1},
                     {" #ff", "....", 1, 0},
                     {"#c \\", "cccc"},
                     {"\"a\\", "sss", 0, 2},
                     {"b\" set", "ss.kkk", 2, 0}});
  LanguageTables lines = tcl();
  lines.singleComments = {marked(EntryMark::atLine, "-")};
  lines.stringDelims = {marked(EntryMark::atLine, "+")};
  expectRows(lines, {{"-a", "cc"}, {"+a + b", "ssssss"}, {" +a -b", "......"}});
  LanguageTables c = verilog();
  c.keywords.push_back("#define");
  c.stringDelims.push_back(marked(EntryMark::name, "\\"));
  expectRows(c, {{"#  define a", "kkkkkkkkk.."},
                 {"a #  define", "..o........"},
                 {"\\a//b end", "......kkk"},
                 {"end \\", "kkk.."},
                 {"'\"' end", "o.o.kkk"}});
  LanguageTables h = vhdl();
  h.stringDelims.push_back(marked(EntryMark::name, "\\ \\"));
  h.keywords.push_back(marked(EntryMark::library, "bit"));
  expectRows(h, {{"\\a--b\\ bit -- c", ".......kkk.cccc"}});
  EXPECT_TRUE(isLibraryWord(Highlighter(h), "BIT") && Highlighter(h).isKeyword("bit"));
  EXPECT_FALSE(isLibraryWord(Highlighter(h), "entity"));
}

TEST(Highlight, Numbers) {
  expectRows(verilog(), {
                            {"12 1_000 0xFF 10ns a1 1.5e-3 1e+6 2.x", "nn.nnnnn.nnnn.nnnn....nnnnnn.nnnn.n.."},
                            {"8'hFF 4'b10?z 'b0 '1 32'sd15 8'", "nnnnn.nnnnnnn.nnn.nn.nnnnnnn.no"},
                            {"4'(x) '{0} 'b' clk'1", "no....o.n..o.o....on"},
                            {"16#FF# 2#1.0#e-3 16#FG#", "nnnnnn.nnnnnnnnn.nno..o"},
                            {"1..2 0x1e-3 1.2.3", "n..n.nnnnon.nnn.n"},
                        });
}

TEST(Highlight, TablesThatFitAndTheirKeywords) {
  EXPECT_FALSE(Highlighter({.multiCommentStart = {"/*", "(*"}, .multiCommentEnd = {"*/"}}).valid());
  const Highlighter words(verilog());
  EXPECT_TRUE(words.isKeyword("$display") && words.isKeyword("end") && words.isKeyword("end-if"));
  EXPECT_FALSE(words.isKeyword("End") || words.isKeyword("and") || words.isKeyword("$disp") || words.isKeyword("") ||
               words.isKeyword("<="));
  EXPECT_TRUE(Highlighter(vhdl()).isKeyword("eNtItY"));
}

// What is not linear here runs for hours: into the time limit of the test.
TEST(Highlight, HostileLinesCostTheirLengthOnly) {
  LanguageTables tables = verilog();
  std::mt19937 random(1);
  for (int i = 0; i < 100'000; ++i) tables.keywords.push_back((i % 2 ? "$w" : "w") + std::to_string(random()));
  for (int i = 1; i < 3000; ++i) tables.keywords.push_back(std::string(static_cast<std::size_t>(i), '$'));
  tables.operators.push_back(std::string(100, '<') + "x");
  const Highlighter highlighter(tables);
  const std::string parts[] = {"$",  "<", "/", "/*", "/**/", "\"",  "\\",     "1'",     "1#1.",
                               "w1", "-", "'", "(*", "*",    "1e+", "\u00E9", "\u0301", "$w"};
  for (const std::string& part : parts) {
    std::string line;
    while (line.size() < 1'000'000) line += part;
    std::vector<Token> tokens;
    const LineState full = highlighter.scanLine(line, 0, &tokens);
    EXPECT_EQ(full, highlighter.scanLine(line, 0, nullptr)) << part;
  }
}

// StateCache ----------------------------------------------------------------------------------------------------------

namespace {

LineState countedState(const Highlighter& highlighter, const Snapshot& text, std::int64_t line) {
  LineState state = 0;
  for (std::int64_t i = 0; i < line; ++i) state = highlighter.scanLine(text.line(LineNo(i)), state, nullptr);
  return state;
}

std::string sourceLines(std::mt19937& random, int lines) {
  static const std::array<std::string, 9> kinds{"assign a = b;", "/* begin", "end */", "// note /*", "x = \"/*\";", "",
                                                "(* full *)",    "(*",       "*)"};
  std::string out;
  for (int i = 0; i < lines; ++i)
    out += kinds[random() % 8 < 6 ? (random() % 2 ? 0 : 4) : random() % kinds.size()] + std::string(random() % 200, ' ') + "\n";
  return out;
}

}   // namespace

TEST(HighlightStates, EqualCountingFromTheTopThroughEdits) {
  std::mt19937 random(23);
  const auto highlighter = std::make_shared<const Highlighter>(verilog());
  for (int round = 0; round < 4; ++round) {
    Document document;
    document.reset(inPieces(sourceLines(random, 6000), 30000));   // several intervals
    StateCache cache;
    cache.setHighlighter(highlighter);
    const auto held = document.subscribe([&](const Change& change) { cache.onChange(change); });
    for (int step = 0; step < 25; ++step) {
      const Snapshot& text = document.snapshot();
      for (int look = 0; look < 2; ++look) {
        const auto line = static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(text.lineCount()));
        ASSERT_EQ(cache.stateAt(text, LineNo(line)), countedState(*highlighter, text, line)) << "line " << line << " step " << step;
      }
      std::vector<Edit> edits;
      ByteOffset at(0);
      for (std::uint32_t i = 0; i <= random() % 3; ++i) {
        at += static_cast<std::int64_t>(random() % 200'000);
        if (at >= text.size()) break;
        const ByteOffset end =
            std::min(text.size(), at + static_cast<std::int64_t>(random() % 4 ? random() % 30 : random() % 150'000));
        edits.push_back({{at, end},
                         random() % 4 ? std::array<std::string, 4>{"/*", "*/", "x\n", "(*"}[random() % 4]
                                      : sourceLines(random, static_cast<int>(random() % 1500))});
        at = end + 1;
      }
      if (random() % 6 == 0) document.undo();
      else document.apply(edits, {});
    }
  }
}

// What is visible of a long line has the colours of a scan from its start, wherever one looks and through edits.
TEST(HighlightLongLines, WindowsHaveTheColoursOfTheWholeLine) {
  const std::array<std::string, 8> kinds{"assign a=b1;", "/* begin", "end */", "\"end\\\"", "\"", "8'hFF ", "(* x *)", "always "};
  std::mt19937 random(31);
  const auto highlighter = std::make_shared<const Highlighter>(verilog());
  std::string bytes = "/* first\n*/ ";
  while (bytes.size() < 700'000)
    bytes += kinds[random() % 100 ? random() % 2 ? 0 : 5 : random() % kinds.size()] +
             (random() % 500 ? "" : std::string(random() % 60'000, random() % 2 ? '/' : 'w') + " ");
  bytes += "\nlast";
  Document document;
  document.reset(inPieces(bytes, 50'000));
  LongColors colors;
  StateCache states;
  states.setHighlighter(highlighter);
  const auto held = document.subscribe([&](const Change& change) {
    states.onChange(change);
    colors.onChange(change, document.snapshot());
  });
  for (int step = 0; step < 25; ++step) {
    const Snapshot& text = document.snapshot();
    const LineNo line(step % 10 == 9 ? 0 : 1);
    const std::string content = text.line(line);
    const auto size = static_cast<std::int64_t>(content.size());
    const LineState state = states.stateAt(text, line);
    std::vector<Token> whole, window;
    highlighter->scanLine(content, state, &whole);
    const std::string expected = drawn(content, whole);
    for (int look = 0; look < 4; ++look) {
      const auto from = static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(size)), to = std::min(size, from + 300);
      int calls = 1;
      for (; !colors.tokens(*highlighter, text, line, state, from, to, 100'000, &window); ++calls) ASSERT_LT(calls, 20);
      std::string got = drawn(content, window);
      ASSERT_EQ(got.substr(static_cast<std::size_t>(from), 300), expected.substr(static_cast<std::size_t>(from), 300))
          << "step " << step << " from " << from;
      EXPECT_TRUE(step > 0 || look > 0 || calls > from / 200'000) << "the budget bounds a call";
    }
    if (step % 6 == 5) {
      document.undo();
      continue;
    }
    const ByteOffset at(static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(text.size().value)));
    const ByteOffset end = std::min(text.size(), at + static_cast<std::int64_t>(random() % 4 ? 0 : random() % 3000));
    document.apply(Edit{{at, end}, std::array<std::string, 5>{"/*", "*/", "\"", "(*", " "}[random() % 5]}, {});
  }
}

TEST(HighlightLongLines, AWordWithoutEndEndsTheColoursOnly) {
  const Highlighter highlighter(verilog());
  const std::string line = "begin " + std::string(300'000, 'w') + " begin " + std::string(300'000, '1');
  const Snapshot text(line);
  LongColors colors;
  std::vector<Token> tokens;
  EXPECT_TRUE(colors.tokens(highlighter, text, LineNo(0), 0, 0, 100, 1'000'000, &tokens));
  EXPECT_EQ(tokens, (std::vector<Token>{{0, 5, TokenKind::keyword}}));
  for (const std::int64_t from : {299'990, 300'050, 600'000}) {
    EXPECT_TRUE(colors.tokens(highlighter, text, LineNo(0), 0, from, from + 100, 1'000'000, &tokens));
    EXPECT_TRUE(tokens.empty()) << from;
  }
}

TEST(HighlightStates, LoneCarriageReturnsAndNoLanguage) {
  const Snapshot text = inPieces("a // x /*\r/* b\rc */\rend", 4, LineMode::cr);
  StateCache cache;
  EXPECT_EQ(cache.stateAt(text, LineNo(2)), 0);
  cache.setHighlighter(std::make_shared<const Highlighter>(verilog()));
  const LineState expected[] = {0, 0, 1, 0};
  for (std::int64_t i = 0; i < 4; ++i) EXPECT_EQ(cache.stateAt(text, LineNo(i)), expected[i]) << i;
}
