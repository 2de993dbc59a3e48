// The definition file that comes with the program: every entry makes sense, the file is as the program itself would write it, and each
// language colours a few lines as it should.
#include <gtest/gtest.h>

#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include "base/Program.h"
#include "control/code/LanguageTable.h"
#include "control/edit/TextModel.h"
#include "language/FormatRules.h"
#include "language/Registration.h"
#include "language/ucCM.h"
#include "tests/support/ScriptedDialogs.h"
#include "text/file/FileIo.h"
#include "text/fold/Blocks.h"

namespace {

QString shippedFile() { return qEnvironmentVariable("ZELKOR_SOURCE") + QStringLiteral("/config/Zelkor.ini"); }

struct Shipped : testing::Test {
  ScriptedDialogs dialogs;   // a box would fail the test
  QTemporaryDir folder;
  ucCM manager;
  void SetUp() override {
    const QString copy = folder.filePath(QStringLiteral("Zelkor.ini"));
    ASSERT_TRUE(QFile::copy(shippedFile(), copy));
    manager.setIniFile(copy);
    manager.Init();
    AddLanguages(*manager.Languages());
  }
  void TearDown() override { RemoveLanguages(); }
};

QStringList entries(const QString& list) { return list.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts); }

char letter(text::TokenKind kind) {
  switch (kind) {
    case text::TokenKind::keyword: return 'k';
    case text::TokenKind::operatorSign: return 'o';
    case text::TokenKind::comment: return 'c';
    case text::TokenKind::string: return 's';
    case text::TokenKind::number: return 'n';
    case text::TokenKind::text: break;
  }
  return ' ';
}

// One letter a character: k keyword, o operator, c comment, s string, n number, blank for the rest.
std::string mask(const text::Highlighter& highlighter, const std::string& line, text::LineState* state) {
  std::vector<text::Token> tokens;
  *state = highlighter.scanLine(line, *state, &tokens);
  std::string result(line.size(), ' ');
  for (const auto& token : tokens)
    for (auto i = token.begin; i < token.begin + token.length; ++i) result[static_cast<std::size_t>(i)] = letter(token.kind);
  return result;
}

}   // namespace

TEST_F(Shipped, IsAsTheProgramWritesIt) {
  std::string error;
  const std::string before = text::readBytes(shippedFile().toStdString(), &error);
  ASSERT_EQ(error, "");
  ASSERT_TRUE(manager.SaveIniFile());
  EXPECT_TRUE(text::readBytes(manager.IniFile().toStdString(), &error) == before);
}

TEST_F(Shipped, EveryEntryMakesSense) {
  const auto& all = manager.Languages();
  ASSERT_GE(all->Count(), 20);
  QSet<QString> names, extensions;
  for (int i = 1; i <= all->Count(); ++i) {
    const clsLang& language = *all->Item(i);
    SCOPED_TRACE(language.Name.toStdString());
    EXPECT_FALSE(names.contains(language.Name));
    names.insert(language.Name);
    EXPECT_EQ(entries(language.MultiCommentStart).size(), entries(language.MultiCommentEnd).size());
    EXPECT_FALSE(language.Description.isEmpty());
    ASSERT_FALSE(language.Extension.isEmpty());
    for (const QString& extension : language.Extension.split(u';')) {
      EXPECT_FALSE(extension.isEmpty()) << "an empty entry would take every file without an extension";
      EXPECT_TRUE(!extensions.contains(extension) || !language.Contents.isEmpty())
          << extension.toStdString() << " belongs to two languages";
      if (!extensions.contains(extension)) { EXPECT_EQ(manager.GetLangFromExt(extension.toUpper()), i); }
      extensions.insert(extension);
    }
    QSet<QString> keywords;
    for (const QString& word : entries(language.Keywords + language.LibraryWords)) {
      const QString key = language.isCaseSensitive ? word : word.toLower();
      EXPECT_FALSE(keywords.contains(key)) << "twice: " << word.toStdString();
      EXPECT_EQ(word, word.trimmed());
      keywords.insert(key);
    }
    const auto highlighter = LanguageTable::find(language.Name);
    ASSERT_TRUE(highlighter && highlighter->valid());
    QSet<QString> hotKeys;
    for (int t = 1; t <= language.cTemplate()->Count(); ++t) {
      const auto& item = *language.cTemplate()->Item(t);
      EXPECT_FALSE(hotKeys.contains(item.HotKey)) << item.HotKey.toStdString();
      hotKeys.insert(item.HotKey);
      EXPECT_FALSE(keywords.contains(item.HotKey) && item.UserString.isEmpty());
      EXPECT_FALSE(item.Desc.isEmpty()) << item.HotKey.toStdString();
      EXPECT_FALSE(item.UserString.contains(u'\t') && language.Name != QLatin1String("Make")) << item.HotKey.toStdString();
    }
    for (int w = 1; w <= language.cWordList()->Count(); ++w) {
      const auto& list = *language.cWordList()->Item(w);
      const QStringList words = entries(list.WordList);
      EXPECT_GE(words.size(), 2) << list.Name.toStdString();
      EXPECT_EQ(QSet<QString>(words.begin(), words.end()).size(), words.size()) << list.Name.toStdString();
      EXPECT_FALSE(list.Desc.isEmpty()) << list.Name.toStdString();
    }
    for (int m = 1; m <= language.cMacros()->Count(); ++m) {
      const auto& macro = *language.cMacros()->Item(m);
      EXPECT_FALSE(macro.Desc.isEmpty()) << macro.Name.toStdString();
      EXPECT_FALSE(macro.CommandString.isEmpty()) << macro.Name.toStdString();   // tests/e2e runs them
    }
  }
  for (const char* hardware : {"Verilog", "SystemVerilog", "VHDL", "Tcl"}) {
    const auto& language = *all->Item(manager.GetIndex(QLatin1String(hardware)));
    EXPECT_GE(language.cTemplate()->Count(), 8) << hardware;
    EXPECT_GE(language.cWordList()->Count(), 5) << hardware;
    EXPECT_GE(language.cMacros()->Count(), 3) << hardware;
  }
}

TEST_F(Shipped, SamplesHaveTheirLanguages) {
  // clang-format off
  const std::pair<const char*, const char*> samples[] = {
      {"wave.do", "Simulator do-file"}, {"viewdrawsch.1", "Schematic text"}, {"trnscrpt.log", "Log and transcript"},
      {"control.abl", "ABEL"}, {"palasm.pds", "PALASM"}, {"timspec.ucf", "UCF constraints"}, {"report.scr", "Tool script"},
      {"sample.v", "Verilog"}, {"sample1.vhd", "VHDL"}};
  // clang-format on
  for (const auto& [file, language] : samples) {
    const QString path = qEnvironmentVariable("ZELKOR_SOURCE") + QStringLiteral("/Samples/") + QLatin1String(file);
    const auto loaded = text::loadFile(path.toStdString());
    ASSERT_EQ(loaded.error, "") << file;
    const int index = manager.GetLangFromExt(QString::fromLatin1(file).section(u'.', -1));
    ASSERT_GT(index, 0) << file;
    EXPECT_EQ(manager.Languages()->Item(index)->Name, QLatin1String(language));
    const auto highlighter = LanguageTable::find(QLatin1String(language));
    text::LineState state = 0;
    std::int64_t coloured = 0;
    for (std::int64_t i = 0; i < loaded.text.lineCount(); ++i) {
      const std::string kinds = mask(*highlighter, loaded.text.line(text::LineNo(i)), &state);
      coloured += std::count_if(kinds.begin(), kinds.end(), [](char c) { return c != ' '; });
    }
    EXPECT_EQ(state, 0) << file << ": a comment is left open";
    EXPECT_GT(coloured * 5, loaded.text.size().value) << file << ": less than a fifth is coloured";
  }
}

// Which language a file has, by its name and its text.
TEST_F(Shipped, FilesHaveTheirLanguages) {
  const struct {
    const char *name, *text, *language;
    // clang-format off
  } files[] = {
      {"Makefile", "", "Make"}, {"makefile", "", "Make"}, {"CMakeLists.txt", "", "CMake"}, {".bashrc", "", "Shell"}, {"a.v", "", "Verilog"},
      {"a.sv", "", "SystemVerilog"}, {"a.H", "", "C"}, {"a.h", "int x; // class\n", "C"},
      {"a.h", "#pragma once\nclass A;\n", "C++"}, {"a.h", "std::string s;\n", "C++"}, {"a.lib", "library (x) {\n", "Liberty"},
      {"a.lib", "* cells\n.SUBCKT a b\n", "SPICE"}, {"a.xpr", "", "XML"},
      {"configure", "#!/usr/bin/env -S python3.11 -u\n", "Python"}, {"run", "#!/bin/bash\n", "Shell"}};
  // clang-format on
  for (const auto& file : files) {
    const int index = manager.GetLangFromFile(QLatin1String(file.name), QLatin1String(file.text));
    ASSERT_GT(index, 0) << file.name;
    EXPECT_EQ(manager.Languages()->Item(index)->Name, QLatin1String(file.language)) << file.name;
  }
  EXPECT_EQ(manager.GetLangFromFile(QStringLiteral("LICENCE"), QStringLiteral("text")), 0);
}

// Where letter case has a meaning the formatter asks. That of names has none in a few languages only.
TEST_F(Shipped, LetterCaseWithAMeaningIsKnown) {
  const QSet<QString> folds{QStringLiteral("VHDL"), QStringLiteral("PALASM"), QStringLiteral("SPICE")};
  const QSet<QString> keywordsFold = folds + QSet<QString>{QStringLiteral("ABEL"),        QStringLiteral("UCF constraints"),
                                                           QStringLiteral("Tool script"), QStringLiteral("Log and transcript"),
                                                           QStringLiteral("SDF"),         QStringLiteral("Assembler")};
  for (const auto& language : *manager.Languages()) {
    const FormatRules rules = formatRules(*language);
    EXPECT_EQ(rules.caseOfNames, !folds.contains(language->Name)) << language->Name.toStdString();
    EXPECT_EQ(rules.caseOfAll, !keywordsFold.contains(language->Name)) << language->Name.toStdString();
  }
}

TEST_F(Shipped, GoldenLines) {
  std::string error;
  const auto golden = text::readBytes(
      (qEnvironmentVariable("ZELKOR_SOURCE") + QStringLiteral("/tests/document/shipped.golden")).toStdString(), &error);
  QStringList lines = QString::fromStdString(golden).split(u'\n');
  QSet<QString> seen;
  for (qsizetype i = 2; i + 2 < lines.size(); i += 4) {   // behind the heading; records end with an empty line
    const QString& language = lines[i];
    const auto highlighter = LanguageTable::find(language);
    ASSERT_TRUE(highlighter) << language.toStdString();
    text::LineState state = 0;
    EXPECT_EQ(mask(*highlighter, lines[i + 1].toStdString(), &state), lines[i + 2].leftJustified(lines[i + 1].size()).toStdString())
        << language.toStdString() << ":\n"
        << lines[i + 1].toStdString();
    seen.insert(language);
  }
  EXPECT_EQ(seen.size(), manager.Languages()->Count()) << "each language has a line";
}

// The lines that can be folded, from 1; a line that is not closed would be missing or reach too far.
TEST_F(Shipped, BlocksOfTheLanguages) {
  const struct {
    const char *language, *text, *folds;
    // clang-format off
  } cases[] = {
      {"Verilog", "module m (\n  input a\n);\ninitial fork\n  if (a) begin\n  end else begin\n    case (a)\n    0: x;\n    endcase\n  end\njoin\nendmodule\n",
       "1-12 4-11 6-10 7-9"},
      {"SystemVerilog", "package p;\ntypedef class c;\ninterface class c;\n  pure virtual function f();\n  extern task t;\nendclass\nimport \"DPI-C\" function g();\n"
       "covergroup v with function sample(int x);\n  a: coverpoint x {\n    bins b = {1};\n  }\nendgroup\nfunction h();\n  fork\n    x;\n  join_none\nendfunction\nendpackage\n"
       "module m (\n  interface i);\n  virtual interface v q;\n  assert property (a) else begin\n    x;\n  end\nendmodule\n",
       "1-18 3-6 8-12 9-11 13-17 14-16 19-25 22-24"},
      {"Verilog-AMS", "discipline d\n  x;\nenddiscipline\nmodule m;\nanalog begin\n  x;\nend\nendmodule\n", "1-3 4-8 5-7"},
      {"VHDL", "entity e is\n  port (\n    a : in bit);\nend e;\narchitecture r of e is\n  component c\n    port (x : in bit);\n  end component;\n"
       "  function f (a : bit) return bit;\n  function f (a : bit) return bit is\n  begin\n    return a;\n  end;\nbegin\n  u : entity work.c port map (a);\n"
       "  g : for i in 0 to 3\n  generate\n    p : process (all) is\n    begin\n      wait for 10 ns;\n      if a = '1' then\n        x;\n      elsif b then\n        y;\n      end if;\n"
       "      for j in 1 to 2 loop\n        case s is\n          when 1 => if q then\n            z;\n          end if;\n        end case;\n      end loop;\n    end process p;\n  end generate;\n"
       "  h : if k generate\n  begin\n    t;\n  end;\n  else generate\n  end generate;\nend architecture;\npackage i is new work.j;\npackage body b is\n  type t is record\n    x : bit;\n  end record;\nend;\n",
       "1-4 2-3 5-41 6-8 10-13 16-34 18-33 21-25 26-32 27-31 28-30 35-40 43-47 44-46"},
      {"VHDL", "architecture a of e is\nbegin\n  p : process begin\n    if x then\nend;\nentity f is\nend;\n", "1-5 6-7"},
      {"C++", "#if A\nif (x) {\n#else\n#  ifdef B\n  f(1,\n    2);\n#  endif\nif (y) {\n#endif\n} else {\n  z;\n}\n// region r\nx;\n// regional\n// endregion\n",
       "1-2 2-9 3-9 4-7 5-6 10-12 13-16"},
      {"Shell", "if a; then\n  for i in x done fi; do\n    echo done\n  done\nelse\n  case $x in\n    if) y;;\n  esac\nfi\nf() {\n  z\n}\n", "1-9 2-4 6-8 10-12"},
      {"CMake", "if(A)\n  foreach(x y\n          z)\n  endforeach()\nelseif(B)\nendif()\n", "1-6 2-4"},
      {"Tool script", "if a\n  foreach b\n  end\nendif\n", "1-4 2-3"},
      {"ABEL", "module m\ncase a: b;\nendcase\nend\n", "1-4 2-3"},
      {"Make", "ifeq (a,b)\nx:\n\ty\nelse\nz = 1\nendif\n", "1-3 2-3 4-6"},
      {"Python", "def f(a):\n    if a:\n        x\n# c\n    else:\n        y\n\nz\n", "1-6 2-3 5-6"},
      {"Tcl", "#{ a\nproc f {} {\n  if {1} {\n  } else {\n    x\n  }\n}\n#}\n", "1-8 2-7 4-6"},
      {"YAML", "a:\n  b: 1\n  c:\n    d\ne: 2\n", "1-4 3-4"},
  };
  // clang-format on
  for (const auto& c : cases) {
    const text::Snapshot text{std::string(c.text)};
    text::BlockIndex index;
    index.setRules(LanguageTable::folding(QLatin1String(c.language)));
    ASSERT_TRUE(index.update(text));
    std::string folds;
    for (const text::Fold& fold : index.blocks(text)->foldsIn(text::LineNo(0), text::LineNo(text.lineCount())))
      folds += (folds.empty() ? "" : " ") + std::to_string(fold.first.value + 1) + '-' + std::to_string(fold.last.value + 1);
    EXPECT_EQ(folds, c.folds) << c.language << ":\n" << c.text;
  }
}
