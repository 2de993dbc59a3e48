#include "language/CaretWords.h"

#include <QtTest>

#include "base/Program.h"
#include "base/Strings.h"
#include "control/CodeMax.h"
#include "control/edit/Carets.h"
#include "language/Registration.h"
#include "language/ucCM.h"
#include "tests/language/Language.h"
#include "tests/language/Marked.h"

namespace {

class CaretWords : public testing::Test {
 protected:
  CaretWords() {
    language = manager.Languages()->Add(q("L"));
    AddLanguages(*manager.Languages());
    cmx.setLanguage(q("L"));
    searchState() = {};
    setStatusSink([this](const QString& text) { status = text; });
  }
  ~CaretWords() override {
    setStatusSink({});
    RemoveLanguages();
    searchState() = {};
  }

  void show(const char* marked) { showMarked(cmx, marked); }
  std::string shown() { return markedText(cmx); }
  std::string bytes() { return bytesOf(cmx); }
  void list(const char* name, const char* words) { language->cWordList()->Add(q(name), toCrLf(q(words))); }
  void hotKey(const char* name, const char* text) { language->cTemplate()->Add(q(name))->UserString = toCrLf(q(text)); }
  std::string afterKey(const char* marked, bool previous) {
    show(marked);
    ProcessWordList(cmx, language.get(), index, previous);
    return shown();
  }
  // Undone once, if anything was changed, it is the text of before.
  void expectOneStepFrom(const char* marked) {
    const std::string before = parseCaret(marked).bytes;
    if (bytes() != before) cmx.editor().undo();
    EXPECT_EQ(bytes(), before) << marked;
  }
  std::string afterExpansion(const char* marked, const ExpandText& expand = {}) {
    show(marked);
    ExpandTemplate(cmx, manager, 1, expand);
    return shown();
  }

  ucCM manager;
  std::shared_ptr<clsLang> language;
  CodeMax cmx;
  QString status;
  int index = 1;   // the frame's WordListIndex
};

}   // namespace

TEST_F(CaretWords, WordsTakeTurns) {
  list("Colours", "RED\nGREEN\nBLUE\n");
  list("One", "only\n");
  list("Signs", "<\n<=\n>\n");
  list("Phrases", "two\nthree words here\n\nlast");   // "last" has no break behind it
  list("Twice", "a\nb\nA\nc\n");
  list("Modes", "r\nr+\nw\n");
  list("Levels", "1'b0\n1'b1\n");
  list("Tests", "-eq\n-ne\n");
  language->Operators = q("<\r\n=<=\r\n");
  struct Case {
    const char *before, *next, *previous;
  };
  for (const Case& c : {
           Case{"x gre|en y", "x BLU|E y", "x RED| y"},
           Case{"blue|", "RED|", "GREE|N"},
           Case{"|Red", "|GREEN", "|BLUE"},
           Case{"ONLY|", "only|", "only|"},
           Case{"a |< b", "a |<= b", "a |> b"},
           Case{"(two|)", "(thr|ee words here)", "(|)"},   // an empty line of a list is a word like any other
           Case{"last|", "last|", "last|"},
           Case{"a|", "c|", "b|"},   // the last of equal lines decides
           Case{"unknown|", "unknown|", "unknown|"},
           Case{"| x", "| x", "| x"},
           Case{"redgreen|", "redgreen|", "redgreen|"},
           Case{"green green gre|en", "green green BLU|E", "green green RED|"},
           Case{"open f r|+", "open f w|", "open f r|"},   // the longest word at the caret, wherever that is in it
           Case{"open f |r", "open f |r+", "open f |w"},
           Case{"y = 1|'b0;", "y = 1|'b1;", "y = 1|'b1;"},
           Case{"if (a <|= b)", "if (a >| b)", "if (a <| b)"},
           Case{"if (a =<|= b)", "if (a =<|= b)", "if (a =<|= b)"},   // another sign of the language
           Case{"[ x -e|q 1 ]", "[ x -n|e 1 ]", "[ x -n|e 1 ]"},
           Case{"x-eq|", "x-eq|", "x-eq|"},
           Case{"three wor|ds here", "|", "two|"},
       }) {
    index = 1;
    EXPECT_EQ(afterKey(c.before, false), c.next) << c.before;
    index = 1;
    EXPECT_EQ(afterKey(c.before, true), c.previous) << c.before;
    expectOneStepFrom(c.before);
  }
}

TEST_F(CaretWords, PressingAgainGoesOn) {
  list("Colours", "RED\nGREEN\nBLUE\n");
  show("(re|d)");
  std::string seen;
  for (int i = 0; i < 4; ++i) {
    ProcessWordList(cmx, language.get(), index, false);
    seen += bytes();
  }
  EXPECT_EQ(seen, "(GREEN)(BLUE)(RED)(GREEN)");
  EXPECT_EQ(s(status), "Processing WordList 'Colours'");
  while (cmx.CanUndo() && bytes() != "(red)") cmx.editor().undo();
  EXPECT_EQ(bytes(), "(red)");
}

TEST_F(CaretWords, TheListLastUsedComesFirst) {
  list("First", "RED\nONE\n");
  list("Second", "RED\nTWO\n");
  list("Third", "X\nY\n");
  index = 2;
  EXPECT_EQ(afterKey("red|", false), "TWO|");
  EXPECT_EQ(s(status), "Processing WordList 'Second'");
  EXPECT_EQ(afterKey("x|", false), "Y|");
  EXPECT_EQ(index, 3);
  EXPECT_EQ(afterKey("red|", false), "ONE|");
  EXPECT_EQ(index, 1);
  for (const int left : {9, 0, -1}) {   // left from another language, or nonsense
    index = left;
    EXPECT_EQ(afterKey("red|", false), "ONE|");
    EXPECT_EQ(index, 1);
  }
  index = 2;
  status.clear();
  EXPECT_EQ(afterKey("nowhere|", false), "nowhere|");
  EXPECT_EQ(index, 2);
  EXPECT_TRUE(status.isEmpty());
}

TEST_F(CaretWords, TheReplacingLeavesItsTexts) {
  list("L", "ab\nlonger\n");
  searchState().options.matchCase = true;   // would keep the search in upper case from finding "ab"
  searchState().options.regex = true;
  EXPECT_EQ(afterKey("AB ab| Ab", false), "AB lo|nger Ab");
  EXPECT_TRUE(searchState().options.matchCase && searchState().options.regex);
  EXPECT_EQ(s(searchState().findText), "AB");
  EXPECT_EQ(s(searchState().replaceText), "    AB");
  EXPECT_EQ(afterKey("longer|", false), "ab|");
  EXPECT_EQ(s(searchState().findText), "LONGER");
  EXPECT_EQ(s(searchState().replaceText), "LONGER");   // never cut
  searchState() = {};
  searchState().findText = q("mine");
  EXPECT_EQ(afterKey("mine ab| mine", false), "mine lo|nger mine");
  cmx.ExecuteCmd(Cmd::FINDNEXT);
  EXPECT_EQ(shown(), "mine longer @mine|") << "the user's next search is the user's";
  EXPECT_FALSE(gBusy());
}

TEST_F(CaretWords, NothingWithoutLanguageOrRight) {
  list("L", "red\nGREEN\n");
  hotKey("alw", "always");
  cmx.setReadOnly(false);
  show("red|");
  cmx.setReadOnly(true);
  ProcessWordList(cmx, language.get(), index, false);
  EXPECT_EQ(shown(), "red|");
  cmx.setReadOnly(false);
  show("alw|");
  cmx.setReadOnly(true);
  EXPECT_FALSE(ExpandTemplate(cmx, manager, 1, {}));
  EXPECT_EQ(shown(), "alw|");
  cmx.setReadOnly(false);
  EXPECT_FALSE(ExpandTemplate(cmx, manager, 0, {}));
  EXPECT_FALSE(ExpandTemplate(cmx, manager, 2, {}));
  cmx.setLanguage(QString());
  show("red|");
  ProcessWordList(cmx, language.get(), index, false);
  ProcessWordList(cmx, nullptr, index, false);
  EXPECT_EQ(shown(), "red|");
}

TEST_F(CaretWords, TemplatesGoInAtTheirPlace) {
  hotKey("alw", "always @($$clk)\nbegin\n\n  $$\nend");
  hotKey("plain", "one\ntwo");
  hotKey("..", "dots");
  hotKey("none", "");
  hotKey("tab", "one\n\ttwo");
  hotKey("deep", "a\n  b\n    c");
  hotKey("lead", "\na\nb\n");
  struct Case {
    const char *before, *after;
  };
  for (const Case& c : {
           Case{"alw|", "always @(@$$|clk)\nbegin\n\n  $$\nend"},
           Case{"    a|lw;", "    always @(@$$|clk)\n    begin\n    \n      $$\n    end;"},
           Case{"\talw|", "\talways @(@$$|clk)\n\tbegin\n\t\n\t\t$$\n\tend"},   // a level of the template is a tab there
           Case{"\tx\nalw|", "\tx\nalways @(@$$|clk)\nbegin\n\n\t$$\nend"}, Case{"  x\ntab|", "  x\none\n    two|"},
           Case{"\tdeep|", "\ta\n\t\tb\n\t\t\tc|"}, Case{"tab|", "one\n\ttwo|"},
           Case{"ab\tx alw|", "ab\tx always @(@$$|clk)\n      begin\n      \n        $$\n      end"},
           Case{"\xC3\xA4 plain|", "\xC3\xA4 one\n  two|"}, Case{"x\n  plain| y", "x\n  one\n  two| y"}, Case{"none|;", "|;"},
           Case{"  lead|;", "  \na\n  b\n  |;"},   // the search for breaks begins behind the first character
           Case{"ALW|", "ALW|"}, Case{"alwx|", "alwx|"}, Case{" | ", " | "},
           Case{"a ..|", "a dots|"},   // two dots may be a hot key themselves
       }) {
    EXPECT_EQ(afterExpansion(c.before), c.after) << c.before;
    expectOneStepFrom(c.before);
  }
  language->Formatting = q("tabs\r\n");   // a make file: a tab is no blanks, and blanks are no tab
  hotKey("rule", "all:\n\techo\nifdef A\n  B = 1");
  EXPECT_EQ(afterExpansion("  x\nrule|"), "  x\nall:\n\techo\nifdef A\n  B = 1|");
  EXPECT_EQ(afterExpansion("\tx\n\trule|"), "\tx\n\tall:\n\t\techo\n\tifdef A\n\t  B = 1|");
}

TEST_F(CaretWords, SeveralCaretsHaveATemplateEach) {
  hotKey("alw", "always @($$)");
  for (const bool dots : {false, true}) {
    const std::string before = dots ? "alw..\nx\n alw..\n" : "alw\nx\n alw\n";
    show(("|" + before).c_str());
    const text::ByteOffset first(dots ? 5 : 3), second(dots ? 13 : 9);
    carets::set(cmx.editor(), {{first, first}, {second, second}}, 1);
    int asked = 0;
    const ExpandText expand = [&asked](QString&) { ++asked; };
    if (dots) isTemplate(cmx, manager, 1, true, expand);
    else ExpandTemplate(cmx, manager, 1, expand);
    EXPECT_EQ(bytes(), dots ? "always @($$) \nx\n always @($$) \n" : "always @($$)\nx\n always @($$)\n");
    EXPECT_EQ(asked, 1);
    cmx.ExecuteCmd(Cmd::INSERTCHAR, QStringLiteral("c"));
    EXPECT_EQ(bytes(), dots ? "always @(c) \nx\n always @(c) \n" : "always @(c)\nx\n always @(c)\n")
        << "each has its field selected";
    cmx.editor().undo();
    cmx.editor().undo();
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(carets::count(cmx.editor()), 2u);
  }
}

TEST_F(CaretWords, VariablesLeaveFieldsAlone) {
  hotKey("v", "$$name $name $$$name $$");
  QString asked;
  const ExpandText expand = [&](QString& text) {
    asked = text;
    text.replace(q("$name"), q("N\nM"));
  };
  // A value's line breaks are indented like the template's own.
  EXPECT_EQ(afterExpansion(" v|", expand), " @$$|name N\n M $$N\n M $$");
  EXPECT_FALSE(asked.contains(q("$$")));
  EXPECT_FALSE(gBusy());
}

TEST_F(CaretWords, TwoDotsExpand) {
  hotKey("alw", "always\n$$end");
  struct Case {
    const char *before, *after;
    bool found;
  };
  for (const Case& c : {
           Case{"  alw..|", "  always\n  @$$|end ", false},   // the dots become one blank
           Case{"alw..| x", "always\n@$$|end  x", false},
           Case{"alw ..|", "alw ..|", false},
           Case{"foo..|", "foo..|", false},
           Case{"alw...|", "alw...|", false},
           Case{"alw.|", "alw.|", false},
           Case{"..|", "..|", false},
           Case{"alw|", "alw|", true},
           Case{"alwx|", "alwx|", false},
           Case{"|", "|", false},
       }) {
    show(c.before);
    EXPECT_EQ(isTemplate(cmx, manager, 1, true, {}), c.found) << c.before;
    EXPECT_EQ(shown(), c.after) << c.before;
    EXPECT_FALSE(gBusy());
    expectOneStepFrom(c.before);
  }
}

TEST_F(CaretWords, NextFieldGoesForwardOnly) {
  searchState().findText = q("kept");
  show("$$ a|b $$\n x$$$$");
  EXPECT_TRUE(NextField(cmx));
  EXPECT_EQ(shown(), "$$ ab @$$|\n x$$$$");
  EXPECT_TRUE(NextField(cmx));
  EXPECT_EQ(shown(), "$$ ab $$\n x@$$|$$");
  EXPECT_TRUE(NextField(cmx));
  EXPECT_FALSE(NextField(cmx));   // no way round to the first
  EXPECT_EQ(shown(), "$$ ab $$\n x$$@$$|");
  EXPECT_EQ(s(searchState().findText), "kept");
  show("$$ |@x");
  EXPECT_FALSE(NextField(cmx));
}

// Every hot key and every word that is shipped does at the caret what it is there for.
TEST_F(CaretWords, ShippedTemplatesAndWordLists) {
  manager.setIniFile(qEnvironmentVariable("ZELKOR_SOURCE") + q("/config/Zelkor.ini"));
  ASSERT_TRUE(QFile::exists(manager.IniFile())) << "ZELKOR_SOURCE must name the project's folder";
  manager.Init();
  ASSERT_GT(manager.Languages()->Count(), 3);
  RemoveLanguages();
  AddLanguages(*manager.Languages());
  int templates = 0, words = 0;
  for (int i = 1; i <= manager.Languages()->Count(); ++i) {
    const auto shipped = manager.Languages()->Item(i);
    const std::string name = s(shipped->Name);
    ASSERT_TRUE(cmx.setLanguage(shipped->Name)) << name;
    for (const auto& item : *shipped->cTemplate()) {
      const std::string hotKey = s(item->HotKey);
      show(("    " + hotKey + "..|\n").c_str());
      isTemplate(cmx, manager, i, true, {});
      const QStringList lines = QString::fromStdString(bytes()).split(u'\n');
      EXPECT_EQ(lines.size(), splitCrLf(item->UserString).size() + 1) << name << ": " << hotKey;
      for (qsizetype n = 0; n + 1 < lines.size(); ++n) EXPECT_TRUE(lines[n].startsWith(q("    "))) << name << ": " << hotKey;
      EXPECT_EQ(cmx.SelText() == q("$$"), item->UserString.contains(q("$$"))) << name << ": " << hotKey;
      cmx.editor().undo();
      EXPECT_EQ(bytes(), "    " + hotKey + "..\n") << name;
      ++templates;
    }
    for (int l = 1; l <= shipped->cWordList()->Count(); ++l) {
      const QStringList list = splitCrLf(shipped->cWordList()->Item(l)->WordList);
      EXPECT_GT(list.size(), 1) << name;
      for (qsizetype w = 0; w < list.size(); ++w) {
        cmx.setText(u'(' + list[w] + u')');
        const qint64 behind = 1 + list[w].size();
        cmx.SetSel({0, behind, 0, behind, false});
        index = l;
        ProcessWordList(cmx, shipped.get(), index, false);
        EXPECT_EQ(bytes(), "(" + s(list[(w + 1) % list.size()]) + ")") << name << ": " << s(list[w]);
        ++words;
      }
    }
  }
  EXPECT_GT(templates, 120);
  EXPECT_GT(words, 380);
}

TEST_F(CaretWords, RegistrationKeepsTheNamesItGave) {
  EXPECT_TRUE(LanguageTable::contains(q("L")));
  language->Name = q("Renamed");   // as the editor does, in place
  manager.Languages()->Add(q("Other"))->Keywords = q("a\r\nb\r\n");
  RemoveLanguages();
  EXPECT_FALSE(LanguageTable::contains(q("L")));
  AddLanguages(*manager.Languages());
  EXPECT_TRUE(LanguageTable::contains(q("Renamed")));
  EXPECT_EQ(RegisteredLanguageCount(), 2);
  const CmLanguage handed = handedOver(*manager.Languages()->Item(2));
  EXPECT_EQ(s(handed.Keywords), "a\nb\n");
  for (const char* name : {"SQL", "C/C++", "PASCAL", "BASIC", "JAVA"}) EXPECT_FALSE(LanguageTable::contains(q(name))) << name;
  LanguageTable::registerLanguage(q("SQL"), {});
  AddLanguages(*manager.Languages());
  EXPECT_TRUE(LanguageTable::contains(q("SQL")));   // the built-in ones go only once
  LanguageTable::unregisterLanguage(q("SQL"));
}
