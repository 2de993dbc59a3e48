#include "language/DefinitionText.h"

#include <cstdlib>

#include "base/Strings.h"
#include "tests/language/Language.h"

namespace {

std::string readBack(const char* lines) {
  const auto languages = definition::read(toCrLf(q(lines)));
  return languages ? dump(*languages) : "none";
}

}   // namespace

TEST(DefinitionText, KindsOfLines) {
  using K = definition::LineKind;
  struct Case {
    const char* line;
    K kind;
    const char* name;
  };
  // clang-format off
  const Case cases[] = {
      {"SetLanguage:Verilog", K::language, "Verilog"}, {"SetLanguage:", K::language, ""},     {"SetLanguage: a b ", K::language, " a b "},
      {"setlanguage:x", K::body, ""},                  {" SetLanguage:x", K::body, ""},       {"$Desc: hi", K::description, " hi"},
      {"$Desc", K::body, ""},                          {"[Keywords]", K::property, "Keywords"}, {"[Keywords", K::property, "Keyword"},
      {"[Keywords] ", K::property, "Keywords]"},       {"[]", K::body, ""},                   {"[", K::body, ""},
      {"[*]", K::property, "*"},                       {"[ab", K::property, "a"},             {"[{m}]", K::macro, "m"},
      {"[{}]", K::macro, ""},                          {"[{a", K::body, ""},                  {"[{ab", K::macro, ""},
      {"[##]", K::templateText, ""},                   {"[#case#]", K::templateText, "case"}, {"[#case]", K::templateText, "cas"},
      {"[^Edges^]", K::wordList, "Edges"},             {"[^^", K::body, ""},                  {" [Keywords]", K::body, ""}};
  // clang-format on
  for (const Case& c : cases) {
    EXPECT_EQ(definition::kindOf(q(c.line)), c.kind) << c.line;
    EXPECT_EQ(s(definition::nameIn(q(c.line), c.kind).toString()), c.name) << c.line;
  }
}

TEST(DefinitionText, ReadsEverySection) {
  const auto language =
      definition::read(
          q("SetLanguage:Verilog\nlost before the first header\n$Desc:lost too\n[Keywords]\nmodule\n\nendmodule\n[Operators]\n+\n"
            "[SingleComments]\n//\n[MultiCommentStart]\n/*\n[MultiCommentEnd]\n*/\n[StringDelims]\n\"\n[Extensions]\nv\nvh\n"
            "[HelpFile]\n$Zelkor/help\n.html\n[IndIn]\nbegin\n[IndOut]\nend\n[IndInOut]\nelse\n[Description]\nA\n\nB\n"
            "[Case Sensitive]\nignored\n[Unknown]\ndropped\n[^Edges^]\nposedge\n$Desc:first\n\nnegedge\n$Desc:the edges\n"
            "[{Compile}]\nExe a b\n\nExe c\n$Desc:runs it\n[#case#]\ncase ($$)\n\n  end\n\n$Desc:a case\n"))
          ->Item(1);
  clsLang wanted;
  wanted.Name = q("Verilog");
  wanted.isCaseSensitive = true;
  wanted.Keywords = q("module\r\nendmodule\r\n");
  wanted.Operators = q("+\r\n");
  wanted.Description = q("A\r\nB\r\n");
  wanted.SingleComments = q("//\r\n");
  wanted.MultiCommentStart = q("/*\r\n");
  wanted.MultiCommentEnd = q("*/\r\n");
  wanted.StringDelims = q("\"\r\n");
  wanted.Extension = q("vvh");   // joined with nothing between
  wanted.HelpFile = q("$Zelkor/help.html");
  wanted.BlockStart = q("begin\r\n");
  wanted.BlockEnd = q("end\r\n");
  wanted.BlockMid = q("else\r\n");
  EXPECT_EQ(dump(*language), dump(wanted) +
                                 "list=Edges | posedge\\r\\nnegedge\\r\\n | the edges\n"   // the last description wins
                                 "macro=Compile | Exe a b\\r\\nExe c\\r\\n | runs it\n"
                                 "template=case | case | case ($$)\\r\\n\\r\\n  end\\r\\n | a case\n");
}

TEST(DefinitionText, HandEditedFilesLoseNothingElse) {
  struct Case {
    const char *text, *shows;   // a part of the model's dump
  };
  for (const Case& c : {
           Case{"", "none"},
           Case{"\n\n\n", "none"},
           Case{"no language at all\n[Keywords]\na\n", "none"},
           Case{"[Keywords]\na\n[{m}]\nx\nSetLanguage:L\n[Operators]\n+\n", "Library Words=\nOperators=+\\r\\n\n"},
           Case{"SetLanguage:L\n[case sensitive]\n", "case=no"},
           Case{"SetLanguage:L\n[Keywords\na\n", "Keywords=\n"},
           Case{"SetLanguage:L\n[Keywords]\na\n[Keywords]\nb\n", "Keywords=b\\r\\n\n"},
           Case{"SetLanguage:L\n[#a#]\n[#b#]\nx", "template=a | a |  | \ntemplate=b | b | x | \n"},
           Case{"SetLanguage:L\n[#a#]\n\n", "template=a | a |  | \n"},
           Case{"SetLanguage:L\n[#a#]\n\nx\n", "template=a | a | \\r\\nx | \n"},
           Case{"SetLanguage:L\n[{m}]\n$Desc:d\n[{n}]\n", "macro=m |  | d\nmacro=n |  | \n"},   // no description leaks on
           Case{"SetLanguage:L\n[Keywords]\na\n$Desc:x\n[^w^]\nb\n", "list=w | b\\r\\n | \n"},
           Case{"SetLanguage:A\n[Keywords]\na\nSetLanguage:A\n[Keywords]\nb\n", "LANGUAGE=A\ncase=no\nKeywords=b"},
           Case{"SetLanguage:L\n[Keywords]\n[{\n[]\n[#\n", "Keywords=[{\\r\\n[]\\r\\n[#\\r\\n"},
       })
    EXPECT_NE(readBack(c.text).find(c.shows), std::string::npos) << c.text << "\n-- gives --\n" << readBack(c.text);
}

TEST(DefinitionText, AnyLineEndWillDo) {
  const QString text = q("SetLanguage:L\n[#t#]\na\n\nb\n[Keywords]\nx\ny");
  const std::string wanted = dump(*definition::read(text));
  EXPECT_EQ(dump(*definition::read(toCrLf(text))), wanted);
  EXPECT_EQ(dump(*definition::read(QString(text).replace(u'\n', u'\r'))), wanted);
  EXPECT_EQ(dump(*definition::read(toCrLf(text) + q("\r\n"))), wanted);
}

TEST(DefinitionText, WritesTheFormLineByLine) {
  colLangs languages;
  const auto empty = languages.Add(q("Empty"));
  const auto l = languages.Add(q("Full"));
  l->Keywords = q("a\r\nb\r\n");
  l->Extension = q("v;vh");
  l->isCaseSensitive = true;
  l->EscapeChar = q("\\");
  l->cWordList()->Add(q("W"), q("x\r\n"))->Desc = q("words");
  const auto m = l->cMacros()->Add();
  m->Name = q("M");
  m->CommandString = q("Exe\r\n");
  const auto t = l->cTemplate()->Add(q("old"));
  t->HotKey = q("new");
  t->UserString = q("one\r\n\r\ntwo");
  t->Desc = q("text");
  EXPECT_EQ(s(definition::write(languages)),
            "SetLanguage:Empty\r\n[Keywords]\r\n\r\n"
            "SetLanguage:Full\r\n[Keywords]\r\na\r\nb\r\n\r\n[Extensions]\r\nv;vh\r\n[Case Sensitive]\r\n"
            "[^W^]\r\nx\r\n\r\n$Desc:words\r\n[{M}]\r\nExe\r\n\r\n[#new#]\r\none\r\n\r\ntwo\r\n$Desc:text\r\n");
  const auto again = definition::read(definition::write(languages));
  EXPECT_EQ(s(again->Item(2)->cTemplate()->Item(1)->Name), "new");   // the file keeps the hot key only
  EXPECT_TRUE(again->Item(2)->EscapeChar.isEmpty());
}

TEST(DefinitionText, RandomModelsComeBack) {
  const char* set = std::getenv("ZELKOR_SEED");
  const unsigned first = set ? static_cast<unsigned>(std::strtoul(set, nullptr, 10)) : 1;
  for (unsigned seed = first; seed < first + 400; ++seed) {
    const auto languages = ModelMaker(seed).languages();
    const QString text = definition::write(*languages);
    ASSERT_EQ(dump(*definition::read(text)), dump(*languages)) << "seed " << seed;
    ASSERT_EQ(s(definition::write(*definition::read(text))), s(text)) << "seed " << seed;
  }
}

TEST(DefinitionText, BlocksAreCutOutAsTheyStand) {
  const QString text = q("lost\nSetLanguage:A\n[Keywords]\n\na  \nSetLanguage:B\nb\rSetLanguage:A\nsecond");
  EXPECT_EQ(s(definition::blockOf(text, q("A"))), "SetLanguage:A\r\n[Keywords]\r\n\r\na  \r\n");
  EXPECT_EQ(s(definition::blockOf(text, q("B"))), "SetLanguage:B\r\nb\r\n");
  EXPECT_EQ(s(definition::blockOf(text, q("a"))), "");
  EXPECT_EQ(s(definition::blockOf(text, q(""))), "");
  EXPECT_EQ(s(definition::blockOf(q("SetLanguage:\r\nx"), q(""))), "SetLanguage:\r\nx\r\n");
}

TEST(DefinitionText, WarnsOfLinesThatWouldBeLost) {
  EXPECT_EQ(definition::linesTakenForHeaders(q("[7:0] bus\r\nok\r\n\r\n$Desc:x\r\n[{\r\nSetLanguage:\r\n [*]\r\n[*]")),
            (QList<int>{0, 3, 5, 7}));
  EXPECT_TRUE(definition::linesTakenForHeaders(q("")).isEmpty());
}
